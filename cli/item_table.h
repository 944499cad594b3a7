// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

#include <QByteArray>
#include <QStringList>

#include <array>
#include <vector>

namespace clipheave::cli {

/// The media list as a table of text. Its columns are as wide as their longest cell, so it can only
/// be printed when the last item is known; until then it keeps the cells' texts.
class ItemTable {
public:
    ItemTable();
    void add(const media::IKImageItem& item);
    [[nodiscard]] bool isEmpty() const { return m_rows.empty(); }
    /// Returns the heading and a line for each item, in UTF-8.
    [[nodiscard]] QByteArray text() const;

private:
    static constexpr std::size_t kColumns = 7;

    [[nodiscard]] QByteArray line(const QStringList& cells) const;

    std::array<qsizetype, kColumns> m_widths{}; ///< characters
    std::vector<QString> m_rows;                ///< cells with NULs between them
};

} // namespace clipheave::cli
