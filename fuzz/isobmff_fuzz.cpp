// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/read/isobmff_reader.h"

#include <cstddef>
#include <sys/mman.h>
#include <unistd.h>

using namespace clipheave::platform;

namespace {

/// One file in memory that every input overwrites.
int memoryFile(const std::uint8_t* data, std::size_t size) {
    static const int fd = ::memfd_create("movie", MFD_CLOEXEC);
    if (::ftruncate(fd, 0) != 0 || ::pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
        return -1;
    return fd;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int fd = memoryFile(data, size);
    auto reader = FileReader::open(QStringLiteral("/proc/self/fd/%1").arg(fd));
    if (!reader)
        return 0;
    const Result<MediaFacts> facts = readIsobmff(*reader);
    if (!facts)
        return 0;
    for (const AVMetadataItem& item : facts->metadata) {
        // Whatever an item refers to must lie within the file.
        const bool lost =
            item.dataValue().isNull() && std::holds_alternative<FileSlice>(item.value);
        const bool noSource = item.source && !item.source->load();
        if (lost || noSource)
            __builtin_trap();
        static_cast<void>(item.stringValue());
        static_cast<void>(item.commonIdentifier());
        static_cast<void>(trackNumberText(item));
    }
    return 0;
}
