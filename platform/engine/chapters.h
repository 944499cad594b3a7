// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/ffmpeg.h"

namespace clipheave::platform {

/// Gives `target`, whose header is not written yet, the chapters of `source`, counted from where
/// its streams begin. Chapters that lie before that, or end before they start, are left out.
void copyChapters(const AVFormatContext& source, AVFormatContext& target);

} // namespace clipheave::platform
