// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <sys/mman.h>
#include <unistd.h>

/// Runs `use` on a reader over the bytes, which lie in a file without a name.
template <class Use> void withAudioInput(const std::uint8_t* data, std::size_t size, Use use) {
    static const int fd = ::memfd_create("input", 0);
    if (::ftruncate(fd, 0) != 0 || ::pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
        return;
    static const QString path = QStringLiteral("/proc/self/fd/%1").arg(fd);
    if (auto reader = clipheave::platform::FileReader::open(path))
        use(*reader);
}
