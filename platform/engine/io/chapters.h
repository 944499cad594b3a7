// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"

namespace clipheave::platform {

/// Gives `target`, whose header is not written yet, the chapters of `source`, counted from where
/// its streams start. Leaves out chapters that lie before that or end before they start.
void copyChapters(const AVFormatContext& source, AVFormatContext& target);
/// Does the same with a file that it opens, cut at `seconds`. A file that cannot be read has none.
void copyChaptersOfFile(const QString& path, double seconds, AVFormatContext& target);

} // namespace clipheave::platform
