// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/write_offsets.h"

#include "platform/isobmff/box.h"
#include "platform/isobmff/messages.h"

#include <QtEndian>

#include <algorithm>

// Layouts: ISO/IEC 14496-12 sections 8.7.5 (stco, co64), 8.7.9 (saio).
namespace clipheave::platform {

bool OffsetMap::isIdentity() const {
    return std::all_of(m_ranges.begin(), m_ranges.end(),
                       [](const Range& range) { return range.begin == range.target; });
}

std::optional<std::uint64_t> OffsetMap::map(std::uint64_t offset) const {
    if (offset == 0)
        return 0;
    const auto after =
        std::upper_bound(m_ranges.begin(), m_ranges.end(), offset,
                         [](std::uint64_t at, const Range& range) { return at < range.begin; });
    if (after == m_ranges.begin())
        return std::nullopt;
    const Range& range = *std::prev(after);
    if (offset > range.end && !range.cut)
        return std::nullopt;
    const std::uint64_t distance = offset - range.begin;
    if (distance > UINT64_MAX - range.target)
        return std::nullopt;
    return range.target + distance;
}

Result<std::optional<OffsetTable>> offsetTable(std::uint32_t type, ByteView payload) {
    OffsetTable table;
    if (type == fourCc("stco") || type == fourCc("co64")) {
        table.entries = 8;
        table.width = type == fourCc("co64") ? 8 : 4;
    } else if (type == fourCc("saio")) {
        const std::uint32_t head = payload.be32(0).value_or(0);
        table.entries = (head & 1) != 0 ? 16 : 8;
        table.width = head >> 24 != 0 ? 8 : 4;
    } else {
        return std::optional<OffsetTable>();
    }
    const auto count = payload.be32(table.entries - 4);
    if (!count || !payload.has(table.entries,
                               std::uint64_t{*count} * static_cast<std::uint64_t>(table.width)))
        return failure(ErrorCode::InvalidData, kReadChunkOffsets, {}, kChunkTableTooShort);
    table.count = *count;
    return std::optional(table);
}

Result<QByteArray> movedTable(std::uint32_t type, ByteView payload, const OffsetMap& map,
                              bool wide) {
    const auto found = offsetTable(type, payload);
    if (!found)
        return tl::unexpected(found.error());
    const OffsetTable table = found->value_or(OffsetTable{});
    const int width = wide ? 8 : table.width;
    const std::uint64_t end =
        table.entries + std::uint64_t{table.count} * static_cast<std::uint64_t>(table.width);
    const auto entryBytes = static_cast<qsizetype>(table.count) * width;
    QByteArray box(8 + static_cast<qsizetype>(table.entries) + entryBytes, Qt::Uninitialized);
    box += payload.sub(end).bytes(); // padding that some write behind the table
    const bool chunks = type != fourCc("saio");
    qToBigEndian(static_cast<quint32>(box.size()), box.data());
    qToBigEndian(chunks && wide ? fourCc("co64") : type, box.data() + 4);
    std::copy_n(payload.bytes().data(), table.entries, box.data() + 8);
    if (!chunks && wide)
        box[8] = 1;
    char* out = box.data() + 8 + table.entries;
    for (std::uint64_t i = 0; i < table.count; ++i, out += width) {
        const std::uint64_t at = table.entries + i * static_cast<std::uint64_t>(table.width);
        const std::uint64_t old =
            table.width == 8 ? payload.be64(at).value_or(0) : payload.be32(at).value_or(0);
        const auto moved = map.map(old);
        if (!moved)
            return failure(ErrorCode::InvalidData, kMoveChunkOffsets, {}, kChunkOutsidePayload);
        if (width == 8) {
            qToBigEndian(static_cast<quint64>(*moved), out);
        } else if (*moved <= UINT32_MAX) {
            qToBigEndian(static_cast<quint32>(*moved), out);
        } else {
            return failure(ErrorCode::LimitExceeded, kMoveChunkOffsets);
        }
    }
    return box;
}

} // namespace clipheave::platform
