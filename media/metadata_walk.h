// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

namespace clipheave::media {

/// Which table of identifiers a walk uses.
enum class WalkTable {
    Video,         ///< a video given by its own path
    VideoInFolder, ///< Deliberate: a video met in a folder takes make, model, description and
                   ///< producer from fewer identifiers
    Audio,         ///< MP3 and every other audio but WAV, FLAC, AU
    AiffAudio,     ///< the audio table and the AIFF/CAF info keys
};

/// Walks the items in order into the fields that kFields gives for their identifiers; a later item
/// overwrites an earlier one of the same field.
void applyMetadata(IKImageItem& item, const QList<platform::AVMetadataItem>& metadata,
                   WalkTable table);

} // namespace clipheave::media
