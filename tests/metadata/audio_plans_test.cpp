// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/media_import.h"
#include "metadata/messages.h"

#include "tests/metadata/write_fixture.h"
#include "tests/testkit/items.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

using namespace clipheave;
using namespace clipheave::metadata;
using platform::AVMetadataItem;

media::AudioPane paneOf(const media::IKImageItem& item) {
    return media::ShowAudioViewWithItem(item, item.fileArist);
}

media::IKImageItem itemWithTexts() {
    media::IKImageItem item;
    item.fileTitle = u"T"_s;
    item.fileArist = u"A"_s;
    item.fileAlbumArist = u"3/12"_s;
    item.fileBand = u"B"_s;
    item.fileLyricist = u"L"_s;
    item.shootDateStr = u"2001:02:03 04:05:06"_s;
    return item;
}

QStringList framesOf(const QList<platform::Id3TextFrame>& frames) {
    QStringList texts;
    for (const auto& frame : frames)
        texts << u"%1=%2"_s.arg(static_cast<int>(frame.frame)).arg(frame.text);
    return texts;
}

TEST(AudioPlans, Mp3WritesEveryFieldThatIsNotEmptyInItsOrder) {
    media::AudioPane pane = paneOf(itemWithTexts());
    pane.texts.abulmlab = u"Al"_s;
    EXPECT_EQ(framesOf(planMp3Save(pane)).join(u' '),
              u"47=T 61=A 29=Al 68=3/12 69=2001:02:03 04:05:06 62=B 43=L");
    EXPECT_EQ(framesOf(planMp3Removal(pane)).join(u' '), u"47= 61= 29= 68= 69= 62= 43=");
    EXPECT_EQ(framesOf(planMp3Save(pane, u"D"_s))[4], u"69=D");
    EXPECT_EQ(framesOf(planMp3Save(pane, u""_s))[4], u"69=");
    EXPECT_TRUE(planMp3Save(paneOf({})).isEmpty());
    const AudioDictionary exif{
        {u"Track Number"_s, u"7"_s}, {u"Title"_s, u"R"_s}, {u"Album"_s, u""_s}};
    EXPECT_EQ(framesOf(planMp3Reload(exif)).join(u' '), u"47=R");
}

TEST(AudioPlans, OthersWriteWhatChangedBeforeWhatTheSourceKeeps) {
    media::AudioPane pane = paneOf(itemWithTexts());
    const auto kept = [](const char* space, const char* key, const char* identifier) {
        return AVMetadataItem::make(QLatin1String(space), QLatin1String(key),
                                    QLatin1String(identifier), u"old"_s);
    };
    const QList<AVMetadataItem> source{kept("itsk", "title", "itsk/%A9nam"),
                                       kept("itsk", "genre", "itsk/%A9gen"),
                                       kept("org.id3", "TPE2", "id3/TPE2")};
    EXPECT_EQ(testkit::itemTexts(planAudioSave(pane, {}, source)).join(u' '),
              u"itsk/%A9nam=old itsk/%A9gen=old id3/TPE2=old itlk/com.apple.iTunes.BAND=old");
    EXPECT_TRUE(planFlacSave(pane).isEmpty());
    pane.texts.titlelab = u"N"_s;
    pane.texts.bandlab = u""_s;
    pane.texts.publishlab = u"P"_s;
    EXPECT_EQ(testkit::itemTexts(planAudioSave(pane, {}, source, u"D"_s)).join(u' '),
              u"itsk/%A9nam=N common/creationDate=D common/publisher=P id3/TPE2= "
              u"itlk/com.apple.iTunes.BAND= itsk/%A9gen=old");
    EXPECT_EQ(planFlacSave(pane), (QMap<QString, QString>{{u"title"_s, u"N"_s}}));
}

TEST(AudioPlans, EachFileKeepsItsOwnCoverUntilANewOneIsGiven) {
    const auto image = [](char width) {
        return platform::EncodedImage::fromBytes(
            QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0", 19) + width +
            QByteArray("\0\0\0\3\10\2\0\0\0", 9));
    };
    media::IKImageItem shown, other;
    shown.fileImage = image(1);
    other.fileImage = image(2);
    media::AudioPane pane = paneOf(shown);
    EXPECT_TRUE(planCover(pane, other).image == other.fileImage);
    pane.texts.audioArtImageView = image(3);
    EXPECT_TRUE(planCover(pane, other).image == image(3));
    EXPECT_FALSE(planCover(pane, other).isUntouched);
    pane.texts.audioArtImageView = {};
    EXPECT_TRUE(planCover(pane, other).image.isNull());
}

using AudioWriters = WriteFixture;

TEST_F(AudioWriters, WithoutAPaneNothingIsWritten) {
    const QString path = m_dir.write("a.mp3", "x");
    for (const bool removes : {false, true}) {
        const auto outcome = run([&](VideoMetadata& writer) {
                                 removes ? writer.RemoveMediaFileAction(request(path))
                                         : writer.SaveMeidaFileChangesAction(request(path));
                             }).back();
        EXPECT_EQ(outcome.status, jobs::WriteStatus::Failed);
        ASSERT_TRUE(outcome.failure);
        EXPECT_EQ(outcome.failure->detail.code(), metadata::kNoAudioPane);
    }
    EXPECT_TRUE(filesOut().isEmpty());
}

TEST_F(AudioWriters, AFailureDeliversMp3UnchangedAndNothingForOthers) {
    // Of a codec that nobody has: it can be opened, but not written again.
    const QByteArray wave = testkit::waveFile(QByteArray(8, 'x'), {8000, 1, 8, 0x4321});
    const QByteArray none = "no audio at all";
    const std::pair<const char*, QByteArray> files[] = {
        {"a.mp3", none}, {"a.flac", none}, {"a.ogg", none}, {"a.wav", wave}};
    for (const auto& [name, bytes] : files) {
        jobs::WriteRequest made = request(m_dir.write(name, bytes));
        made.audioPane = paneOf(itemWithTexts());
        EXPECT_EQ(saved(made).status, jobs::WriteStatus::Failed) << name;
    }
    EXPECT_EQ(filesOut(), (QStringList{u"a.flac"_s, u"a.mp3"_s}));
    EXPECT_EQ(testkit::TempDir::read(m_dir.path("out/a.mp3")), "no audio at all");
}

TEST_F(AudioWriters, ALinkInTheStorageFolderIsReplacedAndNotWrittenThrough) {
    const QString kept = m_dir.write("kept.mp3", "not selected");
    const QString link = m_dir.path("out/a.mp3");
    ASSERT_TRUE(QDir().mkpath(m_dir.path("out")));
    ASSERT_TRUE(QFile::link(kept, link));
    jobs::WriteRequest made = request(m_dir.write("a.mp3", testkit::mpegFrames()));
    made.audioPane = paneOf(itemWithTexts());
    const auto outcome = saved(made);
    EXPECT_EQ(outcome.status, jobs::WriteStatus::Completed) << outcome.text();
    EXPECT_FALSE(QFileInfo(link).isSymLink());
    EXPECT_EQ(testkit::TempDir::read(kept), "not selected");
}

TEST_F(AudioWriters, TransformedAndHugeTagsGiveWayToOneOfOurs) {
    using testkit::id3Frame, testkit::id3Tag;
    const QByteArray text("\0Packed", 7), wide("\1\xFF\0\xFE\xFF\0\0", 7);
    const QByteArray v3 = qCompress(text); // its length first, as that version has it
    const QByteArray v4 = testkit::syncSafe(text.size()) + v3.mid(4);
    const QByteArray bomb = qCompress(QByteArray(64 << 20, 'x'), 9);
    const QByteArray lying = testkit::be(0x7FFFFFFF, 4) + v3.mid(4);
    const QByteArray later = testkit::id3Text("TPE1", "A");
    const struct {
        const char* name;
        QByteArray tag;
        const char16_t* title;
    } cases[] = {
        {"compressed", id3Tag(3, id3Frame("TIT2", v3, 0x80) + later), u"Packed"},
        {"compressed, 2.4", id3Tag(4, id3Frame("TIT2", v4, 0x09)), u"Packed"},
        {"unsynchronised", id3Tag(3, id3Frame("TIT2", wide).replace(7, 1, "\5"), 0x80), u"\u00FF"},
        {"unsynchronised, 2.4", id3Tag(4, id3Frame("TIT2", wide, 0x02), 0x80), u"\u00FF"},
        {"a bomb", id3Tag(3, id3Frame("TIT2", bomb, 0x80) + later), u""},
        {"a lying length", id3Tag(3, id3Frame("TIT2", lying, 0x80) + later), u"Packed"},
        {"encrypted", id3Tag(4, id3Frame("TIT2", "\x80secret", 0x04)), u""},
        {"100 MB",
         id3Tag(3, id3Frame("TIT2", text) + id3Frame("APIC", QByteArray(100 << 20, '\0'))),
         u"Packed"},
    };
    for (const auto& [name, tag, title] : cases) {
        SCOPED_TRACE(name);
        jobs::WriteRequest made = request(m_dir.write("a.mp3", tag + testkit::mpegFrames()));
        media::MediaImport import;
        import.importMediaItemsThreader({made.item->filePath});
        ASSERT_EQ(import.localPhotoItemArray().size(), 1u);
        made.item = import.localPhotoItemArray().front();
        EXPECT_EQ(made.item->fileTitle, QString::fromUtf16(title));
        made.audioPane = paneOf({});
        made.audioPane->texts.titlelab = u"N"_s;
        EXPECT_EQ(saved(made).status, jobs::WriteStatus::Completed);
        EXPECT_EQ(testkit::TempDir::read(m_dir.path("out/a.mp3")),
                  id3Tag(3, id3Frame("TIT2", QByteArray("\1\xFF\xFEN\0", 5))) +
                      testkit::mpegFrames());
    }
}

} // namespace
