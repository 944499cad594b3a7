// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/accessible_roles.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QWidget>

namespace clipheave::app {

namespace {

struct DrawnRole {
    QLatin1String className;
    QAccessible::Role role;
};
constexpr DrawnRole kDrawnRoles[] = {
    {QLatin1String("clipheave::app::ArtworkWell"), QAccessible::Graphic},
    {QLatin1String("clipheave::app::MapView"), QAccessible::Graphic},
    {QLatin1String("clipheave::app::PlayerView"), QAccessible::Animation},
};

class DrawnAccess : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;
};

QAccessibleInterface* drawnAccess(const QString& className, QObject* object) {
    for (const DrawnRole& drawn : kDrawnRoles)
        if (className == drawn.className)
            return new DrawnAccess(static_cast<QWidget*>(object), drawn.role);
    return nullptr;
}

} // namespace

void installAccessibleRoles() {
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(drawnAccess);
        return true;
    }();
}

} // namespace clipheave::app
