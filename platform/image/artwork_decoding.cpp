// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/artwork_decoding.h"

#include "platform/image/heif_decoding.h"
#include "platform/image/heif_reader.h"
#include "platform/image/messages.h"

#include <QBuffer>
#include <QImageReader>

#include <algorithm>

namespace clipheave::platform {

namespace {

constexpr qint64 kMostArtworkPixels = 100'000'000;

} // namespace

void allowLargeImages() {
    // 16 bits for each of four components are the most that a pixel takes.
    constexpr qint64 kBytes = kMostArtworkPixels * 8;
    static const bool allowed = [] {
        QImageReader::setAllocationLimit(static_cast<int>(kBytes >> 20) + 1);
        return true;
    }();
    static_cast<void>(allowed);
}

bool hasTooManyPixels(QSize size) {
    return size.isValid() && qint64{size.width()} * size.height() > kMostArtworkPixels;
}

QSize jpegFraction(QSize size, int side) {
    constexpr int kSteps = 8;
    const int longest = std::max({size.width(), size.height(), 1});
    const int steps = std::clamp((kSteps * side + longest - 1) / longest, 1, kSteps);
    const auto part = [steps](int whole) {
        return static_cast<int>((qint64{whole} * steps + kSteps - 1) / kSteps);
    };
    return {part(size.width()), part(size.height())};
}

Result<QImage> decodedArtwork(const QByteArray& bytes, MessageCode operation, const QString& path) {
    if (isHeif(bytes))
        return decodedHeif(bytes, operation, path);
    allowLargeImages();
    QBuffer input;
    input.setData(bytes);
    input.open(QIODevice::ReadOnly);
    QImageReader reader(&input);
    reader.setAutoTransform(true);
    if (hasTooManyPixels(reader.size()))
        return failure(ErrorCode::LimitExceeded, operation, path, kTooManyPixels);
    QImage image = reader.read();
    if (image.isNull())
        return failure(ErrorCode::InvalidData, operation, path, reader.errorString());
    return image;
}

} // namespace clipheave::platform
