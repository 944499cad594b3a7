// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/image_layout.h"

#include "platform/image/tag_text.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

constexpr int kMostSegments = 1000;
constexpr std::uint32_t kMostIccTags = 200;
constexpr std::uint32_t kLongestProfileName = 1024;

/// Walks the segments to the frame header. Source: ITU-T T.81, B.2.2.
ImageLayout jpegLayout(FileReader& reader) {
    std::uint64_t at = 2;
    for (int i = 0; i < kMostSegments; ++i) {
        const ByteView segment = reader.viewUpTo(at, 10);
        const auto marker = segment.be16(0), length = segment.be16(2);
        if (!marker || !length || *marker < 0xFF00 || *length < 2)
            break;
        const bool frame = *marker >= 0xFFC0 && *marker <= 0xFFCF && *marker != 0xFFC4 &&
                           *marker != 0xFFC8 && *marker != 0xFFCC;
        if (frame)
            return {segment.u8(9).value_or(0), segment.u8(4).value_or(0)};
        if (*marker == 0xFFDA)
            break;
        at += 2u + *length;
    }
    return {};
}

/// Source: PNG (third edition), 11.2.1.
ImageLayout pngLayout(ByteView head) {
    const int depth = head.u8(24).value_or(0), type = head.u8(25).value_or(0);
    const bool gray = (type & 2) == 0;
    return {gray ? 1 : 3, type == 3 ? 8 : depth}; // a palette has eight bits a colour
}

QString textOfDescription(ByteView tag) {
    if (tag.startsWith("desc")) {
        const std::uint32_t length = std::min(tag.be32(8).value_or(0), kLongestProfileName);
        return textFromTagBytes(tag.sub(12, length).bytes());
    }
    if (!tag.startsWith("mluc"))
        return {};
    // The first language: its length and offset in the tag; UTF-16 big endian.
    const std::uint32_t length = std::min(tag.be32(20).value_or(0), kLongestProfileName);
    const ByteView text = tag.sub(tag.be32(24).value_or(0), length);
    QString name;
    for (std::uint64_t i = 0; i + 1 < text.size(); i += 2)
        name += QChar(*text.be16(i));
    return name.left(name.indexOf(QChar(u'\0')));
}

} // namespace

ImageLayout imageLayout(FileReader& reader) {
    const ByteView head = reader.viewUpTo(0, 32);
    if (head.startsWith("\xFF\xD8\xFF"))
        return jpegLayout(reader);
    if (head.startsWith("\x89PNG\r\n\x1A\n"))
        return pngLayout(head);
    return {};
}

QString colorModel(const ImageLayout& layout) {
    switch (layout.components) {
    case 1:
    case 2:
        return QStringLiteral("Gray");
    case 3:
        return QStringLiteral("RGB");
    case 4:
        return QStringLiteral("CMYK");
    default:
        return {};
    }
}

QString iccProfileName(const QByteArray& profile) {
    constexpr std::uint64_t kHeaderBytes = 128, kEntryBytes = 12;
    const ByteView bytes(profile);
    const std::uint32_t count = std::min(bytes.be32(kHeaderBytes).value_or(0), kMostIccTags);
    for (std::uint32_t i = 0; i < count; ++i) {
        const ByteView entry = bytes.sub(kHeaderBytes + 4 + i * kEntryBytes, kEntryBytes);
        if (entry.startsWith("desc"))
            return textOfDescription(
                bytes.sub(entry.be32(4).value_or(0), entry.be32(8).value_or(0)));
    }
    return {};
}

} // namespace clipheave::platform
