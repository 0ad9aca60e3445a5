#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "kzs/base/Clock.h"
#include "offline/Driver.h"
#include "support/Presentation.h"

namespace {

namespace fs = std::filesystem;
using kz::fuzz::require;

constexpr std::int64_t kEpoch = 1'700'000'000;

/// A folder for all inputs of the process, in memory where there is one.
class WorkFolder {
public:
    WorkFolder() {
        std::string name = (fs::is_directory("/dev/shm") ? "/dev/shm" : "/tmp");
        name += "/kzfuzzXXXXXX";
        require(::mkdtemp(name.data()) != nullptr, "there is a folder to work in");
        path_ = name;
    }
    ~WorkFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

std::set<int> openDescriptors() {
    std::set<int> out;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        out.insert(std::stoi(entry.path().filename().string()));
    }
    return out;
}

/// The file of the last segment stays open until the process ends, which here is not yet.
class DescriptorGuard {
public:
    DescriptorGuard() : before_(openDescriptors()) {}
    ~DescriptorGuard() {
        for (const int descriptor : openDescriptors()) {
            if (before_.count(descriptor) == 0) ::close(descriptor);
        }
    }
    DescriptorGuard(const DescriptorGuard&) = delete;
    DescriptorGuard& operator=(const DescriptorGuard&) = delete;

private:
    std::set<int> before_;
};

/// Catches what a run prints while it lives.
class Capture {
public:
    explicit Capture(std::ostream& stream)
        : stream_(stream), former_(stream.rdbuf(text_.rdbuf())) {}
    ~Capture() { stream_.rdbuf(former_); }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::ostream& stream_;
    std::streambuf* former_;
};

void checkErrorLine(const std::string& text) {
    require(text.rfind("Error ", 0) == 0, "a failure begins its line with its code");
    require(text.find('\n') == text.size() - 1, "a failure is one line");
}

void package(const std::string& input, const std::string& out, std::vector<std::string> more) {
    fs::remove_all(out);
    more.insert(more.end(), {"--input-file=" + input, "--output-path=" + out,
                             "--fragment-duration=1", "--external-bootstrap"});
    const DescriptorGuard descriptors;
    const Capture errors(std::cerr);
    torvo::offline::OptionMap options;
    const std::int32_t status = torvo::offline::main(options, more);
    if (status != 0) {
        checkErrorLine(errors.text());
        return;
    }
    require(errors.text().empty(), "a success says nothing");
    const auto findings = kz::test::inconsistencies(kz::test::readPresentation(out, "input"));
    for (const std::string& finding : findings) std::cout << finding << std::endl;
    require(findings.empty(), "what was packaged is consistent");
}

}  // namespace

/// Bytes in, a packaged recording or one error line out; what was packaged passes the tests'
/// reader.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const WorkFolder work;
    torvo::kzs::setClockForTests(kEpoch);
    const std::string input = work / "input";
    std::ofstream(input, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    package(input, work / "out", {});
    package(input, work / "out", {"--edit-list", "--segment-duration=1"});
    return 0;
}
