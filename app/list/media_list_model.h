// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/path_rows.h"
#include "media/media_list.h"

#include <QAbstractTableModel>

#include <optional>
#include <utility>
#include <vector>

namespace clipheave::app {

/// Items and the changed copies that take their places; a path is never changed.
using ItemChanges = std::vector<std::pair<media::ItemPointer, media::ItemPointer>>;

/// The content of the media list: what the table and the photo grid show. It is filled from the
/// controller's items in import order; a sort reorders this content alone. Column numbers are those
/// of media::Column. Main thread only.
class MediaListModel : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit MediaListModel(QObject* parent = nullptr);

    [[nodiscard]] const std::vector<media::ItemPointer>& content() const { return m_content; }
    /// Returns the item of the row; null beyond the content.
    [[nodiscard]] media::ItemPointer itemAt(int row) const;

    /// Adds a row at the end; what is shown, selected and scrolled to stays.
    void appendItem(const media::ItemPointer& item);
    /// Refills the list; it counts as unsorted then. Selection and current row stay by row number,
    /// as far as there are rows; nothing scrolls.
    void setContent(const std::vector<media::ItemPointer>& items);
    /// Flips the column's flag and sorts by it; emits contentSorted().
    void sortByColumn(int column);
    /// Shows the second of each pair, a changed copy, where the first stands; selection, current
    /// row, order and scroll position stay. Items that the list does not show are left out.
    void replaceItems(const ItemChanges& changes);

    [[nodiscard]] bool isSorted() const { return m_sortedColumn.has_value(); }
    [[nodiscard]] std::optional<media::Column> sortedColumn() const { return m_sortedColumn; }
    /// Returns true when the sorted column's values grow from the first row to the last.
    [[nodiscard]] bool isAscending() const { return m_ascending; }

    /// Returns the row numbers that a drag of the list carries; empty for anything else.
    [[nodiscard]] static QList<int> rowsFromArchive(const QByteArray& archive);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    [[nodiscard]] QStringList mimeTypes() const override;
    /// Deliberate: a drag out of the list carries the row numbers alone, archived under the type of
    /// file addresses, so that no other program takes the files.
    [[nodiscard]] QMimeData* mimeData(const QModelIndexList& indexes) const override;
    [[nodiscard]] Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }

Q_SIGNALS:
    /// The rows were reordered: a view deselects all.
    void contentSorted();
    /// sortedColumn() or isAscending() is another than before.
    void sortStateChanged();

private:
    void announceChangedRows(std::vector<int> rows);
    void setSortState(std::optional<media::Column> column, bool ascending);

    std::vector<media::ItemPointer> m_content;
    PathRows m_rows; ///< of m_content
    std::optional<media::Column> m_sortedColumn;
    bool m_ascending = false;
};

} // namespace clipheave::app
