// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QList>
#include <QMimeData>
#include <QStringList>
#include <QUrl>
#include <QWidget>

namespace clipheave::app {

inline QList<QUrl> urlsOf(const QStringList& paths) {
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    return urls;
}

/// Drops files on a control as another program does; false when it does not take them.
inline bool dropFiles(QWidget* target, const QStringList& paths) {
    QMimeData data;
    data.setUrls(urlsOf(paths));
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &drop);
    return drop.isAccepted();
}

} // namespace clipheave::app
