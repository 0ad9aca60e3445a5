#include "kzm/impl/Box.h"

#include <algorithm>
#include <utility>

#include "kzm/impl/BoxFactory.h"

namespace qlix::kzm::impl {

void BoxDeleter::operator()(Box* box) const noexcept {
    if (box == nullptr) return;
    void* memory = dynamic_cast<void*>(box);
    box->~Box();
    releaseTo(allocator_, memory);
}

Box::Box(const BoxContext& context, std::uint32_t type, bool isLarge)
    : context_(context), children_(HeapOf<BoxPtr>(context.allocator)) {
    header_.type = type;
    header_.isLarge = isLarge;
    ownSize_ = size_ = header_.headerSize();
}

Box::Box(const BoxContext& context, const BoxHeader& header)
    : context_(context),
      header_(header),
      children_(HeapOf<BoxPtr>(context.allocator)),
      ownSize_(header.end - header.start),
      size_(ownSize_) {}

Box::~Box() = default;

void Box::writeHeader() {
    FieldWriter out;
    if (header_.isLarge) {
        out.u32(1);
        out.u32(header_.type);
        out.u64(size());
    } else {
        out.u32(torvo::kzs::low32(size()));
        out.u32(header_.type);
    }
    put(out);
    sizeInFile_ = size();
}

std::uint64_t Box::ownSize() const { return ownSize_; }

std::uint64_t Box::size() const { return size_; }

std::uint64_t Box::fieldsSize() const { return ownSize_ - header_.headerSize(); }

void Box::addChild(BoxPtr child) {
    if (!child) return;
    if (child->header_.end == 0) child->setPosition(position() + size());
    const std::uint64_t length = child->length();
    children_.push_back(std::move(child));
    size_ += length;
}

void Box::write() {
    if (!wasWritten_) {
        stream().seek(position());
        writeHeader();
        writeFields();
        wasWritten_ = true;
    } else {
        updateFields();
    }
    for (const BoxPtr& each : children_) each->write();
    patchSize();
}

/// Only a container that got children since its header was written needs the patch.
void Box::patchSize() {
    if (sizeInFile_ == size()) return;
    FieldWriter out;
    if (header_.isLarge) {
        out.u64(size());
        putAt(8, out);
    } else {
        out.u32(torvo::kzs::low32(size()));
        putAt(0, out);
    }
    sizeInFile_ = size();
}

void Box::writeFields() {}

void Box::updateFields() {}

void Box::readVersionAndFlags() {}

void Box::readFields() {}

bool Box::verifyChildren() const {
    const RequiredChildren rules = requiredChildren();
    return std::all_of(rules.rows, rules.rows + rules.count,
                       [this](const RequiredChild& rule) { return isMet(rule); });
}

bool Box::isMet(const RequiredChild& rule) const {
    switch (rule.kind) {
        case RequiredChild::Kind::exactlyOne:
            return countChildren(rule.code) == 1;
        case RequiredChild::Kind::atLeastOne:
            return countChildren(rule.code) >= 1;
        case RequiredChild::Kind::exactlyOneAmong:
            return countChildrenAmong(rule.alternatives) == 1;
    }
    return false;
}

RequiredChildren Box::requiredChildren() const { return {}; }

Box* Box::child(std::size_t index) {
    return index < children_.size() ? children_[index].get() : nullptr;
}

void Box::resetSize() { setFixedSize(kBoxHeaderSize); }

void Box::readChildren(RootBox* root, bool validate) {
    for (const BoxPtr& each : children_) each->parse(root, validate);
}

void Box::setPosition(std::uint64_t position) {
    header_.start = position;
    std::uint64_t next = position + ownSize();
    for (const BoxPtr& each : children_) {
        each->setPosition(next);
        next += each->length();
    }
}

std::uint64_t Box::length() const {
    return header_.end != 0 ? header_.end - header_.start : size();
}

Box* Box::findChild(std::uint32_t code) const {
    const auto found = std::find_if(children_.begin(), children_.end(),
                                    [code](const BoxPtr& each) { return each->type() == code; });
    return found == children_.end() ? nullptr : found->get();
}

std::size_t Box::countChildren(std::uint32_t code) const {
    const std::uint32_t codes[] = {code, 0};
    return countChildrenAmong(codes);
}

std::size_t Box::countChildrenAmong(const std::uint32_t* codes) const {
    const std::uint32_t* end = codes;
    while (*end != 0) ++end;
    return static_cast<std::size_t>(std::count_if(
        children_.begin(), children_.end(),
        [codes, end](const BoxPtr& each) { return std::find(codes, end, each->type()) != end; }));
}

void Box::loadTree(BoxFactory& factory, int depth) {
    if (depth > kMaxBoxDepth) raise(ErrorCode::boxTooShort);
    std::uint64_t next = header_.start + ownSize();
    // Fewer than 8 bytes behind the last child are padding.
    while (next < header_.end && header_.end - next >= kBoxHeaderSize) {
        stream().seek(next);
        const std::optional<BoxHeader> header = readBoxHeader(stream(), &header_);
        if (!header) {
            next = std::max(stream().tell(), next + kBoxHeaderSize);
            continue;
        }
        BoxPtr box = factory.create(stream(), *header, allocator());
        box->loadTree(factory, depth + 1);
        addChild(std::move(box));
        next = header->end;
    }
    stream().seek(header_.end);
}

void Box::parse(RootBox* root, bool validate) {
    if (validate && !verifyChildren()) raise(ErrorCode::childrenMissing);
    stream().seek(header_.start + header_.headerSize());
    readVersionAndFlags();
    readFields();
    readChildren(root, validate);
    stream().seek(header_.end);
}

void Box::setFixedSize(std::uint64_t size) {
    ownSize_ = size_ = size + (header_.headerSize() - kBoxHeaderSize);
}

void Box::grow(std::uint64_t count) {
    ownSize_ += count;
    size_ += count;
}

void Box::setSizes(std::uint64_t own, std::uint64_t whole) {
    ownSize_ = own;
    size_ = whole;
}

FieldReader Box::fieldsFrom(std::uint64_t offset) const {
    stream().seek(header_.start + offset);
    return FieldReader(stream(), header_.end);
}

void Box::put(const FieldWriter& out) { stream().write(out.data(), out.size()); }

void Box::putAt(std::uint64_t offset, const FieldWriter& out) {
    stream().seek(position() + offset);
    put(out);
}

void Box::insertChild(std::size_t index, BoxPtr child) {
    children_.insert(children_.begin() + static_cast<std::ptrdiff_t>(index), std::move(child));
}

BoxPtr Box::takeChild(std::size_t index) {
    BoxPtr out = std::move(children_[index]);
    children_.erase(children_.begin() + static_cast<std::ptrdiff_t>(index));
    return out;
}

}  // namespace qlix::kzm::impl
