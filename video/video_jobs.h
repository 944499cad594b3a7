// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_job.h"
#include "media/image_item.h"

namespace clipheave::video {

/// What started a job: the title of the menu entry and the selection, in list order.
struct VideoJobRequest {
    QString title; ///< see video_labels.h
    std::vector<media::ItemPointer> items;
    jobs::RunSettings settings; ///< compress and convert mirror the imported folders
};

/// The workers of one job on a run. Each call walks the items, starts their exports and returns;
/// the outcome of each goes to its ticket. Outputs lie in the storage folder and replace older
/// files of their name when they are complete; of two items with one name the second replaces the
/// first. No source is ever touched: an output that would be one takes the next free name. The
/// calls come from one thread; what they leave to others holds tickets of the run, nothing of the
/// worker.
class VideoJobs {
public:
    explicit VideoJobs(jobs::Run& run) : m_run(run) {}
    VideoJobs(const VideoJobs&) = delete;
    VideoJobs& operator=(const VideoJobs&) = delete;

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

private:
    /// What the fixed log says of an export; null: nothing. `%1` is the reason.
    struct CompletionTexts {
        const char* completed = nullptr;
        const char* failed = nullptr;
        const char* afterFailure = nullptr; ///< a line of its own
        bool cancelledIsFailed = false;
    };
    static void logCompletion(const CompletionTexts& texts, const jobs::WriteOutcome& outcome);
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
    static void beginExport(const jobs::Ticket& ticket, const QString& source,
                            const QString& output, const ExportRecipe& recipe,
                            const std::shared_ptr<jobs::OutputTurn>& turn);
    /// True when the item is not a video; its outcome says so.
    [[nodiscard]] bool skips(const media::ItemPointer& item) const;
    /// The tickets of the merged items, in their order.
    void finishMerge(const QString& output, const std::vector<jobs::Ticket>& tickets,
                     const QString& first, const platform::AVMutableComposition& composition);

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

    jobs::Run& m_run;
};

/// The operation of a video command.
using Worker = std::function<void(VideoJobs& jobs, const VideoJobRequest& request)>;
/// Returns the order of a job over the items of the request. `isWhole`: it makes one output of
/// them.
[[nodiscard]] jobs::RunOrder videoOrder(Worker worker, VideoJobRequest request,
                                        bool isWhole = false);

} // namespace clipheave::video
