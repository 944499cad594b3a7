// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/export/av_asset_export_session.h"

#include "platform/foundation/guarded.h"
#include "platform/media/export/export_job.h"
#include "platform/media/export/export_queue.h"

#include <mutex>
#include <set>

namespace clipheave::platform {

namespace {

/// Sessions that wait or run, for cancelAllExports().
class LiveSessions {
public:
    static LiveSessions& shared() {
        static LiveSessions sessions;
        return sessions;
    }
    void add(const std::shared_ptr<AVAssetExportSession::State>& state) {
        const std::lock_guard lock(m_mutex);
        m_states.insert(state);
    }
    void remove(const std::shared_ptr<AVAssetExportSession::State>& state) {
        const std::lock_guard lock(m_mutex);
        m_states.erase(state);
    }
    [[nodiscard]] std::vector<std::shared_ptr<AVAssetExportSession::State>> all() {
        const std::lock_guard lock(m_mutex);
        return {m_states.begin(), m_states.end()};
    }

private:
    std::mutex m_mutex;
    std::set<std::shared_ptr<AVAssetExportSession::State>> m_states;
};

/// The list of sessions outlives the queue, whose jobs use it to their end.
ExportQueue& exportQueue() {
    LiveSessions::shared();
    return ExportQueue::shared();
}

} // namespace

AVAssetExportSession::AVAssetExportSession(AVURLAsset asset, QString presetName)
    : m_state(std::make_shared<State>()) {
    m_state->sourcePath = asset.path();
    m_state->order.emplace().asset = std::move(asset);
    m_state->order->presetName = std::move(presetName);
}

AVAssetExportSession::AVAssetExportSession(AVMutableComposition composition, QString presetName)
    : m_state(std::make_shared<State>()) {
    for (const auto& track : composition.tracks())
        for (const auto& segment : track.segments())
            if (m_state->sourcePath.isEmpty())
                m_state->sourcePath = segment.path;
    m_state->order.emplace().composition = std::move(composition);
    m_state->order->presetName = std::move(presetName);
}

std::shared_ptr<AVAssetExportSession>
AVAssetExportSession::unchangedCopy(const QString& source, const QString& target,
                                    NSFileManager::IfExists ifExists) {
    std::shared_ptr<AVAssetExportSession> session(new AVAssetExportSession);
    session->m_state->sourcePath = source;
    session->m_state->outputPath = target;
    session->m_state->ifExists = ifExists;
    return session;
}

std::shared_ptr<AVAssetExportSession>
AVAssetExportSession::rewriting(const QString& source, const QString& target, Writer writer) {
    std::shared_ptr<AVAssetExportSession> session(new AVAssetExportSession);
    session->m_state->sourcePath = source;
    session->m_state->outputPath = target;
    session->m_state->writer = std::move(writer);
    return session;
}

AVAssetExportSession::AVAssetExportSession() : m_state(std::make_shared<State>()) {
}

AVAssetExportSession::~AVAssetExportSession() = default;

void AVAssetExportSession::setOutputPath(const QString& path) {
    m_state->outputPath = path;
}
void AVAssetExportSession::setOutputFileType(const QString& type) {
    m_state->outputFileType = type;
}
void AVAssetExportSession::setMetadata(const std::optional<QList<AVMetadataItem>>& items) {
    m_state->metadata = items;
}
void AVAssetExportSession::setFieldIdentifiers(FieldIdentifiers fields) {
    m_state->fields = fields;
}
void AVAssetExportSession::setRemovesMetadata(bool removes) {
    m_state->removes = removes;
}
void AVAssetExportSession::setLeavesOutUnheldTracks(bool leavesOut) {
    m_state->leavesOut = leavesOut;
}
void AVAssetExportSession::setShouldOptimizeForNetworkUse(bool optimize) {
    if (m_state->order)
        m_state->order->moovFirst = optimize;
}
void AVAssetExportSession::setTimeRange(CMTimeRange range) {
    if (m_state->order)
        m_state->order->timeRange = range;
}
void AVAssetExportSession::setVideoComposition(AVMutableVideoComposition composition) {
    if (m_state->order)
        m_state->order->videoComposition = std::move(composition);
}
void AVAssetExportSession::setAudioMix(AVMutableAudioMix mix) {
    if (m_state->order)
        m_state->order->audioMix = std::move(mix);
}

void AVAssetExportSession::exportAsynchronouslyWithCompletionHandler(
    std::function<void()> completionHandler) {
    if (!m_state->startWaiting())
        return; // one session is one export
    if (const auto valid = m_state->validated(); !valid && !m_state->cancelled)
        m_state->finish(tl::unexpected(valid.error()));
    LiveSessions::shared().add(m_state);
    const auto job = [state = m_state, handler = std::move(completionHandler)] {
        if (state->startExporting())
            state->finish(guarded([&state] { return state->run(); }));
        if (handler)
            ignoreFailure(guarded(handler), "what the handler holds reports that it was given up");
        LiveSessions::shared().remove(state);
    };
    using Work = ExportQueue::Work;
    exportQueue().add(job, m_state->isSmallRewrite() ? Work::SmallFile : Work::Any);
}

void AVAssetExportSession::cancelExport() {
    m_state->cancel();
}

AVAssetExportSessionStatus AVAssetExportSession::status() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->status;
}

double AVAssetExportSession::progress() const {
    return m_state->progress;
}

Error AVAssetExportSession::error() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->error;
}

Notes AVAssetExportSession::notes() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->notes;
}

void AVAssetExportSession::setMaximumConcurrentExports(int count) {
    exportQueue().setMaximum(count);
}

void AVAssetExportSession::waitForAllExports() {
    exportQueue().waitForAll();
}

void AVAssetExportSession::cancelAllExports() {
    for (const auto& state : LiveSessions::shared().all())
        state->cancel();
}

} // namespace clipheave::platform
