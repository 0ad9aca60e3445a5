#include "offline/OptionTable.h"

namespace torvo::offline {
namespace {

void addSwitch(OptionTable& table, const char* key, const char* helpText) {
    table.emplace_back(key, std::make_unique<NoValueConfigType>(helpText));
}

void addBool(OptionTable& table, const char* key, bool defaultValue, const char* helpText) {
    table.emplace_back(key, std::make_unique<BoolConfigType>(defaultValue, helpText));
}

void addNumber(OptionTable& table, const char* key, double defaultValue, const char* helpText) {
    table.emplace_back(key, std::make_unique<DoubleConfigType>(defaultValue, helpText));
}

void addText(OptionTable& table, const char* key, const char* defaultValue, const char* helpText) {
    table.emplace_back(key, std::make_unique<StringConfigType>(defaultValue, helpText));
}

// On purpose, in the texts below: "Specfies", the two blanks behind "content.", the missing one
// behind "0 (low),", and apostrophes that are the byte 0x92 in two texts and plain in a third.
// Pinned by PackagerOptionsTest.TheHelpListingKeepsItsSpellings.

void addFileOptions(OptionTable& table) {
    addSwitch(table, "help", "Print this Help Message");
    addSwitch(table, "version", "Print Varnholt kzs packager version");
    addText(table, "input-file", "",
            "The path to the source container file. The path can be absolute or relative to the "
            "directory containing the File Packager.");
    addText(table, "output-path", ".",
            "The path to the directory to which the packaged files are output. If the directory "
            "doesn\x92t exist, the tool creates it. The path can be absolute or relative to the "
            "directory containing the File Packager.");
    addText(table, "manifest-file", "",
            "An input manifest file to update the current manifest file. Use this option to "
            "package a file encoded at multiple bitrates for dynamic streaming.");
    addText(table, "output-manifest-file", "",
            "The name of the output manifest file. Use this option to generate output files with "
            "a custom name");
    addNumber(table, "bitrate", 0.0,
              "Specfies the bitrate of the content to fragment and adds it to the manifest file.");
}

void addProtectionOptions(OptionTable& table) {
    addText(table, "license-server-url", "",
            "The URL of the license server that handles license acquisition for this content.");
    addText(table, "transport-cert", "", "The DER encoded transport certificate file.");
    addText(table, "license-server-cert", "",
            "The DER encoded license server certificate file used for content protection.");
    addText(table, "packager-credential", "",
            "The PFX file containing the packager's protection credentials.");
    addText(table, "credential-pwd", "",
            "The password string used to secure the packager credentials.");
    addText(table, "policy-file", "", "The file containing the policy for this content.");
    addText(table, "common-key", "",
            "The base key used with the content ID to generate the content encryption key.");
    addText(table, "content-id", "",
            "The content ID used with the common key to generate the content encryption key.");
    addBool(table, "encrypt-audio", true, "Specifies whether to encrypt the audio in the file.");
    addBool(table, "encrypt-data", true, "Specifies whether to encrypt the data in the file.");
    addBool(table, "encrypt-video", true, "Specifies whether to encrypt the video in the file.");
    addNumber(table, "ms-unencrypted", 0.0,
              "The number of milliseconds at the beginning of the content that remains "
              "unencrypted.");
    addNumber(table, "video-encrypt-level", 2.0,
              "The level of encryption for the content.  Possible values are 0 (low),1 (medium), "
              "and 2 (high).");
}

void addTimingOptions(OptionTable& table) {
    addNumber(table, "fragment-duration", 4.0,
              "The target length of each fragment, in seconds. The actual length of each fragment "
              "depends on properties of the input file, such as the keyframe interval.");
    addNumber(table, "duration-precision", 0.1,
              "How precise the fragment durations are, in seconds.");
    addNumber(table, "frame-rate", 0.0,
              "The frame rate of the source content, in frames per second. This value is used "
              "when specifying a fragment duration using frame based (rather than time based) "
              "values. Specifying a frame based fragment duration will override any time based "
              "duration configurations.");
    addNumber(table, "frames-per-keyframe-interval", 0.0,
              "When specifying frame based fragment durations, this is the number of frames in "
              "each keyframe interval.");
    addNumber(table, "keyframe-intervals-per-fragment", 1.0,
              "When specifying frame based fragment durations, this is the number of key frame "
              "intervals that will be placed in each fragment.");
    addNumber(table, "frame-precision", 1.0,
              "When specifying frame based fragment durations, this is the precision, in frame "
              "units, to which fragment durations are specified "
              "in the fragment run tables.");
    addNumber(table, "allowed-drift", 1.0,
              "As the tool rounds off durations, it drifts from the real time. This option "
              "specifies how far the tool can vary from the real time, in seconds.");
    addNumber(table, "segment-duration", 0.0, "The length, in seconds, of a segment.");
}

void addModeOptions(OptionTable& table) {
    addText(table, "conf-file", "",
            "The configuration file that contains settings for the packaging process.");
    addSwitch(table, "config-dump",
              "Dumps the configuration settings. This option does not fragment the file.");
    addSwitch(table, "sample-dump",
              "Dumps the samples and the fragments they\x92re set to. This option does not "
              "fragment the file.");
    addSwitch(table, "external-bootstrap", "Outputs the bootstrap box to a .bootstrap file.");
    addSwitch(table, "inspect-fragments", "Inspect the kzs fragments.");
    addSwitch(table, "inspect-bootstrap", "Inspect the bootstrap file or box in the kzs file.");
    addSwitch(table, "inspect-index",
              "Inspect the afra index file or the afra index in the kzs file.");
    addSwitch(table, "dump-drm-metadata",
              "When protecting content, dump the DRM metadata binary to an external file.");
    addSwitch(table, "edit-list", "Use edit-list in the input file to package the file into kzs");
    addSwitch(table, "update-drm-info",
              "Generates a new manifest file with updated DRMAdditionalHeader.");
}

}  // namespace

OptionTable makeOptionTable() {
    OptionTable table;
    addFileOptions(table);
    addProtectionOptions(table);
    addTimingOptions(table);
    addModeOptions(table);
    return table;
}

}  // namespace torvo::offline
