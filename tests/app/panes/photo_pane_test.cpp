// SPDX-License-Identifier: GPL-3.0-or-later
// The photo pane beside the one of audio files, with which it shares six fields.
#include "app/panes/photo_pane.h"

#include "app/panes/detail_pane.h"
#include "app/panes/shared_fields.h"
#include "app/theme/theme.h"
#include "app/widgets/map_view.h"
#include "app/widgets/parts.h"
#include "media/audio_pane.h"
#include "media/fields.h"
#include "tests/app/panes/misplaced.h"
#include "tests/testkit/testkit.h"

#include <QHBoxLayout>
#include <QSignalSpy>
#include <QTest>

namespace clipheave::app {
namespace {

using Place = SharedFields::Place;

class PhotoPanes : public testing::Test {
protected:
    PhotoPanes() : m_photo(m_detail.sharedFields()) {
        Theme::instance().apply(Appearance::Dark);
        auto* row = new QHBoxLayout(&m_window);
        row->addWidget(&m_detail);
        row->addWidget(&m_photo);
        m_window.resize(1200, 900);
        m_window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_window));
        media::IKImageItem track;
        track.fileName = u"a.flac"_s;
        track.fileTitle = u"Tide"_s;
        track.fileKeyWords = u"sea"_s;
        m_detail.showAudio(track, media::ShowAudioViewWithItem(track, {}));
        showPhoto();
        m_detail.sharedFields().moveTo(Place::Photo);
    }
    void showPhoto() {
        auto item = std::make_shared<media::IKImageItem>();
        item->fileName = u"a.jpg"_s;
        PhotoContent content{item, {}, {{u"Kind: "_s, u"JPEG image"_s}}};
        content.texts.titlelab = u"Stacks"_s;
        content.texts.cameraMakelab = u"Kestrel"_s;
        content.texts.place = {u"63.5"_s, u"-19"_s, u"6"_s, u"2020:01:01"_s, u"10:11:12"_s};
        m_photo.showPhoto(content);
    }
    EditField* field(const char* name) {
        return m_window.findChild<EditField*>(QLatin1String(name));
    }
    void type(const char* name, const QString& text) {
        field(name)->setFocus(Qt::TabFocusReason);
        field(name)->end(false);
        QTest::keyClicks(field(name), text);
    }
    /// The notes of the headings: "Basic information", "Camera", "Position".
    QStringList notes() {
        QStringList all;
        for (const auto* heading : m_photo.findChildren<SectionHeading*>())
            all.append(heading->note());
        return all;
    }

    QWidget m_window;
    DetailPane m_detail;
    PhotoPane m_photo;
};

TEST_F(PhotoPanes, EachFieldChangesItsOwnSectionAndNoOther) {
    const struct {
        const char *name, *notes;
    } cases[] = {
        {"titlelab", "changed||"},       {"artistlab", "changed||"},
        {"keywordslab", "changed||"},    {"copyrightlab", "changed||"},
        {"imageDescrilab", "changed||"}, {"commentslab", "changed||"},
        {"cameraMakelab", "|changed|"},  {"cameraModelab", "|changed|"},
        {"cameraDatelab", "|changed|"},  {"gpsLatilab", "||changed"},
        {"gpsLongtlab", "||changed"},    {"gpsAitlab", "||changed"},
    };
    QSignalSpy began(&m_photo, &PhotoPane::fieldEditingBegan);
    for (const auto& [name, expected] : cases) {
        showPhoto();
        EXPECT_EQ(notes().join(u'|'), u"||") << "before " << name;
        type(name, u"1"_s);
        EXPECT_EQ(notes().join(u'|'), QLatin1String(expected)) << name;
        const photo::PaneTexts texts = m_photo.view()->texts();
        EXPECT_EQ(texts.basicInfoChange, notes()[0] == u"changed");
        EXPECT_EQ(texts.cameraInfoChange, notes()[1] == u"changed");
        EXPECT_EQ(texts.gpsInfoChange, notes()[2] == u"changed");
    }
    EXPECT_EQ(began.count(), 12);
    EXPECT_EQ(m_detail.audioPane().flags.basicInfoChange, false) << "nothing of it is the audio's";
    EXPECT_EQ(m_detail.audioPane().flags.cameraInfoChange, false);
}

TEST_F(PhotoPanes, TheSharedFieldsMoveWithTextAndMark) {
    EXPECT_EQ(m_window.findChildren<EditField*>(u"titlelab"_s).size(), 1);
    m_detail.sharedFields().moveTo(Place::Audio);
    type("copyrightlab", u"2025"_s);
    EXPECT_EQ(notes().join(u'|'), u"||") << "no photo was edited";
    m_detail.sharedFields().moveTo(Place::Photo);
    EXPECT_EQ(field("copyrightlab")->text(), QString());
    type("titlelab", u" at dusk"_s);
    EXPECT_EQ(m_photo.view()->texts().titlelab, u"Stacks at dusk");
    EXPECT_EQ(m_detail.audioPane().texts.titlelab, u"Tide");

    m_detail.sharedFields().moveTo(Place::Audio);
    EXPECT_EQ(field("titlelab")->text(), u"Tide");
    EXPECT_FALSE(field("titlelab")->isChanged());
    EXPECT_TRUE(field("titlelab")->isVisible());
    type("keywordslab", u", surf"_s);
    EXPECT_EQ(m_detail.audioPane().texts.keywordslab, u"sea, surf");
    EXPECT_EQ(m_photo.view()->texts().titlelab, u"Stacks at dusk");
    EXPECT_EQ(m_photo.view()->texts().keywordslab, QString());
    EXPECT_FALSE(m_photo.view()->flags().cameraInfoChange);

    m_detail.sharedFields().moveTo(Place::Photo);
    EXPECT_EQ(field("titlelab")->text(), u"Stacks at dusk");
    EXPECT_TRUE(field("titlelab")->isChanged());
    EXPECT_FALSE(field("keywordslab")->isChanged());
    EXPECT_EQ(notes().join(u'|'), u"changed||");
    showPhoto();
    m_detail.sharedFields().moveTo(Place::Audio);
    EXPECT_EQ(field("keywordslab")->text(), u"sea, surf");
    EXPECT_TRUE(field("keywordslab")->isChanged());
    EXPECT_EQ(m_detail.findChildren<SectionHeading*>().constLast()->note(), u"2 changed");
}

/// The names of the fields in the order of the Tab key, from `first` on.
QStringList tabOrder(QWidget* first, int count) {
    QStringList names;
    for (QWidget* widget = first; names.size() < count; widget = widget->nextInFocusChain())
        if (qobject_cast<EditField*>(widget) != nullptr)
            names.append(widget->objectName());
    return names;
}

TEST_F(PhotoPanes, TheTabKeyWalksEachFormInItsOrderWhereverTheFieldsWere) {
    QStringList photo, audio;
    for (const PhotoField& row : kPhotoFields)
        photo.append(QLatin1String(row.objectName));
    for (const media::AudioField& row : media::kAudioFields)
        audio.append(QLatin1String(row.objectName));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(tabOrder(field("titlelab"), 12), photo);
        m_detail.sharedFields().moveTo(Place::Audio);
        EXPECT_EQ(tabOrder(field("titlelab"), 16), audio);
        m_detail.sharedFields().moveTo(Place::Photo);
    }
}

TEST_F(PhotoPanes, NothingIsCutOrOverlapsAtAnyWidth) {
    m_detail.hide();
    m_photo.setTargets({2, 0, {}, {u"titlelab"_s, u"cameraMakelab"_s}});
    type("cameraMakelab", u"!"_s);
    for (const int width : {520, 539, 540, 600, 960}) {
        m_photo.setFixedSize(width, 500);
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return m_photo.width() == width && misplaced(m_photo.view()).isEmpty(); }, 2000))
            << width << ": " << misplaced(m_photo.view()).join(u"; "_s).toStdString();
    }
}

TEST_F(PhotoPanes, TheStampsOfTheShownPhotoAreNotForTheOthers) {
    type("gpsAitlab", u"1"_s);
    const photo::PlaceTexts place = m_photo.view()->texts().place;
    EXPECT_EQ(place.altitudelab, u"61");
    EXPECT_EQ(place.longtitudelab, u"-19");
    EXPECT_EQ(place.dateStamplab + place.timeStamplab, QString());
}

TEST_F(PhotoPanes, AClickOnTheMapFillsThePosition) {
    auto* map = m_photo.findChild<MapView*>(u"gpsPaneMapView"_s);
    const QPoint spot(map->width() / 4, map->height() / 4);
    const GeoPoint there = map->positionAt(spot);
    QTest::mouseClick(map, Qt::LeftButton, {}, spot);
    EXPECT_EQ(notes().join(u'|'), u"||changed");
    EXPECT_NEAR(field("gpsLatilab")->text().toDouble(), there.latitude, 1e-4);
    EXPECT_NEAR(field("gpsLongtlab")->text().toDouble(), there.longitude, 1e-4);
    EXPECT_GT(field("gpsLatilab")->text().toDouble(), 63.5);
    EXPECT_EQ(field("gpsAitlab")->text(), u"6");
    ASSERT_EQ(map->annotations().size(), 1);
    EXPECT_NEAR(map->annotations().first().latitude, there.latitude, 1e-9);
}

TEST_F(PhotoPanes, TheFootSaysWhatApplyWrites) {
    m_photo.setTargets({3, 1, {}, {u"titlelab"_s, u"cameraMakelab"_s}});
    EXPECT_EQ(m_photo.footNote(), u"3 photos, copies in the storage folder\n1 skipped, no photo");
    EXPECT_EQ(field("cameraMakelab")->suffix(), u"several values");
    type("cameraMakelab", u"!"_s);
    EXPECT_EQ(m_photo.footNote(),
              u"Every field of Camera goes to copies of 3 photos; empty ones blank theirs\n"
              u"Several values become one: Make\nMake and model become the lens, too\n"
              u"1 skipped, no photo");
    EXPECT_EQ(field("cameraMakelab")->suffix(), QString());
    EXPECT_EQ(field("titlelab")->suffix(), u"several values");
    m_detail.sharedFields().moveTo(Place::Audio);
    EXPECT_EQ(field("titlelab")->suffix(), QString()) << "photos differ, not audio files";
    m_detail.sharedFields().moveTo(Place::Photo);

    m_photo.setFaultRule([](const photo::PaneTexts& texts) {
        return texts.cameraDatelab.isEmpty() ? PhotoPane::Fault()
                                             : PhotoPane::Fault{u"cameraDatelab"_s, u"No."_s};
    });
    type("cameraDatelab", u"x"_s);
    EXPECT_EQ(m_photo.footNote(), u"No.");
    EXPECT_EQ(field("cameraDatelab")->toolTip(), u"No.");
    QTest::keyClick(field("cameraDatelab"), Qt::Key_Escape);
    EXPECT_EQ(field("cameraDatelab")->text(), QString()) << "Esc gives the text back";
    EXPECT_NE(m_photo.footNote(), u"No.");
}

} // namespace
} // namespace clipheave::app
