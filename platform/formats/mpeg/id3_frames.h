// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"

#include <QByteArrayList>

#include <optional>
#include <vector>

namespace clipheave::platform {

/// What stands in front of a frame's body (ID3v2.2.0 section 3.2, v2.3.0 section 3.3, v2.4.0
/// structure section 4).
struct Id3FrameHeader {
    QByteArray id; ///< that of v2.3/v2.4 also in a v2.2 tag; empty when it has none there
    std::uint64_t headerSize = 0;
    std::uint64_t bodySize = 0; ///< may reach beyond the tag
    bool grouped = false, compressed = false, encrypted = false, unsynchronised = false;
    bool hasLength = false; ///< four bytes of original length stand before the body
};
/// Returns the header at `at` of a tag's body; nothing at padding or what is not a frame. `version`
/// is the tag's: 2, 3, or 4 for any other.
[[nodiscard]] std::optional<Id3FrameHeader> id3FrameHeaderAt(const ByteRange& frames,
                                                             std::uint64_t at, int version);

/// One frame, its transformations undone.
struct Id3Frame {
    QByteArray id; ///< that of v2.3/v2.4 also in a v2.2 tag
    ByteRange body;
};
/// Returns the frames of the tag at the start of `range`, in file order. A frame that is encrypted,
/// empty or damaged is left out; reading ends at padding or at the first thing that is not a frame.
/// `unread` takes the ids of those that are encrypted or damaged.
[[nodiscard]] std::vector<Id3Frame> readId3Frames(const ByteRange& range,
                                                  QByteArrayList* unread = nullptr);

} // namespace clipheave::platform
