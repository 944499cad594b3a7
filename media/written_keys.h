// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Published names of the metadata keys that the fields of a video are written as. Sources: the key
// tables of the QuickTime metadata, iTunes and common key spaces.
namespace clipheave::media {

inline constexpr char16_t kKeySpaceITunes[] = u"itsk";
inline constexpr char16_t AVMetadataKeySpaceQuickTimeMetadata[] = u"mdta";
inline constexpr char16_t AVMetadataKeySpaceCommon[] = u"comn";

inline constexpr char16_t AVMetadataQuickTimeMetadataKeyDirector[] =
    u"com.apple.quicktime.director";
inline constexpr char16_t AVMetadataQuickTimeMetadataKeyPerformer[] =
    u"com.apple.quicktime.performer";
inline constexpr char16_t AVMetadataQuickTimeMetadataKeyProducer[] =
    u"com.apple.quicktime.producer";
inline constexpr char16_t kQuickTimeKeywords[] = u"com.apple.quicktime.keywords";

inline constexpr char16_t AVMetadataCommonKeyPublisher[] = u"publisher";
inline constexpr char16_t AVMetadataCommonKeyCopyrights[] = u"copyrights";
inline constexpr char16_t AVMetadataCommonKeyDescription[] = u"description";

} // namespace clipheave::media
