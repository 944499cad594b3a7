// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::app {

/// The image beside a menu entry, by its command or, for one that opens others, by its title;
/// empty: none.
[[nodiscard]] QString menuImage(const QString& command, const QString& title);

} // namespace clipheave::app
