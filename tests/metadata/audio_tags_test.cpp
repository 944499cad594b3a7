// SPDX-License-Identifier: GPL-3.0-or-later
// Audio files that other programs left odd: what a save and a removal make of them.
#include "jobs/messages.h"
#include "media/media_import.h"
#include "metadata/messages.h"
#include "platform/media/model/messages.h"
#include "tests/metadata/write_fixture.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonObject>

namespace {

using namespace clipheave;
using namespace clipheave::metadata;
using testkit::chunk;
using testkit::id3Frame;
using testkit::id3Tag;
using testkit::id3Text;
using testkit::TempDir;

const QByteArray kPngHead("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\2\0\0\0\3\10\2\0\0\0", 29);

QByteArray apic(const QByteArray& image) {
    return id3Frame("APIC", QByteArray("\0\0\3\0", 4) + image);
}

/// An APE tag of one item, without a header.
QByteArray apeTag(const QByteArray& key, const QByteArray& value, quint64 flags = 0) {
    const QByteArray item = testkit::le(static_cast<quint64>(value.size()), 4) +
                            testkit::le(flags, 4) + key + '\0' + value;
    return item + "APETAGEX" + testkit::le(2000, 4) +
           testkit::le(static_cast<quint64>(item.size()) + 32, 4) + testkit::le(1, 4) +
           QByteArray(12, '\0');
}

class AudioTags : public WriteFixture {
protected:
    static media::ItemPointer read(const QString& path) {
        media::MediaImport import;
        import.importMediaItemsThreader({path});
        EXPECT_EQ(import.localPhotoItemArray().size(), 1u) << path;
        return import.localPhotoItemArray().empty() ? std::make_shared<const media::IKImageItem>()
                                                    : import.localPhotoItemArray().front();
    }
    /// The file as the window shows it alone.
    jobs::WriteRequest shown(const QString& path) const {
        jobs::WriteRequest made = request(path);
        made.item = read(path);
        // The window compares the artist with the field of the video pane.
        made.audioPane = media::ShowAudioViewWithItem(*made.item, {});
        return made;
    }
    /// A save under a new title, or a removal; then its output as the import reads it.
    media::ItemPointer written(const QString& path, bool removes = false) {
        jobs::WriteRequest made = shown(path);
        if (!removes)
            made.audioPane->texts.titlelab = u"New"_s;
        return written(made, removes);
    }
    media::ItemPointer written(const jobs::WriteRequest& made, bool removes = false) {
        m_outcome = run([&](VideoMetadata& writer) {
                        removes ? writer.RemoveMediaFileAction(made)
                                : writer.SaveMeidaFileChangesAction(made);
                    }).back();
        EXPECT_EQ(m_outcome.status, jobs::WriteStatus::Completed) << m_outcome.text();
        return read(outputOf(made.item->filePath));
    }
    QString outputOf(const QString& path) const {
        return m_dir.path(u"out/"_s + path.section(u'/', -1));
    }
    bool isNoted(platform::MessageCode code) const {
        return std::any_of(m_outcome.notes.begin(), m_outcome.notes.end(),
                           [&](const auto& note) { return note.code() == code; });
    }
    jobs::WriteOutcome m_outcome;
};

TEST_F(AudioTags, TheStateOfACoverStopsNoTag) {
    SKIP_WITHOUT("ffmpeg");
    const QString large = m_dir.path("large.jpg");
    testkit::ffmpeg("-f lavfi -i color=red:s=6000x6000 -frames:v 1 -f mjpeg", {large});
    const QByteArray webp = "RIFF" + testkit::le(90, 4) + "WEBPVP8X" + testkit::le(10, 4) +
                            testkit::le(0, 4) + testkit::le(9, 3) + testkit::le(9, 3);
    const struct {
        const char* name;
        QByteArray image;
        bool isTiff;
    } covers[] = {{"cut.mp3", kPngHead, false},
                  {"webp.mp3", webp + "VP8 cut", false},
                  {"large.mp3", TempDir::read(large), true}};
    for (const auto& [name, image, isTiff] : covers) {
        SCOPED_TRACE(name);
        const QString path = m_dir.write(name, id3Tag(3, id3Text("TIT2", "Old") + apic(image)) +
                                                   testkit::mpegFrames());
        for (const bool removes : {false, true}) {
            const auto item = written(path, removes);
            EXPECT_EQ(item->fileTitle, QString::fromLatin1(removes ? "" : "New"));
            EXPECT_EQ(item->fileImage.format() == u"tiff", isTiff);
            EXPECT_EQ(isNoted(kCoverKeepsItsBytes), !isTiff);
            EXPECT_EQ(item->fileImage.bytes() == image, !isTiff);
        }
    }
}

QByteArray encryptedFrame() {
    return id3Frame("TPE2", QByteArray("\1?????", 6), 0x40);
}
const QByteArray kLyrics3("LYRICSBEGININD0000210000021LYRICS200");

TEST_F(AudioTags, WhatAnMp3LosesOrKeepsIsNamed) {
    const QString path =
        m_dir.write("a.mp3", id3Tag(3, id3Text("TIT2", "Old") + encryptedFrame() +
                                           id3Frame("APIC", QByteArray("\0-->\0\3\0a.jpg", 12))) +
                                 testkit::mpegFrames() + apeTag("Blob", "\1\2", 2) + kLyrics3);
    written(path);
    EXPECT_TRUE(m_outcome.text().contains(u"TPE2, APIC, Blob, Lyrics3")) << m_outcome.text();
    const QString junk = m_dir.write("b.mp3", id3Tag(3, apic("no image")) + testkit::mpegFrames());
    written(junk);
    EXPECT_TRUE(m_outcome.text().contains(u"APIC")) << m_outcome.text();
    written(m_dir.write("c.mp3", id3Tag(3, apic(kPngHead)) + testkit::mpegFrames()), true);
    EXPECT_TRUE(isNoted(kCoverKept));
    // A tag that begins late goes as well.
    const QString late =
        m_dir.write("d.mp3", QByteArray(500, '\0') + id3Tag(3, id3Text("TIT2", "Old title")) +
                                 testkit::mpegFrames());
    written(late, true);
    EXPECT_FALSE(TempDir::read(outputOf(late)).contains("Old title"));
}

TEST_F(AudioTags, AForeignTagOfFlacBecomesComments) {
    const QByteArray flac = "fLaC" + testkit::flacBlock(0, QByteArray(34, '\1')) +
                            testkit::flacBlock(4, testkit::vorbisComments({"ARTIST=A"}), true) +
                            "\xFF\xF8 audio";
    const QString path = m_dir.write(
        "a.flac",
        id3Tag(3, id3Text("TIT2", "Old") + id3Text("TPE1", "Other") + id3Text("TALB", "Album") +
                      id3Frame("PRIV", "owner") + apic(kPngHead) + encryptedFrame()) +
            flac + apeTag("Cover Art (Back)", QByteArray("b\0", 2), 2) + kLyrics3);
    jobs::WriteRequest made = shown(path);
    EXPECT_EQ(made.item->fileTitle, u"Old");
    made.audioPane->texts.titlelab = u""_s;
    const auto item = written(made);
    EXPECT_EQ(item->fileTitle, u"");
    EXPECT_EQ(item->fileArist, u"A");
    EXPECT_EQ(item->fileAblumName, u"Album");
    EXPECT_EQ(item->fileImage.bytes(), kPngHead);
    EXPECT_TRUE(TempDir::read(outputOf(path)).startsWith("fLaC"));
    EXPECT_TRUE(m_outcome.text().contains(u"PRIV, TPE2, Cover Art (Back), Lyrics3"))
        << m_outcome.text();
}

TEST_F(AudioTags, AFlacNameOverOtherBytesCanBeTaggedAgainAndAgain) {
    SKIP_WITHOUT("ffmpeg");
    const QString path = m_dir.path("in/a.flac");
    m_dir.write("in/x", "");
    testkit::ffmpeg("-f lavfi -i sine=duration=1 -metadata title=Old", {path});
    // A tag behind the audio is no damaged packet of it.
    const QByteArray flac = TempDir::read(path);
    m_dir.write("in/a.flac", flac + "TAG" + QByteArray(125, 'x'));
    written(path, true);
    EXPECT_FALSE(m_outcome.text().contains(u"amaged")) << m_outcome.text();
    const QString cleared = m_dir.path("cleared/a.flac");
    m_dir.write("cleared/x", "");
    ASSERT_TRUE(QFile::rename(outputOf(path), cleared));
    EXPECT_EQ(written(cleared)->fileTitle, u"New");
}

TEST_F(AudioTags, ASaveStoresWhatThePaneShowed) {
    SKIP_WITHOUT("ffmpeg");
    const QByteArray tag = id3Tag(3, id3Text("TPE1", "Tag") + id3Text("TALB", "Tag") +
                                         id3Text("TCOP", "Tag") + id3Text("TOPE", "First"));
    const QString aiff = m_dir.path("a.aiff"), aac = m_dir.path("a.aac");
    testkit::ffmpeg("-f lavfi -i sine=duration=1 -metadata artist=Own -metadata copyright=Own",
                    {aiff});
    testkit::ffmpeg("-f lavfi -i sine=duration=1", {aac});
    QByteArray form = TempDir::read(aiff) + chunk("ID3 ", tag, true);
    form.replace(4, 4, testkit::be(static_cast<quint64>(form.size()) - 8, 4));
    m_dir.write("a.aiff", form);
    m_dir.write("a.aac", tag + TempDir::read(aac) + apeTag("Copyright", "Own"));
    for (const QString& path : {aiff, aac}) {
        const auto before = read(path);
        EXPECT_EQ(before->fileArist, u"Tag") << path;
        const auto after = written(path);
        EXPECT_EQ(after->fileTitle, u"New");
        EXPECT_EQ(after->fileArist, before->fileArist) << path;
        EXPECT_EQ(after->fileAblumName, before->fileAblumName) << path;
        EXPECT_EQ(after->fileCopyright, before->fileCopyright) << path;
    }
}

TEST_F(AudioTags, TwoArtistsStayTwoWhenTheTitleIsEdited) {
    SKIP_WITHOUT("ffmpeg");
    const QString path = m_dir.path("a.m4a");
    testkit::ffmpeg("-f lavfi -i sine=duration=1 -metadata artist=First", {path});
    // A second value in the artist's box and in those around it.
    QByteArray file = TempDir::read(path);
    const QByteArray value = testkit::box("data", testkit::be(1, 4) + testkit::be(0, 4) + "Other");
    const qsizetype list = file.indexOf("\xA9"
                                        "ART");
    ASSERT_GT(list, 0);
    const auto grow = [&](qsizetype type) {
        const qsizetype at = type - 4;
        const auto size = QByteArrayView(file).sliced(at, 4);
        quint64 number = 0;
        for (const char byte : size)
            number = number << 8 | static_cast<unsigned char>(byte);
        file.replace(at, 4, testkit::be(number + static_cast<quint64>(value.size()), 4));
        return at + static_cast<qsizetype>(number);
    };
    for (const char* type : {"moov", "udta", "meta", "ilst"})
        grow(file.lastIndexOf(type, list));
    file.insert(grow(list), value);
    m_dir.write("a.m4a", file);
    ASSERT_EQ(read(path)->fileArist, u"Other");
    EXPECT_EQ(written(path)->fileTitle, u"New");
    const QByteArray output = TempDir::read(outputOf(path));
    EXPECT_EQ(output.count("First"), 1);
    EXPECT_EQ(output.count("Other"), 1);
}

TEST_F(AudioTags, TagsOfAudioThatNobodyCanReadAreRead) {
    const QString path =
        m_dir.write("a.aac", id3Tag(3, id3Text("TIT2", "T")) + QByteArray("\xFF\xF1\x50\x80", 4));
    const auto item = read(path);
    EXPECT_EQ(item->fileTitle, u"T");
    EXPECT_FALSE(item->problem.isEmpty());
}

TEST_F(AudioTags, WhatAFixedMappingLosesIsNamedOnce) {
    SKIP_WITHOUT("ffmpeg");
    const QByteArray frames = id3Text("TIT2", "Old") + id3Text("TYER", "1999") +
                              id3Text("TCON", "Rock") + id3Text("TPOS", "2/3") +
                              id3Text("TSSE", "Lavf") + id3Text("TXXX", QByteArray("Gain\0+1", 7)) +
                              apic(kPngHead);
    const QString mp3 = m_dir.write("a.mp3", id3Tag(3, frames) + testkit::mpegFrames());
    written(mp3);
    EXPECT_TRUE(m_outcome.notes.contains(
        platform::Message(platform::kTagsNotCarriedOver, {u"TCON, TPOS, TXXX:Gain"_s})));
    written(mp3, true);
    EXPECT_FALSE(isNoted(platform::kTagsNotCarriedOver));
    const QString wave = m_dir.path("a.wav"), m4a = m_dir.path("a.m4a");
    testkit::ffmpeg("-f lavfi -i sine=duration=1", {wave});
    testkit::ffmpeg("-f lavfi -i sine=duration=1", {m4a});
    const platform::Message alac(kMpeg4UnderOldName, {u"ALAC"_s});
    written(wave);
    EXPECT_EQ(m_outcome.notes.count(alac), 1) << m_outcome.text();
    written(wave, true);
    EXPECT_EQ(m_outcome.notes.count(alac), 1) << m_outcome.text();
    written(m4a);
    EXPECT_FALSE(isNoted(kMpeg4UnderOldName));
}

TEST_F(AudioTags, AConversionCarriesWhatMpeg4Holds) {
    SKIP_WITHOUT("ffmpeg");
    const QString path = m_dir.path("a.aac");
    testkit::ffmpeg("-f lavfi -i sine=duration=1", {path});
    const QByteArray frames =
        id3Text("TDRC", "2004-05-06") + id3Text("TBPM", "120") + id3Text("TCMP", "1") +
        id3Text("TENC", "E") + id3Text("TPOS", "2/3") +
        id3Frame("USLT", QByteArray("\3engL\0words", 11)) +
        id3Text("TXXX", QByteArray("Gain\0+1", 7)) + id3Text("TIT1", "Group") +
        id3Text("TSSE", "Lavf") + id3Text("TOPE", "First") + id3Text("TEXT", "Poet") +
        id3Frame("UFID", testkit::raw("http://musicbrainz.org\0id")) + apic(kPngHead + "front") +
        id3Frame("APIC", testkit::raw("\0\0\4\0") + kPngHead + "back") + id3Frame("POPM", "mail");
    m_dir.write("a.aac", id3Tag(4, frames) + TempDir::read(path));
    const auto item = written(path);
    EXPECT_EQ(item->fileArist, u"First");
    EXPECT_EQ(item->fileLyricist, u"Poet");
    EXPECT_EQ(item->fileImage.bytes(), kPngHead + "front");
    const QByteArray list = TempDir::read(outputOf(path));
    EXPECT_EQ(list.count("Group"), 2);
    EXPECT_LT(list.indexOf("front"), list.indexOf("back"));
    const QJsonObject tags =
        testkit::ffprobe(outputOf(path))[u"format"].toObject()[u"tags"].toObject();
    const std::pair<const char*, const char*> kept[] = {
        {"date", "2004-05-06"}, {"compilation", "1"},        {"disc", "2/3"},
        {"lyrics", "Poet"},     {"UNSYNCEDLYRICS", "words"}, {"MusicBrainz Track Id", "id"},
        {"Gain", "+1"}};
    for (const auto& [name, text] : kept)
        EXPECT_EQ(tags[QLatin1String(name)].toVariant().toString(), QLatin1String(text)) << name;
    EXPECT_EQ(testkit::exiftool("-s3 -BeatsPerMinute -EncodedBy %", {outputOf(path)}), "120\nE");
    EXPECT_TRUE(
        m_outcome.notes.contains(platform::Message(platform::kTagsNotCarriedOver, {u"POPM"_s})))
        << m_outcome.text();
}

TEST_F(AudioTags, TextsOfUsersAreCarriedFromEveryContainer) {
    SKIP_WITHOUT("ffmpeg");
    for (const char* name : {"a.opus", "a.wma", "a.mkv", "a.flv", "a.caf"}) {
        SCOPED_TRACE(name);
        const QString path = m_dir.path(name);
        const bool isVideo = path.endsWith(u".mkv") || path.endsWith(u".flv");
        const QByteArray video =
            "-f lavfi -i testsrc=d=1:s=64x64 -c:v h264 -pix_fmt yuv420p -c:a aac";
        testkit::ffmpeg("-f lavfi -i sine=duration=1:sample_rate=48000 " +
                            (isVideo ? video : QByteArray()) +
                            " -metadata SCENE=Dawn -metadata MUSICBRAINZ_ALBUMID=mb "
                            "-metadata REPLAYGAIN_TRACK_GAIN=+1",
                        {path});
        jobs::WriteRequest made = isVideo ? request(path) : shown(path);
        written(made);
        const QJsonObject tags =
            testkit::ffprobe(outputOf(path))[u"format"].toObject()[u"tags"].toObject();
        EXPECT_EQ(tags[u"SCENE"].toString(), u"Dawn");
        EXPECT_EQ(tags[u"MusicBrainz Album Id"].toString(), u"mb");
        EXPECT_EQ(tags[u"replaygain_track_gain"].toString(), u"+1");
        EXPECT_FALSE(isNoted(platform::kTagsNotCarriedOver)) << m_outcome.text();
    }
}

TEST_F(AudioTags, ChunksOfWaveAndAiffAreNamed) {
    const QByteArray wave = testkit::waveFile(QByteArray(8000, '\x80')), list = "INFOIENG";
    const QByteArray info = list + testkit::le(4, 4) + "Ann" + '\0';
    QByteArray form = wave + chunk("LIST", info) + chunk("bext", QByteArray(602, '\0')) +
                      chunk("iXML", "<x/>") + chunk("JUNK", "--") + chunk("LIST", "adtl");
    form.replace(4, 4, testkit::le(static_cast<quint64>(form.size()) - 8, 4));
    const QString path = m_dir.write("a.wav", form);
    written(path);
    EXPECT_TRUE(m_outcome.notes.contains(
        platform::Message(platform::kTagsNotCarriedOver, {u"bext, iXML, adtl"_s})))
        << m_outcome.text();
    EXPECT_GE(TempDir::read(outputOf(path)).indexOf("Ann"), 0);
    written(path, true);
    EXPECT_FALSE(isNoted(platform::kTagsNotCarriedOver));
}

TEST_F(AudioTags, ADateThatTheFileSystemHasNotIsNamed) {
    const QString path =
        m_dir.write("a.mp3", id3Tag(3, id3Text("TIT2", "T")) + testkit::mpegFrames());
    for (const char* year : {"2020", "3000"}) {
        jobs::WriteRequest made = shown(path);
        made.audioPane->texts.createdDatelab = QLatin1String(year) + u":01:02 03:04:05"_s;
        written(made);
        const int stored = QFileInfo(outputOf(path)).lastModified().date().year();
        EXPECT_EQ(isNoted(jobs::kDateBeyondFileSystem), stored != QByteArray(year).toInt())
            << year << m_outcome.text();
    }
}

} // namespace
