// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/photo_edits.h"
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/surroundings.h"
#include "app/commands/write_report.h"
#include "app/jobs/job_board.h"

#include <utility>

namespace clipheave::app {

void AppDelegate::RemoveIPTCDataFromPhoto() {
    removeBlocks(&photo::PhotoEdits::RemoveIPTCDataFromPhoto, tr("Remove IPTC data"));
}
void AppDelegate::RemoveExifDataFromPhoto() {
    removeBlocks(&photo::PhotoEdits::RemoveExifDataFromPhoto, tr("Remove EXIF data"));
}
void AppDelegate::RemoveGPSDataFromPhoto() {
    removeBlocks(&photo::PhotoEdits::RemoveGPSDataFromPhoto, tr("Remove GPS data"));
}
void AppDelegate::DeleteExifAndGPSData() {
    removeBlocks(&photo::PhotoEdits::DeleteExifAndGPSData, tr("Remove EXIF and GPS data"));
}
void AppDelegate::DeleteAllPhotoMetadataData() {
    removeBlocks(&photo::PhotoEdits::DeleteAllPhotoMetadataData, tr("Remove all metadata"));
}

void AppDelegate::removeBlocks(
    void (photo::PhotoEdits::*remove)(const photo::PhotoRequest& request), const QString& title) {
    const auto items = selectedItems();
    if (items.empty())
        return showNoSelectionAlert();
    startWriting(title, photo::photoOrder(
                            [remove](jobs::Run& run, const photo::PhotoRequest& request) {
                                photo::PhotoEdits edits(run);
                                (edits.*remove)(request);
                            },
                            {items, runSettings()}));
}

void AppDelegate::startWriting(const QString& title, jobs::RunOrder order) {
    BoardJob job;
    job.title = title;
    job.order = std::move(order);
    WriteReport{*m_activity, *m_surroundings->workspace, [this] { Q_EMIT saveFinished(); }}
        .attachTo(job);
    m_board->start(job);
}

} // namespace clipheave::app
