// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/widgets/token_label.h"

namespace clipheave::app {

/// A line of text that is elided where it has too little room: shortened when drawn, whole in
/// text() and in its tool tip.
class ElidedLabel : public TokenLabel {
    Q_OBJECT
public:
    ElidedLabel(Qt::TextElideMode mode, FontRole role, Token token, QWidget* parent = nullptr);
    void setWholeText(const QString& text);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::TextElideMode m_mode;
};

} // namespace clipheave::app
