// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/import_state.h"
#include "app/commands/write_run.h"
#include "app/windows/main_window.h"
#include "jobs/write_outcome.h"
#include "platform/foundation/main_thread.h"
#include "video/video_jobs.h"

namespace clipheave::app {

/// What a worker needs of the window, read before its thread begins.
struct AppDelegate::VideoRun {
    video::VideoJobRequest request;
    std::shared_ptr<video::VideoJobs> jobs;
};

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

void AppDelegate::RotateVideoMediaFileFileThreader(const VideoRun& run) {
    run.jobs->RotateVideoMediaFileFileThreader(run.request);
}
void AppDelegate::MergeVideoMediaFileFileThreader(const VideoRun& run) {
    run.jobs->MergeVideoMediaFileFileThreader(run.request);
}
void AppDelegate::SpeedUpVideoMediaFileFileThreader(const VideoRun& run) {
    run.jobs->SpeedUpVideoMediaFileFileThreader(run.request);
}
void AppDelegate::SlowDownVideoMediaFileFileThreader(const VideoRun& run) {
    run.jobs->SlowDownVideoMediaFileFileThreader(run.request);
}
void AppDelegate::CompressVideoMediaFileFileThreader(const VideoRun& run) {
    run.jobs->CompressVideoMediaFileFileThreader(run.request);
}
void AppDelegate::ConvertVideoMediaFileFileThreader(const VideoRun& run) {
    run.jobs->ConvertVideoMediaFileFileThreader(run.request);
}
void AppDelegate::ConvertGIFMediaFileFileThreader(const VideoRun& run) {
    run.jobs->ConvertGIFMediaFileFileThreader(run.request);
}
void AppDelegate::ExtractAudioMediaFileFileThreader(const VideoRun& run) {
    run.jobs->ExtractAudioMediaFileFileThreader(run.request);
}
void AppDelegate::ExtractImagesMediaFileFileThreader(const VideoRun& run) {
    run.jobs->ExtractImagesMediaFileFileThreader(run.request);
}
void AppDelegate::RemoveAudioMediaFileFileThreader(const VideoRun& run) {
    run.jobs->RemoveAudioMediaFileFileThreader(run.request);
}

/// `activity`: what the panel calls the job; "%1" is the title of the menu entry.
void AppDelegate::detachVideoWorker(VideoWorker worker, const QString& activity) {
    const auto items = selectedItems();
    if (items.empty())
        return showNoSelectionAlert();
    startVideoJob(worker, activity.contains(u"%1") ? activity.arg(m_commandTitle) : activity,
                  m_commandTitle, items);
}

void AppDelegate::startVideoJob(VideoWorker worker, const QString& activity, const QString& title,
                                const std::vector<media::ItemPointer>& items) {
    const auto run = beginRun(activity, items);
    m_retries[run->job] = [this, worker, activity, title, items](const QStringList& failed) {
        // A merge without the others is none.
        const bool merges = worker == &AppDelegate::MergeVideoMediaFileFileThreader;
        if (const auto again = merges ? items : itemsAt(failed); !again.empty())
            startVideoJob(worker, activity, title, again);
    };
    run->tellsSizes = worker == &AppDelegate::CompressVideoMediaFileFileThreader;
    VideoRun video;
    video.request = {title, items, storagelocation(), m_import->bImportLocalFolder,
                     m_import->bImportLocalPath};
    video.jobs = std::make_shared<video::VideoJobs>(outcomesTo(run));
    run->progress = [jobs = video.jobs] { return jobs->runningProgress(); };
    run->cancel = [jobs = video.jobs] { jobs->cancel(); };
    m_window->setJobProgressVisible(true);
    ++m_startingVideoJobs;
    platform::BackgroundJob::detach([this, worker, video, job = run->job, sources = allPaths()] {
        video.jobs->protectSources(sources);
        (this->*worker)(video);
        platform::performOnMainThread([this, job] {
            m_activity->setExportsAlone(job);
            BatchVideosItemCompleteToMainThread();
        });
    });
}

void AppDelegate::BatchVideosItemCompleteToMainThread() {
    m_window->showStatus({});
    m_window->setJobProgressVisible(false);
    --m_startingVideoJobs;
}

} // namespace clipheave::app
