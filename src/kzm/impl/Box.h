#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kzm/impl/BoxHeader.h"
#include "kzm/impl/BoxPtr.h"
#include "kzm/impl/BoxVector.h"
#include "kzm/impl/FieldReader.h"
#include "kzm/impl/FieldWriter.h"
#include "kzm/impl/KZMBase.h"
#include "kzm/impl/QlixKZMStream.h"
#include "kzm/impl/RequiredChild.h"

namespace qlix::kzm::impl {

class BoxFactory;
class RootBox;

/// Boxes deeper than this raise boxTooShort: no real file comes near it.
constexpr int kMaxBoxDepth = 32;

/// A box of a file: it reads, writes and sizes itself, and owns its children.
///
/// The class itself stands for boxes of unknown codes: read whole as their own size, without
/// children or fields. Sizes are bytes. `ownSize` is header and fixed fields, so it tells where
/// the children begin; `size` adds the children.
class Box : public KZMBase {
public:
    /// A box for writing, at position 0 until it is placed.
    Box(const BoxContext& context, std::uint32_t type, bool isLarge = false);
    /// A box that was found in the stream.
    Box(const BoxContext& context, const BoxHeader& header);
    ~Box() override;

    /// Writes size and type at the stream's position.
    virtual void writeHeader();
    virtual std::uint64_t ownSize() const;
    virtual std::uint64_t size() const;
    /// Own size without the header.
    virtual std::uint64_t fieldsSize() const;
    /// Places the child behind the last one and takes it over; null is ignored.
    virtual void addChild(BoxPtr child);
    /// Writes the box at its position with all its children: whole the first time, later only
    /// what can change. Throws writeFailed.
    virtual void write();
    /// Writes the fixed fields behind the header that was just written.
    virtual void writeFields();
    /// Rewrites what can change once the box stands in the file.
    virtual void updateFields();
    virtual void readVersionAndFlags();
    /// Reads the fixed fields behind the header. Throws boxTooShort, and more in some classes.
    virtual void readFields();
    /// Whether the required children are there.
    virtual bool verifyChildren() const;
    virtual RequiredChildren requiredChildren() const;
    /// The child at `index`, owned by this box; null beyond the last.
    virtual Box* child(std::size_t index);
    /// Back to the size of a box without fields and children.
    virtual void resetSize();
    /// Parses every child in order. `root` may be null.
    virtual void readChildren(RootBox* root, bool validate);

    std::uint32_t type() const { return header_.type; }
    const BoxHeader& header() const { return header_; }
    std::uint64_t position() const { return header_.start; }
    /// Moves the box and its children, which follow each other behind the own size.
    void setPosition(std::uint64_t position);
    /// Bytes from start to end of a box that was read, `size` of one made for writing.
    std::uint64_t length() const;
    bool wasWritten() const { return wasWritten_; }

    /// Children held now; a RootBox may still find more.
    std::size_t childCount() const { return children_.size(); }
    const Box* heldChild(std::size_t index) const { return children_[index].get(); }
    Box* heldChild(std::size_t index) { return children_[index].get(); }
    /// The first child of a code among those held, or null.
    Box* findChild(std::uint32_t code) const;
    std::size_t countChildren(std::uint32_t code) const;
    /// Counts the children whose code is in a list that ends with 0.
    std::size_t countChildrenAmong(const std::uint32_t* codes) const;

    /// Reads the boxes inside this box, all levels down, without their fields. `depth` is the
    /// level of this box. Throws boxTooShort beyond kMaxBoxDepth.
    void loadTree(BoxFactory& factory, int depth = 1);
    /// Reads the fields of this box and of all inside. With `validate` a box without its required
    /// children throws childrenMissing. Leaves the stream at the end of the box.
    void parse(RootBox* root, bool validate);

    /// Tells that a child became longer by `count` bytes behind the others.
    void childGrew(std::uint64_t count) { size_ += count; }

    const BoxContext& context() const { return context_; }
    Allocator* allocator() const { return context_.allocator; }
    QlixKZMStream& stream() const { return *context_.stream; }

protected:
    /// Sets own size and size to `size`, which counts a plain 8-byte header; a longer header that
    /// was read is added.
    void setFixedSize(std::uint64_t size);
    /// More fixed fields: own size and size grow.
    void grow(std::uint64_t count);
    void setSizes(std::uint64_t own, std::uint64_t whole);

    /// A reader of what follows the first `offset` bytes of the box.
    FieldReader fieldsFrom(std::uint64_t offset) const;
    FieldReader fields() const { return fieldsFrom(header_.headerSize()); }
    /// Writes collected fields at the stream's position.
    void put(const FieldWriter& out);
    /// Writes collected fields `offset` bytes behind the start of the box.
    void putAt(std::uint64_t offset, const FieldWriter& out);

    /// Points `place` to `child` if that is a T; null, or a child of another class, leaves it
    /// alone.
    template <class T>
    static void remember(T*& place, Box* child) {
        if (auto* found = dynamic_cast<T*>(child)) place = found;
    }
    /// Takes a child over at `index` without placing or counting it.
    void insertChild(std::size_t index, BoxPtr child);
    /// Gives a child out; sizes stay.
    BoxPtr takeChild(std::size_t index);
    /// Destroys the children that aren't wanted and frees their room in the list; sizes stay.
    template <class Predicate>
    void keepChildren(Predicate isWanted) {
        const auto behind = std::remove_if(children_.begin(), children_.end(),
                                           [&](const BoxPtr& each) { return !isWanted(*each); });
        children_.erase(behind, children_.end());
        children_.shrink_to_fit();
    }
    /// Destroys all children and frees the list; sizes stay.
    void dropChildren() noexcept { BoxVector<BoxPtr>(children_.get_allocator()).swap(children_); }
    void setExtendedType(const ExtendedType& type) { header_.extendedType = type; }

private:
    BoxContext context_;
    BoxHeader header_;
    BoxVector<BoxPtr> children_;
    std::uint64_t ownSize_;
    std::uint64_t size_;
    std::uint64_t sizeInFile_ = 0;  // the size that the last written header holds
    bool wasWritten_ = false;

    void patchSize();
    bool isMet(const RequiredChild& rule) const;
};

}  // namespace qlix::kzm::impl
