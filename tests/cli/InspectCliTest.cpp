#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "support/TempDir.h"

namespace kz::test {
namespace {

/// An index of two fragments with data, one without, and a local entry.
Bytes afraBox() {
    return hexTable(R"(
        0    00000089          size 137
        4    61667261          'afra'
        8    00000000          version 0, flags 0
        12   e0                long ids, long offsets, global entries
        13   000003e8          time scale
        17   00000001          local entries
        21   0000000000000fa0  time 4000
        29   0000000000000123  offset
        37   00000003          global entries
        41   0000000000000000  time 0
        49   00000001          segment
        53   00000001          fragment
        57   0000000000000400  offset of the index
        65   0000000000000000  offset from it
        73   0000000000000fa0  time 4000
        81   00000001          segment
        85   00000002          fragment
        89   ffffffffffffffff  no data
        97   0000000000000000  offset from it
        105  0000000000001f40  time 8000
        113  00000002          segment
        117  00000003          fragment
        121  0000000000000500  offset of the index
        129  0000000000000000  offset from it
    )");
}

const char* const kAfraText =
    "afra:\n"
    "\tlong ids: true\n"
    "\tlong offsets: true\n"
    "\tentries:\n"
    "\t\ttime = 4000, offset = 291\n"
    "\tglobal entries:\n"
    "\t\ttime = 0, segment = 1, fragment = 1, afra-offset = 1024, offset-from-afra = 0\n"
    "\t\ttime = 4000, segment = 1, fragment = 2, afra-offset = 18446744073709551615, "
    "offset-from-afra = 0\n"
    "\t\ttime = 8000, segment = 2, fragment = 3, afra-offset = 1280, offset-from-afra = 0\n";

/// A timetable with a server, qualities, a gap and the end mark.
Bytes abstBox() {
    const Bytes segments = u32(28) + text("asrt") + u32(0) + u8(0) + u32(1) + u32(1) + u32(3);
    const Bytes fragments = u32(66) + text("afrt") + u32(1) + u32(1000) + u8(1) + text("q") +
                            u8(0) + u32(3) + u32(1) + u64(0) + u32(4000) +  // a run
                            u32(2) + u64(4000) + u32(0) + u8(1) +           // no data
                            u32(0) + u64(0) + u32(0) + u8(0);               // the end
    const Bytes content = u32(7) + u8(0x30) + u32(1000) + u64(8040) + u64(5) + text("id") + u8(0) +
                          u8(1) + text("server") + u8(0) + u8(2) + text("high") + u8(0) +
                          text("low") + u8(0) + u8(0) + u8(0) + u8(1) + segments + u8(1) +
                          fragments;
    return u32(12 + content.size()) + text("abst") + u32(0) + content;
}

const char* const kAbstText =
    "bootstrap:\n"
    "\tversion: 7\n"
    "\tis update: true\n"
    "\tis live: true\n"
    "\tmovie id: id\n"
    "\ttimescale: 1000\n"
    "\tcurrent media time: 8040\n"
    "\tsmpte timecode offset: 5\n"
    "\tservers:\n"
    "\t\tserver\n"
    "\tqualities:\n"
    "\t\thigh\n"
    "\t\tlow\n"
    "segments:\n"
    "segment run table:\n"
    "\tis update: false\n"
    "\tqualities:\n"
    "\tentries:\n"
    "\t\tsegment = 1, fragments = 3\n"
    "fragments:\n"
    "fragment run table:\n"
    "\tis update: true\n"
    "\tqualities:\n"
    "\t\tq\n"
    "\tentries:\n"
    "\t\tfragment = 1, timestamp = 0, duration = 4000\n"
    "\t\tfragment = 2, timestamp = 4000, duration = 0, discontinuity = 1\n"
    "\t\tfragment = 0, timestamp = 0, duration = 0, discontinuity = 0\n";

ProcessResult inspect(const TempDir& folder, const std::string& mode, const Bytes& content) {
    return packager({mode, "--input-file", folder.write("file", content)});
}

TEST(InspectCliTest, AnIndexIsPrintedLineByLine) {
    const TempDir folder;
    const ProcessResult result = inspect(folder, "--inspect-index", afraBox());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, kAfraText);
    EXPECT_EQ(result.err, "");
}

TEST(InspectCliTest, ABootstrapIsPrintedLineByLine) {
    const TempDir folder;
    const ProcessResult result = inspect(folder, "--inspect-bootstrap", abstBox());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, kAbstText);
}

TEST(InspectCliTest, AnIndexOrABootstrapBehindOtherBytesIsNotLookedFor) {
    const TempDir folder;
    const Bytes other = u32(8) + text("free");
    const ProcessResult index = inspect(folder, "--inspect-index", other + afraBox());
    EXPECT_EQ(index.status, 12);
    EXPECT_EQ(index.err, "Error 12: Standard Exception: Could not parse afra index\n");
    const ProcessResult bootstrap = inspect(folder, "--inspect-bootstrap", other + abstBox());
    EXPECT_EQ(bootstrap.status, 13);
    EXPECT_EQ(bootstrap.err, "Error 13: Bootstrap file is corrupt\n");
}

TEST(InspectCliTest, FragmentsAreCountedAndPlaced) {
    const TempDir folder;
    const Bytes gap = fill(100, 0x55);
    const Bytes one = afraBox() + abstBox();
    const ProcessResult result = inspect(folder, "--inspect-fragments", gap + one + gap + one);
    EXPECT_EQ(result.status, 0);
    const std::string second = std::to_string(200 + one.size());
    EXPECT_EQ(result.out, std::string("fragment: 1, 100\n") + kAfraText + kAbstText +
                              "fragment: 2, " + second + "\n" + kAfraText + kAbstText);
}

TEST(InspectCliTest, TypeBytesBehindHalfOfThemselvesAreFound) {
    const TempDir folder;
    // "afafra": the letters in front belong to the size field of the box.
    const ProcessResult result =
        inspect(folder, "--inspect-fragments",
                text("xxaf") + afraBox().patched(0, raw({0, 0}) + text("af")));
    EXPECT_EQ(result.out.rfind("fragment: 1, 4\n", 0), 0U);
}

TEST(InspectCliTest, AnIndexAloneIsPrintedWithoutABootstrap) {
    const TempDir folder;
    const ProcessResult result = inspect(folder, "--inspect-fragments", afraBox());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, std::string("fragment: 1, 0\n") + kAfraText);
}

TEST(InspectCliTest, TheBootstrapMayLieBehindFurtherIndexes) {
    const TempDir folder;
    const ProcessResult result =
        inspect(folder, "--inspect-fragments", afraBox() + afraBox() + abstBox());
    EXPECT_EQ(result.out, std::string("fragment: 1, 0\n") + kAfraText + kAbstText);
}

TEST(InspectCliTest, AFileWithoutFragmentsPrintsNothing) {
    const TempDir folder;
    for (const Bytes& content : {Bytes(), text("abc"), fill(5000, 0)}) {
        const ProcessResult result = inspect(folder, "--inspect-fragments", content);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.out, "");
    }
}

TEST(InspectCliTest, LinesBeforeAFailureStay) {
    const TempDir folder;
    const Bytes cut = abstBox().cutTo(50);
    const ProcessResult result = inspect(folder, "--inspect-fragments", afraBox() + cut);
    EXPECT_EQ(result.status, 13);
    EXPECT_EQ(result.out, std::string("fragment: 1, 0\n") + kAfraText);
}

TEST(InspectCliTest, EveryCutOfABootstrapOrAnIndexIsAnErrorAndNoCrash) {
    const TempDir folder;
    const Bytes abst = abstBox();
    for (std::size_t length = 0; length < abst.size(); length += 7) {
        EXPECT_EQ(inspect(folder, "--inspect-bootstrap", abst.cutTo(length)).status, 13) << length;
    }
    for (std::size_t length = 0; length < 137; length += 13) {
        EXPECT_EQ(inspect(folder, "--inspect-index", afraBox().cutTo(length)).status, 12) << length;
    }
}

TEST(InspectCliTest, AMissingFileAndAFolderAreTold) {
    const TempDir folder;
    for (const char* mode : {"--inspect-index", "--inspect-bootstrap", "--inspect-fragments"}) {
        const ProcessResult missing = packagerIn(folder.path(), {mode, "--input-file", "none.kzs"});
        EXPECT_EQ(missing.status, 1);
        EXPECT_EQ(missing.err, "Error 1: none.kzs file does not exist\n");
        const ProcessResult isFolder = packagerIn(folder.path(), {mode, "--input-file", "."});
        EXPECT_EQ(isFolder.status, 1);
        EXPECT_EQ(isFolder.err, "Error 1: Path is not a file .\n");
    }
}

TEST(InspectCliTest, AFileThatCanNotBeOpenedIsToldAndNotTakenForAnEmptyOne) {
    const TempDir folder;
    const std::string path = folder.makeSocket("file");
    for (const char* mode : {"--inspect-index", "--inspect-bootstrap", "--inspect-fragments"}) {
        const ProcessResult result = packager({mode, "--input-file", path});
        EXPECT_EQ(result.status, 4);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "Error 4: cannot access input file " + path + "\n");
    }
}

TEST(InspectCliTest, APathThatCanNotBeLookedAtIsAStandardFailureHere) {
    const ProcessResult result =
        packager({"--inspect-index", "--input-file", std::string(5000, 'x')});
    EXPECT_EQ(result.status, 12);
}

TEST(InspectCliTest, ACommonKeyDoesNotStartTheEncryptionLibrary) {
    const TempDir folder;
    const ProcessResult result =
        packager({"--inspect-index", "--common-key=no-such-file", "--content-id=c", "--input-file",
                  folder.write("file", afraBox())});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, kAfraText);
}

TEST(InspectCliTest, OutputThatIsFullIsAFailure) {
    const TempDir folder;
    ProcessSettings settings;
    settings.standardOutputFile = "/dev/full";
    const ProcessResult result =
        packager({"--inspect-index", "--input-file", folder.write("file", afraBox())}, settings);
    EXPECT_EQ(result.status, 12);
}

}  // namespace
}  // namespace kz::test
