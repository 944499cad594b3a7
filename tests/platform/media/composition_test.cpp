// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/export/export_planning.h"
#include "platform/media/model/frame_rotation.h"
#include "tests/testkit/media.h"

#include <numbers>

namespace {

using namespace clipheave::platform;
using testing::ElementsAre;

const QString kVideo = QString::fromUtf16(AVMediaTypeVideo);
const QString kAudio = QString::fromUtf16(AVMediaTypeAudio);

/// A clip of one second, 96x64 pixels stored, shown twice as wide, with AAC.
class Compositions : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_dir = new testkit::TempDir;
        testkit::ffmpeg("-f lavfi -i testsrc2=size=96x64:rate=10:duration=1 -f lavfi "
                        "-i sine=440:duration=1 -vf setsar=2 -c:v libx264 -c:a aac",
                        {s_dir->path("clip.mp4")});
    }
    static void TearDownTestSuite() { delete s_dir; }

    Compositions() : m_clip(*AVURLAsset::assetWithPath(s_dir->path("clip.mp4"))) {}

    [[nodiscard]] static CMTimeRange range(int start, int duration) {
        return CMTimeRangeMake(CMTimeMake(start, 1), CMTimeMake(duration, 1));
    }
    /// Inserts the whole seconds of `source` at `at`.
    void insert(AVMutableCompositionTrack& track, CMTimeRange source, int at) const {
        const auto inserted = track.insertTimeRange_ofTrack_atTime(
            source, m_clip, tracksWithMediaType(m_clip, track.mediaType()).front(),
            CMTimeMake(at, 1));
        ASSERT_TRUE(inserted) << inserted.error().text();
    }
    /// "source start+duration > target start+duration" of each segment, in seconds.
    [[nodiscard]] static QStringList segments(const std::vector<ExportSegment>& list) {
        QStringList texts;
        for (const ExportSegment& segment : list)
            texts.append(u"%1+%2 > %3+%4"_s.arg(CMTimeGetSeconds(segment.source.start))
                             .arg(CMTimeGetSeconds(segment.source.duration))
                             .arg(CMTimeGetSeconds(segment.target.start))
                             .arg(CMTimeGetSeconds(segment.target.duration)));
        return texts;
    }
    [[nodiscard]] ExportOrder order(const char16_t* preset) const {
        ExportOrder made;
        made.asset = m_clip;
        made.presetName = QString::fromUtf16(preset);
        return made;
    }
    AVURLAsset m_clip;

private:
    static inline testkit::TempDir* s_dir = nullptr;
};

TEST_F(Compositions, AnInsertionInsideATrackSplitsItAndMovesTheRest) {
    AVMutableComposition composition;
    auto& track = composition.addMutableTrackWithMediaType(kVideo);
    insert(track, range(0, 10), 0);
    insert(track, range(0, 20), 10);
    insert(track, range(0, 5), 20);
    EXPECT_THAT(segments(track.segments()),
                ElementsAre(u"0+10 > 0+10", u"0+10 > 10+10", u"0+5 > 20+5", u"10+10 > 25+10"));
    insert(track, range(3, 1), 40); // beyond the end: a gap before it
    EXPECT_EQ(CMTimeGetSeconds(composition.duration()), 41);
    EXPECT_EQ(track.sourceTracks().size(), track.segments().size());

    const auto wrong = track.insertTimeRange_ofTrack_atTime(
        range(0, 1), m_clip, tracksWithMediaType(m_clip, kAudio).front(), kCMTimeZero);
    EXPECT_FALSE(wrong) << "audio in a video track";
    EXPECT_FALSE(track.insertTimeRange_ofTrack_atTime(
        range(0, 0), m_clip, tracksWithMediaType(m_clip, kVideo).front(), kCMTimeZero));
}

TEST_F(Compositions, ScalingStretchesWhatLiesInTheRange) {
    AVMutableComposition composition;
    auto& track = composition.addMutableTrackWithMediaType(kVideo);
    insert(track, range(0, 10), 0);
    composition.scaleTimeRange_toDuration(range(2, 4), CMTimeMake(8, 1));
    EXPECT_THAT(segments(track.segments()), ElementsAre(u"0+2 > 0+2", u"2+4 > 2+8", u"6+4 > 10+4"));
    insert(track, range(0, 1), 4); // cuts a stretched segment where the video is at 3 s
    EXPECT_THAT(segments(track.segments()),
                ElementsAre(u"0+2 > 0+2", u"2+1 > 2+2", u"0+1 > 4+1", u"3+3 > 5+6", u"6+4 > 11+4"));
}

TEST_F(Compositions, WhatIsNotCarriedOverIsNamedFileByFile) {
    const testkit::TempDir dir;
    const QString list =
        dir.write("list.txt", ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=500\n"
                              "title=One\n");
    const QString words = dir.write("words.srt", "1\n00:00:00,000 --> 00:00:01,000\nHello\n");
    const auto assetOf = [&](const char* name, const char* options) {
        const QString path = dir.path(name);
        testkit::ffmpeg(QByteArray("-i % -i % -i % ") + options + " -c copy",
                        {m_clip.path(), list, words, path});
        return *AVURLAsset::assetWithPath(path);
    };
    const AVURLAsset chaptered = assetOf("chapters.mp4", "-map 0 -map_chapters 1");
    const AVURLAsset rich = assetOf("rich.mkv", "-map 0 -map 0:a -map 2 -map_chapters 1");
    const auto notesOf = [&](const std::vector<AVURLAsset>& assets, double factor) {
        AVMutableComposition composition;
        for (const QString& type : {kVideo, kAudio}) {
            auto& track = composition.addMutableTrackWithMediaType(type);
            for (const AVURLAsset& asset : assets)
                EXPECT_TRUE(track.insertTimeRange_ofTrack_atTime(
                    range(0, 1), asset, tracksWithMediaType(asset, type).front(),
                    track.duration()));
        }
        composition.scaleTimeRange_toDuration(
            CMTimeRangeMake(kCMTimeZero, composition.duration()),
            CMTimeMultiplyByFloat64(composition.duration(), factor));
        ExportOrder put;
        put.composition = composition;
        put.presetName = QString::fromUtf16(AVAssetExportPresetHighestQuality);
        const auto planned = planExport(put);
        EXPECT_TRUE(planned);
        return planned ? testkit::textsOf(planned->notes) : QStringList();
    };
    EXPECT_TRUE(notesOf({chaptered}, 1).isEmpty()) << "its track of titles is its chapters";
    EXPECT_THAT(notesOf({chaptered}, 2), ElementsAre(u"chapters not carried over"));
    EXPECT_THAT(notesOf({rich}, 1), ElementsAre(u"audio tracks not carried over: 1",
                                                u"data tracks not carried over: 1"));
    EXPECT_THAT(notesOf({m_clip, rich, chaptered}, 1),
                ElementsAre(u"audio tracks of file not carried over: 1, rich.mkv",
                            u"data tracks of file not carried over: 1, rich.mkv",
                            u"chapters of file not carried over: rich.mkv",
                            u"chapters of file not carried over: chapters.mp4"));
}

TEST_F(Compositions, PresetsChooseSizesCodecsAndRates) {
    auto planned = planExport(order(AVAssetExportPresetHighestQuality));
    ASSERT_TRUE(planned);
    EXPECT_TRUE(planned->plan.video->size.isEmpty()) << "the size of the source";
    EXPECT_EQ(planned->plan.video->crf, 18);
    EXPECT_EQ(planned->plan.audio->bitRate, 192'000);
    EXPECT_EQ(planned->plan.audio->mode, ExportMode::Encode);

    planned = planExport(order(AVAssetExportPresetLowQuality));
    EXPECT_EQ(planned->plan.audio->channels, 1);
    EXPECT_TRUE(planned->plan.video->size.isEmpty()) << "192x64 is within 224x128";

    planned = planExport(order(AVAssetExportPresetAppleM4A));
    EXPECT_FALSE(planned->plan.video);
    EXPECT_EQ(planned->plan.audio->mode, ExportMode::Copy) << "it is AAC already";

    ExportOrder silent = order(AVAssetExportPresetHighestQuality);
    silent.audioMix.emplace().inputParameters.emplace_back().setVolume_atTime(0, kCMTimeZero);
    EXPECT_EQ(planExport(silent)->plan.audio->volume, 0);

    const auto unknown = planExport(order(u"High video quality"));
    EXPECT_EQ(unknown.error().code, ErrorCode::InvalidArgument);

    ExportOrder cut = order(AVAssetExportPresetHighestQuality);
    cut.timeRange = CMTimeRangeMake(kCMTimeZero, CMTimeMake(1, 4));
    EXPECT_THAT(segments(planExport(cut)->plan.video->segments), ElementsAre(u"0+0.25 > 0+0.25"));
    cut.timeRange = range(0, 5); // longer than the video
    EXPECT_NEAR(CMTimeGetSeconds(planExport(cut)->plan.video->segments.front().target.duration), 1,
                0.05);
}

TEST_F(Compositions, ASlowerPassthroughCopiesTheVideoAndEncodesTheAudio) {
    ExportOrder slow;
    slow.presetName = QString::fromUtf16(AVAssetExportPresetPassthrough);
    insert(slow.composition.addMutableTrackWithMediaType(kVideo), range(0, 1), 0);
    insert(slow.composition.addMutableTrackWithMediaType(kAudio), range(0, 1), 0);
    EXPECT_EQ(planExport(slow)->plan.audio->mode, ExportMode::Copy);
    slow.composition.scaleTimeRange_toDuration(range(0, 1), CMTimeMake(2, 1));
    const auto planned = planExport(slow);
    EXPECT_EQ(planned->plan.video->mode, ExportMode::Copy);
    EXPECT_EQ(planned->plan.audio->mode, ExportMode::Encode);
    EXPECT_THAT(segments(planned->plan.audio->segments), ElementsAre(u"0+1 > 0+2"));
}

TEST(Transforms, RightAnglesBecomeRotations) {
    constexpr double kPi = std::numbers::pi;
    const CGAffineTransform mirror{-1, 0, 0, 1, 0, 0};
    for (const int degrees : {0, 90, 180, 270}) {
        const auto rotation = CGAffineTransformMakeRotation(degrees * kPi / 180);
        const auto found = rotationOfTransform(
            CGAffineTransformConcat(rotation, CGAffineTransformMakeTranslation(640, 360)));
        ASSERT_TRUE(found);
        EXPECT_EQ(found->degrees, degrees);
        EXPECT_FALSE(found->mirrored);
        const auto mirrored = rotationOfTransform(CGAffineTransformConcat(mirror, rotation));
        EXPECT_EQ(mirrored->degrees, degrees);
        EXPECT_TRUE(mirrored->mirrored);
    }
    EXPECT_FALSE(rotationOfTransform(CGAffineTransformMakeRotation(0.3)));
    EXPECT_FALSE(rotationOfTransform({0, 0, 0, 0, 0, 0}));
    EXPECT_FALSE(rotationOfTransform({1, 0, 1, 0, 0, 0})) << "flattened";
}

TEST(Times, AreExactAndNeverOverflow) {
    EXPECT_EQ(CMTimeCompare(CMTimeMake(1, 3), CMTimeMake(333333333, 1000000000)), 1);
    EXPECT_EQ(CMTimeCompare(CMTimeAdd(CMTimeMake(1, 3), CMTimeMake(1, 6)), CMTimeMake(1, 2)), 0);
    EXPECT_EQ(CMTimeGetSeconds(CMTimeMultiplyByFloat64(CMTimeMake(60, 1), 0.5)), 30);
    const CMTime most = CMTimeMake(INT64_MAX, 1);
    EXPECT_EQ(CMTimeAdd(most, most).value, INT64_MAX);
    EXPECT_EQ(CMTimeSubtract(kCMTimeZero, CMTimeMake(INT64_MIN, 1)).value, INT64_MAX);
    EXPECT_EQ(CMTimeMakeWithSeconds(1e300, 600).value, INT64_MAX);
    EXPECT_EQ(CMTimeMakeWithSeconds(std::nan(""), 600).value, 0);
}

} // namespace
