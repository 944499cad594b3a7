// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/byte_ranges.h"

#include <algorithm>

namespace clipheave::platform {

bool ByteRanges::intersects(std::uint64_t offset, std::uint64_t length) const {
    return std::any_of(m_ranges.begin(), m_ranges.end(), [&](const Range& range) {
        return offset < range.second && range.first < offset + length;
    });
}

std::vector<ByteRanges::Range> ByteRanges::joined() const {
    std::vector<Range> sorted = m_ranges;
    std::sort(sorted.begin(), sorted.end());
    std::vector<Range> result;
    for (const Range& range : sorted) {
        if (!result.empty() && range.first <= result.back().second)
            result.back().second = std::max(result.back().second, range.second);
        else
            result.push_back(range);
    }
    return result;
}

std::vector<ByteRanges::Range> ByteRanges::without(const ByteRanges& others) const {
    const std::vector<Range> holes = others.joined();
    std::vector<Range> result;
    auto hole = holes.begin();
    for (const Range& range : joined()) {
        std::uint64_t at = range.first;
        while (hole != holes.end() && hole->second <= at)
            ++hole;
        for (auto next = hole; next != holes.end() && next->first < range.second; ++next) {
            if (next->first > at)
                result.emplace_back(at, next->first);
            at = std::max(at, next->second);
        }
        if (at < range.second)
            result.emplace_back(at, range.second);
    }
    return result;
}

} // namespace clipheave::platform
