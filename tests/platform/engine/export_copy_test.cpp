// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/engine/export_fixture.h"

#include <QDir>
#include <QFileInfo>
#include <QtEndian>

#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>

namespace clipheave::platform {

namespace {

class ExportCopyTest : public ExportTest {
protected:
    [[nodiscard]] static ExportPlan copyOf(const QString& path, double seconds = 3.5) {
        ExportPlan plan = planFor(path, seconds);
        plan.video->mode = plan.audio->mode = ExportMode::Copy;
        return plan;
    }
    [[nodiscard]] QByteArray decoded(const QString& path) const {
        return testkit::ffmpeg("-i % -an -vsync passthrough -pix_fmt rgb24 -f md5 -", {path});
    }
    /// The export fails with `code` and leaves nothing behind.
    void expectFailure(const ExportPlan& plan, ErrorCode code, const char* what) {
        const auto done = run(plan);
        ASSERT_FALSE(done) << what;
        EXPECT_EQ(static_cast<int>(done.error().code), static_cast<int>(code))
            << what << ": " << done.error().text();
        EXPECT_FALSE(QFileInfo::exists(m_out)) << what;
    }
};

constexpr char kVideo[] = "-c:v libx264 -g 25 -c:a aac -ac 2";

} // namespace

TEST_F(ExportCopyTest, CopiesStreamsOfManyContainers) {
    const struct {
        const char *name, *options, *tags;
    } cases[] = {
        {"a.mp4", kVideo, "avc1 mp4a"},
        {"a.mkv", kVideo, "avc1 mp4a"},
        {"a.ts", kVideo, "avc1 mp4a"},
        {"a.avi", "-c:v mpeg4 -c:a libmp3lame", "mp4v mp4a"},
        {"c.mov", "-c:v cfhd -pix_fmt yuv422p10 -c:a aac", "CFHD mp4a"},
        {"h.mkv", "-c:v libx265 -x265-params log-level=none -c:a ac3", "hvc1 ac-3"},
        {"h.ts", "-c:v libx265 -x265-params log-level=none -c:a aac", "hvc1 mp4a"},
    };
    for (const auto& [name, options, tags] : cases) {
        const QString source = make(name, options);
        ExportPlan plan = copyOf(source);
        if (source.endsWith(u".mov"))
            plan.container = ExportContainer::QuickTimeMovie;
        EXPECT_EQ(exported(plan), Notes()) << name;
        EXPECT_EQ(ffprobe(m_out, "v", "stream=codec_tag_string") + ' ' +
                      ffprobe(m_out, "a", "stream=codec_tag_string"),
                  tags)
            << name;
        EXPECT_EQ(decoded(m_out), decoded(source)) << name;
        EXPECT_EQ(ffprobe(m_out, "v", "stream=nb_frames"), "75") << name;
        EXPECT_NEAR(ffprobe(m_out, "v", "stream=duration").toDouble(), 3, 0.041) << name;
        EXPECT_GT(correlation(samples(m_out), samples(source)), 0.99) << name;
    }
}

TEST_F(ExportCopyTest, CopiesPlainFramesInTheOrderOfTheirColours) {
    for (const char* order : {"bgr24", "yuyv422"}) {
        const QString source =
            make("a.avi", QByteArray("-c:v rawvideo -c:a aac -pix_fmt ") + order);
        ExportPlan plan = copyOf(source);
        plan.container = ExportContainer::QuickTimeMovie;
        exported(plan, "out.mov");
        EXPECT_EQ(decoded(m_out), decoded(source)) << order;
    }
}

TEST_F(ExportCopyTest, StretchesCutsAndJoinsWithoutEncoding) {
    const QString source = make("a.mp4", kVideo);
    ExportPlan plan = copyOf(source);
    plan.audio->mode = ExportMode::Encode;
    plan.video->segments = plan.audio->segments = {segment(source, 0, 3, 0, 0.2)};
    plan.container = ExportContainer::QuickTimeMovie;
    exported(plan, "slow.mov");
    EXPECT_EQ(decoded(m_out), decoded(source));
    EXPECT_EQ(ffprobe(m_out, "v", "stream=duration,nb_frames"), "15.000000,75");
    EXPECT_EQ(ffprobe(m_out, "a", "stream=duration"), "15.000000");

    // From within a group of frames: the edit list hides those before the start.
    plan = copyOf(source);
    plan.video->segments = plan.audio->segments = {segment(source, 1.4, 3)};
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=duration"), "1.600000");
    EXPECT_GT(likeness(m_out, source, "trim=1.39:3"), 0.999);
    plan.video->segments = plan.audio->segments = {segment(source, 1.31, 2.57)};
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=duration"), "1.260000");

    // Frames that the source's edit list hides at its end, though those before need them.
    QByteArray shorter = testkit::TempDir::read(source);
    const auto length = shorter.indexOf("elst") + 12;
    ASSERT_EQ(shorter.mid(length, 4), testkit::be(3000, 4));
    shorter.replace(length, 4, testkit::be(2960, 4));
    const QString hiding = m_dir.write("hiding.mp4", shorter);
    plan.video->segments = plan.audio->segments = {segment(hiding, 0, 3)};
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "packet=flags").count("D"), 1);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=duration"), "2.960000");

    plan.video->segments = plan.audio->segments = {segment(source, 0, 3), segment(source, 0, 3, 3)};
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=duration,nb_frames"), "6.000000,150");
    // Of another size: one track cannot hold both uncoded.
    const QString other = make("b.mp4", kVideo, "testsrc2=d=3:s=64x64:r=25");
    plan.video->segments[1] = segment(other, 0, 3, 3);
    expectFailure(plan, ErrorCode::NotSupported, "two sizes");
}

TEST_F(ExportCopyTest, ReorderedFramesKeepTheirTimes) {
    const auto times = [](const QString& path, double factor) {
        std::vector<double> shown;
        for (const QByteArray& line : ffprobe(path, "v", "packet=pts_time").split('\n'))
            shown.push_back(line.split(',').first().toDouble() * factor);
        return shown;
    };
    constexpr char kPyramid[] = "-an -c:v libx264 -bf 3 -x264-params b-adapt=0:b-pyramid=normal ";
    // Without the first decoding times, and with decoding times behind those of presentation.
    for (const auto& [name, more] :
         {std::pair("b.mkv", "-r 16"),
          std::pair("b.mp4", "-frames:v 5 -movflags negative_cts_offsets")}) {
        const QString source = make(name, QByteArray(kPyramid) + more);
        const std::vector<double> wanted = times(source, 1);
        for (const double speed : {1.0, 0.5, 0.2}) {
            ExportPlan plan = copyOf(source);
            plan.video->segments = {segment(source, 0, 3.2, 0, speed)};
            plan.audio.reset();
            exported(plan);
            EXPECT_EQ(decoded(m_out), decoded(source)) << name << speed;
            const std::vector<double> shown = times(m_out, speed);
            ASSERT_EQ(shown.size(), wanted.size()) << name << speed;
            for (std::size_t i = 0; i < shown.size(); ++i)
                EXPECT_NEAR(shown[i] - shown[0], wanted[i] - wanted[0], 0.0001) << name << i;
        }
    }
}

TEST_F(ExportCopyTest, LeavesOutAudioOfWhichNothingIsSent) {
    const QByteArray whole = testkit::TempDir::read(make("a.ts", kVideo));
    QByteArray silent;
    for (qsizetype at = 0; at < whole.size(); at += 188)
        if (((whole[at + 1] & 0x1F) << 8 | static_cast<quint8>(whole[at + 2])) != 0x101)
            silent += whole.mid(at, 188);
    const QString source = m_dir.write("silent.ts", silent);
    for (const ExportMode mode : {ExportMode::Copy, ExportMode::Encode}) {
        ExportPlan plan = copyOf(source);
        plan.audio->mode = mode;
        EXPECT_THAT(exported(plan), testing::ElementsAre(says(kAudioLeftOut)));
        EXPECT_EQ(ffprobe(m_out, "v", "stream=nb_frames"), "75");
    }
}

TEST_F(ExportCopyTest, CarriesHeaderDatesAndNothingElse) {
    const QString source =
        make("a.mov", "-metadata title=Name -metadata creation_time=2019-03-04T05:06:07Z "
                      "-c:v libx264 -c:a aac");
    ExportPlan plan = planFor(source);
    plan.headerDatesOf = source;
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream_tags=creation_time"), "2019-03-04T05:06:07.000000Z");
    EXPECT_EQ(ffprobe(m_out, "v", "format_tags=creation_time,title,encoder"),
              "2019-03-04T05:06:07.000000Z");
    plan.headerDatesOf.clear();
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "format_tags=creation_time"), "");
    // The same language has one name in MP4 files and another in QuickTime movies.
    plan = planFor(make("de.mp4", "-c:v libx264 -c:a aac -metadata:s:a language=deu"));
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "a", "stream_tags=language"), "deu");
    plan.container = ExportContainer::QuickTimeMovie;
    exported(plan, "out.mov");
    EXPECT_EQ(ffprobe(m_out, "a", "stream_tags=language"), "ger");
}

TEST_F(ExportCopyTest, FailsPlainlyAndLeavesNothing) {
    const QString source = make("a.mp4", kVideo);
    const QString audioOnly = make("s.m4a", "-vn -c:a aac");
    const QString text = m_dir.write("t.mp4", "no video at all");
    expectFailure(planFor(m_dir.path("none.mp4")), ErrorCode::NotFound, "missing");
    expectFailure(planFor(audioOnly), ErrorCode::NotSupported, "no video");
    const auto asText = run(planFor(text));
    ASSERT_FALSE(asText);
    EXPECT_FALSE(QFileInfo::exists(m_out));

    ExportPlan plan = planFor(source);
    plan.video->segments[0].source.duration = kCMTimeZero;
    expectFailure(plan, ErrorCode::InvalidArgument, "no duration");
    plan = planFor(source);
    plan.video->segments.push_back(segment(source, 0, 3, 1));
    expectFailure(plan, ErrorCode::InvalidArgument, "overlap");
    plan.video->segments[1] = segment(source, 0, 3, 1e6);
    expectFailure(plan, ErrorCode::LimitExceeded, "days of black");

    // Nothing at all of the file lies there.
    plan = planFor(source);
    plan.video->segments = plan.audio->segments = {segment(source, 10, 12)};
    expectFailure(plan, ErrorCode::InvalidData, "beyond the end");
    plan.audio->volume = 0;
    expectFailure(plan, ErrorCode::InvalidData, "beyond the end, silent");

    const auto onto = m_engine->runExport(planFor(source), source, {}, {});
    ASSERT_FALSE(onto);
    EXPECT_TRUE(QFileInfo::exists(source));

    // An absurd length that no one can check: what is there is taken.
    ExportPlan endless = planFor(make("e.mkv", kVideo), 1e6);
    exported(endless);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=nb_frames"), "75");
}

TEST_F(ExportCopyTest, SaysWhatCannotBeCopied) {
    const QString source = make("a.mp4", "-c:v libx264 -bf 0 -c:a aac");
    QByteArray bytes = testkit::TempDir::read(source);
    const auto refused = [&](MessageCode why) {
        const auto done = run(copyOf(m_dir.write("b.mp4", bytes)), "out.mov");
        ASSERT_FALSE(done) << why.id;
        EXPECT_THAT(done.error().detail, says(why));
    };
    bytes.replace("avc1", "xyz1");
    refused(kUnknownVideoCodec);

    // A second segment in the edit list of the video; the header stands behind all that it points
    // to.
    bytes = testkit::TempDir::read(source);
    const qsizetype elst = bytes.indexOf("elst");
    const auto add = [&](qsizetype at, quint32 value) {
        const auto old = qFromBigEndian<quint32>(bytes.constData() + at);
        qToBigEndian(old + value, bytes.data() + at);
    };
    constexpr quint32 kEntry = 12;
    for (const char* box : {"moov", "trak", "edts", "elst"})
        add(bytes.lastIndexOf(box, elst) - 4, kEntry);
    add(elst + 8, 1);
    const QByteArray first = bytes.mid(elst + 12, kEntry);
    bytes.insert(elst + 12 + kEntry, first);
    qToBigEndian<quint32>(600, bytes.data() + elst + 12);
    qToBigEndian<quint32>(600, bytes.data() + elst + 12 + kEntry);
    refused(kEditListTooComplex);
}

TEST_F(ExportCopyTest, StopsWhenCancelled) {
    const QString source = make("a.mp4", kVideo, "testsrc2=d=20:s=320x240:r=25");
    std::vector<double> reported;
    m_progress = [&](double part) {
        reported.push_back(part);
        return part < 0.3;
    };
    expectFailure(planFor(source, 20), ErrorCode::Cancelled, "cancelled");
    m_progress = [&](double part) {
        reported.push_back(part);
        return true;
    };
    reported.clear();
    exported(planFor(source, 20));
    EXPECT_TRUE(std::is_sorted(reported.begin(), reported.end()));
    EXPECT_GT(reported.size(), 3u);
    EXPECT_EQ(reported.back(), 1);
}

TEST_F(ExportCopyTest, GoesOnPastDamageButNotPastABreak) {
    const QString source = make("a.mp4", "-movflags +faststart -c:v libx264 -g 10 -c:a aac");
    QByteArray bytes = testkit::TempDir::read(source);
    const qsizetype data = bytes.indexOf("mdat");
    const QString torn = m_dir.write("torn.mp4", bytes.left(bytes.size() * 2 / 3));
    expectFailure(planFor(torn), ErrorCode::InvalidData, "torn");

    for (qsizetype at = data + 20'000; at < data + 24'000; ++at)
        bytes[at] = '\x5a';
    const QString hurt = m_dir.write("hurt.mp4", bytes);
    EXPECT_THAT(exported(planFor(hurt)), testing::Contains(says(kDamagedVideoPackets)));
    EXPECT_NEAR(ffprobe(m_out, "v", "stream=duration").toDouble(), 3, 0.2);

    // A damaged packet of audio in a stream of such, which no video can hold.
    const QString stream = make("a.ts", "-c:v libx264 -c:a aac -b:a 256k");
    bytes = testkit::TempDir::read(stream);
    for (qsizetype at = 188 * 40; at + 188 * 3 < bytes.size(); at += 188 * 60)
        std::fill_n(bytes.begin() + at + 4, 188 * 3 - 4, '\x5a');
    EXPECT_THAT(exported(copyOf(m_dir.write("b.ts", bytes)), "out.mov"),
                testing::Contains(says(kDamagedPackets)));

    // A whole video of 3 s, whose container counts from zero to the end: 103 s.
    exported(planFor(make("late.mkv", "-output_ts_offset 100 -c:v libx264 -c:a aac"), 103));
    EXPECT_EQ(ffprobe(m_out, "v", "stream=nb_frames"), "75");
    // A recording whose clock of 33 bits is about to run over: the library begins below zero.
    exported(planFor(make("clock.ts", "-output_ts_offset 95400 -c:v libx264 -c:a aac")));
    EXPECT_EQ(ffprobe(m_out, "v", "stream=nb_frames"), "75");

    bytes = testkit::TempDir::read(source);
    for (qsizetype at = data + 8; at < bytes.size(); ++at)
        bytes[at] = '\x5a';
    const QString gone = m_dir.write("gone.mp4", bytes);
    expectFailure(planFor(gone), ErrorCode::InvalidData, "all damaged");
}

TEST_F(ExportCopyTest, ReportsAFullDisk) {
    const QString small = m_dir.path("small");
    QDir().mkpath(small);
    if (geteuid() != 0 || mount("none", small.toUtf8().constData(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "needs the right to mount";
    const QString source = make("a.mp4", kVideo, "testsrc2=d=3:s=320x240:r=25");
    for (const bool first : {false, true}) {
        ExportPlan plan = planFor(source);
        plan.moovFirst = first;
        const QString out = small + u"/out.mp4"_s;
        const auto done = m_engine->runExport(plan, out, {}, {});
        EXPECT_FALSE(done);
        EXPECT_TRUE(done || done.error().code == ErrorCode::NoSpace) << done.error().text();
        EXPECT_FALSE(QFileInfo::exists(out));
    }
    umount(small.toUtf8().constData());
}

} // namespace clipheave::platform
