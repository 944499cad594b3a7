// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/xmp_synonyms.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace clipheave::platform {

namespace {

constexpr char kExif[] = "http://ns.adobe.com/exif/1.0/";
constexpr char kExifEx[] = "http://cipa.jp/exif/1.0/";
constexpr char kAux[] = "http://ns.adobe.com/exif/1.0/aux/";
constexpr char kTiff[] = "http://ns.adobe.com/tiff/1.0/";
constexpr char kDc[] = "http://purl.org/dc/elements/1.1/";
constexpr char kXmp[] = "http://ns.adobe.com/xap/1.0/";
constexpr char kPhotoshop[] = "http://ns.adobe.com/photoshop/1.0/";
constexpr char kIptcCore[] = "http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/";
constexpr char kIptcExt[] = "http://iptc.org/std/Iptc4xmpExt/2008-02-29/";
constexpr char kGeo[] = "http://www.w3.org/2003/01/geo/wgs84_pos#";
constexpr char kDrone[] = "http://www.dji.com/drone-dji/1.0/";

bool isIn(const XmpName& name, const char* space) {
    return name.space == QLatin1String(space);
}

/// Every name space may hold a place, and structures within properties do.
bool isPlace(const XmpName& name) {
    const auto says = [&](const char* word) {
        return name.name.contains(QLatin1String(word), Qt::CaseInsensitive);
    };
    return name.name.startsWith(QLatin1String("GPS"), Qt::CaseInsensitive) || isIn(name, kGeo) ||
           says("latitude") || says("longitude") ||
           (isIn(name, kDrone) && name.name.endsWith(QLatin1String("Altitude")));
}

bool isExif(const XmpName& name) {
    return ((isIn(name, kExif) || isIn(name, kExifEx) || isIn(name, kAux)) && !isPlace(name)) ||
           (isIn(name, kXmp) && name.name == QLatin1String("CreateDate")) ||
           (isIn(name, kPhotoshop) && name.name == QLatin1String("DateCreated"));
}

/// What of the name space repeats IPTC: the editing history and the colours of a document do not.
/// Source: IPTC Photo Metadata Standard 2022.1, XMP properties.
constexpr std::array kIptcOfPhotoshop{u"AuthorsPosition",
                                      u"CaptionWriter",
                                      u"Category",
                                      u"City",
                                      u"Country",
                                      u"Credit",
                                      u"DateCreated",
                                      u"Headline",
                                      u"Instructions",
                                      u"LegacyIPTCDigest",
                                      u"Source",
                                      u"State",
                                      u"Urgency",
                                      u"SupplementalCategories",
                                      u"TransmissionReference"};

bool isIptc(const XmpName& name) {
    static constexpr std::array kOfDc{u"subject", u"title", u"creator", u"description", u"rights"};
    if (isIn(name, kDc))
        return std::any_of(kOfDc.begin(), kOfDc.end(),
                           [&](const char16_t* one) { return name.name == QStringView(one); });
    if (isIn(name, kPhotoshop))
        return std::any_of(kIptcOfPhotoshop.begin(), kIptcOfPhotoshop.end(),
                           [&](const char16_t* one) { return name.name == QStringView(one); });
    return isIn(name, kIptcCore) || isIn(name, kIptcExt);
}

/// Properties that repeat a tag. Source: Metadata Working Group Guidelines 2.0, 5.
struct Synonym {
    const char* key; ///< in the property dictionaries
    const char* space;
    const char* name;
};
constexpr Synonym kTagSynonyms[] = {
    {"Artist", kTiff, "Artist"},
    {"Artist", kDc, "creator"},
    {"ImageDescription", kTiff, "ImageDescription"},
    {"ImageDescription", kDc, "description"},
    {"Copyright", kTiff, "Copyright"},
    {"Copyright", kDc, "rights"},
    {"Make", kTiff, "Make"},
    {"Model", kTiff, "Model"},
    {"UserComment", kExif, "UserComment"},
    {"LensMake", kExifEx, "LensMake"},
    {"LensModel", kExifEx, "LensModel"},
    {"LensModel", kAux, "Lens"},
};
constexpr Synonym kDateSynonyms[] = {
    {"DateTimeOriginal", kExif, "DateTimeOriginal"},
    {"DateTimeOriginal", kPhotoshop, "DateCreated"},
    {"DateTimeDigitized", kExif, "DateTimeDigitized"},
    {"DateTimeDigitized", kXmp, "CreateDate"},
};

/// "2025:06:14 21:36:20" as "2025-06-14T21:36:20".
QString xmpDate(const QString& text) {
    QString date = text;
    if (date.size() >= 19 && date[4] == u':' && date[7] == u':' && date[10] == u' ') {
        date[4] = date[7] = u'-';
        date[10] = u'T';
    }
    return date;
}

/// Degrees and minutes with the letter: "63,24.246000N".
QString xmpDegrees(double degrees, const QString& letter) {
    const double value = std::abs(degrees);
    const int whole = static_cast<int>(value);
    return QStringLiteral("%1,%2%3").arg(whole).arg((value - whole) * 60, 0, 'f', 6).arg(letter);
}

const AskedTag* find(const std::vector<AskedTag>& tags, const char* name) {
    const auto found = std::find_if(tags.begin(), tags.end(), [name](const AskedTag& tag) {
        return tag.name == QLatin1String(name);
    });
    return found != tags.end() ? &*found : nullptr;
}

QStringList textsOf(const AskedTag& tag) {
    const QString text = tag.value.toString();
    return text.isEmpty() ? QStringList() : QStringList{text};
}

} // namespace

XmpSynonyms::XmpSynonyms(const PhotoChange& change)
    : m_exif(change.dropsExif), m_gps(change.dropsGps), m_tiff(change.dropsTiff),
      m_iptc(change.dropsIptc) {
    renewTags(change);
    renewPlace(change);
    if (const auto title = change.iptc.find(5); title != change.iptc.end())
        renew(kDc, "title", title->second);
    if (const auto keywords = change.iptc.find(25); keywords != change.iptc.end())
        renew(kDc, "subject", keywords->second);
}

void XmpSynonyms::renewTags(const PhotoChange& change) {
    for (const auto* tags : {&change.image, &change.exif}) {
        for (const Synonym& synonym : kTagSynonyms)
            if (const AskedTag* tag = find(*tags, synonym.key))
                renew(synonym.space, synonym.name, textsOf(*tag));
        for (const Synonym& synonym : kDateSynonyms)
            if (const AskedTag* tag = find(*tags, synonym.key))
                renew(synonym.space, synonym.name,
                      tag->value.toString().isEmpty()
                          ? QStringList()
                          : QStringList{xmpDate(tag->value.toString())});
    }
}

void XmpSynonyms::renewPlace(const PhotoChange& change) {
    const AskedTag* latitude = find(change.gps, "Latitude");
    const AskedTag* longitude = find(change.gps, "Longitude");
    m_movesPlace = latitude != nullptr || longitude != nullptr;
    const auto letter = [&](const char* name) {
        const AskedTag* tag = find(change.gps, name);
        return tag != nullptr ? tag->value.toString() : QString();
    };
    if (latitude != nullptr)
        renew(kExif, "GPSLatitude",
              {xmpDegrees(latitude->value.toDouble(), letter("LatitudeRef"))});
    if (longitude != nullptr)
        renew(kExif, "GPSLongitude",
              {xmpDegrees(longitude->value.toDouble(), letter("LongitudeRef"))});
    if (const AskedTag* altitude = find(change.gps, "Altitude"))
        renew(kExif, "GPSAltitude",
              {QStringLiteral("%1/1000").arg(qRound64(altitude->value.toDouble() * 1000))});
    if (const AskedTag* side = find(change.gps, "AltitudeRef"))
        renew(kExif, "GPSAltitudeRef", textsOf(*side));
    const AskedTag* date = find(change.gps, "DateStamp");
    const AskedTag* time = find(change.gps, "TimeStamp");
    if (date != nullptr && time != nullptr)
        renew(kExif, "GPSTimeStamp",
              {xmpDate(date->value.toString() + u' ' + time->value.toString()) + u'Z'});
    else if (date != nullptr || time != nullptr)
        renew(kExif, "GPSTimeStamp", {}); // half of it would be of another moment
}

void XmpSynonyms::renew(const char* space, const char* name, const QStringList& texts) {
    m_renewed.insert(QLatin1String(space) + QLatin1String(name), texts);
}

bool XmpSynonyms::isEmpty() const {
    return !m_exif && !m_gps && !m_tiff && !m_iptc && !m_movesPlace && m_renewed.isEmpty();
}

bool XmpSynonyms::removes(const XmpName& name) const {
    if (const auto found = m_renewed.find(name.space + name.name); found != m_renewed.end())
        return found->isEmpty();
    return (m_exif && isExif(name)) || (m_gps && isPlace(name)) || (m_iptc && isIptc(name)) ||
           (m_tiff && isIn(name, kTiff) && name.name != QLatin1String("Orientation")) ||
           (m_movesPlace && isPlace(name) && !isIn(name, kExif));
}

const QStringList* XmpSynonyms::renewed(const XmpName& name) const {
    const auto found = m_renewed.find(name.space + name.name);
    return found != m_renewed.end() ? &*found : nullptr;
}

} // namespace clipheave::platform
