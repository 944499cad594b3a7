// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/map_coast.h"

#include <algorithm>
#include <cmath>

namespace clipheave::app {
namespace {

/// Room around the view that is still drawn, in px: more than any stroke is wide.
constexpr double kClipMargin = 8;
/// The same where far-away runs are skipped: as wide as rounding a corner may reach.
constexpr double kRunMargin = 160;
constexpr double kLeastStep = 0.75;
/// Corners are rounded by at most this much, and from this length of a side on.
constexpr double kLongestCut = 40;
/// World widths in px from which corners are rounded, once more at each: there the data's own
/// points are many px apart and a coast of straight lines would look like a mistake.
constexpr double kRoundingScales[] = {100000, 300000, 1000000};
/// The map's upper and lower edges are not coasts.
constexpr double kMapEdge = 0.99995;

struct PixelRect {
    double left, top, right, bottom;
};

PixelRect grown(const QRectF& rect, double margin) {
    return {rect.left() - margin, rect.top() - margin, rect.right() + margin,
            rect.bottom() + margin};
}

bool isOutside(const PixelRect& box, const PixelRect& view) {
    return box.right < view.left || box.left > view.right || box.bottom < view.top ||
           box.top > view.bottom;
}

PixelRect toPixels(const CoastLine::Box& box, const MapFrame& frame) {
    return {(static_cast<double>(box.left) - frame.origin.x()) * frame.scale,
            (static_cast<double>(box.top) - frame.origin.y()) * frame.scale,
            (static_cast<double>(box.right) - frame.origin.x()) * frame.scale,
            (static_cast<double>(box.bottom) - frame.origin.y()) * frame.scale};
}

/// The line in px. A run that lies wholly on one outer side of the view becomes one straight step:
/// that side is convex and holds no px of the view, so what is inside stays inside.
QPolygonF gather(const CoastLine& line, const MapFrame& frame, const PixelRect& view) {
    QPolygonF result;
    const std::size_t last = line.points.size() - 1;
    const auto put = [&](std::size_t index, bool always) {
        const auto& point = line.points[index];
        const QPointF pixel((static_cast<double>(point.x) - frame.origin.x()) * frame.scale,
                            (static_cast<double>(point.y) - frame.origin.y()) * frame.scale);
        if (always || result.isEmpty() ||
            std::abs(pixel.x() - result.last().x()) + std::abs(pixel.y() - result.last().y()) >=
                kLeastStep)
            result.append(pixel);
    };
    put(0, true);
    for (std::size_t run = 0; run < line.runs.size(); ++run) {
        const std::size_t first = run * kCoastRunLength;
        const std::size_t end = std::min(first + kCoastRunLength, last);
        if (!isOutside(toPixels(line.runs[run], frame), view))
            for (std::size_t i = first + 1; i < end; ++i)
                put(i, false);
        put(end, end == last);
    }
    return result;
}

/// Cuts every corner once (Chaikin), by no more than kLongestCut.
QPolygonF rounded(const QPolygonF& line, bool closed) {
    QPolygonF result;
    result.reserve(line.size() * 2);
    if (!closed)
        result.append(line.first());
    for (qsizetype i = 0; i + 1 < line.size(); ++i) {
        const QPointF step = line.at(i + 1) - line.at(i);
        const double length = std::hypot(step.x(), step.y());
        const double part = length > 0 ? std::min(0.25, kLongestCut / length) : 0;
        result.append(line.at(i) + step * part);
        result.append(line.at(i + 1) - step * part);
    }
    result.append(closed ? result.first() : line.last());
    return result;
}

/// Sutherland and Hodgman, one side: keeps where `sign` * coordinate <= `limit`.
QPolygonF cutSide(const QPolygonF& polygon, bool horizontal, double sign, double limit) {
    QPolygonF result;
    const auto distance = [&](const QPointF& point) {
        return limit - sign * (horizontal ? point.x() : point.y());
    };
    for (qsizetype i = 0; i < polygon.size(); ++i) {
        const QPointF& from = polygon.at(i);
        const QPointF& to = polygon.at((i + 1) % polygon.size());
        const double a = distance(from);
        const double b = distance(to);
        if (a >= 0)
            result.append(from);
        if ((a >= 0) != (b >= 0))
            result.append(from + (to - from) * (a / (a - b)));
    }
    return result;
}

QPolygonF cut(QPolygonF polygon, const PixelRect& view) {
    polygon = cutSide(polygon, true, 1, view.right);
    polygon = cutSide(polygon, true, -1, -view.left);
    polygon = cutSide(polygon, false, 1, view.bottom);
    return cutSide(polygon, false, -1, -view.top);
}

QPainterPath strokesOf(const QPolygonF& line, const PixelRect& view, const MapFrame& frame) {
    QPainterPath path;
    const double lowest = (kMapEdge - frame.origin.y()) * frame.scale;
    bool drawing = false;
    for (qsizetype i = 0; i + 1 < line.size(); ++i) {
        const QPointF& a = line.at(i);
        const QPointF& b = line.at(i + 1);
        const PixelRect box{std::min(a.x(), b.x()), std::min(a.y(), b.y()), std::max(a.x(), b.x()),
                            std::max(a.y(), b.y())};
        if (isOutside(box, view) || box.top >= lowest) {
            drawing = false;
            continue;
        }
        if (!drawing)
            path.moveTo(a);
        path.lineTo(b);
        drawing = true;
    }
    return path;
}

} // namespace

CoastShape coastShape(const CoastLine& line, const MapFrame& frame) {
    const PixelRect view = grown(frame.visible, kClipMargin);
    if (isOutside(toPixels(line.box, frame), view))
        return {};
    QPolygonF pixels = gather(line, frame, grown(frame.visible, kRunMargin));
    const bool closed = line.kind == CoastLine::Kind::Ring || line.kind == CoastLine::Kind::Water;
    if (pixels.size() < (closed ? 4 : 2))
        return {};
    for (const double from : kRoundingScales)
        if (frame.scale >= from)
            pixels = rounded(pixels, closed);
    CoastShape shape;
    if (closed || line.kind == CoastLine::Kind::AreaOnly)
        shape.area = cut(pixels, view);
    if (line.kind != CoastLine::Kind::AreaOnly)
        shape.strokes = strokesOf(pixels, view, frame);
    return shape;
}

} // namespace clipheave::app
