// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"
#include "tests/testkit/testkit.h"

#include <QImage>

#include <vector>

namespace clipheave::app {

/// An item with its texts; `path` names a file that need not exist.
inline media::MutableItemPointer listItem(const QString& path, const QString& artist = {}) {
    auto item = std::make_shared<media::IKImageItem>();
    item->filePath = path;
    item->fileName = path.mid(path.lastIndexOf(u'/') + 1);
    item->fileArist = artist;
    item->fileSize = u"1.00 MB"_s;
    return item;
}

inline std::vector<media::ItemPointer> listItems(int count) {
    std::vector<media::ItemPointer> items;
    items.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        items.push_back(listItem(u"/videos/clip %1.mp4"_s.arg(i)));
    return items;
}

/// Left half of one colour, right half of another.
inline QImage twoColours(const QSize& size, const QColor& left, const QColor& right) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(left);
    for (int y = 0; y < size.height(); ++y)
        for (int x = size.width() / 2; x < size.width(); ++x)
            image.setPixelColor(x, y, right);
    return image;
}

} // namespace clipheave::app
