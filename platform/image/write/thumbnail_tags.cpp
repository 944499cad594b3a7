// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/thumbnail_tags.h"

#include "platform/foundation/byte_view.h"
#include "platform/image/write/jpeg_segments.h"
#include "platform/image/write/xmp_packet.h"

#include <optional>

namespace clipheave::platform {

namespace {

constexpr std::uint16_t kThumbnailPlace = 0x0201, kThumbnailSize = 0x0202;
const QByteArray kThumbnailExif("Exif\0\0", 6);
const QByteArray kThumbnailXmp("http://ns.adobe.com/xap/1.0/\0", 29);

using BlockChanger = std::function<Result<QByteArray>(const QByteArray&, const PhotoChange&)>;

/// Returns the new payload of an application segment; nothing when it stays.
std::optional<QByteArray> changedPayload(const QByteArray& payload, const PhotoChange& change,
                                         const BlockChanger& changer) {
    const bool isExif = payload.startsWith(kThumbnailExif);
    const QByteArray& head = isExif ? kThumbnailExif : kThumbnailXmp;
    if (!payload.startsWith(head))
        return std::nullopt;
    const QByteArray old = payload.mid(head.size());
    Result<QByteArray> changed = QByteArray();
    if (!isExif)
        changed = changedXmpPacket(old, change);
    else if (const auto editor = TiffEditor::open(TiffSource::ofBlock(old)))
        changed = changer(old, changeOfFurtherImage(change, *editor));
    if (changed && *changed == old)
        return std::nullopt;
    const bool fits = changed && !changed->isEmpty() && changed->size() <= old.size();
    return (fits ? head + *changed : QByteArray())
        .leftJustified(payload.size(), isExif || !fits ? '\0' : ' ');
}

/// Changes the segments of the JPEG image at these offsets of the block.
void changeSegments(QByteArray& block, std::uint64_t at, std::uint64_t end,
                    const PhotoChange& change, const BlockChanger& changer) {
    for (at += 2; at + 4 <= end;) {
        const ByteView view(block);
        const std::uint16_t marker = view.be16(at).value_or(0);
        const std::uint64_t size = view.be16(at + 2).value_or(0);
        constexpr std::uint16_t kFirst = 0xFFC0, kScan = 0xFFDA;
        if (marker < kFirst || marker == kScan || size < 2 || at + 2 + size > end)
            return;
        if (marker == (0xFF00 | kJpegApp1)) {
            const auto payload =
                changedPayload(view.sub(at + 4, size - 2).toByteArray(), change, changer);
            if (payload)
                block.replace(static_cast<qsizetype>(at + 4), payload->size(), *payload);
        }
        at += 2 + size;
    }
}

} // namespace

QByteArray withChangedThumbnails(QByteArray block, const PhotoChange& change,
                                 const BlockChanger& changer) {
    const TiffSource source = TiffSource::ofBlock(block);
    const auto structure = readTiffStructure(source);
    if (!structure)
        return block;
    for (const TiffDirectory& directory : structure->directories) {
        const TiffEntry* place = directory.find(kThumbnailPlace);
        const TiffEntry* size = directory.find(kThumbnailSize);
        if (place == nullptr || size == nullptr)
            continue;
        const auto places = structure->numbers(source, *place);
        const auto sizes = structure->numbers(source, *size);
        if (!places.empty() && !sizes.empty() && ByteView(block).has(places[0], sizes[0]))
            changeSegments(block, places[0], std::uint64_t{places[0]} + sizes[0], change, changer);
    }
    return block;
}

} // namespace clipheave::platform
