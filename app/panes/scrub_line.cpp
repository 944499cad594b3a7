// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/scrub_line.h"

#include "app/theme/theme.h"
#include "app/widgets/button_look.h"

#include <QFocusEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QWheelEvent>

#include <algorithm>
#include <climits>
#include <cmath>

namespace clipheave::app {

namespace {

constexpr double kTrackHeight = 4;
constexpr int kSecond = 1000;
constexpr double kScrubDisabledOpacity = 0.4;

int scrubTicks(double seconds) {
    return static_cast<int>(std::clamp(std::round(seconds * kSecond), 0.0, double{INT_MAX}));
}

} // namespace

ScrubLine::ScrubLine(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    setAccessibleName(tr("Position"));
    setFocusPolicy(Qt::TabFocus);
    setSingleStep(kSecond);
    setPageStep(10 * kSecond);
    setRange(0, 0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ScrubLine::showPosition(double seconds, double duration) {
    if (isSliderDown())
        return;
    const QSignalBlocker quiet(this);
    setRange(0, scrubTicks(duration));
    setValue(scrubTicks(seconds));
    update();
}

int ScrubLine::valueAt(double x) const {
    const double length = std::max(width() - 2 * kEnd, 1.0);
    const double part = std::clamp((x - kEnd) / length, 0.0, 1.0);
    return static_cast<int>(std::lround(part * maximum()));
}

double ScrubLine::placeOf(int value) const {
    const double part = maximum() > 0 ? static_cast<double>(value) / maximum() : 0;
    return kEnd + part * (width() - 2 * kEnd);
}

void ScrubLine::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || maximum() == 0)
        return event->ignore();
    setSliderDown(true);
    setSliderPosition(valueAt(event->position().x()));
    event->accept();
}

void ScrubLine::mouseMoveEvent(QMouseEvent* event) {
    if (!isSliderDown())
        return event->ignore();
    setSliderPosition(valueAt(event->position().x()));
    event->accept();
}

void ScrubLine::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !isSliderDown())
        return event->ignore();
    setSliderDown(false);
    event->accept();
}

/// Deliberate: scrolling the pane never moves the position by accident.
void ScrubLine::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void ScrubLine::focusInEvent(QFocusEvent* event) {
    m_focusRing = showsFocusRing(event->reason());
    QSlider::focusInEvent(event);
}

void ScrubLine::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (!isEnabled())
        painter.setOpacity(kScrubDisabledOpacity);
    const double middle = height() / 2.0;
    const double place = placeOf(sliderPosition());
    QRectF track(kEnd, middle - kTrackHeight / 2, width() - 2 * kEnd, kTrackHeight);
    painter.setBrush(Theme::colorOf(Token::line2, true));
    painter.drawRoundedRect(track, kTrackHeight / 2, kTrackHeight / 2);
    if (!isEnabled())
        return; // nothing is open: no knob that could be taken
    track.setRight(place);
    painter.setBrush(Theme::colorOf(Token::accent, true));
    painter.drawRoundedRect(track, kTrackHeight / 2, kTrackHeight / 2);
    if (showsRing())
        painter.drawEllipse(QPointF(place, middle), kEnd + 2, kEnd + 2);
    painter.setBrush(Theme::colorOf(Token::name, true));
    painter.drawEllipse(QPointF(place, middle), kEnd, kEnd);
}

} // namespace clipheave::app
