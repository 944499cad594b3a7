// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/stamp_preview.h"

#include "app/theme/theme.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace clipheave::app {

namespace {

constexpr char kRecorded[] = "2025:06:14 21:36:20";
/// Beside the text, in pixels of the photo: the margins of the stamp.
constexpr double kRoomBesideText = 90;

QColor mixed(const QColor& a, const QColor& b, double share) {
    const auto between = [share](int x, int y) {
        return static_cast<int>(std::lround(x + (y - x) * share));
    };
    return QColor(between(a.red(), b.red()), between(a.green(), b.green()),
                  between(a.blue(), b.blue()));
}

/// The same image in both themes: a photo does not change with the window.
QColor paint(Token token) {
    return Theme::colorOf(token, true);
}

QPainterPath ridge(const QRectF& area, double height, double roughness, double phase) {
    constexpr int kSteps = 96;
    QPainterPath path(area.bottomLeft());
    for (int i = 0; i <= kSteps; ++i) {
        const double t = static_cast<double>(i) / kSteps;
        const double wave = std::abs(std::sin(t * 5.2 + phase)) * 0.62 +
                            std::abs(std::sin(t * 13.7 + phase * 2.3)) * 0.26 +
                            std::sin(t * 41 + phase) * 0.05;
        path.lineTo(area.left() + t * area.width(),
                    area.bottom() - area.height() * (height + wave * roughness));
    }
    path.lineTo(area.bottomRight());
    path.closeSubpath();
    return path;
}

void drawLandscape(QPainter& painter, const QRectF& area) {
    const QColor blue = paint(Token::kVideo), warm = paint(Token::kPhoto),
                 white = paint(Token::name), night = paint(Token::mapSea);
    QLinearGradient sky(area.topLeft(), area.bottomLeft());
    sky.setColorAt(0, mixed(blue, night, 0.6));
    sky.setColorAt(0.6, mixed(mixed(blue, warm, 0.5), white, 0.45));
    painter.fillRect(area, sky);
    QRadialGradient sun(area.left() + area.width() * 0.38, area.top() + area.height() * 0.3,
                        area.width() * 0.3);
    QColor glow = mixed(warm, white, 0.6);
    sun.setColorAt(0, glow);
    glow.setAlphaF(0);
    sun.setColorAt(1, glow);
    painter.fillRect(area, sun);
    const struct {
        double height, roughness, phase, dark;
    } ridges[] = {{0.4, 0.3, 0.4, 0.3},
                  {0.26, 0.28, 1.7, 0.5},
                  {0.13, 0.24, 3.1, 0.72},
                  {0.02, 0.18, 4.6, 0.93}};
    for (const auto& [height, roughness, phase, dark] : ridges)
        painter.fillPath(ridge(area, height, roughness, phase),
                         mixed(mixed(blue, white, 0.35), night, dark));
}

} // namespace

StampPreview::StampPreview(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("stampPreview"));
    setFixedSize(StampPreview::sizeHint());
    setStamp({}, {});
    connect(&Theme::instance(), &Theme::changed, this, [this] { update(); });
}

void StampPreview::setStamp(const QString& position, const QString& dateFormat) {
    m_style.position = position;
    m_style.layout = dateFormat;
    m_text = photo::stampText(QLatin1String(kRecorded), dateFormat);
    setAccessibleName(tr("Stamp: %1").arg(m_text));
    update();
}

void StampPreview::setStampFont(const QString& family, int size) {
    m_style.font = family;
    m_style.fontSize = size;
    update();
}

void StampPreview::setStampColor(const QColor& color) {
    m_style.color = color;
    update();
}

/// The job's own drawing on a photo of the landscape's aspect ratio.
void StampPreview::paintStamp(QPainter& painter) const {
    const double needed = photo::stampTextSize(m_text, m_style).width() + kRoomBesideText;
    const double scale = std::max(1.0, needed / width());
    painter.scale(1 / scale, 1 / scale);
    photo::drawStamp(painter, (QSizeF(size()) * scale).toSize(), m_text, m_style);
}

void StampPreview::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath frame;
    frame.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
    painter.save();
    painter.setClipPath(frame);
    drawLandscape(painter, rect());
    paintStamp(painter);
    painter.restore();
    painter.setPen(Theme::instance().color(Token::line1));
    painter.drawPath(frame);
}

} // namespace clipheave::app
