// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"
#include "platform/foundation/handles.h"
#include "platform/foundation/result.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace clipheave::platform {

/// A range of a file whose bytes are read when they are asked for.
struct FileSlice {
    QString path;
    std::uint64_t offset = 0;
    std::uint64_t length = 0; ///< bytes

    /// The bytes, or Truncated when the file has become shorter. At most `limit` bytes are read
    /// (LimitExceeded beyond it).
    [[nodiscard]] Result<QByteArray> load(std::uint64_t limit = 64u << 20) const;
};

/// A regular file open for reading at any offset. Small reads are served from one window of
/// `kWindow` bytes, so that the headers of a small file cost one system call. Not thread-safe.
///
/// Opening never blocks: a FIFO, socket or device is NotSupported, a folder likewise.
class FileReader {
public:
    static constexpr std::uint64_t kWindow = 64u << 10;

    /// NotFound, AccessDenied, NotSupported or Io. Bytes of the name that are not UTF-8 are in
    /// `path` as `paths.h` says.
    [[nodiscard]] static Result<FileReader> open(const QString& path);

    FileReader(FileReader&&) noexcept = default;
    FileReader& operator=(FileReader&&) noexcept = default;

    [[nodiscard]] const QString& path() const { return m_path; }
    [[nodiscard]] std::uint64_t size() const { return m_size; }
    [[nodiscard]] int fd() const { return m_fd.get(); }

    /// `length` bytes at `offset`, borrowed until the next call of view() or read(); Truncated when
    /// the file is shorter, LimitExceeded when `length` is over kWindow.
    [[nodiscard]] Result<ByteView> view(std::uint64_t offset, std::uint64_t length);
    /// Like view(), but cut at the end of the file and at kWindow instead of failing; empty beyond.
    [[nodiscard]] ByteView viewUpTo(std::uint64_t offset, std::uint64_t length);
    /// An own copy of `length` bytes at `offset`; Truncated when the file is shorter, LimitExceeded
    /// over 1 GiB.
    [[nodiscard]] Result<QByteArray> read(std::uint64_t offset, std::uint64_t length);

    /// Bytes read from the system so far; tests check with it that readers read headers only.
    [[nodiscard]] std::uint64_t bytesFetched() const { return m_fetched; }

private:
    FileReader() = default;
    [[nodiscard]] bool fillWindow(std::uint64_t offset);

    QString m_path;
    FileDescriptor m_fd;
    std::uint64_t m_size = 0;
    std::uint64_t m_windowOffset = 0;
    QByteArray m_window;
    std::uint64_t m_fetched = 0;
};

} // namespace clipheave::platform
