// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/written_keys.h"

// Published names of the metadata keys that the video writers use. Sources: the key tables of the
// QuickTime metadata, iTunes, ISO user-data and common key spaces.
namespace clipheave::metadata {

using media::AVMetadataCommonKeyCopyrights;
using media::AVMetadataCommonKeyPublisher;
using media::AVMetadataKeySpaceCommon;
using media::kKeySpaceITunes;
using media::kQuickTimeKeywords;

inline constexpr char16_t kKeySpaceISOUserData[] = u"uiso";

inline constexpr char16_t kQuickTimeCreationDateIdentifier[] =
    u"mdta/com.apple.quicktime.creationdate";
inline constexpr char16_t kISODateIdentifier[] = u"uiso/date";
inline constexpr char16_t kUserDataDateIdentifier[] = u"udta/date";
/// The published AVMetadataIdentifier3GPUserDataKeywordList.
inline constexpr char16_t k3GPKeywordsIdentifier[] = u"uiso/kywd";
inline constexpr char16_t kITunesTitleIdentifier[] = u"itsk/%A9nam";
inline constexpr char16_t kID3TitleIdentifier[] = u"id3/TIT2";

inline constexpr char16_t AVMetadataCommonKeyArtwork[] = u"artwork";

inline constexpr char16_t kRawDataType[] = u"com.apple.metadata.datatype.raw-data";

} // namespace clipheave::metadata
