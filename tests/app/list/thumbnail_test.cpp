// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/thumbnail_service.h"
#include "platform/foundation/utc.h"
#include "tests/app/list/list_items.h"
#include "tests/testkit/media.h"

#include <QBuffer>
#include <QColor>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <sys/stat.h>

namespace clipheave::app {

namespace {

constexpr ThumbnailShape kTile{{256, 256}, ThumbnailShape::Fit, 0};
constexpr ThumbnailShape kRow{{24, 24}, ThumbnailShape::Fill, 4};

class Thumbnails : public testing::Test {
protected:
    QString photo(const QString& name, const QImage& image) const {
        EXPECT_TRUE(image.save(m_dir.path(name), nullptr, 95));
        return m_dir.path(name);
    }
    /// An item whose file has the modification time `second`.
    [[nodiscard]] static media::MutableItemPointer dated(const QString& path, qint64 second) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadWrite));
        const QDateTime time = QDateTime::fromSecsSinceEpoch(second, platform::kUtc);
        EXPECT_TRUE(file.setFileTime(time, QFileDevice::FileModificationTime));
        auto item = listItem(path);
        item->modificationDate = time;
        return item;
    }
    QPixmap made(ThumbnailService& service, const media::ItemPointer& item,
                 const ThumbnailShape& shape) {
        service.request(&m_viewer, {{item, shape}});
        EXPECT_TRUE(QTest::qWaitFor([&] { return service.isIdle(); }));
        return service.image(*item, shape);
    }
    [[nodiscard]] static QString corners(const QImage& image) {
        QString seen;
        for (const double x : {0.2, 0.8}) {
            const QColor c =
                image.pixelColor(static_cast<int>(x * image.width()), image.height() / 2);
            seen += c.red() > 200 ? u'r' : c.green() > 200 ? u'g' : c.blue() > 200 ? u'b' : u'?';
        }
        return seen;
    }

    QObject m_viewer;
    testkit::TempDir m_dir;
    ThumbnailCache m_cache{m_dir.path("thumbnails")};
    ThumbnailService m_service{m_cache};
};

} // namespace

TEST_F(Thumbnails, NamesFilesAsTheStandardDoes) {
    EXPECT_EQ(ThumbnailCache::fileAddress(u"/home/j ens/ü#[1]&(a).png"_s),
              "file:///home/j%20ens/%C3%BC%23%5B1%5D&(a).png");
    EXPECT_EQ(ThumbnailCache::fileAddress(u"/"_s + QChar(0xDCE4)), "file:///%E4");
    // The example of the standard.
    EXPECT_EQ(ThumbnailCache(u"/c"_s).fileFor(u"/home/jens/photos/me.png"_s, 128),
              u"/c/normal/c6ee772d9e49320e97ec29a7eb5b1697.png");
}

TEST_F(Thumbnails, AreStoredAndMadeAgainWhenTheFileChanges) {
    const QString path = photo(u"a.png"_s, twoColours({800, 400}, Qt::red, Qt::blue));
    const auto item = dated(path, 1'700'000'000);
    const QImage first = made(m_service, item, kTile).toImage();
    EXPECT_EQ(first.size(), QSize(256, 128));
    EXPECT_EQ(corners(first), u"rb");
    const QString stored = m_cache.fileFor(path, 256);
    ASSERT_TRUE(QFileInfo::exists(stored));
    EXPECT_EQ(QImage(stored).text(u"Thumb::MTime"_s), u"1700000000");
    EXPECT_EQ(QImage(stored).text(u"Thumb::URI"_s), u"file://"_s + path);
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(stored).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(testkit::namesIn(QFileInfo(stored).path()).size(), 1);

    // The stored one counts, as long as the file is of that time.
    ASSERT_TRUE(photo(u"a.png"_s, twoColours({800, 400}, Qt::green, Qt::green)) == path);
    ThumbnailService again(m_cache);
    EXPECT_EQ(corners(made(again, dated(path, 1'700'000'000), kTile).toImage()), u"rb");
    EXPECT_EQ(corners(made(again, dated(path, 1'700'000'001), kTile).toImage()), u"gg");
    EXPECT_EQ(QImage(stored).text(u"Thumb::MTime"_s), u"1700000001");

    // Neither a thumbnail of another file nor a broken one is taken.
    QImage foreign = twoColours({256, 128}, Qt::blue, Qt::blue);
    foreign.setText(u"Thumb::MTime"_s, u"1700000002"_s);
    foreign.setText(u"Thumb::URI"_s, u"file:///other.png"_s);
    ASSERT_TRUE(foreign.save(stored));
    EXPECT_EQ(corners(made(again, dated(path, 1'700'000'002), kTile).toImage()), u"gg");
    QFile::resize(stored, 60);
    EXPECT_EQ(corners(made(again, dated(path, 1'700'000'003), kTile).toImage()), u"gg");
}

TEST_F(Thumbnails, OfABrokenImageAreTriedOnce) {
    const auto broken = dated(m_dir.write("b.jpg", "\xFF\xD8\xFF\xE0 no image"), 1);
    const auto heic = listItem(u"/none/c.heic"_s);
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(made(m_service, broken, kRow).isNull());
        EXPECT_TRUE(made(m_service, heic, kRow).isNull());
    }
    EXPECT_EQ(m_service.madeCount(), 2);
    EXPECT_FALSE(QFileInfo::exists(m_cache.fileFor(broken->filePath, 128)));
    // Once it has become an image, it is tried again.
    photo(u"b.jpg"_s, twoColours({100, 50}, Qt::red, Qt::blue));
    EXPECT_FALSE(made(m_service, dated(broken->filePath, 2), kRow).isNull());
}

TEST_F(Thumbnails, OfThumbnailsAreNotStored) {
    QDir().mkpath(m_dir.path("thumbnails/large"));
    const QString path =
        photo(u"thumbnails/large/x.png"_s, twoColours({200, 100}, Qt::red, Qt::blue));
    EXPECT_FALSE(made(m_service, dated(path, 5), kTile).isNull());
    EXPECT_EQ(m_dir.files("thumbnails/large").size(), 1);
}

TEST_F(Thumbnails, ArtworkComesFirstAndFillsTheSlot) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
    ASSERT_TRUE(twoColours({600, 200}, Qt::green, Qt::blue).save(&buffer, "png"));
    const auto item = dated(photo(u"p.png"_s, twoColours({300, 300}, Qt::red, Qt::red)), 1'000);
    item->fileImage = platform::EncodedImage::fromBytes(bytes);
    ASSERT_FALSE(item->fileImage.isNull());
    const QImage image = made(m_service, item, kRow).toImage();
    EXPECT_EQ(image.size(), QSize(24, 24));
    EXPECT_EQ(corners(image), u"gb");             // the middle of it
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0); // rounded
    EXPECT_FALSE(QFileInfo::exists(m_cache.fileFor(item->filePath, 128)));
    item->fileImage = {};
    EXPECT_EQ(corners(made(m_service, item, kRow).toImage()), u"rr");
}

TEST_F(Thumbnails, StandUpright) {
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
    ASSERT_TRUE(twoColours({400, 200}, Qt::red, Qt::blue).save(&buffer, "jpeg", 95));
    // An Exif segment that holds nothing but the orientation: rotated by 180 degrees.
    const QByteArray exif = QByteArray("Exif\0\0MM\0\x2A\0\0\0\x08\0\x01", 16) +
                            QByteArray("\x01\x12\0\x03\0\0\0\x01\0\x03\0\0\0\0\0\0", 16);
    jpeg.insert(2, QByteArray("\xFF\xE1", 2) + testkit::be(quint64(exif.size()) + 2, 2) + exif);
    const auto item = dated(m_dir.write("rotated.jpg", jpeg), 9);
    EXPECT_EQ(corners(made(m_service, item, kTile).toImage()), u"br");
}

TEST_F(Thumbnails, OfVideosShowAFrame) {
    SKIP_WITHOUT("ffmpeg");
    const QString path = m_dir.path("video.mp4");
    testkit::ffmpeg("-f lavfi -i color=blue:s=320x180:d=1 -c:v mpeg4", {path});
    const auto item = dated(path, 77);
    item->fileduration = 1;
    const QImage image = made(m_service, item, kTile).toImage();
    EXPECT_EQ(image.size(), QSize(256, 144));
    EXPECT_EQ(corners(image), u"bb");
    EXPECT_TRUE(QFileInfo::exists(m_cache.fileFor(path, 256)));
}

TEST_F(Thumbnails, OfRowsScrolledAwayAreNotMade) {
    QList<ThumbnailRequest> many;
    for (int i = 0; i < 60; ++i)
        many.append(
            {dated(photo(u"m%1.png"_s.arg(i), twoColours({600, 600}, Qt::red, Qt::blue)), 3),
             kTile});
    QObject other;
    m_service.request(&other, {{many[59].item, kRow}});
    m_service.request(&m_viewer, many);
    m_service.request(&m_viewer, {many[58]});
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_service.isIdle(); }, 20'000));
    EXPECT_FALSE(m_service.image(*many[58].item, kTile).isNull());
    EXPECT_FALSE(m_service.image(*many[59].item, kRow).isNull()); // the other viewer's stays
    EXPECT_LT(m_service.madeCount(), 20);
    m_service.request(&m_viewer, many);
    m_service.cancel(&m_viewer);
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_service.isIdle(); }, 20'000));
    EXPECT_LT(m_service.madeCount(), 40);
}

} // namespace clipheave::app
