// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/memory_file.h"

#include "platform/foundation/handles.h"
#include "platform/foundation/messages.h"

#include <cerrno>
#include <sys/mman.h>
#include <unistd.h>

namespace clipheave::platform {

Result<FileReader> openMemoryFile(const QByteArray& bytes) {
    const FileDescriptor fd(::memfd_create("clipheave", MFD_CLOEXEC));
    if (!fd)
        return systemFailure(kReadFile, {}, errno);
    for (qsizetype at = 0; at < bytes.size();) {
        const ssize_t got =
            ::write(fd.get(), bytes.constData() + at, static_cast<std::size_t>(bytes.size() - at));
        if (got <= 0)
            return systemFailure(kReadFile, {}, errno);
        at += got;
    }
    return FileReader::open(QStringLiteral("/proc/self/fd/%1").arg(fd.get()));
}

} // namespace clipheave::platform
