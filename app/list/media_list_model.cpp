// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/media_list_model.h"

#include "platform/foundation/paths.h"

#include <QDataStream>
#include <QIODevice>
#include <QMimeData>
#include <QTextDocument>

#include <algorithm>

namespace clipheave::app {

using media::MediaListSort;

namespace {

constexpr int kColumnCount = static_cast<int>(media::kColumns.size());
constexpr auto kArchiveVersion = QDataStream::Qt_6_0;
/// Rows that an archive may name; the list holds far fewer.
constexpr qsizetype kMostArchivedRows = 10'000'000;

QString fileUrlType() {
    return QStringLiteral("text/uri-list");
}

/// QMimeData turns what is stored under this type into addresses; the archive must stay as it is.
class RowsMimeData : public QMimeData {
public:
    explicit RowsMimeData(QByteArray archive) : m_archive(std::move(archive)) {}
    [[nodiscard]] QStringList formats() const override { return {fileUrlType()}; }
    [[nodiscard]] bool hasFormat(const QString& type) const override {
        return type == fileUrlType();
    }

protected:
    [[nodiscard]] QVariant retrieveData(const QString& type, QMetaType wanted) const override {
        return type == fileUrlType() && wanted.id() == QMetaType::QByteArray ? QVariant(m_archive)
                                                                             : QVariant();
    }

private:
    QByteArray m_archive;
};

/// A tool tip renders a text that looks like mark-up as mark-up.
QVariant toolTipOf(const QString& text) {
    if (text.isEmpty())
        return {};
    return Qt::mightBeRichText(text) ? QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped())
                                     : text;
}

bool isNumberColumn(int column) {
    return column == static_cast<int>(media::Column::Size) ||
           column == static_cast<int>(media::Column::Time);
}

/// Text columns ascend with the flag cleared, the others with the flag set.
bool ascends(media::Column column, bool flag) {
    switch (column) {
    case media::Column::Size:
    case media::Column::Time:
    case media::Column::Date:
        return flag;
    default:
        return !flag;
    }
}

} // namespace

MediaListModel::MediaListModel(QObject* parent) : QAbstractTableModel(parent) {
}

media::ItemPointer MediaListModel::itemAt(int row) const {
    return row >= 0 && static_cast<std::size_t>(row) < m_content.size()
               ? m_content[static_cast<std::size_t>(row)]
               : nullptr;
}

void MediaListModel::appendItem(const media::ItemPointer& item) {
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_content.push_back(item);
    endInsertRows();
}

void MediaListModel::setContent(const std::vector<media::ItemPointer>& items) {
    m_rows.forget();
    const int before = rowCount();
    const auto after = static_cast<int>(items.size());
    const int shared = std::min(before, after);
    const auto changed =
        std::mismatch(m_content.begin(), m_content.begin() + shared, items.begin());
    const auto firstChanged = static_cast<int>(changed.first - m_content.begin());
    std::copy(items.begin() + firstChanged, items.begin() + shared,
              m_content.begin() + firstChanged);
    if (after < before) {
        beginRemoveRows({}, after, before - 1);
        m_content.resize(items.size());
        endRemoveRows();
    }
    if (firstChanged < shared)
        Q_EMIT dataChanged(index(firstChanged, 0), index(shared - 1, kColumnCount - 1));
    if (after > before) {
        beginInsertRows({}, before, after - 1);
        m_content.insert(m_content.end(), items.begin() + before, items.end());
        endInsertRows();
    }
    setSortState(std::nullopt, false);
}

void MediaListModel::sortByColumn(int column) {
    if (column < 0 || column >= kColumnCount)
        return;
    const media::Column sorted = media::kColumns[static_cast<std::size_t>(column)];
    const bool flag = MediaListSort::flipFlag(sorted);
    MediaListSort::sortItems(m_content, sorted, flag);
    m_rows.forget();
    if (!m_content.empty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, kColumnCount - 1));
    setSortState(sorted, ascends(sorted, flag));
    Q_EMIT contentSorted();
}

void MediaListModel::replaceItems(const ItemChanges& changes) {
    std::vector<int> changed;
    for (const auto& [before, after] : changes)
        for (const int row : m_rows.rowsOf(before->filePath, m_content))
            if (auto& item = m_content[static_cast<std::size_t>(row)]; item == before) {
                item = after;
                changed.push_back(row);
            }
    announceChangedRows(std::move(changed));
}

/// One signal for each run of neighbouring rows.
void MediaListModel::announceChangedRows(std::vector<int> rows) {
    std::sort(rows.begin(), rows.end());
    for (std::size_t first = 0, next = 0; first < rows.size(); first = next) {
        while (++next < rows.size() && rows[next] <= rows[next - 1] + 1) {
        }
        Q_EMIT dataChanged(index(rows[first], 0), index(rows[next - 1], kColumnCount - 1));
    }
}

void MediaListModel::setSortState(std::optional<media::Column> column, bool ascending) {
    if (column == m_sortedColumn && ascending == m_ascending)
        return;
    m_sortedColumn = column;
    m_ascending = ascending;
    Q_EMIT sortStateChanged();
}

int MediaListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_content.size());
}

int MediaListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant MediaListModel::data(const QModelIndex& index, int role) const {
    const media::ItemPointer item = itemAt(index.row());
    if (item == nullptr || index.column() < 0 || index.column() >= kColumnCount)
        return {};
    const auto column = media::kColumns[static_cast<std::size_t>(index.column())];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return platform::displayPath(MediaListSort::cellText(*item, column));
    case Qt::ToolTipRole:
        return toolTipOf(platform::displayPath(MediaListSort::cellText(*item, column)));
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::Alignment(
            Qt::AlignVCenter | (isNumberColumn(index.column()) ? Qt::AlignRight : Qt::AlignLeft)));
    default:
        return {};
    }
}

QVariant MediaListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount)
        return {};
    const auto column = media::kColumns[static_cast<std::size_t>(section)];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return MediaListSort::header(column);
    case Qt::UserRole:
        return MediaListSort::identifier(column);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::Alignment(
            Qt::AlignVCenter | (isNumberColumn(section) ? Qt::AlignRight : Qt::AlignLeft)));
    default:
        return {};
    }
}

Qt::ItemFlags MediaListModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled |
           Qt::ItemNeverHasChildren;
}

QStringList MediaListModel::mimeTypes() const {
    return {fileUrlType()};
}

QMimeData* MediaListModel::mimeData(const QModelIndexList& indexes) const {
    QList<int> rows;
    for (const QModelIndex& index : indexes)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    if (rows.isEmpty())
        return nullptr;
    QByteArray archive;
    QDataStream stream(&archive, QIODevice::WriteOnly);
    stream.setVersion(kArchiveVersion);
    stream << rows;
    return new RowsMimeData(std::move(archive));
}

QList<int> MediaListModel::rowsFromArchive(const QByteArray& archive) {
    if (archive.size() > (kMostArchivedRows + 1) * static_cast<qsizetype>(sizeof(qint32)))
        return {};
    QDataStream stream(archive);
    stream.setVersion(kArchiveVersion);
    quint32 count = 0;
    stream >> count;
    // The whole archive is the count and the rows: nothing else is ours.
    if (stream.status() != QDataStream::Ok ||
        archive.size() !=
            static_cast<qsizetype>(sizeof count) +
                static_cast<qsizetype>(count) * static_cast<qsizetype>(sizeof(qint32)))
        return {};
    QList<int> rows(static_cast<qsizetype>(count));
    for (int& row : rows)
        stream >> row;
    return rows;
}

} // namespace clipheave::app
