// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/write_removal.h"

#include "platform/isobmff/meta_kind.h"
#include "platform/isobmff/structural_user_data.h"
#include "platform/isobmff/write/render_items.h"

#include <algorithm>
#include <array>

namespace clipheave::platform {
namespace {

constexpr std::uint64_t kUuidSize = 16;

/// How players see the video: the spherical video of a track (Spherical Video V1), and protection
/// as files carried it before `pssh` (Protected Interoperable File Format).
const std::array kNeededUuids{
    QByteArray::fromHex("FFCC8263F8554A938814587A02521FDD"),
    QByteArray::fromHex("D08A4F1810F34A82B6C832D8ABA183D3"),
};

bool isNeededUuid(ByteView payload) {
    const QByteArrayView uuid = payload.sub(0, kUuidSize).bytes();
    return std::any_of(kNeededUuids.begin(), kNeededUuids.end(),
                       [uuid](const QByteArray& needed) { return uuid == needed; });
}

bool isPaddingType(std::uint32_t type) {
    return type == fourCc("free") || type == fourCc("skip");
}

bool holdsImages(ByteView metaPayload) {
    return !findPayload(metaChildren(metaPayload), {fourCc("iloc")}).empty();
}

/// Of a movie or a track, `udta` aside.
bool isForeignMetadata(const BoxWalker& walker, const Box& box) {
    if (box.type == fourCc("meta"))
        return !holdsImages(walker.payload(box));
    if (box.type == fourCc("uuid"))
        return !isNeededUuid(walker.payload(box));
    return isPaddingType(box.type) || box.type == fourCc("meco") || box.type == fourCc("Xtra");
}

/// What a movie consists of (ISO/IEC 14496-12 section 8.2, QuickTime File Format "Movie atoms").
/// Whatever else stands there was put there by a program that alone can read it.
bool isPartOfMovie(std::uint32_t type) {
    constexpr std::array kParts{
        fourCc("mvhd"), fourCc("trak"), fourCc("mvex"), fourCc("iods"), fourCc("pssh"),
        fourCc("ainf"), fourCc("udta"), fourCc("meta"), fourCc("uuid"), fourCc("clip"),
        fourCc("ctab"), fourCc("prfl"), fourCc("rmra"), fourCc("cmov"), fourCc("trgr"),
    };
    return std::find(kParts.begin(), kParts.end(), type) != kParts.end();
}

/// What a track plays as (ISO/IEC 14496-12 section 8.10.4) is no description.
bool staysInTrackUserData(std::uint32_t type) {
    return isStructuralUserData(type) || type == fourCc("kind");
}

QByteArray trackUserData(ByteView udta) {
    QByteArray kept;
    BoxWalker walker(udta);
    while (const auto box = walker.next())
        if (staysInTrackUserData(box->type))
            kept += renderCarriedBox(walker.whole(*box).toByteArray());
    return kept.isEmpty() ? kept : renderBox(fourCc("udta"), kept);
}

bool holdsTrackUserData(std::uint32_t type) {
    return type == fourCc("trak") || type == fourCc("mdia") || type == fourCc("minf") ||
           type == fourCc("stbl");
}

/// Without its name, in which programs put the track's and cameras their own. One byte of zero ends
/// the text of MPEG-4 and is the length of QuickTime's.
QByteArray namelessHandler(ByteView payload) {
    constexpr std::uint64_t kName = 24;
    return renderBox(fourCc("hdlr"), payload.size() > kName
                                         ? payload.sub(0, kName).toByteArray() + '\0'
                                         : payload.toByteArray());
}

/// The boxes from `start` on without padding and foreign `uuid`.
QByteArray withoutForeignBoxes(ByteView payload, std::uint64_t start) {
    QByteArray kept = payload.sub(0, start).toByteArray();
    const ByteView boxes = payload.sub(start);
    BoxWalker walker(boxes);
    std::uint64_t end = 0;
    while (const auto box = walker.next()) {
        end = box->end();
        const bool isForeign = box->type == fourCc("uuid") && !isNeededUuid(walker.payload(*box));
        if (box->cut || !(isForeign || isPaddingType(box->type)))
            kept += walker.whole(*box).bytes();
    }
    // What are no boxes is left as it is.
    if (!walker.problem().isEmpty())
        return payload.toByteArray();
    return kept += boxes.sub(end).bytes();
}

/// Returns the bytes in front of the boxes of an audio sample description: 28 in its first version
/// and in that of MPEG-4 which has a rate of its own (ISO/IEC 14496-12 section 12.2.3); 44 and 64
/// in those of QuickTime ("Sound Sample Description"), whose list has the version 0.
std::uint64_t audioEntryFields(std::uint8_t listVersion, ByteView entry) {
    const int version = entry.be16(8).value_or(0);
    if (version == 0 || listVersion > 0)
        return 28;
    return version == 1 ? 44 : 64;
}

/// The same of any; 0 for what is left as it is. Video has 78 (ISO/IEC 14496-12 section 12.1.3).
std::uint64_t sampleEntryFields(std::uint32_t handler, std::uint8_t listVersion, ByteView entry) {
    const std::uint64_t fields = handler == fourCc("vide")   ? 78
                                 : handler == fourCc("soun") ? audioEntryFields(listVersion, entry)
                                                             : 0;
    return entry.size() < fields ? 0 : fields;
}

QByteArray withoutSampleEntryMetadata(ByteView payload, std::uint32_t handler) {
    constexpr std::uint64_t kEntries = 8;
    QByteArray kept = payload.sub(0, kEntries).toByteArray();
    const ByteView entries = payload.sub(kEntries);
    BoxWalker walker(entries);
    std::uint64_t end = 0;
    while (const auto entry = walker.next()) {
        end = entry->end();
        const std::uint64_t fields =
            sampleEntryFields(handler, payload.u8(0).value_or(0), walker.payload(*entry));
        kept += entry->cut || fields == 0
                    ? walker.whole(*entry).toByteArray()
                    : renderBox(entry->type, withoutForeignBoxes(walker.payload(*entry), fields));
    }
    return kept += entries.sub(end).bytes();
}

/// `handler` is that of the media whose part this is.
QByteArray withoutTrackMetadata(ByteView payload, std::uint32_t handler = 0) {
    if (handler == 0)
        handler = findPayload(payload, {fourCc("hdlr")}).be32(8).value_or(0);
    QByteArray kept;
    BoxWalker walker(payload);
    std::uint64_t end = 0;
    while (const auto box = walker.next()) {
        end = box->end();
        if (isForeignMetadata(walker, *box))
            continue;
        if (box->type == fourCc("udta"))
            kept += trackUserData(walker.payload(*box));
        else if (holdsTrackUserData(box->type) && !box->cut)
            kept += renderBox(box->type, withoutTrackMetadata(walker.payload(*box), handler));
        else if (box->type == fourCc("hdlr") && !box->cut)
            kept += namelessHandler(walker.payload(*box));
        else if (box->type == fourCc("stsd") && !box->cut)
            kept += renderBox(box->type, withoutSampleEntryMetadata(walker.payload(*box), handler));
        else
            kept += walker.whole(*box).bytes();
    }
    return kept += payload.sub(end).bytes(); // what is not a box
}

} // namespace

QByteArray withoutForeignMetadata(ByteView moovPayload) {
    QByteArray kept;
    BoxWalker walker(moovPayload);
    std::uint64_t end = 0;
    while (const auto box = walker.next()) {
        end = box->end();
        if (box->type == fourCc("trak") && !box->cut)
            kept += renderBox(box->type, withoutTrackMetadata(walker.payload(*box)));
        else if (box->type == fourCc("meta") ||
                 (isPartOfMovie(box->type) && !isForeignMetadata(walker, *box)))
            kept += walker.whole(*box).bytes(); // `meta` and `udta` are built anew
    }
    return kept += moovPayload.sub(end).bytes();
}

bool staysAtRemoval(const Box& box, ByteView head) {
    constexpr std::array kNeeded{
        fourCc("ftyp"), fourCc("styp"), fourCc("pdin"), fourCc("moov"), fourCc("mdat"),
        fourCc("imda"), fourCc("idat"), fourCc("wide"), fourCc("moof"), fourCc("mfra"),
        fourCc("sidx"), fourCc("ssix"), fourCc("prft"), fourCc("emsg"), fourCc("pssh"),
    };
    if (box.type == fourCc("uuid"))
        return isNeededUuid(head);
    if (box.type == fourCc("meta"))
        return holdsImages(head);
    return std::find(kNeeded.begin(), kNeeded.end(), box.type) != kNeeded.end();
}

QStringList timedMetadataFormats(ByteView moovPayload) {
    QStringList formats;
    BoxWalker walker(moovPayload);
    while (const auto box = walker.next()) {
        if (box->type != fourCc("trak"))
            continue;
        const ByteView mdia = findPayload(walker.payload(*box), {fourCc("mdia")});
        const std::uint32_t handler = findPayload(mdia, {fourCc("hdlr")}).be32(8).value_or(0);
        if (handler != fourCc("meta") && handler != fourCc("camm") && handler != fourCc("data"))
            continue;
        const ByteView stsd = findPayload(mdia, {fourCc("minf"), fourCc("stbl"), fourCc("stsd")});
        const QString format = fourCcText(stsd.be32(12).value_or(0));
        if (!formats.contains(format))
            formats << format;
    }
    return formats;
}

} // namespace clipheave::platform
