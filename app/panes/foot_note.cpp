// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/foot_note.h"

#include <QPainter>

namespace clipheave::app {

namespace {

constexpr int kNoteIcon = 16, kNoteIconGap = 8;

} // namespace

FootNote::FootNote(QWidget* parent) : TokenLabel({}, FontRole::Cell, Token::text2, parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

void FootNote::setNote(const QString& text, const QString& icon, Token token) {
    m_icon = icon;
    m_iconToken = token;
    setContentsMargins(icon.isEmpty() ? 0 : kNoteIcon + kNoteIconGap, 0, 0, 0);
    setText(text);
    setAccessibleName(text);
    update();
}

void FootNote::paintEvent(QPaintEvent* event) {
    TokenLabel::paintEvent(event);
    if (m_icon.isEmpty() || text().isEmpty())
        return;
    const QRect lines = fontMetrics().boundingRect(
        contentsRect(), static_cast<int>(alignment()) | Qt::TextWordWrap, text());
    const int middle = lines.top() + fontMetrics().height() / 2;
    QPainter painter(this);
    painter.drawPixmap(
        QPoint(lines.left() - kNoteIconGap - kNoteIcon, middle - kNoteIcon / 2),
        themePixmap(m_icon, kNoteIcon, Theme::instance().color(m_iconToken), devicePixelRatioF()));
}

} // namespace clipheave::app
