// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/run.h"
#include "media/media_import.h"
#include "photo/stamp_order.h"
#include "platform/foundation/file_manager.h"
#include "tests/testkit/media.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <chrono>

namespace clipheave::photo {

namespace {

using testkit::TempDir;
const QString kFont = QStringLiteral("DejaVu Sans");
const QString kText = QStringLiteral("14/06/2025 21:36:20");

TEST(StampText, FollowsTheLayoutAndLeavesOtherTextsAlone) {
    const struct {
        const char *recorded, *layout, *text;
    } cases[] = {
        {"2020:01:31 10:00:00", "DD/MM/YYYY HH:MM", "31/01/2020 10:00:00"},
        {"2020:01:31 10:00:00", "MM/DD/YYYY HH:MM", "01/31/2020 10:00:00"},
        {"2020-01-31 10:00:00", "YYYY/MM/DD HH:MM", "2020/01/31 10:00:00"},
        {"2020:01:31 10:00:00", "yyyy", "2020:01:31 10:00:00"},
        {"2020:01:31", "DD/MM/YYYY HH:MM", "2020:01:31"},
        {"Summer 2020", "DD/MM/YYYY HH:MM", "Summer 2020"},
    };
    for (const auto& [recorded, layout, text] : cases)
        EXPECT_EQ(stampText(QString::fromLatin1(recorded), QString::fromLatin1(layout)),
                  QString::fromLatin1(text));
}

TEST(StampRectangle, HasItsCornerAndAPlaceForUnknownTitles) {
    const QSize photo(4000, 3000);
    const QSizeF text(300, 40);
    const struct {
        const char* position;
        QRectF fine, coarse;
    } cases[] = {
        {"Upper left corner", {50, 2930, 320, 60}, {50, 2950, 400, 50}},
        {"Upper right corner", {3680, 2930, 320, 60}, {3600, 2950, 400, 50}},
        {"Lower left corner", {50, 50, 320, 60}, {50, 30, 400, 50}},
        {"Lower right corner", {3680, 50, 320, 60}, {3600, 30, 400, 50}},
        {"lower left corner", {50, 30, 400, 50}, {50, 30, 400, 50}},
    };
    for (const auto& [position, fine, coarse] : cases) {
        EXPECT_EQ(stampRectangle(photo, text, QString::fromLatin1(position)), fine) << position;
        EXPECT_EQ(stampRectangle(photo, {0, 40}, QString::fromLatin1(position)), coarse);
    }
}

/// The frame of what differs from the grey ground.
QRect inkOf(const QImage& image, int threshold) {
    QRect ink;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (std::abs(qGray(image.pixel(x, y)) - 100) > threshold)
                ink |= QRect(x, y, 1, 1);
    return ink;
}

QImage grey(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(100, 100, 100));
    return image;
}

/// The text as outlines with its first line's top left corner there: not the way of the code.
QImage drawnAsOutlines(QSize size, QPointF topLeft, int pixels) {
    QImage image = grey(size);
    QFont font(kFont);
    font.setPixelSize(pixels);
    QPainterPath path;
    path.addText(topLeft + QPointF(0, QFontMetricsF(font).ascent()), font, kText);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path, Qt::white);
    return image;
}

/// Returns the outcomes of a run over the photos.
std::vector<jobs::WriteOutcome> stamped(const QStringList& photos, const QString& storage,
                                        const StampStyle& style) {
    media::MediaImport import;
    import.importPhotos(photos);
    const auto order = stampOrder({import.localPhotoItemArray(), style, {storage, false, {}}});
    const auto run = jobs::Run::create(order, order.allItems());
    run->paths().protect(order.sources);
    run->perform();
    EXPECT_TRUE(run->waitForEnd(std::chrono::minutes(4)));
    return run->outcomes();
}

StampStyle styleAt(const QString& position, int size) {
    return {position, QStringLiteral("DD/MM/YYYY HH:MM"), kFont, size, Qt::white};
}

TEST(DrawStamp, StandsWhereOutlinesOfTheTextStand) {
    const QSize photo(900, 400);
    const int size = 40;
    const QSizeF text = stampTextSize(kText, styleAt({}, size));
    const double right = photo.width() - text.width() - 20, above = 10;
    const double below = photo.height() - 2 * text.height() - 30;
    const struct {
        const char* position;
        QPointF topLeft;
    } cases[] = {{"Upper left corner", {50, above}},
                 {"Upper right corner", {right, above}},
                 {"Lower left corner", {50, below}},
                 {"Lower right corner", {right, below}}};
    for (const auto& [position, topLeft] : cases) {
        QImage drawn = grey(photo);
        QPainter painter(&drawn);
        drawStamp(painter, photo, kText, styleAt(QString::fromLatin1(position), size));
        painter.end();
        const QRect expected = inkOf(drawnAsOutlines(photo, topLeft, size), 60);
        const QRect found = inkOf(drawn, 60);
        EXPECT_LE((found.topLeft() - expected.topLeft()).manhattanLength(), 3) << position;
        EXPECT_LE((found.bottomRight() - expected.bottomRight()).manhattanLength(), 3) << position;
    }
}

TEST(DrawStamp, WrapsAndCutsWhatTheCoarsePlaceCannotHold) {
    const QSize photo(900, 400);
    QImage drawn = grey(photo);
    QPainter painter(&drawn);
    drawStamp(painter, photo, kText, styleAt(QStringLiteral("lower left corner"), 40));
    painter.end();
    EXPECT_TRUE(QRect(50, 320, 400, 50).contains(inkOf(drawn, 20)));
}

/// The stored pixel of an upright image's pixel, by what Exif 2.3 says of the first row and column.
QPoint storedAt(int orientation, QPoint upright, QSize size) {
    const int x = upright.x(), y = upright.y();
    const int fromRight = size.width() - 1 - x, fromBottom = size.height() - 1 - y;
    const QPoint places[] = {{x, y}, {fromRight, y}, {fromRight, fromBottom}, {x, fromBottom},
                             {y, x}, {y, fromRight}, {fromBottom, fromRight}, {fromBottom, x}};
    return places[orientation - 1];
}

class DateStampOfPhotos : public testing::Test {
protected:
    /// Writes a JPEG that is red, green, blue and white in its upright corners.
    QString photo(int orientation) {
        constexpr QSize kUpright(480, 320);
        QImage image(orientation > 4 ? kUpright.transposed() : kUpright, QImage::Format_RGB32);
        for (int y = 0; y < kUpright.height(); ++y)
            for (int x = 0; x < kUpright.width(); ++x)
                image.setPixelColor(storedAt(orientation, {x, y}, kUpright),
                                    kCorners[(y >= 160) * 2 + (x >= 240)]);
        const QString path = m_dir.path(QStringLiteral("p%1.jpg").arg(orientation));
        EXPECT_TRUE(image.save(path, "jpeg", 95));
        return path;
    }
    static inline const QColor kCorners[] = {Qt::red, Qt::green, Qt::blue, Qt::white};
    TempDir m_dir;
    QString m_store = m_dir.path("store");
};

TEST_F(DateStampOfPhotos, AreUprightInAllEightOrientations) {
    SKIP_WITHOUT("exiftool");
    QStringList photos;
    for (int orientation = 1; orientation <= 8; ++orientation) {
        photos << photo(orientation);
        testkit::exiftool("-q -n -overwrite_original -DateTimeOriginal=2025:06:14_21:36:20 "
                          "-GPSLatitude=12.5 -GPSLatitudeRef=S -Make=Maker -IPTC:City=Rome "
                          "-XMP:Label=Red -XMP-tiff:Orientation=6 -ExifImageWidth=9 -Orientation=" +
                              QByteArray::number(orientation),
                          {photos.last()});
    }
    ASSERT_EQ(stamped(photos, m_store, styleAt({}, 20)).size(), 8u);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const QString path = m_store + QStringLiteral("/p%1_date.jpg").arg(orientation);
        const QImage image(path);
        ASSERT_EQ(image.size(), QSize(480, 320)) << orientation;
        for (int i = 0; i < 4; ++i) {
            const QColor found = image.pixelColor(i % 2 ? 360 : 120, i / 2 ? 200 : 80);
            const QColor& wanted = kCorners[i];
            EXPECT_LT(std::abs(found.red() - wanted.red()) +
                          std::abs(found.green() - wanted.green()) +
                          std::abs(found.blue() - wanted.blue()),
                      60)
                << orientation << " corner " << i;
        }
        const QByteArray tags = testkit::exiftool(
            "-n -s3 -IFD0:Orientation -XMP-tiff:Orientation -ExifImageWidth -ExifImageHeight "
            "-GPSLatitude -Make -City -Label",
            {path});
        const bool quarter = orientation == 6 || orientation == 8;
        EXPECT_EQ(tags.trimmed(), QByteArray("1\n1\n") + (quarter ? "320\n320" : "480\n320") +
                                      "\n-12.5\nMaker\nRome\nRed")
            << orientation;
    }
}

TEST_F(DateStampOfPhotos, KeepDatesNamesAndTheFilesOfTheList) {
    SKIP_WITHOUT("exiftool");
    const QString first = m_dir.path("a/one.jpg"), second = m_dir.path("b/one.jpg");
    const QString plain = m_dir.path("plain.PNG"), text = m_dir.path("text.jpg");
    for (const char* folder : {"a", "b"})
        m_dir.write(QString::fromLatin1(folder) + QStringLiteral("/x"), "");
    for (const QString& path : {first, second, plain})
        ASSERT_TRUE(grey({640, 480}).save(path));
    m_dir.write("text.jpg", "no image");
    testkit::exiftool("-q -overwrite_original -DateTimeOriginal=2001:02:03_04:05:06 "
                      "-CreateDate=2001:02:03_04:05:06",
                      {first});
    const auto outcomes = stamped({first, second, plain, text}, m_dir.path(), styleAt({}, 20));
    ASSERT_EQ(outcomes.size(), 4u);
    EXPECT_EQ(outcomes[3].status, jobs::WriteStatus::Failed);
    EXPECT_EQ(m_dir.files(),
              (QStringList{QStringLiteral("one_date 2.jpg"), QStringLiteral("one_date.jpg"),
                           QStringLiteral("plain.PNG"), QStringLiteral("plain_date.PNG"),
                           QStringLiteral("text.jpg")}));
    const auto dateOf = [&](const char* name) {
        return platform::NSFileManager::defaultManager()
            .attributesOfItemAtPath(m_dir.path(name))
            .value();
    };
    const QDateTime taken(QDate(2001, 2, 3), QTime(4, 5, 6));
    EXPECT_EQ(dateOf("one_date.jpg").NSFileModificationDate, taken);
    EXPECT_EQ(dateOf("one_date.jpg").NSFileCreationDate, taken);
    EXPECT_LT(dateOf("plain_date.PNG").NSFileModificationDate.secsTo(QDateTime::currentDateTime()),
              60);
    EXPECT_TRUE(TempDir::read(m_dir.path("plain_date.PNG"))
                    .startsWith("\xff\xd8\xff")); // named .png, a JPEG
    EXPECT_FALSE(TempDir::read(m_dir.path("plain_date.PNG")).contains("Exif"));
}

} // namespace

} // namespace clipheave::photo
