// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/media_list_model.h"
#include "app/list/path_rows.h"

#include <QStringList>

#include <cstdint>
#include <functional>
#include <vector>

namespace clipheave::app {

/// The media list in import order, by which commands number its rows. Fills the list that is shown.
/// Main thread.
class ItemList {
public:
    explicit ItemList(MediaListModel& shown) : m_shown(shown) {}

    [[nodiscard]] const std::vector<media::ItemPointer>& items() const { return m_items; }
    [[nodiscard]] std::uint64_t totalBytes() const { return m_totalBytes; }
    /// Returns the paths of all items, in import order.
    [[nodiscard]] QStringList paths() const;
    /// Returns the items of these row numbers; a row beyond the list gives none.
    [[nodiscard]] std::vector<media::ItemPointer> itemsOf(const QList<int>& rows) const;

    /// Adds an item at the end. The list that is shown gets it with the next handOver().
    void append(const media::ItemPointer& item);
    /// Hands what was appended to the list that is shown; a sorted one then stands in import order.
    void handOver();
    /// Shows the items in import order.
    void restoreOrder();
    /// Puts changed copies in the place of the items of these paths and shows them; returns both.
    /// Who holds an item keeps it as it was.
    ItemChanges change(const QStringList& paths, const media::ItemChange& change);
    /// Removes the items that `goes` accepts; the list then stands in import order.
    void remove(const std::function<bool(const media::IKImageItem&)>& goes);

private:
    MediaListModel& m_shown;
    std::vector<media::ItemPointer> m_items; ///< localPhotoItemArray
    PathRows m_rows;                         ///< of m_items
    std::uint64_t m_totalBytes = 0;          ///< of m_items
    std::size_t m_handedOver = 0;            ///< how many of m_items are shown already
};

} // namespace clipheave::app
