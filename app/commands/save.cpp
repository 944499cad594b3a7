// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/import_state.h"
#include "app/commands/list_state.h"
#include "app/commands/pane_state.h"
#include "app/commands/surroundings.h"
#include "app/commands/write_run.h"
#include "app/panes/detail_pane.h"
#include "app/windows/main_window.h"
#include "metadata/video_metadata.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/main_thread.h"
#include "platform/image/image_transcode.h"

#include <QSet>
#include <QTimer>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kProgressInterval = 100; // ms

FileState stateOf(jobs::WriteStatus status) {
    switch (status) {
    case jobs::WriteStatus::Completed:
        return FileState::Done;
    case jobs::WriteStatus::Failed:
        return FileState::Failed;
    case jobs::WriteStatus::Cancelled:
        return FileState::Cancelled;
    case jobs::WriteStatus::Skipped:
        break;
    }
    return FileState::Skipped;
}

/// The operation of a writing command.
using Writer = void (metadata::VideoMetadata::*)(const jobs::WriteRequest&);

Writer writerOf(AppDelegate::JobKind kind) {
    switch (kind) {
    case AppDelegate::JobKind::RemoveMetadata:
        return &metadata::VideoMetadata::RemoveMediaFileAction;
    case AppDelegate::JobKind::TitleToName:
        return &metadata::VideoMetadata::CopyvideoTitletoFileNameAction;
    case AppDelegate::JobKind::NameToTitle:
        return &metadata::VideoMetadata::CopyvideofilenametoTitleAction;
    default:
        return &metadata::VideoMetadata::SaveMeidaFileChangesAction;
    }
}

QString titleOfJob(AppDelegate::JobKind kind) {
    switch (kind) {
    case AppDelegate::JobKind::RemoveMetadata:
        return AppDelegate::tr("Remove metadata");
    case AppDelegate::JobKind::TitleToName:
        return AppDelegate::tr("Copy title to file name");
    case AppDelegate::JobKind::NameToTitle:
        return AppDelegate::tr("Copy file name to title");
    default:
        return AppDelegate::tr("Save changes");
    }
}

std::vector<RunningFile> runningFiles(const jobs::RunProgress& progress) {
    std::vector<RunningFile> files;
    for (const auto& [source, done, count] : progress.exports)
        files.push_back({source, done, count});
    return files;
}

} // namespace

void AppDelegate::SaveMeidaFileChangesAction() {
    writeItems(JobKind::Save, selectedItems());
}

void AppDelegate::RemoveAllMediaFileAction() {
    writeItems(JobKind::RemoveMetadata, m_list->items);
}

void AppDelegate::RemoveSelectedMediaFileAction() {
    writeItems(JobKind::RemoveMetadata, selectedItems());
}

void AppDelegate::CopyvideoTitletoFileNameAction() {
    writeItems(JobKind::TitleToName, selectedItems());
}

void AppDelegate::CopyvideofilenametoTitleAction() {
    writeItems(JobKind::NameToTitle, selectedItems());
}

void AppDelegate::writeItems(JobKind kind, const std::vector<media::ItemPointer>& items) {
    if (items.empty())
        return showNoSelectionAlert();
    startWrite(kind, items);
}

void AppDelegate::retryJob(int id) {
    const ActivityJob* job = m_activity->job(id);
    const auto again = m_retries.find(id);
    if (!job || again == m_retries.end())
        return;
    QStringList failed;
    for (const ActivityFile& file : job->files)
        if (file.state == FileState::Failed)
            failed.append(file.source);
    again->second(failed);
}

void AppDelegate::cancelJob(int id) {
    if (const auto run = m_writeRuns.find(id); run != m_writeRuns.end())
        run->second->cancel();
}

std::vector<jobs::WriteRequest>
AppDelegate::writeRequests(const std::vector<media::ItemPointer>& items) const {
    const DetailPane* pane = m_window->detailPane();
    const bool showsAudio = m_pane->shownItem && isAudio(m_pane->shownItem->filePath);
    const bool showsVideo = m_pane->shownItem && !showsAudio;
    std::vector<jobs::WriteRequest> requests;
    for (const auto& item : items) {
        jobs::WriteRequest& request = requests.emplace_back();
        request.item = item;
        request.storagelocation = storagelocation();
        request.bImportLocalFolder = m_import->bImportLocalFolder;
        request.bImportLocalPath = m_import->bImportLocalPath;
        // A file of the other kind than the one in the pane keeps its own texts: what its pane
        // holds is of an earlier file, or nothing.
        request.pane = showsVideo ? pane->videoPane() : media::ShowVideoViewWithItem(*item);
        if (isAudio(item->filePath))
            request.audioPane = showsAudio ? pane->audioPane()
                                           : media::ShowAudioViewWithItem(*item, item->fileArist);
    }
    return requests;
}

std::shared_ptr<AppDelegate::WriteRun>
AppDelegate::beginRun(const QString& title, const std::vector<media::ItemPointer>& items) {
    auto run = std::make_shared<WriteRun>();
    run->job = m_activity->beginJob(title, static_cast<int>(items.size()));
    run->left = static_cast<int>(items.size());
    for (const auto& item : items)
        run->sources.insert(item->filePath);
    m_writeRuns[run->job] = run;
    m_activity->setCanCancel(run->job, true);
    watchProgress(run);
    return run;
}

/// Outcomes arrive on export threads, where the files are looked at; the run's own state lives on
/// the main thread.
jobs::OutcomeHandler AppDelegate::outcomesTo(const std::shared_ptr<WriteRun>& run) {
    return [this, run = run.get()](const jobs::WriteOutcome& outcome) {
        QMetaObject::invokeMethod(
            this,
            [this, run, outcome, sizes = sizesOf(outcome)] { takeOutcome(*run, outcome, sizes); },
            Qt::QueuedConnection);
    };
}

QStringList AppDelegate::allPaths() const {
    QStringList paths;
    for (const auto& item : m_list->items)
        paths.append(item->filePath);
    return paths;
}

void AppDelegate::startWrite(JobKind kind, const std::vector<media::ItemPointer>& items) {
    const auto run = beginRun(titleOfJob(kind), items);
    m_retries[run->job] = [this, kind](const QStringList& failed) {
        if (const auto again = itemsAt(failed); !again.empty())
            startWrite(kind, again);
    };
    auto writer = std::make_shared<metadata::VideoMetadata>(outcomesTo(run));
    run->progress = [writer] { return writer->runningProgress(); };
    run->cancel = [writer] { writer->cancel(); };
    // Looking at files, reading headers and copying take their time: not on this thread.
    platform::BackgroundJob::detach(
        [writer, kind, sources = allPaths(), requests = writeRequests(items)] {
            writer->protectSources(sources);
            for (const jobs::WriteRequest& request : requests)
                (writer.get()->*writerOf(kind))(request);
        });
}

void AppDelegate::watchProgress(const std::shared_ptr<WriteRun>& run) {
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this, timer, run] {
        if (run->left == 0)
            timer->deleteLater();
        else
            m_activity->setRunning(run->job, runningFiles(run->progress()));
    });
    timer->start(kProgressInterval);
}

/// A line about a file that is being written belongs to that job.
void AppDelegate::takeLogLine(const platform::LogLine& line) {
    const auto run =
        std::find_if(m_writeRuns.begin(), m_writeRuns.end(), [&line](const auto& entry) {
            return entry.second->sources.contains(line.path);
        });
    m_activity->addLog(line.text, line.path, line.level >= platform::LogLevel::Warning,
                       run != m_writeRuns.end() ? run->first : 0);
}

AppDelegate::FileSizes AppDelegate::sizesOf(const jobs::WriteOutcome& outcome) {
    if (outcome.outputs.isEmpty())
        return {};
    const auto& files = platform::NSFileManager::defaultManager();
    const auto before = files.attributesOfItemAtPath(outcome.source);
    const auto after = files.attributesOfItemAtPath(outcome.outputs.first());
    return {before ? before->NSFileSize : 0, after ? after->NSFileSize : 0};
}

void AppDelegate::takeOutcome(WriteRun& run, const jobs::WriteOutcome& outcome,
                              const FileSizes& sizes) {
    ActivityFile file{outcome.source, outcome.outputs, stateOf(outcome.status), outcome.message};
    if (outcome.outputs.size() == 1 && sizes.after > 0)
        file.note = sizeText(sizes.after) +
                    (file.note.isEmpty() ? QString() : QStringLiteral("; ") + file.note);
    if (run.tellsSizes && outcome.status == jobs::WriteStatus::Completed && sizes.before > 0) {
        run.sizes.before += sizes.before;
        run.sizes.after += sizes.after;
    }
    m_activity->fileFinished(run.job, file);
    if (outcome.status == jobs::WriteStatus::Failed)
        m_activity->addLog(outcome.message, outcome.source, true, run.job);
    run.outputs += outcome.outputs;
    run.oneEach &= file.state != FileState::Done || outcome.outputs.size() == 1;
    if (--run.left > 0)
        return;
    m_activity->endJob(
        run.job,
        run.sizes.after > 0 && m_activity->job(run.job)->failed == 0
            ? tr("%1 to %2").arg(sizeText(run.sizes.before), sizeText(run.sizes.after))
            : QString(),
        run.oneEach ? tr("%1 written") : QString());
    if (!run.outputs.isEmpty())
        m_surroundings->workspace->selectFiles(run.outputs);
    m_writeRuns.erase(run.job); // the last use of the run
    Q_EMIT saveFinished();
}

void AppDelegate::takeArtwork(const QString& path) {
    const auto image = platform::imageForArtwork(path);
    if (!image) {
        m_activity->addLog(image.error().text(), path, true);
        return;
    }
    if (m_pane->shownItem) {
        changeItems({m_pane->shownItem->filePath},
                    [&path](media::IKImageItem& item) { item.fileImagePath = path; });
        m_window->detailPane()->setArtwork(*image);
    }
}

void AppDelegate::NSDragOperationImageViewNoteHandle(QObject* view) {
    const QStringList paths = m_window->droppedPaths(view);
    if (!paths.isEmpty())
        takeArtwork(paths.first());
}

} // namespace clipheave::app
