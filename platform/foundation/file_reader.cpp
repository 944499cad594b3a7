// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/file_reader.h"

#include "platform/foundation/messages.h"
#include "platform/foundation/paths.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace clipheave::platform {
namespace {

constexpr std::uint64_t kReaderAlignment = 4096;
// A sparse file can claim any size: nobody needs more than this in memory at once.
constexpr std::uint64_t kMaxRead = 1u << 30;

/// Bytes read into `target`, less than `length` only at the end of the file; -1 with errno set.
std::int64_t preadAll(int fd, char* target, std::uint64_t length, std::uint64_t offset) {
    std::uint64_t done = 0;
    while (done < length) {
        const ssize_t got =
            ::pread(fd, target + done, length - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        done += static_cast<std::uint64_t>(got);
    }
    return static_cast<std::int64_t>(done);
}

tl::unexpected<Error> shorterThanAnnounced(const QString& path) {
    return failure(ErrorCode::Truncated, kReadFile, path, kEndsBeforeAnnouncedBytes);
}

tl::unexpected<Error> notARegularFile(const QString& path) {
    return failure(ErrorCode::NotSupported, kOpenFile, path, kNotARegularFile);
}

} // namespace

void FileDescriptor::reset(int fd) noexcept {
    if (m_fd == fd)
        return;
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = fd;
}

Result<QByteArray> FileSlice::load(std::uint64_t limit) const {
    if (length > limit)
        return failure(ErrorCode::LimitExceeded, kReadFile, path);
    Result<FileReader> reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    return reader->read(offset, length);
}

Result<FileReader> FileReader::open(const QString& path) {
    // O_NONBLOCK: a FIFO without a writer would otherwise stop the whole import.
    FileDescriptor fd(
        ::open(nativePath(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!fd)
        return systemFailure(kOpenFile, path, errno);
    struct stat status {};
    if (::fstat(fd.get(), &status) != 0)
        return systemFailure(kOpenFile, path, errno);
    if (!S_ISREG(status.st_mode))
        return notARegularFile(path);
    FileReader reader;
    reader.m_path = path;
    reader.m_fd = std::move(fd);
    reader.m_size = static_cast<std::uint64_t>(status.st_size);
    return reader;
}

bool FileReader::fillWindow(std::uint64_t offset) {
    m_windowOffset = offset;
    const std::uint64_t wanted = std::min(kWindow, m_size - offset);
    m_window.resize(static_cast<qsizetype>(wanted));
    const std::int64_t got = preadAll(m_fd.get(), m_window.data(), wanted, offset);
    m_window.resize(static_cast<qsizetype>(std::max<std::int64_t>(got, 0)));
    m_fetched += static_cast<std::uint64_t>(m_window.size());
    return got >= 0;
}

Result<ByteView> FileReader::view(std::uint64_t offset, std::uint64_t length) {
    if (length > kWindow)
        return failure(ErrorCode::LimitExceeded, kReadFile, m_path);
    if (offset > m_size || length > m_size - offset)
        return shorterThanAnnounced(m_path);
    const auto cached = [&] {
        const std::uint64_t held = static_cast<std::uint64_t>(m_window.size());
        return offset >= m_windowOffset && offset - m_windowOffset <= held &&
               length <= held - (offset - m_windowOffset);
    };
    if (!cached()) {
        // A window that starts on a page also serves a read a few bytes back.
        const std::uint64_t start = offset - offset % kReaderAlignment;
        const bool fits = length <= kWindow - (offset - start);
        if (!fillWindow(fits ? start : offset))
            return systemFailure(kReadFile, m_path, errno);
        if (!cached())
            return shorterThanAnnounced(m_path);
    }
    return ByteView(m_window).sub(offset - m_windowOffset, length);
}

ByteView FileReader::viewUpTo(std::uint64_t offset, std::uint64_t length) {
    if (offset >= m_size)
        return {};
    length = std::min({length, m_size - offset, kWindow});
    if (const Result<ByteView> whole = view(offset, length))
        return *whole;
    // The file has become shorter since it was opened: what the window got is what there is.
    return offset >= m_windowOffset ? ByteView(m_window).sub(offset - m_windowOffset, length)
                                    : ByteView();
}

Result<QByteArray> FileReader::read(std::uint64_t offset, std::uint64_t length) {
    if (offset > m_size || length > m_size - offset)
        return shorterThanAnnounced(m_path);
    if (length > kMaxRead)
        return failure(ErrorCode::LimitExceeded, kReadFile, m_path);
    if (length <= kReaderAlignment) {
        const Result<ByteView> seen = view(offset, length);
        if (!seen)
            return tl::unexpected(seen.error());
        return seen->toByteArray();
    }
    QByteArray bytes(static_cast<qsizetype>(length), Qt::Uninitialized);
    const std::int64_t got = preadAll(m_fd.get(), bytes.data(), length, offset);
    if (got < 0)
        return systemFailure(kReadFile, m_path, errno);
    m_fetched += static_cast<std::uint64_t>(got);
    if (static_cast<std::uint64_t>(got) < length)
        return shorterThanAnnounced(m_path);
    return bytes;
}

} // namespace clipheave::platform
