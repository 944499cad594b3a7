// SPDX-License-Identifier: GPL-3.0-or-later
// The position sheet and the map window of the photo browser.
#include "app/list/photo_grid.h"
#include "app/widgets/button_look.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/map_view.h"
#include "app/windows/gps_sheet.h"
#include "app/windows/map_window.h"
#include "platform/image/sample_photo.h"
#include "tests/app/window/window_fixture.h"
#include "tests/testkit/media.h"

#include <QLabel>

namespace {

using namespace clipheave;
using namespace clipheave::app;

class PhotoGpsTest : public WindowFixture {
protected:
    /// Imports "none.jpg", "south.jpg" and "north.jpg", of which the last two have a position.
    void importPhotos() const {
        QStringList paths;
        for (const char* name : {"none", "south", "north"}) {
            platform::SamplePhoto sample{
                .size = {32, 24}, .pattern = 0, .dateTimeOriginal = "2019:05:04 10:11:12"};
            sample.hasPosition = name != std::string("none");
            sample.latitude = name == std::string("south") ? -33.5 : 48.25;
            sample.longitude = name == std::string("south") ? -70.25 : 16.5;
            sample.altitude = -10;
            paths.append(dir.path(QLatin1String(name) + u".jpg"_s));
            ASSERT_TRUE(platform::writeSamplePhoto(sample, paths.back()));
        }
        untilEnd(&AppDelegate::importFinished, [&] { controller->importPhotoPaths(paths); });
    }
    /// Selects the rows; the last one is the current one.
    void select(const QList<int>& rows) const {
        QAbstractItemView& grid = *window()->photoGrid();
        grid.clearSelection();
        for (const int row : rows)
            grid.selectionModel()->setCurrentIndex(grid.model()->index(row, 0),
                                                   QItemSelectionModel::Select |
                                                       QItemSelectionModel::Rows);
    }
    void open(const char* command) const { controller->performCommand(QLatin1String(command)); }
    GpsSheet& sheet() const { return *controller->gpsSheet(); }
    QStringList texts() const {
        QStringList all;
        for (const EditField* field : sheet().controls().fields())
            all.append(field->text());
        return all;
    }
    void typeAll(const QStringList& values) const {
        const auto fields = sheet().controls().fields();
        for (qsizetype i = 0; i < values.size(); ++i)
            fields[static_cast<std::size_t>(i)]->setText(values[i]);
    }
    QByteArray tagsOf(const QString& name) const {
        return testkit::exiftool("-s3 -n -GPSLatitude -GPSLongitude -GPSAltitude -GPSDateStamp "
                                 "-GPSTimeStamp -DateTimeOriginal %",
                                 {dir.path(u"out/"_s + name)});
    }
    /// Expects the alert of this message with this text and the one button, which closes it.
    void expectAlert(const char* message, const char* text) const {
        EXPECT_EQ(desktop->alerts, QStringList{QLatin1String(message)});
        EXPECT_EQ(desktop->alertTexts, QStringList{QLatin1String(text) + u"\n Ok "_s});
        desktop->alerts.clear();
        desktop->alertTexts.clear();
    }
};

TEST_F(PhotoGpsTest, WhatIsMissingIsSaidInTheFixedWords) {
    importPhotos();
    select({});
    for (const char* command :
         {"EditeGPSExifDataPhoto", "AddGPSExifDataPhoto", "ChangeGPSExifDataPhoto", "ShowMapAction",
          "ClickSaveChangeGPSAction"}) {
        open(command);
        expectAlert("No Item has been selected", "Please select at least one item to process.");
    }
    select({0});
    open("EditeGPSExifDataPhoto");
    expectAlert("No GPS Data", "The selected photo does not contain GPS information.");
    open("ShowMapAction");
    expectAlert("No GPS Data", "This photo does not contain GPS information.");
    EXPECT_FALSE(sheet().isVisible() || controller->mapWindow()->isVisible());

    open("AddGPSExifDataPhoto");
    EXPECT_TRUE(sheet().isVisible() && sheet().isModal() && controller->bAddGPS());
    EXPECT_EQ(texts(), QStringList(5, QString()));
    EXPECT_EQ(sheet().controls().dateStamplab->placeholderText(), u"YYYY:MM:DD");
    EXPECT_EQ(sheet().controls().timeStamplab->placeholderText(), u"HH:MM:SS");
    const QStringList whole{u"1"_s, u"2"_s, u"3"_s, u"2020:01:02"_s, u"03:04:05"_s};
    for (qsizetype missing = 0; missing < whole.size(); ++missing) {
        QStringList values = whole;
        values[missing].clear();
        typeAll(values);
        open("ClickSaveChangeGPSAction");
        expectAlert("Vaule Error", "Each value cannot be empty.");
    }
    EXPECT_TRUE(sheet().isVisible());
    EXPECT_EQ(filesOut(), QStringList());
}

TEST_F(PhotoGpsTest, ItShowsTheCurrentPhotoAndWritesToWhatWasSelected) {
    importPhotos();
    select({0, 2, 1});
    open("EditeGPSExifDataPhoto");
    EXPECT_FALSE(controller->bAddGPS());
    EXPECT_EQ(texts(), QStringList({u"-33.5"_s, u"-70.25"_s, u"-10"_s, {}, {}}));
    EXPECT_EQ(child<QLabel>("gpsPhotoName")->text(), u"south.jpg");
    EXPECT_EQ(sheet().findChild<QLabel*>(u"windowSubtitle"_s)->text(), u"south.jpg and 2 more");
    EXPECT_EQ(sheet().controls().saveBtn->text(), u"Save GPS to 3 Photos");
    sheet().reject();
    EXPECT_EQ(texts(), QStringList(5, QString())) << "nothing stays for another photo";

    select({1, 2});
    open("EditeGPSExifDataPhoto");
    EXPECT_EQ(texts().first(), u"48.25") << "of the current photo";
    typeAll({u"-1,5"_s, u"−179.75"_s, u"-4.5"_s, u"2020:01:02"_s, u"03:04:05"_s});
    select({0}); // a list that changes meanwhile does not redirect the save
    saved([this] { QTest::keyClick(sheet().controls().timeStamplab, Qt::Key_Return); });
    EXPECT_FALSE(sheet().isVisible());
    EXPECT_EQ(filesOut(), QStringList({u"north.jpg"_s, u"south.jpg"_s}));
    for (const char* name : {"north.jpg", "south.jpg"})
        EXPECT_EQ(tagsOf(QLatin1String(name)),
                  "-1.5\n-179.75\n-4.5\n2020:01:02\n03:04:05\n2019:05:04 10:11:12");
    EXPECT_EQ(newestJob().title, u"Save GPS data");
}

TEST_F(PhotoGpsTest, AValueThatCannotBeWrittenIsMarkedAndStopsTheSave) {
    importPhotos();
    select({0});
    open("AddGPSExifDataPhoto");
    const QStringList whole{u"1"_s, u"2"_s, u"3"_s, u"2020:01:02"_s, u"03:04:05"_s};
    const QStringList wrong{u"90.1"_s, u"-180.5"_s, u"high"_s, u"2020:13:02"_s, u"25:00:00"_s};
    const auto* note = child<QLabel>("gpsNote");
    for (qsizetype i = 0; i < wrong.size(); ++i) {
        QStringList values = whole;
        values[i] = wrong[i];
        typeAll(values);
        open("ClickSaveChangeGPSAction");
        EditField* field = sheet().controls().fields()[static_cast<std::size_t>(i)];
        EXPECT_TRUE(sheet().isVisible());
        EXPECT_TRUE(field->fault().contains(wrong[i])) << field->fault();
        EXPECT_EQ(note->text(), field->fault());
        EXPECT_EQ(field->toolTip(), field->fault());
        EXPECT_EQ(sheet().focusWidget(), field);
        field->setText(whole[i]);
        EXPECT_EQ(note->text(), u"Click the map to move the pin");
    }
    EXPECT_EQ(desktop->alerts, QStringList());
    EXPECT_EQ(filesOut(), QStringList());
}

TEST_F(PhotoGpsTest, TheMapShowsAndPicksThePosition) {
    importPhotos();
    select({2});
    open("ShowMapAction");
    const MapView& alone = *controller->mapWindow()->map();
    EXPECT_EQ(alone.positionText(), u"48.2500 N  16.5000 E");
    EXPECT_FALSE(controller->mapWindow()->isModal());
    EXPECT_EQ(controller->mapWindow()->size(), QSize(720, 480));

    open("EditeGPSExifDataPhoto");
    EXPECT_EQ(sheet().size(), QSize(880, 544));
    MapView& map = *sheet().controls().previewMapView;
    EXPECT_EQ(map.annotations(), QList{(GeoPoint{48.25, 16.5})});
    const GeoPoint centre = map.centre();
    const GeoPoint picked = map.positionAt({60, 40});
    QTest::mouseClick(&map, Qt::LeftButton, {}, {60, 40});
    EXPECT_NEAR(texts()[0].toDouble(), picked.latitude, 1e-6);
    EXPECT_NEAR(texts()[1].toDouble(), picked.longitude, 1e-6);
    EXPECT_EQ(map.centre(), centre) << "the map stays below the pointer";
    ASSERT_EQ(map.annotations().size(), 1);
    EXPECT_NEAR(map.pixelOf(map.annotations().first()).x(), 60, 0.5);
    type("latitudelab", u"-12"_s);
    QTest::mouseClick(sheet().controls().previewBtn, Qt::LeftButton);
    EXPECT_NEAR(map.centre().latitude, -12, 1e-6);
}

TEST_F(PhotoGpsTest, ThePositionWithoutExifNeedsNoStamp) {
    importPhotos();
    select({0});
    open("ChangeGPSExifDataPhoto");
    EXPECT_EQ(sheet().controls().saveBtn->text(), u"Save 1 Photo without EXIF");
    EXPECT_FALSE(sheet().controls().dateStamplab->isVisible());
    typeAll({u"-0.5"_s, u"180"_s, {}});
    open("ClickSaveChangeGPSAction");
    expectAlert("Vaule Error", "Each value cannot be empty.");
    typeAll({u"-0.5"_s, u"180"_s, u"0"_s});
    saved([this] { QTest::mouseClick(sheet().controls().saveBtn, Qt::LeftButton); });
    EXPECT_EQ(filesOut(), QStringList{u"noExif_none.jpg"_s});
    EXPECT_EQ(tagsOf(u"noExif_none.jpg"_s), "-0.5\n180\n0");
}

} // namespace
