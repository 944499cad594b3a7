// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// The sentences of this layer; their words stand in the tables of the fronts.
namespace clipheave::platform {

// Operations.
inline constexpr MessageCode kReadImage{"read-image"};
inline constexpr MessageCode kReadPhoto{"read-photo"};
inline constexpr MessageCode kReadPhotoTags{"read-photo-tags"};
inline constexpr MessageCode kReadImageBoxes{"read-image-boxes"};
inline constexpr MessageCode kEncodeImage{"encode-image"};
inline constexpr MessageCode kConvertImage{"convert-image"};
inline constexpr MessageCode kCreateTiff{"create-tiff"};
inline constexpr MessageCode kWriteGif{"write-gif"};
inline constexpr MessageCode kWritePhotoTags{"write-photo-tags"};

// Notes.
inline constexpr MessageCode kTagsLeftOut{"photo-tags-left-out"}; ///< "EXIF", "IPTC" or "XMP"

// Reasons.
inline constexpr MessageCode kTooManyPixels{"too-many-pixels"};
inline constexpr MessageCode kImageFileTooLarge{"image-file-too-large"};
inline constexpr MessageCode kNoImage{"no-image"};
inline constexpr MessageCode kNoDecoder{"no-image-decoder"};
inline constexpr MessageCode kHeifLibraryMissing{"heif-library-missing"};
inline constexpr MessageCode kNoFrames{"no-frames"};
inline constexpr MessageCode kPropertiesOutOfRange{"properties-out-of-range"};
inline constexpr MessageCode kFrameSizeDiffers{"frame-size-differs"};
inline constexpr MessageCode kOneFrameTooMany{"one-frame-too-many"};
inline constexpr MessageCode kNoPrimaryImage{"no-primary-image"};
inline constexpr MessageCode kExifUnreadable{"exif-unreadable"};
inline constexpr MessageCode kImageHeaderTooLong{"image-header-too-long"};
inline constexpr MessageCode kNoImageHeader{"no-image-header"};
inline constexpr MessageCode kTagsNeedTooMuchMemory{"tags-need-too-much-memory"};
inline constexpr MessageCode kTooManyDirectories{"too-many-directories"};
inline constexpr MessageCode kIptcUnreadable{"iptc-unreadable"};
inline constexpr MessageCode kXmpUnreadable{"xmp-unreadable"};
inline constexpr MessageCode kJpegBroken{"jpeg-broken"};
inline constexpr MessageCode kPngBroken{"png-broken"};
inline constexpr MessageCode kWebpBroken{"webp-broken"};
inline constexpr MessageCode kHeifBroken{"heif-broken"};
inline constexpr MessageCode kMetadataShared{"metadata-shared"};
inline constexpr MessageCode kPsdBroken{"psd-broken"};
inline constexpr MessageCode kJp2Broken{"jp2-broken"};
inline constexpr MessageCode kGifBroken{"gif-broken"};
inline constexpr MessageCode kGifHoldsNoTags{"gif-holds-no-tags"};
inline constexpr MessageCode kPhotoTooLarge{"photo-too-large"};
inline constexpr MessageCode kBlockTooLarge{"block-too-large"};
inline constexpr MessageCode kPhotoKindNotWritten{"photo-kind-not-written"};
inline constexpr MessageCode kRawNeedsExif{"raw-needs-exif"};

// Notes on a photo that was written.
inline constexpr MessageCode kUnreadableXmpRemoved{"unreadable-xmp-removed"};
inline constexpr MessageCode kUnreadableXmpKept{"unreadable-xmp-kept"};
inline constexpr MessageCode kFurtherImageKept{"further-image-kept"};
inline constexpr MessageCode kPropertiesNotWritten{"properties-not-written"}; ///< names
inline constexpr MessageCode kThermalDataKept{"thermal-data-kept"};
inline constexpr MessageCode kMotionVideoKept{"motion-video-kept"};
inline constexpr MessageCode kMotionVideoHoldsPlace{"motion-video-holds-place"};

} // namespace clipheave::platform
