// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_job.h"
#include "jobs/write_request.h"
#include "metadata/audio_metadata.h"
#include "metadata/video_plans.h"

namespace clipheave::metadata {

/// Writers on a run. Each call starts one item and returns; its outcome goes to the item's ticket.
/// No source is ever touched, and outputs of one run never replace each other: when two files have
/// one name, the second takes the next free name. The calls come from one thread; work on other
/// threads holds tickets of the run, nothing of the writer.
class VideoMetadata {
public:
    explicit VideoMetadata(jobs::Run& run) : m_run(run) {}
    VideoMetadata(const VideoMetadata&) = delete;
    VideoMetadata& operator=(const VideoMetadata&) = delete;

    /// The save of one item by its kind; an MXF video is copied with the dates alone, other kinds
    /// are Skipped. An audio file needs the request's audio pane.
    void SaveMeidaFileChangesAction(const jobs::WriteRequest& request);
    /// The removal of one item by its kind, for both removal commands of the list. An
    /// audio file needs the request's audio pane; other kinds are Skipped.
    void RemoveMediaFileAction(const jobs::WriteRequest& request);
    /// A copy of the item under its title, as it stands; never replaces a file.
    void CopyvideoTitletoFileNameAction(const jobs::WriteRequest& request);
    /// The file's name without its extension as its title. Deliberate: no kind is left out, and an
    /// audio file becomes a QuickTime movie under its old name.
    void CopyvideofilenametoTitleAction(const jobs::WriteRequest& request);

    void SaveChangedVideoExifDateAction(const jobs::WriteRequest& request);
    void RemoveVideoExifDateAction(const jobs::WriteRequest& request);
    /// The date writer: `dateText` becomes the shooting date of the video at `filePath`, written to
    /// `exifPath` (replaced), and both file dates. A text that is not a date leaves the file dates
    /// of the source.
    void SetVideoFileWithFilePath_WithExifPath_withDateStr(const QString& filePath,
                                                           const QString& exifPath,
                                                           const QString& dateText);

    /// The date of a file's name: `dateText` becomes the shooting date and the creation date of the
    /// QuickTime movie, in the place of all older ones, and both file dates; the folder by the
    /// mirrored rule.
    void SetVideoDateItems(const jobs::WriteRequest& request, const QString& dateText);

    /// The writers of audio files by name, for the commands that set dates and reload texts.
    [[nodiscard]] AudioMetadata& audio() { return m_audio; }

private:
    /// Reports an item that is not written: Failed, or Skipped when it is not of a kind that the
    /// command takes.
    void refuse(const jobs::WriteRequest& request, const platform::Message& reason,
                jobs::WriteStatus status = jobs::WriteStatus::Failed);
    /// Makes the job of an item with the dates that its pane asks for; none as jobs::beginJob().
    [[nodiscard]] std::optional<jobs::WriteJob> begin(const jobs::WriteRequest& request,
                                                      const QString& output);
    /// The same with the dates of the source.
    [[nodiscard]] std::optional<jobs::WriteJob> begin(const QString& source, const QString& output);

    jobs::Run& m_run;
    AudioMetadata m_audio{m_run};
};

/// The operation of a writing command.
using Writer = void (VideoMetadata::*)(const jobs::WriteRequest& request);
/// Returns the order that writes each request.
[[nodiscard]] jobs::RunOrder writeOrder(Writer writer, std::vector<jobs::WriteRequest> requests);

} // namespace clipheave::metadata
