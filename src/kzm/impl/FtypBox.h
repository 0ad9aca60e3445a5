#pragma once

#include "kzm/impl/Box.h"

namespace qlix::kzm::impl {

/// File type: says which readers the file is for.
///
///   offset  size  field
///        0     8  box header: 'ftyp'
///        8     4  major brand; written 'kzm '
///       12     4  minor version; written 1
///       16   4 n  compatible brands
class FtypBox final : public Box {
public:
    /// Without compatible brands.
    explicit FtypBox(const BoxContext& context);
    FtypBox(const BoxContext& context, const BoxHeader& header);

    void writeFields() override;
    /// A list of brands that isn't a multiple of 4 bytes gives warnTruncated and counts as empty.
    void readFields() override;

    std::uint32_t majorBrand() const { return majorBrand_; }
    std::uint32_t minorVersion() const { return minorVersion_; }
    const BoxVector<std::uint32_t>& compatibleBrands() const { return compatibleBrands_; }
    void addCompatibleBrand(std::uint32_t brand);

private:
    // On purpose: a brand and a version of this system's own.
    // Pinned by FtypBoxTest.WritesTheBrandsOfThisSystem.
    std::uint32_t majorBrand_ = fourCc("kzm ");
    std::uint32_t minorVersion_ = 1;
    BoxVector<std::uint32_t> compatibleBrands_;
};

}  // namespace qlix::kzm::impl
