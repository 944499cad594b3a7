// SPDX-License-Identifier: GPL-3.0-or-later
// The writers of photos: what they plan of any bytes reads back, and a second removal changes
// nothing.
#include "platform/image/write/iptc_block.h"
#include "platform/image/write/photo_plan.h"
#include "platform/image/write/xmp_packet.h"

#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using namespace clipheave::platform;

PhotoChange someChange(bool removes) {
    PhotoChange change = changeOf(
        {{QStringLiteral("{TIFF}"),
          QVariantMap{{QStringLiteral("Artist"), QStringLiteral("A longer name than before")}}},
         {QStringLiteral("{GPS}"), QVariantMap{{QStringLiteral("Latitude"), 33.5}}},
         {QStringLiteral("{IPTC}"),
          QVariantMap{{QStringLiteral("ObjectName"), QStringLiteral("Tïtle")}}}});
    change.dropsExif = removes;
    return change;
}

void changeBlocks(const QByteArray& bytes) {
    for (const bool removes : {false, true}) {
        const PhotoChange change = someChange(removes);
        const auto block = changedTiffBlock(bytes, change);
        if (block && !block->isEmpty() && !readTiffStructure(TiffSource::ofBlock(*block)))
            __builtin_trap();
        if (block && block->size() > 2 * bytes.size() + 4096) // a table that grows moves
            __builtin_trap();
        static_cast<void>(changedIptc(bytes, change));
        static_cast<void>(changedImageResources(bytes, change));
        static_cast<void>(changedXmpPacket(bytes, change));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes = ByteView(data, size).toByteArray();
    changeBlocks(bytes);
    const int fd = memfd_create("seed", MFD_CLOEXEC);
    if (fd < 0 || write(fd, data, size) != static_cast<ssize_t>(size))
        return 0;
    if (auto reader = FileReader::open(QStringLiteral("/proc/self/fd/%1").arg(fd)))
        for (const bool removes : {false, true})
            static_cast<void>(plannedPhoto(*reader, someChange(removes)));
    close(fd);
    return 0;
}
