// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/panes.h"
#include "metadata/write_outcome.h"
#include "platform/media/av_asset_export_session.h"

#include <QList>
#include <QSet>
#include <QString>

#include <memory>
#include <vector>

namespace clipheave::metadata {

/// What a save gathers from the windows before it starts; nothing is read from them afterwards.
struct SaveRequest {
    media::ItemPointer item;
    media::VideoPane pane;
    QString storagelocation;
};

/// The items of a saved file and its container; pure, so that the front can show it and tests check
/// it.
struct SavePlan {
    QList<platform::AVMetadataItem> metadata; ///< new items first, then what the source keeps
    QString outputFileType;
};
/// Builds the plan from the pane and the source's own items. A field whose text is what was shown
/// writes nothing; a group whose flag is not set is not looked at.
[[nodiscard]] SavePlan planVideoSave(const media::VideoPane& pane,
                                     const QList<platform::AVMetadataItem>& sourceMetadata);

/// "+31.2304+121.4737+12.5": each text without a "-" gets a "+" in front. An empty altitude leaves
/// a lone "+" at the end.
[[nodiscard]] QString locationText(const QString& latitude, const QString& longitude,
                                   const QString& altitude);

/// Writers of one command run. Revealing the outputs is the front's, once for the whole run.
/// Outputs of one run never replace each other: when two selected files have one name, the second
/// takes the next free name.
class VideoMetadata {
public:
    explicit VideoMetadata(OutcomeHandler handler) : m_handler(std::move(handler)) {}

    /// The save of one item by its kind. Audio and photos answer Failed until their writers are
    /// there; an MXF video is copied with the dates alone.
    void SaveMeidaFileChangesAction(const SaveRequest& request);
    /// Starts the export of one video; the outcome arrives on the export's thread. A file that
    /// cannot be rewritten is copied unchanged with the dates asked for, and the outcome says so
    /// (Failed).
    void SaveChangedVideoExifDateAction(const SaveRequest& request);

    /// Mean progress of the exports that are running now, 0 to 1; -1 when none is.
    [[nodiscard]] double runningProgress() const;

private:
    [[nodiscard]] QString flatOutputPath(const SaveRequest& request);

    OutcomeHandler m_handler;
    QSet<QString> m_taken; ///< output paths given out in this run
    std::vector<std::weak_ptr<platform::AVAssetExportSession>> m_sessions;
};

} // namespace clipheave::metadata
