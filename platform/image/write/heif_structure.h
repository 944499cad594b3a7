// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/byte_ranges.h"
#include "platform/image/write/heif_tables.h"
#include "platform/isobmff/box.h"

namespace clipheave::platform {

/// How a HEIF or AVIF file is built: its boxes and the tables of its items, no data of them.
struct HeifStructure {
    std::uint64_t fileSize = 0;
    std::vector<Box> boxes;    ///< top level, in file order, none of them cut
    std::uint64_t end = 0;     ///< of the last box; what follows are no boxes
    std::size_t metaIndex = 0; ///< of the `meta` box in `boxes`
    std::vector<Box> children; ///< of `meta`, in file order
    std::uint32_t primary = 0; ///< the main image
    ItemEntries entries;
    ItemLocations locations;
    ItemReferences references;

    [[nodiscard]] const Box& meta() const { return boxes[metaIndex]; }
    [[nodiscard]] const Box* child(std::uint32_t type) const;
    [[nodiscard]] bool has(std::uint32_t topLevelType) const;
    /// Returns whether one item refers to another in this way.
    [[nodiscard]] bool refers(std::uint32_t from, std::uint32_t type, std::uint32_t to) const;
    /// Returns where the bytes of an item lie in the file, in order, cut at its end; nothing for an
    /// item that is made of others or lies in another file.
    [[nodiscard]] std::vector<ByteRanges::Range> ranges(const ItemLocation& item) const;
    /// Returns the bytes of an item; LimitExceeded beyond `limit`, Truncated when they are not all
    /// there.
    [[nodiscard]] Result<QByteArray> load(FileReader& reader, const ItemLocation& item,
                                          std::uint64_t limit) const;
};

/// Reads the structure. NotSupported for files without `meta` (sequences alone, small images of one
/// box); InvalidData when boxes or tables contradict each other, LimitExceeded for tables beyond
/// 16 MiB.
[[nodiscard]] Result<HeifStructure> readHeifStructure(FileReader& reader);

} // namespace clipheave::platform
