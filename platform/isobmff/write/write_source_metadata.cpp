// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/write_source_metadata.h"

#include "platform/isobmff/write/render_items.h"
#include "platform/isobmff/write/write_tables.h"

#include <algorithm>

namespace clipheave::platform {
namespace {

constexpr std::uint32_t kMaxKeys = 1u << 16;

QByteArray identifierBytes(const char* prefix, QByteArrayView key) {
    return QByteArray(prefix) + key.toByteArray().toPercentEncoding({}, {}, '%');
}

bool saysWhere(const QByteArray& identifier) {
    return isLocation(
        std::string_view(identifier.constData(), static_cast<std::size_t>(identifier.size())));
}

std::uint32_t metaHandler(ByteView children) {
    const ByteView hdlr = findPayload(children, {fourCc("hdlr")});
    return hdlr.be32(8).value_or(0);
}

std::vector<QByteArray> keyNames(ByteView keys) {
    std::vector<QByteArray> names;
    const std::uint32_t count = std::min(keys.be32(4).value_or(0), kMaxKeys);
    std::uint64_t at = 8;
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto size = keys.be32(at);
        if (!size || *size < 8 || !keys.has(at, *size))
            break;
        names.push_back(keys.sub(at + 8, *size - 8).toByteArray());
        at += *size;
    }
    return names;
}

void readLocationKeys(ByteView children, SourceUserData& found) {
    const std::vector<QByteArray> names = keyNames(findPayload(children, {fourCc("keys")}));
    BoxWalker entries(findPayload(children, {fourCc("ilst")}));
    while (const auto entry = entries.next()) {
        if (entry->type == 0 || entry->type > names.size())
            continue;
        const QByteArray& name = names[entry->type - 1];
        if (saysWhere(identifierBytes("mdta/", name)))
            found.locationKeys.push_back({name, entries.payload(*entry).toByteArray()});
    }
}

void readMeta(const BoxWalker& walker, const Box& meta, std::vector<QByteArray>& foreign,
              SourceUserData& found) {
    const ByteView payload = walker.payload(meta);
    const ByteView children = payload.sub(metaChildrenOffset(payload));
    const std::uint32_t handler = metaHandler(children);
    if (handler != fourCc("mdta") && handler != fourCc("mdir")) {
        foreign.push_back(renderCarriedBox(walker.whole(meta).toByteArray()));
        return;
    }
    if (handler == fourCc("mdta"))
        readLocationKeys(children, found);
    BoxWalker tables(children);
    while (const auto box = tables.next())
        if (box->type == fourCc("ctry") || box->type == fourCc("lang"))
            found.localeTables.push_back(renderCarriedBox(tables.whole(*box).toByteArray()));
}

void readUserData(ByteView udta, SourceUserData& found) {
    BoxWalker children(udta);
    while (const auto child = children.next()) {
        if (child->type == fourCc("meta")) {
            readMeta(children, *child, found.foreignUserDataMeta, found);
            continue;
        }
        const bool structural = isStructuralUserData(child->type);
        const QByteArray code = children.whole(*child).sub(4, 4).toByteArray();
        if (!structural && !saysWhere(identifierBytes("uiso/", code)))
            continue;
        auto& list = structural ? found.structural : found.location;
        list.push_back(renderCarriedBox(children.whole(*child).toByteArray()));
    }
}

/// Descriptive codes of 3GPP (TS 26.244 clause 8) beside those that begin with the byte A9.
constexpr std::array kDescriptiveCodes{
    fourCc("titl"), fourCc("dscp"), fourCc("cprt"), fourCc("perf"), fourCc("auth"), fourCc("gnre"),
    fourCc("albm"), fourCc("yrrc"), fourCc("kywd"), fourCc("rtng"), fourCc("clsf"), fourCc("loci"),
    fourCc("coll"), fourCc("thmb"), fourCc("urat"), fourCc("date"), fourCc("XMP_"),
};

bool isTrackMetadata(const BoxWalker& walker, const Box& box) {
    if (box.type == fourCc("meta")) {
        const ByteView payload = walker.payload(box);
        const std::uint32_t handler = metaHandler(payload.sub(metaChildrenOffset(payload)));
        return handler == fourCc("mdta") || handler == fourCc("mdir");
    }
    constexpr std::uint32_t kCopyrightSign = 0xA9;
    return box.type >> 24 == kCopyrightSign ||
           std::find(kDescriptiveCodes.begin(), kDescriptiveCodes.end(), box.type) !=
               kDescriptiveCodes.end();
}

QByteArray withoutMetadata(ByteView payload, bool isUserData) {
    QByteArray kept;
    BoxWalker walker(payload);
    std::uint64_t end = 0;
    while (const auto box = walker.next()) {
        end = box->end();
        if (isTrackMetadata(walker, *box))
            continue;
        if (box->type == fourCc("udta") && !box->cut && !isUserData)
            kept += renderBox(box->type, withoutMetadata(walker.payload(*box), true));
        else
            kept += walker.whole(*box).bytes();
    }
    return kept += payload.sub(end).bytes(); // a closing zero, or what is not a box
}

constexpr std::array kQuickTimeBrands{fourCc("qt  ")};
constexpr std::array kM4VBrands{fourCc("M4V "), fourCc("M4A "), fourCc("mp42"), fourCc("isom")};
constexpr std::array kM4ABrands{fourCc("M4A "), fourCc("mp42"), fourCc("isom")};
constexpr std::array kMp4Brands{fourCc("mp41"), fourCc("mp42"), fourCc("isom")};

struct FileTypeForm {
    std::uint32_t major, minor;
    const std::uint32_t* brands;
    std::size_t brandCount;
};
FileTypeForm fileTypeForm(OutputContainer container) {
    switch (container) {
    case OutputContainer::QuickTimeMovie:
        return {fourCc("qt  "), 0, kQuickTimeBrands.data(), kQuickTimeBrands.size()};
    case OutputContainer::M4V:
        return {fourCc("M4V "), 1, kM4VBrands.data(), kM4VBrands.size()};
    case OutputContainer::M4A:
        return {fourCc("M4A "), 0, kM4ABrands.data(), kM4ABrands.size()};
    case OutputContainer::Mp4:
        break;
    }
    return {fourCc("mp42"), 1, kMp4Brands.data(), kMp4Brands.size()};
}

} // namespace

SourceUserData readSourceUserData(ByteView moovPayload) {
    SourceUserData found;
    BoxWalker walker(moovPayload);
    while (const auto box = walker.next()) {
        if (box->type == fourCc("udta"))
            readUserData(walker.payload(*box), found);
        else if (box->type == fourCc("meta"))
            readMeta(walker, *box, found.foreignMeta, found);
    }
    return found;
}

QByteArray withoutTrackMetadata(ByteView moovPayload) {
    QByteArray kept;
    BoxWalker walker(moovPayload);
    std::uint64_t end = 0;
    while (const auto box = walker.next()) {
        end = box->end();
        if (box->type == fourCc("trak") && !box->cut)
            kept += renderBox(box->type, withoutMetadata(walker.payload(*box), false));
        else
            kept += walker.whole(*box).bytes();
    }
    return kept += moovPayload.sub(end).bytes();
}

QByteArray renderFileType(OutputContainer container, ByteView sourceFtyp) {
    const FileTypeForm form = fileTypeForm(container);
    std::vector<std::uint32_t> brands(form.brands, form.brands + form.brandCount);
    // A source without `ftyp` is a QuickTime movie of old. Its sample descriptions have QuickTime's
    // layout, which some decoders only expect when the brand is there.
    std::vector<std::uint32_t> offered{sourceFtyp.be32(0).value_or(fourCc("qt  "))};
    for (std::uint64_t at = 8; const auto brand = sourceFtyp.be32(at); at += 4)
        offered.push_back(*brand);
    for (const std::uint32_t brand : offered) {
        const bool needed =
            brand == fourCc("qt  ") ||
            std::find(kDecoderBrands.begin(), kDecoderBrands.end(), brand) != kDecoderBrands.end();
        if (needed && std::find(brands.begin(), brands.end(), brand) == brands.end())
            brands.push_back(brand);
    }
    const auto number = [](std::uint32_t value) {
        return QByteArray{}
            .append(static_cast<char>(value >> 24))
            .append(static_cast<char>(value >> 16))
            .append(static_cast<char>(value >> 8))
            .append(static_cast<char>(value));
    };
    QByteArray payload = number(form.major) + number(form.minor);
    for (const std::uint32_t brand : brands)
        payload += number(brand);
    return renderBox(fourCc("ftyp"), payload);
}

} // namespace clipheave::platform
