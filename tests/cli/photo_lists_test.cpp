// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/cli/cli_kit.h"

#include <QDir>
#include <QFile>

namespace {

class PhotoListCommand : public testing::Test {
protected:
    void SetUp() override {
        SKIP_WITHOUT("exiftool");
        for (const QString& path : {m_south, m_plain})
            QFile::copy(clitest::sample("Photos") + u'/' + u"IMG_0412.jpg"_s, path);
        testkit::exiftool("-q -overwrite_original -all=", {m_plain});
        testkit::exiftool("-q -overwrite_original -Artist=Ärtist -n -FNumber=2.8 -GPSLatitude=33.5 "
                          "-GPSLatitudeRef=S -GPSLongitude=70.25 -GPSLongitudeRef=W",
                          {m_south});
    }
    testkit::RunResult exported(const char* list, const QStringList& photos) {
        return clitest::cli("--quiet --json --storage % photo export " + QByteArray(list),
                            QStringList{m_dir.path("out")} + photos);
    }
    /// What Python finds under the keys of a list, a path of names each.
    QByteArray listed(const char* file, const QByteArray& keys) {
        return testkit::run(u"/usr/bin/python3"_s,
                            {u"-c"_s,
                             u"import plistlib, sys\nd = plistlib.load(open(sys.argv[1], 'rb'))\n"
                             "print([d%1])"_s.arg(QString::fromLatin1(keys)),
                             m_dir.path("out") + u'/' + QLatin1String(file)})
            .out.trimmed();
    }

    testkit::TempDir m_dir;
    QString m_south = m_dir.path("south.jpg"), m_plain = m_dir.path("plain.jpg");
};

TEST_F(PhotoListCommand, WritesTheListsUnderTheirNames) {
    const struct {
        const char *list, *file, *keys, *value;
    } cases[] = {
        {"tiff", "ExportTiffInfo.plist", "['Artist']", "['Ärtist']"},
        {"exif", "ExportExifInfo.plist", "['FNumber']", "[2.8]"},
        {"exif-tiff", "ExportExifandTiffInfo.plist", "['Artist'], d['FNumber']", "['Ärtist', 2.8]"},
        {"exif-gps", "ExportExifandGPSInfo.plist", "['Latitude'], d['LatitudeRef']",
         "[-33.5, 'S']"},
        {"template", "templatefile.plist", "['Longitude'], d['LongitudeRef']", "[-70.25, 'W']"},
        {"all", "ExportAllMetadataInfo.plist", "['{GPS}']['Latitude']", "[-33.5]"},
        {"each", "south.jpg.plist", "['{Exif}']['FNumber']", "[2.8]"},
    };
    for (const auto& [list, file, keys, value] : cases) {
        EXPECT_EQ(exported(list, {m_south}).exitCode, 0) << list;
        EXPECT_EQ(listed(file, keys), value) << list;
    }
    EXPECT_EQ(m_dir.files("out").size(), 7);
}

TEST_F(PhotoListCommand, ImportsWhatItExported) {
    for (const char* list : {"all", "template"})
        EXPECT_EQ(exported(list, {m_south}).exitCode, 0);
    for (const char* file : {"ExportAllMetadataInfo.plist", "templatefile.plist"}) {
        const auto result = clitest::cli(
            "--storage % photo import",
            {m_dir.path("new"), m_dir.path("out") + u'/' + QLatin1String(file), m_plain});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(
            testkit::exiftool("-s3 -n -Artist -EXIF:GPSLatitude -GPSLatitudeRef -GPSLongitudeRef",
                              {m_dir.path("new/plain.jpg")}),
            "Ärtist\n33.5\nS\nW")
            << file;
    }
    EXPECT_EQ(testkit::exiftool("-s3 -Artist", {m_plain}), QByteArray()) << "the source stays";
    EXPECT_EQ(
        clitest::cli("--storage % photo import", {m_dir.path("new"), m_dir.path("none"), m_plain})
            .exitCode,
        1);
}

TEST_F(PhotoListCommand, SaysWhatBecameOfEachPhoto) {
    const auto several = exported("tiff", {m_south, m_plain, m_dir.write("text.jpg", "no photo")});
    EXPECT_EQ(several.exitCode, 1) << several.err;
    QStringList statuses;
    for (const auto& item : QJsonDocument::fromJson(several.out)[u"items"_s].toArray())
        statuses += item[u"status"_s].toString();
    EXPECT_EQ(statuses.join(u' '), u"completed skipped failed");
    QDir(m_dir.path()).mkdir(u"empty"_s);
    EXPECT_EQ(exported("gps", {m_south}).exitCode, 2);
    EXPECT_EQ(exported("all", {m_dir.path("none")}).exitCode, 1);
    EXPECT_EQ(exported("all", {m_dir.path("empty")}).exitCode, 3);
}

} // namespace
