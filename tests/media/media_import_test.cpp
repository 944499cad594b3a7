// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/media_import.h"
#include "media/preferences.h"
#include "platform/foundation/paths.h"

#include "tests/testkit/testkit.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

namespace {

using namespace clipheave;
using media::MediaImport;

using testkit::movie;

QStringList namesOf(const MediaImport& import) {
    QStringList names;
    for (const auto& item : import.localPhotoItemArray())
        names.append(item->fileName);
    return names;
}

TEST(MediaImport, WalksFoldersAndSkipsUnknownKinds) {
    const testkit::TempDir dir;
    dir.write("in/a.mp4", movie("One"));
    dir.write("in/b.MP3", "no audio");
    dir.write("in/c.txt", "text");
    dir.write("in/.hidden", "x");
    dir.write("in/sub/d.wav", "RIFF");
    int steps = 0;
    MediaImport import([&](const media::ItemPointer&) { ++steps; });
    import.importMediaItemsThreader({dir.path("in")});
    QStringList names = namesOf(import);
    names.sort();
    EXPECT_EQ(names, (QStringList{u"a.mp4"_s, u"b.MP3"_s, u"d.wav"_s}));
    EXPECT_EQ(steps, 5); // skipped files count as steps
    EXPECT_TRUE(import.bImportLocalFolder());
    EXPECT_EQ(import.bImportLocalPath(), dir.path());
}

TEST(MediaImport, ReadsAVideoAndResetsTheFolderFlag) {
    const testkit::TempDir dir;
    const QString file = dir.write("in/a.mp4", movie("Ⅰ one"));
    MediaImport import;
    import.importMediaItemsThreader({dir.path("in"), file, file});
    ASSERT_EQ(import.localPhotoItemArray().size(),
              3u); // the same file stands there as often as given
    EXPECT_FALSE(import.bImportLocalFolder());
    const auto& item = *import.localPhotoItemArray().front();
    EXPECT_EQ(item.fileTitle, u"Ⅰ one");
    EXPECT_EQ(item.fileduratStr, u"1m:1s");
    EXPECT_DOUBLE_EQ(item.fileduration, 61.5);
    EXPECT_EQ(item.fileSize, u"%1 bytes"_s.arg(QFile(file).size()));
    EXPECT_FALSE(item.fileCreateDateStr.isEmpty());
    EXPECT_TRUE(item.problem.isEmpty()) << item.problem.text();
}

TEST(MediaImport, ReadingAheadKeepsTheOrder) {
    const testkit::TempDir dir;
    QStringList paths;
    for (int i = 0; i < 300; ++i)
        paths.append(dir.write(u"%1.mp4"_s.arg(i), movie(QByteArray::number(i).constData())));
    for (int helpers : {0, 1, 7}) {
        QStringList delivered;
        MediaImport import(
            [&](const media::ItemPointer& item) { delivered.append(item->filePath); });
        import.setReadAheadThreads(helpers);
        import.importMediaItemsThreader(paths);
        EXPECT_EQ(delivered, paths) << helpers;
        EXPECT_EQ(import.localPhotoItemArray()[299]->fileTitle, u"299");
    }
}

TEST(MediaImport, ListsTheFilesOfNoKnownKind) {
    const testkit::TempDir dir;
    dir.write("in/web.WEBM", "video");
    dir.write("in/list.txt", "of no interest in a folder");
    const QString text = dir.write("notes.txt", "asked for by name");
    MediaImport import;
    import.importMediaItemsThreader(
        {dir.path("in"), text, dir.write("a.jpg", "photo"), dir.path("gone.txt")});
    QStringList unknown;
    for (const media::SkippedPath& path : import.unknown())
        unknown.append(platform::lastPathComponent(path.path) + u' ' +
                       QLatin1String(path.reason.code().id) + u' ' +
                       path.reason.arguments().join(u' '));
    EXPECT_EQ(unknown,
              (QStringList{u"web.WEBM unknown-kind WEBM"_s, u"notes.txt unknown-kind txt"_s,
                           u"a.jpg photo-not-wanted "_s}));
    ASSERT_EQ(import.skipped().size(), 1U); // a path that is not there is a mistake
    EXPECT_TRUE(import.skipped()[0].reason.text().contains(u"No such file"));
    EXPECT_TRUE(import.localPhotoItemArray().empty());
}

TEST(MediaImport, TroubledPathsAreListedAndTheWalkGoesOn) {
    const testkit::TempDir dir;
    const QByteArray root = dir.path("in").toUtf8();
    dir.write("in/empty.mov", "");
    dir.write("in/fake.mp4", "this is no movie at all");
    dir.write("in/cut.mov", movie("cut").left(60));
    ASSERT_EQ(::mkfifo((root + "/pipe.mp4").constData(), 0600), 0);
    ASSERT_EQ(::symlink("..", (root + "/loop").constData()), 0);
    ASSERT_EQ(::symlink("nowhere.mp4", (root + "/dangling.mp4").constData()), 0);
    QFile odd;
    const QByteArray oddName = root + "/caf\xE9.mp4";
    std::FILE* file = std::fopen(oddName.constData(), "wb");
    ASSERT_TRUE(file);
    const QByteArray bytes = movie("odd name");
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), file);
    std::fclose(file);

    MediaImport import;
    import.importMediaItemsThreader({QString::fromUtf8(root), dir.path("missing.mp4")});
    QStringList skipped;
    for (const media::SkippedPath& path : import.skipped()) {
        skipped.append(platform::lastPathComponent(path.path));
        EXPECT_FALSE(path.reason.isEmpty());
    }
    skipped.sort();
    EXPECT_EQ(skipped, (QStringList{u"dangling.mp4"_s, u"in"_s, u"missing.mp4"_s, u"pipe.mp4"_s}));
    ASSERT_EQ(import.localPhotoItemArray().size(), 4u);
    for (const auto& item : import.localPhotoItemArray()) {
        const bool isOdd = platform::nativePath(item->filePath) == oddName;
        EXPECT_EQ(item->fileTitle, isOdd ? u"odd name"_s : item->fileTitle);
        EXPECT_EQ(item->problem.isEmpty(), isOdd) << item->filePath;
    }
}

TEST(MediaImport, QuickAddReadsNothing) {
    const testkit::TempDir dir;
    const QString song = dir.write("a.mp3", "x");
    const QString video = dir.write("a.mp4", movie("T"));
    MediaImport import;
    import.addWithoutReading({video, song, dir.path("gone.mp4"), video});
    ASSERT_EQ(import.localPhotoItemArray().size(), 2u); // stops at the first that is not there
    EXPECT_EQ(import.localPhotoItemArray()[0]->fileType, u"Movie");
    EXPECT_TRUE(import.localPhotoItemArray()[0]->fileTitle.isNull());
    EXPECT_EQ(import.localPhotoItemArray()[1]->fileType, u"Audio");
}

TEST(Preferences, FirstStartWritesDefaultsAndKeepsItsTwoFontSizes) {
    const testkit::TempDir dir;
    qputenv("HOME", dir.path().toUtf8());
    platform::NSUserDefaults defaults(dir.path("prefs.conf"));
    const auto first = media::applyPreferencesAtStart(defaults);
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->firstStart);
    EXPECT_EQ(first->currentFontname, u"Lucida Grande");
    EXPECT_EQ(first->currentFontSize, 14);
    EXPECT_EQ(first->fontLabel, u"Lucida Grande 24");
    EXPECT_EQ(first->position, u"lower left corner");
    EXPECT_EQ(first->dateFormat, u"MM/DD/YYYY HH:MM");
    EXPECT_TRUE(QDir(first->storagelocation).exists());
    const std::pair<const char16_t*, QString> stored[] = {{u"storagePath", first->storagelocation},
                                                          {u"fontName", u"Lucida Grande"_s},
                                                          {u"Postion", u"lower left corner"_s},
                                                          {u"Dateformat", u"MM/DD/YYYY HH:MM"_s}};
    EXPECT_EQ(defaults.allKeys().size(), 4) << "no font size";
    for (const auto& [name, value] : stored)
        EXPECT_EQ(defaults.stringForKey(QString::fromUtf16(name)), value);

    ASSERT_TRUE(defaults.setObject_forKey(36, u"fontsize"_s));
    ASSERT_TRUE(defaults.setObject_forKey(u"Noto Sans"_s, u"fontName"_s));
    const auto second = media::applyPreferencesAtStart(defaults);
    ASSERT_TRUE(second);
    EXPECT_FALSE(second->firstStart);
    EXPECT_EQ(second->fontLabel, u"Noto Sans 36");
    EXPECT_EQ(defaults.integerForKey(u"fontsize"_s), 36);
}

TEST(Preferences, FirstStartKeepsWhatIsSet) {
    const testkit::TempDir dir;
    qputenv("HOME", dir.path().toUtf8());
    platform::NSUserDefaults defaults(dir.path("prefs.conf"));
    ASSERT_TRUE(defaults.setObject_forKey(u"Noto Sans"_s, u"fontName"_s));
    ASSERT_TRUE(defaults.setObject_forKey(u"Upper left corner"_s, u"Postion"_s));
    const auto first = media::applyPreferencesAtStart(defaults);
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->firstStart);
    EXPECT_EQ(first->position, u"Upper left corner");
    EXPECT_EQ(defaults.stringForKey(u"fontName"_s), u"Noto Sans");
    EXPECT_EQ(defaults.stringForKey(u"Postion"_s), u"Upper left corner");
    EXPECT_EQ(defaults.allKeys().size(), 4);
}

TEST(Preferences, FillWhatAStoreLacksOneByOne) {
    const testkit::TempDir dir;
    const struct {
        const char* stored;
        QString fontLabel, position, dateFormat;
    } cases[] = {
        {"", u"Lucida Grande 24"_s, u"Lower left corner"_s, u"MM/DD/YYYY HH:MM"_s},
        {"fontName=F\n", u"F 14"_s, u"Lower left corner"_s, u"MM/DD/YYYY HH:MM"_s},
        {"fontsize=36\nPostion=P\n", u"Lucida Grande 24"_s, u"P"_s, u"MM/DD/YYYY HH:MM"_s},
        {"Dateformat=D\n", u"Lucida Grande 24"_s, u"Lower left corner"_s, u"D"_s},
    };
    for (const auto& [stored, fontLabel, position, dateFormat] : cases) {
        const QString file =
            dir.write("prefs.conf", QByteArray("[General]\nstoragePath=/s\n") + stored);
        const media::Preferences values = media::readPreferences(platform::NSUserDefaults(file));
        EXPECT_FALSE(values.firstStart);
        EXPECT_EQ(values.storagelocation, u"/s");
        EXPECT_EQ(values.currentFontSize, 14) << stored;
        EXPECT_EQ(values.fontLabel, fontLabel) << stored;
        EXPECT_EQ(values.position, position) << stored;
        EXPECT_EQ(values.dateFormat, dateFormat) << stored;
    }
}

} // namespace
