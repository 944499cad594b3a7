// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"
#include "platform/foundation/result.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

// Tables of the `meta` box as values that can be changed and rendered again. Each read() takes the
// payload of its box, version and flags included, and fails with InvalidData where counts and bytes
// disagree; each box() returns the whole box, the same bytes when nothing was changed. Sources:
// ISO/IEC 14496-12:2015, 8.11; ISO/IEC 23008-12:2017, 9.3.
namespace clipheave::platform {

/// Returns a box of these bytes.
[[nodiscard]] QByteArray heifBox(std::uint32_t type, const QByteArray& payload);
/// Appends a big-endian number.
void appendBigEndian(QByteArray& bytes, std::uint64_t value, unsigned width);

struct ItemExtent {
    std::uint64_t index = 0, offset = 0, length = 0; ///< length 0: to the end
};
struct ItemLocation {
    enum Method { InFile = 0, InIdat = 1, InItem = 2 };
    std::uint32_t id = 0;
    std::uint16_t construction = 0;  ///< a Method in its low 4 bits
    std::uint16_t dataReference = 0; ///< 0: this file
    std::uint64_t base = 0;
    std::vector<ItemExtent> extents;

    [[nodiscard]] int method() const { return construction & 15; }
};

/// `iloc`
struct ItemLocations {
    std::uint8_t version = 0;
    std::uint32_t flags = 0;
    unsigned offsetBytes = 4, lengthBytes = 4, baseBytes = 0, indexBytes = 0;
    std::vector<ItemLocation> items;

    [[nodiscard]] static Result<ItemLocations> read(ByteView payload);
    [[nodiscard]] QByteArray box() const;
    [[nodiscard]] const ItemLocation* find(std::uint32_t id) const;
    [[nodiscard]] ItemLocation* find(std::uint32_t id);
    /// Makes the numbers as wide as the values need; returns whether they were not.
    bool widen();
};

/// An `infe`.
struct ItemEntry {
    QByteArray box; ///< whole
    std::uint32_t id = 0, type = 0;
    QByteArray contentType, encoding; ///< of "mime" items
    bool isProtected = false;

    /// Returns whether the item is an XMP packet.
    [[nodiscard]] bool isXmp() const;
    [[nodiscard]] static std::optional<ItemEntry> read(ByteView box);
    /// Returns a new entry; `id` up to 65535, `contentType` for "mime" alone.
    [[nodiscard]] static ItemEntry make(std::uint32_t id, std::uint32_t type,
                                        const QByteArray& contentType);
    /// Returns the box with an empty name.
    [[nodiscard]] QByteArray namelessBox() const;

private:
    std::uint64_t m_nameAt = 0, m_nameLength = 0; ///< in the box
};

/// `iinf`
struct ItemEntries {
    std::uint8_t version = 0;
    std::uint32_t flags = 0;
    std::vector<ItemEntry> items;

    [[nodiscard]] static Result<ItemEntries> read(ByteView payload);
    [[nodiscard]] QByteArray box() const;
    [[nodiscard]] const ItemEntry* find(std::uint32_t id) const;
};

struct ItemReference {
    std::uint32_t type = 0, from = 0;
    std::vector<std::uint32_t> to;
};

/// `iref`
struct ItemReferences {
    std::uint8_t version = 0;
    std::uint32_t flags = 0;
    std::vector<ItemReference> references;

    [[nodiscard]] static Result<ItemReferences> read(ByteView payload);
    [[nodiscard]] QByteArray box() const;
    void removeItems(const std::set<std::uint32_t>& ids);
};

/// Returns the whole `iprp` box without these items and the properties that they alone have and,
/// for `personal`, without descriptions, dates and foreign properties: those become free space, so
/// that others keep their numbers.
[[nodiscard]] Result<QByteArray>
changedItemProperties(ByteView iprp, const std::set<std::uint32_t>& removed, bool personal);
/// Returns the whole `grpl` box without these items.
[[nodiscard]] Result<QByteArray> changedEntityGroups(ByteView grpl,
                                                     const std::set<std::uint32_t>& removed);

} // namespace clipheave::platform
