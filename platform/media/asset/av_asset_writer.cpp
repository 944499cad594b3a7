// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/av_asset_writer.h"

#include "platform/foundation/atomic_file.h"
#include "platform/foundation/paths.h"
#include "platform/media/asset/av_composition.h"
#include "platform/media/asset/av_file_type.h"
#include "platform/media/asset/media_engine_loader.h"
#include "platform/media/messages.h"
#include "platform/media/model/media_engine.h"
#include "platform/media/model/messages.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace clipheave::platform {

namespace {

std::optional<ExportContainer> writerContainer(const QString& type) {
    switch (outputContainerOf(type).value_or(OutputContainer::M4A)) {
    case OutputContainer::QuickTimeMovie:
        return ExportContainer::QuickTimeMovie;
    case OutputContainer::Mp4:
        return ExportContainer::Mp4;
    case OutputContainer::M4V:
        return ExportContainer::M4V;
    case OutputContainer::M4A:
        break; // holds no video
    }
    return std::nullopt;
}

} // namespace

/// What writer and input share. The mutex guards all of it.
struct AVAssetWriterInput::State {
    mutable std::mutex mutex;
    AVAssetWriterStatus status = AVAssetWriterStatus::Unknown;
    Error error;
    QString target;
    VideoWriterSettings settings;
    std::optional<CMTime> sessionStart;
    bool isMarkedFinished = false, isFinishing = false;
    std::shared_ptr<VideoWriter> video; ///< while it writes
    /// The video grows under a hidden name; the file is removed with this object.
    std::optional<AtomicFile> file;
    std::vector<std::function<void()>> handlers;

    // With the mutex held.
    void refuse(ErrorCode code, MessageCode why);
    void end(AVAssetWriterStatus final, const Error& reason);
    void noticeFailure();
    [[nodiscard]] bool start();
    [[nodiscard]] bool append(const CMSampleBuffer& sample);

    void finish(); ///< on a thread of its own
};

/// Records why nothing was begun; the status stays.
void AVAssetWriterInput::State::refuse(ErrorCode code, MessageCode why) {
    error = {code, kWriteVideo, target, why};
}

/// Stops the threads before the file goes.
void AVAssetWriterInput::State::end(AVAssetWriterStatus final, const Error& reason) {
    video.reset();
    file.reset();
    status = final;
    error = reason;
    if (final != AVAssetWriterStatus::Failed)
        return;
    if (error.path.isEmpty() || lastPathComponent(error.path).startsWith(u".clipheave-"))
        error.path = target;
}

void AVAssetWriterInput::State::noticeFailure() {
    if (status != AVAssetWriterStatus::Writing || isFinishing)
        return;
    if (const auto failed = video->failure())
        end(AVAssetWriterStatus::Failed, *failed);
}

bool AVAssetWriterInput::State::start() {
    auto created = AtomicFile::create(target);
    if (!created) {
        end(AVAssetWriterStatus::Failed, created.error());
        return false;
    }
    file = std::move(*created);
    if (!settings.headerDatesOf.isEmpty())
        file->takePermissionsOf(FileReference::ofPath(settings.headerDatesOf));
    auto begun = mediaEngine().and_then([this](MediaEngine* engine) {
        return engine->openVideoWriter(settings, file->temporaryPath(), {});
    });
    if (!begun) {
        end(AVAssetWriterStatus::Failed, begun.error());
        return false;
    }
    video = std::move(*begun);
    status = AVAssetWriterStatus::Writing;
    return true;
}

bool AVAssetWriterInput::State::append(const CMSampleBuffer& sample) {
    noticeFailure();
    if (status != AVAssetWriterStatus::Writing || isMarkedFinished || !sessionStart ||
        !video->isReady())
        return false;
    CMSampleBuffer moved = sample;
    moved.presentationTimeStamp = CMTimeSubtract(sample.presentationTimeStamp, *sessionStart);
    const auto appended = video->append(moved);
    noticeFailure();
    return appended.has_value();
}

void AVAssetWriterInput::State::finish() {
    std::shared_ptr<VideoWriter> finishing;
    {
        const std::lock_guard lock(mutex);
        finishing = video;
    }
    Result<void> done = finishing->finish();
    finishing.reset();
    if (done)
        done = file->commit(); // nobody else touches it while the video is being finished
    std::vector<std::function<void()>> waiting;
    {
        const std::lock_guard lock(mutex);
        if (done)
            end(AVAssetWriterStatus::Completed, {});
        else
            end(done.error().code == ErrorCode::Cancelled ? AVAssetWriterStatus::Cancelled
                                                          : AVAssetWriterStatus::Failed,
                done.error());
        waiting = std::move(handlers);
    }
    for (const auto& handler : waiting)
        if (handler)
            handler();
}

std::shared_ptr<AVAssetWriterInput>
AVAssetWriterInput::assetWriterInputWithMediaType(QString mediaType,
                                                  AVVideoSettings outputSettings) {
    std::shared_ptr<AVAssetWriterInput> input(new AVAssetWriterInput);
    input->m_mediaType = std::move(mediaType);
    input->m_settings = std::move(outputSettings);
    return input;
}

bool AVAssetWriterInput::isReadyForMoreMediaData() const {
    const auto state = m_state.lock();
    if (state == nullptr)
        return true;
    const std::lock_guard lock(state->mutex);
    state->noticeFailure();
    if (state->status == AVAssetWriterStatus::Unknown)
        return false;
    return state->video == nullptr || state->video->isReady();
}

bool AVAssetWriterInput::appendSampleBuffer(const CMSampleBuffer& sample) {
    const auto state = m_state.lock();
    if (state == nullptr)
        return false;
    const std::lock_guard lock(state->mutex);
    return state->append(sample);
}

void AVAssetWriterInput::markAsFinished() {
    if (const auto state = m_state.lock()) {
        const std::lock_guard lock(state->mutex);
        state->isMarkedFinished = state->status == AVAssetWriterStatus::Writing;
    }
}

Result<std::unique_ptr<AVAssetWriter>> AVAssetWriter::initWithURL(const QString& path,
                                                                  const QString& fileType) {
    const auto container = writerContainer(fileType);
    if (!container)
        return failure(ErrorCode::NotSupported, kWriteVideo, path,
                       Message(kUnknownOutputType, {fileType}));
    if (lastPathComponent(path).isEmpty())
        return failure(ErrorCode::InvalidArgument, kWriteVideo, path, kNoOutputPath);
    std::unique_ptr<AVAssetWriter> writer(new AVAssetWriter);
    writer->m_state = std::make_shared<AVAssetWriterInput::State>();
    writer->m_state->target = path;
    writer->m_state->settings.container = *container;
    return writer;
}

AVAssetWriter::~AVAssetWriter() {
    {
        const std::lock_guard lock(m_state->mutex);
        if (m_state->status == AVAssetWriterStatus::Writing && !m_state->isFinishing)
            m_state->end(AVAssetWriterStatus::Cancelled, {});
    }
    if (m_finishing.get_id() == std::this_thread::get_id())
        m_finishing.detach(); // dropped in the handler, the last thing that thread does
    else if (m_finishing.joinable())
        m_finishing.join();
}

Result<void> AVAssetWriter::addInput(const std::shared_ptr<AVAssetWriterInput>& input) {
    const auto refused = [this](ErrorCode code, MessageCode why) {
        return failure(code, kWriteVideo, m_state->target, why);
    };
    const std::lock_guard lock(m_state->mutex);
    if (m_state->status != AVAssetWriterStatus::Unknown)
        return refused(ErrorCode::InvalidArgument, kInputAfterStart);
    if (input == nullptr || m_input != nullptr || !input->m_state.expired())
        return refused(ErrorCode::InvalidArgument, kOneInput);
    const auto setting = [&](const char16_t* key) {
        return input->m_settings.value(QString::fromUtf16(key));
    };
    if (input->m_mediaType != QStringView(AVMediaTypeVideo) ||
        setting(AVVideoCodecKey).toString() != QStringView(AVVideoCodecTypeH264))
        return refused(ErrorCode::NotSupported, kH264Only);
    const QSize size(setting(AVVideoWidthKey).toInt(), setting(AVVideoHeightKey).toInt());
    if (std::min(size.width(), size.height()) < 2 ||
        std::max(size.width(), size.height()) > CVPixelBuffer::kMostSide)
        return refused(ErrorCode::InvalidArgument, kFrameSizeNotWritten);
    m_state->settings.size = size;
    m_input = input;
    input->m_state = m_state;
    return {};
}

void AVAssetWriter::setShouldOptimizeForNetworkUse(bool optimize) {
    const std::lock_guard lock(m_state->mutex);
    m_state->settings.moovFirst = optimize;
}

void AVAssetWriter::setHeaderDatesOf(const QString& path) {
    const std::lock_guard lock(m_state->mutex);
    m_state->settings.headerDatesOf = path;
}

bool AVAssetWriter::startWriting() {
    const std::lock_guard lock(m_state->mutex);
    if (m_state->status != AVAssetWriterStatus::Unknown || m_input == nullptr) {
        m_state->refuse(ErrorCode::InvalidArgument, m_input == nullptr ? kNoInput : kStartedBefore);
        return false;
    }
    m_state->settings.preferredTransform = m_input->m_transform;
    return m_state->start();
}

void AVAssetWriter::startSessionAtSourceTime(CMTime time) {
    const std::lock_guard lock(m_state->mutex);
    if (m_state->status == AVAssetWriterStatus::Writing && !m_state->sessionStart &&
        time.timescale > 0)
        m_state->sessionStart = time;
}

void AVAssetWriter::finishWritingWithCompletionHandler(std::function<void()> handler) {
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->noticeFailure();
        if (m_state->status == AVAssetWriterStatus::Unknown)
            m_state->refuse(ErrorCode::InvalidArgument, kNotStarted);
        if (m_state->status == AVAssetWriterStatus::Writing) {
            m_state->handlers.push_back(std::move(handler));
            if (std::exchange(m_state->isFinishing, true))
                return;
            m_state->isMarkedFinished = true;
            m_finishing = std::thread([state = m_state] { state->finish(); });
            return;
        }
    }
    if (handler)
        handler();
}

void AVAssetWriter::cancelWriting() {
    const std::lock_guard lock(m_state->mutex);
    if (m_state->status == AVAssetWriterStatus::Writing && m_state->isFinishing)
        m_state->video->cancel();
    else if (m_state->status == AVAssetWriterStatus::Unknown ||
             m_state->status == AVAssetWriterStatus::Writing)
        m_state->end(AVAssetWriterStatus::Cancelled, {});
}

AVAssetWriterStatus AVAssetWriter::status() const {
    const std::lock_guard lock(m_state->mutex);
    m_state->noticeFailure();
    return m_state->status;
}

Error AVAssetWriter::error() const {
    const std::lock_guard lock(m_state->mutex);
    m_state->noticeFailure();
    return m_state->error;
}

} // namespace clipheave::platform
