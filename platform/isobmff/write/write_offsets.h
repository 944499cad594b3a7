// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"
#include "platform/foundation/result.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

// Absolute file offsets inside boxes and how they follow when the bytes they point at move.
namespace clipheave::platform {

/// Where the kept bytes of a source stand in the target.
class OffsetMap {
public:
    /// The bytes [begin, end) of the source begin at `target`. A `cut` range ends where the file
    /// does although its last box announces more; offsets beyond `end` then belong to it.
    struct Range {
        std::uint64_t begin = 0, end = 0, target = 0;
        bool cut = false;
    };
    /// Ranges are appended in the order of `begin` and do not overlap.
    void add(const Range& range) { m_ranges.push_back(range); }

    [[nodiscard]] const std::vector<Range>& ranges() const { return m_ranges; }
    /// Nothing moves: no offset needs a look.
    [[nodiscard]] bool isIdentity() const;
    /// The new place of the byte at `offset`; nothing when that byte is not carried over. The end
    /// of a range counts as part of it (empty chunks stand there), and 0 stays 0 (no chunk).
    [[nodiscard]] std::optional<std::uint64_t> map(std::uint64_t offset) const;

private:
    std::vector<Range> m_ranges;
};

/// A table of absolute offsets of the sample tables: "stco", "co64" or "saio".
struct OffsetTable {
    std::uint64_t entries = 0; ///< where the first entry stands in the payload
    std::uint32_t count = 0;
    int width = 4; ///< bytes an entry
};
/// Nothing when `type` is not such a table, InvalidData when its count is beyond its bytes.
[[nodiscard]] Result<std::optional<OffsetTable>> offsetTable(std::uint32_t type, ByteView payload);

/// The whole box with its offsets moved; with `wide` in 64 bits ("stco" becomes "co64").
/// InvalidData when an entry points at bytes that are not carried over, LimitExceeded when a new
/// offset does not fit and `wide` is not set.
[[nodiscard]] Result<QByteArray> movedTable(std::uint32_t type, ByteView payload,
                                            const OffsetMap& map, bool wide);

} // namespace clipheave::platform
