// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_job.h"
#include "media/video_pane.h"

#include <QList>
#include <QString>

// What each writer of videos puts into its output. Pure, so that a front can show it and tests
// check it without a file.
namespace clipheave::metadata {

/// The save: new items first, then what the source keeps. A field whose text is what was shown
/// writes nothing; a group whose flag is not set is skipped.
[[nodiscard]] jobs::MetadataPlan
planVideoSave(const media::VideoPane& pane, const QList<platform::AVMetadataItem>& sourceMetadata);

/// The removal: one item with an empty value for each field that holds something, and nothing of
/// the source.
/// Deliberate: keywords are blanked under another identifier than a save writes them to, and the
/// position only when the video was taken north of the equator and east of Greenwich. Elsewhere it
/// stays in the output.
[[nodiscard]] jobs::MetadataPlan planVideoRemoval(const media::IKImageItem& item);

/// The new title in the place of every title of the source, else behind its items; a null title
/// replaces none.
[[nodiscard]] jobs::MetadataPlan
planVideoTitle(const QString& title, const QList<platform::AVMetadataItem>& sourceMetadata);

/// The date text, as it stands, in the place of every date item of the source, else behind its
/// items; a null text replaces none.
[[nodiscard]] jobs::MetadataPlan
planVideoDate(const QString& dateText, const QList<platform::AVMetadataItem>& sourceMetadata);

/// "+31.2304+121.4737+12.5": each text without a "-" gets a "+" in front. An empty altitude leaves
/// a lone "+" at the end.
[[nodiscard]] QString locationText(const QString& latitude, const QString& longitude,
                                   const QString& altitude);

} // namespace clipheave::metadata
