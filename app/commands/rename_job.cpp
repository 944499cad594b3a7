// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/import_state.h"
#include "app/commands/surroundings.h"
#include "app/jobs/job_board.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "app/windows/main_window.h"
#include "app/windows/rename_window.h"
#include "batch/batch_rename.h"
#include "platform/foundation/paths.h"

#include <QAction>
#include <QHash>
#include <QMenu>

#include <algorithm>

namespace clipheave::app {

namespace {

QString nameOfPath(const QString& path) {
    return platform::displayPath(platform::lastPathComponent(path));
}

/// False for a file that was left alone: after a cancel, or because the whole job failed.
bool wasTried(const jobs::WriteOutcome& outcome) {
    const bool wholeJobFailed = outcome.failure && !outcome.failure->operation.isEmpty();
    return outcome.status != jobs::WriteStatus::Cancelled && !wholeJobFailed;
}

} // namespace

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
    const auto batch = std::make_shared<batch::RenameBatch>();
    batch->request = m_renameWindow->request();
    batch->request.mode =
        m_useCustomName ? batch::RenameMode::CustomText : batch::RenameMode::MetadataTags;
    batch->request.storagelocation = storagelocation();
    batch->items = selectedItems();
    batch->items.empty() ? nothingToRename() : startRename(batch);
}

void AppDelegate::startRename(const std::shared_ptr<batch::RenameBatch>& batch) {
    BoardJob job;
    job.title = tr("Rename");
    job.order = batch::renameOrder(batch);
    job.order.work = [this, rename = job.order.work](jobs::Run& run, const auto& items) {
        ReNameLocalphotowithFileThreader([&] { rename(run, items); });
    };
    job.took = [this, batch](int id, std::vector<JobArrival>& arrivals) {
        QHash<QString, QString> shownNames; // by path
        for (JobArrival& arrival : arrivals) {
            const jobs::WriteOutcome& outcome = arrival.outcome;
            if (arrival.file.state == FileState::Done && arrival.file.note.isEmpty())
                arrival.file.note = tr("was %1").arg(nameOfPath(outcome.source));
            // Deliberate: with metadata tags the list shows the new name, moved or not; with a
            // custom text it keeps showing the old one. Either way the item goes on pointing to
            // the old path.
            if (!wasTried(outcome))
                continue;
            if (batch->request.mode == batch::RenameMode::MetadataTags)
                shownNames.insert(outcome.source, batch->plan[outcome.item].newFileName);
            if (outcome.item == 0)
                m_surroundings->workspace->selectFiles({outcome.outputs.value(0, outcome.source)});
        }
        changeItems(shownNames.keys(), [&shownNames](media::IKImageItem& item) {
            item.fileName = shownNames.value(item.filePath);
        });
        showRenameProgress(id, arrivals.size());
    };
    job.ended = [this](int id, jobs::Run& run) {
        endRename(id, run);
        RenamePhotoFinishedHanderToMainThread();
        Q_EMIT renameFinished();
    };
    ++m_runningRenames;
    m_board->start(job);
}

/// Deliberate: the job ends like any other, only that it has no row.
void AppDelegate::nothingToRename() {
    const auto end = [this] {
        m_activity->addLog(tr("Rename: no file is selected"));
        RenamePhotoFinishedHanderToMainThread();
        Q_EMIT renameFinished();
    };
    QMetaObject::invokeMethod(this, end, Qt::QueuedConnection);
}

void AppDelegate::ReNameLocalphotowithFileThreader(const std::function<void()>& rename) {
    rename();
}

void AppDelegate::undoRename() {
    BoardJob job;
    job.title = tr("Undo rename");
    job.order = batch::undoOrder();
    job.took = [this](int id, std::vector<JobArrival>& arrivals) {
        QStringList restored; // where files are again
        for (JobArrival& arrival : arrivals) {
            // A file that stays although it was to get its old name back is no failure to try
            // again: another try would take back the rename before it.
            if (arrival.file.state == FileState::Failed)
                arrival.file.state = FileState::Skipped;
            else if (arrival.file.note.isEmpty())
                arrival.file.note = tr("was %1").arg(nameOfPath(arrival.outcome.source));
            restored += arrival.outcome.outputs;
        }
        restoreItemNames(restored);
        showRenameProgress(id, arrivals.size());
    };
    job.ended = [this](int id, jobs::Run& run) {
        endRename(id, run);
        Q_EMIT renameFinished();
    };
    ++m_runningRenames;
    m_board->start(job);
}

/// `taken`: the outcomes that the row does not count yet.
void AppDelegate::showRenameProgress(int job, std::size_t taken) {
    const ActivityJob* row = m_activity->job(job);
    const int done = (row ? row->finished : 0) + static_cast<int>(taken);
    RefreshRenamePhotoProcessToMainThread(
        QStringLiteral("%1/%2").arg(done).arg(row ? row->total : done));
}

void AppDelegate::RefreshRenamePhotoProcessToMainThread(const QString& progress) {
    Q_UNUSED(progress) // the activity panel counts by itself
    m_window->table()->viewport()->update();
    m_window->photoGrid()->viewport()->update();
}

void AppDelegate::endRename(int job, const jobs::Run& run) {
    --m_runningRenames;
    refreshRenameItems(); // a window that is open again plans with the names of now
    const auto outcomes = run.outcomes();
    const bool anyMoved = std::any_of(outcomes.begin(), outcomes.end(), [](const auto& outcome) {
        return outcome.status == jobs::WriteStatus::Completed;
    });
    if (const auto failure = run.failure())
        m_activity->addLog(failure->text(), {}, true, job);
    else if (!anyMoved)
        m_activity->addLog(tr("No file has got another name"), {}, false, job);
    m_activity->endJob(job);
}

/// The list shows the names that the files have again.
void AppDelegate::restoreItemNames(const QStringList& paths) {
    changeItems(paths, [](media::IKImageItem& item) {
        item.fileName = platform::lastPathComponent(item.filePath);
    });
}

} // namespace clipheave::app
