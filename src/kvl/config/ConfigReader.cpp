#include "kvl/config/ConfigReader.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <string.h>  // explicit_bzero
#include <string_view>
#include <type_traits>
#include <utility>

#include <expat.h>

#include "kvl/InputFile.h"
#include "kvl/WhiteSpace.h"
#include "kvl/config/ConfigNode.h"

namespace kvl::config {

namespace {

constexpr std::size_t kBlockSize = 1024;
/// Nodes are freed recursively, so a hostile file must not choose the depth.
constexpr std::size_t kMaxDepth = 256;

// A settings file may hold a password: no copy of its text stays in memory that is given back.

void releaseForParser(void* memory) {
    if (memory != nullptr) explicit_bzero(memory, malloc_usable_size(memory));
    std::free(memory);
}

void* moveForParser(void* memory, std::size_t size) {
    void* moved = std::malloc(size);
    if (moved == nullptr || memory == nullptr) return moved;
    std::memcpy(moved, memory, std::min(size, malloc_usable_size(memory)));
    releaseForParser(memory);
    return moved;
}

constexpr XML_Memory_Handling_Suite kParserMemory = {std::malloc, moveForParser, releaseForParser};

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserPtr = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter>;

/// Builds the tree from the parser's events.
class TreeBuilder {
public:
    explicit TreeBuilder(ConfigNode& root) : root_(root) {}

    void startElement(const char* name, const char** attributes) {
        if (open_.size() >= kMaxDepth) throw BadFileException();
        auto node = std::make_unique<ConfigNode>();
        node->name = name;
        node->parent = &current();
        for (; attributes[0] != nullptr; attributes += 2) {
            auto attribute = std::make_unique<ConfigNode>();
            attribute->name = attributes[0];
            attribute->parent = node.get();
            attribute->hasData = true;
            attribute->data = attributes[1];
            node->attributes.push_back(std::move(attribute));
        }
        open_.push_back(std::move(node));
    }

    /// A node enters its parent's list only here.
    void endElement(const char* name) {
        if (open_.empty() || open_.back()->name != name) throw BadFileException();
        auto node = std::move(open_.back());
        open_.pop_back();
        node->parent->children.push_back(std::move(node));
    }

    void characterData(std::string_view piece) {
        // On purpose: white space decides only whether a piece counts; what counts is kept
        // untrimmed. Pinned by ConfigReaderTest.KeepsAPieceUntrimmed.
        if (isWhiteSpace(piece)) return;
        current().hasData = true;
        current().data.append(piece);
    }

private:
    ConfigNode& current() { return open_.empty() ? root_ : *open_.back(); }

    ConfigNode& root_;
    std::vector<std::unique_ptr<ConfigNode>> open_;
};

/// Feeds the parser; carries exceptions of the builder past the parser's C frames.
class Reader {
public:
    explicit Reader(ConfigNode& root)
        : builder_(root), parser_(XML_ParserCreate_MM(nullptr, &kParserMemory, nullptr)) {
        if (!parser_) return;
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), onStart, onEnd);
        XML_SetCharacterDataHandler(parser_.get(), onText);
    }

    void read(std::istream& stream) {
        // On purpose: without a parser the file counts as empty, as one that can't be opened does.
        // Pinned by ConfigReaderTest.TakesAnyFileForAnEmptyOneWithoutAParser.
        if (!parser_) return;
        std::array<char, kBlockSize> block{};
        bool isFinal = false;
        while (!isFinal) {
            stream.read(block.data(), kBlockSize);
            if (stream.bad()) throw BadFileException();  // a disk that fails is no end of the file
            isFinal = stream.gcount() < static_cast<std::streamsize>(kBlockSize);
            feed(block.data(), static_cast<int>(stream.gcount()), isFinal);
        }
    }

private:
    void feed(const char* bytes, int count, bool isFinal) {
        const XML_Status status = XML_Parse(parser_.get(), bytes, count, isFinal ? 1 : 0);
        if (failure_) std::rethrow_exception(failure_);
        if (status != XML_STATUS_OK) throw BadFileException();
    }

    template <typename Action>
    void guarded(Action action) noexcept {
        if (failure_) return;
        try {
            action(builder_);
        } catch (...) {
            failure_ = std::current_exception();
            XML_StopParser(parser_.get(), XML_FALSE);
        }
    }

    static void XMLCALL onStart(void* reader, const XML_Char* name, const XML_Char** attributes) {
        static_cast<Reader*>(reader)->guarded(
            [&](TreeBuilder& builder) { builder.startElement(name, attributes); });
    }

    static void XMLCALL onEnd(void* reader, const XML_Char* name) {
        static_cast<Reader*>(reader)->guarded(
            [&](TreeBuilder& builder) { builder.endElement(name); });
    }

    static void XMLCALL onText(void* reader, const XML_Char* text, int length) {
        static_cast<Reader*>(reader)->guarded([&](TreeBuilder& builder) {
            builder.characterData({text, static_cast<std::size_t>(length)});
        });
    }

    TreeBuilder builder_;
    ParserPtr parser_;
    std::exception_ptr failure_;
};

}  // namespace

void readStream(ConfigNode& root, std::istream& stream) { Reader(root).read(stream); }

void readFile(ConfigNode& root, const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) throw FileDoesNotExistException();
    std::ifstream file;
    openForReading(file, path);
    // On purpose: a file that can't be opened counts as empty.
    // Pinned by ConfigReaderTest.TakesAnUnreadableFileForAnEmptyOne.
    if (!file) return;
    readStream(root, file);
}

}  // namespace kvl::config
