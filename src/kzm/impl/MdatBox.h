#pragma once

#include "kzm/impl/Box.h"
#include "kzm/impl/SampleBlock.h"

namespace qlix::kzm::impl {

/// Media data.
///
///   offset  size  field
///        0     4  1: the size follows the type
///        4     4  'mdat'
///        8     8  size
///       16     n  bytes of the samples in the order they came
///
/// A buffered box keeps the callers' blocks, uncopied, until it is destroyed; the last one is given
/// back first. An unbuffered one writes each block as it comes.
class MdatBox final : public Box {
public:
    MdatBox(const BoxContext& context, bool isBuffered);
    MdatBox(const BoxContext& context, const BoxHeader& header);
    ~MdatBox() override;

    /// Takes a sample over and returns its position: the box's position plus the bytes before it.
    /// An unbuffered box must have its place. Throws writeFailed.
    std::uint64_t addSample(SampleBlock block);

    /// Writes the blocks of a buffered box.
    void writeFields() override;

private:
    bool isBuffered_ = false;
    BoxVector<SampleBlock> blocks_;
};

}  // namespace qlix::kzm::impl
