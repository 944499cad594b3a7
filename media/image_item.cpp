// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/image_item.h"

namespace clipheave::media {

ImageRepresentationType IKImageItem::imageRepresentationType() const {
    if (fileType == u"Image")
        return ImageRepresentationType::Path;
    if (fileType == u"Movie")
        return ImageRepresentationType::MoviePath;
    return ImageRepresentationType::QuickLook;
}

} // namespace clipheave::media
