// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/widgets/token_label.h"

namespace clipheave::app {

/// The note in the foot of a pane, at the right end of its room, in as many lines as it needs; an
/// icon may stand left of its first line.
class FootNote : public TokenLabel {
    Q_OBJECT
public:
    explicit FootNote(QWidget* parent = nullptr);
    /// `icon`: a name that themePixmap knows; empty: none.
    void setNote(const QString& text, const QString& icon = {}, Token token = Token::text3);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_icon;
    Token m_iconToken = Token::text3;
};

} // namespace clipheave::app
