#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "kzm/Reader.h"
#include "kzm/impl/DataCache.h"
#include "kzm/impl/EditList.h"
#include "kzm/impl/KZMBase.h"
#include "kzm/impl/KZMDocument.h"
#include "kzm/impl/QlixKZMIStream.h"

namespace qlix::kzm::impl {

/// An open document; see kzm::Reader, whose operations these are.
class Reader : public KZMBase, public std::enable_shared_from_this<Reader> {
public:
    /// `factory` may be null: the standard one.
    Reader(QlixIStream& stream, WarningHandler* handler, Allocator* allocator, bool ignoreEdits,
           BoxFactory* factory = nullptr);

    DocInfo docInfo() const;
    /// In file order.
    std::vector<std::shared_ptr<const KZMTrack>> tracks(
        const std::vector<std::uint32_t>& handlers) const;
    /// By the list of handlers, within a handler in file order; all tracks for an empty list.
    std::vector<std::shared_ptr<const KZMTrack>> selected(
        const std::vector<std::uint32_t>& handlers) const;
    std::shared_ptr<SampleIterator> createIterator(
        const ScaledTime& start, const ScaledTime& end,
        const std::vector<std::shared_ptr<const KZMTrack>>& tracks);
    ScaledTime wholeEnd() const;
    void sampleData(const Sample& sample, std::uint8_t* buffer);

    bool ignoresEdits() const { return ignoreEdits_; }
    std::uint64_t fileSize() { return stream_.byteSize(); }

private:
    bool beginsInTables() const;
    std::uint64_t durationOfFragments() const;

    /// The stream is open as long as this lives.
    class OpenStream {
    public:
        explicit OpenStream(QlixKZMIStream& stream);
        ~OpenStream();
        OpenStream(const OpenStream&) = delete;
        OpenStream& operator=(const OpenStream&) = delete;

    private:
        QlixKZMIStream& stream_;
    };

    QlixKZMIStream stream_;
    OpenStream openStream_;
    KZMDocument document_;
    DataCache cache_;
    bool ignoreEdits_;
};

}  // namespace qlix::kzm::impl
