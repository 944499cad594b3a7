// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/export/av_asset_export_session.h"
#include "tests/testkit/media.h"
#include "tests/testkit/tiny_disk.h"

#include <QDir>
#include <QElapsedTimer>

#include <thread>

namespace clipheave::platform {

namespace {

using testing::HasSubstr;
using testing::Not;
using Status = AVAssetExportSessionStatus;

/// Exports that cannot succeed: each says why in plain words and leaves nothing.
class ExportFailures : public testing::Test {
protected:
    void SetUp() override {
        SKIP_WITHOUT("ffmpeg");
        ASSERT_TRUE(QDir().mkpath(out()));
    }
    [[nodiscard]] QString make(const char* name, const char* options, int seconds = 2) const {
        QString path = m_dir.path(name);
        const QByteArray length = QByteArray::number(seconds);
        testkit::ffmpeg("-f lavfi -i testsrc2=s=640x360:r=25:d=" + length +
                            " -f lavfi -i sine=d=" + length + " -pix_fmt yuv420p " + options,
                        {path});
        return path;
    }
    [[nodiscard]] QString out(const char* name = "") const {
        return m_dir.path(u"out/"_s + QString::fromLatin1(name));
    }
    [[nodiscard]] QStringList filesOut() const { return m_dir.files("out"); }
    std::shared_ptr<AVAssetExportSession> start(const QString& source, const char16_t* preset) {
        const auto asset = AVURLAsset::assetWithPath(source);
        EXPECT_TRUE(asset);
        return start(std::make_shared<AVAssetExportSession>(*asset, QString::fromUtf16(preset)));
    }
    std::shared_ptr<AVAssetExportSession> start(std::shared_ptr<AVAssetExportSession> session) {
        session->setOutputPath(out("a.mov"));
        session->setOutputFileType(QString::fromUtf16(AVFileTypeQuickTimeMovie));
        session->exportAsynchronouslyWithCompletionHandler({});
        return session;
    }
    /// The reason, once the export has ended.
    static std::string reasonOf(const std::shared_ptr<AVAssetExportSession>& session) {
        AVAssetExportSession::waitForAllExports();
        EXPECT_EQ(session->status(), Status::Failed);
        std::string reason = session->error().text().toStdString();
        EXPECT_THAT(reason, Not(HasSubstr(".tmp"))) << "that is nobody's file";
        EXPECT_THAT(reason, Not(HasSubstr("FFmpeg")));
        return reason;
    }
    /// Waits until the export writes.
    [[nodiscard]] bool isUnderWay() const {
        QElapsedTimer timer;
        for (timer.start(); timer.elapsed() < 20000;) {
            for (const QFileInfo& file : QDir(out()).entryInfoList(QDir::Files | QDir::Hidden))
                if (file.size() > 0)
                    return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
    testkit::TempDir m_dir;
};

} // namespace

TEST_F(ExportFailures, SayWhichCodecTheContainerDoesNotHold) {
    const struct {
        const char *name, *options, *copied, *slowed;
    } videos[] = {{"vp8.mkv", "-c:v libvpx -deadline realtime -an", "VP8", "VP8"},
                  {"vp9.mkv", "-c:v libvpx-vp9 -deadline realtime -an", "VP9", "VP9"},
                  {"ffv1.mkv", "-c:v ffv1 -c:a flac", "FFV1", "FFV1"}};
    for (const auto& [name, options, copied, slowed] : videos) {
        const QString source = make(name, options, 1);
        const std::string cannot = "mov cannot hold: ";
        EXPECT_THAT(reasonOf(start(source, AVAssetExportPresetPassthrough)),
                    testing::HasSubstr(cannot + copied));
        // The way of a video that is slowed down.
        const auto asset = AVURLAsset::assetWithPath(source);
        AVMutableComposition composition;
        auto& track =
            composition.addMutableTrackWithMediaType(QString::fromUtf16(AVMediaTypeVideo));
        const CMTimeRange whole{kCMTimeZero, {1, 1}};
        ASSERT_TRUE(track.insertTimeRange_ofTrack_atTime(
            whole, *asset, tracksWithMediaType(*asset, track.mediaType()).front(), kCMTimeZero));
        composition.scaleTimeRange_toDuration(whole, {2, 1});
        EXPECT_THAT(reasonOf(start(std::make_shared<AVAssetExportSession>(
                        composition, QString::fromUtf16(AVAssetExportPresetPassthrough)))),
                    testing::HasSubstr(cannot + slowed));
    }
    EXPECT_THAT(filesOut(), testing::IsEmpty());
}

TEST_F(ExportFailures, NoticeThatTheFolderIsGone) {
    const QString source = make("long.mp4", "-c:v libx264 -preset ultrafast -c:a aac", 60);
    for (const bool madeAgain : {false, true}) {
        const auto session = start(source, AVAssetExportPresetHighestQuality);
        ASSERT_TRUE(isUnderWay());
        ASSERT_TRUE(QDir(out()).removeRecursively());
        ASSERT_TRUE(!madeAgain || QDir().mkpath(out()));
        EXPECT_THAT(reasonOf(session),
                    HasSubstr(madeAgain ? "output removed" : "output folder gone"));
        EXPECT_LT(session->progress(), 0.9) << "not at the end of a long encoding";
        EXPECT_THAT(filesOut(), testing::IsEmpty());
        EXPECT_EQ(QDir(out()).exists(), madeAgain);
        ASSERT_TRUE(QDir().mkpath(out()));
    }
    // Under another name it is out of the export's reach, but not what the export began there.
    const auto session = start(source, AVAssetExportPresetHighestQuality);
    ASSERT_TRUE(isUnderWay());
    const QString moved = m_dir.path("moved");
    ASSERT_TRUE(QDir().rename(out(), moved));
    EXPECT_THAT(reasonOf(session), HasSubstr("output folder gone"));
    EXPECT_TRUE(testkit::namesIn(moved).isEmpty());
    // Before it begins.
    EXPECT_THAT(reasonOf(start(source, AVAssetExportPresetHighestQuality)),
                HasSubstr("output folder gone"));
}

TEST_F(ExportFailures, NoticeAFullDiskBeforeAndWhileTheyWrite) {
    const QString source = make("a.mp4", "-c:v libx264 -preset ultrafast -c:a aac", 10);
    const QString packets = make("a.mkv", "-c:v libx264 -preset ultrafast -c:a aac", 10);
    const testkit::TinyDisk disk(out(), "size=400k");
    SKIP_WITHOUT_DISK(disk);
    const auto noRoom = HasSubstr("No space left on device");
    const auto within = start(source, AVAssetExportPresetHighestQuality);
    EXPECT_THAT(reasonOf(within), noRoom);
    EXPECT_GT(within->progress(), 0) << "there was room to begin with";
    const auto copying = start(packets, AVAssetExportPresetPassthrough);
    EXPECT_THAT(reasonOf(copying), noRoom);
    EXPECT_EQ(copying->progress(), 0) << "the size of a copy is known before";
    EXPECT_THAT(filesOut(), testing::IsEmpty());
    m_dir.write("out/filler", QByteArray(396 << 10, 'x'));
    const auto full = start(source, AVAssetExportPresetHighestQuality);
    EXPECT_THAT(reasonOf(full), noRoom);
    EXPECT_EQ(full->progress(), 0) << "before the first frame";
    EXPECT_EQ(filesOut().size(), 1);
}

TEST_F(ExportFailures, LeaveNothingWhenTheyAreCancelled) {
    const QString source = make("long.mp4", "-c:v libx264 -preset ultrafast -c:a aac", 60);
    const QString older = m_dir.write("out/a.mov", "an older output");
    const auto session = start(source, AVAssetExportPresetHighestQuality);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    session->cancelExport();
    AVAssetExportSession::waitForAllExports();
    EXPECT_EQ(session->status(), Status::Cancelled);
    EXPECT_LT(session->progress(), 0.9);
    EXPECT_THAT(filesOut(), testing::ElementsAre(u"a.mov"));
    EXPECT_EQ(testkit::TempDir::read(older), "an older output");
}

} // namespace clipheave::platform
