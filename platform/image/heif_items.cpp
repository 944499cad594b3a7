// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/heif_items.h"

#include "platform/image/heif_cursor.h"
#include "platform/isobmff/box.h"

#include <algorithm>
#include <array>

namespace clipheave::platform {

std::optional<std::uint32_t> primaryItem(ByteView pitm) {
    HeifCursor cursor(pitm);
    const HeifBoxHead head = readHeifBoxHead(cursor);
    const std::uint32_t item = cursor.u32(head.version == 0 ? 2 : 4);
    return cursor.good() ? std::optional(item) : std::nullopt;
}

std::optional<std::uint32_t> itemOfType(ByteView iinf, std::uint32_t type) {
    HeifCursor cursor(iinf);
    const HeifBoxHead head = readHeifBoxHead(cursor);
    const unsigned countBytes = head.version == 0 ? 2 : 4;
    BoxWalker entries(iinf.sub(4 + countBytes));
    for (std::uint32_t i = 0; i < kMaxHeifItems; ++i) {
        const auto box = entries.next();
        if (!box)
            break;
        if (box->type != fourCc("infe"))
            continue;
        HeifCursor entry(entries.payload(*box));
        const HeifBoxHead entryHead = readHeifBoxHead(entry);
        if (entryHead.version < 2) // items without a type
            continue;
        const std::uint32_t item = entry.u32(entryHead.version == 2 ? 2 : 4);
        entry.number(2); // protection
        if (entry.u32(4) == type && entry.good())
            return item;
    }
    return std::nullopt;
}

std::optional<HeifLocation> itemLocation(ByteView iloc, std::uint32_t item) {
    HeifCursor cursor(iloc);
    const HeifBoxHead head = readHeifBoxHead(cursor);
    const std::uint32_t sizes = cursor.u32(2);
    const unsigned offsetBytes = sizes >> 12 & 15, lengthBytes = sizes >> 8 & 15;
    const unsigned baseBytes = sizes >> 4 & 15, indexBytes = head.version > 0 ? sizes & 15 : 0;
    if (head.version > 2 || std::max({offsetBytes, lengthBytes, baseBytes, indexBytes}) > 8)
        return std::nullopt;
    const unsigned idBytes = head.version < 2 ? 2 : 4;
    const std::uint32_t count = std::min(cursor.u32(idBytes), kMaxHeifItems);
    for (std::uint32_t i = 0; i < count && cursor.good(); ++i) {
        HeifLocation location;
        const std::uint32_t id = cursor.u32(idBytes);
        if (head.version > 0)
            location.constructionMethod = static_cast<int>(cursor.u32(2) & 15);
        cursor.number(2); // another file, which is never followed
        const std::uint64_t base = cursor.number(baseBytes);
        std::uint32_t extents = cursor.u32(2);
        if (offsetBytes + lengthBytes + indexBytes == 0) // nothing to read, so nothing to bound it
            extents = std::min(extents, 1u);
        if (extents > kMaxHeifExtents && id == item)
            return std::nullopt;
        for (std::uint32_t n = 0; n < extents && cursor.good(); ++n) {
            cursor.number(indexBytes);
            const std::uint64_t offset = cursor.number(offsetBytes);
            const std::uint64_t length = cursor.number(lengthBytes);
            if (id == item && offset <= UINT64_MAX - base)
                location.extents.push_back({base + offset, length});
        }
        if (id == item)
            return cursor.good() ? std::optional(std::move(location)) : std::nullopt;
    }
    return std::nullopt;
}

std::vector<std::uint32_t> itemProperties(ByteView ipma, std::uint32_t item) {
    HeifCursor cursor(ipma);
    const HeifBoxHead head = readHeifBoxHead(cursor);
    const std::uint32_t count = std::min(cursor.u32(4), kMaxHeifItems);
    std::vector<std::uint32_t> properties;
    for (std::uint32_t i = 0; i < count && cursor.good(); ++i) {
        const std::uint32_t id = cursor.u32(head.version < 1 ? 2 : 4);
        const std::uint32_t associations = cursor.u32(1);
        for (std::uint32_t n = 0; n < associations && cursor.good(); ++n) {
            // The top bit says that the property is essential.
            const bool wide = (head.flags & 1) != 0;
            const std::uint32_t index = wide ? cursor.u32(2) & 0x7FFF : cursor.u32(1) & 0x7F;
            if (id == item && cursor.good())
                properties.push_back(index);
        }
    }
    return properties;
}

void HeifOrientation::rotate(int quartersAnticlockwise) {
    m_quarters = (m_quarters + 4 - (quartersAnticlockwise & 3)) & 3;
}

void HeifOrientation::mirror(bool leftRight) {
    // Mirroring after a rotation is the opposite rotation after mirroring; a flip of top and bottom
    // is one of left and right and a rotation by 180 degrees.
    m_quarters = (4 - m_quarters) & 3;
    m_mirrored = !m_mirrored;
    if (!leftRight)
        m_quarters = (m_quarters + 2) & 3;
}

int HeifOrientation::exifValue() const {
    // By clockwise rotation in steps of 90 degrees; mirrored: left-right first, then rotated.
    static constexpr std::array<int, 4> kPlain{1, 6, 3, 8}, kMirrored{2, 7, 4, 5};
    const auto quarters = static_cast<std::size_t>(m_quarters);
    return m_mirrored ? kMirrored[quarters] : kPlain[quarters];
}

std::optional<std::uint64_t> tiffOffsetOfExifItem(ByteView item) {
    const std::uint64_t announced = item.be32(0).value_or(0) + std::uint64_t{4};
    for (const std::uint64_t at :
         {announced, announced + 6, std::uint64_t{10}, std::uint64_t{4}, std::uint64_t{0}}) {
        const ByteView rest = item.sub(at);
        if (rest.startsWith("II*") || rest.startsWith(QByteArrayView("MM\0*", 4)))
            return at;
    }
    return std::nullopt;
}

} // namespace clipheave::platform
