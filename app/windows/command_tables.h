// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>

// Which button does what, and what the menus hold: one table each, read by the dispatcher, by the
// menu bar and by the tests that walk them.
namespace clipheave::app {

enum class DispatchKind { Command, Menu };

/// One button of the dispatcher, in the fixed order of comparison.
struct DispatchRow {
    const char* button;
    const char* pressedImage; ///< null: keeps its image
    const char* normalImage;  ///< set again after a plain command; null: none
    DispatchKind kind;
    const char* target; ///< command or menu
};
[[nodiscard]] std::span<const DispatchRow> dispatchRows();

/// One entry of a menu. A null title is a separator.
struct MenuEntry {
    const char* title;    ///< fixed: identifies the entry to a command that has several
    const char* command;  ///< fixed name of the operation
    const char* shortcut; ///< portable text, null: none
    const MenuEntry* submenu = nullptr; ///< then the entry opens it and has no command
    int submenuCount = 0;
};
struct MenuTable {
    const char* name;  ///< "videoEditMenu"
    const char* title; ///< in the menu bar, null: pop-up only
    std::span<const MenuEntry> entries;
};
/// The pop-up menus of the buttons.
[[nodiscard]] std::span<const MenuTable> popUpMenus();
/// The menus of the menu bar, in order.
[[nodiscard]] std::span<const MenuTable> menuBarMenus();

} // namespace clipheave::app
