// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/jpeg_segments.h"

#include "platform/image/messages.h"

#include <QtEndian>

#include <cstring>

namespace clipheave::platform {

namespace {

constexpr std::uint8_t kSoi = 0xD8, kEoi = 0xD9, kSos = 0xDA, kTem = 0x01, kRst0 = 0xD0,
                       kRst7 = 0xD7;
constexpr std::size_t kMostSegments = 4096; // a profile or thermal image takes dozens
constexpr qsizetype kMostPayload = 65'533;
constexpr std::uint64_t kMostFill = 1u << 16;

bool standsAlone(std::uint8_t marker) {
    return marker == kTem || (marker >= kRst0 && marker <= kRst7);
}

Error brokenAt(const FileReader& reader) {
    return {ErrorCode::InvalidData, kReadPhoto, reader.path(), kJpegBroken};
}

/// Returns the offset of the marker's code: behind one FF or more.
Result<std::uint64_t> markerAt(FileReader& reader, std::uint64_t offset) {
    std::uint64_t at = offset;
    while (reader.viewUpTo(at, 1).u8(0) == 0xFF) {
        if (++at > offset + kMostFill)
            break;
    }
    if (at == offset || at > offset + kMostFill || at >= reader.size())
        return tl::unexpected(brokenAt(reader));
    return at;
}

} // namespace

Result<JpegImage> readJpegImage(FileReader& reader, std::uint64_t offset) {
    if (reader.viewUpTo(offset, 2).be16(0) != 0xFF00 + kSoi)
        return tl::unexpected(brokenAt(reader));
    JpegImage image;
    std::uint64_t at = offset + 2;
    while (image.segments.size() < kMostSegments) {
        const auto code = markerAt(reader, at);
        if (!code)
            return tl::unexpected(code.error());
        JpegSegment segment;
        segment.marker = reader.viewUpTo(*code, 1).u8(0).value_or(0);
        segment.offset = at;
        if (segment.marker == kSos) {
            image.scan = at;
            return image;
        }
        const auto length = reader.viewUpTo(*code + 1, 2).be16(0);
        const bool alone = standsAlone(segment.marker);
        if (segment.marker == 0 || segment.marker == kEoi || segment.marker == kSoi ||
            (!alone && (!length || *length < 2)))
            return tl::unexpected(brokenAt(reader));
        const std::uint64_t end = *code + 1 + (alone ? 0 : *length);
        segment.size = end - at;
        if (end > reader.size())
            return tl::unexpected(brokenAt(reader));
        if (segment.isApp() || segment.marker == kJpegComment) {
            auto payload = reader.read(*code + 3, *length - 2u);
            if (!payload)
                return tl::unexpected(payload.error());
            segment.payload = std::move(*payload);
        }
        at = end;
        image.segments.push_back(std::move(segment));
    }
    return tl::unexpected(brokenAt(reader));
}

namespace {

/// Returns where in the bytes, at least two, a marker begins that is more than a stuffed byte or a
/// restart; near their end when there is none.
std::uint64_t markerIn(ByteView bytes) {
    std::uint64_t at = 0;
    while (at + 1 < bytes.size()) {
        const void* found = std::memchr(bytes.data() + at, 0xFF, bytes.size() - 1 - at);
        if (found == nullptr)
            return bytes.size() - 1;
        at = static_cast<std::uint64_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
        const std::uint8_t code = bytes.data()[at + 1];
        if (code != 0 && !standsAlone(code))
            return at;
        at += 2;
    }
    return at;
}

} // namespace

Result<std::uint64_t> endOfJpegImage(FileReader& reader, const JpegImage& image) {
    std::uint64_t at = image.scan;
    while (true) {
        const ByteView bytes = reader.viewUpTo(at, FileReader::kWindow);
        if (bytes.size() < 2)
            return reader.size();
        const std::uint64_t place = markerIn(bytes);
        at += place;
        if (place + 1 >= bytes.size())
            continue;
        const std::uint8_t code = bytes.data()[place + 1];
        if (code == kEoi)
            return at + 2;
        if (code == 0xFF) // fill
            ++at;
        else
            at += 2 + reader.viewUpTo(at + 2, 2).be16(0).value_or(2);
    }
}

Result<QByteArray> jpegSegment(std::uint8_t marker, const QByteArray& payload) {
    if (payload.size() > kMostPayload)
        return failure(ErrorCode::InvalidArgument, kWritePhotoTags, {}, kBlockTooLarge);
    QByteArray bytes(4, '\0');
    bytes[0] = static_cast<char>(0xFF);
    bytes[1] = static_cast<char>(marker);
    qToBigEndian(static_cast<quint16>(payload.size() + 2), bytes.data() + 2);
    return bytes + payload;
}

} // namespace clipheave::platform
