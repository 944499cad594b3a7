// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <cstdint>
#include <vector>

// The marker segments in front of the pixels of a JPEG image. Source: ITU-T T.81, annex B.
namespace clipheave::platform {

inline constexpr std::uint8_t kJpegApp0 = 0xE0, kJpegApp1 = 0xE1, kJpegApp2 = 0xE2,
                              kJpegApp13 = 0xED, kJpegApp14 = 0xEE, kJpegApp15 = 0xEF,
                              kJpegComment = 0xFE;

struct JpegSegment {
    std::uint8_t marker = 0;
    std::uint64_t offset = 0; ///< of the marker, fill bytes before it included
    std::uint64_t size = 0;   ///< with marker and length
    QByteArray payload;       ///< of application data and comments

    [[nodiscard]] bool isApp() const { return marker >= kJpegApp0 && marker <= kJpegApp15; }
};

struct JpegImage {
    std::vector<JpegSegment> segments; ///< behind SOI, before the first scan
    std::uint64_t scan = 0;            ///< offset of the first scan's marker
};

/// Reads the segments of the image at an offset. InvalidData when it is none or ends before a scan.
[[nodiscard]] Result<JpegImage> readJpegImage(FileReader& reader, std::uint64_t offset);
/// Returns where the image ends, behind its EOI; that of the file when it has none. Reads its
/// pixels.
[[nodiscard]] Result<std::uint64_t> endOfJpegImage(FileReader& reader, const JpegImage& image);
/// Returns the segment as bytes; InvalidArgument when the payload is over 65,533 bytes.
[[nodiscard]] Result<QByteArray> jpegSegment(std::uint8_t marker, const QByteArray& payload);

} // namespace clipheave::platform
