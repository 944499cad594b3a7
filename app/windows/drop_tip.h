// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QWidget>

class QMimeData;

namespace clipheave::app {

/// The list's place while it is empty: takes dropped files and folders and says so.
class DropTip : public QWidget {
    Q_OBJECT
public:
    explicit DropTip(QWidget* parent = nullptr);
    [[nodiscard]] QStringList droppedPaths() const { return m_paths; }

Q_SIGNALS:
    void pathsDropped(const QStringList& paths);
    void addRequested();
    void deviceRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QStringList m_paths;
    bool m_dragging = false;
};

/// The local paths of a drag; empty when it carries none.
[[nodiscard]] QStringList localPathsOf(const QMimeData* data);
/// What the list takes: the first path is audio, video or a folder.
[[nodiscard]] bool listTakesDrop(const QStringList& paths);

} // namespace clipheave::app
