// SPDX-License-Identifier: GPL-3.0-or-later
// Property lists from the menu of the photo browser.
#include "platform/image/sample_photo.h"
#include "tests/app/window/window_fixture.h"

namespace {

using namespace clipheave;
using namespace clipheave::app;

using PhotoListsTest = WindowFixture;

TEST_F(PhotoListsTest, EveryExportWritesItsFileOfTheSelection) {
    controller->performCommand(u"ExportTiffInfoToPlist"_s);
    EXPECT_EQ(desktop->alerts, QStringList{u"No Item has been selected"_s});
    const QString photo = dir.path("a.jpg");
    platform::SamplePhoto sample{.size = {32, 24},
                                 .pattern = 0,
                                 .dateTimeOriginal = "2019:05:04 10:11:12",
                                 .make = "Maker",
                                 .hasPosition = true};
    ASSERT_TRUE(platform::writeSamplePhoto(sample, photo));
    untilEnd(&AppDelegate::importFinished, [&] { controller->importPhotoPaths({photo}); });
    window()->selectRow(0);
    const struct {
        const char *command, *file;
    } cases[] = {
        {"ExportTiffInfoToPlist", "ExportTiffInfo.plist"},
        {"ExportExifInfoToPlist", "ExportExifInfo.plist"},
        {"ExportExifandTiffInfoToPlist", "ExportExifandTiffInfo.plist"},
        {"ExportExifandGPSInfoToPlist", "ExportExifandGPSInfo.plist"},
        {"ExportTemplateDataToPlist", "templatefile.plist"},
        {"ExportAllMetadataInfoToPlist", "ExportAllMetadataInfo.plist"},
        {"WriteSelectedItemsExifDataToPlist", "a.jpg.plist"},
    };
    for (const auto& [command, file] : cases) {
        saved([this, name = command] { controller->performCommand(QLatin1String(name)); });
        EXPECT_EQ(desktop->revealed,
                  QStringList{controller->storagelocation() + u'/' + QLatin1String(file)});
        desktop->revealed.clear();
    }
    desktop->chosenPaths = {controller->storagelocation() + u"/templatefile.plist"_s};
    saved([this] { controller->performCommand(u"ImportTemplateToPhotos"_s); });
    EXPECT_EQ(desktop->revealed, QStringList{controller->storagelocation() + u"/a.jpg"_s});
    EXPECT_EQ(desktop->mediaChoosers, QList{OpenPanel::OneFile});
}

} // namespace
