#pragma once

namespace qlix::kzm::impl {

/// Common root of boxes, documents, readers and writers.
class KZMBase {
public:
    KZMBase() = default;
    KZMBase(const KZMBase&) = delete;
    KZMBase& operator=(const KZMBase&) = delete;
    virtual ~KZMBase() = default;
};

}  // namespace qlix::kzm::impl
