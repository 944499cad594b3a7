// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/jpeg_segments.h"

// The index of the images in a multi-picture JPEG. Source: CIPA DC-007, 5.2.
namespace clipheave::platform {

struct ByteSpan {
    std::uint64_t offset = 0, length = 0;
    [[nodiscard]] std::uint64_t end() const { return offset + length; }
};

[[nodiscard]] bool isMpIndex(const JpegSegment& segment);
/// Returns where the images behind the first lie, in order, apart from each other and inside the
/// file.
[[nodiscard]] std::vector<ByteSpan> furtherImages(const JpegSegment& index, std::uint64_t fileSize);
/// Returns the whole segment for a file whose first image grew by `grows` bytes and whose index
/// moved by `moved`.
[[nodiscard]] QByteArray movedMpIndex(FileReader& reader, const JpegSegment& index,
                                      std::int64_t grows, std::int64_t moved);

} // namespace clipheave::platform
