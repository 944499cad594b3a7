// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/photo_change.h"

#include <functional>

namespace clipheave::platform {

/// Returns the block with the change made in the metadata of the JPEG thumbnails that it holds:
/// some editors put that of the whole photo there. It takes the space it had; what does not fit or
/// cannot be read is filled with zeros. `changer`: changes a block.
[[nodiscard]] QByteArray withChangedThumbnails(
    QByteArray block, const PhotoChange& change,
    const std::function<Result<QByteArray>(const QByteArray&, const PhotoChange&)>& changer);

} // namespace clipheave::platform
