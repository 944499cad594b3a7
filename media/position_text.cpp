// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/position_text.h"

#include "platform/foundation/text.h"

#include <QRegularExpression>

namespace clipheave::media {

namespace {

bool isInRange(double value, PositionPart part) {
    switch (part) {
    case PositionPart::Latitude:
        return value >= -90 && value <= 90;
    case PositionPart::Longitude:
        return value >= -180 && value <= 180;
    case PositionPart::Altitude:
        break;
    }
    return value >= -32768 && value <= 32767;
}

} // namespace

std::optional<QString> positionNumber(QStringView typed, PositionPart part) {
    static const QRegularExpression number(QStringLiteral(R"(^-?(?:\d+\.?\d*|\.\d+)(e[+-]?\d+)?$)"),
                                           QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression plain(QStringLiteral(R"(^-?\d+(?:\.\d+)?$)"));
    QString text = typed.trimmed().toString();
    text.replace(u',', u'.').replace(QChar(0x2212), u'-');
    if (text.startsWith(u'+') && !text.startsWith(u"+-"))
        text.remove(0, 1);
    const double value = platform::doubleValue(text);
    if (!number.match(text).hasMatch() || !isInRange(value, part))
        return std::nullopt;
    return plain.match(text).hasMatch() ? text : platform::plainDecimals(value);
}

} // namespace clipheave::media
