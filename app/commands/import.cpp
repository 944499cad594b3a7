// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/commands/import_state.h"
#include "app/commands/importer.h"
#include "app/commands/item_list.h"
#include "app/commands/surroundings.h"
#include "app/windows/main_window.h"
#include "media/media_import.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"

namespace clipheave::app {

namespace {

constexpr int kSummaryInterval = 100; // ms

constexpr char kPanelMessage[] = "Please select videos or auidos to import.";

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
    m_importer->start(paths, false);
}

void AppDelegate::importPhotoPaths(const QStringList& paths) {
    if (paths.isEmpty())
        return;
    m_window->showPhotos();
    m_import->blocalMode = true;
    m_importer->start(paths, true);
    platform::ignoreFailure(
        platform::NSFileManager::defaultManager().createDirectoryAtPath(storagelocation()),
        "jobs that write to the storage folder report it");
}

void AppDelegate::LoadImportedMediasonMainThread() {
    m_list->handOver();
    // With everything selected the summary walks the whole list: not after every file.
    QElapsedTimer& age = m_import->summaryAge;
    if (age.isValid() && age.elapsed() < kSummaryInterval && m_import->running > 0)
        return;
    refreshSummary();
    age.start();
}

void AppDelegate::PRDragOperationMediaNoteHandle(QObject* view) {
    m_import->blocalMode = true;
    media::MediaImport import;
    import.addWithoutReading(m_window->droppedPaths(view));
    for (const auto& item : import.localPhotoItemArray())
        m_list->append(item);
}

void AppDelegate::NSDragOperationMediaNoteHandle(QObject* view) {
    PRDragOperationMediaNoteHandle(view);
}

void AppDelegate::PRDragOperationImageNoteHandle(QObject* view) {
    importPhotoPaths(m_window->droppedPaths(view));
}

} // namespace clipheave::app
