// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/theme/theme.h"

#include <QLabel>

namespace clipheave::app {

/// A line of text in a token's colour, also after the theme changes.
class TokenLabel : public QLabel {
    Q_OBJECT
public:
    TokenLabel(const QString& text, FontRole role, Token token, QWidget* parent = nullptr);

private:
    void applyTheme();

    FontRole m_role;
    Token m_token;
};

/// An image in a token's colour, `side` px square.
class TokenIcon : public QLabel {
    Q_OBJECT
public:
    explicit TokenIcon(int side, QWidget* parent = nullptr);
    /// An empty name shows nothing.
    void setIcon(const QString& name, Token token);

private:
    void applyTheme();

    int m_side;
    QString m_name;
    Token m_token = Token::text2;
};

} // namespace clipheave::app
