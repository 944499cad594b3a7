// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/heif_reader.h"

#include "platform/image/heif_items.h"
#include "platform/image/messages.h"
#include "platform/isobmff/box.h"

#include <algorithm>
#include <array>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kMostTopLevelBoxes = 256;
constexpr std::uint64_t kLargestExif = 8u << 20;
constexpr std::uint64_t kLargestTagBox = 1u << 20;
constexpr std::uint32_t kLargestHeifSide = 1u << 20;
constexpr qsizetype kLargestIccProfile = 4 << 20;

/// The children of `meta` that matter here.
struct HeifMeta {
    ByteView pitm, iinf, iloc, ipco, ipma, idat;
};

HeifMeta splitMeta(ByteView payload) {
    HeifMeta meta;
    BoxWalker children(payload.sub(metaChildrenOffset(payload)));
    while (const auto box = children.next()) {
        const ByteView body = children.payload(*box);
        if (box->type == fourCc("pitm"))
            meta.pitm = body;
        else if (box->type == fourCc("iinf"))
            meta.iinf = body;
        else if (box->type == fourCc("iloc"))
            meta.iloc = body;
        else if (box->type == fourCc("idat"))
            meta.idat = body;
        else if (box->type == fourCc("iprp")) {
            meta.ipco = findPayload(body, {fourCc("ipco")});
            meta.ipma = findPayload(body, {fourCc("ipma")});
        }
    }
    return meta;
}

void readSpatialExtents(ByteView ispe, HeifFacts& facts) {
    const std::uint32_t width = ispe.be32(4).value_or(0), height = ispe.be32(8).value_or(0);
    if (width > 0 && height > 0 && width <= kLargestHeifSide && height <= kLargestHeifSide)
        facts.pixelSize = QSize(static_cast<int>(width), static_cast<int>(height));
}

void readColour(ByteView colr, HeifFacts& facts) {
    if ((colr.startsWith("prof") || colr.startsWith("rICC")) &&
        colr.bytes().size() <= kLargestIccProfile)
        facts.iccProfile = colr.sub(4).toByteArray();
}

/// The properties of the main image, in the order in which they apply.
void readProperties(const HeifMeta& meta, std::uint32_t item, HeifFacts& facts) {
    std::vector<std::pair<std::uint32_t, ByteView>> properties;
    BoxWalker walker(meta.ipco);
    while (properties.size() < kMaxHeifProperties) {
        const auto box = walker.next();
        if (!box)
            break;
        properties.emplace_back(box->type, walker.payload(*box));
    }
    HeifOrientation orientation;
    for (const std::uint32_t index : itemProperties(meta.ipma, item)) {
        if (index == 0 || index > properties.size())
            continue;
        const auto& [type, body] = properties[index - 1];
        if (type == fourCc("ispe")) {
            readSpatialExtents(body, facts);
        } else if (type == fourCc("irot")) {
            orientation.rotate(body.u8(0).value_or(0) & 3);
        } else if (type == fourCc("imir")) {
            // 0 exchanges top and bottom, 1 left and right (wording of the 2022 edition).
            orientation.mirror((body.u8(0).value_or(0) & 1) != 0);
        } else if (type == fourCc("colr")) {
            readColour(body, facts);
        } else if (type == fourCc("pixi")) {
            facts.components = body.u8(4).value_or(0);
            facts.bitsPerComponent = body.u8(5).value_or(0);
        }
    }
    facts.orientation = orientation.exifValue();
}

/// The bytes of an item; null when they are not there or too many.
QByteArray loadItem(FileReader& reader, const HeifMeta& meta, const HeifLocation& location) {
    QByteArray bytes;
    for (const HeifExtent& extent : location.extents) {
        const bool inside = location.constructionMethod == 1;
        if (location.constructionMethod > 1)
            return {};
        const std::uint64_t total = inside ? meta.idat.size() : reader.size();
        if (extent.offset >= total)
            return {};
        const std::uint64_t left = total - extent.offset;
        const std::uint64_t length = extent.length == 0 ? left : extent.length;
        if (length > left || length > kLargestExif - static_cast<std::uint64_t>(bytes.size()))
            return {};
        if (inside) {
            bytes += meta.idat.sub(extent.offset, length).toByteArray();
        } else if (const auto part = reader.read(extent.offset, length); part) {
            bytes += *part;
        } else {
            return {};
        }
    }
    return bytes;
}

QByteArray tiffOfExifItem(const QByteArray& item) {
    const auto at = tiffOffsetOfExifItem(item);
    return at ? item.mid(static_cast<qsizetype>(*at)) : QByteArray();
}

void readMeta(FileReader& reader, const QByteArray& payload, HeifFacts& facts) {
    const HeifMeta meta = splitMeta(payload);
    if (const auto item = primaryItem(meta.pitm))
        readProperties(meta, *item, facts);
    else
        facts.problem = kNoPrimaryImage;
    const auto exif = itemOfType(meta.iinf, fourCc("Exif"));
    if (!exif)
        return;
    if (const auto location = itemLocation(meta.iloc, *exif))
        facts.exif = tiffOfExifItem(loadItem(reader, meta, *location));
    if (facts.exif.isEmpty())
        facts.problem = kExifUnreadable;
}

/// CR3: moov / uuid with one small TIFF structure for each group of tags.
void readCanonTags(ByteView uuid, HeifFacts& facts) {
    BoxWalker walker(uuid.sub(16));
    while (const auto box = walker.next()) {
        if (box->size > kLargestTagBox)
            continue;
        const QByteArray bytes = walker.payload(*box).toByteArray();
        if (box->type == fourCc("CMT1"))
            facts.mainTags = bytes;
        else if (box->type == fourCc("CMT2"))
            facts.photoTags = bytes;
        else if (box->type == fourCc("CMT4"))
            facts.gpsTags = bytes;
    }
}

/// Image sequences without a still image: the size of the first track that has one, 16.16.
void readTrackSize(ByteView trak, HeifFacts& facts) {
    const ByteView header = findPayload(trak, {fourCc("tkhd")});
    const std::uint64_t at = header.u8(0) == 1 ? 88 : 76;
    const std::uint32_t width = header.be32(at).value_or(0) >> 16;
    const std::uint32_t height = header.be32(at + 4).value_or(0) >> 16;
    if (facts.pixelSize.isEmpty() && width > 0 && height > 0)
        facts.pixelSize = QSize(static_cast<int>(width), static_cast<int>(height));
}

/// `trackSize`: the tracks are images, not the parts of a raw photo.
void readMovie(HeaderReader& reader, const Box& moov, bool trackSize, HeifFacts& facts) {
    static constexpr char kCanon[] =
        "\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48";
    FileBoxWalker children(reader, moov.payloadOffset(), moov.end(), kMostTopLevelBoxes);
    while (const auto box = children.next()) {
        const bool track = box->type == fourCc("trak");
        if ((!track && box->type != fourCc("uuid")) || box->payloadSize() > HeaderReader::kMaxView)
            continue;
        const ByteView payload = reader.view(box->payloadOffset(), box->payloadSize());
        if (track && trackSize)
            readTrackSize(payload, facts);
        else if (payload.startsWith(QByteArrayView(kCanon, 16)))
            readCanonTags(payload, facts);
    }
}

} // namespace

bool isHeif(ByteView head) {
    static constexpr std::array kBrands{
        fourCc("heic"), fourCc("heix"), fourCc("heim"), fourCc("heis"),
        fourCc("hevc"), fourCc("hevx"), fourCc("mif1"), fourCc("mif2"),
        fourCc("mif3"), fourCc("msf1"), fourCc("avif"), fourCc("avis"),
        fourCc("j2ki"), fourCc("j2is"), fourCc("jpeg"), fourCc("crx "),
    };
    return head.be32(4) == fourCc("ftyp") &&
           std::find(kBrands.begin(), kBrands.end(), head.be32(8)) != kBrands.end();
}

Result<HeifFacts> readHeif(FileReader& reader) {
    HeifFacts facts;
    HeaderReader headers(reader);
    const bool raw = headers.viewUpTo(8, 4).startsWith("crx ");
    FileBoxWalker top(headers, kMostTopLevelBoxes);
    QByteArray meta;
    bool found = false;
    while (const auto box = top.next()) {
        if (box->type == fourCc("meta") && !found) {
            found = true;
            meta = headers.viewUpTo(box->payloadOffset(), box->payloadSize()).toByteArray();
            if (static_cast<std::uint64_t>(meta.size()) < box->payloadSize())
                facts.problem = kImageHeaderTooLong;
        } else if (box->type == fourCc("moov")) {
            readMovie(headers, *box, !raw, facts);
            found = true;
        }
    }
    if (!found)
        return failure(ErrorCode::InvalidData, kReadImageBoxes, reader.path(),
                       top.problem().isEmpty() ? Message(kNoImageHeader) : top.problem());
    if (!meta.isEmpty())
        readMeta(reader, meta, facts);
    return facts;
}

} // namespace clipheave::platform
