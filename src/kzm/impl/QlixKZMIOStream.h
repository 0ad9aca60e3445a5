#pragma once

#include <cstddef>
#include <vector>

#include "kzm/QlixIOStream.h"
#include "kzm/impl/QlixKZMStream.h"

namespace qlix::kzm::impl {

/// Writes to a caller's stream, and reads from it.
///
/// Adjacent writes are joined in memory and handed on together: when a write lands elsewhere,
/// when the store is full, and on `flush`, `close`, `read` and `truncate`. A failure may so show
/// at a later call; what could not be written is then dropped. The destructor doesn't flush.
class QlixKZMIOStream final : public QlixKZMStream {
public:
    static constexpr std::size_t kStoreSize = 262144;

    /// Holds a reference on `stream`. Throws badArgument when it is null.
    explicit QlixKZMIOStream(QlixIOStream* stream);
    ~QlixKZMIOStream() override;

    void open() override;
    /// Flushes, then closes; closes also when the flush fails.
    void close() override;
    std::uint64_t read(void* buffer, std::uint64_t count) override;
    /// Continues a short write. Throws writeFailed when no byte is taken or the stream throws.
    void write(const void* buffer, std::uint64_t count) override;
    /// A stream that gathers gets the parts as they lie, behind what waits; any other one gets
    /// them as by `write`.
    void writeParts(const WritePart* parts, std::size_t count) override;
    void seek(std::uint64_t position) override;
    std::uint64_t tell() const override;
    void truncate(std::uint64_t size) override;
    void flush() override;

protected:
    std::uint64_t measureSize() override;

private:
    bool patchStored(const std::uint8_t* bytes, std::uint64_t count);
    void moveStreamTo(std::uint64_t position);
    void writeThrough(std::uint64_t position, const std::uint8_t* bytes, std::uint64_t count);
    void gatherStored(const WritePart* parts, std::size_t count);
    void gatherAll(std::vector<WritePart>& parts);

    QlixIOStream* stream_;        // one reference is ours
    QlixGatherStream* gather_;    // the same stream, null when it doesn't gather
    std::uint64_t position_ = 0;  // where the next read or write starts
    std::uint64_t streamAt_ = 0;  // where the caller's stream stands, if known
    bool streamAtKnown_ = false;
    std::vector<std::uint8_t> stored_;  // bytes that wait
    std::uint64_t storedAt_ = 0;        // their position
};

}  // namespace qlix::kzm::impl
