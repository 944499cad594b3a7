// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/probe/probe.h"

#include "platform/engine/io/file_input.h"
#include "platform/engine/messages.h"
#include "platform/engine/probe/tags.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string_view>

namespace clipheave::platform {

namespace {

constexpr double kMicrosecond = 1e-6;
constexpr unsigned kMostStreams = 256;

std::span<AVStream* const> streamsOf(const AVFormatContext& context) {
    return {context.streams, std::min(context.nb_streams, kMostStreams)};
}

bool isAttachedPicture(const AVStream& stream) {
    return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
}

double streamSeconds(const AVStream& stream) {
    return stream.duration > 0 ? static_cast<double>(stream.duration) * seconds(stream.time_base)
                               : 0;
}

/// Returns what the header of an AVI says by the number of its frames: libavformat believes the
/// index, also one that is cut or damaged.
double aviHeaderSeconds(const AVFormatContext& context) {
    double longest = 0;
    if (std::string_view(context.iformat->name) == "avi")
        for (const AVStream* stream : streamsOf(context))
            if (stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
                longest = std::max(longest, static_cast<double>(stream->nb_frames) *
                                                seconds(stream->time_base));
    return longest;
}

double containerSeconds(const AVFormatContext& context) {
    double longest = aviHeaderSeconds(context);
    if (context.duration > 0)
        return std::max(longest, static_cast<double>(context.duration) * kMicrosecond);
    for (const AVStream* stream : streamsOf(context))
        longest = std::max(longest, isAttachedPicture(*stream) ? 0 : streamSeconds(*stream));
    return longest;
}

/// Returns whether the headers give everything, so that no packet need be read.
bool isComplete(const AVFormatContext& context) {
    if ((context.ctx_flags & AVFMTCTX_NOHEADER) != 0 || context.nb_streams == 0 ||
        containerSeconds(context) <= 0)
        return false;
    const auto streams = streamsOf(context);
    return std::all_of(streams.begin(), streams.end(), [](const AVStream* stream) {
        const AVCodecParameters& codec = *stream->codecpar;
        if (isAttachedPicture(*stream))
            return true;
        if (codec.codec_type == AVMEDIA_TYPE_VIDEO)
            return codec.width > 0 && codec.height > 0;
        if (codec.codec_type == AVMEDIA_TYPE_AUDIO)
            return codec.sample_rate > 0 && codec.ch_layout.nb_channels > 0;
        return true;
    });
}

const char* mediaTypeCode(AVMediaType type) {
    switch (type) {
    case AVMEDIA_TYPE_VIDEO:
        return "vide";
    case AVMEDIA_TYPE_AUDIO:
        return "soun";
    case AVMEDIA_TYPE_SUBTITLE:
        return "sbtl";
    default:
        return "meta";
    }
}

/// Returns the display matrix, stored as 16.16 fixed point, its third column as 2.30.
std::array<double, 9> displayMatrix(const AVStream& stream) {
    std::array<double, 9> matrix{1, 0, 0, 0, 1, 0, 0, 0, 1};
    const auto bytes = sideDataOf(stream, AV_PKT_DATA_DISPLAYMATRIX);
    std::array<std::int32_t, 9> fixed{};
    if (bytes.size() < sizeof fixed)
        return matrix;
    std::memcpy(fixed.data(), bytes.data(), sizeof fixed);
    for (std::size_t i = 0; i < fixed.size(); ++i)
        matrix[i] = fixed[i] / (i % 3 == 2 ? 1073741824.0 : 65536.0);
    return matrix;
}

/// Returns bits a second: of the codec, else what Matroska writers state in the statistics tag.
double streamBitRate(const AVStream& stream) {
    if (stream.codecpar->bit_rate > 0)
        return static_cast<double>(stream.codecpar->bit_rate);
    const AVDictionaryEntry* stated = av_dict_get(stream.metadata, "BPS", nullptr, 0);
    return stated != nullptr ? std::max(0.0, QByteArray(stated->value).toDouble()) : 0;
}

AVAssetTrack trackOf(const AVStream& stream) {
    const AVCodecParameters& codec = *stream.codecpar;
    AVAssetTrack track;
    track.trackID = static_cast<std::uint32_t>(stream.index) + 1;
    track.mediaType = QString::fromLatin1(mediaTypeCode(codec.codec_type));
    track.codec = QString::fromLatin1(avcodec_get_name(codec.codec_id));
    track.durationSeconds = streamSeconds(stream);
    track.isAttachedPicture = isAttachedPicture(stream);
    track.bitRate = streamBitRate(stream);
    if (codec.codec_type == AVMEDIA_TYPE_VIDEO) {
        track.naturalSize = QSize(std::max(codec.width, 0), std::max(codec.height, 0));
        track.preferredTransform = displayMatrix(stream);
        if (const double aspect = seconds(codec.sample_aspect_ratio); aspect > 0)
            track.pixelAspect = aspect;
        track.nominalFrameRate = seconds(stream.avg_frame_rate);
        if (track.nominalFrameRate <= 0)
            track.nominalFrameRate = seconds(stream.r_frame_rate);
    }
    if (codec.codec_type == AVMEDIA_TYPE_AUDIO) {
        track.sampleRate = std::max(codec.sample_rate, 0);
        track.channels = std::max(codec.ch_layout.nb_channels, 0);
    }
    return track;
}

void addTracks(const AVFormatContext& context, std::uint64_t fileBytes, MediaFacts& facts) {
    const AVAssetTrack* video = nullptr;
    const AVAssetTrack* audio = nullptr;
    facts.tracks.reserve(streamsOf(context).size()); // the pointers below stay valid
    for (const AVStream* stream : streamsOf(context)) {
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_ATTACHMENT)
            continue;
        AVAssetTrack& track = facts.tracks.emplace_back(trackOf(*stream));
        const AVMediaType type = stream->codecpar->codec_type;
        if (track.durationSeconds <= 0 && !track.isAttachedPicture)
            track.durationSeconds = facts.durationSeconds;
        if (type == AVMEDIA_TYPE_VIDEO && !track.isAttachedPicture && video == nullptr)
            video = &track;
        if (type == AVMEDIA_TYPE_AUDIO && audio == nullptr)
            audio = &track;
    }
    if (video != nullptr)
        facts.pixelSize = video->naturalSize;
    if (audio == nullptr)
        return;
    facts.audioSampleRate = audio->sampleRate;
    facts.audioChannels = audio->channels;
    facts.audioBitRate = audio->bitRate;
    // Nothing but audio: the whole file is its bits.
    if (facts.audioBitRate <= 0 && video == nullptr && facts.durationSeconds > 0)
        facts.audioBitRate = static_cast<double>(fileBytes) * 8 / facts.durationSeconds;
}

/// Noise that a demuxer took for its own gives streams without any property.
bool hasAnyFact(const MediaFacts& facts) {
    return facts.durationSeconds > 0 || !facts.metadata.isEmpty() ||
           std::any_of(facts.tracks.begin(), facts.tracks.end(), [](const AVAssetTrack& track) {
               return track.sampleRate > 0 || !track.naturalSize.isEmpty();
           });
}

} // namespace

Result<MediaFacts> probeFile(FileReader& reader) {
    auto input = FileInput::open(reader, InputLimits());
    if (!input)
        return tl::unexpected(input.error());
    const AVFormatContext& context = *(*input)->context();
    MediaFacts facts;
    facts.container = Container::Other;
    if (!isComplete(context) && !(*input)->findStreamInfo())
        facts.problem = kStreamsUnreadable;
    if ((*input)->exhausted())
        facts.problem = kHeadersTooLong;
    facts.durationSeconds = containerSeconds(context);
    addTracks(context, reader.size(), facts);
    facts.metadata = mappedTags(context);
    facts.contentCreationDate = creationTime(context);
    facts.hasChapters = context.nb_chapters > 0;
    if (!hasAnyFact(facts))
        return failure(ErrorCode::InvalidData, kReadContainer, reader.path(), kNoStream);
    return facts;
}

} // namespace clipheave::platform
