// SPDX-License-Identifier: GPL-3.0-or-later
// The writers of photos: what they plan of any bytes reads back; images of HEIF files keep their
// bytes.
#include "platform/image/write/heif_structure.h"
#include "platform/image/write/iptc_block.h"
#include "platform/image/write/photo_plan.h"
#include "platform/image/write/xmp_packet.h"

#include <cstdint>
#include <cstdlib>
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
        Notes notes;
        static_cast<void>(changedImageResources(bytes, change, ResourceBlocks::IptcAndExif, notes));
        static_cast<void>(changedXmpPacket(bytes, change));
    }
}

/// A file in memory.
class MemoryFile {
public:
    explicit MemoryFile(const QByteArray& bytes) : m_fd(memfd_create("seed", MFD_CLOEXEC)) {
        if (write(m_fd, bytes.constData(), static_cast<std::size_t>(bytes.size())) != bytes.size())
            abort();
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(m_fd); }
    [[nodiscard]] Result<FileReader> open() const {
        return FileReader::open(QStringLiteral("/proc/self/fd/%1").arg(m_fd));
    }

private:
    int m_fd;
};

QByteArray bytesOf(FileReader& source, const PhotoPlan& plan) {
    QByteArray bytes;
    for (const FilePart& part : plan.parts)
        bytes += part.bytes.isEmpty() ? source.read(part.offset, part.length).value() : part.bytes;
    return bytes;
}

void checkImages(FileReader& before, const PhotoPlan& plan) {
    constexpr std::uint64_t kLimit = 1u << 20;
    const auto old = readHeifStructure(before);
    if (!old)
        return;
    const MemoryFile file(bytesOf(before, plan));
    auto after = file.open();
    const auto now = readHeifStructure(*after);
    if (!now)
        __builtin_trap();
    for (const ItemLocation& item : now->locations.items) {
        const ItemEntry* entry = now->entries.find(item.id);
        const ItemLocation* was = old->locations.find(item.id);
        if (entry == nullptr || was == nullptr || entry->type == fourCc("Exif") || entry->isXmp())
            continue;
        const auto bytes = old->load(before, *was, kLimit);
        if (const auto kept = now->load(*after, item, kLimit); bytes && kept != *bytes)
            __builtin_trap();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes = ByteView(data, size).toByteArray();
    changeBlocks(bytes);
    const MemoryFile file(bytes);
    auto reader = file.open();
    if (!reader)
        return 0;
    for (const bool removes : {false, true})
        for (const bool everything : {false, true}) {
            PhotoChange change = someChange(removes);
            change.dropsEverything = everything;
            if (const auto plan = plannedPhoto(*reader, change))
                checkImages(*reader, *plan);
        }
    return 0;
}
