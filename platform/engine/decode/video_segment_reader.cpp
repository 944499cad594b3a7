// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/video_segment_reader.h"

#include "platform/engine/messages.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace clipheave::platform {

namespace {

constexpr AVRational kUsualRate{25, 1}; ///< where a file has none
/// Segments that begin earlier are read from the start of the file.
constexpr Ticks kShortestSeek = kTicksPerSecond;
/// A last frame with a longer duration is damage, unless another stream lasts as long.
constexpr Ticks kLongestLastFrame = kTicksPerSecond * 60;
/// How much of the announced duration may be missing at the end.
constexpr Ticks kToleratedLoss = kTicksPerSecond * 2;

} // namespace

Result<std::unique_ptr<VideoSegmentReader>> VideoSegmentReader::open(PlannedSegment& segment,
                                                                     int threads) {
    auto source = openSegment(segment, AVMEDIA_TYPE_VIDEO);
    if (!source)
        return tl::unexpected(source.error());
    std::unique_ptr<VideoSegmentReader> reader(new VideoSegmentReader);
    reader->m_stretch = segment.stretch;
    reader->m_source = std::move(*source);
    if (segment.stretch.sourceStart > kShortestSeek)
        reader->m_sought = reader->m_source->seekBefore(segment.stretch.sourceStart);
    auto decoder = MediaDecoder::open(reader->m_source->stream(), threads);
    if (!decoder)
        return reader->m_source->failed(decoder.error().code, decoder.error().detail);
    reader->m_decoder = std::move(*decoder);
    const AVRational rate = segment.facts->frameRate;
    const bool known = rate.num > 0 && rate.den > 0 && av_q2d(rate) >= 0.1;
    reader->m_usualDuration =
        ticksOf(1, av_inv_q(known ? rate : kUsualRate)).value_or(kTicksPerSecond / 25);
    return reader;
}

Notes VideoSegmentReader::notes() const {
    Notes notes;
    for (const Message& note : {damageNote(*m_source, m_decoder->damaged()), m_endNote})
        if (!note.isEmpty())
            notes << note;
    return notes;
}

AVRational VideoSegmentReader::aspectOf(AVFrame& frame) const {
    return av_guess_sample_aspect_ratio(&m_source->context(), &m_source->stream(), &frame);
}

/// Decodes the next frame and gives it a time later than the one before.
Result<VideoSegmentReader::Decoded> VideoSegmentReader::decode() {
    Decoded decoded{Frame(av_frame_alloc())};
    if (!decoded.frame)
        return m_source->failed(ErrorCode::Io, ffmpegReason(AVERROR(ENOMEM)));
    const int code = m_decoder->next(*decoded.frame,
                                     [this](AVPacket& packet) { return m_source->read(packet); });
    if (code == AVERROR_EOF)
        return Decoded{};
    if (code < 0)
        return m_source->failed(ErrorCode::Io, ffmpegReason(code));
    const auto duration =
        ticksOf(durationOf(*decoded.frame), m_source->stream().time_base).value_or(0);
    decoded.duration = duration > 0 ? duration : m_usualDuration;
    const auto time = m_source->time(decoded.frame->best_effort_timestamp);
    decoded.time = time.value_or(m_lastTime ? *m_lastTime + m_usualDuration : 0);
    if (m_lastTime && decoded.time <= *m_lastTime)
        decoded.time = *m_lastTime + std::min(m_usualDuration, kSliverTicks);
    m_lastTime = decoded.time;
    return decoded;
}

/// Starts again at the beginning of the file after a seek that went too far.
Result<VideoSegmentReader::Decoded> VideoSegmentReader::decodeFirst() {
    auto first = decode();
    const bool late = first && (!first->frame || first->time > m_stretch.sourceStart);
    if (!m_sought || !late)
        return first;
    m_sought = false;
    if (!m_source->rewind())
        return first;
    m_decoder->flush();
    m_decoder->forgetDamage();
    m_lastTime.reset();
    return decode();
}

/// Returns the end of the last frame: that of the stream, where the headers give a credible one.
Ticks VideoSegmentReader::lastEnd(const Decoded& last) const {
    const auto end = m_source->announcedEnd();
    const bool holds = end && *end > last.time &&
                       (*end - last.time <= kLongestLastFrame || m_source->fileReaches(*end));
    return holds ? *end : last.time + std::min(last.duration, kLongestLastFrame);
}

/// The video must last as long as its track says. A container's duration may be that of another
/// stream.
Result<void> VideoSegmentReader::checkBreak(Ticks end) {
    const AVFormatContext& context = m_source->context();
    const auto track = m_source->announcedEnd();
    auto announced = track;
    if (!track && !m_source->isCutOut() &&
        context.duration_estimation_method == AVFMT_DURATION_FROM_STREAM)
        // Some writers count from zero though the first frame comes much later.
        announced = ticksOf(context.duration - startMicroseconds(context), AV_TIME_BASE_Q);
    if (!announced)
        return {};
    const Ticks wanted = std::min(*announced, m_stretch.sourceEnd), missing = wanted - end;
    if (missing <= std::max(kToleratedLoss, wanted / 20))
        return {};
    const QString at = secondsText(end);
    if (track || (missing > wanted / 5 && !m_source->fileReaches(wanted)))
        return m_source->failed(ErrorCode::InvalidData, {kVideoBreaksOff, {at}});
    m_endNote = {kVideoEndsEarly, {QFileInfo(m_source->path()).fileName(), at}};
    return {};
}

Result<TimedFrame> VideoSegmentReader::next() {
    if (!m_begun) {
        m_begun = true;
        auto first = decodeFirst();
        if (!first)
            return tl::unexpected(first.error());
        m_current = std::move(*first);
    }
    while (m_current.frame && m_current.time < m_stretch.sourceEnd) {
        auto following = decode();
        if (!following)
            return tl::unexpected(following.error());
        Decoded shown = std::exchange(m_current, std::move(*following));
        const Ticks end = m_current.frame ? m_current.time : lastEnd(shown);
        if (!m_current.frame)
            if (auto whole = checkBreak(end); !whole)
                return tl::unexpected(whole.error());
        const Ticks from = std::max(shown.time, m_stretch.sourceStart);
        const Ticks to = std::min(end, m_stretch.sourceEnd);
        if (to - from < std::min(kSliverTicks, (end - shown.time) / 2))
            continue;
        TimedFrame timed{std::move(shown.frame)};
        // A first frame takes over the time of a sliver before it.
        const bool atStart = !m_shown && from - m_stretch.sourceStart < kSliverTicks;
        timed.start = m_stretch.toTarget(atStart ? m_stretch.sourceStart : from);
        timed.end = m_stretch.toTarget(to);
        m_shown = true;
        return timed;
    }
    return TimedFrame{};
}

} // namespace clipheave::platform
