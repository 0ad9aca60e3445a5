#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "support/FlvBuilder.h"
#include "support/Presentation.h"
#include "support/TempDir.h"

namespace kz::test {

/// AVC and AAC: a key frame every `keyMs`, a frame of each every 40 ms up to `endMs`.
inline Bytes avClip(std::uint32_t endMs, std::uint32_t keyMs) {
    std::vector<FlvTag> tags = {avcConfig(0), aacConfig(0)};
    for (std::uint32_t ms = 0; ms < endMs; ms += 40) {
        tags.push_back(avcFrame(ms, ms % keyMs == 0, pattern(20, ms)));
        tags.push_back(aacFrame(ms, pattern(10, ms)));
    }
    return flvFile(tags);
}

/// MP3 every 100 ms.
inline Bytes audioClip(std::uint32_t endMs) {
    std::vector<FlvTag> tags;
    for (std::uint32_t ms = 0; ms <= endMs; ms += 100) tags.push_back(mp3Frame(ms, pattern(9, ms)));
    return flvFile(tags, 4);
}

/// A test that packages `clip.flv` of a folder of its own.
class PackageFixture : public testing::Test {
protected:
    /// Packages `clip.flv` of the folder into its folder `out`.
    ProcessResult package(std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), {"--input-file=clip.flv", "--output-path=out"});
        return packagerIn(folder.path(), arguments);
    }

    void expectPackaged(std::vector<std::string> arguments = {}) {
        const ProcessResult result = package(std::move(arguments));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "");
    }

    void expectFailure(const ProcessResult& result, int status, const std::string& line) {
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, line + "\n");
    }

    Presentation read(const std::string& baseName = "clip") {
        Presentation presentation = readPresentation(folder / "out", baseName);
        for (const std::string& fault : inconsistencies(presentation)) ADD_FAILURE() << fault;
        return presentation;
    }

    std::vector<std::string> outputs() {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder / "out")) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::string manifest(const std::string& name = "clip.kzd") {
        return readFile(folder / ("out/" + name)).str();
    }

    static std::size_t countOf(const std::string& whole, const std::string& part) {
        std::size_t count = 0;
        for (std::size_t at = whole.find(part); at != std::string::npos;
             at = whole.find(part, at + part.size())) {
            ++count;
        }
        return count;
    }

    TempDir folder;
};

}  // namespace kz::test
