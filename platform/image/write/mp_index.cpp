// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/mp_index.h"

#include "platform/image/write/tiff_structure.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

const QByteArray kHead("MPF\0", 4);
constexpr std::uint16_t kEntries = 0xB002;
constexpr qsizetype kEntrySize = 16, kSizeAt = 4, kOffsetAt = 8;

/// The entries of the index, and where they begin in the payload; empty when there are none.
struct MpEntries {
    TiffStructure structure;
    QByteArray bytes;
    qsizetype at = 0;
};

MpEntries entriesOf(const QByteArray& payload) {
    const TiffSource source = TiffSource::ofBlock(payload.mid(kHead.size()));
    const auto structure = readTiffStructure(source);
    if (!structure)
        return {};
    const TiffEntry* entry = structure->directories.front().find(kEntries);
    if (entry == nullptr || entry->isInField() || !entry->isInside)
        return {};
    return {*structure, source.read(entry->valueOffset, entry->valueSize),
            kHead.size() + static_cast<qsizetype>(entry->valueOffset)};
}

/// The length of the segment's marker and length field.
qsizetype headOf(const JpegSegment& segment) {
    return static_cast<qsizetype>(segment.size) - segment.payload.size();
}

} // namespace

bool isMpIndex(const JpegSegment& segment) {
    return segment.marker == kJpegApp2 && segment.payload.startsWith(kHead);
}

std::vector<ByteSpan> furtherImages(const JpegSegment& index, std::uint64_t fileSize) {
    const MpEntries entries = entriesOf(index.payload);
    const std::uint64_t base =
        index.offset + static_cast<std::uint64_t>(headOf(index) + kHead.size());
    std::vector<ByteSpan> images;
    for (qsizetype at = 0; at + kEntrySize <= entries.bytes.size(); at += kEntrySize) {
        const std::uint64_t length = entries.structure.u32(entries.bytes, at + kSizeAt);
        const std::uint64_t offset = entries.structure.u32(entries.bytes, at + kOffsetAt);
        if (offset == 0 || base + offset >= fileSize) // the first image has 0
            continue;
        images.push_back({base + offset, std::min(length, fileSize - base - offset)});
    }
    std::sort(images.begin(), images.end(),
              [](const ByteSpan& a, const ByteSpan& b) { return a.offset < b.offset; });
    for (std::size_t i = 0; i + 1 < images.size(); ++i)
        images[i].length = std::min(images[i].length, images[i + 1].offset - images[i].offset);
    return images;
}

QByteArray movedMpIndex(FileReader& reader, const JpegSegment& index, std::int64_t grows,
                        std::int64_t moved) {
    const MpEntries entries = entriesOf(index.payload);
    QByteArray payload = index.payload;
    const auto patch = [&](qsizetype at, std::int64_t by) {
        const std::int64_t value = entries.structure.u32(entries.bytes, at) + by;
        payload.replace(entries.at + at, 4,
                        entries.structure.bytes32(static_cast<std::uint32_t>(value)));
    };
    for (qsizetype at = 0; at + kEntrySize <= entries.bytes.size(); at += kEntrySize) {
        if (entries.structure.u32(entries.bytes, at + kOffsetAt) == 0)
            patch(at + kSizeAt, grows);
        else
            patch(at + kOffsetAt, grows - moved);
    }
    const auto head = reader.read(index.offset, static_cast<std::uint64_t>(headOf(index)));
    return head ? *head + payload : payload;
}

} // namespace clipheave::platform
