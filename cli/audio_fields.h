// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/audio_pane.h"

namespace clipheave::cli {

/// A field of the audio pane under its names on the command line.
struct AudioFieldName {
    const char* name;       ///< "title"
    const char* recordName; ///< of the record, "fileTitle"
    QString media::AudioPaneTexts::*text;
};
/// By either name; null when the audio pane has no such field.
[[nodiscard]] const AudioFieldName* audioField(const QString& name);

} // namespace clipheave::cli
