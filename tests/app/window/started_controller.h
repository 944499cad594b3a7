// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/AppDelegate.h"
#include "app/words/words.h"
#include "tests/app/window/fake_desktop.h"

#include <memory>

namespace clipheave::app {

/// The application as after its start, its preferences and its storage folder "out" within `dir`.
/// None when the preferences cannot be written.
inline std::unique_ptr<AppDelegate>
startedController(const testkit::TempDir& dir,
                  const std::shared_ptr<FakeDesktop>& desktop = std::make_shared<FakeDesktop>()) {
    Surroundings surroundings = surroundingsOf(desktop, dir);
    if (!surroundings.defaults->setObject_forKey(dir.path(QStringLiteral("out")),
                                                 QStringLiteral("storagePath")))
        return nullptr;
    installWords();
    auto controller = std::make_unique<AppDelegate>(std::move(surroundings));
    controller->awakeFromNib();
    controller->applicationDidFinishLaunching();
    return controller;
}

} // namespace clipheave::app
