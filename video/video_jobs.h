// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/output_paths.h"
#include "jobs/output_turns.h"
#include "jobs/write_job.h"

namespace clipheave::video {

/// What started a job: the title of the menu entry and the selection, in list order.
struct VideoJobRequest {
    QString title; ///< see video_labels.h
    std::vector<media::ItemPointer> items;
    QString storagelocation;
    /// As the import left them; compress and convert mirror the imported folders.
    bool bImportLocalFolder = false;
    QString bImportLocalPath;
};

/// `handler`, told of a success that it took the place of the file that stands at `output` now.
[[nodiscard]] jobs::OutcomeHandler tellingReplacement(const QString& output,
                                                      const jobs::OutcomeHandler& handler);

/// The workers of one job. Each call walks the items, starts their exports and returns; one outcome
/// an item arrives, on any thread. Outputs lie in the storage folder and replace older files of
/// their name when they are complete; of two items with one name the second replaces the first. No
/// source is ever touched: an output that would be one takes the next free name. Revealing the
/// outputs is the front's. The calls come from one thread; progress and cancel from any.
class VideoJobs {
public:
    explicit VideoJobs(jobs::OutcomeHandler handler) : m_handler(std::move(handler)) {}
    VideoJobs(const VideoJobs&) = delete;
    VideoJobs& operator=(const VideoJobs&) = delete;

    /// Files that no output may replace: every file of the media list.
    void protectSources(const QStringList& paths) { m_paths.protect(paths); }

    void RotateVideoMediaFileFileThreader(const VideoJobRequest& request);
    /// All items in one video. Deliberate: each clip goes in at the longest duration before it, not
    /// at the end of the video, as it always has. One item carries the output, the others say where
    /// they went.
    void MergeVideoMediaFileFileThreader(const VideoJobRequest& request);
    /// Deliberate: cuts the video after its duration divided by the factor, at normal speed.
    void SpeedUpVideoMediaFileFileThreader(const VideoJobRequest& request);
    void SlowDownVideoMediaFileFileThreader(const VideoJobRequest& request);
    void CompressVideoMediaFileFileThreader(const VideoJobRequest& request);
    void ConvertVideoMediaFileFileThreader(const VideoJobRequest& request);
    void ConvertGIFMediaFileFileThreader(const VideoJobRequest& request);
    void ExtractAudioMediaFileFileThreader(const VideoJobRequest& request);
    void ExtractImagesMediaFileFileThreader(const VideoJobRequest& request);
    /// The audio stays as a silent track.
    void RemoveAudioMediaFileFileThreader(const VideoJobRequest& request);

    /// Of the exports that are running now; a merge stands for all its files.
    [[nodiscard]] jobs::RunProgress runningProgress() const { return m_running->progress(); }
    /// Stops this job: what waits or runs ends as Cancelled and leaves no part of a file. Single
    /// frames that are complete stay.
    void cancel() { m_running->cancel(); }

private:
    /// What the fixed log says of an export; null: nothing. `%1` is the reason.
    struct CompletionTexts {
        const char* completed = nullptr;
        const char* failed = nullptr;
        const char* afterFailure = nullptr; ///< a line of its own
        bool cancelledIsFailed = false;
    };
    /// Builds the session of one asset; the failure is the item's.
    using SessionMaker =
        std::function<platform::Result<std::shared_ptr<platform::AVAssetExportSession>>(
            const platform::AVURLAsset& asset, const QString& output)>;
    struct ExportRecipe {
        CompletionTexts texts;
        SessionMaker maker;
    };

    /// The export of one item into `wanted`.
    void startExport(const media::ItemPointer& item, const QString& wanted,
                     const ExportRecipe& recipe);
    void beginExport(const QString& source, const QString& output, const ExportRecipe& recipe,
                     const jobs::OutcomeHandler& handler);
    using Clock = std::chrono::steady_clock;
    /// True when the item is no video; its outcome says so.
    [[nodiscard]] bool skips(const media::ItemPointer& item) const;
    void refuse(const QString& source, const QString& reason,
                jobs::WriteStatus status = jobs::WriteStatus::Failed) const;
    /// The frames of one video, "BASE_SECOND.jpg".
    void beginFrames(const QString& source, const QString& folder, const QString& base,
                     double interval);
    void finishMerge(const QString& output, const std::vector<media::ItemPointer>& merged,
                     const platform::AVMutableComposition& composition);

    // The export routines. Their completion logs "Export failed: %@" and "11111", or "22222".
    void ConvertVideo_OutPutPath(const media::ItemPointer& item, const QString& outputPath);
    void compressVideo_outputURL_withVideoQuality(const media::ItemPointer& item,
                                                  const QString& outputPath,
                                                  const QString& presetName);
    void extractVideo_M4AoutputURL(const media::ItemPointer& item, const QString& outputPath);
    /// The same under another name.
    void compressVideo_M4AoutputURL(const media::ItemPointer& item, const QString& outputPath) {
        extractVideo_M4AoutputURL(item, outputPath);
    }

    jobs::OutcomeHandler m_handler;
    jobs::OutputPaths m_paths;
    std::shared_ptr<jobs::OutputTurns> m_turns = std::make_shared<jobs::OutputTurns>();
    std::shared_ptr<jobs::RunningExports> m_running = std::make_shared<jobs::RunningExports>();
};

} // namespace clipheave::video
