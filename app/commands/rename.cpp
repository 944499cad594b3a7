// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/windows/main_window.h"
#include "app/windows/rename_window.h"
#include "app/windows/template_field.h"
#include "platform/foundation/paths.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
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

} // namespace

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
    m_useCustomName = true;
    controls.customerFileNameBtn->setChecked(true); // which clears the other two
    const auto selected = selectedItems();
    controls.customNamelab->setText(
        selected.empty() ? QString() : platform::deletingPathExtension(selected.front()->fileName));
}

void AppDelegate::ClickRenamewithMetadataAction() {
    const RenameControls& controls = m_renameWindow->controls();
    setMetadataControlsEnabled(controls, true);
    setCustomControlsEnabled(controls, false);
    m_useCustomName = false;
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

void AppDelegate::RenamePhotoFinishedHanderToMainThread() {
    m_renameWindow->hide();
    m_renameWindow->controls().keepFileNameBtn->setChecked(true);
    m_renameWindow->controls().filenameFormatstrlab->setText(firstTemplate());
}

} // namespace clipheave::app
