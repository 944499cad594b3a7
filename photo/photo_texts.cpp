// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/photo_texts.h"

#include "media/position_text.h"
#include "photo/messages.h"
#include "platform/image/cg_image_source.h"

#include <QDate>
#include <QRegularExpression>
#include <QTime>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace clipheave::photo {

using media::PositionPart;
using platform::Message;

namespace {

double numberOf(const QString& typed, PositionPart part) {
    return media::positionNumber(typed, part).value_or(QString()).toDouble();
}

/// Positive, in single precision.
double magnitude(double value) {
    return static_cast<double>(std::abs(static_cast<float>(value)));
}

std::optional<QTime> timeOf(const QString& typed) {
    static const QRegularExpression form(
        QStringLiteral(R"(^(\d{1,2}):(\d{1,2}):(\d{1,2})(?:[.,](\d{1,6}))?$)"));
    const auto match = form.match(typed.trimmed());
    const QTime time(match.captured(1).toInt(), match.captured(2).toInt(),
                     match.captured(3).toInt());
    return match.hasMatch() && time.isValid() ? std::optional(time) : std::nullopt;
}

/// Returns "HH:mm:ss", with six decimals where asked for.
QString timeText(const QString& typed, bool withFraction) {
    const auto time = timeOf(typed);
    if (!time)
        return {};
    static const QRegularExpression fraction(QStringLiteral(R"([.,](\d{1,6})\s*$)"));
    const QString digits = fraction.match(typed).captured(1).leftJustified(6, u'0');
    const QString seconds = time->toString(QStringLiteral("HH:mm:ss"));
    return withFraction ? seconds + u'.' + digits : seconds;
}

/// Returns a date of the calendar in the form that tags have; null for another text.
QString dayText(const QString& typed) {
    const QString text = typed.trimmed();
    for (const char16_t* form : {u"yyyy:MM:dd", u"yyyy-MM-dd"})
        if (const QDate day = QDate::fromString(text, QString::fromUtf16(form)); day.isValid())
            return day.toString(QStringLiteral("yyyy:MM:dd"));
    return {};
}

/// Returns date and time in the form that tags have; null for another text. A tag has no zone: an
/// hour that this computer's zone leaves out is one like others.
QString tagDate(const QString& typed) {
    const QString text = typed.simplified();
    const QString day = dayText(text.section(u' ', 0, 0)), clock = text.section(u' ', 1);
    const QTime time = QTime::fromString(clock, QStringLiteral("HH:mm:ss"));
    return day.isNull() || !time.isValid() ? QString() : day + u' ' + clock;
}

/// Returns whether the text is what cameras write whose clock was never set.
bool isOfUnsetClock(const QString& text) {
    return std::all_of(text.begin(), text.end(),
                       [](QChar c) { return c == u'0' || c == u':' || c.isSpace(); });
}

QStringList keywordsOf(const QString& typed) {
    QStringList keywords;
    for (const QString& word : typed.split(u',')) {
        const QString keyword = word.trimmed();
        if (!keyword.isEmpty() && !keywords.contains(keyword))
            keywords.append(keyword);
    }
    return keywords;
}

} // namespace

namespace {

QString textAt(const QVariantMap& dictionary, const char* key) {
    const QVariant value = dictionary.value(QLatin1String(key));
    return value.typeId() == QMetaType::QVariantList
               ? value.toStringList().join(QLatin1String(", "))
               : value.toString();
}

/// A thousandth of a metre, which is less than single precision keeps of a degree.
constexpr int kPlaceDecimals = 8;

/// Returns a number with the sign that its letter stands for.
QString signedAt(const QVariantMap& gps, const char* key, const char* letterKey,
                 QLatin1String negative) {
    static const QRegularExpression trailingZeros(QStringLiteral(R"(\.?0+$)"));
    const QVariant value = gps.value(QLatin1String(key));
    if (!value.isValid())
        return {};
    QString number = QString::number(value.toDouble(), 'f', kPlaceDecimals);
    number.remove(trailingZeros);
    return textAt(gps, letterKey) == negative ? u'-' + number : number;
}

PlaceTexts placeOf(const QVariantMap& gps) {
    return {signedAt(gps, "Latitude", "LatitudeRef", QLatin1String("S")),
            signedAt(gps, "Longitude", "LongitudeRef", QLatin1String("W")),
            signedAt(gps, "Altitude", "AltitudeRef", QLatin1String("1")), textAt(gps, "DateStamp"),
            textAt(gps, "TimeStamp")};
}

} // namespace

platform::Result<PaneTexts> paneOfPhoto(const QString& path) {
    const auto source = platform::CGImageSource::createWithPath(path);
    if (!source)
        return tl::unexpected(source.error());
    return paneOfProperties(source->properties());
}

PaneTexts paneOfProperties(const QVariantMap& properties) {
    const auto block = [&](const char* name) {
        return properties.value(QLatin1String(name)).toMap();
    };
    const QVariantMap tiff = block("{TIFF}"), exif = block("{Exif}"), iptc = block("{IPTC}");
    PaneTexts pane;
    pane.artistlab = textAt(tiff, "Artist");
    pane.imageDescrilab = textAt(tiff, "ImageDescription");
    pane.copyrightlab = textAt(tiff, "Copyright");
    pane.commentslab = textAt(exif, "UserComment");
    pane.keywordslab = textAt(iptc, "Keywords");
    pane.titlelab = textAt(iptc, "ObjectName");
    pane.cameraMakelab = textAt(tiff, "Make");
    pane.cameraModelab = textAt(tiff, "Model");
    pane.cameraDatelab = textAt(exif, "DateTimeOriginal");
    pane.place = placeOf(block("{GPS}"));
    return pane;
}

QVariantMap withoutOwnKeywords(QVariantMap properties, const QString& typed, const QString& photo) {
    const QString block = QStringLiteral("{IPTC}");
    const auto own = paneOfPhoto(photo);
    QVariantMap iptc = properties.value(block).toMap();
    if (own && own->keywordslab == typed && iptc.remove(QStringLiteral("Keywords")) > 0)
        properties.insert(block, iptc);
    return properties;
}

std::optional<Message> placeFault(const PlaceTexts& place, bool needsStamps) {
    const bool misses =
        place.latitudelab.isEmpty() || place.longtitudelab.isEmpty() ||
        place.altitudelab.isEmpty() ||
        (needsStamps && (place.dateStamplab.isEmpty() || place.timeStamplab.isEmpty()));
    if (misses)
        return Message(kValueEmpty);
    for (const auto& [text, part, fault] :
         {std::tuple(place.latitudelab, PositionPart::Latitude, kPhotoLatitudeNotInRange),
          std::tuple(place.longtitudelab, PositionPart::Longitude, kPhotoLongitudeNotInRange),
          std::tuple(place.altitudelab, PositionPart::Altitude, kPhotoAltitudeNotInRange)})
        if (!media::positionNumber(text, part))
            return Message(fault, {text});
    if (!place.dateStamplab.isEmpty() && dayText(place.dateStamplab).isNull())
        return Message(kNoDateStamp, {place.dateStamplab});
    if (!place.timeStamplab.isEmpty() && !timeOf(place.timeStamplab))
        return Message(kNoTimeStamp, {place.timeStamplab});
    return std::nullopt;
}

std::optional<Message> paneFault(const PaneTexts& pane) {
    if (pane.gpsInfoChange)
        if (auto fault = placeFault(pane.place, false))
            return fault;
    if (pane.cameraInfoChange && !isOfUnsetClock(pane.cameraDatelab) &&
        tagDate(pane.cameraDatelab).isNull())
        return Message(kNoCameraDate, {pane.cameraDatelab});
    return std::nullopt;
}

QVariantMap positionProperties(const PlaceTexts& place) {
    const double latitude = numberOf(place.latitudelab, PositionPart::Latitude);
    const double longitude = numberOf(place.longtitudelab, PositionPart::Longitude);
    const double altitude = numberOf(place.altitudelab, PositionPart::Altitude);
    return {
        {QStringLiteral("GPSVersion"), QStringLiteral("2.2.0.0")},
        {QStringLiteral("Latitude"), magnitude(latitude)},
        {QStringLiteral("LatitudeRef"), latitude < 0 ? QStringLiteral("S") : QStringLiteral("N")},
        {QStringLiteral("Longitude"), magnitude(longitude)},
        {QStringLiteral("LongitudeRef"), longitude < 0 ? QStringLiteral("W") : QStringLiteral("E")},
        {QStringLiteral("Altitude"), magnitude(altitude)},
        {QStringLiteral("AltitudeRef"), altitude < 0 ? QStringLiteral("1") : QStringLiteral("0")},
    };
}

QVariantMap gpsProperties(const PlaceTexts& place, bool withFraction) {
    QVariantMap gps = positionProperties(place);
    gps.insert(QStringLiteral("SpeedRef"), QStringLiteral("K"));
    gps.insert(QStringLiteral("Speed"), 0);
    gps.insert(QStringLiteral("TrackRef"), QStringLiteral("T"));
    gps.insert(QStringLiteral("Track"), 0);
    // Without a stamp the photo's own stays.
    if (!place.timeStamplab.isEmpty())
        gps.insert(QStringLiteral("TimeStamp"), timeText(place.timeStamplab, withFraction));
    if (!place.dateStamplab.isEmpty())
        gps.insert(QStringLiteral("DateStamp"), dayText(place.dateStamplab));
    return gps;
}

QVariantMap paneProperties(const PaneTexts& pane) {
    QVariantMap tiff, exif, properties;
    if (pane.basicInfoChange) {
        tiff.insert(QStringLiteral("Artist"), pane.artistlab);
        tiff.insert(QStringLiteral("ImageDescription"), pane.imageDescrilab);
        tiff.insert(QStringLiteral("Copyright"), pane.copyrightlab);
        exif.insert(QStringLiteral("UserComment"), pane.commentslab);
        properties.insert(QStringLiteral("{IPTC}"),
                          QVariantMap{{QStringLiteral("Keywords"), keywordsOf(pane.keywordslab)},
                                      {QStringLiteral("ObjectName"), pane.titlelab}});
    }
    if (pane.cameraInfoChange) {
        tiff.insert(QStringLiteral("Make"), pane.cameraMakelab);
        tiff.insert(QStringLiteral("Model"), pane.cameraModelab);
        const QString date =
            isOfUnsetClock(pane.cameraDatelab) ? pane.cameraDatelab : tagDate(pane.cameraDatelab);
        exif.insert(QStringLiteral("DateTimeOriginal"), date);
        exif.insert(QStringLiteral("DateTimeDigitized"), date);
        // Deliberate: the pane has no lens; make and model stand for it, as they always have.
        exif.insert(QStringLiteral("LensMake"), pane.cameraMakelab);
        exif.insert(QStringLiteral("LensModel"), pane.cameraModelab);
    }
    if (!tiff.isEmpty())
        properties.insert(QStringLiteral("{TIFF}"), tiff);
    if (!exif.isEmpty())
        properties.insert(QStringLiteral("{Exif}"), exif);
    if (pane.gpsInfoChange)
        properties.insert(QStringLiteral("{GPS}"), gpsProperties(pane.place, false));
    return properties;
}

} // namespace clipheave::photo
