// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/cv_pixel_buffer.h"

#include "platform/foundation/messages.h"
#include "platform/media/model/messages.h"

#include <cstring>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace clipheave::platform {

namespace {

constexpr std::align_val_t kPixelAlignment{64};
constexpr std::size_t kRowUnit = 64;

std::size_t rowBytes(QSize size) {
    return (static_cast<std::size_t>(size.width()) * 4 + kRowUnit - 1) / kRowUnit * kRowUnit;
}

std::size_t bufferBytes(QSize size) {
    return rowBytes(size) * static_cast<std::size_t>(size.height()) + kRowUnit;
}

bool isHandled(QSize size) {
    return !size.isEmpty() && size.width() <= CVPixelBuffer::kMostSide &&
           size.height() <= CVPixelBuffer::kMostSide &&
           std::int64_t{size.width()} * size.height() <= CVPixelBuffer::kMostPixels;
}

tl::unexpected<Error> bufferError(ErrorCode code, const Message& why) {
    return failure(code, kCreatePixelBuffer, {}, why);
}

} // namespace

/// Memory that waits for its next frame.
struct CVPixelBuffer::Spares {
    explicit Spares(std::size_t limit) : most(limit) { kept.reserve(limit); }
    const std::size_t most;
    std::mutex mutex;
    std::vector<Bytes> kept;
};

void CVPixelBuffer::Free::operator()(std::uint8_t* bytes) const {
    ::operator delete[](bytes, kPixelAlignment);
}

CVPixelBuffer::Bytes CVPixelBuffer::allocate(QSize size) {
    return Bytes(static_cast<std::uint8_t*>(
        ::operator new[](bufferBytes(size), kPixelAlignment, std::nothrow)));
}

CVPixelBuffer::CVPixelBuffer(QSize size, Bytes bytes, std::weak_ptr<Spares> home)
    : m_size(size), m_bytesPerRow(static_cast<int>(rowBytes(size))), m_bytes(std::move(bytes)),
      m_home(std::move(home)) {
}

CVPixelBuffer::~CVPixelBuffer() {
    if (const auto home = m_home.lock()) {
        const std::lock_guard lock(home->mutex);
        if (home->kept.size() < home->most)
            home->kept.push_back(std::move(m_bytes));
    }
}

Result<std::shared_ptr<CVPixelBuffer>> CVPixelBuffer::create(QSize size) {
    auto made = CVPixelBufferPool(size, 0).createPixelBuffer();
    if (made)
        std::memset((*made)->baseAddress(), 0, bufferBytes(size));
    return made;
}

CVPixelBufferPool::CVPixelBufferPool(QSize size, std::size_t spares)
    : m_size(size), m_spares(std::make_shared<CVPixelBuffer::Spares>(spares)) {
}

Result<std::shared_ptr<CVPixelBuffer>> CVPixelBufferPool::createPixelBuffer() {
    if (!isHandled(m_size))
        return bufferError(ErrorCode::LimitExceeded,
                           Message(kFrameSizeOutOfRange, {QString::number(m_size.width()),
                                                          QString::number(m_size.height())}));
    CVPixelBuffer::Bytes bytes;
    {
        const std::lock_guard lock(m_spares->mutex);
        if (!m_spares->kept.empty()) {
            bytes = std::move(m_spares->kept.back());
            m_spares->kept.pop_back();
        }
    }
    if (bytes == nullptr)
        bytes = CVPixelBuffer::allocate(m_size);
    if (bytes == nullptr)
        return bufferError(ErrorCode::Io, kOutOfMemory);
    return std::shared_ptr<CVPixelBuffer>(new CVPixelBuffer(m_size, std::move(bytes), m_spares));
}

} // namespace clipheave::platform
