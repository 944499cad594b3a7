// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/engine/export_fixture.h"

#include <QtEndian>

#include <algorithm>

namespace clipheave::platform {

namespace {

class ExportVideoTest : public ExportTest {};

constexpr char kH264[] = "-c:v libx264 -c:a aac -ac 2";

} // namespace

TEST_F(ExportVideoTest, RotatesFramesAtAConstantRate) {
    const QString source = make("a.mp4", kH264);
    const struct {
        int degrees;
        const char* filter;
    } cases[] = {
        {0, "null"}, {90, "transpose=clock"}, {180, "hflip,vflip"}, {270, "transpose=cclock"}};
    for (const auto& [degrees, filter] : cases) {
        ExportPlan plan = planFor(source);
        plan.video->rotations = {degrees};
        plan.video->size = degrees % 180 == 0 ? QSize(192, 128) : QSize(128, 192);
        plan.video->frameDuration = CMTimeMake(1, 30);
        plan.moovFirst = true;
        EXPECT_EQ(exported(plan), Notes()) << degrees;
        EXPECT_GT(likeness(m_out, source, (QByteArray("fps=30,") + filter).constData()), 0.98)
            << degrees;
        EXPECT_EQ(ffprobe(m_out, "v", "stream=codec_name,r_frame_rate,duration,nb_frames"),
                  "h264,30/1,3.000000,90");
        EXPECT_EQ(ffprobe(m_out, "a", "stream=codec_name,channels,duration"), "aac,2,3.000000");
    }
    QFile file(m_out);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    EXPECT_LT(bytes.indexOf("moov"), bytes.indexOf("mdat"));
}

TEST_F(ExportVideoTest, MirrorsBeforeItRotates) {
    const QString source = make("a.mp4", kH264);
    ExportPlan plan = planFor(source);
    plan.video->mirrored = {true};
    exported(plan);
    EXPECT_GT(likeness(m_out, source, "hflip"), 0.98);
    plan.video->rotations = {90};
    exported(plan);
    EXPECT_GT(likeness(m_out, source, "hflip,transpose=clock"), 0.98);
}

TEST_F(ExportVideoTest, AVideoShorterThanAFrameKeepsItsFrame) {
    const QString source = make("a.mov", "-c:v libx264 -c:a aac", "testsrc2=d=0.01:s=192x128:r=100",
                                "sine=d=0.01:r=44100");
    ExportPlan plan = planFor(source, 0.01);
    plan.video->frameDuration = CMTimeMake(1, 30);
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=nb_frames"), "1");
}

TEST_F(ExportVideoTest, KeepsTheTimesOfAVariableRateAndTheDisplayMatrix) {
    const QString source = make("a.mov", "-vf select='not(mod(n\\,3))+between(n\\,30\\,60)' "
                                         "-vsync vfr -c:v libx264 -bf 2 -c:a aac");
    ExportPlan plan = planFor(source);
    plan.container = ExportContainer::QuickTimeMovie;
    plan.video->preferredTransform = {0, 1, 0, -1, 0, 0, 128, 0, 1};
    exported(plan);
    const auto times = [](const QString& path) { return ffprobe(path, "v", "frame=pts_time"); };
    EXPECT_EQ(times(m_out), times(source));
    EXPECT_EQ(ffprobe(m_out, "v", "format=duration"), ffprobe(source, "v", "format=duration"));
    EXPECT_GT(likeness(m_out, source, "null"), 0.98);
    EXPECT_THAT(ffprobe(m_out, "v", "stream_side_data=rotation").toStdString(),
                testing::HasSubstr("-90"));
}

TEST_F(ExportVideoTest, TakesSourcesOfManyKinds) {
    const struct {
        const char *name, *options, *expected, *filter;
    } cases[] = {
        {"a.mkv", "-c:v libx264 -c:a aac", "192,128,1:1,75", "null"},
        {"a.avi", "-c:v mpeg4 -q:v 2 -c:a libmp3lame", "192,128,1:1,75", "null"},
        {"a.webm", "-c:v libvpx -b:v 2M -c:a libopus", "192,128,1:1,75", "null"},
        {"a.ts", "-c:v libx264 -c:a aac", "192,128,1:1,75", "null"},
        {"a.mpg", "-c:v mpeg2video -q:v 2 -c:a mp2", "192,128,1:1,75", "null"},
        {"odd.mkv", "-vf crop=177:99:0:0:exact=1 -c:v ffv1 -c:a aac", "176,98,1:1,75",
         "crop=176:98:0:0"},
        {"wide.mp4", "-vf setsar=4/3 -c:v libx264 -c:a aac", "192,128,4:3,75", "null"},
    };
    for (const auto& [name, options, expected, filter] : cases) {
        const QString source = make(name, options);
        exported(planFor(source, 3.1)); // to their ends
        EXPECT_EQ(ffprobe(m_out, "v", "stream=width,height,sample_aspect_ratio,nb_frames"),
                  expected)
            << name;
        EXPECT_GT(likeness(m_out, source, filter), 0.98) << name;
        EXPECT_GT(correlation(samples(m_out), samples(source)), 0.95) << name;
        EXPECT_NEAR(ffprobe(m_out, "v", "stream=duration").toDouble(), 3, 0.041) << name;
    }
}

TEST_F(ExportVideoTest, FitsIntoSquarePixelsWithBars) {
    const QString source = make("a.mp4", "-vf setsar=4/3 -c:v libx264 -c:a aac");
    ExportPlan plan = planFor(source);
    plan.video->size = {128, 128}; // shown as 256x128, fitted to 128x64
    plan.video->bitRate = 400'000;
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=width,height,sample_aspect_ratio"), "128,128,1:1");
    EXPECT_GT(likeness(m_out, source, "scale=128:64:flags=bicubic,pad=128:128:0:32,setsar=1"),
              0.95);
    // The bars are black in each range and depth.
    plan.video->bitRate = 0;
    const struct {
        const char *name, *options, *corner;
    } cases[] = {
        {"tv.mp4", "", "10"},
        {"pc.mp4", "-vf scale=out_range=pc -pix_fmt yuvj420p", "00"},
        {"tv10.mp4", "-pix_fmt yuv420p10le", "4000"},
        {"pc10.mp4", "-vf scale=out_range=pc -pix_fmt yuv420p10le -color_range pc", "0000"}};
    for (const auto& [name, options, corner] : cases) {
        plan.video->segments.front().path =
            make(name, (QByteArray("-c:v libx264 -c:a aac ") + options).constData());
        exported(plan);
        const QString raw = m_dir.path("corner.yuv");
        testkit::ffmpeg("-i % -frames:v 1 -vf crop=8:8:0:0 -f rawvideo", {m_out, raw});
        const QByteArray first = testkit::TempDir::read(raw).toHex();
        EXPECT_TRUE(first.startsWith(corner)) << name << ' ' << first.left(8);
    }
}

TEST_F(ExportVideoTest, KeepsColoursAndDepthSoThatNothingIsWashedOut) {
    const struct {
        const char *name, *options, *expected, *filter;
        MessageCode note;
        const char* bits = nullptr;
        std::int64_t bitRate = 0;
    } cases[] = {
        {"full.mp4",
         "-vf setparams=colorspace=bt709:color_trc=bt709 -pix_fmt yuvj420p -c:v libx264",
         "High,yuvj420p,pc,bt709,bt709,unknown", "null", MessageCode()},
        {"sdr10.mp4", "-pix_fmt yuv420p10le -c:v libx264",
         "High 10,yuv420p10le,unknown,unknown,unknown,unknown", "null", kBitDepthKept, "10"},
        {"sdr10.mp4", "-pix_fmt yuv420p10le -c:v libx264",
         "High,yuv420p,unknown,unknown,unknown,unknown", "null", kBitDepthBecame8, "10", 2'000'000},
        {"full10.mov",
         "-vf scale=out_range=pc,setparams=range=pc:colorspace=bt709:color_trc=bt709:"
         "color_primaries=bt709 -pix_fmt yuv422p10le -c:v libx264",
         "High 10,yuv420p10le,pc,bt709,bt709,bt709", "null", kBitDepthKept, "10"},
        {"full10.mov",
         "-vf scale=out_range=pc,setparams=range=pc:colorspace=bt709:color_trc=bt709:"
         "color_primaries=bt709 -pix_fmt yuv422p10le -c:v libx264",
         "High,yuvj420p,pc,bt709,bt709,bt709", "null", kBitDepthBecame8, "10", 2'000'000},
        {"twelve.mkv", "-pix_fmt yuv444p12le -c:v ffv1",
         "High 10,yuv420p10le,unknown,unknown,unknown,unknown", "null", kBitDepthBecame10, "12"},
        {"rgb.mov", "-pix_fmt rgb24 -c:v png", "High,yuv420p,tv,bt709,unknown,unknown",
         "scale=out_color_matrix=bt709:out_range=tv", MessageCode()},
        {"rgb48.mov", "-pix_fmt rgb48be -c:v png", "High 10,yuv420p10le,tv,bt709,unknown,unknown",
         "scale=out_color_matrix=bt709:out_range=tv", kBitDepthBecame10, "16"},
        {"hdr.mov",
         "-vf setparams=range=tv:colorspace=bt2020nc:color_trc=smpte2084:color_primaries=bt2020 "
         "-pix_fmt yuv420p10le -c:v libx265 -x265-params log-level=none",
         "High 10,yuv420p10le,tv,bt2020nc,smpte2084,bt2020", "null", kHdrKept},
    };
    for (const auto& [name, options, expected, filter, note, bits, bitRate] : cases) {
        const QString source = make(name, (QByteArray(options) + " -an").constData());
        ExportPlan plan = planFor(source);
        plan.audio.reset();
        plan.video->bitRate = bitRate;
        const Notes notes = exported(plan);
        EXPECT_EQ(notes.value(0).code(), note) << name;
        EXPECT_EQ(notes.value(0).arguments().value(0), QString::fromLatin1(bits)) << name;
        EXPECT_EQ(
            ffprobe(
                m_out, "v",
                "stream=profile,pix_fmt,color_range,color_space,color_transfer,color_primaries"),
            expected)
            << name;
        EXPECT_GT(likeness(m_out, source, filter), 0.98) << name;
    }
    // Both kinds in one video: HDR is tone mapped, and neither is dark or pale.
    const QString standard = make("b.mp4", "-c:v libx264 -an");
    ExportPlan plan = planFor(m_dir.path("hdr.mov"));
    plan.audio.reset();
    plan.video->segments.push_back(segment(standard, 0, 3, 3));
    EXPECT_THAT(exported(plan), testing::Contains(says(kHdrBecameSdr)));
    EXPECT_EQ(ffprobe(m_out, "v", "stream=pix_fmt,color_transfer,nb_frames"), "yuv420p,bt709,150");
}

TEST_F(ExportVideoTest, KeepsFieldsWhereTheFrameIsUntouchedElseDeinterlaces) {
    const QString source = make("a.mpg", "-c:v mpeg2video -q:v 2 -flags +ildct+ilme -top 1 -an");
    ExportPlan plan = planFor(source);
    plan.audio.reset();
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=field_order,nb_frames"), "tt,75");
    plan.video->rotations = {90};
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=width,height,field_order,nb_frames"),
              "128,192,progressive,75");
}

TEST_F(ExportVideoTest, JoinsSegmentsOfDifferentFilesAroundASplit) {
    const QString first = make("a.mp4", kH264);
    const QString second = make("b.webm", "-c:v libvpx -b:v 2M -c:a libopus -ac 1",
                                "smptebars=d=3:s=128x128:r=30", "sine=d=3:f=880:r=48000");
    // The first second of one, all of the other, the rest of the first; then a second of nothing
    // and one more.
    const std::vector<ExportSegment> segments{segment(first, 0, 1), segment(second, 0, 3, 1),
                                              segment(first, 1, 3, 4), segment(first, 0.5, 1.5, 7)};
    ExportPlan plan = planFor(first);
    plan.video->segments = plan.audio->segments = segments;
    plan.audio->channels = 1;
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=width,height,duration"), "192,128,8.000000");
    EXPECT_EQ(ffprobe(m_out, "a", "stream=sample_rate,channels,duration"), "44100,1,8.000000");
    const struct {
        const char* range;
        QString source;
        const char* filter;
    } cases[] = {
        {"0:0.99", first, "trim=0:0.99"},       {"0.99:3.99", second, "pad=192:128:32:0"},
        {"3.99:5.99", first, "trim=0.99:3"},    {"5.99:6.99", first, "lutyuv=y=16:u=128:v=128"},
        {"7.001:7.99", first, "trim=0.5:1.49"},
    };
    for (const auto& [range, source, filter] : cases) {
        const QString part = m_dir.path("part.mkv");
        testkit::ffmpeg(QByteArray("-i % -an -vf trim=") + range + " -c:v ffv1 -vsync passthrough",
                        {m_out, part});
        EXPECT_GT(likeness(part, source, filter), 0.97) << range;
    }
    const std::vector<float> audio = samples(m_out);
    const auto loudest = [&](double from, double to) {
        float most = 0;
        for (auto i = static_cast<std::size_t>(from * 8000);
             i < static_cast<std::size_t>(to * 8000) && i < audio.size(); ++i)
            most = std::max(most, std::abs(audio[i]));
        return most;
    };
    EXPECT_LT(loudest(6.05, 6.95), 0.001F); // the gap
    EXPECT_GT(loudest(7.05, 7.95), 0.05F);
    EXPECT_GT(loudest(1.05, 3.9), 0.05F);
}

/// Where frames follow each other faster at one end than at the other.
TEST_F(ExportVideoTest, TheLastFrameIsShownWholeWhateverTheRateWasBefore) {
    const QString slow = make("a.mp4", kH264, "testsrc2=d=3:s=192x128:r=10");
    const QString fast = make("b.mp4", kH264, "testsrc2=d=3:s=192x128:r=30");
    const struct {
        ExportMode mode;
        std::vector<ExportSegment> segments;
        QByteArray duration;
    } cases[] = {
        // The last one may follow others in decoding or not.
        {ExportMode::Encode, {segment(slow, 0, 3), segment(fast, 0, 3, 3)}, "6.000000"},
        {ExportMode::Encode, {segment(slow, 0, 3), segment(fast, 0, 2.7, 3)}, "5.700000"},
        {ExportMode::Encode, {segment(fast, 0, 3), segment(slow, 0, 3, 3)}, "6.000000"},
        // Black until the video begins, as where a clip without frames comes first.
        {ExportMode::Encode, {segment(fast, 0, 3, 3)}, "6.000000"},
        {ExportMode::Copy, {segment(fast, 0, 3, 0, 0.5), segment(fast, 0, 3, 6, 2)}, "7.500000"},
        {ExportMode::Copy, {segment(fast, 0, 3, 0, 2), segment(fast, 0, 3, 1.5, 0.5)}, "7.500000"},
    };
    for (const auto& [mode, segments, duration] : cases) {
        ExportPlan plan = planFor(slow);
        plan.audio.reset();
        plan.video->mode = mode;
        plan.video->segments = segments;
        exported(plan);
        // That of the edit list and that of the samples.
        EXPECT_EQ(ffprobe(m_out, "v", "format=duration"), duration);
        EXPECT_EQ(ffprobe(m_out, "v", "stream=duration"), duration);
    }
}

TEST_F(ExportVideoTest, CutsToTheFrameAndStretchesTime) {
    const QString source = make("a.mp4", "-c:v libx264 -g 50 -c:a aac");
    ExportPlan plan = planFor(source);
    plan.video->segments = plan.audio->segments = {segment(source, 1.4, 2.6)};
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=duration,nb_frames"), "1.200000,30");
    EXPECT_GT(likeness(m_out, source, "trim=1.4:2.6"), 0.98);
    for (const double end : {1.05, 1.09, 1.13}) { // within a frame
        plan.video->segments = plan.audio->segments = {segment(source, 0, end)};
        exported(plan);
        EXPECT_NEAR(ffprobe(m_out, "v", "stream=duration").toDouble(), end, 0.001);
    }
    plan.video->segments = plan.audio->segments = {segment(source, 0, 3, 0, 0.5)};
    exported(plan);
    EXPECT_EQ(ffprobe(m_out, "v", "stream=duration,nb_frames"), "6.000000,75");
    EXPECT_EQ(ffprobe(m_out, "a", "stream=duration"), "6.000000");
}

TEST_F(ExportVideoTest, OneFrameForALongAudioIsWholeUnlessTheFileIsCut) {
    const QString source = make("still.mkv", "-c:v libx264 -c:a aac",
                                "testsrc2=d=0.04:s=192x128:r=25", "sine=d=90:r=44100");
    EXPECT_EQ(exported(planFor(source, 90)), Notes());
    EXPECT_EQ(ffprobe(m_out, "v", "stream=nb_frames"), "1");
    for (const char* track : {"v", "a"})
        EXPECT_NEAR(ffprobe(m_out, track, "stream=duration").toDouble(), 90, 0.03) << track;
    const QByteArray bytes = testkit::TempDir::read(source);
    const auto cut = run(planFor(m_dir.write("cut.mkv", bytes.left(bytes.size() / 2)), 90));
    ASSERT_FALSE(cut);
    EXPECT_EQ(cut.error().code, ErrorCode::InvalidData);
}

TEST_F(ExportVideoTest, APartOfAStreamEndsWithItsLastFrame) {
    const QString videoFile = make(
        "whole.mp4", "-an -c:v libx264 -g 25 -bf 0 -movflags frag_keyframe+empty_moov -shortest");
    QByteArray part = testkit::TempDir::read(videoFile);
    constexpr std::int64_t kUnits = 12800; // a second
    for (auto at = part.indexOf("tfdt"); at > 0; at = part.indexOf("tfdt", at + 4)) {
        const auto time = qFromBigEndian<std::int64_t>(part.constData() + at + 8);
        part.replace(at + 8, 8, testkit::be(static_cast<std::uint64_t>(time + 10 * kUnits), 8));
    }
    QByteArray ofWhole = part; // whose header has the duration of the stream that it was cut from
    ofWhole.replace(ofWhole.indexOf("mdhd") + 20, 4, testkit::be(48 * kUnits, 4));
    for (const QByteArray& bytes : {part, ofWhole}) {
        const QString source = m_dir.write("part.mp4", bytes);
        ExportPlan plan = planFor(source, 20);
        plan.audio.reset();
        exported(plan);
        EXPECT_EQ(ffprobe(m_out, "v", "stream=duration,nb_frames"), "3.000000,75");
    }
}

TEST_F(ExportVideoTest, GivesRealFilesTheirWholeLength) {
    if (testkit::corpus().isEmpty())
        GTEST_SKIP() << "needs CLIPHEAVE_CORPUS";
    for (const char* name :
         {"media__dolbyVision-hdr.MOV", "photoprism__quicktime-hvc1.mov", "nom-exif__meta.mov",
          "media__sample_shorter_audio.mp4", "libwebm__bbb_480p_vp9_opus_1second.webm",
          "file-type__fixture.ps.mpg", "media__sd-hls0000000000.ts", "exiv2__flame.avi"}) {
        const QString source = testkit::corpus() + u"/video/"_s + QString::fromLatin1(name);
        const double length = ffprobe(source, "v:0", "format=duration").toDouble();
        const auto frames =
            static_cast<double>(ffprobe(source, "v:0", "frame=media_type").count("video"));
        ExportPlan plan = planFor(source, length);
        plan.audio.reset();
        plan.video->size = {64, 64};
        exported(plan);
        EXPECT_NEAR(ffprobe(m_out, "v", "stream=nb_frames").toDouble(), frames, 1) << name;
        EXPECT_NEAR(ffprobe(m_out, "v", "stream=duration").toDouble(), length, 0.15) << name;
    }
}

} // namespace clipheave::platform
