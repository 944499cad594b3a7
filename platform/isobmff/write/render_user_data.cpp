// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/render_user_data.h"

#include "platform/foundation/text.h"
#include "platform/isobmff/box.h"
#include "platform/isobmff/messages.h"
#include "platform/isobmff/write/render_items.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

// Layouts: 3GPP TS 26.244 section 8; QuickTime File Format, "User data text strings and language
// codes".
namespace clipheave::platform {
namespace {

constexpr std::uint16_t kUndetermined = 0x55C4;
constexpr std::uint32_t kCopyrightSign = 0xA9000000;

template <class T> QByteArray bigEndian(T value) {
    QByteArray bytes(sizeof(T), '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray versionFlagsLanguage(const QString& tag) {
    return QByteArray(4, '\0') + bigEndian(tag.isEmpty() ? kUndetermined : packedLanguage(tag));
}

struct GeoPosition {
    double latitude = 0, longitude = 0, altitude = 0; // degrees, degrees, metres
};

/// The numbers behind the first three signs of an ISO 6709 text; a missing altitude or one without
/// digits ("+", "+(null)") is 0.
std::optional<GeoPosition> parsePosition(const QString& text) {
    std::array<double, 3> numbers{};
    std::size_t found = 0;
    qsizetype at = 0;
    const auto isSign = [](QChar c) { return c == u'+' || c == u'-'; };
    while (found < numbers.size()) {
        const auto sign = std::find_if(text.begin() + at, text.end(), isSign);
        if (sign == text.end())
            break;
        const auto digits = std::next(sign);
        const auto next = std::find_if(digits, text.end(), isSign);
        const double number = doubleValue(QStringView(digits, next));
        numbers.at(found++) = *sign == u'-' ? -number : number;
        at = next - text.begin();
    }
    if (found < 2)
        return std::nullopt;
    return GeoPosition{numbers[0], numbers[1], numbers[2]};
}

QByteArray fixedPoint(double value) {
    const double scaled = std::clamp(std::round(value * 65536), -0x1p31, 0x1p31 - 1);
    return bigEndian(static_cast<qint32>(scaled));
}

QByteArray coordinates(const GeoPosition& position) {
    return fixedPoint(position.longitude) + fixedPoint(position.latitude) +
           fixedPoint(position.altitude);
}

/// Returns where the numbers of a whole `loci` box stand: behind its name, in one or two bytes a
/// letter, and its role. Nothing when it is too short.
std::optional<qsizetype> coordinatesOffset(const QByteArray& place) {
    constexpr std::uint64_t kName = 14; // behind header, version, flags and language
    constexpr std::uint64_t kCoordinates = 12;
    const ByteView bytes(place);
    const std::uint64_t unit = bytes.be16(kName) == 0xFEFF || bytes.be16(kName) == 0xFFFE ? 2 : 1;
    std::uint64_t at = kName;
    while (bytes.has(at, unit) && (unit == 2 ? *bytes.be16(at) != 0 : *bytes.u8(at) != 0))
        at += unit;
    at += unit + 1;
    if (!bytes.has(at, kCoordinates))
        return std::nullopt;
    return static_cast<qsizetype>(at);
}

QByteArray renderLocation(const AVMetadataItem& item, Notes& notes) {
    const auto position = parsePosition(item.stringValue());
    if (!position) {
        notes << Message(kLocationNotStored, {item.stringValue()});
        return {};
    }
    constexpr char kNoName = 0, kShootingLocation = 0, kNoRemarks = 0;
    QByteArray payload = versionFlagsLanguage(item.extendedLanguageTag);
    payload += kNoName;
    payload += kShootingLocation;
    payload += coordinates(*position);
    payload += QByteArray("earth", 6); // with its NUL
    payload += kNoRemarks;
    return renderBox(fourCc("loci"), payload);
}

QByteArray renderQuickTimeText(std::uint32_t code, const AVMetadataItem& item, Notes& notes) {
    const QByteArray text = item.stringValue().toUtf8();
    if (text.size() > UINT16_MAX) {
        notes << Message(kTextTooLongToStore, {item.key});
        return {};
    }
    const std::uint16_t language = item.extendedLanguageTag.isEmpty()
                                       ? kUndetermined
                                       : packedLanguage(item.extendedLanguageTag);
    return renderBox(code,
                     bigEndian(static_cast<quint16>(text.size())) + bigEndian(language) + text);
}

QByteArray renderKeywordList(const AVMetadataItem& item) {
    QByteArray list;
    quint8 count = 0;
    for (const QString& part : item.stringValue().split(u',', Qt::SkipEmptyParts)) {
        QByteArray word = part.trimmed().toUtf8();
        word.truncate(254);
        if (word.isEmpty() || count == UINT8_MAX)
            continue;
        ++count;
        list += static_cast<char>(word.size() + 1);
        list += word + '\0';
    }
    return renderBox(fourCc("kywd"), versionFlagsLanguage(item.extendedLanguageTag) +
                                         static_cast<char>(count) + list);
}

} // namespace

QByteArray movedPlaces(const std::vector<QByteArray>& places, const AVMetadataItem& item) {
    const auto position = parsePosition(item.stringValue());
    QByteArray moved;
    for (const QByteArray& place : places)
        if (const auto at = coordinatesOffset(place); position && at)
            moved += QByteArray(place).replace(*at, 12, coordinates(*position));
    return moved;
}

QByteArray renderUserData(std::uint32_t code, const AVMetadataItem& item, Notes& notes) {
    const QString text = item.stringValue();
    if (code == fourCc("loci"))
        return renderLocation(item, notes);
    // Bytes of a code that nobody knows are the box as its maker wants it.
    if (text.isNull() || code == fourCc("XMP_") || code == fourCc("thmb")) {
        const QByteArray bytes = item.dataValue();
        const bool image = code == fourCc("thmb");
        return bytes.isNull() ? bytes
                              : renderBox(code, image ? QByteArray(4, '\0') + bytes : bytes);
    }
    switch (code) {
    case fourCc("date"): // not a FullBox, no language, no final NUL
        return renderBox(code, text.toUtf8());
    case fourCc("kywd"):
        return renderKeywordList(item);
    case fourCc("yrrc"):
        return renderBox(code,
                         QByteArray(4, '\0') + bigEndian(static_cast<quint16>(intValue(text))));
    case fourCc("rtng"):
    case fourCc("clsf"): { // entity and criteria (or table) unknown
        const QByteArray head(code == fourCc("rtng") ? 12 : 10, '\0');
        return renderBox(code, head + versionFlagsLanguage({}).mid(4) + text.toUtf8() + '\0');
    }
    default:
        break;
    }
    if ((code & 0xFF000000) == kCopyrightSign)
        return renderQuickTimeText(code, item, notes);
    return renderBox(code, versionFlagsLanguage(item.extendedLanguageTag) + text.toUtf8() + '\0');
}

} // namespace clipheave::platform
