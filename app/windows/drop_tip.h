// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QWidget>

namespace clipheave::app {

/// Stands in place of an empty list: asks for files and folders and takes those that are dropped.
class DropTip : public QWidget {
    Q_OBJECT
public:
    explicit DropTip(QWidget* parent = nullptr);
    [[nodiscard]] QStringList droppedPaths() const { return m_paths; }

Q_SIGNALS:
    void pathsDropped(const QStringList& paths);
    /// The first path is a photo.
    void photosDropped(const QStringList& paths);
    void addRequested();
    void deviceRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    [[nodiscard]] QLayout* makeButtons();

    QStringList m_paths;
    bool m_dragging = false;
};

} // namespace clipheave::app
