// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/pixel_budget.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace clipheave::photo {

namespace {

constexpr qint64 kAllPixels = 100'000'000;

struct Budget {
    std::mutex mutex;
    std::condition_variable changed;
    qint64 left = kAllPixels;
};

Budget& budget() {
    static Budget shared;
    return shared;
}

} // namespace

PixelShare::PixelShare(QSize pixels)
    : m_pixels(std::clamp<qint64>(qint64{pixels.width()} * pixels.height(), 0, kAllPixels)) {
    std::unique_lock lock(budget().mutex);
    budget().changed.wait(lock, [this] { return budget().left >= m_pixels; });
    budget().left -= m_pixels;
}

PixelShare::~PixelShare() {
    {
        const std::lock_guard lock(budget().mutex);
        budget().left += m_pixels;
    }
    budget().changed.notify_all();
}

} // namespace clipheave::photo
