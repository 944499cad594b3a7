// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/edit_field.h"

#include "app/theme/theme.h"

#include <QDropEvent>
#include <QHBoxLayout>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

namespace clipheave::app {
namespace {

constexpr int kRowHeight = 28;
constexpr int kSuffixMargin = 8;
constexpr int kTextInset = 7, kFade = 24;

bool isEditingKey(const QKeyEvent& event) {
    if (event.matches(QKeySequence::Paste) || event.matches(QKeySequence::Cut) ||
        event.matches(QKeySequence::Undo) || event.matches(QKeySequence::Redo))
        return true;
    if (event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete)
        return true;
    const bool command = event.modifiers().testFlag(Qt::ControlModifier) ||
                         event.modifiers().testFlag(Qt::AltModifier);
    return !command && !event.text().isEmpty() && event.text().at(0).isPrint();
}

} // namespace

EditField::EditField(QWidget* parent) : QLineEdit(parent) {
    setFont(Theme::instance().font(FontRole::Field));
    setFixedHeight(kRowHeight);
    setProperty("changed", false);
    connect(&Theme::instance(), &Theme::changed, this,
            [this] { setFont(Theme::instance().font(FontRole::Field)); });
    connect(this, &QLineEdit::textEdited, this, [this] { begin(); });
    connect(this, &QLineEdit::textChanged, this, [this] { refreshMark(); });
}

void EditField::setShownText(const QString& remembered) {
    m_shown = remembered;
    m_begun = false;
    setText(remembered);
    setCursorPosition(0); // a long text is recognised by its beginning
    refreshMark();
}

void EditField::setSuffix(const QString& suffix) {
    m_suffix = suffix;
    const QFontMetrics metrics(Theme::instance().font(FontRole::Caption));
    setTextMargins(0, 0, suffix.isEmpty() ? 0 : metrics.horizontalAdvance(suffix) + kSuffixMargin,
                   0);
    update();
}

void EditField::begin() {
    if (m_begun || isReadOnly())
        return;
    m_begun = true;
    Q_EMIT editingBegun();
}

void EditField::refreshMark() {
    if (m_marked == isChanged())
        return;
    m_marked = isChanged();
    setProperty("changed", m_marked);
    applyMarks();
    Q_EMIT changeMarkChanged(m_marked);
}

void EditField::setFault(const QString& reason) {
    if (m_fault == reason)
        return;
    m_fault = reason;
    setToolTip(reason);
    setAccessibleDescription(reason);
    setProperty("fault", !reason.isEmpty());
    applyMarks();
}

/// The style sheet reads the properties again.
void EditField::applyMarks() {
    style()->unpolish(this);
    style()->polish(this);
}

void EditField::keyPressEvent(QKeyEvent* event) {
    if (isEditingKey(*event))
        begin();
    QLineEdit::keyPressEvent(event);
}

void EditField::inputMethodEvent(QInputMethodEvent* event) {
    if (!event->commitString().isEmpty() || !event->preeditString().isEmpty())
        begin();
    QLineEdit::inputMethodEvent(event);
}

void EditField::dropEvent(QDropEvent* event) {
    begin();
    QLineEdit::dropEvent(event);
}

void EditField::focusInEvent(QFocusEvent* event) {
    // A menu that closes or a window that comes back does not end the edit that was going on.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        m_begun = false;
    QLineEdit::focusInEvent(event);
}

/// The end of a text that is too long fades out while nobody edits it: a letter cut in half looks
/// like a fault.
void EditField::fadeEnd() {
    const int room = width() - 2 * kTextInset - textMargins().right();
    if (hasFocus() || cursorPosition() != 0 || fontMetrics().horizontalAdvance(text()) <= room)
        return;
    QPainter painter(this);
    const bool atRight = !text().isRightToLeft();
    const QRect end(atRight ? kTextInset + room - kFade : kTextInset, 4, kFade + 1, height() - 8);
    const QColor background = Theme::instance().color(Token::bg3);
    QColor clear = background;
    clear.setAlpha(0);
    QLinearGradient fade(end.topLeft(), end.topRight());
    fade.setColorAt(0, atRight ? clear : background);
    fade.setColorAt(1, atRight ? background : clear);
    painter.fillRect(end, fade);
}

void EditField::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    if (isEnabled())
        fadeEnd();
    if (m_suffix.isEmpty())
        return;
    QPainter painter(this);
    painter.setFont(Theme::instance().font(FontRole::Caption));
    painter.setPen(Theme::instance().color(Token::text3, isEnabled() ? 1 : 0.5));
    painter.drawText(rect().adjusted(0, 0, -kSuffixMargin, 0), Qt::AlignVCenter | Qt::AlignRight,
                     m_suffix);
}

FieldRow::FieldRow(const QString& label, EditField* field, int labelWidth, QWidget* parent)
    : QWidget(parent) {
    build(label, nullptr, labelWidth);
    setField(field);
}

FieldRow::FieldRow(const QString& label, QWidget* control, int labelWidth, QWidget* parent)
    : QWidget(parent) {
    build(label, control, labelWidth);
}

void FieldRow::build(const QString& label, QWidget* control, int labelWidth) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(kGutter, 0, 0, 0);
    row->setSpacing(0);
    m_label = new QLabel(label);
    m_label->setTextFormat(Qt::PlainText);
    row->addWidget(m_label);
    if (control != nullptr) {
        row->addWidget(control, 1);
        m_label->setBuddy(control);
        if (control->accessibleName().isEmpty())
            control->setAccessibleName(label);
    }
    setMinimumHeight(kRowHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    const auto dress = [this, labelWidth] {
        m_label->setFixedWidth(Theme::instance().scaled(labelWidth));
        m_label->setFont(Theme::instance().font(FontRole::Cell));
        showMark(m_field != nullptr && m_field->isChanged());
    };
    connect(&Theme::instance(), &Theme::changed, this, dress);
    dress();
}

void FieldRow::setField(EditField* field) {
    if (m_field == field)
        return;
    if (m_field != nullptr) {
        m_field->disconnect(this);
        layout()->removeWidget(m_field);
    }
    m_field = field;
    m_label->setBuddy(field);
    if (field != nullptr) {
        static_cast<QHBoxLayout*>(layout())->addWidget(field, 1);
        field->setAccessibleName(m_label->text());
        field->show();
        connect(field, &EditField::changeMarkChanged, this, &FieldRow::showMark);
    }
    showMark(field != nullptr && field->isChanged());
}

void FieldRow::showMark(bool changed) {
    QPalette palette;
    palette.setColor(QPalette::WindowText,
                     Theme::instance().color(changed ? Token::text1 : Token::text2));
    m_label->setPalette(palette);
    update();
}

void FieldRow::paintEvent(QPaintEvent*) {
    if (m_field == nullptr || !m_field->isChanged())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::instance().color(Token::accent));
    painter.drawEllipse(QRectF(1, height() / 2.0 - 2.5, 5, 5));
}

} // namespace clipheave::app
