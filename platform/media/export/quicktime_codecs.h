// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_facts.h"

#include <QStringList>

namespace clipheave::platform {

/// Returns the names of the tracks' codecs that only QuickTime movies define, each once and the
/// same in every language: not every player takes them in a file of the MP4 family. The
/// four-character codes are those of QuickTime's file format ("Video/Audio Sample Description")
/// that the MP4 Registration Authority lists for QuickTime alone.
[[nodiscard]] QStringList codecsOfQuickTimeAlone(const std::vector<AVAssetTrack>& tracks);

} // namespace clipheave::platform
