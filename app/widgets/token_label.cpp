// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/token_label.h"

namespace clipheave::app {

TokenLabel::TokenLabel(const QString& text, FontRole role, Token token, QWidget* parent)
    : QLabel(text, parent), m_role(role), m_token(token) {
    connect(&Theme::instance(), &Theme::changed, this, &TokenLabel::applyTheme);
    applyTheme();
}

void TokenLabel::applyTheme() {
    setFont(Theme::instance().font(m_role));
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, Theme::instance().color(m_token));
    setPalette(colours);
}

TokenIcon::TokenIcon(int side, QWidget* parent) : QLabel(parent), m_side(side) {
    setFixedSize(side, side);
    connect(&Theme::instance(), &Theme::changed, this, &TokenIcon::applyTheme);
}

void TokenIcon::setIcon(const QString& name, Token token) {
    m_name = name;
    m_token = token;
    applyTheme();
}

void TokenIcon::applyTheme() {
    setPixmap(m_name.isEmpty() ? QPixmap()
                               : themePixmap(m_name, m_side, Theme::instance().color(m_token),
                                             devicePixelRatioF()));
}

} // namespace clipheave::app
