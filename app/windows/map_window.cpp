// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/map_window.h"

#include "app/theme/theme.h"
#include "app/widgets/map_view.h"

#include <QVBoxLayout>

namespace clipheave::app {

namespace {

constexpr QSize kMapSize(720, 480);
constexpr int kAroundMap = 16;

} // namespace

MapWindow::MapWindow(QWidget* parent) : OwnWindow(tr("Map"), parent), m_map(new MapView(body())) {
    setObjectName(QStringLiteral("mapWindow"));
    const Theme& theme = Theme::instance();
    setFixedSize(theme.scaled(kMapSize.width()), theme.scaled(kMapSize.height()));
    m_map->setObjectName(QStringLiteral("photoMapView"));
    auto* column = new QVBoxLayout(body());
    column->setContentsMargins(kAroundMap, kAroundMap, kAroundMap, kAroundMap);
    column->addWidget(m_map);
}

void MapWindow::present(const QString& name, double latitude, double longitude) {
    setSubtitle(name);
    m_map->setCentre(latitude, longitude);
    m_map->removeAllAnnotations();
    m_map->addAnnotation(latitude, longitude);
    show();
    raise();
    activateWindow();
    m_map->setFocus(Qt::OtherFocusReason); // keys zoom and move it
}

} // namespace clipheave::app
