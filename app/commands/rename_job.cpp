// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/import_state.h"
#include "app/commands/surroundings.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "app/windows/main_window.h"
#include "app/windows/rename_window.h"
#include "batch/batch_rename.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/paths.h"

#include <QAction>
#include <QHash>
#include <QMenu>

#include <algorithm>
#include <chrono>
#include <utility>

namespace clipheave::app {

namespace {

/// Deliberate: progress is handed over after every file, but files that are renamed faster than a
/// screen is drawn share one hand-over; otherwise ten thousand files would take as long as ten
/// thousand images of the list.
constexpr auto kRenameHandOver = std::chrono::milliseconds(33);

QString nameOfPath(const QString& path) {
    return platform::displayPath(platform::lastPathComponent(path));
}

} // namespace

/// One rename, or the undoing of one. The plan is its thread's until the first hand-over; the rest
/// is told apart by the comments.
struct AppDelegate::RenameRun {
    // Set before the thread begins
    bool undoes = false;
    batch::RenameRequest request;
    std::vector<media::ItemPointer> items; ///< one a line of the plan; none when undoing
    std::vector<batch::RenameMove> plan;   ///< empty: still to be made
    int job = 0;
    std::atomic<bool> cancelled{false};
    // Filled by the thread, emptied on the main thread while the thread waits
    std::vector<batch::RenameOutcome> ready;
    std::size_t total = 0;
    // Main thread
    std::size_t done = 0, moved = 0;
    std::vector<bool> failed; ///< by line
    QStringList restored;     ///< where files are again
};

void AppDelegate::connectRename() {
    RenameWindow* window = m_renameWindow.get();
    connect(window, &RenameWindow::customTextChosen, this,
            &AppDelegate::ClickRenamewithCustomtextAction);
    connect(window, &RenameWindow::metadataChosen, this,
            &AppDelegate::ClickRenamewithMetadataAction);
    connect(window, &RenameWindow::keepExistingClicked, this,
            &AppDelegate::KeepExistingFileNameAction);
    connect(window, &RenameWindow::tagChosen, this, &AppDelegate::InsertPhotoTagsFileNameAction);
    connect(window, &RenameWindow::cancel, this, &AppDelegate::CloseRenameWindowAction);
    connect(window, &RenameWindow::save, this, &AppDelegate::SaveChangesRenameWindowAction);
    connect(window, &RenameWindow::activated, this, &AppDelegate::refreshRenameItems);
    connect(m_window.get(), &MainWindow::selectionChanged, this, &AppDelegate::refreshRenameItems);
    connect(m_activity.get(), &ActivityModel::retryRequested, this, &AppDelegate::retryRename);
    connect(m_activity.get(), &ActivityModel::cancelRequested, this, [this](int job) {
        if (const auto run = m_renameRuns.find(job); run != m_renameRuns.end())
            run->second->cancelled = true;
    });
    auto* menu = m_window->findChild<QMenu*>(QStringLiteral("editMenu"));
    auto* undo = menu->findChild<QAction*>(QStringLiteral("undoRename"));
    connect(menu, &QMenu::aboutToShow, undo,
            [this, undo] { undo->setEnabled(m_runningRenames == 0 && batch::canUndoRename()); });
}

void AppDelegate::SaveChangesRenameWindowAction() {
    m_renameWindow->hide();
    if (!m_import->blocalMode)
        return;
    // Deliberate: what the window asks for is read now, with the click: what is typed and selected
    // while the job runs belongs to the next one.
    auto run = std::make_shared<RenameRun>();
    run->request = m_renameWindow->request();
    run->request.mode =
        m_useCustomName ? batch::RenameMode::CustomText : batch::RenameMode::MetadataTags;
    run->request.storagelocation = storagelocation();
    run->items = selectedItems();
    startRename(run, tr("Rename"));
}

void AppDelegate::startRename(const std::shared_ptr<RenameRun>& run, const QString& title) {
    const int total = static_cast<int>(run->items.size());
    run->failed.assign(run->items.size(), false);
    if (total > 0 || run->undoes) {
        run->job = m_activity->beginJob(title, total);
        m_activity->setCanCancel(run->job, true);
        m_renameRuns[run->job] = run;
    }
    ++m_runningRenames;
    platform::BackgroundJob::detach([this, run] {
        run->undoes ? undoRenameThreader(run) : ReNameLocalphotowithFileThreader(run);
    });
}

void AppDelegate::ReNameLocalphotowithFileThreader(const std::shared_ptr<RenameRun>& run) {
    platform::Result<std::vector<batch::RenameOutcome>> result;
    if (!run->items.empty()) {
        const std::lock_guard turn(m_renameTurn);
        if (run->plan.empty())
            run->plan = batch::planRename(run->request, run->items, batch::surroundingsOnDisk());
        result = batch::runRename(run->plan, renameProgress(run));
    }
    platform::performOnMainThread([&] {
        finishRename(*run, result ? nullptr : &result.error());
        RenamePhotoFinishedHanderToMainThread();
        Q_EMIT renameFinished();
    });
}

void AppDelegate::undoRename() {
    auto run = std::make_shared<RenameRun>();
    run->undoes = true;
    startRename(run, tr("Undo rename"));
}

void AppDelegate::undoRenameThreader(const std::shared_ptr<RenameRun>& run) {
    platform::Result<std::vector<batch::RenameOutcome>> result;
    {
        const std::lock_guard turn(m_renameTurn);
        result = batch::undoLastRename(renameProgress(run));
    }
    platform::performOnMainThread([&] {
        finishRename(*run, result ? nullptr : &result.error());
        Q_EMIT renameFinished();
    });
}

batch::RenameProgress AppDelegate::renameProgress(const std::shared_ptr<RenameRun>& run) {
    batch::RenameProgress progress;
    progress.stopRequested = [this, run] { return run->cancelled || m_stopping; };
    progress.done = [this, run, last = std::chrono::steady_clock::now()](
                        const batch::RenameOutcome& outcome, std::size_t,
                        std::size_t total) mutable {
        run->ready.push_back(outcome);
        run->total = total;
        if (std::chrono::steady_clock::now() - last < kRenameHandOver)
            return;
        platform::performOnMainThread([&] { takeRenamed(*run); });
        last = std::chrono::steady_clock::now();
    };
    return progress;
}

void AppDelegate::takeRenamed(RenameRun& run) {
    if (run.undoes && run.done == 0)
        m_activity->setTotal(run.job, static_cast<int>(run.total));
    QHash<QString, QString> shownNames; // by path
    for (const batch::RenameOutcome& outcome : std::exchange(run.ready, {})) {
        const std::size_t line = run.done++; // of the plan; they come in its order
        // A file that stays although it was to get its old name back is no failure to try again:
        // another try would take back the rename before it.
        ActivityFile file{outcome.source, {outcome.target}, FileState::Done, outcome.message};
        if (!outcome.moved)
            file.state = run.undoes ? FileState::Skipped : FileState::Failed;
        else if (file.note.isEmpty())
            file.note = tr("was %1").arg(nameOfPath(outcome.source));
        m_activity->fileFinished(run.job, file);
        if (!outcome.moved && !run.undoes)
            run.failed[line] = true;
        if (outcome.moved && run.undoes)
            run.restored.append(outcome.target);
        // Deliberate: with metadata tags the list shows the new name, moved or not; with a custom
        // text it keeps showing the old one. Either way the item goes on pointing to the old path.
        if (!run.undoes && run.request.mode == batch::RenameMode::MetadataTags)
            shownNames.insert(run.items[line]->filePath, run.plan[line].newFileName);
        if (!run.undoes && line == 0)
            m_surroundings->workspace->selectFiles({outcome.target});
        run.moved += outcome.moved ? 1 : 0;
    }
    changeItems(shownNames.keys(), [&shownNames](media::IKImageItem& item) {
        item.fileName = shownNames.value(item.filePath);
    });
    RefreshRenamePhotoProcessToMainThread(QStringLiteral("%1/%2").arg(run.done).arg(run.total));
}

void AppDelegate::RefreshRenamePhotoProcessToMainThread(const QString& progress) {
    Q_UNUSED(progress) // the activity panel counts by itself
    m_window->table()->viewport()->update();
    m_window->photoGrid()->viewport()->update();
}

void AppDelegate::finishRename(RenameRun& run, const platform::Error* failure) {
    --m_runningRenames;
    takeRenamed(run); // what came after the last hand-over
    if (run.undoes)
        restoreItemNames(run);
    refreshRenameItems(); // a window that is open again plans with the names of now
    const FileState left = failure ? FileState::Failed : FileState::Cancelled;
    for (std::size_t i = run.done; i < run.items.size(); ++i) {
        m_activity->fileFinished(
            run.job, {run.items[i]->filePath, {}, left, failure ? failure->text() : QString()});
        run.failed[i] = failure != nullptr;
    }
    if (failure)
        m_activity->addLog(failure->text(), {}, true, run.job);
    else if (run.moved == 0)
        m_activity->addLog(run.items.empty() && !run.undoes ? tr("Rename: no file is selected")
                                                            : tr("No file has got another name"),
                           {}, false, run.job);
    m_activity->endJob(run.job);
    const bool canRetry = std::find(run.failed.begin(), run.failed.end(), true) != run.failed.end();
    if (!canRetry)
        m_renameRuns.erase(run.job);
}

/// The list shows the names that the files have again.
void AppDelegate::restoreItemNames(const RenameRun& run) {
    changeItems(run.restored, [](media::IKImageItem& item) {
        item.fileName = platform::lastPathComponent(item.filePath);
    });
}

/// The moves that failed once more, to the same names: a number that a file was to get stays its
/// own.
void AppDelegate::retryRename(int job) {
    const auto found = m_renameRuns.find(job);
    if (found == m_renameRuns.end())
        return;
    const RenameRun& before = *found->second;
    auto run = std::make_shared<RenameRun>();
    run->request = before.request;
    for (std::size_t i = 0; i < before.failed.size(); ++i) {
        if (!before.failed[i])
            continue;
        run->items.push_back(before.items[i]);
        run->plan.push_back(before.plan[i]);
        run->plan.back().stays = false; // that is what is to be tried
    }
    startRename(run, tr("Rename"));
}

} // namespace clipheave::app
