// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/list_content.h"
#include "photo/list_keys.h"
#include "photo/messages.h"
#include "platform/foundation/dates.h"
#include "platform/plist/messages.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QStringDecoder>

#include <cmath>
#include <optional>

namespace clipheave::photo {

using namespace platform;

namespace {

// Each conversion returns an invalid value for what has no plain meaning.

bool isNumber(const QVariant& value) {
    return value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Int ||
           (value.typeId() == QMetaType::Double && std::isfinite(value.toDouble()));
}

/// The one element of an array of one; anything else as it is.
QVariant single(const QVariant& value) {
    const bool isOne = value.typeId() == QMetaType::QVariantList && value.toList().size() == 1;
    return isOne ? value.toList().first() : value;
}

QVariant numberFrom(const QVariant& value) {
    if (isNumber(value))
        return value;
    if (value.typeId() != QMetaType::QString)
        return {};
    bool isWhole = false, isReal = false;
    const QString text = value.toString().trimmed();
    const qlonglong whole = text.toLongLong(&isWhole);
    const double real = text.toDouble(&isReal);
    if (isWhole)
        return whole;
    return isReal && std::isfinite(real) ? QVariant(real) : QVariant();
}

QVariant textFrom(const QVariant& value) {
    if (isNumber(value))
        return value.toString();
    if (value.typeId() == QMetaType::QByteArray) {
        QStringDecoder decoder(QStringDecoder::Utf8);
        const QString text = decoder(value.toByteArray());
        return decoder.hasError() || text.contains(QChar(u'\0')) ? QVariant() : QVariant(text);
    }
    return value.typeId() == QMetaType::QString ? value : QVariant();
}

/// The elements of an array, or the value as the only one; invalid when one cannot be converted.
QVariant arrayFrom(const QVariant& value, QVariant (*convert)(const QVariant& element)) {
    const bool isArray = value.typeId() == QMetaType::QVariantList;
    QVariantList elements;
    for (const QVariant& element : isArray ? value.toList() : QVariantList{value}) {
        const QVariant converted = convert(element);
        if (!converted.isValid())
            return {};
        elements.append(converted);
    }
    return elements;
}

/// The date of a list is universal time; that of a text is local to the photo.
QVariant dateTimeFrom(const QVariant& value) {
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime().toUTC().toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    const QString text = value.toString().trimmed();
    static const QRegularExpression form(
        QStringLiteral(R"(^(\d{4})[:-](\d\d)[:-](\d\d) (\d\d:\d\d:\d\d)$)"));
    const auto parts = form.match(text);
    const QDate day(parts.captured(1).toInt(), parts.captured(2).toInt(),
                    parts.captured(3).toInt());
    const QString clock = parts.captured(4);
    if (!day.isValid() || !QTime::fromString(clock, QStringLiteral("HH:mm:ss")).isValid())
        return {};
    return day.toString(QStringLiteral("yyyy:MM:dd ")) + clock;
}

QVariant dayFrom(const QVariant& value) {
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime().toUTC().toString(QStringLiteral("yyyy:MM:dd"));
    const QString text = value.toString().trimmed().replace(u'-', u':');
    const QDate day = QDate::fromString(text, QStringLiteral("yyyy:MM:dd"));
    return day.isValid() ? QVariant(text) : QVariant();
}

QVariant clockFrom(const QVariant& value) {
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime().toUTC().toString(QStringLiteral("HH:mm:ss"));
    static const QRegularExpression form(
        QStringLiteral(R"(^([01]\d|2[0-3]):[0-5]\d:[0-5]\d(\.\d{1,6})?$)"));
    const QString text = value.toString().trimmed();
    return form.match(text).hasMatch() ? QVariant(text) : QVariant();
}

QVariant coordinateFrom(const QVariant& value, const QString& name) {
    const QVariant number = numberFrom(value);
    const bool isWithin =
        number.isValid() && std::abs(number.toDouble()) <= signedKey(name)->largest;
    return isWithin ? number : QVariant();
}

QVariant numericFrom(const QVariant& value) {
    return value.typeId() == QMetaType::QVariantList ? arrayFrom(value, &numberFrom)
                                                     : numberFrom(value);
}

QVariant converted(const QVariant& value, const ListKey& key) {
    switch (key.value) {
    case ListValue::Text:
        return textFrom(single(value));
    case ListValue::Texts:
        return arrayFrom(value, &textFrom);
    case ListValue::Number:
        return numericFrom(single(value));
    case ListValue::Numbers:
        return arrayFrom(value, &numberFrom);
    case ListValue::DateTime:
        return dateTimeFrom(single(value));
    case ListValue::Day:
        return dayFrom(single(value));
    case ListValue::Clock:
        return clockFrom(single(value));
    case ListValue::Coordinate:
        return coordinateFrom(single(value), key.name);
    case ListValue::Version:
    case ListValue::OfImage:
        break;
    }
    return {};
}

/// Sorts the entries of a list into their dictionaries.
class ListReading {
public:
    void take(const QVariantMap& entries, const QString& dictionary = {}) {
        for (auto entry = entries.begin(); entry != entries.end(); ++entry)
            takeEntry(entry.key(), entry.value(), dictionary);
    }
    /// What was taken; a place is complete only now.
    ImportedList finish() {
        QVariantMap& gps = m_dictionaries[kGps];
        for (const QString& name : gps.keys())
            splitSign(gps, name);
        if (!gps.isEmpty())
            gps.insert(QStringLiteral("GPSVersion"), QStringLiteral("2.2.0.0"));
        ImportedList list;
        for (auto entry = m_dictionaries.begin(); entry != m_dictionaries.end(); ++entry)
            if (!entry->isEmpty())
                list.properties.insert(entry.key(), *entry);
        if (!m_leftOut.isEmpty())
            list.notes.append(Message(kListKeysLeftOut, {m_leftOut.join(QStringLiteral(", "))}));
        m_ofImage.removeDuplicates(); // the root repeats one
        if (!m_ofImage.isEmpty())
            list.notes.append(Message(kListKeysOfImage, {m_ofImage.join(QStringLiteral(", "))}));
        return list;
    }

private:
    static inline const QString kGps = QStringLiteral("{GPS}");

    /// `dictionary`: in which the key stands; null for a flat list.
    void takeEntry(const QString& name, const QVariant& value, const QString& dictionary) {
        if (dictionary.isNull() && name.startsWith(u'{') &&
            value.typeId() == QMetaType::QVariantMap) {
            if (isWritten(name))
                return take(value.toMap(), name);
            m_ofImage.append(name); // of the format, or the maker's
            return;
        }
        const ListKey* key = listKey(name);
        // The root of the list of everything repeats what describes the image.
        if (dictionary.isNull() && isImageFact(name))
            return;
        if (!key || (!dictionary.isNull() && key->dictionary != dictionary)) {
            m_leftOut.append(name);
            return;
        }
        if (key->value == ListValue::OfImage) {
            m_ofImage.append(name);
            return;
        }
        if (key->value == ListValue::Version)
            return;
        const QVariant usable = converted(value, *key);
        if (usable.isValid())
            m_dictionaries[key->dictionary].insert(name, usable);
        else
            m_leftOut.append(name);
    }
    static bool isWritten(const QString& dictionary) {
        return dictionary == QLatin1String("{Exif}") || dictionary == QLatin1String("{TIFF}") ||
               dictionary == kGps || dictionary == QLatin1String("{IPTC}");
    }
    static bool isImageFact(const QString& name) {
        static constexpr const char* kFacts[] = {"PixelWidth", "PixelHeight", "DPIWidth",
                                                 "DPIHeight",  "ColorModel",  "Depth",
                                                 "ProfileName"};
        for (const char* fact : kFacts)
            if (name == QLatin1String(fact))
                return true;
        return false;
    }

    /// Makes a number its absolute value and its letter.
    static void splitSign(QVariantMap& gps, const QString& name) {
        const SignedKey* key = signedKey(name);
        if (!key)
            return;
        const double value = gps.value(name).toDouble();
        const QString letter = gps.value(referenceKey(name)).toString().trimmed().toUpper();
        const bool isNegative = value < 0 || letter.startsWith(QLatin1String(key->negative));
        gps.insert(name, std::abs(value));
        gps.insert(referenceKey(name),
                   QString::fromLatin1(isNegative ? key->negative : key->positive));
    }

    QMap<QString, QVariantMap> m_dictionaries;
    QStringList m_leftOut, m_ofImage;
};

} // namespace

Result<ImportedList> propertiesFromPlist(const QVariant& list) {
    if (list.typeId() != QMetaType::QVariantMap)
        return failure(ErrorCode::InvalidData, kReadPropertyList, {}, kListIsNoDictionary);
    ListReading reading;
    reading.take(list.toMap());
    ImportedList imported = reading.finish();
    if (imported.properties.isEmpty())
        return failure(ErrorCode::InvalidData, kReadPropertyList, {}, kListHasNoPhotoKeys);
    return imported;
}

} // namespace clipheave::photo
