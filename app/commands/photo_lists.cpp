// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/photo_lists.h"
#include "app/AppDelegate.h"
#include "app/commands/surroundings.h"
#include "app/windows/main_window.h"

namespace clipheave::app {

void AppDelegate::ExportTiffInfoToPlist() {
    exportLists(&photo::PhotoLists::ExportTiffInfoToPlist, tr("Export TIFF data"));
}
void AppDelegate::ExportExifInfoToPlist() {
    exportLists(&photo::PhotoLists::ExportExifInfoToPlist, tr("Export EXIF data"));
}
void AppDelegate::ExportExifandTiffInfoToPlist() {
    exportLists(&photo::PhotoLists::ExportExifandTiffInfoToPlist, tr("Export EXIF and TIFF data"));
}
void AppDelegate::ExportExifandGPSInfoToPlist() {
    exportLists(&photo::PhotoLists::ExportExifandGPSInfoToPlist, tr("Export EXIF and GPS data"));
}
void AppDelegate::ExportTemplateDataToPlist() {
    exportLists(&photo::PhotoLists::ExportTemplateDataToPlist, tr("Export a template"));
}
void AppDelegate::ExportAllMetadataInfoToPlist() {
    exportLists(&photo::PhotoLists::ExportAllMetadataInfoToPlist, tr("Export all metadata"));
}
void AppDelegate::WriteSelectedItemsExifDataToPlist() {
    exportLists(&photo::PhotoLists::WriteSelectedItemsExifDataToPlist, tr("Export each photo"));
}

void AppDelegate::exportLists(void (photo::PhotoLists::*write)(const photo::PhotoRequest& request),
                              const QString& title) {
    const auto items = selectedItems();
    if (items.empty())
        return showNoSelectionAlert();
    startWriting(title, photo::listOrder(write, {items, runSettings()}));
}

void AppDelegate::ImportPlistToPhotos() {
    chooseListToImport(tr("Import a property list"));
}
void AppDelegate::ImportTemplateToPhotos() {
    chooseListToImport(tr("Import a template"));
}

/// The selection is the one of the click, whatever is selected when the list is chosen.
void AppDelegate::chooseListToImport(const QString& title) {
    const auto items = selectedItems();
    if (items.empty())
        return showNoSelectionAlert();
    const auto chosen = [this, title, items](const QStringList& paths) {
        startWriting(title, photo::importOrder(paths.first(), &photo::rewriteWithProperties,
                                               {items, runSettings()}));
    };
    m_surroundings->fileChooser->chooseMedia(m_window.get(), tr("Please select plist to import."),
                                             OpenPanel::OneFile, chosen);
}

} // namespace clipheave::app
