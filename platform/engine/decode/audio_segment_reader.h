// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/frame_filter.h"
#include "platform/engine/encode/audio_encoder.h"

namespace clipheave::platform {

/// Decodes one segment's audio, cut to the sample, in the form and at the speed that the encoder
/// is to get. Gaps in its times become silence.
class AudioSegmentReader {
public:
    using Sink = std::function<int(const AVFrame&)>; ///< a negative code stops
    [[nodiscard]] static Result<std::unique_ptr<AudioSegmentReader>>
    open(PlannedSegment& segment, double volume, const AudioEncoder& encoder);

    /// Gives the whole segment. AVERROR_EXIT when the lanes or the sink stopped it.
    [[nodiscard]] int run(const Sink& sink, const ExportLanes& lanes);
    /// InvalidData when nothing could be decoded or the audio is shorter than announced.
    [[nodiscard]] Result<void> check() const;
    [[nodiscard]] QString note() const { return damageNote(*m_source, m_decoder->damaged()); }

private:
    [[nodiscard]] int useForm(AVFrame& frame, const Sink& sink);
    /// 1 when the segment is complete.
    [[nodiscard]] int takeFrame(AVFrame& frame, const Sink& sink);
    [[nodiscard]] int feed(AVFrame& frame, std::int64_t skip, std::int64_t count, const Sink& sink);
    [[nodiscard]] int feedSilence(const AVFrame& like, std::int64_t count, const Sink& sink);
    [[nodiscard]] int send(AVFrame* frame, const Sink& sink);
    [[nodiscard]] bool rewindIfLate(const AVFrame* frame);

    Stretch m_stretch;
    QByteArray m_filters; ///< behind the form of the source
    std::unique_ptr<ExportSource> m_source;
    std::unique_ptr<ExportDecoder> m_decoder;
    LinearGraph m_graph;
    int m_format = -1, m_rate = 0;
    QByteArray m_layout;         ///< by its name
    std::int64_t m_position = 0; ///< samples of the segment given to the filters
    bool m_sought = false, m_begun = false, m_decodedAny = false;
};

/// Where the audio of a segment's source ends, in its presentation: as its index says, or as its
/// last packets do where the headers only guess. None where nothing tells.
[[nodiscard]] std::optional<Ticks> audioEndOf(PlannedSegment& segment, const ExportLanes& lanes);

} // namespace clipheave::platform
