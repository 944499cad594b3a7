// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/metadata_item.h"

#include <QDateTime>
#include <QList>

struct AVFormatContext;

namespace clipheave::platform {

/// Returns the tags of an opened file as metadata items, artwork last.
[[nodiscard]] QList<AVMetadataItem> mappedTags(const AVFormatContext& context);
/// Returns the creation time in the container's headers; invalid when there is none.
[[nodiscard]] QDateTime creationTime(const AVFormatContext& context);

} // namespace clipheave::platform
