// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/tag_encoding.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace clipheave::platform {

namespace {

enum Type : std::uint16_t {
    kByte = 1,
    kAscii = 2,
    kShort = 3,
    kLong = 4,
    kRational = 5,
    kSignedByte = 6,
    kUndefined = 7,
    kSignedShort = 8,
    kSignedLong = 9,
    kSignedRational = 10,
};

constexpr std::uint16_t kFirstWindowsText = 0x9C9B, kLastWindowsText = 0x9C9F;
constexpr double kMost32 = std::numeric_limits<std::uint32_t>::max();

using MaybeBytes = std::optional<QByteArray>;

QByteArray textBytes(const QVariant& value) {
    return value.toString().toUtf8();
}

QByteArray utf16(const QString& text, bool bigEndian) {
    QByteArray bytes;
    for (const QChar c : text) {
        QByteArray unit(2, '\0');
        bigEndian ? qToBigEndian(c.unicode(), unit.data())
                  : qToLittleEndian(c.unicode(), unit.data());
        bytes += unit;
    }
    return bytes;
}

/// Eight bytes name the encoding. Source: Exif 2.32, 4.6.5, table 9.
MaybeBytes commentBytes(const QVariant& value, const TiffStructure& structure) {
    const QString text = value.toString();
    if (text.isEmpty())
        return std::nullopt;
    const bool plain =
        std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
    return plain ? QByteArray("ASCII\0\0\0", 8) + text.toLatin1()
                 : QByteArray("UNICODE\0", 8) + utf16(text, structure.isBigEndian);
}

/// 2, 3, 1 as "0231".
MaybeBytes versionBytes(const QVariant& value) {
    const QVariantList parts = value.toList();
    if (parts.isEmpty() || parts.size() > 3)
        return std::nullopt;
    const auto part = [&](int i) { return i < parts.size() ? parts[i].toInt() : 0; };
    if (part(0) < 0 || part(0) > 99 || part(1) < 0 || part(1) > 9 || part(2) < 0 || part(2) > 9)
        return std::nullopt;
    return QStringLiteral("%1%2%3")
        .arg(part(0), 2, 10, QLatin1Char('0'))
        .arg(part(1))
        .arg(part(2))
        .toLatin1();
}

std::vector<double> numbersOf(const QVariant& value, bool& ok) {
    std::vector<double> numbers;
    QVariantList list;
    if (value.typeId() == QMetaType::QString) {
        for (const QString& part : value.toString().split(u'.')) // "2.2.0.0"
            list.append(part);
    } else {
        list = value.toList();
    }
    if (list.isEmpty())
        list.append(value);
    ok = true;
    for (const QVariant& item : list) {
        bool isNumber = false;
        numbers.push_back(item.toDouble(&isNumber));
        ok = ok && isNumber && std::isfinite(numbers.back());
    }
    return numbers;
}

MaybeBytes wholeNumbers(const QVariant& value, std::uint16_t type, const TiffStructure& structure) {
    bool ok = false;
    const std::vector<double> numbers = numbersOf(value, ok);
    const auto size = static_cast<int>(tiffTypeSize(type));
    const bool isSigned = type == kSignedByte || type == kSignedShort || type == kSignedLong;
    const double most = std::pow(2.0, 8 * size - (isSigned ? 1 : 0)) - 1;
    QByteArray bytes;
    for (const double number : numbers) {
        if (!ok || number > most || number < (isSigned ? -most - 1 : 0))
            return std::nullopt;
        const auto bits = static_cast<std::uint32_t>(static_cast<std::int64_t>(std::floor(number)));
        if (size == 1)
            bytes += static_cast<char>(bits);
        else
            bytes += size == 2 ? structure.bytes16(static_cast<std::uint16_t>(bits))
                               : structure.bytes32(bits);
    }
    return bytes;
}

QByteArray rationalBytes(std::uint32_t numerator, std::uint32_t denominator,
                         const TiffStructure& structure) {
    return structure.bytes32(numerator) + structure.bytes32(denominator);
}

/// Degrees, minutes and seconds to a ten-thousandth: three millimetres.
MaybeBytes degreesBytes(const QVariant& value, const TiffStructure& structure) {
    constexpr std::int64_t kUnit = 10'000; // of a second
    bool ok = false;
    const double degrees = std::abs(value.toDouble(&ok));
    if (!ok || !(degrees <= 180))
        return std::nullopt;
    const auto all = static_cast<std::int64_t>(std::llround(degrees * 3600 * kUnit));
    return rationalBytes(static_cast<std::uint32_t>(all / (3600 * kUnit)), 1, structure) +
           rationalBytes(static_cast<std::uint32_t>(all / (60 * kUnit) % 60), 1, structure) +
           rationalBytes(static_cast<std::uint32_t>(all % (60 * kUnit)), kUnit, structure);
}

/// "HH:mm:ss" with or without a fraction.
MaybeBytes clockBytes(const QVariant& value, const TiffStructure& structure) {
    constexpr std::uint32_t kMicro = 1'000'000;
    const QStringList parts = value.toString().split(u':');
    if (parts.size() != 3)
        return std::nullopt;
    bool hoursOk = false, minutesOk = false, secondsOk = false;
    const uint hours = parts[0].toUInt(&hoursOk), minutes = parts[1].toUInt(&minutesOk);
    const double seconds = parts[2].toDouble(&secondsOk);
    if (!hoursOk || !minutesOk || !secondsOk || hours > 23 || minutes > 59 || !(seconds >= 0) ||
        !(seconds < 61))
        return std::nullopt;
    const auto micros = static_cast<std::uint32_t>(std::lround(seconds * kMicro));
    const bool isWhole = micros % kMicro == 0;
    return rationalBytes(hours, 1, structure) + rationalBytes(minutes, 1, structure) +
           (isWhole ? rationalBytes(micros / kMicro, 1, structure)
                    : rationalBytes(micros, kMicro, structure));
}

MaybeBytes rationals(const QVariant& value, bool isSigned, const TiffStructure& structure) {
    bool ok = false;
    std::vector<double> numbers;
    if (value.typeId() == QMetaType::QString)
        numbers.push_back(value.toDouble(&ok)); // its point is no separator
    else
        numbers = numbersOf(value, ok);
    QByteArray bytes;
    for (const double number : numbers) {
        const auto fraction = fractionOf(std::abs(number));
        const bool fits =
            fraction && (number >= 0 || isSigned) &&
            (!isSigned || (fraction->first <= 0x7FFFFFFF && fraction->second <= 0x7FFFFFFF));
        if (!ok || !fits)
            return std::nullopt;
        const std::uint32_t numerator = number < 0 ? 0U - fraction->first : fraction->first;
        bytes += rationalBytes(numerator, fraction->second, structure);
    }
    return bytes;
}

MaybeBytes undefinedBytes(const AskedTag& asked, const TiffStructure& structure) {
    static constexpr std::array kComments{u"UserComment", u"ProcessingMethod", u"AreaInformation"};
    static constexpr std::array kVersions{u"ExifVersion", u"FlashPixVersion"};
    const auto isNamed = [&](const auto& names) {
        return std::any_of(names.begin(), names.end(),
                           [&](const char16_t* name) { return asked.name == QStringView(name); });
    };
    if (isNamed(kComments))
        return commentBytes(asked.value, structure);
    if (isNamed(kVersions))
        return versionBytes(asked.value);
    return wholeNumbers(asked.value, kByte, structure);
}

MaybeBytes bytesOf(const AskedTag& asked, const TiffStructure& structure) {
    const bool isPlace = asked.name.endsWith(QLatin1String("Latitude")) ||
                         asked.name.endsWith(QLatin1String("Longitude"));
    switch (asked.type) {
    case kAscii: {
        const QByteArray text = textBytes(asked.value);
        return text.isEmpty() ? MaybeBytes() : text + '\0';
    }
    case kByte:
        if (asked.tag >= kFirstWindowsText && asked.tag <= kLastWindowsText)
            return utf16(asked.value.toString() + QChar(u'\0'), false);
        return wholeNumbers(asked.value, asked.type, structure);
    case kRational:
        if (isPlace)
            return degreesBytes(asked.value, structure);
        if (asked.name == QLatin1String("TimeStamp"))
            return clockBytes(asked.value, structure);
        return rationals(asked.value, false, structure);
    case kSignedRational:
        return rationals(asked.value, true, structure);
    case kUndefined:
        return undefinedBytes(asked, structure);
    case kShort:
    case kLong:
    case kSignedByte:
    case kSignedShort:
    case kSignedLong:
        return wholeNumbers(asked.value, asked.type, structure);
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<std::pair<std::uint32_t, std::uint32_t>> fractionOf(double value) {
    constexpr double kExact = 1e-9; // of the value
    if (!(value >= 0) || value > kMost32)
        return std::nullopt;
    // The convergents of the continued fraction.
    double rest = value, numerator = 1, denominator = 0, numeratorBefore = 0, denominatorBefore = 1;
    for (int i = 0; i < 64; ++i) {
        const double whole = std::floor(rest);
        const double nextNumerator = whole * numerator + numeratorBefore;
        const double nextDenominator = whole * denominator + denominatorBefore;
        if (nextNumerator > kMost32 || nextDenominator > kMost32)
            break;
        numeratorBefore = std::exchange(numerator, nextNumerator);
        denominatorBefore = std::exchange(denominator, nextDenominator);
        if (std::abs(numerator / denominator - value) <= kExact * value || rest == whole)
            break;
        rest = 1 / (rest - whole);
    }
    return std::pair(static_cast<std::uint32_t>(numerator),
                     static_cast<std::uint32_t>(denominator));
}

std::optional<TiffValue> encodedTag(const AskedTag& asked, const TiffStructure& structure) {
    if (!asked.value.isValid())
        return std::nullopt;
    const MaybeBytes bytes = bytesOf(asked, structure);
    if (!bytes || bytes->isEmpty())
        return std::nullopt;
    return TiffValue{asked.type,
                     static_cast<std::uint32_t>(static_cast<std::uint64_t>(bytes->size()) /
                                                tiffTypeSize(asked.type)),
                     *bytes};
}

} // namespace clipheave::platform
