// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/item_table.h"

#include "platform/foundation/paths.h"

#include <algorithm>

namespace clipheave::cli {

namespace {

using media::IKImageItem;

constexpr qsizetype kLongestCell = 200; // characters

struct TableColumn {
    const char16_t* header;
    QString IKImageItem::*field;
    bool rightAligned;
};
constexpr std::array<TableColumn, 7> kTableColumns{{
    {u"Media Name", &IKImageItem::fileName, false},
    {u"Media Size", &IKImageItem::fileSize, true},
    {u"Media Length", &IKImageItem::fileduratStr, true},
    {u"Media Kind", &IKImageItem::fileType, false},
    {u"Media Artist", &IKImageItem::fileArist, false},
    {u"Media Album", &IKImageItem::fileAblumName, false},
    {u"Media Created Date", &IKImageItem::fileCreateDateStr, false},
}};

/// Returns one line, whatever a tag holds; control characters of a file must not reach the
/// terminal.
QString tableCell(const QString& text) {
    QString cell = platform::displayPath(text).left(kLongestCell);
    for (QChar& c : cell)
        if (c.category() == QChar::Other_Control)
            c = u' ';
    return cell;
}

} // namespace

ItemTable::ItemTable() {
    for (std::size_t i = 0; i < kColumns; ++i)
        m_widths[i] = QStringView(kTableColumns[i].header).size();
}

void ItemTable::add(const IKImageItem& item) {
    QStringList cells;
    for (std::size_t i = 0; i < kColumns; ++i) {
        cells.append(tableCell(item.*kTableColumns[i].field));
        m_widths[i] = std::max(m_widths[i], cells.back().size());
    }
    m_rows.push_back(cells.join(QChar(u'\0'))); // no cell holds one
}

QByteArray ItemTable::line(const QStringList& cells) const {
    QString line;
    for (std::size_t i = 0; i < kColumns; ++i) {
        const QString& cell = cells[static_cast<qsizetype>(i)];
        line += kTableColumns[i].rightAligned ? cell.rightJustified(m_widths[i])
                                              : cell.leftJustified(m_widths[i]);
        line += u"  ";
    }
    while (line.endsWith(u' '))
        line.chop(1);
    return line.toUtf8() + '\n';
}

QByteArray ItemTable::text() const {
    QStringList headers;
    for (const TableColumn& column : kTableColumns)
        headers.append(QString::fromUtf16(column.header));
    QByteArray text = line(headers);
    for (const QString& row : m_rows)
        text += line(row.split(QChar(u'\0')));
    return text;
}

} // namespace clipheave::cli
