// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/messages.h"
#include "platform/foundation/utc.h"
#include "platform/media/asset/av_url_asset.h"
#include "platform/media/model/media_engine.h"
#include "platform/media/model/messages.h"
#include "tests/platform/engine/engine_fixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <malloc.h>
#include <thread>
#include <vector>

namespace clipheave::platform {

namespace {

class Engine : public EngineTest {
protected:
    /// A video made by another program.
    [[nodiscard]] QString make(const QString& name, const QByteArray& options,
                               const QStringList& more = {}) const {
        testkit::ffmpeg("-f lavfi -i testsrc=d=3:s=176x144:r=25 -f lavfi -i sine=d=3:r=44100 " +
                            options,
                        QStringList(more) << m_dir.path(name));
        return m_dir.path(name);
    }
    [[nodiscard]] static QByteArray ffprobe(const QString& path, const char* entries) {
        return testkit::ffprobe(QByteArray("-of default=nw=1:nk=1 -show_entries ") + entries, path);
    }
    [[nodiscard]] Result<MediaFacts> probe(const QString& path) {
        auto reader = FileReader::open(path);
        if (!reader)
            return tl::unexpected(reader.error());
        Result<MediaFacts> facts = m_engine->probe(*reader);
        m_fetched = reader->bytesFetched();
        return facts;
    }
    [[nodiscard]] Result<Notes> remuxed(const QString& source, const QString& target,
                                        RemuxTarget kind) {
        return m_engine->remux(source, target, kind, UnheldStreams::Refuse, {});
    }
    [[nodiscard]] static QString text(const MediaFacts& facts, const char* identifier) {
        for (const AVMetadataItem& item : facts.metadata)
            if (item.identifier == QLatin1String(identifier))
                return item.stringValue();
        return {};
    }

    std::uint64_t m_fetched = 0;
};

} // namespace

TEST_F(Engine, ProbesVideosAsFfprobeDoes) {
    const struct {
        const char *name, *options;
    } cases[] = {
        {"a.avi", "-c:v mpeg4 -c:a libmp3lame"},
        {"a.mkv", "-c:v libx264 -c:a aac"},
        {"a.ts", "-c:v mpeg2video -c:a mp2"},
        {"a.m2ts", "-c:v mpeg2video -c:a ac3"},
        {"a.mpg", "-c:v mpeg2video -c:a mp2"},
        {"a.flv", "-c:v flv1 -c:a libmp3lame"},
        {"a.wmv", "-c:v wmv2 -c:a wmav2"},
        {"a.mxf", "-c:v mpeg2video -c:a pcm_s16le -ar 48000"},
        {"a.webm", "-c:v libvpx -c:a libvorbis"},
        {"a.ac3", "-vn -c:a ac3"},
        {"a.aac", "-vn -c:a aac"},
        {"a.w64", "-vn -c:a pcm_s16le"},
    };
    for (const auto& [name, options] : cases) {
        const QString path = make(QString::fromLatin1(name), options);
        const auto facts = probe(path);
        ASSERT_TRUE(facts) << name << facts.error().text();
        EXPECT_TRUE(facts->problem.isEmpty()) << name;
        const bool audioFile = QByteArray(options).startsWith("-vn");
        EXPECT_EQ(facts->pixelSize, audioFile ? QSize() : QSize(176, 144)) << name;
        EXPECT_EQ(facts->tracks.size(), audioFile ? 1u : 2u) << name;
        EXPECT_EQ(facts->audioChannels, 1) << name;
        EXPECT_EQ(facts->audioSampleRate, QByteArray(options).endsWith("48000") ? 48000 : 44100)
            << name;
        EXPECT_NEAR(facts->durationSeconds, ffprobe(path, "format=duration").toDouble(), 0.15)
            << name;
        // Where the headers have no frame rate none is measured.
        const double rate = audioFile ? 0 : facts->tracks.front().nominalFrameRate;
        EXPECT_TRUE(rate == 0 || std::abs(rate - 25) < 0.1) << name << ' ' << rate;
    }
}

TEST_F(Engine, ReadsHeadersOnly) {
    // Thirty megabytes of audio.
    const QString path = m_dir.path("long.mkv");
    testkit::ffmpeg("-f lavfi -i sine=d=350 -c:a pcm_s16le", {path});
    ASSERT_GT(QFileInfo(path).size(), 30'000'000);
    const auto facts = probe(path);
    ASSERT_TRUE(facts);
    EXPECT_NEAR(facts->durationSeconds, 350, 0.1);
    EXPECT_LE(m_fetched, 256u << 10) << "no packet need be read";
}

TEST_F(Engine, MapsTagsAndCovers) {
    const QString cover = m_dir.path("cover.png");
    testkit::ffmpeg("-f lavfi -i testsrc=d=1:s=32x32:r=1 -frames:v 1", {cover});
    const QString path =
        make(u"t.mkv"_s,
             "-c:v mpeg4 -c:a aac -attach % -metadata:s:2 mimetype=image/png -metadata % "
             "-metadata artist=Müller -metadata description=short -metadata summary=medium "
             "-metadata synopsis=long -metadata creation_time=2019-05-04T10:11:12Z "
             "-metadata com.apple.quicktime.make=Maker -metadata:s:v %",
             {cover, u"title=Sommer in Köln"_s, u"title=only a track"_s});
    const auto facts = probe(path);
    ASSERT_TRUE(facts);
    EXPECT_EQ(text(*facts, "id3/TIT2"), u"Sommer in Köln");
    EXPECT_EQ(text(*facts, "id3/TPE1"), u"Müller");
    EXPECT_EQ(text(*facts, "mdta/com.apple.quicktime.description"), u"short");
    EXPECT_EQ(text(*facts, "itlk/com.apple.iTunes.SUMMARY"), u"medium");
    EXPECT_EQ(text(*facts, "itsk/ldes"), u"long");
    EXPECT_EQ(facts->contentCreationDate, QDateTime(QDate(2019, 5, 4), QTime(10, 11, 12), kUtc));
    const auto attached =
        std::find_if(facts->metadata.begin(), facts->metadata.end(),
                     [](const auto& item) { return item.identifier == "id3/APIC"_L1; });
    ASSERT_NE(attached, facts->metadata.end());
    EXPECT_EQ(attached->dataValue(), testkit::TempDir::read(cover));
    EXPECT_EQ(facts->pixelSize, QSize(176, 144)) << "the cover is not the video";
}

TEST_F(Engine, ReadsTheTagsOfEveryStreamOfAnOgg) {
    const auto facts =
        probe(make(u"t.ogg"_s, "-c:v libtheora -c:a libvorbis -metadata:s:a title=Song "
                               "-metadata:s:v artist=Who -metadata:s:a artist=Me"));
    ASSERT_TRUE(facts);
    EXPECT_EQ(text(*facts, "id3/TIT2"), u"Song");
    EXPECT_EQ(text(*facts, "id3/TPE1"), u"Who");
}

TEST_F(Engine, TakesTheDurationOfAnAviFromItsHeaderWhenNothingElseHasOne) {
    const QByteArray whole = testkit::TempDir::read(make(u"a.avi"_s, "-c:v mjpeg -c:a pcm_s16le"));
    // Nothing but the header is left.
    const auto facts = probe(m_dir.write("cut.avi", whole.left(whole.indexOf("movi") + 4)));
    ASSERT_TRUE(facts);
    EXPECT_NEAR(facts->durationSeconds, 3, 0.05);
}

TEST_F(Engine, LeavesOutAudioThatIsAnnouncedButNotThere) {
    const QString source = make(u"a.ts"_s, "-c:v mpeg2video -c:a aac");
    QByteArray silent;
    const QByteArray whole = testkit::TempDir::read(source);
    for (qsizetype at = 0; at < whole.size(); at += 188)
        if (((whole[at + 1] & 0x1F) << 8 | static_cast<quint8>(whole[at + 2])) != 0x101)
            silent += whole.mid(at, 188);
    const QString path = m_dir.write("silent.ts", silent);
    const auto done = remuxed(path, m_dir.path("out.mp4"), RemuxTarget::Mp4);
    ASSERT_TRUE(done) << done.error().text();
    EXPECT_EQ(*done, Notes{Message(kStreamsLeftOut, {u"audio (aac)"_s})});
    EXPECT_EQ(testkit::streamHash(m_dir.path("out.mp4")), testkit::streamHash(source, "-map 0:v"));
}

TEST_F(Engine, FollowsNoReferences) {
    const QString inner = make(u"inner.ts"_s, "-c:v mpeg2video");
    // Lists that name a file which is there and which any player would open.
    const QByteArray playlist =
        "#EXTM3U\n#EXT-X-TARGETDURATION:3\n#EXTINF:3,\n" + inner.toUtf8() + "\n#EXT-X-ENDLIST\n";
    const QByteArray script = "ffconcat version 1.0\nfile inner.ts\n";
    const QString before = QDir::currentPath();
    QDir::setCurrent(m_dir.path()); // names without a folder count from here
    for (const QByteArray& list : {playlist, script}) {
        const QString path = m_dir.write("list.m3u8", list);
        EXPECT_EQ(ffprobe(path, "stream=codec_name").left(10), "mpeg2video");
        EXPECT_FALSE(probe(path));
    }
    QDir::setCurrent(before);
}

TEST_F(Engine, RemuxKeepsEveryPacket) {
    for (const char* name : {"r.avi", "r.mkv", "r.ts"}) {
        const QString source = make(QString::fromLatin1(name), "-c:v mpeg4 -bf 2 -c:a aac");
        const QString target = m_dir.path("out.mp4");
        double last = -1;
        const auto done = m_engine->remux(source, target, RemuxTarget::Mp4, UnheldStreams::Refuse,
                                          [&](double part) {
                                              EXPECT_GE(part, last);
                                              last = part;
                                              return true;
                                          });
        ASSERT_TRUE(done) << name << done.error().text();
        EXPECT_EQ(last, 1.0);
        EXPECT_NEAR(ffprobe(target, "format=duration").toDouble(), 3, 0.15) << name;
        // ADTS headers go when audio leaves a transport stream, so only its frames compare.
        const bool transport = QByteArray(name) == "r.ts";
        const auto first = [&](const QByteArray& hashes) {
            return transport ? hashes.left(hashes.indexOf('\n')) : hashes;
        };
        EXPECT_EQ(first(testkit::streamHash(target)), first(testkit::streamHash(source))) << name;
        EXPECT_FALSE(first(testkit::streamHash(target)).isEmpty());
    }
}

TEST_F(Engine, RemuxNotesThatAFileEndsEarly) {
    const QString source = make(u"c.mkv"_s, "-c:v mpeg4 -c:a aac");
    const QString target = m_dir.path("out.mp4");
    EXPECT_EQ(remuxed(source, target, RemuxTarget::Mp4), Notes());
    ASSERT_TRUE(QFile(source).resize(QFileInfo(source).size() / 2));
    const auto notes = remuxed(source, target, RemuxTarget::Mp4);
    ASSERT_TRUE(notes);
    ASSERT_EQ(notes->size(), 1);
    EXPECT_EQ(notes->first().code(), kEndsBeforeDuration);
    EXPECT_NEAR(notes->first().arguments()[0].toDouble(),
                ffprobe(target, "format=duration").toDouble(), 0.1);
    EXPECT_EQ(notes->first().arguments()[1], u"3.0");
}

TEST_F(Engine, RemuxTakesTheAspectRatioOfTheContainer) {
    const QString square = make(u"q.mkv"_s, "-an -c:v mpeg4 -vf setsar=1");
    const QString target = m_dir.path("out.mov");
    for (const char* name : {"wide.mkv", "wide.avi"}) {
        const QString source =
            make(QString::fromLatin1(name), "-i % -map 2 -c copy -aspect 2:1", {square});
        const auto done = remuxed(source, target, RemuxTarget::QuickTimeMovie);
        ASSERT_TRUE(done) << name << done.error().text();
        EXPECT_EQ(ffprobe(target, "stream=display_aspect_ratio"), "2:1\n") << name;
    }
}

TEST_F(Engine, RemuxGoesOnPastDamageAndPastTimestampsThatStartAgain) {
    const QString source = make(u"p.ts"_s, "-c:v libx264 -g 5 -c:a aac -b:a 256k");
    const QByteArray whole = testkit::TempDir::read(source);
    QByteArray hurt = whole;
    constexpr qsizetype kTsPacket = 188;
    for (qsizetype at = kTsPacket * 40; at + 3 * kTsPacket < hurt.size(); at += kTsPacket * 60)
        std::fill_n(hurt.begin() + at + 4, 3 * kTsPacket - 4, '\x5a');
    const QString target = m_dir.path("out.mov");
    for (const QByteArray& bytes : {hurt, whole + whole}) {
        const QString path = m_dir.write("x.ts", bytes);
        const auto done = remuxed(path, target, RemuxTarget::QuickTimeMovie);
        ASSERT_TRUE(done) << done.error().text();
        EXPECT_EQ(done->isEmpty(), bytes.size() != whole.size());
        EXPECT_GT(ffprobe(target, "stream=nb_frames").split('\n').at(1).toInt(), 60) << "of audio";
    }
}

TEST_F(Engine, AudioBeforeTheStartMovesNeitherVideoNorChapters) {
    const QString chapters = m_dir.write(
        "list.txt",
        ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1000\ntitle=One\n[CHAPTER]\n"
        "TIMEBASE=1/1000\nSTART=1000\nEND=2000\ntitle=Two\n");
    const QString source = make(
        u"early.mkv"_s,
        "-f ffmetadata -i % -map_chapters 2 -c:v mpeg4 -bf 0 -c:a libopus -ar 48000", {chapters});
    ASSERT_LT(ffprobe(source, "format=start_time").toDouble(), -0.005) << "the decoder's run-in";
    const QString target = m_dir.path("out.mp4");
    ASSERT_TRUE(remuxed(source, target, RemuxTarget::Mp4));
    const auto times = [&](const char* entries, qsizetype line) {
        return ffprobe(target, entries).split('\n').at(line).toDouble() -
               ffprobe(source, entries).split('\n').at(line).toDouble();
    };
    EXPECT_NEAR(times("chapter=start_time", 1), 0, 0.002);
    EXPECT_NEAR(times("stream=start_time", 0), 0, 0.002) << "of the video";
    const auto shown = m_engine->openFrames(source, {});
    ASSERT_TRUE(shown);
    ASSERT_TRUE((*shown)->frameAt({1, 1}));
    const QByteArray frames = ffprobe(source, "packet=pts_time -select_streams v");
    double last = 0;
    for (const QByteArray& time : frames.split('\n'))
        last = time.toDouble() <= 1 ? std::max(last, time.toDouble()) : last;
    EXPECT_GT(last, 0.9);
    EXPECT_NEAR(CMTimeGetSeconds((*shown)->shownTime()), last, 0.001) << "as the file says";
}

TEST_F(Engine, ReorderedFramesKeepTheirTimesAndAnEvenRate) {
    // Matroska stores no decoding times; the first ones are not known before a few frames are read.
    const QString source = make(u"b.mkv"_s, "-c:v libx264 -bf 3 -an");
    const QString target = m_dir.path("b.mp4");
    ASSERT_TRUE(remuxed(source, target, RemuxTarget::Mp4));
    const auto times = [&](const QString& path, const char* entry) {
        QList<double> seconds;
        for (const QByteArray& text : ffprobe(path, entry).split('\n'))
            if (!text.trimmed().isEmpty())
                seconds << text.toDouble();
        return seconds;
    };
    const QList<double> shown = times(target, "packet=pts_time"),
                        wanted = times(source, "packet=pts_time"),
                        decoded = times(target, "packet=dts_time");
    ASSERT_EQ(shown.size(), wanted.size());
    ASSERT_GT(decoded.size(), 20);
    const double frame = (decoded.last() - decoded[10]) / static_cast<double>(decoded.size() - 11);
    for (qsizetype i = 1; i < shown.size(); ++i) {
        EXPECT_NEAR(shown[i], wanted[i], 0.0011) << i;
        EXPECT_NEAR(decoded[i] - decoded[i - 1], frame, 0.003) << i;
    }
}

TEST_F(Engine, RemuxRefusesAndCancelsWithoutTrace) {
    const QString source = make(u"s.mkv"_s, "-c:v libx264 -c:a pcm_s16le");
    const QString target = m_dir.path("x.mp4");
    const auto refused = remuxed(source, target, RemuxTarget::Mp4);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, ErrorCode::NotSupported);
    EXPECT_EQ(refused.error().detail, Message(kMp4CannotHold, {u"PCM"_s}));
    EXPECT_FALSE(QFileInfo::exists(target));
    // A QuickTime movie holds it, whatever the file is called.
    ASSERT_TRUE(remuxed(source, target, RemuxTarget::QuickTimeMovie));
    EXPECT_EQ(testkit::streamHash(target), testkit::streamHash(source));

    const auto cancelled = m_engine->remux(source, m_dir.path("x.mov"), RemuxTarget::QuickTimeMovie,
                                           UnheldStreams::Refuse, [](double) { return false; });
    ASSERT_FALSE(cancelled);
    EXPECT_EQ(cancelled.error().code, ErrorCode::Cancelled);
    EXPECT_FALSE(QFileInfo::exists(m_dir.path("x.mov")));

    const QByteArray before = testkit::TempDir::read(source);
    EXPECT_FALSE(remuxed(source, source, RemuxTarget::Mp4));
    EXPECT_EQ(testkit::TempDir::read(source), before);
}

TEST_F(Engine, WritesSamplesThatRepeat) {
    const struct {
        const char *name, *container, *video, *audio, *codecs;
    } cases[] = {
        {"a.mp4", "mp4", "libx264", "aac", "h264 aac "},
        {"b.mov", "mov", "libx265", "aac", "hevc aac "},
        {"c.m4a", "ipod", "", "alac", "alac "},
        {"d.mp3", "mp3", "", "libmp3lame", "mp3 "},
        {"e.aiff", "aiff", "", "pcm_s16be", "pcm_s16be "},
        {"f.ogg", "ogg", "", "libvorbis", "vorbis "},
        {"g.opus", "opus", "", "libopus", "opus "},
        {"h.wmv", "asf", "mpeg4", "wmav2", "mpeg4 wmav2 "},
        {"i.avi", "avi", "mjpeg", "pcm_s16le", "mjpeg pcm_s16le "},
    };
    for (const auto& c : cases) {
        SampleMedia sample;
        sample.container = QString::fromLatin1(c.container);
        sample.videoCodec = QString::fromLatin1(c.video);
        sample.audioCodec = QString::fromLatin1(c.audio);
        sample.seconds = 1;
        const QString path = m_dir.path(c.name);
        const auto written = m_engine->writeSample(sample, path);
        ASSERT_TRUE(written) << c.name << written.error().text();
        QByteArray codecs = ffprobe(path, "stream=codec_name");
        EXPECT_EQ(codecs.replace('\n', ' '), QByteArray(c.codecs)) << c.name;
        EXPECT_NEAR(ffprobe(path, "format=duration").toDouble(), 1, 0.1) << c.name;
        const QByteArray bytes = testkit::TempDir::read(path);
        mallopt(M_PERTURB, 90); // other bytes in memory that nobody has written
        ASSERT_TRUE(m_engine->writeSample(sample, path));
        mallopt(M_PERTURB, 0);
        EXPECT_EQ(testkit::TempDir::read(path), bytes) << c.name;
    }
}

TEST_F(Engine, SampleSettings) {
    SampleMedia sample;
    sample.container = u"mp4"_s;
    sample.videoCodec = u"libx264"_s;
    sample.seconds = 0.5;
    sample.rotation = 90;
    const QString path = m_dir.path("r.mp4");
    ASSERT_TRUE(m_engine->writeSample(sample, path));
    const QByteArray first = testkit::TempDir::read(path);
    EXPECT_LT(first.indexOf("moov"), first.indexOf("mdat"));
    EXPECT_EQ(ffprobe(path, "stream_side_data=rotation").trimmed(), "-90"); // anticlockwise there
    sample.moovFirst = false;
    sample.pattern = 1;
    ASSERT_TRUE(m_engine->writeSample(sample, path));
    const QByteArray second = testkit::TempDir::read(path);
    EXPECT_GT(second.indexOf("moov"), second.indexOf("mdat"));
    EXPECT_NE(first.size(), second.size()) << "another pattern makes other frames";

    sample.videoCodec = u"nonsense"_s;
    EXPECT_EQ(m_engine->writeSample(sample, m_dir.path("n.mp4")).error().code,
              ErrorCode::NotSupported);
    EXPECT_FALSE(QFileInfo::exists(m_dir.path("n.mp4")));
    sample.size = QSize(0, 0);
    EXPECT_EQ(m_engine->writeSample(sample, path).error().code, ErrorCode::InvalidArgument);
}

TEST_F(Engine, OpensFilesByTheirBytes) {
    const QString flac = make(u"x.flac"_s, "-vn");
    const QString mpg = make(u"x.mpg"_s, "-c:v mpeg2video");
    const auto container = [](const QString& path) {
        const auto file = MediaFile::open(path);
        return file ? (*file)->facts().container : Container::Unknown;
    };
    const auto renamed = [&](const QString& path, const char* name) {
        return m_dir.write(name, testkit::TempDir::read(path));
    };
    EXPECT_EQ(container(renamed(flac, "y.mp3")), Container::Flac);
    EXPECT_EQ(container(renamed(mpg, "y.wav")), Container::Other);

    const QString text = m_dir.write("t.mp4", "nothing but text");
    const auto file = MediaFile::open(text);
    ASSERT_TRUE(file);
    EXPECT_EQ((*file)->facts().container, Container::Unknown);
    EXPECT_FALSE((*file)->facts().problem.isEmpty());
    EXPECT_EQ((*file)->attributes().NSFileSize, 16u);
    EXPECT_EQ(AVURLAsset::assetWithPath(text).error().code, ErrorCode::InvalidData);
    EXPECT_EQ(AVURLAsset::assetWithPath(m_dir.path("none")).error().code, ErrorCode::NotFound);
}

TEST_F(Engine, ThreadsProbeSideBySide) {
    const QString path = make(u"p.ts"_s, "-c:v mpeg2video");
    std::atomic<int> good = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 5; ++n) {
                const auto file = MediaFile::open(path);
                good += file && (*file)->facts().pixelSize == QSize(176, 144) ? 1 : 0;
            }
        });
    threads.clear();
    EXPECT_EQ(good, 40);
}

TEST_F(Engine, CorpusOpensWithoutHarm) {
    if (testkit::corpus().isEmpty())
        GTEST_SKIP() << "CLIPHEAVE_CORPUS is not set";
    int opened = 0;
    for (const char* folder : {"video", "audio", "broken", "photo"}) {
        const QDir dir(testkit::corpus() + u'/' + QString::fromLatin1(folder));
        for (const QString& name : dir.entryList(QDir::Files)) {
            const auto start = std::chrono::steady_clock::now();
            const auto file = MediaFile::open(dir.filePath(name));
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5)) << name;
            ASSERT_TRUE(file) << name;
            const MediaFacts& facts = (*file)->facts();
            if (facts.container == Container::Unknown) {
                EXPECT_FALSE(facts.problem.isEmpty()) << name;
            }
            opened += facts.container != Container::Unknown ? 1 : 0;
        }
    }
    EXPECT_GT(opened, 250);
}

} // namespace clipheave::platform
