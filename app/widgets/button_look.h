// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/theme/theme.h"

#include <QPushButton>
#include <QRect>
#include <QString>

class QPainter;

namespace clipheave::app {

enum class ButtonKind {
    Tool,         ///< image above a caption, 48 px high
    Plain,        ///< 32 px
    Small,        ///< 28 px
    Primary,      ///< 32 px, accent fill: one per window
    Danger,       ///< 32 px, text in the colour of failures
    Flat,         ///< 32 px, no outline
    Icon,         ///< 28 x 28, image only
    Segment,      ///< 30 px, a part of a Segment
    SmallSegment, ///< 24 px
    Window,       ///< 44 x 36, in the title bar
    WindowClose,  ///< the same, red under the pointer
};

/// Everything that decides how a button is drawn.
struct ButtonLook {
    ButtonKind kind = ButtonKind::Plain;
    QString text;
    QString image;
    Token imageToken = Token::text2;
    bool caret = false, hovered = false, pressed = false, chosen = false, enabled = true,
         ring = false;
};

void paintButton(QPainter& painter, const QRect& rect, const ButtonLook& look);
[[nodiscard]] QSize buttonSize(const ButtonLook& look);
/// Returns true for a focus that came from the keyboard, not from a click: a ring shows it.
[[nodiscard]] bool showsFocusRing(Qt::FocusReason reason);

/// A button of dialogs and panes in the window's own look, without notifications.
class Button : public QPushButton {
    Q_OBJECT
public:
    explicit Button(ButtonKind kind, const QString& label, const QString& image = {},
                    QWidget* parent = nullptr);
    [[nodiscard]] ButtonKind kind() const { return m_kind; }
    void setImage(const QString& image);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    [[nodiscard]] ButtonLook look() const;

    ButtonKind m_kind;
    QString m_image;
    bool m_focusRing = false;
};

} // namespace clipheave::app
