// SPDX-License-Identifier: GPL-3.0-or-later
// The boxes of HEIF and CR3 as a file, and its parts alone, which a cut file would not reach.
#include "platform/image/heif_items.h"
#include "platform/image/heif_reader.h"
#include "platform/image/image_layout.h"
#include "platform/isobmff/box.h"

#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using namespace clipheave::platform;

/// The bytes as an open file; -1 when the system has none.
int memoryFile(const std::uint8_t* data, std::size_t size) {
    const int fd = memfd_create("seed", MFD_CLOEXEC);
    if (fd >= 0 && write(fd, data, size) != static_cast<ssize_t>(size)) {
        close(fd);
        return -1;
    }
    return fd;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes(data, size);
    static_cast<void>(primaryItem(bytes));
    static_cast<void>(itemOfType(bytes, fourCc("Exif")));
    static_cast<void>(itemLocation(bytes, 1));
    static_cast<void>(itemProperties(bytes, 1));
    static_cast<void>(iccProfileName(bytes.toByteArray()));
    const int fd = memoryFile(data, size);
    if (fd < 0)
        return 0;
    auto reader = FileReader::open(QStringLiteral("/proc/self/fd/%1").arg(fd));
    if (reader) {
        const auto facts = readHeif(*reader);
        if (facts && facts->exif.size() > (8 << 20))
            __builtin_trap(); // more than the reader may hold
        static_cast<void>(imageLayout(*reader));
    }
    close(fd);
    return 0;
}
