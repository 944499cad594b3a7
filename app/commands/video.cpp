// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/command_state.h"
#include "app/commands/surroundings.h"
#include "app/commands/write_report.h"
#include "app/jobs/job_board.h"
#include "app/windows/main_window.h"
#include "video/video_jobs.h"

namespace clipheave::app {

void AppDelegate::RotateVideoMediaFileAction() {
    detachVideoWorker(&AppDelegate::RotateVideoMediaFileFileThreader, tr("Rotate %1"));
}
void AppDelegate::MergeSelectedMediaFileFormatAction() {
    detachVideoWorker(&AppDelegate::MergeVideoMediaFileFileThreader, tr("Merge"));
}
void AppDelegate::SpeedSelectedMediaFileFormatAction() {
    detachVideoWorker(&AppDelegate::SpeedUpVideoMediaFileFileThreader, tr("Speed up %1"));
}
void AppDelegate::SlowdownSelectedMediaFileFormatAction() {
    detachVideoWorker(&AppDelegate::SlowDownVideoMediaFileFileThreader, tr("Slow down %1"));
}
void AppDelegate::CompressSelectedMediaFileAction() {
    detachVideoWorker(&AppDelegate::CompressVideoMediaFileFileThreader, tr("Compress, %1"));
}
void AppDelegate::ConvertSelectedMediaFileFormatAction() {
    detachVideoWorker(&AppDelegate::ConvertVideoMediaFileFileThreader, QStringLiteral("%1"));
}
void AppDelegate::ConvertSelectedMediaFileToGIFAction() {
    detachVideoWorker(&AppDelegate::ConvertGIFMediaFileFileThreader, tr("Convert to GIF"));
}
void AppDelegate::ExtractSelectedMediaFileAction() {
    detachVideoWorker(&AppDelegate::ExtractAudioMediaFileFileThreader, tr("Extract audio"));
}
void AppDelegate::ExtractImagesSelectedMediaFileAction() {
    detachVideoWorker(&AppDelegate::ExtractImagesMediaFileFileThreader, tr("Extract images, %1"));
}
void AppDelegate::removeSoundFromMediaFileFormatAction() {
    detachVideoWorker(&AppDelegate::RemoveAudioMediaFileFileThreader, tr("Remove sound"));
}

void AppDelegate::RotateVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                                   const video::VideoJobRequest& request) {
    jobs.RotateVideoMediaFileFileThreader(request);
}
void AppDelegate::MergeVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                                  const video::VideoJobRequest& request) {
    jobs.MergeVideoMediaFileFileThreader(request);
}
void AppDelegate::SpeedUpVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                                    const video::VideoJobRequest& request) {
    jobs.SpeedUpVideoMediaFileFileThreader(request);
}
void AppDelegate::SlowDownVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                                     const video::VideoJobRequest& request) {
    jobs.SlowDownVideoMediaFileFileThreader(request);
}
void AppDelegate::CompressVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                                     const video::VideoJobRequest& request) {
    jobs.CompressVideoMediaFileFileThreader(request);
}
void AppDelegate::ConvertVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                                    const video::VideoJobRequest& request) {
    jobs.ConvertVideoMediaFileFileThreader(request);
}
void AppDelegate::ConvertGIFMediaFileFileThreader(video::VideoJobs& jobs,
                                                  const video::VideoJobRequest& request) {
    jobs.ConvertGIFMediaFileFileThreader(request);
}
void AppDelegate::ExtractAudioMediaFileFileThreader(video::VideoJobs& jobs,
                                                    const video::VideoJobRequest& request) {
    jobs.ExtractAudioMediaFileFileThreader(request);
}
void AppDelegate::ExtractImagesMediaFileFileThreader(video::VideoJobs& jobs,
                                                     const video::VideoJobRequest& request) {
    jobs.ExtractImagesMediaFileFileThreader(request);
}
void AppDelegate::RemoveAudioMediaFileFileThreader(video::VideoJobs& jobs,
                                                   const video::VideoJobRequest& request) {
    jobs.RemoveAudioMediaFileFileThreader(request);
}

/// `activity`: what the panel calls the job; "%1" is the title of the menu entry.
void AppDelegate::detachVideoWorker(VideoWorker worker, const QString& activity) {
    const auto items = selectedItems();
    if (items.empty())
        return showNoSelectionAlert();
    BoardJob job;
    job.title = activity.contains(u"%1") ? activity.arg(m_command->title) : activity;
    // A merge is tried again with all its files: of some it would be another merge.
    const bool merges = worker == &AppDelegate::MergeVideoMediaFileFileThreader;
    job.order = video::videoOrder(
        [this, worker](auto& jobs, const auto& request) { (this->*worker)(jobs, request); },
        {m_command->title, items, runSettings()}, merges);
    const bool compresses = worker == &AppDelegate::CompressVideoMediaFileFileThreader;
    WriteReport{*m_activity, *m_surroundings->workspace, [this] { Q_EMIT saveFinished(); },
                compresses}
        .attachTo(job);
    job.workReturned = [this](int id) {
        m_activity->setExportsAlone(id);
        BatchVideosItemCompleteToMainThread();
    };
    m_window->setJobProgressVisible(true);
    m_board->start(job);
}

void AppDelegate::BatchVideosItemCompleteToMainThread() {
    m_window->showStatus({});
    m_window->setJobProgressVisible(false);
}

} // namespace clipheave::app
