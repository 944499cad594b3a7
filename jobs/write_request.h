// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/run_settings.h"
#include "media/audio_pane.h"
#include "media/video_pane.h"

#include <optional>

namespace clipheave::jobs {

/// What a writing command gathers from the windows for one item before it starts; nothing is read
/// from them afterwards.
struct WriteRequest {
    media::ItemPointer item;
    /// The pane at that moment. All writers take the file dates from its created-date field; a save
    /// writes its fields. A front without a pane gives the item's own, ShowVideoViewWithItem().
    media::VideoPane pane;
    RunSettings settings;
    /// The audio pane at that moment, ShowAudioViewWithItem() for a front without one. Without it
    /// audio files are not written: an empty pane would take all their texts away.
    std::optional<media::AudioPane> audioPane = std::nullopt;
};

} // namespace clipheave::jobs
