#pragma once

#include <stdexcept>
#include <utility>
#include <vector>

#include "kzm/impl/Box.h"
#include "kzm/impl/BoxFactory.h"
#include "kzm/impl/QlixKZMIOStream.h"
#include "kzm/impl/QlixKZMIStream.h"
#include "support/Bytes.h"
#include "support/IsoBuilder.h"
#include "support/MemoryStream.h"
#include "support/ThrownCode.h"

namespace kz::test {

/// A file in memory that boxes are written to: `WriteFile file; MfhdBox box(file.context(), 7);`
class WriteFile {
public:
    WriteFile() : stream(&memory) { stream.open(); }

    qlix::kzm::impl::BoxContext context() { return {&stream, nullptr}; }
    /// Flushes and gives the whole file.
    const Bytes& bytes() {
        stream.flush();
        return memory.content;
    }

    MemoryStream memory;
    qlix::kzm::impl::QlixKZMIOStream stream;
};

/// A file in memory that boxes are read from. Keeps the warnings it was given.
class ReadFile {
public:
    explicit ReadFile(Bytes content) : memory(std::move(content)), stream(&memory) {
        stream.open();
        stream.setWarningCallback(&ReadFile::onWarning, this);
    }

    qlix::kzm::impl::BoxContext context() { return {&stream, nullptr}; }

    /// Makes the box at `position` through the standard factory, loads its tree and parses it
    /// without looking for required children.
    qlix::kzm::impl::BoxPtr read(std::uint64_t position = 0) {
        qlix::kzm::impl::BoxPtr made = make(position);
        made->loadTree(qlix::kzm::impl::BoxFactory::standard());
        made->parse(nullptr, false);
        return made;
    }

    /// Makes the box at `position` without reading what is inside.
    qlix::kzm::impl::BoxPtr make(std::uint64_t position = 0) {
        stream.seek(position);
        const auto header = qlix::kzm::impl::readBoxHeader(stream, nullptr);
        return qlix::kzm::impl::BoxFactory::standard().create(stream, header.value(), nullptr);
    }

    MemoryStream memory;
    qlix::kzm::impl::QlixKZMIStream stream;
    std::vector<std::uint32_t> warnings;
    bool goOn = true;

private:
    static bool onWarning(void* context, std::uint32_t code) {
        auto* file = static_cast<ReadFile*>(context);
        file->warnings.push_back(code);
        return file->goOn;
    }
};

/// The bytes of a box written at the start of an empty file; checks that `size` tells their count.
inline Bytes written(WriteFile& file, qlix::kzm::impl::Box& box) {
    box.write();
    const Bytes out = file.bytes();
    if (out.size() != box.size()) throw std::logic_error("size() isn't the count of bytes written");
    return out;
}

/// The codes of reading `whole`, one box, cut to each length from 8 bytes on, with a size word
/// that says so.
inline std::vector<std::uint32_t> codesWhenCut(const Bytes& whole) {
    std::vector<std::uint32_t> codes;
    for (std::size_t cut = 8; cut < whole.size(); ++cut) {
        ReadFile file(whole.cutTo(cut).patched(0, u32(cut)));
        std::uint32_t code = 0;
        try {
            file.read();
        } catch (const qlix::kzm::Exception& failure) {
            code = failure.code();
        }
        codes.push_back(code);
    }
    return codes;
}

/// What `codesWhenCut` gives for a full box of `size` bytes that needs all of them.
inline std::vector<std::uint32_t> codesOfAFullBox(std::size_t size) {
    std::vector<std::uint32_t> codes(4, 28);
    codes.resize(size - 8, 27);
    return codes;
}

/// The box at the start of `bytes`, read as class T. The file outlives it.
template <class T>
qlix::kzm::impl::BoxPtrOf<T> readAs(ReadFile& file) {
    qlix::kzm::impl::BoxPtr made = file.read();
    auto* typed = dynamic_cast<T*>(made.get());
    if (typed == nullptr) throw std::logic_error("the box is of another class");
    const auto deleter = made.get_deleter();
    static_cast<void>(made.release());
    return qlix::kzm::impl::BoxPtrOf<T>(typed, deleter);
}

}  // namespace kz::test
