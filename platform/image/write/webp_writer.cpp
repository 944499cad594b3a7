// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/messages.h"
#include "platform/image/write/photo_plan.h"

#include <QtEndian>

#include <algorithm>
#include <optional>

// Chunks of WebP files. Source: WebP Container Specification, "Extended File Format".
namespace clipheave::platform {

namespace {

constexpr std::uint64_t kRiffHeadSize = 12, kWebpChunkHead = 8;
constexpr std::size_t kMostWebpChunks = 1u << 16;
constexpr std::uint64_t kMostWebpBlock = 16u << 20;
enum Flag : std::uint8_t { kHasXmp = 0x04, kHasExif = 0x08, kHasAlpha = 0x10 };
const QByteArray kExifSign("Exif\0\0", 6);

struct WebpChunk {
    QByteArray type;
    std::uint64_t offset = 0, length = 0;
    [[nodiscard]] std::uint64_t size() const { return kWebpChunkHead + length + length % 2; }
};

Error brokenWebp(const FileReader& reader) {
    return {ErrorCode::InvalidData, kReadPhoto, reader.path(), kWebpBroken};
}

QByteArray webp32(std::uint32_t value) {
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray webpChunk(const QByteArray& type, const QByteArray& data) {
    return type + webp32(static_cast<std::uint32_t>(data.size())) + data +
           QByteArray(data.size() % 2, '\0');
}

/// `end`: of the RIFF list.
Result<std::vector<WebpChunk>> webpChunks(FileReader& reader, std::uint64_t end) {
    std::vector<WebpChunk> chunks;
    for (std::uint64_t at = kRiffHeadSize;
         at + kWebpChunkHead <= end && chunks.size() < kMostWebpChunks;) {
        const ByteView head = reader.viewUpTo(at, kWebpChunkHead);
        const auto length = head.le32(4);
        if (!length || *length > end - at - kWebpChunkHead)
            return tl::unexpected(brokenWebp(reader));
        chunks.push_back({head.sub(0, 4).toByteArray(), at, *length});
        at += chunks.back().size();
    }
    return chunks;
}

/// The extended header of a file that has none, from the header of its image.
std::optional<QByteArray> extendedHeader(FileReader& reader, const WebpChunk& image) {
    const ByteView data = reader.viewUpTo(image.offset + kWebpChunkHead, 10);
    std::uint32_t width = 0, height = 0, flags = 0;
    if (image.type == "VP8 " && data.size() >= 10) { // RFC 6386, 9.1
        width = data.le16(6).value_or(0) & 0x3FFFU;
        height = data.le16(8).value_or(0) & 0x3FFFU;
    } else if (image.type == "VP8L" && data.size() >= 5) { // WebP Lossless, 3
        const std::uint32_t bits = data.le32(1).value_or(0);
        width = (bits & 0x3FFFU) + 1;
        height = (bits >> 14 & 0x3FFFU) + 1;
        flags = (bits >> 28 & 1U) != 0 ? kHasAlpha : 0;
    }
    if (width == 0 || height == 0)
        return std::nullopt;
    return webp32(flags) + webp32(width - 1).first(3) + webp32(height - 1).first(3);
}

class WebpPlan {
public:
    WebpPlan(FileReader& reader, const PhotoChange& change) : m_reader(reader), m_change(change) {}

    Result<PhotoPlan> run() {
        const ByteView head = m_reader.viewUpTo(0, kRiffHeadSize);
        const std::uint64_t listed = head.le32(4).value_or(0) + 8ull;
        if (head.size() < kRiffHeadSize || listed > m_reader.size())
            return tl::unexpected(brokenWebp(m_reader));
        const auto chunks = webpChunks(m_reader, listed);
        if (!chunks || chunks->empty())
            return tl::unexpected(chunks ? brokenWebp(m_reader) : chunks.error());
        if (auto done = readAndChange(*chunks); !done)
            return tl::unexpected(done.error());
        return placed(*chunks, listed);
    }

private:
    QByteArray dataOf(const WebpChunk& chunk) {
        if (chunk.length > kMostWebpBlock)
            return {};
        return m_reader.read(chunk.offset + kWebpChunkHead, chunk.length).value_or(QByteArray());
    }

    Result<void> readAndChange(const std::vector<WebpChunk>& chunks) {
        QByteArray exif, xmp;
        for (const WebpChunk& chunk : chunks) {
            if (chunk.type == "EXIF" && exif.isEmpty())
                exif = dataOf(chunk);
            else if (chunk.type == "XMP " && xmp.isEmpty())
                xmp = dataOf(chunk);
        }
        // Some writers put the sign of a JPEG segment before the block.
        const QByteArray prefix = exif.startsWith(kExifSign) ? kExifSign : QByteArray();
        const auto changed = changedTiffBlock(exif.mid(prefix.size()), m_change);
        if (changed)
            m_exif = changed->isEmpty() ? QByteArray() : prefix + *changed;
        else if (!m_change.dropsEverything && !(m_change.dropsExif && m_change.dropsGps))
            return tl::unexpected(changed.error());
        m_changesExif = m_change.changesTags();
        if (!m_changesExif)
            m_exif = exif;
        m_xmp = changedXmpWithIptc(xmp, m_change, m_plan.notes);
        m_changesXmp = m_xmp != xmp;
        return {};
    }

    Result<PhotoPlan> placed(const std::vector<WebpChunk>& chunks, std::uint64_t listed) {
        const bool isExtended = chunks.front().type == "VP8X";
        const bool hasBlocks = !m_exif.isEmpty() || !m_xmp.isEmpty();
        if (auto done = addHeader(chunks.front(), isExtended, hasBlocks); !done)
            return tl::unexpected(done.error());
        for (const WebpChunk& chunk : chunks)
            place(chunk);
        if (m_changesExif && !m_exif.isEmpty() && !m_exifIsPlaced)
            m_plan.add(webpChunk("EXIF", m_exif));
        if (m_changesXmp && !m_xmp.isEmpty() && !m_xmpIsPlaced)
            m_plan.add(webpChunk("XMP ", m_xmp));
        const std::uint64_t size = m_plan.size() + kRiffHeadSize - 8;
        if (size > 0xFFFFFFFE)
            return failure(ErrorCode::LimitExceeded, kWritePhotoTags, m_reader.path(),
                           kPhotoTooLarge);
        PhotoPlan plan;
        plan.notes = m_plan.notes;
        plan.add("RIFF" + webp32(static_cast<std::uint32_t>(size)) + "WEBP");
        plan.add(std::move(m_plan));
        if (!m_change.dropsEverything)
            plan.addRange(listed, m_reader.size() - listed);
        return plan;
    }

    Result<void> addHeader(const WebpChunk& first, bool isExtended, bool hasBlocks) {
        if (!isExtended && !hasBlocks)
            return {};
        QByteArray header = dataOf(first);
        if (!isExtended) {
            const auto made = extendedHeader(m_reader, first);
            if (!made)
                return tl::unexpected(brokenWebp(m_reader));
            header = *made;
        }
        if (header.size() < 10)
            return tl::unexpected(brokenWebp(m_reader));
        auto flags = static_cast<std::uint8_t>(header[0]);
        flags = static_cast<std::uint8_t>(flags & ~(kHasExif | kHasXmp));
        flags = static_cast<std::uint8_t>(flags | (m_exif.isEmpty() ? 0 : kHasExif) |
                                          (m_xmp.isEmpty() ? 0 : kHasXmp));
        header[0] = static_cast<char>(flags);
        m_plan.add(webpChunk("VP8X", header));
        return {};
    }

    static bool belongsToPicture(const QByteArray& type) {
        static const QList<QByteArray> kKept{"VP8 ", "VP8L", "ALPH", "ICCP", "ANIM", "ANMF"};
        return kKept.contains(type);
    }

    void place(const WebpChunk& chunk) {
        if (chunk.type == "VP8X")
            return;
        if (chunk.type == "EXIF" && m_changesExif) {
            if (!m_exif.isEmpty() && !m_exifIsPlaced)
                m_plan.add(webpChunk(chunk.type, m_exif));
            m_exifIsPlaced = true;
        } else if (chunk.type == "XMP " && m_changesXmp) {
            if (!m_xmp.isEmpty() && !m_xmpIsPlaced)
                m_plan.add(webpChunk(chunk.type, m_xmp));
            m_xmpIsPlaced = true;
        } else if (!m_change.dropsEverything || belongsToPicture(chunk.type)) {
            m_plan.addRange(chunk.offset, chunk.size());
        }
    }

    FileReader& m_reader;
    const PhotoChange& m_change;
    PhotoPlan m_plan;
    QByteArray m_exif, m_xmp;
    bool m_changesExif = false, m_changesXmp = false;
    bool m_exifIsPlaced = false, m_xmpIsPlaced = false;
};

} // namespace

Result<PhotoPlan> planWebp(FileReader& reader, const PhotoChange& change) {
    return WebpPlan(reader, change).run();
}

} // namespace clipheave::platform
