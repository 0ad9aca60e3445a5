#include "kvl/minidom/Parser.h"

#include <array>
#include <exception>
#include <fstream>
#include <new>
#include <stdexcept>
#include <type_traits>

#include <expat.h>

#include "kvl/InputFile.h"
#include "kvl/minidom/Document.h"
#include "kvl/minidom/ParseExceptions.h"
#include "kvl/minidom/TreeBuilder.h"

namespace kvl::minidom {

namespace {

constexpr std::size_t kBlockSize = 1024;
constexpr XML_Char kNamespaceSeparator = ':';

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserPtr = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter>;

std::string textOf(const XML_Char* characters) { return characters ? characters : ""; }

/// Feeds the parser; carries exceptions of the builder past the parser's C frames.
class Reader {
public:
    explicit Reader(bool keepWhitespace)
        : builder_(keepWhitespace), parser_(XML_ParserCreateNS(nullptr, kNamespaceSeparator)) {
        if (!parser_) throw std::bad_alloc();
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), onStart, onEnd);
        XML_SetCharacterDataHandler(parser_.get(), onText);
        XML_SetStartNamespaceDeclHandler(parser_.get(), onNamespace);
        // Keeps internal entities from being expanded, too: they stay as the text they were.
        XML_SetDefaultHandler(parser_.get(), onDefault);
    }

    DocumentPtr read(std::istream& stream) {
        std::array<char, kBlockSize> block{};
        bool isFinal = false;
        while (!isFinal) {
            stream.read(block.data(), kBlockSize);
            // A disk that fails is no end of the file.
            if (stream.bad()) throw std::runtime_error("the XML text can't be read");
            isFinal = stream.gcount() < static_cast<std::streamsize>(kBlockSize);
            feed(block.data(), static_cast<int>(stream.gcount()), isFinal);
        }
        return builder_.document();
    }

private:
    void feed(const char* bytes, int count, bool isFinal) {
        const XML_Status status = XML_Parse(parser_.get(), bytes, count, isFinal ? 1 : 0);
        if (failure_) std::rethrow_exception(failure_);
        if (status == XML_STATUS_OK) return;
        const XML_Error code = XML_GetErrorCode(parser_.get());
        throw XMLParseException(code, textOf(XML_ErrorString(code)),
                                XML_GetCurrentLineNumber(parser_.get()),
                                XML_GetCurrentColumnNumber(parser_.get()));
    }

    template <typename Action>
    static void guarded(void* userData, Action action) noexcept {
        Reader& reader = *static_cast<Reader*>(userData);
        if (reader.failure_) return;
        try {
            action(reader.builder_);
        } catch (...) {
            reader.failure_ = std::current_exception();
            XML_StopParser(reader.parser_.get(), XML_FALSE);
        }
    }

    static void XMLCALL onStart(void* reader, const XML_Char* name, const XML_Char** attributes) {
        guarded(reader, [&](TreeBuilder& builder) { builder.startElement(name, attributes); });
    }

    static void XMLCALL onEnd(void* reader, const XML_Char* name) {
        guarded(reader, [&](TreeBuilder& builder) { builder.endElement(name); });
    }

    static void XMLCALL onText(void* reader, const XML_Char* text, int length) {
        guarded(reader, [&](TreeBuilder& builder) {
            builder.characterData({text, static_cast<std::size_t>(length)});
        });
    }

    static void XMLCALL onNamespace(void* reader, const XML_Char* prefix, const XML_Char* uri) {
        guarded(reader, [&](TreeBuilder& builder) {
            builder.declareNamespace(textOf(prefix), textOf(uri));
        });
    }

    static void XMLCALL onDefault(void* reader, const XML_Char* text, int length) {
        guarded(reader, [&](TreeBuilder& builder) {
            builder.rawMarkup(std::string(text, static_cast<std::size_t>(length)));
        });
    }

    TreeBuilder builder_;
    ParserPtr parser_;
    std::exception_ptr failure_;
};

}  // namespace

DocumentPtr parseStream(std::istream& stream, bool keepWhitespace) {
    return Reader(keepWhitespace).read(stream);
}

DocumentPtr parseFile(const std::string& path, bool keepWhitespace) {
    std::ifstream file;
    openForReading(file, path);
    if (!file) throw std::runtime_error(path + " can't be opened");
    return parseStream(file, keepWhitespace);
}

}  // namespace kvl::minidom
