// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/messages.h"
#include "platform/image/write/extended_xmp.h"
#include "platform/image/write/iptc_block.h"
#include "platform/image/write/jpeg_segments.h"
#include "platform/image/write/jpeg_trailer.h"
#include "platform/image/write/motion_video.h"
#include "platform/image/write/mp_index.h"
#include "platform/image/write/photo_plan.h"
#include "platform/image/write/xmp_packet.h"

#include <map>

namespace clipheave::platform {

namespace {

const QByteArray kExifHead("Exif\0\0", 6);
const QByteArray kXmpHead("http://ns.adobe.com/xap/1.0/\0", 29);
const QByteArray kResourcesHead("Photoshop 3.0\0", 14);
const QByteArray kProfileHead("ICC_PROFILE\0", 12);
const QByteArray kJfifHead("JFIF\0", 5);

/// The marker segments of one image with the change, and where its pixels begin.
class JpegHeader {
public:
    JpegHeader(const JpegImage& image, const PhotoChange& change)
        : m_image(image), m_change(change) {}

    Result<void> run() {
        if (auto done = changeTags(); !done)
            return done;
        if (auto done = changeResources(); !done)
            return done;
        changeXmp();
        place();
        if (m_change.dropsGps && !m_change.dropsEverything && first(kJpegApp1, "FLIR") != nullptr)
            m_notes.append(kThermalDataKept);
        return {};
    }

    /// One entry a piece: of the source, or new.
    struct Piece {
        const JpegSegment* segment = nullptr; ///< as it is, but for an index of images
        QByteArray bytes;
    };
    [[nodiscard]] const std::vector<Piece>& pieces() const { return m_pieces; }
    [[nodiscard]] const Notes& notes() const { return m_notes; }

private:
    const JpegSegment* first(std::uint8_t marker, const QByteArray& head) const {
        for (const JpegSegment& segment : m_image.segments)
            if (segment.marker == marker && segment.payload.startsWith(head))
                return &segment;
        return nullptr;
    }

    Result<void> changeTags() {
        m_exifAt = first(kJpegApp1, kExifHead);
        m_exif = m_exifAt != nullptr ? m_exifAt->payload.mid(kExifHead.size()) : QByteArray();
        if (!m_change.changesTags())
            return {};
        m_changesExif = true;
        auto changed = changedTiffBlock(m_exif, m_change);
        if (!changed && (m_change.dropsEverything || (m_change.dropsExif && m_change.dropsGps))) {
            m_exif.clear(); // what cannot be read goes whole
            return {};
        }
        if (!changed)
            return tl::unexpected(changed.error());
        m_exif = std::move(*changed);
        return {};
    }

    Result<void> changeResources() {
        QByteArray resources;
        for (const JpegSegment& segment : m_image.segments)
            if (segment.marker == kJpegApp13 && segment.payload.startsWith(kResourcesHead))
                resources += segment.payload.mid(kResourcesHead.size());
        if (!(m_change.touchesIptc() || m_change.changesTags()) ||
            (resources.isEmpty() && m_change.iptc.empty()))
            return {};
        auto changed = changedImageResources(resources, m_change, ResourceBlocks::Iptc, m_notes);
        if (!changed && !m_change.touchesIptc())
            return {};
        m_changesResources = !changed || *changed != resources;
        if (!changed && (m_change.dropsEverything || m_change.dropsIptc))
            return {}; // what cannot be read goes whole
        if (!changed)
            return tl::unexpected(changed.error());
        m_resources = std::move(*changed);
        return {};
    }

    void changeXmp() {
        const JpegSegment* packet = first(kJpegApp1, kXmpHead);
        const QByteArray old =
            packet != nullptr ? packet->payload.mid(kXmpHead.size()) : QByteArray();
        m_namesVideo = old.contains("MotionPhoto") || old.contains("MicroVideo");
        m_xmp = changedXmpOrNote(old, m_change, m_notes);
        for (const ExtendedXmp& extended : extendedXmpOf(m_image))
            changeExtendedXmp(extended);
        m_changesXmp = m_xmp != old;
    }

    void changeExtendedXmp(const ExtendedXmp& extended) {
        QByteArray changed = extended.packet.isEmpty() && m_change.removesAny()
                                 ? QByteArray()
                                 : changedXmpOrNote(extended.packet, m_change, m_notes);
        if (extended.packet.isEmpty() && m_change.removesAny())
            m_notes.append(kUnreadableXmpRemoved);
        else if (changed == extended.packet)
            return;
        m_xmp = namingExtendedXmp(m_xmp, extended.digest, changed);
        m_extended.emplace(extended.digest, extendedXmpPayloads(changed));
    }

    /// Segments that a removal of everything keeps: what pixels and colours need.
    [[nodiscard]] static bool belongsToPicture(const JpegSegment& segment) {
        const bool isProfile =
            segment.marker == kJpegApp2 && segment.payload.startsWith(kProfileHead);
        return !(segment.isApp() || segment.marker == kJpegComment) || isProfile ||
               segment.marker == kJpegApp14;
    }

    void add(std::uint8_t marker, const QByteArray& payload) {
        if (auto bytes = jpegSegment(marker, payload))
            m_pieces.push_back({nullptr, *bytes});
        else
            m_tooLarge = true;
    }

    void addResources() {
        constexpr qsizetype kMost = 65'000;
        for (qsizetype at = 0; at < m_resources.size(); at += kMost)
            add(kJpegApp13, kResourcesHead + m_resources.mid(at, kMost));
    }

    void addExif() {
        if (!m_exif.isEmpty())
            add(kJpegApp1, kExifHead + m_exif);
        m_exifIsThere = true;
    }

    /// What it says of a changed fact follows; a segment that goes on with the first stays.
    void addSecondExif(const JpegSegment& segment) {
        const QByteArray block = segment.payload.mid(kExifHead.size());
        const auto editor = TiffEditor::open(TiffSource::ofBlock(block));
        const auto changed = editor
                                 ? changedTiffBlock(block, changeOfFurtherImage(m_change, *editor))
                                 : Result<QByteArray>(QByteArray());
        if (changed && !changed->isEmpty())
            add(kJpegApp1, kExifHead + *changed);
        else
            m_pieces.push_back({&segment, {}});
    }

    /// Without thumbnail and resolution.
    void addJfif(const JpegSegment& segment) {
        constexpr qsizetype kVersion = 2;
        add(kJpegApp0,
            segment.payload.left(kJfifHead.size() + kVersion) + QByteArray("\0\0\1\0\1\0\0", 7));
    }

    /// Returns whether it was put in place here, or left out.
    bool takesPart(const JpegSegment& segment) {
        const auto is = [&](std::uint8_t marker, const QByteArray& head) {
            return segment.marker == marker && segment.payload.startsWith(head);
        };
        if (m_changesExif && is(kJpegApp1, kExifHead)) {
            if (&segment == m_exifAt)
                addExif();
            else if (!m_change.removesBlocks())
                addSecondExif(segment);
            return true;
        }
        if (m_changesXmp && is(kJpegApp1, kXmpHead)) {
            if (!m_xmp.isEmpty())
                add(kJpegApp1, kXmpHead + m_xmp);
            m_xmp.clear();
            return true;
        }
        if (const auto extended = m_extended.find(extendedXmpDigest(segment));
            extended != m_extended.end()) {
            for (const QByteArray& payload : extended->second)
                add(kJpegApp1, payload);
            extended->second.clear();
            return true;
        }
        if (m_changesResources && is(kJpegApp13, kResourcesHead)) {
            addResources();
            m_resources.clear();
            return true;
        }
        if (m_change.dropsEverything && is(kJpegApp0, kJfifHead)) {
            addJfif(segment);
            return true;
        }
        return m_change.dropsEverything && !belongsToPicture(segment);
    }

    void place() {
        const bool newExif = m_changesExif && m_exifAt == nullptr && !m_exif.isEmpty();
        for (const JpegSegment& segment : m_image.segments) {
            const bool isJfif =
                segment.marker == kJpegApp0 && &segment == &m_image.segments.front();
            if (newExif && !m_exifIsThere && !isJfif)
                addExif();
            const bool behindApps = !segment.isApp() && segment.marker != kJpegComment;
            if (behindApps && m_changesResources) {
                addResources();
                m_resources.clear();
            }
            if (!takesPart(segment))
                m_pieces.push_back({&segment, {}});
        }
    }

    const JpegImage& m_image;
    const PhotoChange& m_change;
    std::vector<Piece> m_pieces;
    Notes m_notes;
    const JpegSegment* m_exifAt = nullptr;
    QByteArray m_exif, m_resources, m_xmp;
    std::map<QByteArray, std::vector<QByteArray>> m_extended; ///< new payloads by the old digest
    bool m_namesVideo = false;
    bool m_changesExif = false, m_changesResources = false, m_changesXmp = false;
    bool m_exifIsThere = false;
    bool m_tooLarge = false;

public:
    [[nodiscard]] bool isTooLarge() const { return m_tooLarge; }
    /// Returns whether the image says that a video stands behind it.
    [[nodiscard]] bool namesVideo() const { return m_namesVideo; }
};

std::uint64_t sizeOf(const JpegHeader::Piece& piece) {
    return piece.segment != nullptr ? piece.segment->size
                                    : static_cast<std::uint64_t>(piece.bytes.size());
}

/// Returns what is left of a change for an image without tags: it gets none.
PhotoChange changeWithoutNewTags(PhotoChange change) {
    change.image.clear();
    change.exif.clear();
    change.gps.clear();
    return change;
}

/// Plans one further image so that it takes the space it had: behind it zeros, which no reader
/// minds. The index and the lengths that other programs keep stay true.
Result<PhotoPlan> planFurther(FileReader& reader, const ByteSpan& span, const PhotoChange& change) {
    PhotoPlan unchanged;
    unchanged.addRange(span.offset, span.length);
    const auto image = readJpegImage(reader, span.offset);
    if (!image || image->scan > span.end()) {
        if (change.removesBlocks())
            unchanged.notes = {kFurtherImageKept};
        return unchanged;
    }
    PhotoChange further = changeWithoutNewTags(change);
    for (const JpegSegment& segment : image->segments)
        if (segment.marker == kJpegApp1 && segment.payload.startsWith(kExifHead))
            if (const auto editor =
                    TiffEditor::open(TiffSource::ofBlock(segment.payload.mid(kExifHead.size()))))
                further = changeOfFurtherImage(change, *editor);
    further.iptc.clear();
    JpegHeader header(*image, further);
    if (auto done = header.run(); !done)
        return tl::unexpected(done.error());
    PhotoPlan plan;
    plan.notes = header.notes();
    plan.addRange(span.offset, 2);
    for (const JpegHeader::Piece& piece : header.pieces())
        piece.segment != nullptr ? plan.addRange(piece.segment->offset, piece.segment->size)
                                 : plan.add(piece.bytes);
    plan.addRange(image->scan, span.end() - image->scan);
    if (header.isTooLarge() || plan.size() > span.length) {
        unchanged.notes = {kFurtherImageKept};
        return unchanged;
    }
    plan.add(QByteArray(static_cast<qsizetype>(span.length - plan.size()), '\0'));
    return plan;
}

} // namespace

namespace {

/// Returns where the first image ends; where the next one begins that the index names, if it has no
/// end of its own.
Result<std::uint64_t> endOfFirstImage(FileReader& reader, const JpegImage& image,
                                      const std::vector<ByteSpan>& indexed) {
    auto end = endOfJpegImage(reader, image);
    if (end && *end == reader.size() && !indexed.empty() && indexed.front().offset > image.scan)
        return indexed.front().offset;
    return end;
}

/// Adds what is known of the places that the videos behind an image keep.
void addVideoNote(FileReader& reader, const std::vector<ByteSpan>& videos, bool isNamed,
                  Notes& notes) {
    bool mayHold = isNamed && videos.empty(), holds = false;
    for (const ByteSpan& video : videos) {
        const VideoPlace place = placeOfMotionVideo(reader, video.offset, video.end());
        holds = holds || place == VideoPlace::There;
        mayHold = mayHold || place == VideoPlace::Unknown;
    }
    if (holds)
        notes.append(kMotionVideoHoldsPlace);
    else if (mayHold)
        notes.append(kMotionVideoKept);
}

/// Adds what stands behind the first image: its further images with the change.
Result<void> addTrailer(FileReader& reader, std::uint64_t begin,
                        const std::vector<ByteSpan>& indexed, bool namesVideo,
                        const PhotoChange& change, PhotoPlan& plan) {
    const JpegTrailer trailer = jpegTrailer(reader, begin, indexed);
    if (!trailer.isSearched)
        plan.notes.append(kFurtherImageKept);
    std::uint64_t at = begin;
    for (const ByteSpan& span : trailer.images) {
        plan.addRange(at, span.offset - at);
        auto planned = planFurther(reader, span, change);
        if (!planned)
            return tl::unexpected(planned.error());
        plan.add(std::move(*planned));
        at = span.end();
    }
    plan.addRange(at, reader.size() - at);
    if (change.dropsGps || !change.gps.empty())
        addVideoNote(reader, trailer.videos, namesVideo, plan.notes);
    return {};
}

} // namespace

Result<PhotoPlan> planJpeg(FileReader& reader, const PhotoChange& change) {
    const auto image = readJpegImage(reader, 0);
    if (!image)
        return tl::unexpected(image.error());
    JpegHeader header(*image, change);
    if (auto done = header.run(); !done)
        return tl::unexpected(done.error());
    if (header.isTooLarge())
        return failure(ErrorCode::LimitExceeded, kWritePhotoTags, reader.path(), kBlockTooLarge);
    std::uint64_t headerSize = 2;
    for (const JpegHeader::Piece& piece : header.pieces())
        headerSize += sizeOf(piece);
    const auto grows =
        static_cast<std::int64_t>(headerSize) - static_cast<std::int64_t>(image->scan);

    PhotoPlan plan;
    plan.notes = header.notes();
    plan.addRange(0, 2);
    std::vector<ByteSpan> further;
    for (const JpegHeader::Piece& piece : header.pieces()) {
        if (piece.segment == nullptr) {
            plan.add(piece.bytes);
        } else if (isMpIndex(*piece.segment)) {
            const auto at = static_cast<std::int64_t>(plan.size());
            const auto moved = at - static_cast<std::int64_t>(piece.segment->offset);
            further = furtherImages(*piece.segment, reader.size());
            plan.add(movedMpIndex(reader, *piece.segment, grows, moved));
        } else {
            plan.addRange(piece.segment->offset, piece.segment->size);
        }
    }
    const auto end = endOfFirstImage(reader, *image, further);
    if (!end)
        return tl::unexpected(end.error());
    plan.addRange(image->scan, *end - image->scan);
    if (change.dropsEverything)
        return plan;
    if (auto done = addTrailer(reader, *end, further, header.namesVideo(), change, plan); !done)
        return tl::unexpected(done.error());
    return plan;
}

} // namespace clipheave::platform
