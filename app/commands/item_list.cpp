// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/commands/item_list.h"

namespace clipheave::app {

QStringList ItemList::paths() const {
    QStringList paths;
    for (const auto& item : m_items)
        paths.append(item->filePath);
    return paths;
}

std::vector<media::ItemPointer> ItemList::itemsOf(const QList<int>& rows) const {
    std::vector<media::ItemPointer> items;
    for (const int row : rows)
        if (row >= 0 && static_cast<std::size_t>(row) < m_items.size())
            items.push_back(m_items[static_cast<std::size_t>(row)]);
    return items;
}

void ItemList::append(const media::ItemPointer& item) {
    m_items.push_back(item);
    m_totalBytes += item->sizeBytes;
}

void ItemList::handOver() {
    if (m_shown.isSorted())
        return restoreOrder();
    for (; m_handedOver < m_items.size(); ++m_handedOver)
        m_shown.appendItem(m_items[m_handedOver]);
}

void ItemList::restoreOrder() {
    m_shown.setContent(m_items);
    m_handedOver = m_items.size();
}

ItemChanges ItemList::change(const QStringList& paths, const media::ItemChange& change) {
    ItemChanges changes;
    for (const QString& path : paths) {
        for (const int row : m_rows.rowsOf(path, m_items)) {
            media::ItemPointer& item = m_items[static_cast<std::size_t>(row)];
            const media::ItemPointer copy = media::changedCopy(*item, change);
            changes.emplace_back(item, copy);
            item = copy;
        }
    }
    m_shown.replaceItems(changes);
    return changes;
}

void ItemList::remove(const std::function<bool(const media::IKImageItem&)>& goes) {
    std::erase_if(m_items, [this, &goes](const media::ItemPointer& item) {
        if (!goes(*item))
            return false;
        m_totalBytes -= item->sizeBytes;
        return true;
    });
    m_rows.forget();
    restoreOrder();
}

} // namespace clipheave::app
