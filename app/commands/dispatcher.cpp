// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/command_state.h"
#include "app/windows/command_tables.h"
#include "app/windows/main_window.h"

#include <QMetaMethod>

namespace clipheave::app {

namespace {

/// Invokable operations of the controller and of the window, by their fixed names.
bool invoke(QObject* object, const QByteArray& name) {
    const int index = object->metaObject()->indexOfMethod(name + "()");
    return index >= 0 && object->metaObject()->method(index).invoke(object, Qt::DirectConnection);
}

} // namespace

void AppDelegate::MyClosebuttonMouseDownHandle(QObject* button) {
    if (!button || button->objectName() != u"closeBtn")
        return;
    m_window->setTitleButtonPressed(true);
    CloseTheMainWindow();
    m_window->setTitleButtonPressed(false);
}

void AppDelegate::MybuttonMouseDownHandle(QObject* button) {
    if (!button)
        return;
    for (const DispatchRow& row : dispatchRows()) {
        if (button->objectName() != QLatin1String(row.button))
            continue;
        m_window->setButtonImage(button, row.pressedImage);
        if (row.kind == DispatchKind::Menu) {
            m_window->popUpMenu(QLatin1String(row.target), button);
            return;
        }
        performCommand(QLatin1String(row.target));
        m_window->setButtonImage(button, row.normalImage);
        return;
    }
}

void AppDelegate::PRbuttonMouseEnteredHandle(QObject* button) {
    m_window->setButtonHovered(button, true);
}

void AppDelegate::PRbuttonMouseExitedHandle(QObject* button) {
    m_window->setButtonHovered(button, false);
}

void AppDelegate::performCommand(const QString& name, const QString& title) {
    m_command->title = title;
    const QByteArray method = name.toLatin1();
    if (!invoke(this, method) && !invoke(m_window.get(), method))
        notAvailableYet(name);
}

void AppDelegate::notAvailableYet(const QString& command) {
    m_activity->addLog(
        tr("%1: not available yet").arg(m_command->title.isEmpty() ? command : m_command->title));
    m_window->showStatus(tr("Not available yet"));
}

} // namespace clipheave::app
