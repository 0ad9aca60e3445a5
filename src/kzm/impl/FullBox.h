#pragma once

#include "kzm/impl/Box.h"

namespace qlix::kzm::impl {

/// A box with a version and flags behind its header.
///
///   offset  size  field
///        0     8  box header
///        8     1  version
///        9     3  flags
class FullBox : public Box {
public:
    /// A box for writing; only the low 24 bits of `flags` count.
    FullBox(const BoxContext& context, std::uint32_t type, std::uint8_t version,
            std::uint32_t flags);
    /// Reads version and flags at once. Throws noVersionAndFlags when the box ends before them.
    FullBox(const BoxContext& context, const BoxHeader& header);

    void writeHeader() override;
    /// On purpose the full header is always counted as 12 bytes, however long the header is that
    /// was read. Pinned by FullBoxTest.CountsTwelveBytesOfHeaderEvenForALongOne.
    std::uint64_t fieldsSize() const override;
    void readVersionAndFlags() override;
    void resetSize() override;

    std::uint8_t version() const { return version_; }
    std::uint32_t flags() const { return flags_; }

protected:
    /// A reader of what follows version and flags.
    FieldReader fields() const { return fieldsFrom(header().headerSize() + 4); }

private:
    std::uint8_t version_ = 0;
    std::uint32_t flags_ = 0;
};

}  // namespace qlix::kzm::impl
