// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QSize>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace clipheave::platform {

/// "BGRA": four bytes a pixel, blue first.
inline constexpr std::uint32_t kCVPixelFormatType_32BGRA = 0x42475241;

class CVPixelBufferPool;

/// A frame in memory, 32-bit BGRA, shared by all who hold it; whoever holds it may change the
/// pixels. Its memory goes back to the pool it came from.
class CVPixelBuffer {
public:
    /// The largest side, and the most pixels, of any buffer.
    static constexpr int kMostSide = 16384;
    static constexpr std::int64_t kMostPixels = 128 << 20;

    /// One of its own, black and transparent. LimitExceeded for a size that is empty or beyond
    /// what is handled, Io without memory.
    [[nodiscard]] static Result<std::shared_ptr<CVPixelBuffer>> create(QSize size);
    ~CVPixelBuffer();
    CVPixelBuffer(const CVPixelBuffer&) = delete;
    CVPixelBuffer& operator=(const CVPixelBuffer&) = delete;

    [[nodiscard]] int width() const { return m_size.width(); }
    [[nodiscard]] int height() const { return m_size.height(); }
    [[nodiscard]] QSize size() const { return m_size; }
    /// A multiple of 64. Behind the last row there are 64 bytes more for those who write vectors.
    [[nodiscard]] int bytesPerRow() const { return m_bytesPerRow; }
    [[nodiscard]] std::uint8_t* baseAddress() { return m_bytes.get(); }
    [[nodiscard]] const std::uint8_t* baseAddress() const { return m_bytes.get(); }
    [[nodiscard]] std::uint32_t pixelFormatType() const { return kCVPixelFormatType_32BGRA; }

    /// Width of a pixel by its height, as a fraction of whole numbers.
    int pixelAspectWidth = 1, pixelAspectHeight = 1;

private:
    friend class CVPixelBufferPool;
    struct Free {
        void operator()(std::uint8_t* bytes) const;
    };
    using Bytes = std::unique_ptr<std::uint8_t[], Free>;
    struct Spares;
    static Bytes allocate(QSize size);
    CVPixelBuffer(QSize size, Bytes bytes, std::weak_ptr<Spares> home);

    QSize m_size;
    int m_bytesPerRow = 0;
    Bytes m_bytes;
    std::weak_ptr<Spares> m_home;
};

/// Hands out buffers of one size; the memory of those that nobody holds any more is reused.
/// Thread-safe. Buffers outlive their pool.
class CVPixelBufferPool {
public:
    /// Keeps the memory of at most `spares` buffers.
    CVPixelBufferPool(QSize size, std::size_t spares);
    /// Returns a buffer whose pixels are undefined. Errors as CVPixelBuffer::create().
    [[nodiscard]] Result<std::shared_ptr<CVPixelBuffer>> createPixelBuffer();
    [[nodiscard]] QSize size() const { return m_size; }

private:
    QSize m_size;
    std::shared_ptr<CVPixelBuffer::Spares> m_spares;
};

} // namespace clipheave::platform
