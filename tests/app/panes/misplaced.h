// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/widgets/map_view.h"
#include "tests/testkit/testkit.h"

#include <QStringList>
#include <QWidget>

#include <algorithm>

namespace clipheave::app {

/// Controls of a body that reach out of it or lie over each other.
inline QStringList misplaced(const QWidget* part) {
    QStringList faults;
    QList<QRect> taken;
    for (const QWidget* control : part->findChildren<QWidget*>()) {
        if (!control->isVisibleTo(part) || !control->findChildren<QWidget*>().isEmpty() ||
            qobject_cast<MapView*>(control->parentWidget()) != nullptr)
            continue;
        const QRect place(control->mapTo(part, QPoint()), control->size());
        const auto over = [&place](const QRect& other) { return other.intersects(place); };
        if (!part->rect().contains(place) || std::any_of(taken.begin(), taken.end(), over))
            faults.append(
                u"%1 %2 at %3, %4"_s
                    .arg(QLatin1String(control->metaObject()->className()), control->objectName())
                    .arg(place.x())
                    .arg(place.y()));
        taken.append(place);
    }
    if (taken.size() < 30)
        faults.append(u"only %1 controls"_s.arg(taken.size()));
    return faults;
}

} // namespace clipheave::app
