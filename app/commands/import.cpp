// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/import_state.h"
#include "app/commands/list_state.h"
#include "app/commands/surroundings.h"
#include "app/jobs/job_board.h"
#include "app/list/media_list_model.h"
#include "app/windows/main_window.h"
#include "media/media_import.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/foundation/main_thread.h"

#include <QSet>

#include <chrono>

namespace clipheave::app {

namespace {

/// The list is refreshed after every file; files that are read faster than a screen is drawn share
/// one hand-over, so that the reading does not wait for an image that nobody can see.
constexpr auto kHandOverInterval = std::chrono::milliseconds(8);

constexpr int kSummaryInterval = 100; // ms

constexpr char kPanelMessage[] = "Please select videos or auidos to import.";

/// "3 added, 1 failed"; what did not happen is left out.
QString importSummary(int added, int failed, int skipped) {
    if (added == 0 && failed == 0)
        return skipped > 0 ? AppDelegate::tr("%1 skipped").arg(skipped)
                           : AppDelegate::tr("No media file found");
    if (failed == 0 && skipped == 0)
        return added == 1 ? AppDelegate::tr("1 file added")
                          : AppDelegate::tr("%1 files added").arg(added);
    QString summary = AppDelegate::tr("%1 added").arg(added);
    if (failed > 0)
        summary += AppDelegate::tr(", %1 failed").arg(failed);
    if (skipped > 0)
        summary += AppDelegate::tr(", %1 skipped").arg(skipped);
    return summary;
}

} // namespace

bool AppDelegate::isImporting() const {
    return m_import->running > 0;
}

void AppDelegate::AddMediaFileAction() {
    ClickImportPhotosAction();
}

void AppDelegate::ClickImportPhotosAction() {
    m_surroundings->fileChooser->chooseMedia(
        m_window.get(), tr(kPanelMessage), OpenPanel::FilesAndFolders,
        [this](const QStringList& paths) { importPaths(paths); });
}

void AppDelegate::OpenComputerFoldertoImportAction() {
    m_surroundings->fileChooser->chooseMedia(
        m_window.get(), tr(kPanelMessage), OpenPanel::FilesOnly,
        [this](const QStringList& paths) { importPhotoPaths(paths); });
}

void AppDelegate::importPaths(const QStringList& paths) {
    if (paths.isEmpty())
        return;
    m_window->showMediaList();
    m_import->blocalMode = true;
    runImport(paths, false);
}

void AppDelegate::importPhotoPaths(const QStringList& paths) {
    if (paths.isEmpty())
        return;
    m_window->showPhotos();
    m_import->blocalMode = true;
    runImport(paths, true);
    platform::ignoreFailure(
        platform::NSFileManager::defaultManager().createDirectoryAtPath(storagelocation()),
        "jobs that write to the storage folder report it");
}

void AppDelegate::retryImport(const QStringList& paths, bool photos) {
    // A file that could be read only in part is in the list already: the new reading takes its
    // place.
    const QSet<QString> again(paths.begin(), paths.end());
    removeItems([&again](const media::IKImageItem& item) {
        return !item.problem.isEmpty() && again.contains(item.filePath);
    });
    runImport(paths, photos);
}

void AppDelegate::runImport(const QStringList& paths, bool photos) {
    const int job = m_activity->beginJob(photos ? tr("Import photos") : tr("Import"));
    m_board->setRetry(job,
                      [this, photos](const QStringList& failed) { retryImport(failed, photos); });
    ++m_import->running;
    platform::BackgroundJob::detach([this, paths, photos, job] {
        std::vector<media::ItemPointer> ready;
        auto lastHandOver = std::chrono::steady_clock::now();
        const auto handOver = [&] {
            platform::performOnMainThread([&] {
                for (const auto& item : ready)
                    appendNewItem(job, item);
                LoadImportedMediasonMainThread();
            });
            ready.clear();
            lastHandOver = std::chrono::steady_clock::now();
        };
        media::MediaImport import([&](const media::ItemPointer& item) {
            if (item)
                ready.push_back(item);
            if (std::chrono::steady_clock::now() - lastHandOver >= kHandOverInterval)
                handOver();
        });
        import.setStopRequested([this] { return m_stopping.load();
    });
    if (photos)
        import.importPhotos(paths);
    else
        import.importMediaItemsThreader(paths);
    handOver();
    platform::performOnMainThread([&] { finishImport(import, job); });
});
}

void AppDelegate::appendNewItem(int job, const media::ItemPointer& item) {
    m_list->items.push_back(item);
    m_list->totalBytes += item->sizeBytes;
    if (item->problem.isEmpty())
        return;
    m_activity->fileFinished(job, {item->filePath, {}, FileState::Failed, item->problem.text()});
}

void AppDelegate::LoadImportedMediasonMainThread() {
    if (m_mediaController->isSorted()) {
        m_mediaController->setContent(m_list->items); // import order again
    } else {
        for (std::size_t i = m_list->handedOver; i < m_list->items.size(); ++i)
            m_mediaController->appendItem(m_list->items[i]);
    }
    m_list->handedOver = m_list->items.size();
    // With everything selected the summary walks the whole list: not after every file.
    if (m_list->summaryAge.isValid() && m_list->summaryAge.elapsed() < kSummaryInterval &&
        m_import->running > 0)
        return;
    refreshSummary();
    m_list->summaryAge.start();
}

void AppDelegate::finishImport(const media::MediaImport& import, int job) {
    if (import.localPhotoItemArray().size() + import.skipped().size() > 0) {
        m_import->bImportLocalFolder = import.bImportLocalFolder();
        m_import->bImportLocalPath = import.bImportLocalPath();
    }
    for (const media::SkippedPath& skipped : import.skipped())
        m_activity->fileFinished(job, {skipped.path, {}, FileState::Failed, skipped.reason.text()});
    for (const media::SkippedPath& unknown : import.unknown())
        m_activity->fileFinished(job,
                                 {unknown.path, {}, FileState::Skipped, unknown.reason.text()});
    const int count = static_cast<int>(import.localPhotoItemArray().size());
    m_activity->setTotal(
        job, count + static_cast<int>(import.skipped().size() + import.unknown().size()));
    const ActivityJob* row = m_activity->job(job);
    const int failed = row ? row->failed : 0;
    // A file that was read only in part is in the list, and counts as failed.
    m_activity->endJob(job,
                       importSummary(count + static_cast<int>(import.skipped().size()) - failed,
                                     failed, static_cast<int>(import.unknown().size())));
    --m_import->running;
    refreshSummary();
    Q_EMIT importFinished();
}

void AppDelegate::PRDragOperationMediaNoteHandle(QObject* view) {
    m_import->blocalMode = true;
    media::MediaImport import;
    import.addWithoutReading(m_window->droppedPaths(view));
    for (const auto& item : import.localPhotoItemArray())
        m_list->items.push_back(item);
}

void AppDelegate::NSDragOperationMediaNoteHandle(QObject* view) {
    PRDragOperationMediaNoteHandle(view);
}

void AppDelegate::PRDragOperationImageNoteHandle(QObject* view) {
    importPhotoPaths(m_window->droppedPaths(view));
}

} // namespace clipheave::app
