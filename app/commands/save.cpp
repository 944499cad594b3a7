// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/import_state.h"
#include "app/commands/list_state.h"
#include "app/commands/pane_state.h"
#include "app/commands/surroundings.h"
#include "app/jobs/job_board.h"
#include "app/panes/detail_pane.h"
#include "app/windows/main_window.h"
#include "metadata/video_metadata.h"
#include "platform/foundation/log.h"
#include "platform/image/image_transcode.h"

#include <map>

namespace clipheave::app {

namespace {

metadata::Writer writerOf(AppDelegate::JobKind kind) {
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

} // namespace

/// What came out of a job that writes outputs.
struct AppDelegate::WriteTally {
    bool tellsSizes = false; ///< the job is about sizes: its summary tells them
    QStringList outputs;
    std::uint64_t bytesBefore = 0, bytesAfter = 0; ///< of what came out well
    bool oneEach = true; ///< every file that came out well became one output

    void add(const JobArrival& arrival) {
        const jobs::WriteOutcome& outcome = arrival.outcome;
        const bool isDone = outcome.status == jobs::WriteStatus::Completed;
        if (tellsSizes && isDone && arrival.bytesBefore > 0) {
            bytesBefore += arrival.bytesBefore;
            bytesAfter += arrival.bytesAfter;
        }
        outputs += outcome.outputs;
        oneEach &= !isDone || outcome.outputs.size() == 1;
    }
};

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

jobs::RunSettings AppDelegate::runSettings() const {
    return {storagelocation(), m_import->bImportLocalFolder, m_import->bImportLocalPath};
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
        request.settings = runSettings();
        // A file of the other kind than the one in the pane keeps its own texts: what its pane
        // holds is of an earlier file, or nothing.
        request.pane = showsVideo ? pane->videoPane() : media::ShowVideoViewWithItem(*item);
        if (isAudio(item->filePath))
            request.audioPane = showsAudio ? pane->audioPane()
                                           : media::ShowAudioViewWithItem(*item, item->fileArist);
    }
    return requests;
}

QStringList AppDelegate::allPaths() const {
    QStringList paths;
    for (const auto& item : m_list->items)
        paths.append(item->filePath);
    return paths;
}

void AppDelegate::startWrite(JobKind kind, const std::vector<media::ItemPointer>& items) {
    BoardJob job;
    job.title = titleOfJob(kind);
    job.order = metadata::writeOrder(writerOf(kind), writeRequests(items));
    reportWriting(job);
    m_board->start(job);
}

void AppDelegate::reportWriting(BoardJob& job, bool tellsSizes) {
    // By row: another try of the job has a tally of its own.
    const auto tallies = std::make_shared<std::map<int, WriteTally>>();
    job.took = [this, tallies, tellsSizes](int id, std::vector<JobArrival>& arrivals) {
        WriteTally& tally = (*tallies)[id];
        tally.tellsSizes = tellsSizes;
        for (JobArrival& arrival : arrivals) {
            const jobs::WriteOutcome& outcome = arrival.outcome;
            QString& note = arrival.file.note;
            if (outcome.status == jobs::WriteStatus::Failed)
                m_activity->addLog(note, outcome.source, true, id);
            if (outcome.outputs.size() == 1 && arrival.bytesAfter > 0)
                note = note.isEmpty() ? sizeText(arrival.bytesAfter)
                                      : sizeText(arrival.bytesAfter) + QStringLiteral("; ") + note;
            tally.add(arrival);
        }
    };
    job.ended = [this, tallies](int id, jobs::Run&) {
        endWriting(id, (*tallies)[id]);
        tallies->erase(id);
        Q_EMIT saveFinished();
    };
}

void AppDelegate::endWriting(int job, const WriteTally& tally) {
    const bool allWell = m_activity->job(job)->failed == 0;
    m_activity->endJob(
        job,
        tally.bytesAfter > 0 && allWell
            ? tr("%1 to %2").arg(sizeText(tally.bytesBefore), sizeText(tally.bytesAfter))
            : QString(),
        tally.oneEach ? tr("%1 written") : QString());
    if (!tally.outputs.isEmpty())
        m_surroundings->workspace->selectFiles(tally.outputs);
}

/// A line about a file that is being written belongs to that job.
void AppDelegate::takeLogLine(const platform::LogLine& line) {
    m_activity->addLog(line.text, line.path, line.level >= platform::LogLevel::Warning,
                       m_board->jobOfFile(line.path));
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
