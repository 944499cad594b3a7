// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/thumbnail_cache.h"
#include "media/image_item.h"

#include <QImage>
#include <QSize>

#include <functional>

namespace clipheave::app {

/// The size and the form that a thumbnail is to have.
struct ThumbnailShape {
    QSize size; ///< device pixels
    enum Mode {
        Fit,  ///< the whole image inside the size
        Fill, ///< the middle of the image, exactly of the size
    } mode = Fit;
    int radius = 0; ///< of the corners, device pixels; Fill only
    /// Returns the shape of a tile's image: the same whatever the width of the tiles, so that no
    /// image is made again when the window is resized.
    [[nodiscard]] static ThumbnailShape ofTile() {
        return {{ThumbnailCache::kLargeSide, ThumbnailCache::kLargeSide}, Fit, 0};
    }
    friend bool operator==(const ThumbnailShape&, const ThumbnailShape&) = default;
};

/// What a thumbnail is made of; a copy of what the item says, so that a worker can have it.
struct ThumbnailSource {
    QString path;
    platform::EncodedImage artwork; ///< taken first
    double seconds = 0;             ///< duration of a video
    [[nodiscard]] static ThumbnailSource of(const media::IKImageItem& item);
};

/// A thumbnail, and what can wait until all that is looked at has been made.
struct MadeThumbnail {
    QImage image;
    /// Puts it into the thumbnail folder, while the folder's object lives; empty when it need not.
    std::function<void()> store = {};
};

/// Makes the thumbnail: of the artwork, else from the thumbnail folder, else of the file itself,
/// which can then be stored there; an image to be fitted into more than what that folder holds is
/// made of the file each time. Null when nothing can be shown (unreadable, no image, a kind that
/// is not decoded). For worker threads.
[[nodiscard]] MadeThumbnail makeThumbnail(const ThumbnailSource& source,
                                          const ThumbnailShape& shape, const ThumbnailCache& cache);

} // namespace clipheave::app
