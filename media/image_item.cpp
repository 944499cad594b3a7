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

ItemPointer changedCopy(const IKImageItem& item, const ItemChange& change) {
    auto copy = std::make_shared<IKImageItem>(item);
    change(*copy);
    return copy;
}

} // namespace clipheave::media
