// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/fact_label.h"

#include "app/theme/theme.h"

#include <QPainter>

namespace clipheave::app {
namespace {

constexpr int kFactHeight = 20;
constexpr int kShortestFact = 60;

/// Where the value begins: behind the first ": ", or at the end.
qsizetype valueStart(const QString& text) {
    const qsizetype colon = text.indexOf(QLatin1String(": "));
    return colon < 0 ? text.size() : colon + 2;
}

} // namespace

void drawWithPlainX(QPainter& painter, QRect rect, const QString& text) {
    const auto draw = [&painter, &rect](const QString& text) {
        painter.drawText(rect, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, text);
        rect.setLeft(rect.left() + painter.fontMetrics().horizontalAdvance(text));
    };
    const QStringList sides = text.split(QStringLiteral(" x "));
    draw(sides.first());
    for (qsizetype i = 1; i < sides.size(); ++i) {
        draw(QStringLiteral(" "));
        draw(QStringLiteral("x"));
        draw(u' ' + sides[i]);
    }
}

FactLabel::FactLabel(const QString& label, QWidget* parent) : QLabel(parent) {
    setFont(Theme::instance().font(FontRole::Cell));
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    connect(&Theme::instance(), &Theme::changed, this, [this] {
        setFont(Theme::instance().font(FontRole::Cell));
        update();
    });
    setFactText(label);
}

void FactLabel::setFact(const QString& label, const QString& value) {
    setFactText(value.isEmpty() ? label : label + value);
}

void FactLabel::setFactText(const QString& whole) {
    setText(whole);
    setToolTip(whole.mid(valueStart(whole)));
}

QSize FactLabel::sizeHint() const {
    return {fontMetrics().horizontalAdvance(text()) + 2, qMax(kFactHeight, fontMetrics().height())};
}

QSize FactLabel::minimumSizeHint() const {
    return {kShortestFact, qMax(kFactHeight, fontMetrics().height())};
}

void FactLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::instance();
    const qsizetype start = valueStart(text());
    const QString label = text().left(start);
    const int labelWidth = fontMetrics().horizontalAdvance(label);
    painter.setPen(theme.color(Token::text3));
    painter.drawText(rect(), Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, label);
    painter.setPen(theme.color(Token::text1));
    const QRect space = rect().adjusted(labelWidth, 0, 0, 0);
    drawWithPlainX(painter, space,
                   fontMetrics().elidedText(text().mid(start), Qt::ElideMiddle, space.width()));
}

} // namespace clipheave::app
