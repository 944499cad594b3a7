// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

#include <QWidget>

namespace clipheave::app {

struct ThumbnailShape;

/// A photo fitted into a dark well. The thumbnail service decodes it on its own threads, raw and
/// HEIF photos too; until then, and where nothing larger can be had, the tile's image stands there.
class PhotoPreview : public QWidget {
    Q_OBJECT
public:
    explicit PhotoPreview(QWidget* parent = nullptr);
    /// Shows a photo; null: none.
    void setItem(const media::ItemPointer& item);
    /// Sets the width in px; the height is two thirds of it.
    void setPreviewWidth(int width);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void ask();
    [[nodiscard]] ThumbnailShape shape() const;

    media::ItemPointer m_item;
};

} // namespace clipheave::app
