// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/tag_values.h"

#include "platform/image/tag_text.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

namespace clipheave::platform {

namespace {

constexpr long kMostArrayValues = 64;

std::optional<double> realAt(const Exiv2::Exifdatum& datum, long index) {
    switch (datum.typeId()) {
    case Exiv2::unsignedRational:
    case Exiv2::signedRational: {
        const Exiv2::Rational value = datum.toRational(index);
        if (value.second == 0)
            return std::nullopt;
        if (datum.typeId() == Exiv2::signedRational)
            return static_cast<double>(value.first) / value.second;
        // The library keeps unsigned numbers in signed ones.
        return static_cast<double>(static_cast<std::uint32_t>(value.first)) /
               static_cast<std::uint32_t>(value.second);
    }
    case Exiv2::tiffFloat:
    case Exiv2::tiffDouble: {
        const double value = static_cast<double>(datum.toFloat(index));
        return std::isfinite(value) ? std::optional(value) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

QVariant numberAt(const Exiv2::Exifdatum& datum, long index) {
    switch (datum.typeId()) {
    case Exiv2::unsignedByte:
    case Exiv2::signedByte:
    case Exiv2::undefined:
    case Exiv2::unsignedShort:
    case Exiv2::signedShort:
    case Exiv2::unsignedLong:
    case Exiv2::signedLong:
        return QVariant(static_cast<qlonglong>(integerAt(datum, index)));
    default:
        break;
    }
    const auto real = realAt(datum, index);
    return real ? QVariant(*real) : QVariant();
}

std::string bytesOf(const Exiv2::Exifdatum& datum) {
    std::string bytes(static_cast<std::size_t>(datum.size()), '\0');
    if (!bytes.empty())
        datum.copy(static_cast<Exiv2::byte*>(static_cast<void*>(bytes.data())),
                   Exiv2::littleEndian);
    return bytes;
}

} // namespace

QVariant tagPlainValue(const Exiv2::Exifdatum& datum) {
    if (datum.typeId() == Exiv2::asciiString) {
        const QString text = textFromTagBytes(bytesOf(datum));
        return text.isEmpty() ? QVariant() : QVariant(text);
    }
    return datum.count() == 1 ? numberAt(datum, 0) : tagArrayValue(datum);
}

QVariant tagArrayValue(const Exiv2::Exifdatum& datum) {
    const auto count = static_cast<long>(datum.count());
    if (count < 1 || count > kMostArrayValues)
        return {};
    QVariantList values;
    for (long i = 0; i < count; ++i) {
        const QVariant value = numberAt(datum, i);
        if (!value.isValid())
            return {};
        values.append(value);
    }
    return values;
}

QVariant tagVersionValue(const Exiv2::Exifdatum& datum) {
    const std::string bytes = bytesOf(datum);
    if (bytes.size() != 4)
        return {};
    for (const char c : bytes)
        if (c < '0' || c > '9')
            return {};
    QVariantList parts{(bytes[0] - '0') * 10 + (bytes[1] - '0'), bytes[2] - '0'};
    if (bytes[3] != '0')
        parts.append(bytes[3] - '0');
    return parts;
}

QVariant tagCommentValue(const Exiv2::Exifdatum& datum) {
    const auto* comment = dynamic_cast<const Exiv2::CommentValue*>(&datum.value());
    const std::string bytes = comment != nullptr ? comment->comment() : bytesOf(datum);
    const QString text = textFromTagBytes(bytes).trimmed();
    return text.isEmpty() ? QVariant() : QVariant(text);
}

QVariant tagDegreesValue(const Exiv2::Exifdatum& datum) {
    double degrees = 0, unit = 1;
    const auto count = static_cast<long>(datum.count());
    if (count < 1 || count > 3)
        return {};
    for (long i = 0; i < count; ++i, unit *= 60) {
        const auto part = realAt(datum, i);
        // Phones without a fix write 0/0 for what they do not know.
        if (!part && i == 0)
            return {};
        degrees += std::abs(part.value_or(0)) / unit;
    }
    return degrees <= 180 ? QVariant(degrees) : QVariant();
}

QVariant tagClockValue(const Exiv2::Exifdatum& datum) {
    if (datum.count() != 3)
        return {};
    const auto hours = realAt(datum, 0), minutes = realAt(datum, 1), rest = realAt(datum, 2);
    const auto within = [](const auto& part, double limit) {
        return part && *part >= 0 && *part < limit;
    };
    if (!within(hours, 24) || !within(minutes, 60) || !within(rest, 61))
        return {};
    const auto micros = static_cast<qlonglong>(std::llround(*rest * 1e6));
    QString text =
        QString::asprintf("%02d:%02d:%02d", static_cast<int>(*hours), static_cast<int>(*minutes),
                          static_cast<int>(micros / 1'000'000));
    if (micros % 1'000'000 != 0)
        text += QString::asprintf(".%06d", static_cast<int>(micros % 1'000'000));
    return text;
}

QVariant tagDottedValue(const Exiv2::Exifdatum& datum) {
    const QVariant array = tagArrayValue(datum);
    QStringList parts;
    for (const QVariant& part : array.toList())
        parts << part.toString();
    return parts.isEmpty() ? QVariant() : QVariant(parts.join(u'.'));
}

} // namespace clipheave::platform
