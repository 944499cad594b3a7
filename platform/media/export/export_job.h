// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/write/isobmff_writer.h"
#include "platform/media/export/av_asset_export_session.h"
#include "platform/media/export/output_place.h"
#include "platform/media/model/media_engine.h"

#include <atomic>
#include <mutex>

namespace clipheave::platform {

/// What a session and the queue's thread share: the order and its progress.
struct AVAssetExportSession::State {
    // Set before the start, by one thread; read by the job alone from then on.
    QString sourcePath;
    std::optional<ExportOrder> order; ///< none: the file is copied as it is, or `writer` writes it
    Writer writer;
    NSFileManager::IfExists ifExists = NSFileManager::IfExists::Replace; ///< of such a copy
    QString outputPath, outputFileType;
    std::optional<QList<AVMetadataItem>> metadata;
    FieldIdentifiers fields;
    bool removes = false, leavesOut = false;

    std::optional<OutputPlace> place; ///< used by the job alone
    std::atomic<double> progress = 0;
    std::atomic<bool> cancelled = false;

    std::mutex mutex; ///< guards what follows
    AVAssetExportSessionStatus status = AVAssetExportSessionStatus::Unknown;
    Error error;
    Notes notes;

    [[nodiscard]] bool startWaiting();
    [[nodiscard]] bool startExporting();
    void finish(const Result<PassthroughOutcome>& outcome);
    void cancel();

    [[nodiscard]] Result<void> validated() const;
    /// Returns whether it is one small file that nothing is decoded or encoded of.
    [[nodiscard]] bool isSmallRewrite() const;
    [[nodiscard]] Result<PassthroughOutcome> run();
    [[nodiscard]] Result<PassthroughOutcome> runJob();
    /// Makes a file of this family at `target`; returns notes.
    using Maker = std::function<Result<Notes>(MediaEngine& engine, const QString& target)>;
    struct EngineWork {
        double share = 0;             ///< of the whole progress
        std::uint64_t leastBytes = 0; ///< that its file will have, as far as is known
        QStringList sources;          ///< that it reads
    };
    /// Lets `maker` write a temporary file beside the target, then writes the target of it.
    [[nodiscard]] Result<PassthroughOutcome> runThroughEngine(PassthroughRequest request,
                                                              const AVURLAsset& original,
                                                              EngineWork work, const Maker& maker);
    [[nodiscard]] Result<PassthroughOutcome> runOrder(PassthroughRequest request);
    [[nodiscard]] bool copiesWholeFile() const;
    [[nodiscard]] Notes notesOnCodecs(OutputContainer container) const;
    [[nodiscard]] Result<PassthroughOutcome> runPlan(PassthroughRequest request);
    [[nodiscard]] Result<Notes> copyIntoMp4(MediaEngine& engine, const PassthroughRequest& request,
                                            const QString& target);
    [[nodiscard]] bool report(double done);
};

} // namespace clipheave::platform
