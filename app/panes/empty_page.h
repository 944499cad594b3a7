// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QWidget;

namespace clipheave::app {

class TokenLabel;

/// What a pane shows in place of its form.
struct EmptyPage {
    QWidget* page;
    TokenLabel* hint; ///< below the title, plain text
};
/// Makes the page: an icon, a title and a hint in the middle.
[[nodiscard]] EmptyPage makeEmptyPage(const QString& icon, const QString& title,
                                      const QString& hint, QWidget* parent);

} // namespace clipheave::app
