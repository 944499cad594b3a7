// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QWidget>

class QAbstractScrollArea;
class QDropEvent;
class QMimeData;

namespace clipheave::app {

/// Returns the local files that a drag carries, in its order, with names of any bytes.
[[nodiscard]] QStringList droppedPaths(const QMimeData* data);
/// Returns true when the first path is an audio file, a video file or a folder.
[[nodiscard]] bool takesDrop(const QStringList& paths);

/// Returns true when the first path is a photo.
[[nodiscard]] bool takesPhotoDrop(const QStringList& paths);

/// Lets files and folders be dropped onto a list view: while a drag that is taken is over the view,
/// an outline and "Add 12 items" say so; any other drag, one from this view included, is refused.
class DropOutline : public QWidget {
    Q_OBJECT
public:
    /// `photosToo`: a drag whose first path is a photo is taken as well.
    explicit DropOutline(QAbstractScrollArea* view, bool photosToo = false);
    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void pathsDropped(const QStringList& paths);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void enter(QDropEvent& event);
    void end();

    QAbstractScrollArea* m_view;
    bool m_photosToo;
    QStringList m_paths; ///< of the drag over the view; empty when it is refused
};

} // namespace clipheave::app
