// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/output_paths.h"
#include "jobs/write_job.h"
#include "jobs/write_outcome.h"
#include "jobs/write_request.h"
#include "metadata/audio_metadata.h"
#include "metadata/video_plans.h"

namespace clipheave::metadata {

/// Writers of one command run. Each call starts one item and returns; its outcome arrives once, on
/// any thread (on the caller's when nothing can be started). No source is ever touched, and outputs
/// of one run never replace each other: when two files have one name, the second takes the next
/// free name. The calls come from one thread at a time; progress and cancel from any. Revealing the
/// outputs is the front's, once for the whole run.
class VideoMetadata {
public:
    explicit VideoMetadata(jobs::OutcomeHandler handler) : m_handler(std::move(handler)) {}
    VideoMetadata(const VideoMetadata&) = delete;
    VideoMetadata& operator=(const VideoMetadata&) = delete;

    /// Files that no output of this run may replace: every file of the media list.
    void protectSources(const QStringList& paths) { m_paths.protect(paths); }

    /// The save of one item by its kind; an MXF video is copied with the dates alone, other kinds
    /// are Skipped. An audio file needs the request's audio pane.
    void SaveMeidaFileChangesAction(const jobs::WriteRequest& request);
    /// The removal of one item by its kind, for both removal commands of the list. An
    /// audio file needs the request's audio pane; other kinds are Skipped.
    void RemoveMediaFileAction(const jobs::WriteRequest& request);
    /// A copy of the item under its title, as it stands; never replaces a file.
    void CopyvideoTitletoFileNameAction(const jobs::WriteRequest& request);
    /// The file's name without its extension as the title of a video; other kinds are Skipped.
    void CopyvideofilenametoTitleAction(const jobs::WriteRequest& request);

    /// The outcome of an item that is not written: Failed, or Skipped when it is not of a kind that
    /// the command takes.
    void refuse(const jobs::WriteRequest& request, const QString& reason,
                jobs::WriteStatus status = jobs::WriteStatus::Failed);

    void SaveChangedVideoExifDateAction(const jobs::WriteRequest& request);
    void RemoveVideoExifDateAction(const jobs::WriteRequest& request);
    /// The date writer: `dateText` becomes the shooting date of the video at `filePath`, written to
    /// `exifPath` (replaced), and both file dates. A text that is no date leaves the file dates of
    /// the source.
    void SetVideoFileWithFilePath_WithExifPath_withDateStr(const QString& filePath,
                                                           const QString& exifPath,
                                                           const QString& dateText);

    /// The writers of audio files by name, for the commands that set dates and reload texts.
    [[nodiscard]] AudioMetadata& audio() { return m_audio; }

    /// Mean progress of the exports that are running now, 0 to 1; -1 when none is.
    [[nodiscard]] jobs::RunProgress runningProgress() const { return m_running->progress(); }
    /// Stops this run: what waits or runs ends as Cancelled and leaves no file.
    void cancel() { m_running->cancel(); }

private:
    /// The job of an item with the dates that its pane asks for; none when the source cannot be
    /// looked at or there is no folder for the output, which the handler has been told.
    [[nodiscard]] std::optional<jobs::WriteJob> begin(const jobs::WriteRequest& request,
                                                      const QString& output);
    /// The same with the dates of the source.
    [[nodiscard]] std::optional<jobs::WriteJob> begin(const QString& source, const QString& output);

    jobs::OutcomeHandler m_handler;
    jobs::OutputPaths m_paths;
    std::shared_ptr<jobs::RunningExports> m_running = std::make_shared<jobs::RunningExports>();
    AudioMetadata m_audio{m_handler, m_paths, m_running};
};

} // namespace clipheave::metadata
