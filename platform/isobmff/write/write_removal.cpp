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
    return type == fourCc("trak") || type == fourCc("mdia") || type == fourCc("minf");
}

QByteArray withoutTrackMetadata(ByteView payload) {
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
            kept += renderBox(box->type, withoutTrackMetadata(walker.payload(*box)));
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
        else if (box->type == fourCc("meta") || !isForeignMetadata(walker, *box))
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
