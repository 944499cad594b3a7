// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

namespace clipheave::app {

/// A drawn landscape with a date in the chosen corner, layout, font and colour.
class StampPreview : public QWidget {
    Q_OBJECT
public:
    explicit StampPreview(QWidget* parent = nullptr);

    /// `position` and `dateFormat`: titles of the pop-up lists. An unknown position means the lower
    /// left corner, an unknown format the date as it is recorded, as on the stamped photos.
    void setStamp(const QString& position, const QString& dateFormat);
    /// `size` in points; the preview is small and shows only sizes that fit.
    void setStampFont(const QString& family, int size);
    void setStampColor(const QColor& color);
    [[nodiscard]] QString stampText() const { return m_text; }
    [[nodiscard]] Qt::Alignment corner() const { return m_corner; }
    [[nodiscard]] QSize sizeHint() const override { return {248, 166}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
    QString m_family;
    int m_size = 14;
    Qt::Alignment m_corner = Qt::AlignLeft | Qt::AlignBottom;
    QColor m_color = Qt::white;
};

} // namespace clipheave::app
