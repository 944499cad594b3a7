// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/import_state.h"
#include "app/commands/rename_jobs.h"
#include "app/commands/rename_state.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "app/windows/main_window.h"
#include "app/windows/rename_window.h"
#include "app/windows/template_field.h"
#include "batch/batch_rename.h"
#include "jobs/run.h"
#include "platform/foundation/paths.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QRadioButton>

namespace clipheave::app {

namespace {

QString firstTemplate() {
    return batch::RenameRequest().filenameFormatstrlab;
}

void setMetadataControlsEnabled(const RenameControls& controls, bool enabled) {
    for (QWidget* control : {static_cast<QWidget*>(controls.addTagsButton),
                             static_cast<QWidget*>(controls.tagpostionButton),
                             static_cast<QWidget*>(controls.filenameFormatstrlab),
                             static_cast<QWidget*>(controls.keepFileNameBtn),
                             static_cast<QWidget*>(controls.replaceInvaidStrBtn),
                             static_cast<QWidget*>(controls.seqNumBtn)})
        control->setEnabled(enabled);
}

void setCustomControlsEnabled(const RenameControls& controls, bool enabled) {
    controls.customNamelab->setEnabled(enabled);
    controls.checkStartNumber->setEnabled(enabled);
}

/// Deliberate: the job ends like any other but has no row.
void nothingToRename(AppDelegate& controller) {
    const auto end = [&controller] {
        controller.activity()->addLog(AppDelegate::tr("Rename: no file is selected"));
        controller.RenamePhotoFinishedHanderToMainThread();
        Q_EMIT controller.renameFinished();
    };
    QMetaObject::invokeMethod(&controller, end, Qt::QueuedConnection);
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
            [this, undo] { undo->setEnabled(m_rename->running == 0 && batch::canUndoRename()); });
    RenameJobs* jobs = m_renameJobs.get();
    connect(jobs, &RenameJobs::progressed, this,
            &AppDelegate::RefreshRenamePhotoProcessToMainThread);
    // A window that was opened again plans with the current names.
    connect(jobs, &RenameJobs::ended, this, &AppDelegate::refreshRenameItems);
    connect(jobs, &RenameJobs::renamed, this, &AppDelegate::RenamePhotoFinishedHanderToMainThread);
    connect(jobs, &RenameJobs::ended, this, &AppDelegate::renameFinished);
}

void AppDelegate::refreshRenameItems() {
    if (m_renameWindow->isVisible())
        m_renameWindow->setItems(selectedItems(), storagelocation());
}

void AppDelegate::ShowRenameWindowAction() {
    m_renameWindow->present();
    refreshRenameItems();
    ClickRenamewithCustomtextAction();
    QLineEdit* text = m_renameWindow->controls().customNamelab;
    text->setFocus(Qt::OtherFocusReason);
    text->selectAll();
}

void AppDelegate::ClickRenamewithCustomtextAction() {
    const RenameControls& controls = m_renameWindow->controls();
    setMetadataControlsEnabled(controls, false);
    controls.renameDateFormatBtn->setEnabled(false);
    controls.renameDateFormatBtn->setCurrentIndex(0);
    controls.seqNumBtn->setChecked(false);
    setCustomControlsEnabled(controls, true);
    m_rename->useCustomName = true;
    controls.customerFileNameBtn->setChecked(true); // which clears the other two
    const auto selected = selectedItems();
    controls.customNamelab->setText(
        selected.empty() ? QString() : platform::deletingPathExtension(selected.front()->fileName));
}

void AppDelegate::ClickRenamewithMetadataAction() {
    const RenameControls& controls = m_renameWindow->controls();
    setMetadataControlsEnabled(controls, true);
    setCustomControlsEnabled(controls, false);
    m_rename->useCustomName = false;
    controls.metaFileNameBtn->setChecked(true);
}

void AppDelegate::KeepExistingFileNameAction() {
    // Deliberate: the whole template is replaced, whatever was written into it.
    const RenameControls& controls = m_renameWindow->controls();
    controls.filenameFormatstrlab->setText(controls.keepFileNameBtn->isChecked() ? firstTemplate()
                                                                                 : QString());
}

void AppDelegate::InsertPhotoTagsFileNameAction() {
    const RenameControls& controls = m_renameWindow->controls();
    const QString tag = controls.addTagsButton->currentText();
    const bool first = controls.tagpostionButton->currentIndex() == 0;
    controls.filenameFormatstrlab->setText(
        batch::insertPhotoTag(controls.filenameFormatstrlab->text(), tag, first));
    if (tag == u"Camera Date")
        controls.renameDateFormatBtn->setEnabled(true);
    controls.addTagsButton->setCurrentIndex(controls.addTagsButton->count() - 1);
}

void AppDelegate::CloseRenameWindowAction() {
    m_renameWindow->controls().filenameFormatstrlab->setText(firstTemplate());
    m_renameWindow->hide();
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
        m_rename->useCustomName ? batch::RenameMode::CustomText : batch::RenameMode::MetadataTags;
    batch->request.storagelocation = storagelocation();
    batch->items = selectedItems();
    if (batch->items.empty())
        return nothingToRename(*this);
    jobs::RunOrder order = batch::renameOrder(batch);
    order.work = [this, rename = order.work](jobs::Run& run, const auto& items) {
        ReNameLocalphotowithFileThreader([&] { rename(run, items); });
    };
    m_renameJobs->rename(batch, std::move(order));
}

void AppDelegate::ReNameLocalphotowithFileThreader(const std::function<void()>& rename) {
    rename();
}

void AppDelegate::undoRename() {
    m_renameJobs->undo();
}

void AppDelegate::RefreshRenamePhotoProcessToMainThread(const QString& progress) {
    Q_UNUSED(progress) // the activity panel counts by itself
    m_window->table()->viewport()->update();
    m_window->photoGrid()->viewport()->update();
}

void AppDelegate::RenamePhotoFinishedHanderToMainThread() {
    m_renameWindow->hide();
    m_renameWindow->controls().keepFileNameBtn->setChecked(true);
    m_renameWindow->controls().filenameFormatstrlab->setText(firstTemplate());
}

} // namespace clipheave::app
