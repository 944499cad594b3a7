// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>
#include <QtGlobal>

namespace clipheave::photo {

/// Keeps the images that are decoded at the same time within 100 million pixels, about 1 GB,
/// however many cores there are: a share waits until there is room for it. One that is larger than
/// all of it waits until it is alone. Any thread; a thread holds at most one.
class PixelShare {
public:
    explicit PixelShare(QSize pixels);
    PixelShare(const PixelShare&) = delete;
    PixelShare& operator=(const PixelShare&) = delete;
    ~PixelShare();

private:
    qint64 m_pixels;
};

} // namespace clipheave::photo
