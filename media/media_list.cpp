// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/media_list.h"

#include "media/collation_key.h"
#include "media/media_kind.h"
#include "platform/foundation/text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace clipheave::media {

namespace {

constexpr std::array<const char*, kColumns.size()> kIdentifiers = {
    "Name", "Size", "Time", "Type", "Artist", "Album", "Date"};
constexpr std::array<const char*, kColumns.size()> kHeaders = {
    "Media Name",   "Media Size",  "Media Length",      "Media Kind",
    "Media Artist", "Media Album", "Media Created Date"};

std::array<bool, kColumns.size()> sortFlags{};

std::size_t indexOf(Column column) {
    return static_cast<std::size_t>(column);
}

bool isTextColumn(Column column) {
    return column == Column::Name || column == Column::Type || column == Column::Artist ||
           column == Column::Album;
}

template <class T> int threeWayOrder(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

int compareTexts(const QString& s, const QString& t, bool flag) {
    const int behind = flag ? 1 : -1; // where an exceptional `s` goes
    if (s.isEmpty())
        return behind;
    if (t.isEmpty())
        return -behind;
    if (const bool leads = startsWithPunctuation(s); leads != startsWithPunctuation(t))
        return leads ? behind : -behind;
    return platform::compareNumeric(s, t, true) > 0 ? -behind : behind;
}

/// A value that orders durations totally, whatever a file has claimed.
double timeKey(const IKImageItem& item) {
    return std::isnan(item.fileduration) ? -std::numeric_limits<double>::infinity()
                                         : item.fileduration;
}

qint64 dateKey(const IKImageItem& item) {
    return item.fileCreateDate.isValid() ? item.fileCreateDate.toMSecsSinceEpoch()
                                         : std::numeric_limits<qint64>::min();
}

/// Moves the items into the order of `at`, which names each position once.
template <class Entries> void arrange(std::vector<ItemPointer>& items, const Entries& entries) {
    std::vector<ItemPointer> sorted;
    sorted.reserve(items.size());
    for (const auto& entry : entries)
        sorted.push_back(std::move(items[entry.position]));
    items = std::move(sorted);
}

template <class KeyOf>
void sortByNumber(std::vector<ItemPointer>& items, bool ascending, KeyOf keyOf) {
    struct Entry {
        decltype(keyOf(*items.front())) key;
        std::size_t position;
    };
    std::vector<Entry> entries;
    entries.reserve(items.size());
    for (std::size_t i = 0; i < items.size(); ++i)
        entries.push_back({keyOf(*items[i]), i});
    std::sort(entries.begin(), entries.end(), [ascending](const Entry& a, const Entry& b) {
        if (const int order = threeWayOrder(a.key, b.key))
            return ascending ? order < 0 : order > 0;
        return a.position < b.position;
    });
    arrange(items, entries);
}

void sortByText(std::vector<ItemPointer>& items, Column column, bool descending) {
    CollationKeys keys(items.size());
    for (const ItemPointer& item : items)
        keys.append(MediaListSort::cellText(*item, column));
    std::vector<CollationKeys::Entry> entries = keys.sorted();
    if (descending)
        std::reverse(entries.begin(), entries.end());
    arrange(items, entries);
}

} // namespace

QString MediaListSort::identifier(Column column) {
    return QString::fromLatin1(kIdentifiers[indexOf(column)]);
}

std::optional<Column> MediaListSort::columnForIdentifier(QStringView identifier) {
    for (const Column column : kColumns)
        if (identifier == QLatin1String(kIdentifiers[indexOf(column)]))
            return column;
    return std::nullopt;
}

QString MediaListSort::header(Column column) {
    return QString::fromLatin1(kHeaders[indexOf(column)]);
}

const QString& MediaListSort::cellText(const IKImageItem& item, Column column) {
    switch (column) {
    case Column::Name:
        return item.fileName;
    case Column::Size:
        return item.fileSize;
    case Column::Time:
        return item.fileduratStr;
    case Column::Type:
        return item.fileType;
    case Column::Artist:
        return item.fileArist;
    case Column::Album:
        return item.fileAblumName;
    case Column::Date:
        break;
    }
    return item.fileCreateDateStr;
}

bool MediaListSort::flag(Column column) {
    return sortFlags[indexOf(column)];
}

bool MediaListSort::flipFlag(Column column) {
    bool& flag = sortFlags[indexOf(column)];
    flag = !flag;
    return flag;
}

void MediaListSort::resetFlags() {
    sortFlags.fill(false);
}

int MediaListSort::compare(const IKImageItem& a, const IKImageItem& b, Column column, bool flag) {
    if (isTextColumn(column))
        return compareTexts(cellText(a, column), cellText(b, column), flag);
    int order = 0;
    if (column == Column::Size)
        order = threeWayOrder(MediaKind::sizeFormString(a.fileSize),
                              MediaKind::sizeFormString(b.fileSize));
    else if (column == Column::Time)
        order = threeWayOrder(timeKey(a), timeKey(b));
    else
        order = threeWayOrder(dateKey(a), dateKey(b));
    return flag ? order : -order;
}

void MediaListSort::sortItems(std::vector<ItemPointer>& items, Column column, bool flag) {
    if (items.empty())
        return;
    if (isTextColumn(column))
        sortByText(items, column, flag);
    else if (column == Column::Size)
        sortByNumber(items, flag, [](const IKImageItem& item) {
            return MediaKind::sizeFormString(item.fileSize);
        });
    else if (column == Column::Time)
        sortByNumber(items, flag, timeKey);
    else
        sortByNumber(items, flag, dateKey);
}

} // namespace clipheave::media
