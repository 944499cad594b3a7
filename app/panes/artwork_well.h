// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/encoded_image.h"

#include <QPixmap>
#include <QWidget>

class QImage;
class QMimeData;

namespace clipheave::app {

/// Cover art in a square: takes one image file by drop or paste, a click asks for one. Shows the
/// placeholder "artworkimage" when there is none.
class ArtworkWell : public QWidget {
    Q_OBJECT
public:
    explicit ArtworkWell(int side, QWidget* parent = nullptr);

    void setImage(const platform::EncodedImage& artwork);
    [[nodiscard]] const platform::EncodedImage& artwork() const { return m_image; }
    /// Returns the image file that was dropped or pasted last; empty when none was.
    [[nodiscard]] QString droppedPath() const { return m_droppedPath; }
    /// Takes the one image file of a drag or of a clipboard; false when it is anything else.
    bool take(const QMimeData* data);

Q_SIGNALS:
    /// The user clicked to choose a file.
    void openRequested();
    /// The user wants what is on the clipboard in the well.
    void pasteRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void decode();
    void takeDecoded(const QImage& image);

    platform::EncodedImage m_image;
    int m_decoding = 0; ///< counts setImage() calls: an image that comes late is dropped
    QPixmap m_pixmap;   ///< decoded, at most the well's own size; null: the placeholder
    QString m_droppedPath;
    bool m_dragging = false;
};

} // namespace clipheave::app
