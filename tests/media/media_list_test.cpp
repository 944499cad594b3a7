// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/collation_key.h"
#include "media/media_list.h"
#include "platform/foundation/text.h"
#include "platform/foundation/utc.h"
#include "tests/testkit/testkit.h"

#include <QTimeZone>

#include <limits>
#include <random>

namespace {

using namespace clipheave;
using media::Column;
using media::ItemPointer;
using media::MediaListSort;

media::MutableItemPointer named(const QString& name) {
    auto item = std::make_shared<media::IKImageItem>();
    item->fileName = item->fileArist = item->fileAblumName = item->fileType = name;
    return item;
}

std::vector<ItemPointer> listOf(const QStringList& names) {
    std::vector<ItemPointer> items;
    for (const QString& name : names)
        items.push_back(named(name));
    return items;
}

QStringList texts(const std::vector<ItemPointer>& items, Column column) {
    QStringList names;
    for (const ItemPointer& item : items)
        names.append(MediaListSort::cellText(*item, column));
    return names;
}

/// A merge sort that asks compare() about an earlier and a later item, as the list is specified.
std::vector<ItemPointer> merged(const std::vector<ItemPointer>& items, Column column, bool flag) {
    if (items.size() < 2)
        return items;
    const auto middle = items.begin() + static_cast<std::ptrdiff_t>(items.size() / 2);
    const auto left = merged({items.begin(), middle}, column, flag);
    const auto right = merged({middle, items.end()}, column, flag);
    std::vector<ItemPointer> out;
    auto a = left.begin();
    for (auto b = right.begin(); a != left.end() || b != right.end();) {
        const bool takeLeft =
            b == right.end() ||
            (a != left.end() && MediaListSort::compare(**a, **b, column, flag) <= 0);
        out.push_back(takeLeft ? *a++ : *b++);
    }
    return out;
}

QString randomText(std::mt19937& random) {
    static const QStringList kParts =
        u"a,A,b,Z,0,00,1,2,10,9,/,:,_,(,-, ,.,$,ß,É,é,я,Я,😀,٣,𝟘,\uFF10,日,K,\0,\n"_s.split(u',') +
        QStringList{QChar(0xDC80), QChar(0xD800)};
    QString text;
    for (auto count = random() % 6; count > 0; --count)
        text += kParts[static_cast<qsizetype>(random() % static_cast<unsigned>(kParts.size()))];
    return text;
}

} // namespace

TEST(MediaList, ComparesTextsByTheTable) {
    const struct {
        QString s, t;
        int withFlag; ///< the other direction is its negative
    } cases[] = {
        {u""_s, u"a"_s, 1},           {u"a"_s, u""_s, -1},
        {QString(), u""_s, 1},        {u""_s, u"_"_s, 1},
        {u"_b"_s, u"a"_s, 1},         {u"a"_s, u"_b"_s, -1},
        {u"(z"_s, u"_a"_s, 1},        {u"-a"_s, u"-b"_s, 1},
        {u"$"_s, u"a"_s, 1},          {u"b"_s, u"a"_s, -1},
        {u"a"_s, u"b"_s, 1},          {u"a"_s, u"a"_s, 1},
        {u"A"_s, u"a"_s, 1},          {u"a"_s, u"A"_s, 1},
        {u"É"_s, u"é"_s, 1},          {u"file10"_s, u"file2"_s, -1},
        {u"file2"_s, u"file10"_s, 1}, {u"a02"_s, u"a2"_s, 1},
    };
    for (const auto& [s, t, withFlag] : cases)
        for (const Column column : {Column::Name, Column::Type, Column::Artist, Column::Album}) {
            EXPECT_EQ(MediaListSort::compare(*named(s), *named(t), column, true), withFlag)
                << s << " | " << t;
            EXPECT_EQ(MediaListSort::compare(*named(s), *named(t), column, false), -withFlag)
                << s << " | " << t;
        }
}

TEST(MediaList, SortsNamesFromZAndThenFromA) {
    MediaListSort::resetFlags();
    auto items = listOf({u"clip10.mov"_s, u"_draft"_s, u""_s, u"Clip2.mov"_s, u"(old)"_s,
                         u"zebra"_s, u"CLIP2.MOV"_s, u"alpha"_s});
    MediaListSort::sortItems(items, Column::Name, MediaListSort::flipFlag(Column::Name));
    // Equal texts are never equal: the later one stands first.
    EXPECT_EQ(texts(items, Column::Name),
              QStringList({u"zebra"_s, u"clip10.mov"_s, u"CLIP2.MOV"_s, u"Clip2.mov"_s, u"alpha"_s,
                           u"_draft"_s, u"(old)"_s, u""_s}));
    MediaListSort::sortItems(items, Column::Name, MediaListSort::flipFlag(Column::Name));
    EXPECT_EQ(texts(items, Column::Name),
              QStringList({u""_s, u"(old)"_s, u"_draft"_s, u"alpha"_s, u"CLIP2.MOV"_s,
                           u"Clip2.mov"_s, u"clip10.mov"_s, u"zebra"_s}));
    EXPECT_TRUE(MediaListSort::flipFlag(Column::Name));
    EXPECT_FALSE(MediaListSort::flag(Column::Album)); // each column has its own
}

TEST(MediaList, SortsSizesByTheNumericReading) {
    std::vector<ItemPointer> items;
    for (const char* size :
         {"1.94 GB", "800 bytes", "5K", "12.35 MB", "3G", "", "2M", "12.35 KB"}) {
        auto item = named(u"x"_s);
        item->fileSize = QString::fromLatin1(size);
        items.push_back(item);
    }
    MediaListSort::sortItems(items, Column::Size, true);
    EXPECT_EQ(texts(items, Column::Size).join(u'|'),
              u"|1.94 GB|12.35 MB|12.35 KB|5K|2M|3G|800 bytes");
    MediaListSort::sortItems(items, Column::Size, false); // equal ones keep their order
    EXPECT_EQ(texts(items, Column::Size).join(u'|'),
              u"800 bytes|3G|2M|5K|12.35 MB|12.35 KB|1.94 GB|");
}

TEST(MediaList, SortsTimesAndDatesAscendingFirst) {
    std::vector<ItemPointer> items;
    const double seconds[] = {60, std::numeric_limits<double>::quiet_NaN(), 0.5, 60};
    const int years[] = {2025, 1903, 0, 2025};
    for (std::size_t i = 0; i < std::size(years); ++i) {
        auto item = named(QChar(static_cast<char16_t>(u'a' + i)));
        item->fileduration = seconds[i];
        if (years[i] != 0)
            item->fileCreateDate = QDateTime(QDate(years[i], 1, 1), QTime(0, 0), platform::kUtc);
        items.push_back(item);
    }
    const auto order = [&](Column column, bool flag) {
        auto sorted = items;
        MediaListSort::sortItems(sorted, column, flag);
        return texts(sorted, Column::Name).join(QString());
    };
    EXPECT_EQ(order(Column::Time, true), u"bcad");
    EXPECT_EQ(order(Column::Time, false), u"adcb");
    EXPECT_EQ(order(Column::Date, true), u"cbad");
    EXPECT_EQ(order(Column::Date, false), u"adbc");
    EXPECT_EQ(MediaListSort::compare(*items[0], *items[3], Column::Time, true), 0);
    EXPECT_EQ(MediaListSort::compare(*items[0], *items[3], Column::Date, false), 0);
}

TEST(MediaList, KeysStandAsTheNumericComparisonOrdersThem) {
    std::mt19937 random(7);
    QStringList all = {QString(300, u'1'),
                       QString(255, u'1'),
                       QString(254, u'2'),
                       QString(70'000, u'3'),
                       u"a"_s + QString(300, u'0'),
                       u"a0"_s,
                       u"a"_s};
    while (all.size() < 1500)
        all.append(randomText(random));
    media::CollationKeys keys(static_cast<std::size_t>(all.size()));
    for (const QString& text : all)
        keys.append(text);
    int compared = 0;
    for (qsizetype i = 0; i < all.size(); ++i)
        for (qsizetype j = 0; j < all.size(); ++j) {
            if (all[i].isEmpty() != all[j].isEmpty() ||
                media::startsWithPunctuation(all[i]) != media::startsWithPunctuation(all[j]))
                continue;
            ++compared;
            ASSERT_EQ(keys.compare(static_cast<std::size_t>(i), static_cast<std::size_t>(j)),
                      platform::compareNumeric(all[i], all[j], true))
                << all[i].left(40) << " | " << all[j].left(40);
        }
    EXPECT_GT(compared, 500'000);
}

TEST(MediaList, SortsRandomTextsAsAMergeSortOverTheComparison) {
    std::mt19937 random(11);
    for (int round = 0; round < 60; ++round) {
        QStringList names;
        for (auto count = random() % 90; count > 0; --count)
            names.append(randomText(random));
        const auto items = listOf(names);
        for (const bool flag : {true, false}) {
            auto sorted = items;
            MediaListSort::sortItems(sorted, Column::Name, flag);
            ASSERT_EQ(sorted, merged(items, Column::Name, flag)) << round << flag;
        }
    }
}

TEST(MediaList, NamesItsColumns) {
    QStringList all;
    for (const Column column : media::kColumns) {
        EXPECT_EQ(MediaListSort::columnForIdentifier(MediaListSort::identifier(column)), column);
        all.append(MediaListSort::identifier(column) + u'=' + MediaListSort::header(column));
    }
    EXPECT_EQ(all.join(u','), u"Name=Media Name,Size=Media Size,Time=Media Length,Type=Media Kind,"
                              "Artist=Media Artist,Album=Media Album,Date=Media Created Date"_s);
    EXPECT_FALSE(MediaListSort::columnForIdentifier(u"name"));
}
