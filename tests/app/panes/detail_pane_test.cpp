// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/detail_pane.h"

#include "app/panes/artwork_well.h"
#include "app/panes/player_card.h"
#include "app/panes/player_view.h"
#include "app/theme/theme.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/fact_label.h"
#include "app/widgets/map_view.h"
#include "app/widgets/parts.h"
#include "media/audio_pane.h"
#include "media/fact_lines.h"
#include "media/fields.h"
#include "platform/foundation/notification_center.h"
#include "tests/app/drops.h"
#include "tests/app/panes/misplaced.h"
#include "tests/testkit/media.h"

#include <QBuffer>
#include <QImage>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <utility>

namespace clipheave::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

media::IKImageItem video() {
    media::IKImageItem item;
    item.fileName = u"reynisfjara-sunset-drone.mp4"_s;
    item.filePath = u"/nowhere/ring-road/day-03/reynisfjara-sunset-drone.mp4"_s;
    item.fileType = u"MPEG-4 video"_s;
    item.fileSize = u"1.94 GB"_s;
    item.fileduratStr = u"3m:18s"_s;
    item.filePixWidth = 3840;
    item.filepixHeigh = 2160;
    item.fileBitRate = u"192000 bps"_s;
    item.fileSampleRate = u"48000 Hz"_s;
    item.fileChannels = u"2"_s;
    item.shootDateStr = u"2025-06-14 21:41:07"_s;
    item.fileCreateDateStr = u"2025:06:14 21:41:07"_s;
    item.fileTitle = u"Reynisfjara at last light"_s;
    item.fileAblumName = u"Iceland Ring Road"_s;
    item.fileArist = u"Halla Brim"_s;
    item.fileDirector = u"Teitur Vang"_s;
    item.filePublisher = u"Norðurljós Films"_s;
    item.fileKeyWords = u"drone, black sand, sea stacks"_s;
    item.fileDescription = u"One pass west to east, wind 9 m/s"_s;
    item.latitudeFormat = u"+"_s;
    item.filelatitude = 63.4043;
    item.longtitudeFormat = u"-"_s;
    item.filelongtitude = 19.0571;
    item.AtitudeFormat = u"+"_s;
    item.fileAtitude = 84.2;
    return item;
}

media::IKImageItem audioFile() {
    media::IKImageItem item;
    item.fileName = u"01 Northbound Tide.flac"_s;
    item.filePath = u"/nowhere/albums/northbound-tide/01 Northbound Tide.flac"_s;
    item.fileType = u"FLAC audio"_s;
    item.fileduratStr = u"4m:51s"_s;
    item.fileTitle = u"Northbound Tide"_s;
    item.fileArist = u"Oran Vale"_s;
    item.fileAlbumArist = u"1/9"_s;
    item.fileComposer = u"Halla Brim, Oran Vale"_s;
    item.fileLyricist = u"Instrumental"_s;
    return item;
}

VideoPaneView::LocationCaption joined(const media::PaneTexts& texts) {
    const QStringList numbers{texts.mediaLatitude, texts.mediaLongtitude, texts.mediaAatitude};
    return {numbers.join(u'|'), false};
}

class Panes : public testing::Test {
protected:
    void SetUp() override {
        Theme::instance().apply(Appearance::Dark);
        m_pane.setLocationTextRule(&joined);
        m_pane.resize(600, 820);
        m_pane.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_pane));
    }
    EditField* field(const char* name) { return m_pane.findChild<EditField*>(QLatin1String(name)); }
    QWidget* body(const char* name) { return m_pane.findChild<QWidget*>(QLatin1String(name)); }
    /// Types at the end of what the field holds.
    void type(const char* name, const QString& text) {
        EditField* edit = field(name);
        ASSERT_NE(edit, nullptr) << name;
        edit->setFocus(Qt::TabFocusReason);
        edit->end(false);
        QTest::keyClicks(edit, text);
    }
    void showVideo(const media::IKImageItem& item) {
        m_pane.showVideo(item, media::ShowVideoViewWithItem(item));
    }
    void showAudioFile(const media::IKImageItem& item) {
        m_pane.showAudio(item, media::ShowAudioViewWithItem(item, m_pane.videoArtistText()));
    }
    QStringList videoFacts() {
        QStringList facts;
        for (const FactLabel* label : body("mediaMetaView")->findChildren<FactLabel*>())
            facts.append(label->text());
        return facts;
    }
    QString changeNote(const char* view) {
        return body(view)->findChild<SectionHeading*>()->note();
    }

    DetailPane m_pane;
};

QString flagsText(const media::ChangeFlags& flags) {
    return u"%1%2%3"_s.arg(flags.basicInfoChange)
        .arg(flags.cameraInfoChange)
        .arg(flags.gpsInfoChange);
}

TEST_F(Panes, AVideoIsShownAndComesBackAsItWasShown) {
    showVideo(video());
    EXPECT_THAT(videoFacts(), testing::SizeIs(11));
    EXPECT_THAT(videoFacts(),
                testing::IsSupersetOf({u"File Dimensions: 3840 x 2160"_s, u"Duration: 3m:18s"_s}));
    const media::VideoPane shown = media::ShowVideoViewWithItem(video()), back = m_pane.videoPane();
    for (const media::VideoFormField& row : media::kVideoFormFields) {
        EXPECT_EQ(back.texts.*row.text, shown.texts.*row.text) << row.objectName;
        EXPECT_EQ(back.shown.*row.shown, shown.shown.*row.shown) << row.objectName;
        EXPECT_EQ(field(row.objectName)->accessibleName(), QLatin1String(row.label));
    }
    EXPECT_EQ(back.texts.mediaLongtitude, u"-19.0571");
    EXPECT_EQ(back.texts.mediaAatitude, u"84.2");
    EXPECT_EQ(flagsText(back.flags), u"000");
    EXPECT_EQ(m_pane.videoArtistText(), u"Halla Brim");
}

TEST_F(Panes, TypingChangesTheTextAndKeepsTheMemory) {
    showVideo(video());
    QSignalSpy began(&m_pane, &DetailPane::fieldEditingBegan);
    type("mediaTitle", u"ab"_s);
    type("mediakeywords", u"!"_s);
    const media::VideoPane pane = m_pane.videoPane();
    EXPECT_EQ(pane.texts.mediaTitle, u"Reynisfjara at last lightab");
    EXPECT_EQ(pane.shown.oldMovieTitle, u"Reynisfjara at last light");
    EXPECT_EQ(changeNote("mediaMetaView"), u"2 changed");
    EXPECT_THAT(began, ElementsAre(ElementsAre(QVariant(u"mediaTitle"_s)),
                                   ElementsAre(QVariant(u"mediakeywords"_s))));
    EXPECT_EQ(flagsText(pane.flags), u"110");

    // Typed back: nothing is marked any more, but an edit did begin.
    QTest::keyClick(field("mediakeywords"), Qt::Key_Backspace);
    type("mediaTitle", {});
    QTest::keyClick(field("mediaTitle"), Qt::Key_Backspace);
    QTest::keyClick(field("mediaTitle"), Qt::Key_Backspace);
    EXPECT_EQ(changeNote("mediaMetaView"), QString());
    EXPECT_EQ(flagsText(m_pane.videoPane().flags), u"110");
}

TEST_F(Panes, EachVideoFieldSetsTheFlagOfItsGroup) {
    for (const media::VideoFormField& row : media::kVideoFormFields) {
        showVideo(video());
        type(row.objectName, u"x"_s);
        media::ChangeFlags expected;
        expected.*row.group = true;
        EXPECT_EQ(flagsText(m_pane.videoPane().flags), flagsText(expected)) << row.objectName;
    }
    for (const auto& [name, flags] : {std::pair("mediaLatitude", "001"),
                                      {"mediaLongtitude", "001"},
                                      {"mediaAatitude", "000"}}) {
        showVideo(video());
        type(name, u"1"_s);
        EXPECT_EQ(flagsText(m_pane.videoPane().flags), QLatin1String(flags)) << name;
    }
}

TEST_F(Panes, AnAudioFileIsShownAndEachFieldSetsTheFlagOfItsGroup) {
    showVideo(video());
    showAudioFile(audioFile());
    EXPECT_TRUE(body("audioContentView")->isVisible());
    EXPECT_FALSE(body("mediaMetaView")->isVisible());
    EXPECT_THAT(body("audioContentView")->findChildren<FactLabel*>(), testing::SizeIs(9));
    EXPECT_EQ(m_pane.audioPane().texts.ablumAristlab, u"1/9");
    EXPECT_EQ(m_pane.audioPane().shown.oldArtistStr, u"Halla Brim") << "the video pane's artist";
    for (const media::AudioField& row : media::kAudioFields) {
        showAudioFile(audioFile());
        const QString before = field(row.objectName)->text();
        type(row.objectName, u"x"_s);
        const media::AudioPane pane = m_pane.audioPane();
        media::ChangeFlags expected;
        if (row.group != nullptr)
            expected.*row.group = true;
        EXPECT_EQ(flagsText(pane.flags), flagsText(expected)) << row.objectName;
        EXPECT_EQ(pane.texts.*row.text, before + u'x') << row.objectName;
        EXPECT_EQ(changeNote("audioContentView"), u"1 changed") << row.objectName;
    }
    EXPECT_TRUE(field("audioCreateDatelab")->isHidden());
}

TEST_F(Panes, AnotherItemDropsWhatWasTyped) {
    showVideo(video());
    type("mediaTitle", u"x"_s);
    type("mediaLatitude", u"5"_s);
    media::IKImageItem other = video();
    other.fileTitle = QString();
    showVideo(other);
    EXPECT_EQ(m_pane.videoPane().texts.mediaTitle, QString());
    EXPECT_EQ(m_pane.videoPane().texts.mediaLatitude, u"63.4043");
    EXPECT_EQ(flagsText(m_pane.videoPane().flags), u"000");
    EXPECT_EQ(changeNote("mediaMetaView"), QString());
    m_pane.showNothing();
    EXPECT_FALSE(body("mediaMetaView")->isVisible());
    EXPECT_FALSE(body("SaveMediaChangesBtn")->isVisible());
    EXPECT_EQ(m_pane.videoArtistText(), QString());
}

TEST_F(Panes, ThePositionIsWrittenOutAndMovesTheMap) {
    showVideo(video());
    const auto* map = m_pane.findChild<MapView*>(u"mediaMapView"_s);
    const auto* caption = m_pane.findChild<QLabel*>(u"locationText"_s);
    ASSERT_TRUE(map && caption);
    EXPECT_EQ(caption->text(), u"63.4043|-19.0571|84.2");
    EXPECT_EQ(field("mediaLongtitude")->suffix(), u"W");
    EXPECT_NEAR(map->centre().longitude, -19.0571, 1e-6);
    field("mediaLongtitude")->selectAll();
    type("mediaLongtitude", {});
    field("mediaLongtitude")->selectAll();
    QTest::keyClicks(field("mediaLongtitude"), u"151.25"_s);
    EXPECT_EQ(caption->text(), u"63.4043|151.25|84.2");
    EXPECT_EQ(field("mediaLongtitude")->suffix(), u"E");
    ASSERT_THAT(map->annotations(), testing::SizeIs(1));
    EXPECT_NEAR(map->annotations().first().longitude, 151.25, 1e-9);
    EXPECT_NEAR(map->centre().longitude, 151.25, 1e-6);
    field("mediaLongtitude")->selectAll();
    QTest::keyClicks(field("mediaLongtitude"), u"181"_s);
    EXPECT_EQ(field("mediaLongtitude")->suffix(), QString());
    EXPECT_FALSE(map->hasPosition());

    media::IKImageItem nowhere = video();
    nowhere.latitudeFormat = nowhere.longtitudeFormat = QString();
    showVideo(nowhere);
    EXPECT_FALSE(map->hasPosition());
    EXPECT_THAT(map->annotations(), IsEmpty());
    EXPECT_EQ(field("mediaLatitude")->suffix(), QString());
}

TEST_F(Panes, TheDurationComesFromThePlayerWhereTheFileHasNone) {
    const testkit::TempDir dir;
    media::IKImageItem item = video();
    item.fileduratStr = QString();
    item.filePath = dir.write("three.wav", testkit::waveFile(QByteArray(24'000, '\x80')));
    QSignalSpy known(&m_pane, &DetailPane::durationKnown);
    showVideo(item);
    EXPECT_TRUE(QTest::qWaitFor([&known] { return !known.isEmpty(); }));
    EXPECT_THAT(videoFacts(), testing::Contains(u"Duration: 3s"_s));
}

TEST_F(Panes, TheFootSaysWhatSaveWrites) {
    m_pane.setTouchedCount(3);
    EXPECT_EQ(m_pane.footNote(),
              u"Writes to all 3 selected files, as copies in the storage folder");
    m_pane.setTouchedCount(1);
    EXPECT_EQ(m_pane.footNote(),
              u"Saves a copy in the storage folder; the original is not changed");
}

TEST_F(Panes, WhileSortedTheFootNamesTheFiles) {
    showVideo(video());
    const QStringList three{u"a.mp4"_s, u"b.mov"_s, u"<b>c.mkv"_s};
    m_pane.setTouchedNames(three, false);
    EXPECT_EQ(m_pane.footNote(),
              u"Writes to all 3 selected files, as copies in the storage folder");
    m_pane.setTouchedNames(three, true);
    EXPECT_EQ(m_pane.footNote(),
              u"Writes to a.mp4, b.mov and <b>c.mkv, as copies in the storage folder");
    m_pane.setTouchedNames(three.first(1), true);
    EXPECT_EQ(m_pane.footNote(), u"Writes to a.mp4, as a copy in the storage folder");
    auto* note = m_pane.findChild<QLabel*>(u"saveNote"_s);
    QStringList many;
    for (int i = 0; i < 50; ++i)
        many.append(u"%1%2.mp4"_s.arg(QString(280, u'x')).arg(i));
    for (const int width : {520, 600, 960}) {
        m_pane.resize(width, 820);
        m_pane.setTouchedNames(many, true);
        EXPECT_TRUE(m_pane.footNote().contains(u"0.mp4"_s)) << width;
        EXPECT_TRUE(m_pane.footNote().contains(u"more, as copies"_s)) << width;
        const int needed = note->heightForWidth(note->width());
        EXPECT_LE(needed, 2 * note->fontMetrics().lineSpacing() + 2) << width;
    }
    m_pane.resize(520, 820);
    QCoreApplication::processEvents();
    m_pane.setTouchedNames(many, true);
    const auto narrow = m_pane.footNote().size();
    m_pane.resize(960, 820);
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_pane.footNote().size() > narrow; }))
        << "a wider foot names more: " << m_pane.footNote();
    EXPECT_TRUE(note->toolTip().contains(u"29.mp4\nand 20 more"_s));
    m_pane.setTouchedCount(1);
    EXPECT_TRUE(note->toolTip().isEmpty());
}

TEST_F(Panes, NothingIsCutOrOverlapsAtAnyWidth) {
    for (const char* view : {"mediaMetaView", "audioContentView"}) {
        if (view[0] == 'm')
            showVideo(video());
        else
            showAudioFile(audioFile());
        for (const int width : {520, 539, 540, 552, 600, 760, 960}) {
            m_pane.resize(width, 500);
            const QWidget* part = body(view);
            EXPECT_TRUE(QTest::qWaitFor(
                [&] { return part->width() <= width && misplaced(part).isEmpty(); }, 2000))
                << view << " " << width << ": " << misplaced(part).join(u"; "_s).toStdString();
        }
    }
}

TEST_F(Panes, ANarrowPaneHasOneColumnAndFactsBelowThePlayer) {
    showVideo(video());
    const auto left = [this](const char* name) {
        return field(name)->mapTo(body("mediaMetaView"), QPoint()).x();
    };
    const auto* fact = body("mediaMetaView")->findChild<FactLabel*>();
    const auto factLeft = [&] { return fact->mapTo(body("mediaMetaView"), QPoint()).x(); };
    m_pane.resize(540, 700);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return left("mediaTitle") < left("mediaReleaseYear") && factLeft() > 300; }));
    m_pane.resize(539, 700);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return left("mediaTitle") == left("mediaReleaseYear") && factLeft() == 16; }));
}

TEST_F(Panes, FormsRunByColumnsForVideosAndByRowsForAudioFiles) {
    m_pane.resize(600, 900);
    showVideo(video());
    const auto place = [this](const char* view, const char* name) {
        return field(name)->mapTo(body(view), QPoint());
    };
    const auto video = [&](const char* name) { return place("mediaMetaView", name); };
    ASSERT_TRUE(QTest::qWaitFor([&] { return video("mediaTitle").y() > 200; }));
    EXPECT_EQ(video("mediaAlumArtis") - video("mediaTitle"), QPoint(0, 36));
    EXPECT_EQ(video("mediaReleaseYear").y(), video("mediaTitle").y());
    const auto endsAtPadding = [&] {
        return video("mediaReleaseYear").x() + field("mediaReleaseYear")->width() == 600 - 16;
    };
    EXPECT_TRUE(QTest::qWaitFor(endsAtPadding));
    m_pane.resize(600, 500); // the scroll bar takes its room from the padding
    EXPECT_TRUE(QTest::qWaitFor([&] { return body("mediaMetaView")->width() < 600; }));
    EXPECT_TRUE(QTest::qWaitFor(endsAtPadding));
    showAudioFile(audioFile());
    const auto audio = [&](const char* name) { return place("audioContentView", name); };
    ASSERT_TRUE(QTest::qWaitFor([&] { return audio("titlelab").y() > 200; }));
    EXPECT_EQ(audio("subtitlelab").y(), audio("titlelab").y());
    EXPECT_EQ(audio("artistlab") - audio("titlelab"), QPoint(0, 36));
}

TEST_F(Panes, ThePlayerFillsTheScreenAndComesBack) {
    showVideo(video());
    auto* card = body("mediaMetaView")->findChild<PlayerCard*>();
    const QRect before = card->geometry();
    card->toggleFullScreen();
    QWidget* stage = card->player()->window();
    ASSERT_NE(stage, m_pane.window());
    EXPECT_TRUE(stage->isFullScreen());
    QTest::keyClick(card->player(), Qt::Key_Escape);
    EXPECT_EQ(card->player()->window(), m_pane.window());
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return card->geometry() == before && card->player()->height() == card->width() * 9 / 16;
    }));
}

TEST_F(Panes, TheWellTakesOneImageFileByDropAndPaste) {
    showVideo(video());
    auto* well = m_pane.findChild<ArtworkWell*>(u"mediaImageView"_s);
    ASSERT_NE(well, nullptr);
    QList<QObject*> posted;
    auto& centre = platform::NSNotificationCenter::defaultCenter();
    centre.addObserver_name(&posted, u"NSDragOperationImageViewNote"_s,
                            [&posted](QObject* object) { posted.append(object); });
    EXPECT_FALSE(dropFiles(well, {u"/a/notes.txt"_s}));
    EXPECT_FALSE(dropFiles(well, {u"/a/1.jpg"_s, u"/a/2.jpg"_s}));
    EXPECT_TRUE(dropFiles(well, {u"/a/1.jpg"_s}));
    EXPECT_EQ(well->droppedPath(), u"/a/1.jpg");
    QMimeData copied;
    copied.setUrls(urlsOf({u"/a/Cover \u00e9.PNG"_s}));
    QObject::connect(&m_pane, &DetailPane::pasteRequested, well,
                     [&] { m_pane.pasteArtwork(&copied); });
    well->setFocus();
    QTest::keySequence(well, QKeySequence::Paste);
    EXPECT_EQ(well->droppedPath(), u"/a/Cover \u00e9.PNG");
    EXPECT_EQ(posted, QList<QObject*>({well, well}));
    centre.removeObserver(&posted);
}

TEST_F(Panes, AChosenCoverIsShownAndComesBackWithThePane) {
    QImage image(600, 400, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    const auto cover = platform::EncodedImage::fromBytes(bytes);
    ASSERT_FALSE(cover.isNull());
    showVideo(video());
    m_pane.setArtwork(cover);
    EXPECT_EQ(m_pane.videoPane().texts.mediaImageView, cover);
    EXPECT_TRUE(m_pane.videoPane().shown.shownArtwork.isNull());
    auto* well = m_pane.findChild<ArtworkWell*>(u"mediaImageView"_s);
    const auto middle = [well] { return well->grab().toImage().pixelColor(62, 62); };
    EXPECT_TRUE(QTest::qWaitFor([&] { return middle() == QColor(Qt::red); }))
        << "decoded and painted";
    showAudioFile(audioFile());
    EXPECT_TRUE(m_pane.audioPane().texts.audioArtImageView.isNull());
    m_pane.setArtwork(cover);
    EXPECT_EQ(m_pane.audioPane().texts.audioArtImageView, cover);
}

} // namespace
} // namespace clipheave::app
