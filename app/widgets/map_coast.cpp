// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/map_coast.h"

#include "app/theme/theme_resources.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <optional>

namespace clipheave::app {
namespace {

constexpr double kCoastSteps = 99999;
constexpr std::size_t kMostLines = 20000;
constexpr std::size_t kMostPoints = 200000; ///< of one line
constexpr std::size_t kMostLevels = 8;
/// World widths in px from which the next level is drawn.
constexpr double kLevelScales[] = {1800, 9000};

/// Reads numbers from the front of the data; fails for good at its end.
class CoastReader {
public:
    explicit CoastReader(const QByteArray& bytes) : m_bytes(bytes) {}

    [[nodiscard]] std::optional<std::uint8_t> byte() {
        if (m_at >= m_bytes.size())
            return std::nullopt;
        return static_cast<std::uint8_t>(m_bytes.at(m_at++));
    }
    [[nodiscard]] std::optional<std::uint32_t> number() {
        std::uint32_t value = 0;
        for (unsigned shift = 0; shift < 28; shift += 7) {
            const auto next = byte();
            if (!next)
                return std::nullopt;
            value |= (*next & 127U) << shift;
            if ((*next & 128U) == 0)
                return value;
        }
        return std::nullopt;
    }
    [[nodiscard]] std::optional<int> difference() {
        const auto value = number();
        if (!value)
            return std::nullopt;
        const int half = static_cast<int>(*value >> 1U);
        return (*value & 1U) != 0 ? -half - 1 : half;
    }
    [[nodiscard]] bool skip(const QByteArray& expected) {
        if (m_bytes.mid(m_at, expected.size()) != expected)
            return false;
        m_at += expected.size();
        return true;
    }

private:
    const QByteArray& m_bytes;
    qsizetype m_at = 0;
};

CoastLine::Box boxOf(const CoastLine& line, std::size_t first, std::size_t last) {
    CoastLine::Box box{line.points[first].x, line.points[first].y, line.points[first].x,
                       line.points[first].y};
    for (std::size_t i = first + 1; i <= last; ++i) {
        const auto& point = line.points[i];
        box = {std::min(box.left, point.x), std::min(box.top, point.y),
               std::max(box.right, point.x), std::max(box.bottom, point.y)};
    }
    return box;
}

void measureRuns(CoastLine& line) {
    const std::size_t last = line.points.size() - 1;
    line.box = boxOf(line, 0, last);
    for (std::size_t i = 0; i < last; i += kCoastRunLength)
        line.runs.push_back(boxOf(line, i, std::min(i + kCoastRunLength, last)));
}

std::optional<CoastLine> readLine(CoastReader& reader) {
    const auto kind = reader.byte();
    const auto count = reader.number();
    if (!kind || !count || *kind > 4 || *count < 2 || *count > kMostPoints)
        return std::nullopt;
    CoastLine line;
    line.kind = static_cast<CoastLine::Kind>(*kind);
    line.points.reserve(*count);
    double x = 0;
    double y = 0;
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto dx = reader.difference();
        const auto dy = reader.difference();
        if (!dx || !dy)
            return std::nullopt;
        x += *dx;
        y += *dy;
        const QPointF point = mercatorOf(y * 360 / kCoastSteps, x * 360 / kCoastSteps);
        line.points.push_back({static_cast<float>(point.x()), static_cast<float>(point.y())});
    }
    measureRuns(line);
    return line;
}

} // namespace

QPointF mercatorOf(double latitude, double longitude) {
    const double held = std::clamp(latitude, -kMercatorLimit, kMercatorLimit);
    const double radians = held * std::numbers::pi / 180;
    const double y = 0.5 - std::asinh(std::tan(radians)) / (2 * std::numbers::pi);
    return {(longitude + 180) / 360, y};
}

double latitudeOf(double y) {
    return std::atan(std::sinh((0.5 - y) * 2 * std::numbers::pi)) * 180 / std::numbers::pi;
}

const CoastMap& CoastMap::instance() {
    static const CoastMap map = [] {
        initThemeResources();
        QFile file(QStringLiteral(":/map/coast.bin"));
        return file.open(QIODevice::ReadOnly) ? fromBytes(file.readAll()) : CoastMap();
    }();
    return map;
}

CoastMap CoastMap::fromBytes(const QByteArray& packed) {
    const QByteArray bytes = qUncompress(packed);
    CoastReader reader(bytes);
    if (!reader.skip(QByteArrayLiteral("COAST1")))
        return {};
    const auto levels = reader.byte();
    if (!levels || *levels > kMostLevels)
        return {};
    CoastMap map;
    for (unsigned level = 0; level < *levels; ++level) {
        const auto count = reader.number();
        if (!count || *count > kMostLines)
            return {};
        auto& lines = map.m_levels.emplace_back();
        for (std::uint32_t i = 0; i < *count; ++i) {
            auto line = readLine(reader);
            if (!line)
                return {};
            lines.push_back(std::move(*line));
        }
    }
    return map;
}

std::size_t CoastMap::levelFor(double scale) const {
    std::size_t level = 0;
    for (const double from : kLevelScales)
        if (scale >= from)
            ++level;
    return std::min(level, m_levels.empty() ? 0 : m_levels.size() - 1);
}

} // namespace clipheave::app
