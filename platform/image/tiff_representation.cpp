// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/tiff_representation.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>

namespace clipheave::platform {

namespace {

constexpr qint64 kMostCoverPixels = 100'000'000;
constexpr int kLzw = 1;

Result<EncodedPicture> transcoded(const EncodedPicture& picture, const char* format) {
    const QString operation = QStringLiteral("convert the picture");
    QByteArray bytes = picture.bytes();
    QBuffer input(&bytes);
    input.open(QIODevice::ReadOnly);
    QImageReader reader(&input);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isValid() && qint64{size.width()} * size.height() > kMostCoverPixels)
        return failure(ErrorCode::LimitExceeded, operation, {}, QStringLiteral("too many pixels"));
    const QImage image = reader.read();
    if (image.isNull())
        return failure(ErrorCode::InvalidData, operation, {}, reader.errorString());
    QBuffer output;
    output.open(QIODevice::WriteOnly);
    QImageWriter writer(&output, format);
    if (format == QByteArrayView("tiff"))
        writer.setCompression(kLzw);
    if (!writer.write(image))
        return failure(ErrorCode::NotSupported, operation, {}, writer.errorString());
    EncodedPicture result = EncodedPicture::fromBytes(output.data());
    if (result.isNull())
        return failure(ErrorCode::Io, operation);
    return result;
}

} // namespace

Result<EncodedPicture> TIFFRepresentation(const EncodedPicture& picture) {
    return picture.format() == u"tiff" ? Result<EncodedPicture>(picture)
                                       : transcoded(picture, "tiff");
}

Result<EncodedPicture> pictureForItemList(const EncodedPicture& picture) {
    const bool fits = picture.format() == u"jpeg" || picture.format() == u"png";
    return fits ? Result<EncodedPicture>(picture) : transcoded(picture, "png");
}

} // namespace clipheave::platform
