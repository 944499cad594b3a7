// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/encoded_image.h"

#include <algorithm>
#include <functional>

namespace clipheave::platform {
namespace {

// Larger than any image that a decoder here takes; keeps products of the two inside 64 bits.
constexpr std::uint32_t kLargestImageSide = 1u << 20;
constexpr int kMostJpegSegments = 2000;
constexpr int kMostTiffEntries = 1000;
constexpr int kMostHeifBoxes = 4096;
// What an ID3 tag holds: a cover of that size, as TIFF, must come across a second save.
constexpr qsizetype kLargestFrame = 256 << 20;

/// A few bytes at an offset; cut at the end of the image. Borrowed until the next call.
using FrameBytes = std::function<ByteView(std::uint64_t offset, std::uint64_t length)>;

std::optional<FrameHeader> plausibleFrame(const char* format, std::uint32_t width,
                                          std::uint32_t height) {
    if (width == 0 || height == 0 || width > kLargestImageSide || height > kLargestImageSide)
        return std::nullopt;
    return FrameHeader{QString::fromLatin1(format),
                       QSize(static_cast<int>(width), static_cast<int>(height))};
}

bool isStartOfFrame(std::uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// ITU-T T.81 B.1.1: marker segments from SOI to the start of frame. Their headers are walked,
/// their contents skipped, so that a preview or profile in front costs nothing.
std::optional<FrameHeader> sniffJpeg(const FrameBytes& bytes) {
    std::uint64_t at = 2;
    for (int i = 0; i < kMostJpegSegments; ++i) {
        const ByteView segment = bytes(at, 10);
        const auto lead = segment.u8(0);
        const auto marker = segment.u8(1);
        if (!marker || lead != 0xFF)
            return std::nullopt;
        if (*marker == 0xFF) { // fill byte
            ++at;
            continue;
        }
        if (isStartOfFrame(*marker))
            return plausibleFrame("jpeg", segment.be16(7).value_or(0), segment.be16(5).value_or(0));
        if (*marker == 0xD9 || *marker == 0xDA)
            return std::nullopt;
        const bool alone = *marker == 0x01 || (*marker >= 0xD0 && *marker <= 0xD8);
        const auto length = segment.be16(2);
        if (!alone && (!length || *length < 2))
            return std::nullopt;
        at += alone ? 2u : 2u + *length;
    }
    return std::nullopt;
}

std::optional<FrameHeader> sniffBmp(ByteView head) {
    if (head.le32(14) == 12u) // OS/2 header
        return plausibleFrame("bmp", head.le16(18).value_or(0), head.le16(20).value_or(0));
    const std::uint32_t height = head.le32(22).value_or(0);
    // A negative height means rows from the top.
    return plausibleFrame("bmp", head.le32(18).value_or(0), height >> 31 ? ~height + 1 : height);
}

std::optional<FrameHeader> sniffWebp(ByteView head) {
    const ByteView kind = head.sub(12, 4);
    if (kind.startsWith("VP8X")) {
        const std::uint32_t width = head.le32(24).value_or(0) & 0xFFFFFF;
        const std::uint32_t height = head.le32(26).value_or(0) >> 8;
        return head.has(24, 6) ? plausibleFrame("webp", width + 1, height + 1) : std::nullopt;
    }
    if (kind.startsWith("VP8L")) {
        const auto bits = head.le32(21);
        if (!bits || head.u8(20) != 0x2F)
            return std::nullopt;
        return plausibleFrame("webp", (*bits & 0x3FFF) + 1, ((*bits >> 14) & 0x3FFF) + 1);
    }
    if (!kind.startsWith("VP8 ") || !head.sub(23, 3).startsWith("\x9D\x01\x2A"))
        return std::nullopt;
    return plausibleFrame("webp", head.le16(26).value_or(0) & 0x3FFF,
                          head.le16(28).value_or(0) & 0x3FFF);
}

/// TIFF 6.0, section 2: width and length are entries 256 and 257 of the first directory.
std::optional<FrameHeader> sniffTiff(const FrameBytes& bytes) {
    const ByteView head = bytes(0, 8);
    const bool little = head.startsWith("II");
    const auto u16 = [little](ByteView v, std::uint64_t at) -> std::uint32_t {
        return (little ? v.le16(at) : v.be16(at)).value_or(0);
    };
    const auto u32 = [little](ByteView v, std::uint64_t at) -> std::uint32_t {
        return (little ? v.le32(at) : v.be32(at)).value_or(0);
    };
    if (u16(head, 2) != 42)
        return std::nullopt;
    const std::uint64_t directory = u32(head, 4);
    const std::uint32_t count =
        std::min<std::uint32_t>(u16(bytes(directory, 2), 0), kMostTiffEntries);
    std::uint32_t sides[2] = {0, 0};
    for (std::uint32_t i = 0; i < count; ++i) {
        const ByteView entry = bytes(directory + 2 + std::uint64_t{12} * i, 12);
        const std::uint32_t tag = u16(entry, 0);
        if (tag == 256 || tag == 257)
            sides[tag - 256] = u16(entry, 2) == 3 ? u16(entry, 8) : u32(entry, 8);
    }
    return plausibleFrame("tiff", sides[0], sides[1]);
}

/// A box of ISO base media at an offset: "size, type"; nothing when it is none or lies beyond
/// `end`.
struct HeifBox {
    std::uint64_t body = 0, end = 0;
    ByteView type; ///< borrowed
};
std::optional<HeifBox> heifBoxAt(const FrameBytes& bytes, std::uint64_t at, std::uint64_t end) {
    const ByteView head = bytes(at, 8);
    const std::uint64_t size = head.be32(0).value_or(0);
    if (size < 8 || size > end - std::min(at, end))
        return std::nullopt;
    return HeifBox{at + 8, at + size, head.sub(4, 4)};
}

/// The first box of that type between two offsets.
std::optional<HeifBox> findHeifBox(const FrameBytes& bytes, std::uint64_t at, std::uint64_t end,
                                   const char* type) {
    for (int i = 0; i < kMostHeifBoxes; ++i) {
        const auto box = heifBoxAt(bytes, at, end);
        if (!box || box->type.startsWith(type))
            return box;
        at = box->end;
    }
    return std::nullopt;
}

/// ISO/IEC 23008-12: "ftyp" with a brand of still images; the sizes of all images stand in
/// meta/iprp/ipco. The largest is the main image's: its tiles and thumbnails are smaller.
std::optional<FrameHeader> sniffHeif(const FrameBytes& bytes) {
    const auto meta = findHeifBox(bytes, 0, UINT32_MAX, "meta");
    const auto iprp = meta ? findHeifBox(bytes, meta->body + 4, meta->end, "iprp") : meta;
    const auto ipco = iprp ? findHeifBox(bytes, iprp->body, iprp->end, "ipco") : iprp;
    std::optional<FrameHeader> largest;
    std::uint64_t at = ipco ? ipco->body : 0, most = 0;
    for (int i = 0; ipco && i < kMostHeifBoxes; ++i) {
        const auto ispe = findHeifBox(bytes, at, ipco->end, "ispe");
        if (!ispe)
            break;
        const ByteView sides = bytes(ispe->body + 4, 8);
        const std::uint32_t width = sides.be32(0).value_or(0), height = sides.be32(4).value_or(0);
        if (const std::uint64_t pixels = std::uint64_t{width} * height; pixels > most) {
            most = pixels;
            largest = plausibleFrame("heif", width, height);
        }
        at = ispe->end;
    }
    return largest;
}

bool isHeifBrand(ByteView brand) {
    return brand.startsWith("hei") || brand.startsWith("hev") || brand.startsWith("mif") ||
           brand.startsWith("msf1") || brand.startsWith("avi");
}

std::optional<FrameHeader> sniffImageBytes(const FrameBytes& bytes) {
    const ByteView head = bytes(0, 32);
    if (head.startsWith("\xFF\xD8\xFF"))
        return sniffJpeg(bytes);
    if (head.startsWith("\x89PNG\r\n\x1A\n"))
        return head.sub(12).startsWith("IHDR")
                   ? plausibleFrame("png", head.be32(16).value_or(0), head.be32(20).value_or(0))
                   : std::nullopt;
    if (head.startsWith("GIF87a") || head.startsWith("GIF89a"))
        return plausibleFrame("gif", head.le16(6).value_or(0), head.le16(8).value_or(0));
    if (head.startsWith("RIFF") && head.sub(8).startsWith("WEBP"))
        return sniffWebp(head);
    if (head.startsWith("BM"))
        return sniffBmp(head);
    if (head.startsWith("II*") || head.startsWith("MM"))
        return sniffTiff(bytes);
    if (head.sub(4).startsWith("ftyp") && isHeifBrand(head.sub(8, 4)))
        return sniffHeif(bytes);
    return std::nullopt;
}

} // namespace

std::optional<FrameHeader> sniffImage(ByteView head) {
    return sniffImageBytes(
        [head](std::uint64_t offset, std::uint64_t length) { return head.sub(offset, length); });
}

EncodedImage EncodedImage::fromBytes(const QByteArray& bytes) {
    EncodedImage frame;
    if (const auto header = sniffImage(bytes)) {
        frame.m_format = header->format;
        frame.m_size = header->size;
        frame.m_data = bytes;
    }
    return frame;
}

EncodedImage EncodedImage::fromSlice(FileReader& reader, const FileSlice& slice) {
    if (slice.offset > reader.size() || slice.length > reader.size() - slice.offset)
        return {};
    if (slice.length <= kInlineLimit) {
        const auto bytes = reader.read(slice.offset, slice.length);
        return bytes ? fromBytes(*bytes) : EncodedImage();
    }
    const auto header = sniffImageBytes([&](std::uint64_t offset, std::uint64_t length) {
        if (offset >= slice.length)
            return ByteView();
        return reader.viewUpTo(slice.offset + offset, std::min(length, slice.length - offset));
    });
    EncodedImage frame;
    if (header) {
        frame.m_format = header->format;
        frame.m_size = header->size;
        frame.m_data = slice;
    }
    return frame;
}

std::uint64_t EncodedImage::byteCount() const {
    if (const auto* slice = std::get_if<FileSlice>(&m_data))
        return slice->length;
    return static_cast<std::uint64_t>(std::get<QByteArray>(m_data).size());
}

QByteArray EncodedImage::bytes() const {
    const auto* slice = std::get_if<FileSlice>(&m_data);
    if (!slice)
        return std::get<QByteArray>(m_data);
    const auto loaded = slice->load(kLargestFrame);
    if (!loaded)
        return {};
    // The file may have been rewritten since: other bytes at this place are not the image.
    const auto header = sniffImage(*loaded);
    return header && header->format == m_format && header->size == m_size ? *loaded : QByteArray();
}

bool operator==(const EncodedImage& a, const EncodedImage& b) {
    if (a.m_format != b.m_format || a.m_size != b.m_size || a.byteCount() != b.byteCount())
        return false;
    const auto* left = std::get_if<FileSlice>(&a.m_data);
    const auto* right = std::get_if<FileSlice>(&b.m_data);
    if (left && right && left->path == right->path && left->offset == right->offset)
        return true;
    return a.bytes() == b.bytes();
}

} // namespace clipheave::platform
