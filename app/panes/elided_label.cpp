// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/elided_label.h"

#include <QPainter>

namespace clipheave::app {

namespace {

constexpr int kShortestLine = 40; // px

} // namespace

ElidedLabel::ElidedLabel(Qt::TextElideMode mode, FontRole role, Token token, QWidget* parent)
    : TokenLabel({}, role, token, parent), m_mode(mode) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::setWholeText(const QString& text) {
    setText(text);
    setToolTip(text);
}

QSize ElidedLabel::minimumSizeHint() const {
    return {kShortestLine, fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    const QRect space = contentsRect();
    painter.drawText(space, static_cast<int>(alignment()) | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), m_mode, space.width()));
}

} // namespace clipheave::app
