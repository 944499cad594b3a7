// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/media/messages.h"
#include "tests/testkit/media.h"
#include "tests/testkit/open_run.h"
#include "video/video_jobs.h"
#include "video/video_labels.h"
#include "video/video_titles.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>

#include <algorithm>

namespace {

using namespace clipheave;
using jobs::WriteOutcome;
using jobs::WriteStatus;
using testing::ElementsAre;
using testing::HasSubstr;
using video::VideoJobs;
using video::Worker;

const Worker kRotate = &VideoJobs::RotateVideoMediaFileFileThreader;
const Worker kSpeedUp = &VideoJobs::SpeedUpVideoMediaFileFileThreader;
const Worker kSlowDown = &VideoJobs::SlowDownVideoMediaFileFileThreader;
const Worker kMerge = &VideoJobs::MergeVideoMediaFileFileThreader;
const Worker kCompress = &VideoJobs::CompressVideoMediaFileFileThreader;
const Worker kConvert = &VideoJobs::ConvertVideoMediaFileFileThreader;
const Worker kExtractAudio = &VideoJobs::ExtractAudioMediaFileFileThreader;
const Worker kExtractImages = &VideoJobs::ExtractImagesMediaFileFileThreader;
const Worker kConvertToGif = &VideoJobs::ConvertGIFMediaFileFileThreader;
const Worker kRemoveAudio = &VideoJobs::RemoveAudioMediaFileFileThreader;

/// Jobs over small videos that ffmpeg has made, read back with ffprobe.
class Jobs : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_videos = new testkit::TempDir;
        // Each second has a colour of its own: red, green, blue.
        testkit::ffmpeg(
            "-f lavfi -i color=red:s=96x64:r=10:d=1[a];color=green:s=96x64:r=10:d=1[b];"
            "color=blue:s=96x64:r=10:d=1[c];[a][b][c]concat=n=3,format=yuv420p -f lavfi -i "
            "sine=440:d=3 -c:v libx264 -c:a aac -metadata title=Tide -metadata "
            "creation_time=2019-05-06T07:08:09Z",
            {videoFile("clip.mp4")});
        remux("clip.mkv", "");
        remux("upright.mov", "");
        testkit::rotateClockwise(videoFile("upright.mov"), 270);
        remux("silent.mov", "-an");
        remux("audio.m4a", "-vn");
    }
    static void TearDownTestSuite() { delete s_videos; }
    static QString videoFile(const char* name) { return s_videos->path(name); }
    static void remux(const char* name, const QByteArray& options) {
        testkit::ffmpeg("-i % -c copy " + options, {videoFile("clip.mp4"), videoFile(name)});
    }

    std::vector<WriteOutcome> run(Worker worker, const QString& title, const QStringList& paths) {
        video::VideoJobRequest request{title, {}, {out(), false, {}}};
        for (const QString& path : paths) {
            auto item = std::make_shared<media::IKImageItem>();
            item->filePath = path;
            item->fileName = path.section(u'/', -1);
            request.items.push_back(item);
        }
        auto outcomes = testkit::outcomesOf([&](jobs::Run& run) {
            run.paths().protect(paths);
            VideoJobs jobs(run);
            worker(jobs, request);
        });
        std::stable_sort(outcomes.begin(), outcomes.end(), [&](const auto& a, const auto& b) {
            return paths.indexOf(a.source) < paths.indexOf(b.source);
        });
        return outcomes;
    }
    [[nodiscard]] QString out(const char* name = "") const {
        return m_dir.path(u"out/"_s + QString::fromLatin1(name));
    }
    [[nodiscard]] QStringList filesOut() const { return m_dir.files("out"); }
    /// "h264 64x96 3.0" and "aac 3.0" of each stream, durations in tenths.
    static QStringList streams(const QString& path) {
        QStringList texts;
        for (const auto& value : testkit::ffprobe(path)[u"streams"].toArray()) {
            const QJsonObject stream = value.toObject();
            QString text = stream[u"codec_name"].toString();
            if (stream.contains(u"width"))
                text += u" %1x%2"_s.arg(stream[u"width"].toInt()).arg(stream[u"height"].toInt());
            texts << text + u" %1"_s.arg(stream[u"duration"].toString().toDouble(), 0, 'f', 1);
        }
        return texts;
    }
    static QString tag(const QString& path, const char16_t* name) {
        return testkit::ffprobe(path)[u"format"].toObject()[u"tags"].toObject()[name].toString();
    }
    /// 'r', 'g' or 'b': what the pixel in the middle is most.
    static char colour(const QImage& frame) {
        const QColor pixel = frame.pixelColor(frame.width() / 2, frame.height() / 2);
        if (pixel.red() > pixel.green() && pixel.red() > pixel.blue())
            return 'r';
        return pixel.green() > pixel.blue() ? 'g' : 'b';
    }
    testkit::TempDir m_dir;

private:
    static inline testkit::TempDir* s_videos = nullptr;
};

TEST_F(Jobs, RotateTakesEachVideoAsItIsShownAndKeepsItsMetadata) {
    const auto outcomes = run(kRotate, QLatin1String(video::kRotations[0].title),
                              {videoFile("clip.mp4"), videoFile("upright.mov"),
                               videoFile("clip.mkv"), videoFile("audio.m4a")});
    ASSERT_EQ(outcomes.size(), 4U);
    EXPECT_THAT(streams(out("clip.mp4")), ElementsAre(u"h264 64x96 3.0", u"aac 3.0"));
    EXPECT_THAT(streams(out("upright.mov")), ElementsAre(u"h264 96x64 3.0", u"aac 3.0"));
    EXPECT_EQ(tag(out("clip.mp4"), u"title"), u"Tide");
    EXPECT_EQ(tag(out("clip.mp4"), u"creation_time"), u"2019-05-06T07:08:09.000000Z");
    const auto source =
        platform::NSFileManager::defaultManager().attributesOfItemAtPath(videoFile("clip.mp4"));
    const auto output =
        platform::NSFileManager::defaultManager().attributesOfItemAtPath(out("clip.mp4"));
    EXPECT_EQ(source->NSFileModificationDate, output->NSFileModificationDate);
    // No output type for this extension, and no video: both fail alone.
    EXPECT_EQ(outcomes[2].status, WriteStatus::Failed);
    EXPECT_THAT(outcomes[2].text().toStdString(), HasSubstr("clip.mkv"));
    EXPECT_THAT(outcomes[3].text().toStdString(), HasSubstr("source without video"));
    EXPECT_THAT(filesOut(), ElementsAre(u"clip.mp4", u"upright.mov"));
    // A display matrix of zeros: players show the video as it is stored.
    QByteArray bytes = testkit::TempDir::read(videoFile("upright.mov"));
    const qsizetype matrix = bytes.indexOf("tkhd") + 44;
    std::fill_n(bytes.begin() + matrix, 9 * 4, '\0');
    run(kRotate, QLatin1String(video::kRotations[0].title), {m_dir.write("zeros.mov", bytes)});
    EXPECT_THAT(streams(out("zeros.mov")), ElementsAre(u"h264 64x96 3.0", u"aac 3.0"));
}

TEST_F(Jobs, SpeedUpCutsAndSlowDownStretches) {
    (void)run(kSpeedUp, u"2X"_s, {videoFile("clip.mp4")});
    EXPECT_THAT(streams(out("clip.mp4")), ElementsAre(u"h264 96x64 1.5", u"aac 1.5"));
    EXPECT_EQ(tag(out("clip.mp4"), u"major_brand"), u"qt  ")
        << "a QuickTime movie whatever the name says";
    (void)run(kSlowDown, u"0.5X"_s, {videoFile("clip.mkv")});
    EXPECT_THAT(streams(out("clip.mkv")), ElementsAre(u"h264 96x64 6.0", u"aac 6.0"));
    EXPECT_EQ(tag(out("clip.mkv"), u"title"), u"Tide");
    EXPECT_EQ(video::slowDownFactor(u"2X"_s), 1) << "slowing down knows no 2X";
    EXPECT_EQ(video::speedUpFactor(u"3X"_s), 1);
}

TEST_F(Jobs, ACompressedMovieHeaderMakesNoDifference) {
    // The header stands last, so that no offset moves.
    const QByteArray plain = testkit::TempDir::read(videoFile("upright.mov"));
    const qsizetype header = plain.lastIndexOf("moov") - 4;
    const QByteArray packed = testkit::box(
        "moov", testkit::box("cmov", testkit::box("dcom", "zlib") +
                                         testkit::box("cmvd", qCompress(plain.mid(header)))));
    const QString source = m_dir.write("cmov.mov", plain.first(header) + packed);
    const std::pair<Worker, QString> jobs[] = {
        {kRotate, QLatin1String(video::kRotations[0].title)},
        {kSpeedUp, u"2X"_s},
        {kSlowDown, u"0.5X"_s},
        {kConvert, QLatin1String(video::kConversions[0].title)},
        {kRemoveAudio, {}},
        {kExtractAudio, {}},
        {kConvertToGif, {}}};
    for (const auto& [worker, title] : jobs) {
        const auto outcomes = run(worker, title, {videoFile("upright.mov"), source});
        ASSERT_EQ(outcomes.back().status, WriteStatus::Completed) << outcomes.back().text();
        const QString output = outcomes.back().outputs.value(0);
        const QString other = outcomes.front().outputs.value(0);
        EXPECT_FALSE(streams(output).isEmpty());
        EXPECT_EQ(streams(output), streams(other));
        EXPECT_EQ(tag(output, u"title"), tag(other, u"title"));
    }
}

TEST_F(Jobs, ChaptersComeAlongAsFarAsTheVideoGoes) {
    const QString list = m_dir.write(
        "chapters.txt",
        ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1000\ntitle=One\n[CHAPTER]\n"
        "TIMEBASE=1/1000\nSTART=1000\nEND=2000\ntitle=Two\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=2000"
        "\nEND=3000\ntitle=Three\n");
    const QString book = m_dir.path("book.mp4");
    testkit::ffmpeg("-i % -i % -map_chapters 1 -c copy", {videoFile("clip.mp4"), list, book});
    const auto chapters = [](const QString& path) {
        return testkit::ffprobe(
            "-of csv=p=0 -show_entries chapter=start_time,end_time:chapter_tags=title", path);
    };
    (void)run(kRotate, QLatin1String(video::kRotations[0].title), {book});
    EXPECT_EQ(chapters(out("book.mp4")), chapters(book));
    (void)run(kSpeedUp, u"2X"_s, {book});
    EXPECT_EQ(chapters(out("book.mp4")), "0.000000,1.000000,One\n1.000000,1.500000,Two\n");
}

TEST_F(Jobs, MergePutsEachClipAtTheLongestDurationBeforeIt) {
    const auto outcomes = run(kMerge, {},
                              {videoFile("clip.mp4"), videoFile("silent.mov"),
                               videoFile("audio.m4a"), videoFile("none.mp4")});
    EXPECT_THAT(filesOut(), ElementsAre(u"MergeVideo.mp4")) << "named by the last item";
    EXPECT_THAT(streams(out("MergeVideo.mp4")).first().toStdString(), HasSubstr("6.0"));
    EXPECT_EQ(outcomes[0].outputs, QStringList{out("MergeVideo.mp4")});
    EXPECT_EQ(outcomes[1].text(), u"merged into: MergeVideo.mp4");
    EXPECT_EQ(outcomes[3].status, WriteStatus::Failed);
    (void)run(kMerge, {}, {videoFile("clip.mp4")});
    EXPECT_THAT(filesOut(), ElementsAre(u"MergeVideo.mp4", u"clip_MergeVideo.mp4"));

    const QString words = m_dir.path("words.mp4");
    const QString lines = m_dir.write("words.srt", "1\n00:00:00,000 --> 00:00:09,000\na\n");
    testkit::ffmpeg("-i % -map 0 -c mov_text", {lines, words});
    QStringList logged;
    const platform::LogSubscription subscription(
        platform::LogLevel::Info, [&](const platform::LogLine& line) { logged << line.text; });
    const auto nothing = run(kMerge, {}, {words});
    EXPECT_THAT(nothing[0].text().toStdString(), HasSubstr("source without tracks"));
    EXPECT_THAT(logged, testing::Contains(u"Merging failed: nothing to merge"));
}

TEST_F(Jobs, CompressAndConvertFollowTheTitle) {
    m_dir.write("out/clip.mp4", "older");
    auto outcomes = run(kCompress, u"Best"_s, {videoFile("clip.mp4"), videoFile("audio.m4a")});
    EXPECT_FALSE(outcomes[0].text().contains(u"replaced")) << "nothing was";
    EXPECT_EQ(testkit::TempDir::read(out("clip.mp4")), "older");
    ASSERT_TRUE(QFile::remove(out("clip.mp4")));
    EXPECT_THAT(outcomes[0].text().toStdString(), HasSubstr("High video quality"))
        << "an unlisted title is a preset that nobody knows";
    EXPECT_EQ(outcomes[1].status, WriteStatus::Skipped);
    EXPECT_TRUE(filesOut().isEmpty());
    outcomes = run(kCompress, QLatin1String(video::kQualities[2].title), {videoFile("clip.mp4")});
    EXPECT_THAT(streams(out("clip.mp4")), ElementsAre(u"h264 96x64 3.0", u"aac 3.0"));
    (void)run(kConvert, u"Convert to MOV"_s, {videoFile("clip.mkv")});
    EXPECT_EQ(tag(out("clip.mov"), u"major_brand"), u"qt  ");
    EXPECT_EQ(tag(out("clip.mov"), u"title"), u"Tide");

    const QString camera = m_dir.path("camera.mov");
    testkit::ffmpeg("-i % -map 0 -map 0:a -c:v copy -c:a pcm_s16le",
                    {videoFile("clip.mp4"), camera});
    for (const auto& [title, warned] :
         {std::pair(u"Convert to MP4"_s, true), {u"Convert to MOV"_s, false}}) {
        const auto converted = run(kConvert, title, {camera});
        EXPECT_EQ(converted[0].status, WriteStatus::Completed);
        EXPECT_EQ(converted[0].notes.contains({platform::kCodecsNotForMp4, {u"PCM"_s}}), warned);
    }
    // What is not slowed down at all keeps every track of its own.
    (void)run(kSlowDown, u"1X"_s, {camera});
    EXPECT_EQ(streams(out("camera.mov")).size(), 3);
}

TEST_F(Jobs, ExtractAudioCopiesTheAudioAndDropsAnOlderVideo) {
    m_dir.write("out/clip.mp4", "older");
    (void)run(kExtractAudio, {}, {videoFile("clip.mp4")});
    EXPECT_THAT(filesOut(), ElementsAre(u"clip.mp4.m4a"));
    const auto hash = [](const QString& path) {
        const QByteArray line = testkit::streamHash(path, "-map 0:a");
        return line.mid(line.indexOf('='));
    };
    EXPECT_EQ(hash(videoFile("clip.mp4")), hash(out("clip.mp4.m4a")));
    // A video of the list that lies in the storage folder is never taken away.
    const QString inside =
        m_dir.write("out/own.mp4", testkit::TempDir::read(videoFile("clip.mp4")));
    (void)run(kExtractAudio, {}, {inside});
    EXPECT_THAT(filesOut(), ElementsAre(u"clip.mp4.m4a", u"own.mp4", u"own.mp4.m4a"));
}

TEST_F(Jobs, FramesAreThoseOfTheirSeconds) {
    (void)run(kExtractImages, u"5 pics per second"_s, {videoFile("upright.mov")});
    EXPECT_THAT(filesOut(), ElementsAre(u"upright_0.jpg", u"upright_1.jpg", u"upright_2.jpg"));
    const QByteArray bytes = testkit::TempDir::read(out("upright_1.jpg"));
    EXPECT_TRUE(bytes.startsWith("II*") || bytes.startsWith("MM")) << "TIFF under this name";
    const char expected[] = {'r', 'g', 'b'};
    for (int second = 0; second < 3; ++second) {
        const QImage frame = QImage::fromData(
            testkit::TempDir::read(m_dir.path(u"out/upright_%1.jpg"_s.arg(second))));
        EXPECT_EQ(frame.size(), QSize(64, 96)) << "upright";
        EXPECT_EQ(colour(frame), expected[second]);
    }
    (void)run(kConvertToGif, {}, {videoFile("clip.mp4")});
    const QByteArray gif = testkit::TempDir::read(out("clip.gif"));
    EXPECT_TRUE(gif.startsWith("GIF89a"));
    EXPECT_TRUE(gif.contains(QByteArray("NETSCAPE2.0\x03\x01\0\0", 15))) << "for ever";
    EXPECT_EQ(gif.count(QByteArray("\x2c\0\0\0\0\x60\0\x40\0", 9)), 3) << "a frame a second";
    const auto failed = run(kConvertToGif, {},
                            {m_dir.write("text.mp4", "no video at all"), videoFile("audio.m4a")});
    EXPECT_EQ(failed[0].status, WriteStatus::Failed);
    EXPECT_EQ(failed[1].status, WriteStatus::Failed);
}

TEST_F(Jobs, FramesOfVideosWithOneNameAreThoseOfTheLast) {
    ASSERT_TRUE(QDir().mkpath(m_dir.path("a")));
    const QString name = u"50%1 off%2C.mp4"_s; // no pattern to fill
    const QString larger = m_dir.path(u"a/"_s + name), smaller = m_dir.path(name);
    ASSERT_TRUE(QFile::copy(videoFile("clip.mp4"), smaller));
    testkit::ffmpeg("-i % -vf scale=1920:1280", {smaller, larger});
    (void)run(kExtractImages, {}, {larger, smaller});
    EXPECT_THAT(filesOut(),
                ElementsAre(u"50%1 off%2C_0.jpg", u"50%1 off%2C_1.jpg", u"50%1 off%2C_2.jpg"));
    for (const QString& file : filesOut())
        EXPECT_EQ(QImage::fromData(testkit::TempDir::read(out() + file)).width(), 96);
}

TEST_F(Jobs, VideosThatLieFailPlainlyOrGiveWhatTheyHold) {
    const QByteArray whole = testkit::TempDir::read(videoFile("clip.mp4"));
    const auto lying = [&](const char* name, const std::vector<std::pair<const char*, int>>& places,
                           const QByteArray& bytes) {
        QByteArray videoFile = whole;
        for (const auto& [box, offset] : places)
            for (auto at = videoFile.indexOf(box); at > 0; at = videoFile.indexOf(box, at + 4))
                videoFile.replace(at + offset, bytes.size(), bytes);
        return m_dir.write(name, videoFile);
    };
    const std::vector<std::pair<const char*, int>> durations{
        {"mvhd", 20}, {"tkhd", 24}, {"elst", 12}, {"mdhd", 20}};
    const QStringList videos{lying("none.mp4", durations, testkit::be(0, 4)),
                             lying("long.mp4", durations, testkit::be(1'000'000'000, 4)),
                             lying("codec.mp4", {{"avc1", 0}}, "zzzz")};
    const struct {
        Worker worker;
        QString title, files;
    } jobs[] = {{kRotate, QLatin1String(video::kRotations[0].title), u"long.mp4"_s},
                {kRemoveAudio, {}, u"long.mp4"_s},
                {kConvertToGif, {}, u"long.gif"_s},
                {kExtractImages, {}, u"long_0.jpg long_1.jpg long_2.jpg"_s}};
    for (const auto& [worker, title, files] : jobs) {
        const auto outcomes = run(worker, title, videos);
        ASSERT_EQ(outcomes.size(), 3U);
        ASSERT_TRUE(outcomes[0].failure && outcomes[2].failure);
        EXPECT_EQ(outcomes[0].failure->detail.code(), platform::kNoDuration);
        EXPECT_EQ(outcomes[1].status, WriteStatus::Completed) << outcomes[1].text();
        EXPECT_STREQ(outcomes[2].failure->detail.code().id, "unknown-video-codec");
        EXPECT_EQ(filesOut().join(u' '), files);
        if (files == u"long.mp4") {
            EXPECT_NEAR(
                testkit::ffprobe(out("long.mp4"))[u"streams"][0][u"duration"].toString().toDouble(),
                3, 0.04);
        }
        for (const QString& file : filesOut())
            ASSERT_TRUE(QFile::remove(out() + file));
    }
}

TEST_F(Jobs, RemoveAudioLeavesASilentTrack) {
    QStringList lines;
    const platform::LogSubscription subscription(
        platform::LogLevel::Info, [&](const platform::LogLine& line) { lines << line.text; });
    (void)run(kRemoveAudio, {}, {videoFile("upright.mov")});
    EXPECT_THAT(lines, ElementsAre(u"Background sound removed successfully."));
    EXPECT_THAT(streams(out("upright.mov")), ElementsAre(u"h264 96x64 3.0", u"aac 3.0"));
    const auto volume = testkit::run(
        u"ffmpeg"_s, u"-i %1 -af volumedetect -f null -"_s.arg(out("upright.mov")).split(u' '));
    EXPECT_THAT(volume.err.toStdString(), HasSubstr("max_volume: -91.0 dB"));
}

TEST_F(Jobs, OfTwoVideosWithOneNameTheSecondStays) {
    QDir().mkpath(m_dir.path("a"));
    QDir().mkpath(m_dir.path("b"));
    const QString first = m_dir.path("a/x.mov");
    const QString second = m_dir.path("b/x.mov");
    ASSERT_TRUE(QFile::copy(videoFile("clip.mp4"), first));
    ASSERT_TRUE(QFile::copy(videoFile("upright.mov"), second));
    const auto outcomes = run(kRotate, QLatin1String(video::kRotations[0].title), {first, second});
    EXPECT_THAT(streams(out("x.mov")).first().toStdString(), HasSubstr("96x64"));
    EXPECT_THAT(filesOut(), ElementsAre(u"x.mov"));
    EXPECT_EQ(outcomes[1].text(), u"replaced older file");
    // A source in the storage folder is no older output.
    const auto own = run(kRemoveAudio, {}, {out("x.mov")});
    EXPECT_EQ(own[0].outputs, QStringList{out("x 2.mov")});
}

TEST_F(Jobs, ALinkInTheStorageFolderIsReplacedAndNotWrittenThrough) {
    const QString kept = m_dir.write("kept.mp4", "not selected");
    ASSERT_TRUE(QDir().mkpath(out()));
    for (const char* name : {"clip.mp4", "clip.gif", "clip_0.jpg"})
        ASSERT_TRUE(QFile::link(kept, out(name)));
    run(kSlowDown, u"1X"_s, {videoFile("clip.mp4")});
    run(kConvertToGif, {}, {videoFile("clip.mp4")});
    run(kExtractImages, {}, {videoFile("clip.mp4")});
    for (const char* name : {"clip.mp4", "clip.gif", "clip_0.jpg"}) {
        EXPECT_FALSE(QFileInfo(out(name)).isSymLink()) << name;
        EXPECT_GT(QFileInfo(out(name)).size(), 100) << name;
    }
    QFile file(kept);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "not selected");
}

TEST_F(Jobs, CancelLeavesNoFile) {
    video::VideoJobRequest request{
        QLatin1String(video::kRotations[1].title), {}, {out(), false, {}}};
    auto item = std::make_shared<media::IKImageItem>();
    item->filePath = videoFile("clip.mp4");
    item->fileName = u"clip.mp4"_s;
    request.items.assign(6, item); // one name: they wait for each other
    const auto outcomes = testkit::outcomesOf([&](jobs::Run& run) {
        run.cancel();
        VideoJobs(run).RotateVideoMediaFileFileThreader(request);
    });
    EXPECT_EQ(
        std::count_if(outcomes.begin(), outcomes.end(),
                      [](const auto& outcome) { return outcome.status == WriteStatus::Cancelled; }),
        6);
    EXPECT_TRUE(filesOut().isEmpty());
}

} // namespace
