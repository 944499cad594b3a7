// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "photo/stamp_drawing.h"

#include <QColor>
#include <QString>
#include <QWidget>

namespace clipheave::app {

/// A drawn landscape, stamped as photos are, in the chosen corner, layout, font and colour.
class StampPreview : public QWidget {
    Q_OBJECT
public:
    explicit StampPreview(QWidget* parent = nullptr);

    /// `position` and `dateFormat`: titles of the pop-up lists, or none of them, as photos are
    /// stamped then.
    void setStamp(const QString& position, const QString& dateFormat);
    /// `size` in pixels of the photo. The landscape stands for a photo that is as large as the text
    /// needs, and is shrunk with it.
    void setStampFont(const QString& family, int size);
    void setStampColor(const QColor& color);
    [[nodiscard]] QString stampText() const { return m_text; }
    [[nodiscard]] QSize sizeHint() const override { return {248, 166}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintStamp(QPainter& painter) const;

    QString m_text;
    photo::StampStyle m_style;
};

} // namespace clipheave::app
