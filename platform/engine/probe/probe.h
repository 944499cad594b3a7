// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_facts.h"

struct AVFormatContext;

namespace clipheave::platform {

/// See MediaEngine::probe.
[[nodiscard]] Result<MediaFacts> probeFile(FileReader& reader);
/// The tags of an opened file as metadata items, frames last.
[[nodiscard]] QList<AVMetadataItem> mappedTags(const AVFormatContext& context);
/// The creation time that the container announces; invalid when there is none.
[[nodiscard]] QDateTime creationTime(const AVFormatContext& context);

} // namespace clipheave::platform
