// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme.h"
#include "app/widgets/map_coast.h"
#include "app/widgets/map_view.h"

#include <QAbstractButton>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace clipheave::app {
namespace {

constexpr double kMapRadius = 8;
constexpr double kGridSpacing = 64; ///< least px between two lines
constexpr double kEquatorMetres = 40075016.686;
constexpr double kPi = std::numbers::pi;
constexpr int kLabelHeight = 20;
constexpr int kLabelMargin = 8;
constexpr int kLabelPadding = 7;
constexpr int kLongestScaleBar = 64;
/// Wider views have no one scale: Mercator stretches the north.
constexpr double kWidestScaleSpan = 40;
constexpr double kPinScale = 0.8;
/// From this many points on, lines are drawn the fast way.
constexpr int kManyElements = 500;

struct MapStrokes {
    QPainterPath coast, borders;
};

/// Fills one copy of the world and adds its lines to `strokes`, which go over the areas of all
/// copies. Ring by ring: one path of them all takes the rasteriser many times as long.
void drawLand(QPainter& painter, const MapFrame& frame, const std::vector<CoastLine>& lines,
              MapStrokes& strokes) {
    const QColor land = Theme::instance().color(Token::mapLand);
    const QColor sea = Theme::instance().color(Token::mapSea);
    painter.setPen(Qt::NoPen);
    for (const CoastLine& line : lines) {
        const CoastShape shape = coastShape(line, frame);
        if (!shape.area.isEmpty()) {
            painter.setBrush(line.kind == CoastLine::Kind::Water ? sea : land);
            painter.drawPolygon(shape.area);
        }
        (line.kind == CoastLine::Kind::Border ? strokes.borders : strokes.coast)
            .addPath(shape.strokes);
    }
}

QPen strokePen(const QColor& color, const QPainterPath& path, double width, Qt::PenStyle style) {
    QPen pen(color, width, style);
    if (path.elementCount() < kManyElements)
        return pen;
    pen.setWidth(1); // cosmetic lines of one px are drawn without an outline of their own
    pen.setCosmetic(true);
    return pen;
}

void drawStrokes(QPainter& painter, const MapStrokes& strokes) {
    const Theme& theme = Theme::instance();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(strokePen(theme.color(Token::mapLine, 0.8), strokes.borders, 1.2, Qt::DotLine));
    painter.drawPath(strokes.borders);
    painter.setPen(strokePen(theme.color(Token::mapLine), strokes.coast, 1.3, Qt::SolidLine));
    painter.drawPath(strokes.coast);
}

double gridStep(double pixelsPerDegree) {
    for (const double unit : {0.001, 0.01, 0.1, 1.0, 10.0})
        for (const double times : {1.0, 2.0, 5.0})
            if (unit * times * pixelsPerDegree >= kGridSpacing)
                return unit * times;
    return 30;
}

void drawGrid(QPainter& painter, const MapFrame& frame) {
    const double step = gridStep(frame.scale / 360);
    const auto y = [&](double pixel) { return frame.origin.y() + pixel / frame.scale; };
    const double west = longitudeOf(frame.origin.x());
    const double east = longitudeOf(frame.origin.x() + frame.visible.width() / frame.scale);
    const double north = latitudeOf(y(0));
    const double south = latitudeOf(y(frame.visible.height()));
    painter.setPen(QPen(Theme::instance().color(Token::mapGrid), 1));
    for (int line = static_cast<int>(std::ceil(west / step)); line * step <= east; ++line) {
        const double x = ((line * step + 180) / 360 - frame.origin.x()) * frame.scale;
        painter.drawLine(QPointF(x, 0), QPointF(x, frame.visible.height()));
    }
    for (int line = static_cast<int>(std::ceil(south / step)); line * step <= north; ++line) {
        const double top = (mercatorOf(line * step, 0).y() - frame.origin.y()) * frame.scale;
        painter.drawLine(QPointF(0, top), QPointF(frame.visible.width(), top));
    }
}

void drawLabelBox(QPainter& painter, const QRect& box) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::instance().color(Token::bg1, 0.88));
    painter.drawRoundedRect(box, 4, 4);
}

struct ScaleBar {
    int width = 0; ///< px
    QString text;
};

/// The longest round distance that fits.
ScaleBar scaleBarFor(double metresPerPixel) {
    const double longest = kLongestScaleBar * metresPerPixel;
    double metres = std::pow(10.0, std::floor(std::log10(longest)));
    for (const double times : {5.0, 2.0})
        if (metres * times <= longest) {
            metres *= times;
            break;
        }
    const bool far = metres >= 1000;
    return {static_cast<int>(std::lround(metres / metresPerPixel)),
            (far ? MapView::tr("%1 km") : MapView::tr("%1 m"))
                .arg(QString::number(far ? metres / 1000 : metres, 'g', 6))};
}

QPainterPath pinShape() {
    QPainterPath path;
    path.moveTo(0, 0);
    path.cubicTo(-3, -8, -12, -14, -12, -24);
    path.arcTo(QRectF(-12, -36, 24, 24), 180, -180);
    path.cubicTo(12, -14, 3, -8, 0, 0);
    path.closeSubpath();
    return path;
}

} // namespace

void MapView::renderBase() {
    if (size().isEmpty())
        return;
    const double ratio = devicePixelRatioF();
    m_base = QPixmap(size() * ratio);
    m_base.setDevicePixelRatio(ratio);
    m_base.fill(Theme::instance().color(Token::mapSea));
    QPainter painter(&m_base);
    painter.setRenderHint(QPainter::Antialiasing);
    MapFrame frame{m_world - QPointF(width(), height()) / 2 / m_scale, m_scale, rect()};
    const double firstOrigin = frame.origin.x();
    const CoastMap& map = CoastMap::instance();
    if (map.levelCount() > 0) {
        const auto& lines = map.level(map.levelFor(m_scale));
        // Lines over the date line go on beyond the world, so neighbouring copies are checked too.
        const int first = static_cast<int>(std::floor(firstOrigin)) - 1;
        const int last = static_cast<int>(std::floor(firstOrigin + width() / m_scale)) + 1;
        MapStrokes strokes;
        for (int copy = first; copy <= last; ++copy) {
            frame.origin.setX(firstOrigin - copy);
            drawLand(painter, frame, lines, strokes);
        }
        drawStrokes(painter, strokes);
    }
    frame.origin.setX(firstOrigin);
    drawGrid(painter, frame);
    painter.end();
    // Round corners, cut once here instead of at every paint.
    QPixmap shaped(m_base.size());
    shaped.setDevicePixelRatio(ratio);
    shaped.fill(Qt::transparent);
    QPainter corner(&shaped);
    corner.setRenderHint(QPainter::Antialiasing);
    corner.setPen(Qt::NoPen);
    corner.setBrush(Theme::instance().color(Token::mapSea));
    corner.drawRoundedRect(rect(), kMapRadius, kMapRadius);
    corner.setCompositionMode(QPainter::CompositionMode_SourceIn);
    corner.drawPixmap(0, 0, m_base);
    corner.end();
    m_base = shaped;
}

void MapView::paintPins(QPainter& painter) const {
    const Theme& theme = Theme::instance();
    const QColor white = Theme::colorOf(Token::name, true);
    for (const GeoPoint& point : m_annotations) {
        const QPointF tip = pixelOf(point);
        if (!QRectF(rect()).adjusted(-20, -4, 20, 40).contains(tip))
            continue;
        painter.save();
        painter.translate(tip);
        painter.scale(kPinScale, kPinScale);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.color(Token::well, 0.35));
        painter.drawEllipse(QPointF(0, 0), 7, 2.6);
        painter.setPen(QPen(white, 2));
        painter.setBrush(theme.color(Token::bad));
        painter.drawPath(pinShape());
        painter.setPen(Qt::NoPen);
        painter.setBrush(white);
        painter.drawEllipse(QPointF(0, -24), 4.2, 4.2);
        painter.restore();
    }
}

void MapView::paintOverlay(QPainter& painter) const {
    const Theme& theme = Theme::instance();
    const QFont font = theme.font(FontRole::Caption);
    const QFontMetrics metrics(font);
    painter.setFont(font);
    const int top = height() - kLabelMargin - kLabelHeight;
    const QRect position(kLabelMargin, top,
                         metrics.horizontalAdvance(positionText()) + 2 * kLabelPadding,
                         kLabelHeight);
    drawLabelBox(painter, position);
    painter.setPen(theme.color(m_hasPosition ? Token::text1 : Token::text2));
    painter.drawText(position, Qt::AlignCenter, positionText());
    if (span().latitude > kWidestScaleSpan)
        return;
    const double metres = kEquatorMetres * std::cos(centre().latitude * kPi / 180) / m_scale;
    const ScaleBar bar = scaleBarFor(metres);
    const int wide = bar.width + 6 + metrics.horizontalAdvance(bar.text) + 2 * kLabelPadding;
    const QRect box(width() - kLabelMargin - wide, top, wide, kLabelHeight);
    if (box.left() < position.right() + 4)
        return;
    drawLabelBox(painter, box);
    painter.setPen(theme.color(Token::text1));
    painter.drawText(box.adjusted(0, 0, -kLabelPadding, 0), Qt::AlignVCenter | Qt::AlignRight,
                     bar.text);
    const QPointF left(box.left() + kLabelPadding + 0.5, box.center().y() + 2.5);
    const QPointF right = left + QPointF(bar.width, 0);
    painter.drawPolyline(QPolygonF{left - QPointF(0, 4), left, right, right - QPointF(0, 4)});
}

void MapView::paintEvent(QPaintEvent*) {
    if (m_base.isNull() || !qFuzzyCompare(m_base.devicePixelRatio(), devicePixelRatioF()))
        renderBase();
    const Theme& theme = Theme::instance();
    QPainter painter(this);
    painter.drawPixmap(0, 0, m_base);
    painter.setRenderHint(QPainter::Antialiasing);
    paintPins(painter);
    paintOverlay(painter);
    if (m_zoomEnabled) {
        const QRectF pair = QRectF(m_zoomIn->geometry().united(m_zoomOut->geometry()))
                                .adjusted(-0.5, -0.5, 0.5, 0.5);
        painter.setPen(theme.color(Token::line2));
        painter.setBrush(theme.color(Token::bg2));
        painter.drawRoundedRect(pair, 6, 6);
        const double middle = m_zoomOut->y() - 0.5;
        painter.drawLine(QPointF(pair.left(), middle), QPointF(pair.right(), middle));
    }
    const bool ring = m_focusRing && hasFocus();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme.color(ring ? Token::accent : Token::line2), ring ? 2 : 1));
    const double inset = ring ? 1 : 0.5;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), kMapRadius,
                            kMapRadius);
}

} // namespace clipheave::app
