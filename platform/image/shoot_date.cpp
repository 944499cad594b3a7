// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/shoot_date.h"

#include "platform/foundation/dates.h"

namespace clipheave::platform {

QString shootDateText(const QVariantMap& properties) {
    static constexpr struct {
        const char *dictionary, *key;
    } kPlaces[] = {
        {"{Exif}", "DateTimeOriginal"}, {"{Exif}", "DateTimeDigitized"}, {"{TIFF}", "DateTime"}};
    for (const auto& place : kPlaces) {
        const QVariantMap dictionary =
            properties.value(QString::fromLatin1(place.dictionary)).toMap();
        // Cameras whose clock was never set write zeros or blanks.
        QString text = dictionary.value(QString::fromLatin1(place.key)).toString();
        if (parseDateText(text))
            return text;
    }
    return {};
}

std::optional<QDateTime> shootDate(const QVariantMap& properties) {
    return parseDateText(shootDateText(properties));
}

} // namespace clipheave::platform
