// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

#include <QMultiHash>

#include <vector>

namespace clipheave::app {

/// Finds the rows of a list by the path of their items, in constant time. It is built when it is
/// first asked and grows with the list; a file that was added twice has two rows.
class PathRows {
public:
    using Items = std::vector<media::ItemPointer>;

    /// Returns the rows of `items` that hold `path`, in ascending order; none when it is not there.
    /// `items` is always the same list, which has only grown, or had items replaced by others of
    /// the same path, since the last forget().
    [[nodiscard]] QList<int> rowsOf(const QString& path, const Items& items);
    /// Items were removed or reordered.
    void forget();

private:
    QMultiHash<QString, int> m_rows;
    std::size_t m_known = 0; ///< the first items, those in m_rows
};

} // namespace clipheave::app
