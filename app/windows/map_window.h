// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/windows/own_window.h"

namespace clipheave::app {

class MapView;

/// Where one photo was taken, on the map alone. Movable, not modal.
class MapWindow : public OwnWindow {
    Q_OBJECT
public:
    explicit MapWindow(QWidget* parent);

    /// Shows the position (degrees) with a pin, under the photo's name, and brings the window up.
    void present(const QString& name, double latitude, double longitude);
    [[nodiscard]] MapView* map() const { return m_map; }

private:
    MapView* m_map;
};

} // namespace clipheave::app
