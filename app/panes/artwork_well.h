// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/encoded_image.h"

#include <QPixmap>
#include <QWidget>

class QImage;
class QMimeData;

namespace clipheave::app {

/// Cover art in a square: takes one picture file by drop or paste, a click asks for one. Shows the
/// placeholder "artworkimage" when there is none.
class ArtworkWell : public QWidget {
    Q_OBJECT
public:
    explicit ArtworkWell(int side, QWidget* parent = nullptr);

    void setPicture(const platform::EncodedPicture& picture);
    [[nodiscard]] const platform::EncodedPicture& picture() const { return m_picture; }
    /// The picture file that was dropped or pasted last; empty when none was.
    [[nodiscard]] QString droppedPath() const { return m_droppedPath; }
    /// Takes a picture file from the clipboard.
    void paste();

Q_SIGNALS:
    /// The user clicked to choose a file.
    void openRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    bool take(const QMimeData* data);
    void decode();
    void takeDecoded(const QImage& image);

    platform::EncodedPicture m_picture;
    int m_decoding = 0; ///< counts setPicture() calls: a picture that comes late is dropped
    QPixmap m_pixmap;   ///< decoded, at most the well's own size; null: the placeholder
    QString m_droppedPath;
    bool m_dragging = false;
};

} // namespace clipheave::app
