// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/panes/detail_pane.h"
#include "app/windows/main_window.h"
#include "metadata/video_metadata.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/main_thread.h"
#include "platform/image/picture_transcode.h"
#include "platform/workspace/ns_workspace.h"

#include <QTimer>

namespace clipheave::app {

namespace {

constexpr int kProgressInterval = 100; // ms

FileState stateOf(metadata::WriteStatus status) {
    switch (status) {
    case metadata::WriteStatus::Completed:
        return FileState::Done;
    case metadata::WriteStatus::Failed:
        return FileState::Failed;
    case metadata::WriteStatus::Cancelled:
        return FileState::Cancelled;
    case metadata::WriteStatus::Skipped:
        break;
    }
    return FileState::Skipped;
}

} // namespace

/// One press of Save: what is still under way and what came out.
struct AppDelegate::SaveRun {
    int job = 0;
    int left = 0;
    QStringList outputs;
    std::unique_ptr<metadata::VideoMetadata> writer;
};

void AppDelegate::SaveMeidaFileChangesAction() {
    const auto items = selectedItems();
    if (items.empty())
        return showNoSelectionAlert();
    startSave(items);
}

void AppDelegate::retryJob(int id) {
    const ActivityJob* job = m_activity->job(id);
    if (!job)
        return;
    std::vector<media::ItemPointer> again;
    for (const ActivityFile& file : job->files)
        for (const auto& item : m_items)
            if (file.state == FileState::Failed && item->filePath == file.source) {
                again.push_back(item);
                break;
            }
    if (!again.empty())
        startSave(again);
}

void AppDelegate::startSave(const std::vector<media::ItemPointer>& items) {
    auto run = std::make_shared<SaveRun>();
    run->job = m_activity->beginJob(tr("Save changes"), static_cast<int>(items.size()));
    run->left = static_cast<int>(items.size());
    m_activity->setCanCancel(run->job, true);
    ++m_runningSaves;
    // Outcomes arrive on export threads; the run's own state lives on this one.
    run->writer = std::make_unique<metadata::VideoMetadata>(
        [this, run](const metadata::WriteOutcome& outcome) {
            QMetaObject::invokeMethod(
                this, [this, run, outcome] { takeOutcome(*run, outcome); }, Qt::QueuedConnection);
        });
    std::vector<metadata::SaveRequest> requests;
    for (const auto& item : items)
        requests.push_back(
            {item, m_window->detailPane()->videoPane(), m_preferences.storagelocation});
    watchProgress(run);
    // Reading headers and copying files unchanged take their time: not on this thread.
    platform::BackgroundJob::detach([run, requests = std::move(requests)] {
        for (const metadata::SaveRequest& request : requests)
            run->writer->SaveMeidaFileChangesAction(request);
    });
}

void AppDelegate::watchProgress(const std::shared_ptr<SaveRun>& run) {
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this, timer, run] {
        if (run->left == 0)
            timer->deleteLater();
        else
            m_activity->setProgress(run->job, run->writer->runningProgress());
    });
    timer->start(kProgressInterval);
}

void AppDelegate::takeOutcome(SaveRun& run, const metadata::WriteOutcome& outcome) {
    ActivityFile file{outcome.source, outcome.outputs, stateOf(outcome.status), outcome.message};
    if (file.note.isEmpty() && !outcome.outputs.isEmpty())
        if (const auto attributes =
                platform::NSFileManager::defaultManager().attributesOfItemAtPath(
                    outcome.outputs.first()))
            file.note = sizeText(attributes->NSFileSize);
    m_activity->fileFinished(run.job, file);
    if (outcome.status == metadata::WriteStatus::Failed)
        m_activity->addLog(outcome.message, outcome.source, true, run.job);
    run.outputs += outcome.outputs;
    if (--run.left > 0)
        return;
    m_activity->endJob(run.job);
    if (!run.outputs.isEmpty())
        platform::NSWorkspace::sharedWorkspace().selectFiles(run.outputs);
    --m_runningSaves;
    Q_EMIT saveFinished();
}

void AppDelegate::takeArtwork(const QString& path) {
    const auto picture = platform::pictureForArtwork(path);
    if (!picture) {
        m_activity->addLog(picture.error().text(), path, true);
        return;
    }
    if (m_shownItem) {
        m_shownItem->fileImagePath = path;
        m_window->detailPane()->setArtwork(*picture);
    }
}

void AppDelegate::NSDragOperationImageViewNoteHandle(QObject* view) {
    const QStringList paths = m_window->droppedPaths(view);
    if (!paths.isEmpty())
        takeArtwork(paths.first());
}

} // namespace clipheave::app
