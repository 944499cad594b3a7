// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/audio_format.h"
#include "platform/engine/convert/linear_graph.h"
#include "platform/engine/decode/media_decoder.h"
#include "platform/engine/plan/planned_export.h"

namespace clipheave::platform {

/// Decodes one segment's audio, cut to the sample, in the format and at the speed that the encoder
/// needs. Gaps in its timestamps become silence.
class AudioSegmentReader {
public:
    using Sink = std::function<int(const AVFrame&)>; ///< a negative code stops
    [[nodiscard]] static Result<std::unique_ptr<AudioSegmentReader>>
    open(PlannedSegment& segment, double volume, const AudioFormat& format);

    /// Delivers the whole segment. AVERROR_EXIT when `stopped` or the sink stopped it.
    [[nodiscard]] int run(const Sink& sink, const std::function<bool()>& stopped);
    /// InvalidData when nothing could be decoded or the audio is shorter than announced.
    [[nodiscard]] Result<void> check() const;
    /// Returns the note on damage; empty without any.
    [[nodiscard]] Message note() const { return damageNote(*m_source, m_decoder->damaged()); }

private:
    [[nodiscard]] int useFormatOf(AVFrame& frame, const Sink& sink);
    /// Returns how many samples of the frame are heard; encoders fill the last one up.
    [[nodiscard]] std::int64_t heardOf(const AVFrame& frame) const;
    /// Returns 1 when the segment is complete.
    [[nodiscard]] int takeFrame(AVFrame& frame, const Sink& sink);
    [[nodiscard]] int feed(AVFrame& frame, std::int64_t skip, std::int64_t count, const Sink& sink);
    [[nodiscard]] int feedSilence(const AVFrame& like, std::int64_t count, const Sink& sink);
    [[nodiscard]] int send(AVFrame* frame, const Sink& sink);
    [[nodiscard]] bool rewindIfLate(const AVFrame* frame);

    Stretch m_stretch;
    std::optional<Ticks> m_end; ///< of the source, where its index says it to the sample
    QByteArray m_filters;       ///< after the format of the source
    std::unique_ptr<StreamSource> m_source;
    std::unique_ptr<MediaDecoder> m_decoder;
    LinearGraph m_graph;
    int m_format = -1, m_rate = 0;
    QByteArray m_layout;         ///< by its name
    std::int64_t m_position = 0; ///< samples of the segment given to the filters
    bool m_sought = false, m_begun = false, m_decodedAny = false;
};

/// Returns where the audio of a segment's source ends, in presentation time: by its index, or by
/// its last packets where the headers only estimate it. Nothing where neither is there.
[[nodiscard]] std::optional<Ticks> audioEndOf(PlannedSegment& segment,
                                              const std::function<bool()>& stopped);

} // namespace clipheave::platform
