// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/grab_states.h"

#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/image_button.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHoverEvent>
#include <QPainter>
#include <QRadioButton>

#include <functional>
#include <vector>

namespace clipheave::app {

namespace {

enum class ControlState { Normal, Hover, Pressed, Focus, Disabled };
constexpr ControlState kControlStates[] = {ControlState::Normal, ControlState::Hover,
                                           ControlState::Pressed, ControlState::Focus,
                                           ControlState::Disabled};
constexpr int kStateColumn = 170, kStateRow = 64, kStateEdge = 24; // px

using MakeControl = std::function<QWidget*(QWidget* parent)>;

QString stateName(ControlState state) {
    switch (state) {
    case ControlState::Normal:
        return QStringLiteral("Normal");
    case ControlState::Hover:
        return QStringLiteral("Hover");
    case ControlState::Pressed:
        return QStringLiteral("Pressed");
    case ControlState::Focus:
        return QStringLiteral("Focus");
    case ControlState::Disabled:
        return QStringLiteral("Disabled");
    }
    return {};
}

/// Only one control at a time can have the focus or the pointer: each is shown in a window of its
/// own for its image.
QPixmap controlIn(ControlState state, const MakeControl& make) {
    QWidget window;
    QPalette ground = window.palette();
    ground.setColor(QPalette::Window, Theme::instance().color(Token::bg1));
    window.setPalette(ground);
    QWidget* control = make(&window);
    control->adjustSize();
    if (auto* field = qobject_cast<QLineEdit*>(control))
        field->resize(148, field->height());
    control->move(4, 4);
    window.resize(control->size() + QSize(8, 8));
    window.show();
    window.activateWindow();
    QApplication::processEvents();
    control->clearFocus();
    control->setEnabled(state != ControlState::Disabled);
    const bool pointer = state == ControlState::Hover || state == ControlState::Pressed;
    control->setAttribute(Qt::WA_UnderMouse, pointer);
    if (pointer) {
        QHoverEvent enter(QEvent::HoverEnter, QPointF(9, 9), QPointF(9, 9), QPointF(-1, -1));
        QApplication::sendEvent(control, &enter);
    }
    if (auto* button = qobject_cast<QAbstractButton*>(control))
        button->setDown(state == ControlState::Pressed);
    if (state == ControlState::Focus) {
        window.setAttribute(Qt::WA_KeyboardFocusChange); // as after a Tab
        control->setFocus(Qt::TabFocusReason);
    }
    QApplication::processEvents();
    return window.grab();
}

std::vector<MakeControl> shownControls() {
    const auto tool = [](QWidget* parent) -> QWidget* {
        auto* button = new ImageButton(ButtonKind::Tool, QStringLiteral("Convert"),
                                       QStringLiteral("convert"), parent);
        button->setOpensMenu(true);
        return button;
    };
    const auto field = [](QWidget* parent) -> QWidget* {
        auto* edit = new EditField(parent);
        edit->setShownText(QStringLiteral("Halla Brim"));
        return edit;
    };
    const auto changed = [](QWidget* parent) -> QWidget* {
        auto* edit = new EditField(parent);
        edit->setShownText(QStringLiteral("Halla Brim"));
        edit->setText(QStringLiteral("Halla B."));
        return edit;
    };
    const auto popUp = [](QWidget* parent) -> QWidget* {
        auto* box = new QComboBox(parent);
        box->addItem(QStringLiteral("Minute"));
        return box;
    };
    const auto check = [](QWidget* parent) -> QWidget* {
        auto* box = new QCheckBox(QStringLiteral("Checked"), parent);
        box->setChecked(true);
        return box;
    };
    const auto radio = [](QWidget* parent) -> QWidget* {
        auto* button = new QRadioButton(QStringLiteral("Chosen"), parent);
        button->setChecked(true);
        return button;
    };
    const auto button = [](ButtonKind kind, const char* label, const char* image) {
        return [kind, label, image](QWidget* parent) -> QWidget* {
            return new Button(kind, QLatin1String(label), QLatin1String(image), parent);
        };
    };
    return {button(ButtonKind::Primary, "Save Changes", "check"),
            button(ButtonKind::Plain, "Choose...", ""),
            button(ButtonKind::Danger, " Delete ", ""),
            tool,
            button(ButtonKind::Icon, "", "reveal"),
            field,
            changed,
            popUp,
            check,
            radio};
}

} // namespace

QPixmap grabStates() {
    const std::vector<MakeControl> controls = shownControls();
    const int rows = static_cast<int>(controls.size());
    const int columns = static_cast<int>(std::size(kControlStates));
    const double ratio = qApp->devicePixelRatio();
    const QSize size(2 * kStateEdge + columns * kStateColumn,
                     2 * kStateEdge + kStateRow / 2 + rows * kStateRow);
    QPixmap sheet(size * ratio);
    sheet.setDevicePixelRatio(ratio);
    sheet.fill(Theme::instance().color(Token::bg1));
    QPainter painter(&sheet);
    painter.setFont(Theme::instance().font(FontRole::Cell));
    painter.setPen(Theme::instance().color(Token::text3));
    for (int column = 0; column < columns; ++column) {
        const int left = kStateEdge + column * kStateColumn;
        painter.drawText(left + 4, kStateEdge + 10, stateName(kControlStates[column]));
        for (int row = 0; row < rows; ++row)
            painter.drawPixmap(
                left, kStateEdge + kStateRow / 2 + row * kStateRow,
                controlIn(kControlStates[column], controls[static_cast<std::size_t>(row)]));
    }
    return sheet;
}

} // namespace clipheave::app
