#include <sstream>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "kvl/config/ConfigNode.h"
#include "kvl/config/ConfigReader.h"
#include "offline/OfflineException.h"
#include "offline/PackagerOptions.h"

namespace {

using kvl::config::ConfigNode;

void visit(const ConfigNode& node, const ConfigNode* parent) {
    kz::fuzz::require(node.parent == parent, "a node knows its parent");
    kvl::config::textOr(&node, "");
    kvl::config::numberOr(&node, 0);
    kz::fuzz::require(node.child(node.name + "x") == nullptr || !node.children.empty(),
                      "only a node with children finds one");
    for (const auto& attribute : node.attributes) visit(*attribute, &node);
    for (const auto& child : node.children) visit(*child, &node);
}

void readTree(const std::string& text) {
    ConfigNode root;
    std::istringstream stream(text);
    try {
        kvl::config::readStream(root, stream);
    } catch (const kvl::config::BadFileException&) {
        return;
    }
    visit(root, nullptr);
}

/// A file in memory with a path.
class MemoryFile {
public:
    explicit MemoryFile(const std::string& content) : descriptor_(memfd_create("settings", 0)) {
        kz::fuzz::require(descriptor_ >= 0, "there is a file in memory");
        const auto count =
            static_cast<std::size_t>(::write(descriptor_, content.data(), content.size()));
        kz::fuzz::require(count == content.size(), "a file in memory takes what is written");
    }
    ~MemoryFile() { ::close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

void readSettings(const std::string& text) {
    const MemoryFile file(text);
    torvo::offline::OptionMap options;
    std::string help;
    std::string version;
    try {
        torvo::offline::parseOptions(options, {"--conf-file=" + file.path()}, help, version);
    } catch (const torvo::offline::OfflineException&) {
    }
}

}  // namespace

/// The tree of a settings file, then the options that the program makes of it.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    readTree(text);
    readSettings(text);
    return 0;
}
