#include <cstring>

#include <boost/program_options/options_description.hpp>
#include <gtest/gtest.h>

#include "offline/OptionTable.h"

namespace torvo::offline {
namespace {

struct HelpText {
    const char* key;
    const char* text;
};

// In the order of the listing. Scripts and manuals quote these, misspellings included: "Specfies",
// two blanks behind "content.", none behind "0 (low),", two texts without their full stop, and
// apostrophes that are the byte 0x92 in two texts and plain in a third.
constexpr HelpText kHelpTexts[] = {
    {"help", "Print this Help Message"},
    {"version", "Print Varnholt kzs packager version"},
    {"input-file",
     "The path to the source container file. The path can be absolute or relative to"
     " the directory containing the File Packager."},
    {"output-path",
     "The path to the directory to which the packaged files are output. If the "
     "directory doesn\x92t exist, the tool creates it. The path can be absolute or "
     "relative to the directory containing the File Packager."},
    {"manifest-file",
     "An input manifest file to update the current manifest file. Use this option to"
     " package a file encoded at multiple bitrates for dynamic streaming."},
    {"output-manifest-file",
     "The name of the output manifest file. Use this option to generate output files"
     " with a custom name"},
    {"bitrate",
     "Specfies the bitrate of the content to fragment and adds it to the manifest "
     "file."},
    {"license-server-url",
     "The URL of the license server that handles license acquisition for this "
     "content."},
    {"transport-cert", "The DER encoded transport certificate file."},
    {"license-server-cert",
     "The DER encoded license server certificate file used for content protection."},
    {"packager-credential", "The PFX file containing the packager's protection credentials."},
    {"credential-pwd", "The password string used to secure the packager credentials."},
    {"policy-file", "The file containing the policy for this content."},
    {"common-key", "The base key used with the content ID to generate the content encryption key."},
    {"content-id",
     "The content ID used with the common key to generate the content encryption "
     "key."},
    {"encrypt-audio", "Specifies whether to encrypt the audio in the file."},
    {"encrypt-data", "Specifies whether to encrypt the data in the file."},
    {"encrypt-video", "Specifies whether to encrypt the video in the file."},
    {"ms-unencrypted",
     "The number of milliseconds at the beginning of the content that remains "
     "unencrypted."},
    {"video-encrypt-level",
     "The level of encryption for the content.  Possible values are 0 (low),1 "
     "(medium), and 2 (high)."},
    {"fragment-duration",
     "The target length of each fragment, in seconds. The actual length of each "
     "fragment depends on properties of the input file, such as the keyframe "
     "interval."},
    {"duration-precision", "How precise the fragment durations are, in seconds."},
    {"frame-rate",
     "The frame rate of the source content, in frames per second. This value is used"
     " when specifying a fragment duration using frame based (rather than time "
     "based) values. Specifying a frame based fragment duration will override any "
     "time based duration configurations."},
    {"frames-per-keyframe-interval",
     "When specifying frame based fragment durations, this is the number of frames "
     "in each keyframe interval."},
    {"keyframe-intervals-per-fragment",
     "When specifying frame based fragment durations, this is the number of key "
     "frame intervals that will be placed in each fragment."},
    {"frame-precision",
     "When specifying frame based fragment durations, this is the precision, in frame units, to "
     "which fragment durations are specified "
     "in the fragment run tables."},
    {"allowed-drift",
     "As the tool rounds off durations, it drifts from the real time. This option "
     "specifies how far the tool can vary from the real time, in seconds."},
    {"segment-duration", "The length, in seconds, of a segment."},
    {"conf-file", "The configuration file that contains settings for the packaging process."},
    {"config-dump", "Dumps the configuration settings. This option does not fragment the file."},
    {"sample-dump",
     "Dumps the samples and the fragments they\x92re set to. This option does not "
     "fragment the file."},
    {"external-bootstrap", "Outputs the bootstrap box to a .bootstrap file."},
    {"inspect-fragments", "Inspect the kzs fragments."},
    {"inspect-bootstrap", "Inspect the bootstrap file or box in the kzs file."},
    {"inspect-index", "Inspect the afra index file or the afra index in the kzs file."},
    {"dump-drm-metadata",
     "When protecting content, dump the DRM metadata binary to an external file."},
    {"edit-list", "Use edit-list in the input file to package the file into kzs"},
    {"update-drm-info", "Generates a new manifest file with updated DRMAdditionalHeader."},
};

TEST(OptionTableTest, EveryOptionHasItsHelpText) {
    const OptionTable table = makeOptionTable();
    ASSERT_EQ(table.size(), std::size(kHelpTexts));
    boost::program_options::options_description description;
    for (const auto& [key, type] : table) type->addToDescription(description, key);
    for (std::size_t i = 0; i < table.size(); ++i) {
        EXPECT_STREQ(table[i].first, kHelpTexts[i].key);
        EXPECT_EQ(description.options()[i]->description(), kHelpTexts[i].text) << kHelpTexts[i].key;
    }
}

TEST(OptionTableTest, SwitchesTakeNoValueAndTheOthersNeedOne) {
    boost::program_options::options_description description;
    const OptionTable table = makeOptionTable();
    for (const auto& [key, type] : table) {
        type->addToDescription(description, key);
        const bool isSwitch = dynamic_cast<const NoValueConfigType*>(type.get()) != nullptr;
        const auto& semantic = description.find(key, false).semantic();
        EXPECT_EQ(semantic->min_tokens(), isSwitch ? 0U : 1U) << key;
        EXPECT_EQ(semantic->max_tokens(), isSwitch ? 0U : 1U) << key;
    }
}

}  // namespace
}  // namespace torvo::offline
