// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/picture_turn.h"

#include <algorithm>
#include <cmath>

namespace clipheave::platform {

QuarterTurn nearestQuarterTurn(const std::array<double, 9>& matrix) {
    const auto sign = [](double value) { return value > 0 ? 1 : value < 0 ? -1 : 0; };
    QuarterTurn turn{sign(matrix[0]), sign(matrix[1]), sign(matrix[3]), sign(matrix[4])};
    if (std::abs(matrix[0]) >= std::abs(matrix[1]))
        turn.b = turn.c = 0;
    else
        turn.a = turn.d = 0;
    return turn.a * turn.d - turn.b * turn.c != 0 ? turn : QuarterTurn{};
}

RawFrame turnedFrame(const RawFrame& source, const QuarterTurn& turn) {
    constexpr int kBlock = 32; // both sides of a block stay in the cache
    if (turn.isIdentity())
        return source;
    RawFrame target;
    target.width = turn.swapsSides() ? source.height : source.width;
    target.height = turn.swapsSides() ? source.width : source.height;
    target.rgb32 = QByteArray(source.rgb32.size(), Qt::Uninitialized);
    const auto* from = reinterpret_cast<const std::uint32_t*>(source.rgb32.constData());
    auto* to = reinterpret_cast<std::uint32_t*>(target.rgb32.data());
    const std::int64_t left = turn.a + turn.c < 0 ? target.width - 1 : 0;
    const std::int64_t top = turn.b + turn.d < 0 ? target.height - 1 : 0;
    const std::int64_t perColumn = turn.a + std::int64_t{turn.b} * target.width;
    const std::int64_t perRow = turn.c + std::int64_t{turn.d} * target.width;
    for (int blockY = 0; blockY < source.height; blockY += kBlock)
        for (int blockX = 0; blockX < source.width; blockX += kBlock)
            for (int y = blockY; y < std::min(blockY + kBlock, source.height); ++y) {
                std::int64_t at = top * target.width + left + perRow * y + perColumn * blockX;
                const std::uint32_t* pixel = from + std::int64_t{y} * source.width + blockX;
                for (int x = blockX; x < std::min(blockX + kBlock, source.width); ++x) {
                    to[at] = *pixel++;
                    at += perColumn;
                }
            }
    return target;
}

} // namespace clipheave::platform
