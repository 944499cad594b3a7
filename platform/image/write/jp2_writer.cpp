// SPDX-License-Identifier: GPL-3.0-or-later
// Sources: ISO/IEC 15444-1, annexes A and I (codestream and boxes), 15444-2 annex M (labels);
// XMP part 3, 1.1.4; OGC 05-047r3 and the GeoJP2 specification (where the image lies).
#include "platform/image/messages.h"
#include "platform/image/write/iptc_block.h"
#include "platform/image/write/photo_plan.h"
#include "platform/isobmff/box.h"

#include <QtEndian>

#include <algorithm>
#include <array>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kUuidSize = 16, kMostJp2Block = 256u << 20, kMostJp2Boxes = 4096;

const QByteArray kExifUuid = QByteArrayLiteral("JpgTiffExif->JP2");
const QByteArray kOtherExifUuid =
    QByteArray::fromHex("0537cdab9d0c4431a72afa561f2a113e"); // by an older Photoshop
const QByteArray kXmpUuid = QByteArray::fromHex("be7acfcb97a942e89c71999491e3afac");
const QByteArray kIptcUuid = QByteArray::fromHex("33c7a4d2b81d4723a0baf1a3e097ad38");
const QByteArray kOtherIptcUuid = QByteArray::fromHex("09a14e97c0b442e0bebf36df6f0ce36f");
const QByteArray kResourcesUuid = QByteArray::fromHex("2c4c0100850440b9a03e562148d6dfeb");
const QByteArray kGeoTiffUuid = QByteArray::fromHex("b14bf8bd083d4b43a5ae8cd7d5a6ce03");
const QByteArray kWorldFileUuid = QByteArray::fromHex("96a9f1f1dc98402da7aed68e34451809");
const QByteArray kJpegExifSign("Exif\0\0", 6);

QByteArray jp2Number(std::uint64_t value, int bytes) {
    QByteArray number;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        number += static_cast<char>(value >> shift & 0xFF);
    return number;
}

QByteArray jp2Box(const QByteArray& type, const QByteArray& payload) {
    return jp2Number(static_cast<std::uint64_t>(payload.size()) + 8, 4) + type + payload;
}

/// Boxes without which the image is not what it was.
bool belongsToImage(std::uint32_t type) {
    static constexpr std::array kTypes{fourCc("jP  "), fourCc("ftyp"), fourCc("rreq"),
                                       fourCc("jp2h"), fourCc("jpch"), fourCc("jplh"),
                                       fourCc("jp2c"), fourCc("comp"), fourCc("copt"),
                                       fourCc("inst"), fourCc("mdat")};
    return std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end();
}

/// Boxes with offsets into the file, which would point to other bytes.
bool holdsOffsets(std::uint32_t type) {
    return type == fourCc("ftbl") || type == fourCc("cidx") || type == fourCc("fidx");
}

class Jp2Plan {
public:
    Jp2Plan(FileReader& reader, const PhotoChange& change) : m_reader(reader), m_change(change) {}

    Result<PhotoPlan> run() {
        const auto boxes = topLevel();
        if (!boxes)
            return tl::unexpected(boxes.error());
        for (const Box& box : *boxes)
            if (box.type == fourCc("uuid"))
                note(uuidOf(box));
        for (const Box& box : *boxes) {
            if (auto done = place(box); !done)
                return tl::unexpected(done.error());
            if (box.type == fourCc("jp2h"))
                if (auto done = addMissing(); !done)
                    return tl::unexpected(done.error());
        }
        return std::move(m_plan);
    }

private:
    Result<std::vector<Box>> topLevel() {
        HeaderReader headers(m_reader);
        FileBoxWalker walker(headers, kMostJp2Boxes);
        std::vector<Box> boxes;
        bool hasHeader = false;
        while (const auto box = walker.next()) {
            if (box->cut || (!boxes.empty() && boxes.back().toEnd))
                return broken();
            if (holdsOffsets(box->type))
                return failure(ErrorCode::NotSupported, kWritePhotoTags, m_reader.path(),
                               kPhotoKindNotWritten);
            hasHeader = hasHeader || box->type == fourCc("jp2h");
            boxes.push_back(*box);
        }
        if (!hasHeader || boxes.back().end() != m_reader.size())
            return broken();
        return boxes;
    }

    tl::unexpected<Error> broken() const {
        return failure(ErrorCode::InvalidData, kReadPhoto, m_reader.path(), kJp2Broken);
    }

    QByteArray uuidOf(const Box& box) {
        return m_reader.viewUpTo(box.payloadOffset(), kUuidSize).toByteArray();
    }

    void note(const QByteArray& uuid) {
        m_hasExif = m_hasExif || uuid == kExifUuid;
        m_hasIptc = m_hasIptc || uuid == kIptcUuid;
    }

    void keep(const Box& box) { m_plan.addRange(box.offset, box.size); }

    Result<void> place(const Box& box) {
        if (box.type == fourCc("uuid"))
            return placeUuid(box);
        if (m_change.dropsEverything && box.type == fourCc("jp2c"))
            placeWithoutComments(box);
        else if (m_change.dropsEverything && !belongsToImage(box.type))
            return {};
        else if (box.type == fourCc("xml "))
            return placeChanged(box, {}, [this](const QByteArray& old) -> Result<QByteArray> {
                return changedXmpOrNote(old, m_change, m_plan.notes);
            });
        else if (!(m_change.dropsGps && holdsGml(box)))
            keep(box);
        return {};
    }

    /// A labelled association with the geography of the image.
    bool holdsGml(const Box& box) {
        return box.type == fourCc("asoc") && box.payloadSize() <= kMostJp2Block &&
               m_reader.read(box.payloadOffset(), box.payloadSize())
                   .value_or(QByteArray())
                   .contains("gml");
    }

    Result<void> placeUuid(const Box& box) {
        const QByteArray uuid = uuidOf(box);
        if (uuid == kExifUuid || uuid == kOtherExifUuid)
            return placeChanged(box, uuid,
                                [this](const QByteArray& old) { return changedTags(old); });
        if (m_change.dropsEverything)
            return {};
        if (uuid == kGeoTiffUuid || uuid == kWorldFileUuid) {
            if (!m_change.dropsGps)
                keep(box);
            return {};
        }
        if (uuid == kXmpUuid)
            return placeChanged(box, uuid, [this](const QByteArray& old) -> Result<QByteArray> {
                return changedXmpOrNote(old, m_change, m_plan.notes);
            });
        if ((uuid == kIptcUuid || uuid == kOtherIptcUuid) && m_change.touchesIptc())
            return placeChanged(
                box, uuid, [this](const QByteArray& old) { return changedIptc(old, m_change); });
        if (uuid == kResourcesUuid)
            return placeChanged(box, uuid, [this](const QByteArray& old) {
                return changedImageResources(old, m_change, ResourceBlocks::None, m_plan.notes);
            });
        keep(box);
        return {};
    }

    Result<QByteArray> changedTags(const QByteArray& old) const {
        if (!m_change.changesTags())
            return old;
        const QByteArray sign = old.startsWith(kJpegExifSign) ? kJpegExifSign : QByteArray();
        const auto changed = changedTiffBlock(old.mid(sign.size()), m_change);
        return changed && !changed->isEmpty() ? sign + *changed : changed;
    }

    /// Writes the box with what `change` makes of its data, and leaves it out when that is nothing.
    /// What cannot be read goes when the change may concern it and removes.
    template <class Change>
    Result<void> placeChanged(const Box& box, const QByteArray& uuid, const Change& change) {
        const auto idSize = static_cast<std::uint64_t>(uuid.size());
        if (box.payloadSize() < idSize || box.payloadSize() > kMostJp2Block)
            return broken();
        const auto old = m_reader.read(box.payloadOffset() + idSize, box.payloadSize() - idSize);
        if (!old)
            return tl::unexpected(old.error());
        const auto changed = change(*old);
        if (!changed && !m_change.dropsEverything)
            return tl::unexpected(changed.error());
        if (changed && *changed == *old)
            keep(box);
        else if (changed && !changed->isEmpty())
            m_plan.add(jp2Box(uuid.isEmpty() ? "xml " : "uuid", uuid + *changed));
        return {};
    }

    /// New blocks stand behind the header box: the codestream may reach to the end of the file.
    Result<void> addMissing() {
        if (m_change.setsTags() && !m_hasExif) {
            const auto block = changedTiffBlock({}, m_change);
            if (!block)
                return tl::unexpected(block.error());
            if (!block->isEmpty())
                m_plan.add(jp2Box("uuid", kExifUuid + *block));
            m_hasExif = true;
        }
        if (!m_change.iptc.empty() && !m_hasIptc) {
            const auto block = changedIptc({}, m_change);
            if (!block)
                return tl::unexpected(block.error());
            if (!block->isEmpty())
                m_plan.add(jp2Box("uuid", kIptcUuid + *block));
            m_hasIptc = true;
        }
        return {};
    }

    /// The comments of the codestream's main header name programs and people; lengths in it count
    /// from its tiles.
    void placeWithoutComments(const Box& box) {
        constexpr std::uint16_t kStart = 0xFF4F, kTile = 0xFF90, kComment = 0xFF64;
        constexpr std::uint64_t kLongHeader = 16;
        std::uint64_t at = box.payloadOffset();
        if (m_reader.viewUpTo(at, 2).be16(0) != kStart)
            return keep(box);
        PhotoPlan kept;
        kept.addRange(at, 2);
        at += 2;
        while (true) {
            const ByteView head = m_reader.viewUpTo(at, 4);
            const auto marker = head.be16(0), length = head.be16(2);
            if (!marker || !length || *marker < 0xFF00 || *length < 2 || at >= box.end())
                return keep(box);
            if (*marker == kTile)
                break;
            if (*marker != kComment)
                kept.addRange(at, *length + 2u);
            at += *length + 2u;
        }
        kept.addRange(at, box.end() - at);
        if (box.toEnd)
            m_plan.addRange(box.offset, box.headerSize);
        else if (box.headerSize == kLongHeader)
            m_plan.add(jp2Number(1, 4) + "jp2c" + jp2Number(kept.size() + kLongHeader, 8));
        else
            m_plan.add(jp2Number(kept.size() + 8, 4) + "jp2c");
        m_plan.add(std::move(kept));
    }

    FileReader& m_reader;
    const PhotoChange& m_change;
    PhotoPlan m_plan;
    bool m_hasExif = false, m_hasIptc = false;
};

} // namespace

Result<PhotoPlan> planJp2(FileReader& reader, const PhotoChange& change) {
    return Jp2Plan(reader, change).run();
}

} // namespace clipheave::platform
