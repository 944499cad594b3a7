// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/template_field.h"

#include "app/theme/theme.h"
#include "batch/rename_plan.h"

#include <QCoreApplication>
#include <QEvent>
#include <QInputMethodEvent>
#include <QPainter>
#include <QTextCharFormat>
#include <QTextLayout>

namespace clipheave::app {

namespace {

constexpr int kBeforeCaret = 5; // px of the cursor's rectangle to the left of the cursor itself
constexpr double kChipTint = 0.14;
constexpr double kDisabledTint = 0.5;

} // namespace

TemplateField::TemplateField(QWidget* parent) : QLineEdit(parent) {
    setFont(Theme::instance().font(FontRole::Body));
    setStyleSheet(QStringLiteral("QLineEdit { min-height: 30px; max-height: 30px; }"
                                 "QLineEdit:focus { min-height: 28px; max-height: 28px; }"));
    connect(this, &QLineEdit::textChanged, this, &TemplateField::tintWords);
    connect(&Theme::instance(), &Theme::changed, this, [this] {
        setFont(Theme::instance().font(FontRole::Body));
        tintWords();
    });
}

/// A line edit takes text formats in one way only: from an input method.
void TemplateField::tintWords() {
    QTextCharFormat word;
    word.setForeground(Theme::instance().color(Token::accentText, isEnabled() ? 1 : kDisabledTint));
    QList<QInputMethodEvent::Attribute> attributes;
    for (const batch::TagWordSpan& span : batch::tagWordSpans(text()))
        attributes.append(
            {QInputMethodEvent::TextFormat, span.start - cursorPosition(), span.length, word});
    QInputMethodEvent event({}, attributes);
    QCoreApplication::sendEvent(this, &event);
    update();
}

void TemplateField::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        tintWords();
}

void TemplateField::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    QTextLayout layout(text(), font());
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    if (!line.isValid())
        return;
    const QRect caret = cursorRect();
    const double origin = caret.left() + kBeforeCaret - line.cursorToX(cursorPosition());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(rect().adjusted(4, 3, -4, -3));
    painter.setPen(Qt::NoPen);
    // Deliberate: over the text, whose colour hardly changes by it; a line edit lets nothing be
    // drawn between background and text.
    painter.setBrush(Theme::instance().color(Token::accent,
                                             isEnabled() ? kChipTint : kChipTint * kDisabledTint));
    for (const batch::TagWordSpan& span : batch::tagWordSpans(text())) {
        const double left = origin + line.cursorToX(span.start);
        const double right = origin + line.cursorToX(span.start + span.length);
        painter.drawRoundedRect(QRectF(left - 1, caret.center().y() - 9.5, right - left + 2, 20), 3,
                                3);
    }
}

} // namespace clipheave::app
