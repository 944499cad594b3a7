// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"

#include <deque>
#include <optional>

namespace clipheave::platform {

/// The packets of one video in file order, some read ahead. Times in the video's own units.
class VideoPackets {
public:
    /// Both are borrowed; the other streams should be discarded already.
    VideoPackets(AVFormatContext& context, AVStream& video) : m_context(context), m_video(video) {}

    /// Takes the next packet, null at the end of the file.
    [[nodiscard]] Packet next();
    /// Seeks to where decoding for `wanted` can start, `back` units before it (to the start of the
    /// file without one). False when the file cannot seek, or when the first keyframe there is
    /// later.
    [[nodiscard]] bool seekFor(std::int64_t wanted, std::optional<std::int64_t> back);
    /// Returns whether decoding up to `wanted` is quicker from a keyframe that has not been read
    /// yet, by the index, or by the distance where there is none.
    [[nodiscard]] bool shouldSeek(std::int64_t wanted);
    /// Returns whether the frame of `packet` is not needed: no other frame refers to it, and
    /// another one starts after it, by `wanted`.
    [[nodiscard]] bool isUnneeded(const AVPacket& packet, std::int64_t wanted) const;

private:
    [[nodiscard]] int indexSize() const;
    [[nodiscard]] Packet read();
    void readAhead();
    [[nodiscard]] bool dropUntilKeyFrame();

    AVFormatContext& m_context;
    AVStream& m_video;
    std::deque<Packet> m_ahead;
    std::int64_t m_newest = kNoTimestamp; ///< decoding time of the packet read last
    std::int64_t m_reorder = 0;           ///< largest delay from decoding to showing seen so far
    std::size_t m_aheadBytes = 0;
    bool m_atEnd = false;
};

} // namespace clipheave::platform
