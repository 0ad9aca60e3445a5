#pragma once

#include <utility>

#include "kzm/impl/Box.h"
#include "kzm/impl/BoxFactory.h"
#include "kzm/impl/QlixKZMIOStream.h"
#include "kzm/impl/QlixKZMIStream.h"
#include "support/Bytes.h"
#include "support/IsoBuilder.h"
#include "support/MemoryStream.h"

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

/// The number that `action` throws, 0 if it throws nothing.
template <class Action>
std::uint32_t codeOf(Action action) {
    try {
        action();
    } catch (const qlix::kzm::Exception& failure) {
        return failure.code();
    }
    return 0;
}

}  // namespace kz::test
