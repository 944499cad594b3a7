// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::media {

/// Returns what a pane shows of `value`: a missing one is the empty text.
[[nodiscard]] inline QString shownText(const QString& value) {
    return value.isNull() ? QString(QLatin1String("")) : value;
}

} // namespace clipheave::media
