// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/list_keys.h"

#include <QHash>

#include <iterator>

namespace clipheave::photo {

namespace {

/// Keys of one dictionary with values of one kind, separated by blanks.
struct KeyGroup {
    const char* dictionary;
    ListValue value;
    const char* names;
};
constexpr KeyGroup kKeyGroups[] = {
    {"{TIFF}", ListValue::Text,
     "Make Model ImageDescription Artist Copyright Software HostComputer DocumentName"},
    {"{TIFF}", ListValue::DateTime, "DateTime"},
    {"{TIFF}", ListValue::Number, "XResolution YResolution ResolutionUnit"},
    {"{TIFF}", ListValue::OfImage, "Orientation Compression PhotometricInterpretation"},
    {"{Exif}", ListValue::Text,
     "UserComment LensMake LensModel LensSerialNumber CameraOwnerName BodySerialNumber "
     "ImageUniqueID OffsetTime OffsetTimeOriginal OffsetTimeDigitized SubsecTime "
     "SubsecTimeOriginal SubsecTimeDigitized SpectralSensitivity RelatedSoundFile"},
    {"{Exif}", ListValue::DateTime, "DateTimeOriginal DateTimeDigitized"},
    {"{Exif}", ListValue::Number,
     "ExposureTime FNumber ExposureProgram SensitivityType StandardOutputSensitivity "
     "RecommendedExposureIndex ISOSpeed ISOSpeedLatitudeyyy ISOSpeedLatitudezzz "
     "CompressedBitsPerPixel ShutterSpeedValue ApertureValue BrightnessValue ExposureBiasValue "
     "MaxApertureValue SubjectDistance MeteringMode LightSource Flash FocalLength "
     "AmbientTemperature Temperature Humidity Pressure WaterDepth Acceleration "
     "CameraElevationAngle ColorSpace FlashEnergy FocalPlaneXResolution FocalPlaneYResolution "
     "FocalPlaneResolutionUnit ExposureIndex SensingMethod FileSource SceneType CustomRendered "
     "ExposureMode WhiteBalance DigitalZoomRatio FocalLenIn35mmFilm SceneCaptureType GainControl "
     "Contrast Saturation Sharpness SubjectDistRange Gamma CompositeImage"},
    {"{Exif}", ListValue::Numbers,
     "ISOSpeedRatings LensSpecification SubjectArea SubjectLocation ExifVersion FlashPixVersion "
     "CFAPattern OECF SpatialFrequencyResponse DeviceSettingDescription"},
    {"{Exif}", ListValue::OfImage, "PixelXDimension PixelYDimension ComponentsConfiguration"},
    {"{GPS}", ListValue::Version, "GPSVersion"},
    {"{GPS}", ListValue::Coordinate, "Latitude Longitude Altitude DestLatitude DestLongitude"},
    {"{GPS}", ListValue::Text,
     "LatitudeRef LongitudeRef AltitudeRef DestLatitudeRef DestLongitudeRef Satellites Status "
     "MeasureMode SpeedRef TrackRef ImgDirectionRef MapDatum DestBearingRef DestDistanceRef "
     "ProcessingMethod AreaInformation"},
    {"{GPS}", ListValue::Number,
     "DOP Speed Track ImgDirection DestBearing DestDistance Differential HPositioningError"},
    {"{GPS}", ListValue::Clock, "TimeStamp"},
    {"{GPS}", ListValue::Day, "DateStamp"},
    {"{IPTC}", ListValue::Texts,
     "Keywords Byline BylineTitle SupplementalCategory Contact Writer/Editor"},
    {"{IPTC}", ListValue::Text,
     "ObjectName Caption/Abstract CopyrightNotice City SubLocation Province/State "
     "Country/PrimaryLocationCode Country/PrimaryLocationName Headline Credit Source Category "
     "Urgency SpecialInstructions DateCreated TimeCreated DigitalCreationDate "
     "DigitalCreationTime OriginatingProgram ProgramVersion OriginalTransmissionReference "
     "EditStatus"},
};

constexpr double kLargestAltitude = 1e7; ///< metres

constexpr SignedKey kSignedKeys[] = {
    {"Latitude", "N", "S", 90},
    {"Longitude", "E", "W", 180},
    {"DestLatitude", "N", "S", 90},
    {"DestLongitude", "E", "W", 180},
    {"Altitude", "0", "1", kLargestAltitude},
};

QHash<QString, ListKey> keysByName() {
    QHash<QString, ListKey> keys;
    for (const KeyGroup& group : kKeyGroups)
        for (const QString& name : QString::fromLatin1(group.names).split(u' '))
            keys.insert(name, {name, QString::fromLatin1(group.dictionary), group.value});
    return keys;
}

} // namespace

const ListKey* listKey(const QString& name) {
    static const QHash<QString, ListKey> keys = keysByName();
    const auto found = keys.constFind(name);
    return found == keys.constEnd() ? nullptr : &*found;
}

const SignedKey* signedKey(const QString& name) {
    for (const SignedKey& row : kSignedKeys)
        if (name == QLatin1String(row.name))
            return &row;
    return nullptr;
}

QString referenceKey(const QString& name) {
    return name + QStringLiteral("Ref");
}

} // namespace clipheave::photo
