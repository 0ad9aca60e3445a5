#pragma once

#include <cstdint>
#include <optional>

#include "kzm/ErrorCode.h"
#include "kzm/QlixGatherStream.h"

namespace qlix::kzm {
class QlixIStream;
}

namespace qlix::kzm::impl {

/// The library's side of a stream: exact reads, the size, and the channel for warnings.
///
/// The operations of this class do nothing; QlixKZMIStream and QlixKZMIOStream fill them in.
/// Positions count from the start of the stream.
class QlixKZMStream {
public:
    /// Answers whether to go on. `code` is a warning of ErrorCode.
    using WarningCallback = bool (*)(void* context, std::uint32_t code);

    QlixKZMStream() = default;
    QlixKZMStream(const QlixKZMStream&) = delete;
    QlixKZMStream& operator=(const QlixKZMStream&) = delete;
    virtual ~QlixKZMStream() = default;

    virtual void open();
    virtual void close();
    /// Reads up to `count` bytes; fewer only at the end of the stream.
    virtual std::uint64_t read(void* buffer, std::uint64_t count);
    /// Takes all bytes, or throws writeFailed. They may wait in memory until `flush`.
    virtual void write(const void* buffer, std::uint64_t count);
    /// The same for pieces that lie apart in memory, as if they were one buffer.
    virtual void writeParts(const WritePart* parts, std::size_t count);
    virtual void seek(std::uint64_t position);
    virtual std::uint64_t tell() const;
    virtual void truncate(std::uint64_t size);
    /// Hands everything that waits to the stream below. Throws writeFailed.
    virtual void flush();

    /// Throws shortRead when fewer than `count` bytes are there.
    void readExact(void* buffer, std::uint64_t count);
    std::uint32_t readU32();
    std::uint64_t readU64();

    /// Size of the stream in bytes, measured at the first call and then kept.
    std::uint64_t byteSize();
    /// Bytes between the position and the end; 0 when the position is beyond it.
    std::uint64_t left();

    /// `callback` may be null: then every warning is tolerated.
    void setWarningCallback(WarningCallback callback, void* context);
    /// Reports a tolerable fault. Throws warningRefused when the callback says so.
    void warn(ErrorCode code) const;

    /// While it lives, all warnings are tolerated without a word: what is read again was told of.
    class Quiet {
    public:
        explicit Quiet(QlixKZMStream& stream) : stream_(stream), callback_(stream.callback_) {
            stream_.callback_ = nullptr;
        }
        ~Quiet() { stream_.callback_ = callback_; }
        Quiet(const Quiet&) = delete;
        Quiet& operator=(const Quiet&) = delete;

    private:
        QlixKZMStream& stream_;
        WarningCallback callback_;
    };

protected:
    /// Measures the size; the position stays.
    virtual std::uint64_t measureSize();
    void forgetSize() { size_.reset(); }
    /// The size of a caller's stream, whose position stays. Throws shortRead when it can't tell.
    static std::uint64_t sizeOf(QlixIStream& stream);

private:
    std::optional<std::uint64_t> size_;
    WarningCallback callback_ = nullptr;
    void* callbackContext_ = nullptr;  // the callback's own
};

}  // namespace qlix::kzm::impl
