// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme_resources.h"

#include <QDir>

// The macro declares a function and must stand outside of every namespace.
static void registerThemeResources() {
    Q_INIT_RESOURCE(resources);
}

namespace clipheave::app {

void initThemeResources() {
    static const bool once = [] {
        registerThemeResources();
        return true;
    }();
    Q_UNUSED(once)
}

} // namespace clipheave::app
