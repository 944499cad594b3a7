// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/byte_ranges.h"
#include "platform/image/write/photo_plan.h"
#include "platform/isobmff/write/write_offsets.h"

#include <map>

namespace clipheave::platform {

/// The parts of a new file and where the bytes of the source come to stand in it. Bytes of the
/// source may be replaced by others of the same number, or by zeros.
class HeifLayout {
public:
    /// Ranges that lie apart; `bytes` as long as the range.
    void replace(std::uint64_t offset, const QByteArray& bytes);
    void clear(const ByteRanges::Range& range);

    /// Appends bytes of the source, with their replacements.
    void keep(std::uint64_t begin, std::uint64_t end);
    void add(const QByteArray& bytes);
    /// Returns the length of the file so far.
    [[nodiscard]] std::uint64_t size() const { return m_size; }
    [[nodiscard]] const OffsetMap& map() const { return m_map; }
    /// Returns whether all these bytes are cleared.
    [[nodiscard]] bool isCleared(std::uint64_t begin, std::uint64_t end) const;
    [[nodiscard]] PhotoPlan take() { return std::move(m_plan); }

private:
    struct Replacement {
        std::uint64_t end = 0;
        QByteArray bytes; ///< empty: zeros
    };
    void place(std::uint64_t begin, std::uint64_t end, const Replacement& replacement,
               std::uint64_t origin);

    std::map<std::uint64_t, Replacement> m_replacements; ///< by offset in the source
    PhotoPlan m_plan;
    OffsetMap m_map;
    std::uint64_t m_size = 0;
};

} // namespace clipheave::platform
