// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/audio_pane.h"
#include "media/image_item.h"
#include "media/other_identifiers.h"
#include "media/video_pane.h"

#include <array>
#include <cstdint>

namespace clipheave::media {

/// The metadata walks that take an identifier; a set of bits.
enum WalkBits : std::uint8_t {
    kVideos = 1,       ///< every video
    kSingleVideos = 2, ///< videos given by their own path
    kAudioFiles = 4,   ///< all audio files but WAV, FLAC and AU
    kAiffFiles = 8,    ///< AIFF and CAF on top of that
    kTagged = kVideos | kAudioFiles,
};

/// An identifier whose value fills a field, and where.
struct ReadIdentifier {
    const char* identifier = nullptr;
    int walks = 0; ///< WalkBits
    /// Fills a field that nothing else has filled, and is no other form of the same text.
    bool standsIn = false;
};

using ReadIdentifiers = std::array<ReadIdentifier, 5>;

/// How a metadata item's value reaches the record.
enum class ReadAs : std::uint8_t { Text, Keywords, Track, Date };

/// The metadata item that a save of a video writes for a field; all null: the field has none of its
/// own.
struct WrittenItem {
    const char16_t* keySpace = nullptr;
    const char16_t* key = nullptr;
    const char* identifier = nullptr;
};

// Short for the rows.
namespace field_rows {
using Item = IKImageItem;
using Video = PaneTexts;
using OldVideo = ShownTexts;
using Audio = AudioPaneTexts;
using OldAudio = AudioShownTexts;
inline constexpr bool ChangeFlags::*kBasic = &ChangeFlags::basicInfoChange;
inline constexpr bool ChangeFlags::*kCamera = &ChangeFlags::cameraInfoChange;
inline constexpr bool ChangeFlags::*kPosition = &ChangeFlags::gpsInfoChange;
} // namespace field_rows

/// A field on the video pane.
struct VideoFormField {
    const char* objectName = nullptr; ///< null: not a field of the form
    const char* label = nullptr;
    QString PaneTexts::*text = nullptr;
    QString ShownTexts::*shown = nullptr;
    bool ChangeFlags::*group = nullptr; ///< null for the altitude, which sets no flag
};

/// A field on the audio pane.
struct AudioField {
    int place = 0; ///< on the pane, row by row, from 1
    const char* objectName = nullptr;
    const char* label = nullptr;
    QString AudioPaneTexts::*text = nullptr;
    QString AudioShownTexts::*shown = nullptr;
    bool ChangeFlags::*group = nullptr; ///< null: an edit sets no flag
};

struct FieldNames {
    const char* plain = nullptr;  ///< on the command line and in its lists, "title"
    const char* record = nullptr; ///< of the record, "fileTitle"
};

/// All that is known of one text of the record.
struct Field {
    FieldNames names{};
    QString IKImageItem::*record = nullptr; ///< null for the position, which is numbers
    const char* tagWord = nullptr;          ///< in a template of file names; null: none
    ReadAs readAs = ReadAs::Text;
    /// With all of its identifiers; kFieldIdentifiers says of which else.
    bool replacesOlder = false;
    ReadIdentifiers read{};
    /// Files hold it under these too.
    OtherIdentifiers alsoUnder{};
    const char16_t* infoKey = nullptr; ///< of the info dictionary of a WAV, FLAC or AU file
    VideoFormField video{};
    WrittenItem written{};
    AudioField audio{};
};

} // namespace clipheave::media
