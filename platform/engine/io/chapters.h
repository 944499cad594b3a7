// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"
#include "platform/foundation/message.h"

namespace clipheave::platform {

/// Gives `target`, whose header is not written yet, the chapters of `source`, counted from where
/// its streams start and cut at the duration where the source gives one. Leaves out chapters that
/// lie before that or end before they start. Returns a note on those that begin behind the end.
Notes copyChapters(const AVFormatContext& source, AVFormatContext& target);
/// Does the same with a file that it opens, cut at `seconds`. A file that cannot be read has none.
void copyChaptersOfFile(const QString& path, double seconds, AVFormatContext& target);

} // namespace clipheave::platform
