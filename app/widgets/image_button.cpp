// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/image_button.h"

#include "platform/foundation/notification_center.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QEnterEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QTimer>

#include <algorithm>

namespace clipheave::app {
namespace {

/// Tells assistive technology of the pop-up, which QToolButton only does for a menu of its own.
class PictureButtonAccess : public QAccessibleWidget {
public:
    explicit PictureButtonAccess(PictureButton* button)
        : QAccessibleWidget(button, QAccessible::Button) {}

    /// Asked anew each time: this object is often there before the button knows of its menu.
    [[nodiscard]] QAccessible::Role role() const override {
        return button()->opensMenu() ? QAccessible::ButtonMenu : QAccessible::Button;
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State result = QAccessibleWidget::state();
        result.hasPopup = button()->opensMenu();
        result.checkable = button()->isCheckable();
        result.checked = button()->isChecked();
        result.pressed = button()->isDown();
        return result;
    }
    [[nodiscard]] QStringList actionNames() const override {
        return {pressAction(), setFocusAction()};
    }
    void doAction(const QString& name) override {
        if (name == pressAction() && button()->isEnabled())
            button()->activate();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    [[nodiscard]] PictureButton* button() const { return static_cast<PictureButton*>(object()); }
};

QAccessibleInterface* pictureButtonAccess(const QString&, QObject* object) {
    auto* button = qobject_cast<PictureButton*>(object);
    return button != nullptr ? new PictureButtonAccess(button) : nullptr;
}

} // namespace

PictureButton::PictureButton(Kind kind, const QString& label, const QString& picture,
                             QWidget* parent)
    : QToolButton(parent), m_kind(kind), m_picture(picture),
      m_pressNotification(QStringLiteral("MybuttonMouseDown")) {
    static const bool once = [] {
        QAccessible::installFactory(pictureButtonAccess);
        return true;
    }();
    Q_UNUSED(once)
    setText(label);
    setAccessibleName(label);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(kind == Kind::Window || kind == Kind::WindowClose ? Qt::NoFocus : Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    if (kind == Kind::Icon || kind == Kind::Window || kind == Kind::WindowClose)
        setToolTip(label);
    connect(&Theme::instance(), &Theme::changed, this, [this] { update(); });
}

void PictureButton::setPicture(const QString& picture) {
    m_picture = picture;
    update();
}

void PictureButton::setOpensMenu(bool opens) {
    m_opensMenu = opens;
    updateGeometry();
    update();
}

void PictureButton::setPictureToken(Token token) {
    m_pictureToken = token;
    update();
}

QPoint PictureButton::menuPosition() const {
    constexpr int kMenuGap = 4;
    return mapToGlobal(QPoint(0, height() + kMenuGap));
}

ButtonLook PictureButton::look() const {
    const bool withText =
        m_kind != Kind::Icon && m_kind != Kind::Window && m_kind != Kind::WindowClose;
    return {.kind = m_kind,
            .text = withText ? text() : QString(),
            .picture = m_picture,
            .pictureToken = m_pictureToken,
            .caret = m_opensMenu && m_kind != Kind::Icon,
            .hovered = underMouse() && isEnabled(),
            .pressed = isDown(),
            .chosen = isChecked(),
            .enabled = isEnabled(),
            .ring = m_focusRing && hasFocus()};
}

QSize PictureButton::sizeHint() const {
    return buttonSize(look());
}

QSize PictureButton::minimumSizeHint() const {
    constexpr int kLeastTool = 48, kGivenAway = 14; // px
    const QSize whole = sizeHint();
    return m_kind == Kind::Tool
               ? QSize(std::max(kLeastTool, whole.width() - kGivenAway), whole.height())
               : whole;
}

void PictureButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintButton(painter, rect(), look());
}

void PictureButton::post(const QString& name) {
    platform::NSNotificationCenter::defaultCenter().postNotificationName_object(name, this);
}

void PictureButton::activate() {
    const QPointer<PictureButton> alive(this);
    setDown(true);
    post(m_pressNotification);
    if (alive == nullptr)
        return;
    setDown(false);
    click();
}

void PictureButton::mousePressEvent(QMouseEvent* event) {
    QToolButton::mousePressEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    const QPointer<PictureButton> alive(this);
    post(m_pressNotification);
    if (alive == nullptr)
        return;
    // A menu or an alert took the release: nothing else would ever lift the button.
    QTimer::singleShot(0, this, [this] {
        if (!QApplication::mouseButtons().testFlag(Qt::LeftButton))
            setDown(false);
    });
}

void PictureButton::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if (key != Qt::Key_Space && key != Qt::Key_Return && key != Qt::Key_Enter)
        return QToolButton::keyPressEvent(event);
    event->accept();
    if (!event->isAutoRepeat())
        activate();
}

void PictureButton::enterEvent(QEnterEvent* event) {
    QToolButton::enterEvent(event);
    post(QStringLiteral("PRbuttonMouseEntered"));
}

void PictureButton::leaveEvent(QEvent* event) {
    QToolButton::leaveEvent(event);
    post(QStringLiteral("PRbuttonMouseExited"));
}

void PictureButton::focusInEvent(QFocusEvent* event) {
    m_focusRing = showsFocusRing(event->reason());
    QToolButton::focusInEvent(event);
}

void PictureButton::focusOutEvent(QFocusEvent* event) {
    m_focusRing = false;
    QToolButton::focusOutEvent(event);
}

} // namespace clipheave::app
