// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QRectF>
#include <QSize>
#include <QString>

class QPainter;

namespace clipheave::photo {

/// How a date is drawn onto photos.
struct StampStyle {
    QString position;  ///< a title of media::stampPositions(), or none of them
    QString layout;    ///< a title of media::stampDateFormats(), or none of them
    QString font;      ///< family; one that is not installed is replaced by a near one
    int fontSize = 14; ///< pixels of the photo
    QColor color = Qt::white;
};

/// Returns a recorded date ("2025:06:14 21:36:20", or with "-") in the order of the layout:
/// "06/14/2025 21:36:20". Deliberate: seconds are shown although the titles end in "HH:MM". A text
/// that is not built this way, or a layout that is not known, leaves the text as it is recorded.
[[nodiscard]] QString stampText(const QString& recorded, const QString& layout);

/// Returns where the text is drawn on a photo, from the top left of the rectangle on, in pixels
/// with the origin at the photo's lower left corner and y upwards: `x()`, `y()` are the rectangle's
/// lower left corner. A position that is no title, as the first start stores it, gives the coarse
/// place: 400 x 50 pixels at (50, 30), whatever the text needs; so does a text without a size.
[[nodiscard]] QRectF stampRectangle(QSize photo, QSizeF text, const QString& position);

/// Draws the text onto a photo of this size, whose top left corner is the painter's origin. Text
/// that does not fit into its rectangle goes on in the next line, and is cut at the rectangle's
/// end. Any thread of a program with a QGuiApplication.
void drawStamp(QPainter& painter, QSize photo, const QString& text, const StampStyle& style);
/// Returns the size that the text takes in one line, in pixels of the photo.
[[nodiscard]] QSizeF stampTextSize(const QString& text, const StampStyle& style);

} // namespace clipheave::photo
