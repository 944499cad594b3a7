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

/// Reports the pop-up menu to assistive technology; QToolButton does so only for a menu of its own.
class ImageButtonAccess : public QAccessibleWidget {
public:
    explicit ImageButtonAccess(ImageButton* button)
        : QAccessibleWidget(button, QAccessible::Button) {}

    /// Computed on each call: this object often exists before the button has its menu.
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
    [[nodiscard]] ImageButton* button() const { return static_cast<ImageButton*>(object()); }
};

QAccessibleInterface* imageButtonAccess(const QString&, QObject* object) {
    auto* button = qobject_cast<ImageButton*>(object);
    return button != nullptr ? new ImageButtonAccess(button) : nullptr;
}

} // namespace

ImageButton::ImageButton(Kind kind, const QString& label, const QString& image, QWidget* parent)
    : QToolButton(parent), m_kind(kind), m_image(image),
      m_pressNotification(QStringLiteral("MybuttonMouseDown")) {
    static const bool once = [] {
        QAccessible::installFactory(imageButtonAccess);
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

void ImageButton::setImage(const QString& image) {
    m_image = image;
    update();
}

void ImageButton::setOpensMenu(bool opens) {
    m_opensMenu = opens;
    updateGeometry();
    update();
}

QPoint ImageButton::menuPosition() const {
    constexpr int kMenuGap = 4;
    return mapToGlobal(QPoint(0, height() + kMenuGap));
}

ButtonLook ImageButton::look() const {
    const bool withText =
        m_kind != Kind::Icon && m_kind != Kind::Window && m_kind != Kind::WindowClose;
    return {.kind = m_kind,
            .text = withText ? text() : QString(),
            .image = m_image,
            .caret = m_opensMenu && m_kind != Kind::Icon,
            .hovered = underMouse() && isEnabled(),
            .pressed = isDown(),
            .chosen = isChecked(),
            .enabled = isEnabled(),
            .ring = m_focusRing && hasFocus()};
}

QSize ImageButton::sizeHint() const {
    return buttonSize(look());
}

QSize ImageButton::minimumSizeHint() const {
    constexpr int kLeastTool = 48, kGivenAway = 14; // px
    const QSize whole = sizeHint();
    return m_kind == Kind::Tool
               ? QSize(std::max(kLeastTool, whole.width() - kGivenAway), whole.height())
               : whole;
}

void ImageButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintButton(painter, rect(), look());
}

void ImageButton::post(const QString& name) {
    platform::NSNotificationCenter::defaultCenter().postNotificationName_object(name, this);
}

void ImageButton::activate() {
    const QPointer<ImageButton> alive(this);
    setDown(true);
    post(m_pressNotification);
    if (alive == nullptr)
        return;
    setDown(false);
    click();
}

void ImageButton::mousePressEvent(QMouseEvent* event) {
    QToolButton::mousePressEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    const QPointer<ImageButton> alive(this);
    post(m_pressNotification);
    if (alive == nullptr)
        return;
    // A menu or an alert took the release: nothing else would ever lift the button.
    QTimer::singleShot(0, this, [this] {
        if (!QApplication::mouseButtons().testFlag(Qt::LeftButton))
            setDown(false);
    });
}

void ImageButton::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if (key != Qt::Key_Space && key != Qt::Key_Return && key != Qt::Key_Enter)
        return QToolButton::keyPressEvent(event);
    event->accept();
    if (!event->isAutoRepeat())
        activate();
}

void ImageButton::enterEvent(QEnterEvent* event) {
    QToolButton::enterEvent(event);
    post(QStringLiteral("PRbuttonMouseEntered"));
}

void ImageButton::leaveEvent(QEvent* event) {
    QToolButton::leaveEvent(event);
    post(QStringLiteral("PRbuttonMouseExited"));
}

void ImageButton::focusInEvent(QFocusEvent* event) {
    m_focusRing = showsFocusRing(event->reason());
    QToolButton::focusInEvent(event);
}

void ImageButton::focusOutEvent(QFocusEvent* event) {
    m_focusRing = false;
    QToolButton::focusOutEvent(event);
}

} // namespace clipheave::app
