// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

#include <QWidget>

namespace clipheave::app {

class ThumbnailService;

/// The thumbnail of one item, filling the widget, with round corners; the image of its kind until
/// there is one. It shares the images of the photo browser.
class ThumbnailView : public QWidget {
    Q_OBJECT
public:
    /// `size` in px.
    explicit ThumbnailView(QSize size, QWidget* parent = nullptr);
    ~ThumbnailView() override;
    /// Shows the item; none when null.
    void setItem(media::ItemPointer item);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ThumbnailService& m_service;
    media::ItemPointer m_item;
};

} // namespace clipheave::app
