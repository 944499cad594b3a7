// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/date_stamp.h"

#include "photo/messages.h"
#include "photo/pixel_budget.h"
#include "platform/foundation/atomic_file.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "platform/image/photo_decoding.h"
#include "platform/media/export/output_place.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageWriter>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace clipheave::photo {

using namespace platform;

namespace {

constexpr int kQuality = 10;      // compression factor 0.1
constexpr int kPlainQuality = 75; // no factor given: the encoder's own

/// Null when it is absent, or of a clock that was never set.
QString exifDate(const QVariantMap& properties, const char16_t* key) {
    const QString text = properties.value(QStringLiteral("{Exif}"))
                             .toMap()
                             .value(QString::fromUtf16(key))
                             .toString();
    const bool isSet = std::any_of(text.begin(), text.end(), [](QChar letter) {
        return letter != u'0' && letter != u':' && letter != u'-' && !letter.isSpace();
    });
    return isSet ? text : QString();
}

/// Date and time of the system's text of a date, without its zone.
QString systemDate(const QDateTime& date) {
    return dateDescription(date).section(u' ', 0, 1);
}

/// Null, with the reason logged as ever, when the encoder fails.
Result<QByteArray> encodedJpeg(const QImage& image, int quality, const QString& photo) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    if (!writer.write(image))
        return failure(ErrorCode::Io, kStampDate, photo, writer.errorString());
    return buffer.data();
}

Result<void> writeFile(const QString& output, const QByteArray& bytes, const QString& photo) {
    const OutputPlace place(output);
    if (auto usable = place.check(); !usable)
        return usable;
    place.removeLink();
    auto file = AtomicFile::create(output, static_cast<std::uint64_t>(bytes.size()));
    if (!file)
        return tl::unexpected(file.error());
    file->takePermissionsOf(FileReference::ofPath(photo));
    if (auto written = file->write(bytes); !written)
        return written;
    return file->commit();
}

bool isQuarterTurn(int orientation) {
    return orientation == 6 || orientation == 8;
}

} // namespace

QString recordedDate(const QVariantMap& properties, const QDateTime& fileCreation) {
    for (const char16_t* key : {u"DateTimeOriginal", u"DateTimeDigitized"})
        if (const QString text = exifDate(properties, key); !text.isNull())
            return text;
    return systemDate(fileCreation);
}

std::optional<QDateTime> captureDate(const QVariantMap& properties, const QDateTime& fileCreation) {
    const QString original = exifDate(properties, u"DateTimeOriginal");
    const bool hasBoth = !original.isNull() && !exifDate(properties, u"DateTimeDigitized").isNull();
    return parseDateText(hasBoth ? original : systemDate(fileCreation));
}

QString stampedPath(const QString& photo, const QString& folder) {
    const QString name = lastPathComponent(photo);
    return appendingPathComponent(folder, deletingPathExtension(name) + QStringLiteral("_date.") +
                                              pathExtension(name));
}

bool isWrittenPlain(const QString& output) {
    return pathExtension(output).compare(u"png", Qt::CaseInsensitive) == 0;
}

DateStamp::DateStamp(QString photo, const QVariantMap& properties, const QString& date,
                     StampStyle style)
    : m_photo(std::move(photo)), m_pixels(properties.value(QStringLiteral("PixelWidth")).toInt(),
                                          properties.value(QStringLiteral("PixelHeight")).toInt()),
      m_orientation(properties.value(QStringLiteral("Orientation"), 1).toInt()),
      m_text(stampText(date, style.layout)), m_style(std::move(style)) {
}

Result<Notes> DateStamp::write(const QString& output, const Progress& progress) const {
    constexpr double kDecoded = 0.5, kDrawn = 0.6;
    const PixelShare share(m_pixels);
    const auto goesOn = [&](double done) { return !progress || progress(done); };
    const auto stopped = [this] { return failure(ErrorCode::Cancelled, kStampDate, m_photo); };
    if (!goesOn(0))
        return stopped();
    auto reader = FileReader::open(m_photo);
    if (!reader)
        return tl::unexpected(reader.error());
    CarriedTags tags = CarriedTags::of(*reader);
    auto image = decodedPhoto(*reader, {m_orientation, tags.isAdobeRgb()});
    if (!image)
        return tl::unexpected(image.error());
    if (!goesOn(kDecoded))
        return stopped();
    {
        QPainter painter(&*image);
        drawStamp(painter, image->size(), m_text, m_style);
    }
    image->setColorSpace(QColorSpace::SRgb);
    if (!goesOn(kDrawn))
        return stopped();
    auto written = compressPhotowithFilePath(output, *image, tags);
    if (!written)
        log(LogLevel::Info, QStringLiteral("CGImageDestinationFinalize failed"), m_photo);
    return written;
}

Result<Notes> DateStamp::compressPhotowithFilePath(const QString& output, const QImage& stamped,
                                                   CarriedTags& tags) const {
    if (isWrittenPlain(output))
        return CompressPngWithImageData_withImagePath(stamped, output);
    return CompressJpgWithImageData_withImagePath_withMetaData_withorigiPath(stamped, output, tags,
                                                                             m_photo);
}

Result<Notes> DateStamp::CompressJpgWithImageData_withImagePath_withMetaData_withorigiPath(
    const QImage& stamped, const QString& output, CarriedTags& tags, const QString& photo) const {
    const auto jpeg = encodedJpeg(stamped, kQuality, photo);
    if (!jpeg)
        return tl::unexpected(jpeg.error());
    describe(tags, stamped.size());
    const CarriedTags::Segments segments = tags.segments();
    const auto written = writeFile(output, withSegments(*jpeg, segments.bytes), photo);
    return written ? Result<Notes>(segments.leftOut) : tl::unexpected(written.error());
}

/// Deliberate: the file is named ".png" and holds a JPEG image, as it always has.
Result<Notes> DateStamp::CompressPngWithImageData_withImagePath(const QImage& stamped,
                                                                const QString& output) const {
    const auto jpeg = encodedJpeg(stamped, kPlainQuality, m_photo);
    if (!jpeg)
        return tl::unexpected(jpeg.error());
    const auto written = writeFile(output, *jpeg, m_photo);
    return written ? Result<Notes>(Notes()) : tl::unexpected(written.error());
}

/// Deliberate: of a photo with a quarter turn both sizes in the metadata become its old width,
/// whatever the image has. Of others the metadata states what the image has, where it states a
/// size.
void DateStamp::describe(CarriedTags& tags, QSize stamped) const {
    tags.describeUprightSrgb();
    if (isQuarterTurn(m_orientation)) {
        log(LogLevel::Info, QStringLiteral("%1,=%2").arg(m_pixels.width()).arg(m_pixels.height()),
            m_photo);
        tags.setPixelDimensions({m_pixels.width(), m_pixels.width()});
    } else {
        tags.setPixelDimensions(stamped);
    }
}

} // namespace clipheave::photo
