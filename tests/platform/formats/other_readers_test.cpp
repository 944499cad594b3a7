// SPDX-License-Identifier: GPL-3.0-or-later
// Files that other programs wrote, read here and by other readers.
#include "platform/audio/audio_file.h"
#include "tests/platform/formats/fixtures.h"
#include "tests/testkit/corpus_files.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>

using namespace clipheave::platform;
using fixtures::walk;

namespace {

QString q(const char* text) {
    return QString::fromUtf8(text);
}

/// Three seconds of audio with the usual tags, written by FFmpeg.
QString audioFile(const testkit::TempDir& folder, const char* name,
                  const QByteArray& options = {}) {
    QString path = folder.path(q(name));
    testkit::ffmpeg(
        "-f lavfi -i sine=duration=3:sample_rate=44100 -ac 2 -metadata % -metadata "
        "artist=AC/DC -metadata album=Alb -metadata date=2019-05-04 -metadata track=3/12 "
        "-metadata composer=Comp -metadata copyright=Cop " +
            options,
        {q("title=Töne 東京"), path});
    return path;
}

double ffprobeDuration(const QString& path) {
    return testkit::ffprobe("-of csv=p=0 -show_entries format=duration", path).toDouble();
}

/// TIT2, TPE1, TALB of each file by mutagen; only files that it opens.
QJsonObject mutagenTexts(const QStringList& paths) {
    const QString script = q(R"(
import json, sys, mutagen
names = {'title': 'TIT2', 'artist': 'TPE1', 'album': 'TALB'}
out = {}
for path in sys.argv[1:]:
    try:
        tags = mutagen.File(path).tags
        found = {}
        if hasattr(tags, 'getall'):
            found = {n: '; '.join(v.text) for n in names.values() for v in tags.getall(n)[:1]}
        else:
            found = {names[k.lower()]: '; '.join(map(str, tags[k])) for k in tags.keys() if k.lower() in names}
        out[path] = found
    except Exception:
        pass
print(json.dumps(out)))");
    const auto result = testkit::run(q("/usr/bin/python3"), QStringList{q("-c"), script} + paths);
    return QJsonDocument::fromJson(result.out).object();
}

Result<MediaFacts> readByName(const QString& path) {
    auto reader = FileReader::open(path);
    const ByteView head = reader->viewUpTo(0, 4);
    if (head.startsWith("fLaC"))
        return readFlac(*reader);
    return head.startsWith("OggS") || head.startsWith("wvpk") ? readTagged(*reader)
                                                              : readMpegAudio(*reader);
}

} // namespace

TEST(OtherPrograms, WriteTagsThatAreReadAlike) {
    const testkit::TempDir folder;
    const QByteArray v24 = "-id3v2_version 4";
    const QByteArray v23 = "-id3v2_version 3 -write_id3v1 1";
    for (const QString& path :
         {audioFile(folder, "old.mp3", v23), audioFile(folder, "new.mp3", v24),
          audioFile(folder, "a.flac"), audioFile(folder, "a.ogg"), audioFile(folder, "a.opus"),
          audioFile(folder, "a.wv"), audioFile(folder, "a.wma"), audioFile(folder, "a.tta")}) {
        auto reader = FileReader::open(path);
        const bool library = !path.endsWith(q("mp3")) && !path.endsWith(q("flac"));
        const auto facts = library ? readTagged(*reader) : readByName(path);
        ASSERT_TRUE(facts) << path;
        const auto items = walk(*facts);
        EXPECT_EQ(items.at(q("id3/TIT2")), q("Töne 東京")) << path;
        EXPECT_EQ(items.at(q("id3/TPE1")), q("AC/DC"));
        EXPECT_EQ(items.at(q("id3/TALB")), q("Alb"));
        EXPECT_EQ(items.at(q("id3/TCOM")), q("Comp"));
        EXPECT_EQ(items.at(q("id3/TRCK")), q("3/12"));
        EXPECT_EQ(items.count(q("id3/TYER")), path.endsWith(q("new.mp3")) ? 0u : 1u);
        EXPECT_NEAR(facts->durationSeconds, ffprobeDuration(path),
                    path.endsWith(q("mp3")) ? 0.04 : 0.02)
            << path;
        EXPECT_EQ(facts->audioChannels, 2);
        EXPECT_EQ(facts->audioSampleRate, path.endsWith(q("opus")) ? 48000 : 44100);
        EXPECT_LE(reader->bytesFetched(), 200'000u);
    }
}

TEST(OtherPrograms, WriteMpegFilesWhoseLengthIsFoundWithoutReadingThem) {
    const testkit::TempDir folder;
    for (const char* options : {"-b:a 64k -write_xing 0", "-q:a 4", "-q:a 4 -write_xing 0",
                                "-ar 16000", "-c:a mp2 -f mp2"}) {
        const auto facts = readByName(audioFile(folder, "a.mp3", options));
        ASSERT_TRUE(facts) << options;
        EXPECT_NEAR(facts->durationSeconds, 3, 0.15) << options;
        QFile::remove(folder.path(q("a.mp3")));
    }
}

TEST(OtherPrograms, AgreeOnRealFiles) {
    SKIP_WITHOUT_CORPUS();
    const QJsonObject expected = mutagenTexts(testkit::corpusFiles(
        {q("audio")}, {q("*.mp3"), q("*.flac"), q("*.ogg"), q("*.opus"), q("*.wv"), q("*.mp2")}));
    EXPECT_GE(expected.size(), 25);
    for (auto it = expected.begin(); it != expected.end(); ++it) {
        const auto facts = readByName(it.key());
        ASSERT_TRUE(facts) << it.key();
        auto items = walk(*facts);
        const QJsonObject texts = it.value().toObject();
        for (auto text = texts.begin(); text != texts.end(); ++text)
            EXPECT_EQ(items[q("id3/") + text.key()], text.value().toString()) << it.key();
    }
}

TEST(DamagedFiles, AreReadInBoundedTimeByEveryReader) {
    SKIP_WITHOUT_CORPUS();
    const QStringList paths = testkit::corpusFiles({QString()});
    for (const QString& path : paths) {
        auto reader = FileReader::open(path);
        for (auto* read :
             {readMpegAudio, readFlac, readWave, readAiff, readCaf, readAu, readTagged}) {
            const auto facts = read(*reader);
            EXPECT_TRUE(!facts || facts->container != Container::Unknown) << path;
        }
        EXPECT_LE(reader->bytesFetched(), 12 * reader->size() + (1u << 20)) << path;
    }
    EXPECT_GT(paths.size(), 100);
}

TEST(AudioFile, ReadsPropertiesByTheBytesNotTheName) {
    const testkit::TempDir folder;
    const auto open = [](const QString& path) {
        return AudioFileOpenURL(path, kAudioFileReadPermission);
    };
    const auto wave = open(audioFile(folder, "a.wav"));
    ASSERT_TRUE(wave);
    EXPECT_EQ(AudioFileGetInfoDictionary(*wave)->value(q("title")), q("Töne 東京"));
    EXPECT_GT(AudioFileGetPropertyInfo(*wave, kAudioFilePropertyInfoDictionary).value_or(0), 20u);
    EXPECT_EQ(AudioFileGetPropertyInfo(*wave, kAudioFilePropertyID3Tag).error().code,
              ErrorCode::NotFound);
    EXPECT_EQ(AudioFileGetAlbumArtwork(*wave).error().code, ErrorCode::NotFound);

    const QString disguised = folder.path(q("mp3.wav"));
    QFile::rename(audioFile(folder, "a.mp3", "-id3v2_version 3"), disguised);
    const auto mpeg = open(disguised);
    ASSERT_TRUE(mpeg);
    EXPECT_EQ(AudioFileGetInfoDictionary(*mpeg)->value(q("year")), q("2019"));
    EXPECT_GT(AudioFileGetPropertyInfo(*mpeg, kAudioFilePropertyID3Tag).value_or(0), 100u);
    const auto mp4 = open(audioFile(folder, "a.m4a"));
    ASSERT_TRUE(mp4);
    EXPECT_EQ(AudioFileGetInfoDictionary(*mp4)->value(q("track number")), q("3/12"));

    EXPECT_EQ(open(folder.write(q("b.wav"), "text")).error().code, ErrorCode::NotSupported);
    EXPECT_EQ(open(folder.path(q("none.wav"))).error().code, ErrorCode::NotFound);
}

TEST(DamagedFiles, CannotKeepTheTagLibraryBusy) {
    // An ASF header of 2000 metadata objects, each of which announces 65535 attributes.
    const auto guid = [](const char* hex) { return QByteArray::fromHex(hex); };
    const QByteArray object =
        guid("EACBF8C5AF5B77488467AA8C44FA4CCA") + testkit::le(26, 8) + testkit::le(0xFFFF, 2);
    const QByteArray objects = object.repeated(2000);
    const QByteArray extension = guid("B503BF5F2EA9CF118EE300C00C205365") +
                                 testkit::le(static_cast<quint64>(objects.size()) + 46, 8) +
                                 QByteArray(18, '\0') +
                                 testkit::le(static_cast<quint64>(objects.size()), 4) + objects;
    const QByteArray file = guid("3026B2758E66CF11A6D900AA0062CE6C") +
                            testkit::le(static_cast<quint64>(extension.size()) + 30, 8) +
                            testkit::le(1, 4) + testkit::le(0x0201, 2) + extension;
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(fixtures::read(readTagged, file).error().code, ErrorCode::InvalidData);
    EXPECT_LT(timer.elapsed(), 3000);
}
