// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace clipheave::platform {

/// Sets of positions, as ranges of begin and end.
class ByteRanges {
public:
    using Range = std::pair<std::uint64_t, std::uint64_t>;
    void add(std::uint64_t offset, std::uint64_t length) {
        if (length > 0)
            m_ranges.emplace_back(offset, offset + length);
    }
    [[nodiscard]] bool intersects(std::uint64_t offset, std::uint64_t length) const;
    /// Returns what lies in this set and not in `others`: in order, joined.
    [[nodiscard]] std::vector<Range> without(const ByteRanges& others) const;

private:
    [[nodiscard]] std::vector<Range> joined() const;
    std::vector<Range> m_ranges; ///< in any order
};

} // namespace clipheave::platform
