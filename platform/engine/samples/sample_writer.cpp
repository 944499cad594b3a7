// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/samples/sample_writer.h"

#include "platform/engine/messages.h"
#include "platform/engine/samples/audio_sample.h"
#include "platform/engine/samples/video_sample.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

constexpr int kLargestSide = 8192;
constexpr double kLongestSeconds = 3600;

bool isPlausible(const SampleMedia& sample) {
    const QSize size = sample.size;
    const bool video =
        sample.videoCodec.isEmpty() ||
        (size.width() >= 16 && size.width() <= kLargestSide && size.height() >= 16 &&
         size.height() <= kLargestSide && sample.frameRate >= 1 && sample.frameRate <= 240);
    const bool audio =
        sample.audioCodec.isEmpty() || (sample.sampleRate >= 8000 && sample.sampleRate <= 192'000 &&
                                        sample.channels >= 1 && sample.channels <= 8);
    const bool some = !sample.videoCodec.isEmpty() || !sample.audioCodec.isEmpty();
    return some && video && audio && sample.seconds > 0 && sample.seconds <= kLongestSeconds;
}

Result<std::vector<std::unique_ptr<SampleStream>>> makeStreams(FileOutput& output,
                                                               const SampleMedia& sample) {
    std::vector<std::unique_ptr<SampleStream>> streams;
    if (!sample.videoCodec.isEmpty()) {
        auto video = makeVideoSample(output, sample);
        if (!video)
            return tl::unexpected(video.error());
        streams.push_back(std::move(*video));
    }
    if (!sample.audioCodec.isEmpty()) {
        auto audio = makeAudioSample(output, sample);
        if (!audio)
            return tl::unexpected(audio.error());
        streams.push_back(std::move(*audio));
    }
    return streams;
}

/// The stream that lies furthest behind; null when all are done.
SampleStream* nextStream(const std::vector<std::unique_ptr<SampleStream>>& streams) {
    SampleStream* next = nullptr;
    for (const auto& stream : streams)
        if (!stream->isDone() && (next == nullptr || stream->position() < next->position()))
            next = stream.get();
    return next;
}

} // namespace

Result<void> writeSampleFile(const SampleMedia& sample, const QString& target) {
    if (!isPlausible(sample))
        return failure(ErrorCode::InvalidArgument, kWriteSample, target);
    auto output = FileOutput::create(sample.container.toLatin1().constData(), target);
    if (!output)
        return tl::unexpected(output.error());
    auto streams = makeStreams(**output, sample);
    if (!streams)
        return tl::unexpected(streams.error());
    Dictionary options;
    if (sample.moovFirst)
        options.set("movflags", "+faststart");
    if (sample.container ==
        QLatin1String("mp3")) // no empty tag before the audio; every reader knows 2.3
        options.set("id3v2_version", sample.tags.isEmpty() ? "0" : "3");
    for (auto tag = sample.tags.cbegin(); tag != sample.tags.cend(); ++tag)
        av_dict_set(&(*output)->context()->metadata, tag.key().toUtf8().constData(),
                    tag.value().toUtf8().constData(), 0);
    if (auto begun = (*output)->writeHeader(options); !begun)
        return begun;
    while (SampleStream* stream = nextStream(*streams))
        if (const auto stepped = stream->step(); !stepped)
            return tl::unexpected(stepped.error());
    return (*output)->finish();
}

} // namespace clipheave::platform
