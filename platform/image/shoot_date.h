// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace clipheave::platform {

/// The date text of a photo's properties: "DateTimeOriginal", else "DateTimeDigitized" of "{Exif}",
/// else "DateTime" of "{TIFF}"; the first that is a date. Null when none is.
[[nodiscard]] QString shootDateText(const QVariantMap& properties);
/// The same as a date in local time.
[[nodiscard]] std::optional<QDateTime> shootDate(const QVariantMap& properties);

} // namespace clipheave::platform
