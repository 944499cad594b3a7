// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/audio_pane.h"
#include "platform/formats/mpeg/id3_tag_builder.h"

#include <QMap>

#include <optional>

// What each writer of audio files puts into its output. Pure: no file is touched.
namespace clipheave::metadata {

/// Texts by the keys of a metadata property list ("Title", "Record Date", …).
using AudioDictionary = QMap<QString, QString>;

/// The front cover of an output.
struct CoverPlan {
    platform::EncodedImage image; ///< null: none
    /// The image is the one that the file holds: the pane was given no other.
    bool isUntouched = true;
};
/// Deliberate: whether there is a cover at all is read from the pane; an untouched pane gives each
/// file its own cover, a new image all of them the new one.
[[nodiscard]] CoverPlan planCover(const media::AudioPane& pane, const media::IKImageItem& item);

/// The text frames of an MP3 file: every field that is not empty, changed or not. `recordDate`
/// stands in for the pane's when it is not null.
[[nodiscard]] QList<platform::Id3TextFrame> planMp3Save(const media::AudioPane& pane,
                                                        const QString& recordDate = {});
/// Returns the names of the source's frames that an MP3 file loses in a save, whose new tag holds
/// the frames of the pane alone, and the cover where it `hasCover`. Each once.
[[nodiscard]] QStringList framesLostInMp3(const QList<platform::AVMetadataItem>& source,
                                          bool hasCover = true);
/// Deliberate: a blank frame for every field that the pane shows something in; which ones is the
/// same for all files of a removal.
[[nodiscard]] QList<platform::Id3TextFrame> planMp3Removal(const media::AudioPane& pane);
/// Deliberate: never the track number.
[[nodiscard]] QList<platform::Id3TextFrame> planMp3Reload(const AudioDictionary& texts);

/// The items of an M4A file: the changed fields first, then what the source keeps. `recordDate` as
/// above. A null `cover` leaves the source's.
[[nodiscard]] QList<platform::AVMetadataItem>
planAudioSave(const media::AudioPane& pane, const platform::EncodedImage& cover,
              const QList<platform::AVMetadataItem>& sourceMetadata,
              const QString& recordDate = {});
/// Every key that is present, and the rest of the source.
[[nodiscard]] QList<platform::AVMetadataItem>
planAudioReload(const AudioDictionary& texts,
                const QList<platform::AVMetadataItem>& sourceMetadata);

/// The changed texts by the keys of the info dictionary of a FLAC file. Deliberate: track number,
/// publisher and band have no key there.
[[nodiscard]] QMap<QString, QString> planFlacSave(const media::AudioPane& pane,
                                                  const QString& recordDate = {});
[[nodiscard]] QMap<QString, QString> planFlacReload(const AudioDictionary& texts);

} // namespace clipheave::metadata
