// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/windows/own_window.h"

namespace clipheave::app {

/// Name, version, licence and the libraries that the program is made of.
class AboutWindow : public OwnWindow {
    Q_OBJECT
public:
    explicit AboutWindow(QWidget* parent);
    /// Makes the window visible unless it already is.
    static void present(QWidget* parent);
};

} // namespace clipheave::app
