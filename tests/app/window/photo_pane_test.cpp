// SPDX-License-Identifier: GPL-3.0-or-later
// The photo pane in the window: what it shows of a selection and what Apply writes.
#include "app/panes/photo_pane.h"

#include "app/list/photo_grid.h"
#include "app/panes/detail_pane.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/image_button.h"
#include "app/windows/photo_dates_window.h"
#include "photo/photo_edits.h"
#include "platform/foundation/dates.h"
#include "platform/image/sample_photo.h"
#include "tests/app/window/window_fixture.h"

#include <QItemSelectionModel>
#include <QLabel>

namespace {

using namespace clipheave;
using namespace clipheave::app;

class PhotoPaneTest : public WindowFixture {
protected:
    /// Two photos "a.jpg" and "b.jpg" in the grid.
    void SetUp() override {
        WindowFixture::SetUp();
        const platform::SamplePhoto samples[] = {
            {.size = {32, 24},
             .pattern = 0,
             .dateTimeOriginal = "2019:05:04 10:11:12",
             .make = "Kestrel",
             .artist = "Halla",
             .hasPosition = true,
             .latitude = 63.5,
             .longitude = -19},
            {.size = {32, 24},
             .pattern = 1,
             .dateTimeOriginal = "2020:05:04 10:11:12",
             .make = "Northlight",
             .artist = "Teitur"},
        };
        QStringList paths{dir.path("a.jpg"), dir.path("b.jpg")};
        for (int i = 0; i < 2; ++i)
            ASSERT_TRUE(platform::writeSamplePhoto(samples[i], paths[i]));
        untilEnd(&AppDelegate::importFinished, [&] { controller->importPhotoPaths(paths); });
        window()->showPhotos();
    }
    PhotoPane* pane() const { return window()->photoPane(); }
    QString shown(const char* field) const { return child<QLineEdit>(field)->text(); }
    photo::PaneTexts written(const char* name) const {
        return photo::paneOfPhoto(dir.path(u"out/"_s + QLatin1String(name)))
            .value_or(photo::PaneTexts());
    }
};

TEST_F(PhotoPaneTest, ThePaneFollowsTheSelectionAndComesAndGoes) {
    controller->StartEditViewAction();
    EXPECT_EQ(desktop->alerts, QStringList{u"No Item has been selected"_s});
    EXPECT_FALSE(pane()->isVisible());
    window()->selectRow(0);
    QTest::keyClick(window(), Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(pane()->isVisible());
    EXPECT_TRUE(child<ImageButton>("localeditexifBtn")->isChecked());
    EXPECT_EQ(shown("artistlab"), u"Halla");
    EXPECT_EQ(shown("gpsLongtlab"), u"-19");
    type("titlelab", u"Dusk"_s);
    EXPECT_TRUE(controller->changeFlags().basicInfoChange);
    window()->selectAll(); // into the field, which has the focus
    window()->photoGrid()->selectAll();
    EXPECT_EQ(shown("titlelab"), u"Dusk") << "typed, and the same photo is shown";
    EXPECT_EQ(child<EditField>("artistlab")->suffix(), u"several values");
    window()->photoGrid()->setCurrentIndex(window()->photoGrid()->model()->index(1, 0));
    EXPECT_EQ(shown("titlelab"), QString()) << "another photo alone";
    window()->selectRow(0);
    type("titlelab", u"Dusk"_s);
    window()->photoGrid()->selectionModel()->setCurrentIndex(
        window()->photoGrid()->model()->index(1, 0), QItemSelectionModel::Select);
    EXPECT_EQ(shown("titlelab"), u"Dusk") << "a photo that is added drops nothing";
    window()->selectRow(1);
    EXPECT_EQ(shown("artistlab"), u"Teitur");
    EXPECT_FALSE(controller->changeFlags().basicInfoChange);
    controller->revealCurrentItem();
    EXPECT_EQ(desktop->revealed, QStringList{dir.path("b.jpg")});
    window()->photoGrid()->setFocus();
    QTest::keyClick(window()->photoGrid(), Qt::Key_Escape);
    EXPECT_FALSE(pane()->isVisible());
    controller->StartEditViewAction();
    controller->performCommand(u"RemoveMediaFileAction"_s);
    EXPECT_FALSE(pane()->showsPhoto()) << "of a photo that left the list";
    window()->showList();
    EXPECT_TRUE(window()->detailPane()->isVisible());
    window()->deselect();
    controller->StartEditViewAction();
    EXPECT_EQ(desktop->alerts.size(), 2);
    EXPECT_FALSE(window()->showsPhotos()) << "nothing to edit there";
    window()->selectRow(0);
    controller->StartEditViewAction();
    EXPECT_EQ(shown("artistlab"), u"Halla") << "what is selected in the list is in the grid";
}

TEST_F(PhotoPaneTest, ApplyWritesTheChangedSectionIntoEverySelectedPhoto) {
    window()->selectRow(0);
    controller->StartEditViewAction();
    child<ImageButton>("editApplyBtn")->activate();
    EXPECT_TRUE(pane()->footNote().startsWith(u"Nothing to write"_s));
    EXPECT_TRUE(filesOut().isEmpty());
    type("titlelab", u"Dusk"_s);
    type("keywordslab", u"sea, surf"_s);
    window()->photoGrid()->selectAll();
    saved([this] { child<ImageButton>("editApplyBtn")->activate(); });
    EXPECT_EQ(newestJob().succeeded(), 2);
    EXPECT_EQ(filesOut(), (QStringList{u"a.jpg"_s, u"b.jpg"_s}));
    for (const char* name : {"a.jpg", "b.jpg"}) {
        EXPECT_EQ(written(name).titlelab, u"Dusk") << name;
        EXPECT_EQ(written(name).keywordslab, u"sea, surf") << name;
        EXPECT_EQ(written(name).artistlab, u"Halla") << name << ": every field of the section";
    }
    EXPECT_EQ(written("b.jpg").cameraMakelab, u"Northlight") << "of a section that nobody changed";
    EXPECT_EQ(written("b.jpg").place.latitudelab, QString());
    EXPECT_EQ(pane()->footNote(), u"Saved 2 copies");
    EXPECT_FALSE(photo::paneOfPhoto(dir.path("a.jpg"))->titlelab.contains(u"Dusk"));
    type("titlelab", u"Dawn"_s);
    EXPECT_FALSE(pane()->footNote().startsWith(u"Saved"_s));
}

TEST_F(PhotoPaneTest, TheDatesOfAPhotoAreShownAndNothingCanBeTyped) {
    controller->ChangeDateExifFromPhoto();
    EXPECT_EQ(desktop->alerts, QStringList{u"No Item has been selected"_s});
    window()->selectRow(1);
    controller->ChangeDateExifFromPhoto();
    EXPECT_TRUE(controller->photoDatesWindow()->isVisible());
    const QString modified = platform::formatDate(
        controller->localPhotoItemArray()[1]->modificationDate, platform::DatePattern::Colon);
    for (const auto& [label, text] : {std::pair("beforeorignalDatelab", u"2020:05:04 10:11:12"_s),
                                      {"beforeModifiedDatelab", modified}})
        EXPECT_EQ(child<QLabel>(label)->text(), text) << label;
    EXPECT_EQ(shown("orignalDatelab"), u"2020:05:04 10:11:12");
    EXPECT_FALSE(child<QLineEdit>("orignalDatelab")->isEnabled());
}

TEST_F(PhotoPaneTest, WhatCannotBeWrittenIsSaidAndNothingIsWritten) {
    window()->selectRow(0);
    controller->StartEditViewAction();
    type("cameraDatelab", u"yesterday"_s);
    EXPECT_TRUE(pane()->footNote().contains(u"yesterday"_s)) << pane()->footNote();
    controller->ClickApplyChangeAction();
    EXPECT_TRUE(desktop->alerts.isEmpty());
    window()->selectRow(1);
    type("gpsLatilab", u"12"_s);
    controller->ClickApplyChangeAction();
    EXPECT_EQ(desktop->alerts, QStringList{u"Vaule Error"_s});
    EXPECT_TRUE(filesOut().isEmpty());
}

} // namespace
