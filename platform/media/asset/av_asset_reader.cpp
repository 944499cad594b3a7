// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/av_asset_reader.h"

#include "platform/foundation/file_reader.h"
#include "platform/media/asset/av_composition.h"
#include "platform/media/messages.h"
#include "platform/media/model/media_engine.h"
#include "platform/media/model/messages.h"

#include <algorithm>
#include <mutex>

namespace clipheave::platform {

namespace {

tl::unexpected<Error> readerError(ErrorCode code, const AVURLAsset& asset, MessageCode why) {
    return failure(code, kReadVideo, asset.path(), why);
}

} // namespace

struct AVAssetReaderTrackOutput::State {
    mutable std::mutex mutex;
    AVAssetReaderStatus status = AVAssetReaderStatus::Unknown;
    Error error;
    Notes notes;
    std::shared_ptr<FrameReader> frames; ///< while it reads

    [[nodiscard]] std::optional<CMSampleBuffer> next();
    void cancel();
};

std::optional<CMSampleBuffer> AVAssetReaderTrackOutput::State::next() {
    std::shared_ptr<FrameReader> reading;
    {
        const std::lock_guard lock(mutex);
        reading = frames;
    }
    if (reading == nullptr)
        return std::nullopt;
    auto sample = reading->next(); // waits; a cancelling thread must get in
    const std::lock_guard lock(mutex);
    if (status != AVAssetReaderStatus::Reading)
        return std::nullopt;
    if (sample && sample->imageBuffer != nullptr)
        return std::move(*sample);
    notes = reading->notes();
    frames.reset();
    status = sample ? AVAssetReaderStatus::Completed : AVAssetReaderStatus::Failed;
    if (!sample)
        error = sample.error();
    return std::nullopt;
}

void AVAssetReaderTrackOutput::State::cancel() {
    std::shared_ptr<FrameReader> stopped; // ends outside the lock
    const std::lock_guard lock(mutex);
    if (status != AVAssetReaderStatus::Unknown && status != AVAssetReaderStatus::Reading)
        return;
    status = AVAssetReaderStatus::Cancelled;
    if (frames != nullptr) {
        notes = frames->notes();
        frames->cancel();
    }
    stopped = std::move(frames);
}

std::shared_ptr<AVAssetReaderTrackOutput>
AVAssetReaderTrackOutput::assetReaderTrackOutputWithTrack(AVAssetTrack track,
                                                          AVVideoSettings outputSettings) {
    std::shared_ptr<AVAssetReaderTrackOutput> output(new AVAssetReaderTrackOutput);
    output->m_track = std::move(track);
    output->m_settings = std::move(outputSettings);
    return output;
}

std::optional<CMSampleBuffer> AVAssetReaderTrackOutput::copyNextSampleBuffer() {
    return m_state != nullptr ? m_state->next() : std::nullopt;
}

AVAssetReader::AVAssetReader(AVURLAsset asset)
    : m_asset(std::move(asset)), m_state(std::make_shared<AVAssetReaderTrackOutput::State>()) {
}

AVAssetReader::~AVAssetReader() {
    m_state->cancel();
}

Result<std::unique_ptr<AVAssetReader>> AVAssetReader::initWithAsset(AVURLAsset asset) {
    if (const auto there = FileReader::open(asset.path()); !there)
        return tl::unexpected(there.error());
    return std::unique_ptr<AVAssetReader>(new AVAssetReader(std::move(asset)));
}

Result<void> AVAssetReader::addOutput(const std::shared_ptr<AVAssetReaderTrackOutput>& output) {
    const auto refused = [&](MessageCode why) {
        return readerError(ErrorCode::InvalidArgument, m_asset, why);
    };
    if (status() != AVAssetReaderStatus::Unknown)
        return refused(kOutputAfterStart);
    if (output == nullptr || m_hasOutput || output->m_state != nullptr)
        return refused(kOneOutput);
    const auto format =
        output->m_settings.value(QString::fromUtf16(kCVPixelBufferPixelFormatTypeKey));
    if (format.toUInt() != kCVPixelFormatType_32BGRA)
        return readerError(ErrorCode::NotSupported, m_asset, kBgraOnly);
    const auto videos = tracksWithMediaType(m_asset, QString::fromUtf16(AVMediaTypeVideo));
    const auto video = std::find_if(videos.begin(), videos.end(), [&](const AVAssetTrack& track) {
        return track.trackID == output->m_track.trackID;
    });
    if (video == videos.end() || output->m_track.mediaType != video->mediaType)
        return refused(kNotAVideoTrack);
    m_stream = static_cast<int>(video - videos.begin());
    m_hasOutput = true;
    output->m_state = m_state;
    return {};
}

bool AVAssetReader::startReading() {
    const auto refuse = [this](const Error& error) {
        const std::lock_guard lock(m_state->mutex);
        m_state->error = error;
        return false;
    };
    if (status() != AVAssetReaderStatus::Unknown)
        return refuse(readerError(ErrorCode::InvalidArgument, m_asset, kStartedBefore).value());
    if (!m_hasOutput)
        return refuse(readerError(ErrorCode::InvalidArgument, m_asset, kNoOutput).value());
    auto opened = mediaEngine().and_then([this](MediaEngine* engine) {
        return engine->openFrameReader(m_asset.path(), m_stream, {});
    });
    const std::lock_guard lock(m_state->mutex);
    if (m_state->status != AVAssetReaderStatus::Unknown) // cancelled meanwhile
        return false;
    m_state->status = opened ? AVAssetReaderStatus::Reading : AVAssetReaderStatus::Failed;
    if (opened)
        m_state->frames = std::move(*opened);
    else
        m_state->error = opened.error();
    return opened.has_value();
}

AVAssetReaderStatus AVAssetReader::status() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->status;
}

Error AVAssetReader::error() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->error;
}

void AVAssetReader::cancelReading() {
    m_state->cancel();
}

Notes AVAssetReader::notes() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->frames != nullptr ? m_state->frames->notes() : m_state->notes;
}

} // namespace clipheave::platform
