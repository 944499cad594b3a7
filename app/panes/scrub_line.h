// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSlider>

namespace clipheave::app {

/// The slider of the playback position, in milliseconds. A press goes to that place and drags on;
/// Left and Right go a second, Page Up and Page Down ten.
class ScrubLine : public QSlider {
    Q_OBJECT
public:
    explicit ScrubLine(QWidget* parent = nullptr);
    /// Moves the knob without a signal; ignored while it is dragged.
    void showPosition(double seconds, double duration);

    [[nodiscard]] QSize sizeHint() const override { return {120, 16}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {48, 16}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

    /// px at both ends that no value lies on
    static constexpr double kEnd = 6;
    [[nodiscard]] double placeOf(int value) const;
    [[nodiscard]] bool showsRing() const { return m_focusRing && hasFocus(); }

private:
    [[nodiscard]] int valueAt(double x) const;

    bool m_focusRing = false;
};

} // namespace clipheave::app
