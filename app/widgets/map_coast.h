// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>

#include <vector>

namespace clipheave::app {

/// Degrees; the map is square because it ends here, north and south.
inline constexpr double kMercatorLimit = 85.0511287798066;

/// Returns the map units of a position in degrees: 0 to 1 from 180 west to 180 east and from 85
/// north to 85 south.
[[nodiscard]] QPointF mercatorOf(double latitude, double longitude);
[[nodiscard]] double latitudeOf(double y);
[[nodiscard]] inline double longitudeOf(double x) {
    return x * 360 - 180;
}

/// One line of the coast data in map units.
struct CoastLine {
    enum class Kind : unsigned char { Ring, Border, AreaOnly, OutlineOnly, Water };
    struct Point {
        float x = 0, y = 0;
    };
    /// Bounds of a run of points, so that what lies far outside a view is skipped at once.
    struct Box {
        float left = 0, top = 0, right = 0, bottom = 0;
    };
    Kind kind = Kind::Ring;
    std::vector<Point> points;
    Box box;
    std::vector<Box> runs; ///< kCoastRunLength points each, and the first point of the next run
};

inline constexpr std::size_t kCoastRunLength = 64;

/// Coast lines and borders in a few levels of detail, coarse to fine.
class CoastMap {
public:
    /// Returns the built-in data, read on first use; empty, an all-sea map, when it is damaged.
    static const CoastMap& instance();
    /// Reads the format of scripts/make-coast-data. No levels when the bytes are in another.
    static CoastMap fromBytes(const QByteArray& packed);

    [[nodiscard]] std::size_t levelCount() const { return m_levels.size(); }
    [[nodiscard]] const std::vector<CoastLine>& level(std::size_t index) const {
        return m_levels[index];
    }
    /// Returns the level to draw when the world is `scale` px wide.
    [[nodiscard]] std::size_t levelFor(double scale) const;

private:
    std::vector<std::vector<CoastLine>> m_levels;
};

/// A part of the map in px: pixel = (map units - origin) * scale.
struct MapFrame {
    QPointF origin;
    double scale = 1;
    QRectF visible; ///< px
};

/// The part of a line in the frame: its area cut to a little more than the frame, and its visible
/// strokes. Points closer than 0.75 px are dropped; far-away runs are skipped.
struct CoastShape {
    QPolygonF area;
    QPainterPath strokes;
};
[[nodiscard]] CoastShape coastShape(const CoastLine& line, const MapFrame& frame);

} // namespace clipheave::app
