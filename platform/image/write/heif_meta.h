// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/heif_edits.h"
#include "platform/image/write/heif_layout.h"

namespace clipheave::platform {

/// The new `meta` box of a HEIF file: its tables with what becomes of the items. Where the items
/// lie is left to the caller.
class HeifMeta {
public:
    HeifMeta(FileReader& reader, const HeifStructure& structure);

    /// `personal`: names, descriptions and boxes that no image needs go, too. LimitExceeded when
    /// there is no number for a new item, InvalidData for tables that cannot be read.
    [[nodiscard]] Result<void> change(const HeifEdits& edits, bool personal);
    /// Returns the numbers that the new items got, in their order.
    [[nodiscard]] const std::vector<std::uint32_t>& added() const { return m_added; }
    /// `locations` of all items; change() has removed and added some.
    void setLocations(const ItemLocations& locations);
    [[nodiscard]] const ItemLocations& locations() const { return m_locations; }

    [[nodiscard]] std::uint64_t size() const;
    /// Appends the box.
    void addTo(HeifLayout& layout) const;

private:
    struct Child {
        const Box* source = nullptr; ///< as it is
        QByteArray bytes;            ///< or new
        bool isLocations = false;
        [[nodiscard]] std::uint64_t size() const {
            return source != nullptr ? source->size : static_cast<std::uint64_t>(bytes.size());
        }
    };
    [[nodiscard]] Result<QByteArray> payloadOf(const Box& box);
    [[nodiscard]] Result<void> addItem(const HeifEdits::NewItem& item);
    [[nodiscard]] std::optional<std::uint32_t> freeId();
    void addGroupIds(std::set<std::uint32_t>& used);
    [[nodiscard]] Result<void> gatherChildren(const std::set<std::uint32_t>& removed,
                                              bool personal);
    [[nodiscard]] Result<Child> changedChild(const Box& box, const std::set<std::uint32_t>& removed,
                                             bool personal);
    /// Returns the bytes before the first child: version and flags, if it has them.
    [[nodiscard]] std::uint64_t prefix() const;

    FileReader& m_reader;
    const HeifStructure& m_file;
    ItemEntries m_entries;
    ItemLocations m_locations;
    ItemReferences m_references;
    std::vector<Child> m_children;
    std::vector<std::uint32_t> m_added;
};

} // namespace clipheave::platform
