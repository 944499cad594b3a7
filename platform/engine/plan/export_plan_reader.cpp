// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/plan/export_plan_reader.h"

#include "platform/engine/io/container_codecs.h"
#include "platform/engine/io/file_input.h"
#include "platform/engine/messages.h"

#include <QFileInfo>

#include <algorithm>
#include <map>

namespace clipheave::platform {

namespace {

constexpr std::size_t kMostSegments = 100'000;

tl::unexpected<Error> planError(MessageCode what, const QString& path = {}) {
    return failure(ErrorCode::InvalidArgument, kReadExportPlan, path, what);
}

/// Side data of a video that belongs to its track whatever codec the frames get.
bool isKeptSideData(AVPacketSideDataType type) {
    return type == AV_PKT_DATA_MASTERING_DISPLAY_METADATA ||
           type == AV_PKT_DATA_CONTENT_LIGHT_LEVEL || type == AV_PKT_DATA_SPHERICAL ||
           type == AV_PKT_DATA_STEREO3D || type == AV_PKT_DATA_DOVI_CONF;
}

Result<std::shared_ptr<const SourceFacts>> factsOf(StreamSource& source) {
    auto facts = std::make_shared<SourceFacts>();
    AVStream& stream = source.stream();
    facts->parameters.reset(avcodec_parameters_alloc());
    if (!facts->parameters || copyParameters(facts->parameters.get(), stream.codecpar) < 0)
        return source.failed(ErrorCode::Io, ffmpegReason(AVERROR(ENOMEM)));
    facts->timeBase = stream.time_base;
    facts->frameRate = stream.avg_frame_rate.num > 0 && stream.avg_frame_rate.den > 0
                           ? stream.avg_frame_rate
                           : stream.r_frame_rate;
    const AVRational aspect = av_guess_sample_aspect_ratio(&source.context(), &stream, nullptr);
    if (aspect.num > 0 && aspect.den > 0)
        facts->aspect = aspect;
    facts->end = source.announcedEnd();
    if (const AVDictionaryEntry* entry = av_dict_get(stream.metadata, "language", nullptr, 0))
        facts->language = entry->value;
    for (const AVPacketSideData& data : sideDataOf(stream))
        if (isKeptSideData(data.type) && data.size < (1 << 20))
            facts->sideData.push_back(
                {data.type, QByteArray(static_cast<const char*>(static_cast<void*>(data.data)),
                                       static_cast<qsizetype>(data.size))});
    return facts;
}

Result<void> checkFacts(const StreamSource& source, bool decoded) {
    const AVCodecParameters& codec = source.codec();
    const bool video = codec.codec_type == AVMEDIA_TYPE_VIDEO;
    if (decoded && avcodec_find_decoder(codec.codec_id) == nullptr)
        return source.failed(ErrorCode::NotSupported, noDecoder(codec));
    if (video && (codec.width <= 0 || codec.height <= 0))
        return source.failed(ErrorCode::InvalidData, kNoVideoDecoded);
    if (!video && (codec.sample_rate <= 0 || codec.ch_layout.nb_channels <= 0))
        return source.failed(ErrorCode::NotSupported, kNoAudioDecoded);
    return source.checkComplete();
}

/// Reads the segments of one track, each source's facts once.
class TrackReader {
public:
    TrackReader(AVMediaType type, bool decoded) : m_type(type), m_decoded(decoded) {}

    Result<std::vector<PlannedSegment>> read(const std::vector<ExportSegment>& segments) {
        std::vector<PlannedSegment> planned;
        Ticks end = 0;
        if (segments.empty() || segments.size() > kMostSegments)
            return planError(kSegmentCount);
        for (const ExportSegment& segment : segments) {
            const auto stretch = Stretch::of(segment.source, segment.target);
            if (!stretch || segment.stream < 0)
                return planError(kSegmentTime, segment.path);
            if (stretch->targetStart < end - kSliverTicks)
                return planError(kSegmentsOverlap, segment.path);
            end = stretch->targetEnd;
            PlannedSegment& added = planned.emplace_back();
            added.path = segment.path;
            added.stream = segment.stream;
            added.stretch = *stretch;
            if (auto found = addFacts(added, planned.size() == 1); !found)
                return tl::unexpected(found.error());
        }
        return planned;
    }

private:
    Result<void> addFacts(PlannedSegment& segment, bool keepOpen) {
        auto& known = m_facts[{segment.path, segment.stream}];
        if (known == nullptr) {
            auto source = StreamSource::open(segment.path, m_type, segment.stream);
            if (!source)
                return tl::unexpected(source.error());
            if (auto checked = checkFacts(**source, m_decoded); !checked)
                return checked;
            auto facts = factsOf(**source);
            if (!facts)
                return tl::unexpected(facts.error());
            known = *facts;
            if (keepOpen)
                segment.opened = std::move(*source);
        }
        segment.facts = known;
        return {};
    }

    AVMediaType m_type;
    bool m_decoded;
    std::map<std::pair<QString, int>, std::shared_ptr<const SourceFacts>> m_facts;
};

Result<void> readOrientations(const ExportVideo& video, std::vector<PlannedSegment>& segments) {
    const std::vector<int>& rotations = video.rotations;
    const std::vector<bool>& mirrored = video.mirrored;
    const auto isCount = [&segments](std::size_t n) { return n <= 1 || n == segments.size(); };
    if (!isCount(rotations.size()) || !isCount(mirrored.size()))
        return planError(kRotationCount);
    for (std::size_t i = 0; i < segments.size() && !mirrored.empty(); ++i)
        segments[i].orientation.mirrored = mirrored[mirrored.size() == 1 ? 0 : i];
    for (std::size_t i = 0; i < segments.size() && !rotations.empty(); ++i) {
        const int degrees = rotations.size() == 1 ? rotations.front() : rotations[i];
        if (degrees != 0 && degrees != 90 && degrees != 180 && degrees != 270)
            return planError(kRotationValue);
        segments[i].orientation.degrees = degrees;
    }
    return {};
}

Result<void> checkVideo(const ExportVideo& video) {
    constexpr int kLargestSide = 16384;
    const QSize size = video.size;
    const bool valid = size.width() > 0 && size.height() > 0 && size.width() <= kLargestSide &&
                       size.height() <= kLargestSide && size.width() % 2 == 0 &&
                       size.height() % 2 == 0;
    if (!size.isEmpty() && !valid)
        return planError(kPlannedFrameSize);
    if (video.frameDuration) {
        const auto ticks = ticksOf(*video.frameDuration);
        if (!ticks || *ticks < kTicksPerSecond / 1000 || *ticks > kTicksPerSecond * 60 ||
            video.frameDuration->value > INT32_MAX)
            return planError(kPlannedFrameDuration);
    }
    if (video.bitRate < 0 || video.bitRate > 1'000'000'000 || video.crf < 0 || video.crf > 51)
        return planError(kPlannedQuality);
    return {};
}

Result<void> checkAudio(const ExportAudio& audio) {
    const bool plain = audio.volume == 1;
    if (!(audio.volume >= 0 && audio.volume <= 100) || audio.channels < 0 || audio.bitRate <= 0)
        return planError(kPlannedAudio);
    if (audio.mode == ExportMode::Copy && !plain)
        return planError(kCopiedAudioVolume);
    return {};
}

Result<void> readAudio(const ExportPlan& plan, PlannedExport& planned) {
    if (auto valid = checkAudio(*plan.audio); !valid)
        return valid;
    const bool decoded = plan.audio->mode == ExportMode::Encode && plan.audio->volume > 0;
    auto segments = TrackReader(AVMEDIA_TYPE_AUDIO, decoded).read(plan.audio->segments);
    if (!segments && segments.error().code == ErrorCode::NotSupported && plan.video) {
        // The video is worth having without an audio track that is missing or that nothing decodes.
        const Error& error = segments.error();
        planned.notes << Message(kAudioLeftOut,
                                 {QFileInfo(error.path).fileName(), error.detail.text()});
        return {};
    }
    if (!segments)
        return tl::unexpected(segments.error());
    planned.audio = std::move(*segments);
    return {};
}

} // namespace

QByteArray creationTimeOf(const QString& path) {
    if (path.isEmpty())
        return {};
    Result<FileReader> reader = FileReader::open(path);
    if (!reader)
        return {};
    const auto input = FileInput::open(*reader, InputLimits());
    if (!input)
        return {};
    const AVDictionaryEntry* entry =
        av_dict_get((*input)->context()->metadata, "creation_time", nullptr, 0);
    return entry != nullptr ? QByteArray(entry->value) : QByteArray();
}

Result<PlannedExport> readExportPlan(const ExportPlan& plan) {
    PlannedExport planned;
    if (!plan.video && !plan.audio)
        return planError(kPlanIsEmpty);
    if (plan.video && plan.container == ExportContainer::M4A)
        return planError(kM4aHoldsNoVideo);
    if (plan.video) {
        if (auto valid = checkVideo(*plan.video); !valid)
            return tl::unexpected(valid.error());
        const bool decoded = plan.video->mode == ExportMode::Encode;
        auto segments = TrackReader(AVMEDIA_TYPE_VIDEO, decoded).read(plan.video->segments);
        if (!segments)
            return tl::unexpected(segments.error());
        planned.video = std::move(*segments);
        if (auto read = readOrientations(*plan.video, planned.video); !read)
            return tl::unexpected(read.error());
        planned.end = planned.video.back().stretch.targetEnd;
    }
    if (plan.audio)
        if (auto read = readAudio(plan, planned); !read)
            return tl::unexpected(read.error());
    if (!planned.audio.empty())
        planned.end = std::max(planned.end, planned.audio.back().stretch.targetEnd);
    planned.creationTime = creationTimeOf(plan.headerDatesOf);
    return planned;
}

} // namespace clipheave::platform
