// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/widgets/button_look.h"

#include <QToolButton>

namespace clipheave::app {

/// A button drawn with an image. It posts a notification with itself as the object:
/// "MybuttonMouseDown" on mouse-down, Space and Return, "PRbuttonMouseEntered" and
/// "PRbuttonMouseExited" when the pointer enters or leaves it. clicked() is emitted as by any
/// button, after the post.
class ImageButton : public QToolButton {
    Q_OBJECT
public:
    using Kind = ButtonKind;

    /// `image`: a name that themeIcon knows, or empty. The label is the accessible name.
    explicit ImageButton(Kind kind, const QString& label = {}, const QString& image = {},
                         QWidget* parent = nullptr);

    [[nodiscard]] Kind kind() const { return m_kind; }
    void setImage(const QString& image);
    [[nodiscard]] QString image() const { return m_image; }
    /// Draws the caret, and reports a pop-up menu to assistive technology.
    void setOpensMenu(bool opens);
    [[nodiscard]] bool opensMenu() const { return m_opensMenu; }
    /// What is posted on press instead of "MybuttonMouseDown".
    void setPressNotification(const QString& name) { m_pressNotification = name; }
    /// Returns where a menu of this button opens: 4 px below its lower-left corner, on the screen.
    [[nodiscard]] QPoint menuPosition() const;
    /// Does what a press does: posts, then clicks.
    void activate();

    [[nodiscard]] QSize sizeHint() const override;
    /// Returns less than sizeHint() for tools: they give up padding in a narrow window.
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    [[nodiscard]] ButtonLook look() const;
    void post(const QString& name);

    Kind m_kind;
    QString m_image;
    QString m_pressNotification;
    bool m_opensMenu = false;
    bool m_focusRing = false;
};

} // namespace clipheave::app
