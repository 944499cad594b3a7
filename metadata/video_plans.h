// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_job.h"
#include "media/video_pane.h"
#include "platform/foundation/message.h"

#include <QList>
#include <QString>

#include <optional>

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

/// The date text as ISO date and as creation date of the QuickTime movie, behind the source's other
/// items; its own dates go.
[[nodiscard]] jobs::MetadataPlan
planVideoDateItems(const QString& dateText, const QList<platform::AVMetadataItem>& sourceMetadata);

/// Returns why the position of a pane cannot be stored: the first text, other than an empty one,
/// that is no number in range. Nothing when there is none.
[[nodiscard]] std::optional<platform::Message> positionFault(const media::PaneTexts& texts);
/// The same for what planVideoSave() would write: a position that stays as it was shown, or of
/// which a half is missing, has no fault.
[[nodiscard]] std::optional<platform::Message> savedPositionFault(const media::VideoPane& pane);

/// Returns whether a part of the position was changed that planVideoSave() does not write, because
/// the latitude or the longitude is empty; the file keeps the position that it has.
[[nodiscard]] bool dropsPosition(const media::VideoPane& pane);

/// Returns "+31.2304+121.4737+12.5": each text without a "-" gets a "+" in front, numbers stand in
/// the form of media::positionNumber(). An empty altitude leaves a lone "+" at the end.
[[nodiscard]] QString locationText(const QString& latitude, const QString& longitude,
                                   const QString& altitude);

} // namespace clipheave::metadata
