// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/asset/av_file_type.h"
#include "platform/media/export/export_planning.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace clipheave::platform {

enum class AVAssetExportSessionStatus {
    Unknown = 0,
    Waiting = 1,
    Exporting = 2,
    Completed = 3,
    Failed = 4,
    Cancelled = 5,
};

/// One export job: everything it needs is captured before it starts; it never touches the user
/// interface. Set it up on one thread, start it, then read status and progress from any thread.
class AVAssetExportSession {
public:
    AVAssetExportSession(AVURLAsset asset, QString presetName);
    /// The output gets the metadata, dates and attributes of the composition's first file.
    AVAssetExportSession(AVMutableComposition composition, QString presetName);
    /// Returns a job that copies `source` to `target` as it is, with its dates and attributes. It
    /// waits, runs, reports and is cancelled like an export.
    [[nodiscard]] static std::shared_ptr<AVAssetExportSession>
    unchangedCopy(const QString& source, const QString& target, NSFileManager::IfExists ifExists);
    /// Makes `target` out of `source` in one step and returns notes. It reports its progress (0 to
    /// 1) and stops when `progress` returns false.
    using Writer = std::function<Result<Notes>(const std::function<bool(double)>& progress)>;
    /// Returns a job, treated like an export, that runs `writer`.
    [[nodiscard]] static std::shared_ptr<AVAssetExportSession>
    rewriting(const QString& source, const QString& target, Writer writer);
    ~AVAssetExportSession();
    AVAssetExportSession(const AVAssetExportSession&) = delete;
    AVAssetExportSession& operator=(const AVAssetExportSession&) = delete;

    void setOutputPath(const QString& path);
    void setOutputFileType(const QString& type);
    /// No list keeps the source's metadata; a list replaces it: items with an empty value write
    /// nothing, and an empty list leaves no item at all.
    void setMetadata(const std::optional<QList<AVMetadataItem>>& items);
    /// Sets which of the source's items a new item of the list replaces. None: those of its
    /// identifier.
    void setFieldIdentifiers(FieldIdentifiers fields);
    /// Treats the list as that of a removal: hidden copies of old texts (padding, XMP) go as well,
    /// and a location that the list does not name stays even when the list is empty. Off by
    /// default.
    void setRemovesMetadata(bool removes);
    /// Exports this part of the source only, as far as it exists. Without a call: all of it.
    void setTimeRange(CMTimeRange range);
    void setVideoComposition(AVMutableVideoComposition composition);
    void setAudioMix(AVMutableAudioMix mix);
    /// Lets a pass-through leave out streams other than video and audio that the container cannot
    /// hold (subtitles, attachments); notes name them, and the codecs that have no place there.
    /// When off, such a stream fails the export. Off by default: nobody loses a subtitle by saving
    /// a title.
    void setLeavesOutUnheldTracks(bool leavesOut);
    /// Writes the movie header before the payload. Off by default.
    void setShouldOptimizeForNetworkUse(bool optimize);

    /// Queues the job; `completionHandler` runs on the queue's thread when status() is final.
    void exportAsynchronouslyWithCompletionHandler(std::function<void()> completionHandler);
    /// Stops the job soon; the partial output is removed, status becomes Cancelled.
    void cancelExport();

    [[nodiscard]] AVAssetExportSessionStatus status() const;
    [[nodiscard]] double progress() const; ///< 0 to 1
    /// Returns why it failed; meaningful with status Failed.
    [[nodiscard]] Error error() const;
    /// Returns what the user should know although it is not a failure ("Location kept").
    [[nodiscard]] Notes notes() const;

    /// Sets how many exports run at once in this process (default: the machine's cores).
    static void setMaximumConcurrentExports(int count);
    /// Returns when no export is queued or running.
    static void waitForAllExports();
    /// Cancels all queued and running exports.
    static void cancelAllExports();

    struct State; ///< shared with the queue's thread; export_job.h

private:
    AVAssetExportSession();
    std::shared_ptr<State> m_state;
};

} // namespace clipheave::platform
