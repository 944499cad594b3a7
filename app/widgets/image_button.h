// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/widgets/button_look.h"

#include <QToolButton>

namespace clipheave::app {

/// A button with an image that tells the whole application when it is used: on mouse-down, Space
/// and Return it posts "MybuttonMouseDown", when the pointer enters or leaves it
/// "PRbuttonMouseEntered" and "PRbuttonMouseExited", each with itself as the object. clicked()
/// comes as with any button, after the post.
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
    /// Draws the caret and reports a pop-up to assistive technology.
    void setOpensMenu(bool opens);
    [[nodiscard]] bool opensMenu() const { return m_opensMenu; }
    /// What is posted on press instead of "MybuttonMouseDown".
    void setPressNotification(const QString& name) { m_pressNotification = name; }
    /// Colour of the image of Icon buttons; text2 at first.
    void setImageToken(Token token);
    /// Where a menu of this button opens: its lower-left corner, 4 px down, on the screen.
    [[nodiscard]] QPoint menuPosition() const;
    /// What a press does: the post, then a click.
    void activate();

    [[nodiscard]] QSize sizeHint() const override;
    /// Tools give their padding away where the window is narrow.
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
    Token m_imageToken = Token::text2;
    bool m_opensMenu = false;
    bool m_focusRing = false;
};

} // namespace clipheave::app
