// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme.h"
#include "app/widgets/image_button.h"
#include "app/widgets/title_bar.h"
#include "app/windows/command_tables.h"
#include "app/windows/main_window.h"
#include "app/windows/menu_images.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

namespace clipheave::app {

void MainWindow::fillMenu(QMenu& menu, const MenuEntry* entries, int count, bool withShortcuts) {
    for (int i = 0; i < count; ++i) {
        const MenuEntry& entry = entries[i];
        if (!entry.title) {
            menu.addSeparator();
            continue;
        }
        const QString title = tr(entry.title);
        if (entry.submenu) {
            QMenu* submenu = menu.addMenu(title);
            submenu->setIcon(themeIcon(menuImage({}, QLatin1String(entry.title)), Token::text2));
            fillMenu(*submenu, entry.submenu, entry.submenuCount, withShortcuts);
            continue;
        }
        QAction* action = menu.addAction(title);
        // Workers compare the fixed title; desktops may put mnemonics into the text.
        action->setData(QString::fromUtf8(entry.title));
        action->setObjectName(QLatin1String(entry.command));
        const QString command = QLatin1String(entry.command);
        action->setIcon(themeIcon(menuImage(command, {}), Token::text2));
        if (entry.shortcut)
            action->setShortcut(QKeySequence(QLatin1String(entry.shortcut)));
        if (!withShortcuts) // shown only: the entry of the menu bar has the key
            action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, &QAction::triggered, this, [this, action, command] {
            Q_EMIT commandRequested(command, action->data().toString());
        });
    }
}

void MainWindow::makeMenus() {
    for (const MenuTable& table : menuBarMenus()) {
        QMenu* menu = m_titleBar->menuBar()->addMenu(tr(table.title));
        menu->setObjectName(QLatin1String(table.name));
        fillMenu(*menu, table.entries.data(), static_cast<int>(table.entries.size()), true);
    }
    for (const MenuTable& table : popUpMenus()) {
        auto* menu = new QMenu(this);
        menu->setObjectName(QLatin1String(table.name));
        fillMenu(*menu, table.entries.data(), static_cast<int>(table.entries.size()), false);
        m_menus.append(menu);
    }
}

QMenu* MainWindow::menu(const QString& name) const {
    for (QMenu* menu : m_menus)
        if (menu->objectName() == name)
            return menu;
    return nullptr;
}

void MainWindow::popUpMenu(const QString& name, QObject* button) {
    QMenu* popUp = menu(name);
    const auto* imageButton = qobject_cast<ImageButton*>(button);
    if (popUp && imageButton)
        popUp->popup(imageButton->menuPosition());
}

} // namespace clipheave::app
