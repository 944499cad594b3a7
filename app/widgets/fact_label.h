// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace clipheave::app {

/// Draws one line, aligned left, with the letter x of "3840 x 2160": given the whole text, some
/// fonts draw an x between numbers as a multiplication sign.
void drawWithPlainX(QPainter& painter, QRect rect, const QString& text);

/// One fact of a file. text() is the whole string ("File Size: 1.94 GB"), also when it is too long
/// to be shown; the part up to the first ": " is drawn as a label, the rest as the value, shortened
/// in its middle. The whole value is the tool tip.
class FactLabel : public QLabel {
    Q_OBJECT
public:
    /// `label` ends in ": " and is the whole text until there is a value.
    explicit FactLabel(const QString& label = {}, QWidget* parent = nullptr);

    /// `label` ("File Size: ") followed by the value; the bare label when it is empty.
    void setFact(const QString& label, const QString& value);
    void setFactText(const QString& whole);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace clipheave::app
