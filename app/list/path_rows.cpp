// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/path_rows.h"

#include <algorithm>

namespace clipheave::app {

QList<int> PathRows::rowsOf(const QString& path, const Items& items) {
    for (; m_known < items.size(); ++m_known)
        m_rows.insert(items[m_known]->filePath, static_cast<int>(m_known));
    QList<int> rows = m_rows.values(path);
    std::sort(rows.begin(), rows.end());
    return rows;
}

void PathRows::forget() {
    m_rows.clear();
    m_known = 0;
}

} // namespace clipheave::app
