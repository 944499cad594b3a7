// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/import_state.h"
#include "app/commands/item_list.h"
#include "app/commands/pane_state.h"
#include "app/commands/surroundings.h"
#include "app/commands/write_report.h"
#include "app/jobs/job_board.h"
#include "app/panes/detail_pane.h"
#include "app/windows/main_window.h"
#include "metadata/video_metadata.h"
#include "platform/image/image_transcode.h"

namespace clipheave::app {

namespace {

/// `shown`: the item of the pane, null for none. A file of the other kind than that one keeps its
/// own texts: what its pane holds is of an earlier file, or nothing.
jobs::WriteRequest writeRequest(const media::ItemPointer& item, const media::ItemPointer& shown,
                                const DetailPane& pane) {
    const bool showsAudio = shown && AppDelegate::isAudio(shown->filePath);
    jobs::WriteRequest request;
    request.item = item;
    request.pane = shown && !showsAudio ? pane.videoPane() : media::ShowVideoViewWithItem(*item);
    if (AppDelegate::isAudio(item->filePath))
        request.audioPane =
            showsAudio ? pane.audioPane() : media::ShowAudioViewWithItem(*item, item->fileArist);
    return request;
}

} // namespace

void AppDelegate::SaveMeidaFileChangesAction() {
    writeItems(&metadata::VideoMetadata::SaveMeidaFileChangesAction, tr("Save changes"),
               selectedItems());
}

void AppDelegate::RemoveAllMediaFileAction() {
    writeItems(&metadata::VideoMetadata::RemoveMediaFileAction, tr("Remove metadata"),
               m_list->items());
}

void AppDelegate::RemoveSelectedMediaFileAction() {
    writeItems(&metadata::VideoMetadata::RemoveMediaFileAction, tr("Remove metadata"),
               selectedItems());
}

void AppDelegate::CopyvideoTitletoFileNameAction() {
    writeItems(&metadata::VideoMetadata::CopyvideoTitletoFileNameAction,
               tr("Copy title to file name"), selectedItems());
}

void AppDelegate::CopyvideofilenametoTitleAction() {
    writeItems(&metadata::VideoMetadata::CopyvideofilenametoTitleAction,
               tr("Copy file name to title"), selectedItems());
}

void AppDelegate::writeItems(metadata::Writer writer, const QString& title,
                             const std::vector<media::ItemPointer>& items) {
    if (items.empty())
        return showNoSelectionAlert();
    std::vector<jobs::WriteRequest> requests;
    for (const auto& item : items) {
        requests.push_back(writeRequest(item, m_pane->shownItem, *m_window->detailPane()));
        requests.back().settings = runSettings();
    }
    BoardJob job;
    job.title = title;
    job.order = metadata::writeOrder(writer, std::move(requests));
    WriteReport{*m_activity, *m_surroundings->workspace, [this] { Q_EMIT saveFinished(); }}
        .attachTo(job);
    m_board->start(job);
}

jobs::RunSettings AppDelegate::runSettings() const {
    return {storagelocation(), m_import->bImportLocalFolder, m_import->bImportLocalPath};
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
