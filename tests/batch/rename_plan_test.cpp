// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/rename_plan.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/utc.h"
#include "tests/testkit/testkit.h"

#include <QDateTime>
#include <QSet>

#include <string>
#include <utility>

namespace {

using namespace clipheave;
using batch::planRename;
using batch::RenameMode;
using batch::RenameMove;
using batch::RenameNote;
using batch::RenameRequest;
using Items = std::vector<media::ItemPointer>;
using testing::ElementsAre;

constexpr char kDisk[] = "/m/";

media::MutableItemPointer itemNamed(const QString& name) {
    auto item = std::make_shared<media::IKImageItem>();
    item->fileName = name;
    item->filePath = QLatin1String(kDisk) + name;
    item->fileCreateDateStr = u"2020:01:02 03:04:05"_s;
    return item;
}

media::ItemPointer titled(const media::IKImageItem& item, const char* title) {
    return media::changedCopy(item,
                              [title](auto& copy) { copy.fileTitle = QString::fromUtf8(title); });
}

Items itemsNamed(const QStringList& names) {
    Items items;
    for (const QString& name : names)
        items.push_back(itemNamed(name));
    return items;
}

/// The items are on the disk, and so is what `others` names; full paths.
std::vector<RenameMove> planned(const RenameRequest& request, const Items& items,
                                const QSet<QString>& others = {}) {
    QSet<QString> names = others;
    for (const auto& item : items)
        names.insert(item->filePath);
    return planRename(request, items,
                      {[&](const QString& path) { return names.contains(path); },
                       [](const QString&) { return u"2015-06-01 12:30:45 +0000"_s; }});
}

/// Targets below the items' folder; "=" in front of one that stays.
std::vector<std::string> targetsOf(const std::vector<RenameMove>& moves) {
    std::vector<std::string> targets;
    for (const RenameMove& move : moves) {
        QString target = move.target;
        if (target.startsWith(QLatin1String(kDisk)))
            target = target.mid(3);
        targets.push_back(
            (QByteArray(move.stays ? "=" : "") + platform::nativePath(target)).toStdString());
    }
    return targets;
}

RenameRequest customText(const QString& text, bool numbered = false) {
    RenameRequest request;
    request.customNamelab = text;
    request.checkStartNumber = numbered;
    request.storagelocation = u"/store"_s;
    return request;
}

RenameRequest withTags(const QString& filenameTemplate) {
    RenameRequest request = customText({});
    request.mode = RenameMode::MetadataTags;
    request.filenameFormatstrlab = filenameTemplate;
    return request;
}

TEST(RenamePlan, CustomTextNumbersOrEvades) {
    const Items items = itemsNamed({u"x.mp4"_s, u"y.mp4"_s, u"z.mp4"_s, u"z.mp3"_s});
    EXPECT_THAT(targetsOf(planned(customText(u"A"_s), items)),
                ElementsAre("A.mp4", "A 3.mp4", "A 4.mp4", "A.mp3"));
    EXPECT_THAT(targetsOf(planned(customText(u"A"_s, true), items)),
                ElementsAre("A000001.mp4", "A000002.mp4", "A000003.mp4", "A000004.mp3"));
    const auto second = planned(customText(u"A"_s), items, {u"/m/A.mp4"_s, u"/m/A 2.mp4"_s});
    EXPECT_THAT(targetsOf(second), ElementsAre("=A.mp4", "A 3.mp4", "A 4.mp4", "A.mp3"));
    EXPECT_EQ(second[0].note, RenameNote::NameExists);
    EXPECT_TRUE(second[1].retryTarget.isNull()); // used up
    EXPECT_EQ(second[3].retryTarget, u"/m/A 5.mp3");
    const auto many = planned(customText(u"A"_s, true), Items(100'000, itemNamed(u"x.mp4"_s)));
    EXPECT_EQ(many[99'998].target, u"/m/A099999.mp4");
    EXPECT_EQ(many[99'999].target, u"/m/A100000.mp4");
    EXPECT_EQ(many[1].note, RenameNote::Missing); // the first line has moved it
    EXPECT_TRUE(planned(customText({}), {}).empty());
}

TEST(RenamePlan, TagWordsAreReplacedInOrder) {
    const auto item = itemNamed(u"old.name.mov"_s);
    item->fileTitle = u"Song"_s;
    item->fileArist = u"Band"_s;
    item->fileDescription = u"AC/DC: a Title, Keywords"_s;
    item->fileKeyWords = u"k1"_s;
    item->filePixWidth = 1920;
    item->filepixHeigh = 1080;
    item->fileMake = u"Make"_s;
    const auto nameOf = [&](const char* filenameTemplate) {
        return planned(withTags(QString::fromUtf8(filenameTemplate)), {item})[0]
            .newFileName.toStdString();
    };
    EXPECT_EQ(nameOf("{Title}, {Artist}"), "Song Band.mov");
    EXPECT_EQ(nameOf("Title title TITLE"), "Song title TITLE.mov");
    // The slash goes, the colon stays; a value is searched by the later words only.
    EXPECT_EQ(nameOf("{Description}"), "ACDC: a Title k1.mov");
    EXPECT_EQ(nameOf("({Dimensions}) {Copyright}{Camera Make}{Camera Model}"),
              "1920 x 1080 Make.mov");
    EXPECT_EQ(nameOf("{Existing File Name}"), "old.name.mov");
    EXPECT_EQ(nameOf("{Camera Date}"), "2020:01:02 03:04:05.mov");
    item->filePixWidth = 0;
    item->fileTitle.clear();
    const auto empty = planned(withTags(u"{Dimensions}"_s), {item});
    EXPECT_EQ(empty[0].target, u"/m/.mov");
    EXPECT_EQ(empty[0].note, RenameNote::EmptyName);
    EXPECT_EQ(planned(withTags(u"{Title} x"_s), {item})[0].note, RenameNote::NoTitle);
}

TEST(RenamePlan, CameraDateInEveryLayout) {
    const auto item = itemNamed(u"a.mov"_s);
    const auto laidOut = [&](const QString& date, int layout) {
        item->shootDateStr = date;
        RenameRequest request = withTags(u"{Camera Date}"_s);
        request.renameDateFormatBtn = batch::renameDateFormatTitles()[layout];
        return platform::deletingPathExtension(planned(request, {item})[0].newFileName)
            .toStdString();
    };
    ASSERT_EQ(batch::renameDateFormatTitles().size(), 11);
    // By layout: a whole date; a time of two parts.
    const char* const expected[][2] = {
        {"2015:06:01 12:30:45", "2015:06:01 12:30"}, {"06:01:2015 12:30:45", "06:01:2015 12:30"},
        {"01:06:2015 12:30:45", "01:06:2015 12:30"}, {"2015:06:01 12:30:45", "2015:06:01 12:30"},
        {"2015_06_01 12.30.45", "2015_06_01 12:30"}, {"06_01_2015 12.30.45", "06_01_2015 12:30"},
        {"01_06_2015 12.30.45", "01_06_2015 12:30"}, {"2015_06_01", "2015_06_01"},
        {"20150601 123045", "20150601 12:30"},       {"06012015 123045", "06012015 12:30"},
        {"01062015 123045", "01062015 12:30"},
    };
    for (int layout = 0; layout < 11; ++layout) {
        const auto title = batch::renameDateFormatTitles()[layout].toStdString();
        EXPECT_EQ(laidOut(u"2015:06:01 12:30:45"_s, layout), expected[layout][0]) << title;
        EXPECT_EQ(laidOut(u"2015:06:01 12:30"_s, layout), expected[layout][1]) << title;
    }
    EXPECT_EQ(laidOut(u"2015-06-01 12:30:45 +0200"_s, 8), "20150601 123045");
    EXPECT_EQ(laidOut(u"2015"_s, 8), "2015");
    EXPECT_EQ(laidOut(u"2015:06 12:30:45 x"_s, 8), "2015:06 12:30:45");
    EXPECT_EQ(laidOut(u""_s, 8), "20150601 123045");     // that of the file
    EXPECT_EQ(laidOut(QString(), 8), "20200102 030405"); // that of the item
    RenameRequest unknown = withTags(u"{Camera Date}"_s);
    unknown.renameDateFormatBtn = u"YYYY"_s;
    EXPECT_EQ(planned(unknown, {item})[0].newFileName, u"Camera Date.mov");
}

TEST(RenamePlan, CreationDateOfTheFileIsUniversalTime) {
    const testkit::TempDir dir;
    const auto item = itemNamed(u"a.mov"_s);
    item->filePath = dir.write("a.mov", "x");
    item->fileCreateDateStr = u"?"_s;
    const QDateTime created(QDate(2024, 6, 30), QTime(23, 15, 9), platform::kUtc);
    ASSERT_TRUE(platform::NSFileManager::defaultManager().setAttributes(item->filePath, created,
                                                                        std::nullopt));
    const testkit::ZoneGuard zone("Pacific/Auckland");
    const auto moves =
        planRename(withTags(u"{Camera Date}"_s), {item}, batch::surroundingsOnDisk());
    EXPECT_EQ(moves[0].newFileName, u"2024-06-30 23:15:09 +0000.mov");
}

TEST(RenamePlan, MovesOfOneSelectionCount) {
    // A chain: the first finds its name taken, the last has left it by then.
    Items items = itemsNamed({u"a.mp4"_s, u"b.mp4"_s});
    items[0] = titled(*items[0], "b");
    items[1] = titled(*items[1], "c");
    EXPECT_THAT(targetsOf(planned(withTags(u"Title"_s), items)),
                ElementsAre("/store/b 1.mp4", "c.mp4"));
    std::swap(items[0], items[1]);
    EXPECT_THAT(targetsOf(planned(withTags(u"Title"_s), items)), ElementsAre("c.mp4", "b.mp4"));
    // A swap: the first has to go elsewhere, so the second finds its name free.
    items[0] = titled(*items[0], "a");
    const auto swapped = planned(withTags(u"Title"_s), items);
    EXPECT_THAT(targetsOf(swapped), ElementsAre("/store/a 1.mp4", "b.mp4"));
    EXPECT_EQ(swapped[0].storageFolder, u"/store");
    EXPECT_EQ(swapped[0].newFileName, u"a.mp4");
    // A name that does not change is taken, by the file itself.
    EXPECT_THAT(targetsOf(planned(withTags(u"Existing File Name"_s), items, {u"/store/a 2.mp4"_s})),
                ElementsAre("/store/b 1.mp4", "=a.mp4"));
    RenameRequest nowhere = withTags(u"Existing File Name"_s);
    nowhere.storagelocation.clear();
    EXPECT_TRUE(planned(nowhere, items)[0].stays);
}

TEST(RenamePlan, NamesThatOnlyLookAlikeAndNamesThatCannotBe) {
    const QString nfc = QString::fromUtf8("caf\xC3\xA9");
    const QString nfd = QString::fromUtf8("cafe\xCC\x81");
    const Items items = itemsNamed({u"a.mp4"_s});
    const auto noteFor = [&](const QString& text) {
        return planned(customText(text), items, {QLatin1String(kDisk) + nfc + ".mp4"_L1})[0].note;
    };
    EXPECT_EQ(noteFor(nfc), RenameNote::NameExists);
    EXPECT_EQ(noteFor(nfd), RenameNote::None);
    EXPECT_EQ(noteFor(u"A"_s), RenameNote::None);
    const QString emoji = QString::fromUtf8("\xF0\x9F\x8E\xAC");
    EXPECT_EQ(noteFor(emoji.repeated(62) + "abc"_L1), RenameNote::None); // 255 bytes
    const auto tooLong = planned(customText(emoji.repeated(62) + "abcd"_L1), items)[0];
    EXPECT_EQ(tooLong.note, RenameNote::NameTooLong);
    EXPECT_TRUE(tooLong.stays);
    EXPECT_EQ(noteFor(u"away/x"_s), RenameNote::NoFolder);
    EXPECT_EQ(noteFor(u"x"_s + QChar(QChar::Null)), RenameNote::NotPossible);
    const auto led = planned(customText(u"sub/x"_s), items, {u"/m/sub"_s, u"/m/sub/x.mp4"_s})[0];
    EXPECT_EQ(led.target, u"/m/sub/x 2.mp4");
    const Items bytes = itemsNamed({platform::pathFromNative("\xFF\xFE.mp4")});
    EXPECT_THAT(targetsOf(planned(withTags(u"{Existing File Name}"_s), bytes)),
                ElementsAre("/store/\xFF\xFE 1.mp4"));
}

TEST(RenamePlan, TagsAreInsertedAndFound) {
    const QString text = u"{Existing File Name}"_s;
    EXPECT_EQ(batch::insertPhotoTag(text, u"Camera Make"_s, true),
              u"{Camera Make} {Existing File Name}");
    EXPECT_EQ(batch::insertPhotoTag(text, u"Title"_s, false), u"{Existing File Name} {Title}");
    EXPECT_EQ(batch::insertPhotoTag(text, batch::addTagsTitles().constLast(), true), text);
    EXPECT_EQ(batch::insertPhotoTag(text, u"Existing File Name"_s, true), text);
    EXPECT_EQ(batch::addTagsTitles().size(), 10);
    const auto spans = batch::tagWordSpans(u"{Camera Date} Title {Title x"_s);
    ASSERT_EQ(spans.size(), 3u);
    EXPECT_EQ(spans[0].length, 13);
    EXPECT_EQ(spans[1].start, 14);
    EXPECT_EQ(spans[2].length, 5);
}

} // namespace
