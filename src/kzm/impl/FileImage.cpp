#include "kzm/impl/FileImage.h"

#include <algorithm>

#include "kzm/ErrorCode.h"

namespace qlix::kzm::impl {

void FileImage::begin(std::uint64_t start) {
    start_ = start;
    position_ = start;
    held_.clear();
    changes_.clear();
}

bool FileImage::holds(std::uint64_t position, std::uint64_t count) const {
    return position >= start_ && count <= held_.size() && position - start_ <= held_.size() - count;
}

void FileImage::write(const void* buffer, std::uint64_t count) {
    if (position_ < start_) raise(ErrorCode::writeFailed);
    const auto* bytes = static_cast<const std::uint8_t*>(buffer);
    const auto first = static_cast<std::size_t>(position_ - start_);
    const auto end = first + static_cast<std::size_t>(count);
    const std::size_t heldBefore = held_.size();
    if (end > heldBefore) {
        held_.resize(end);
        std::copy_n(bytes, count, held_.data() + first);
        markChanged({first, end});
    } else if (!std::equal(bytes, bytes + count, held_.data() + first)) {
        std::copy_n(bytes, count, held_.data() + first);
        markChanged({first, end});
    }
    position_ += count;
}

void FileImage::markChanged(Range range) {
    const auto isNear = [](const Range& left, const Range& right) {
        return left.first <= right.end + kJoinDistance && right.first <= left.end + kJoinDistance;
    };
    // Nearly always the last change goes on.
    if (!changes_.empty() && changes_.back().end == range.first) {
        changes_.back().end = range.end;
        if (changes_.size() == 1) return;
        range = changes_.back();
        changes_.pop_back();
    }
    // The oldest change that is near keeps its turn and takes the others in.
    auto home = changes_.end();
    for (auto each = changes_.begin(); each != changes_.end();) {
        if (!isNear(*each, range)) {
            ++each;
            continue;
        }
        range = {std::min(each->first, range.first), std::max(each->end, range.end)};
        if (home == changes_.end()) {
            home = each++;
        } else {
            const auto index = home - changes_.begin();
            each = changes_.erase(each);
            home = changes_.begin() + index;
        }
    }
    if (home == changes_.end()) {
        changes_.push_back(range);
    } else {
        *home = range;
    }
}

void FileImage::flush() {
    std::vector<Range> changes;
    changes.swap(changes_);
    for (const Range& each : changes) {
        file_.seek(start_ + each.first);
        file_.write(held_.data() + each.first, each.end - each.first);
    }
}

}  // namespace qlix::kzm::impl
