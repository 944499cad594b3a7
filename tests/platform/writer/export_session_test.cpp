// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/writer/writer_kit.h"

#include "platform/media/export/av_asset_export_session.h"
#include "platform/media/model/media_engine.h"

#include <atomic>
#include <future>
#include <thread>

using namespace testkit;
using namespace writertest;
using Status = AVAssetExportSessionStatus;

namespace {

class Export : public testing::Test {
protected:
    QString makeSource(qsizetype size = 4000) {
        HandMade media;
        media.payload.resize(size, 'x');
        return m_dir.write("source.mp4", media.bytes());
    }
    std::unique_ptr<AVAssetExportSession> session(const QString& source, const QString& target,
                                                  const char16_t* preset) {
        auto asset = AVURLAsset::assetWithPath(source);
        EXPECT_TRUE(asset) << asset.error().text();
        auto made = std::make_unique<AVAssetExportSession>(*asset, QString::fromUtf16(preset));
        made->setOutputPath(target.isEmpty() ? target : m_dir.path(target));
        made->setOutputFileType(QString::fromUtf16(AVFileTypeAppleM4V));
        made->setMetadata(Items{newItem("itsk/%A9nam", u"T"_s)});
        return made;
    }
    static Status exported(AVAssetExportSession& session) {
        std::promise<Status> done;
        session.exportAsynchronouslyWithCompletionHandler(
            [&] { done.set_value(session.status()); });
        const Status seen = done.get_future().get();
        AVAssetExportSession::waitForAllExports();
        return seen;
    }
    TempDir m_dir;
};

TEST_F(Export, GoesThroughItsStatesToAWholeFile) {
    const QString source = makeSource();
    const auto one = session(source, u"t.mp4"_s, AVAssetExportPresetPassthrough);
    EXPECT_EQ(one->status(), Status::Unknown);
    EXPECT_EQ(exported(*one), Status::Completed);
    EXPECT_EQ(one->progress(), 1);
    EXPECT_EQ(shown(readItems(m_dir.path("t.mp4")), {u"itsk/%A9nam"_s}), u"T");
    bool again = false; // one session is one export
    one->exportAsynchronouslyWithCompletionHandler([&] { again = true; });
    AVAssetExportSession::waitForAllExports();
    EXPECT_FALSE(again);
}

TEST_F(Export, RefusesWhatItCannotDo) {
    const QString source = makeSource();
    const QByteArray before = TempDir::read(source);
    const auto codeOf = [&](const char16_t* preset, const QString& target, const char16_t* type) {
        const auto one = session(source, target, preset);
        one->setOutputFileType(QString::fromUtf16(type));
        EXPECT_EQ(exported(*one), Status::Failed);
        return one->error().code;
    };
    const QString target = u"t.mp4"_s;
    EXPECT_EQ(codeOf(u"High", target, AVFileTypeMPEG4), ErrorCode::InvalidArgument);
    EXPECT_EQ(codeOf(u"AVAssetExportPresetLowQuality", target, AVFileTypeMPEG4),
              ErrorCode::InvalidData);
    EXPECT_EQ(codeOf(AVAssetExportPresetPassthrough, target, u"public.jpeg"),
              ErrorCode::InvalidArgument);
    EXPECT_EQ(codeOf(AVAssetExportPresetPassthrough, {}, AVFileTypeMPEG4),
              ErrorCode::InvalidArgument);
    EXPECT_EQ(codeOf(AVAssetExportPresetPassthrough, u"source.mp4"_s, AVFileTypeMPEG4),
              ErrorCode::InvalidArgument);
    EXPECT_EQ(codeOf(AVAssetExportPresetPassthrough, u"no/folder/t.mp4"_s, AVFileTypeMPEG4),
              ErrorCode::NotFound);
    EXPECT_EQ(TempDir::read(source), before);
    EXPECT_EQ(m_dir.files().size(), 1);
}

TEST_F(Export, CancelsWhatWaitsAndWhatRuns) {
    const QString source = makeSource(64'000'000);
    AVAssetExportSession::setMaximumConcurrentExports(2);
    std::vector<std::unique_ptr<AVAssetExportSession>> sessions;
    std::atomic<int> ended = 0;
    std::promise<void> running, release;
    const auto gate = release.get_future().share();
    // Two jobs hold the queue in their handlers, so that the rest waits for certain.
    for (int i = 0; i < 2; ++i) {
        sessions.push_back(session(source, {}, AVAssetExportPresetPassthrough));
        sessions.back()->exportAsynchronouslyWithCompletionHandler([gate] { gate.wait(); });
    }
    for (int i = 0; i < 8; ++i) {
        sessions.push_back(session(source, u"t%1"_s.arg(i), AVAssetExportPresetPassthrough));
        sessions.back()->exportAsynchronouslyWithCompletionHandler([&] { ++ended; });
    }
    EXPECT_EQ(sessions.back()->status(), Status::Waiting);
    sessions.back()->cancelExport();
    EXPECT_EQ(sessions.back()->status(), Status::Cancelled);
    release.set_value();
    while (sessions[2]->status() == Status::Waiting)
        std::this_thread::yield();
    AVAssetExportSession::cancelAllExports();
    AVAssetExportSession::waitForAllExports();
    EXPECT_EQ(ended, 8);
    const QStringList files = m_dir.files();
    qsizetype completed = 0;
    for (const auto& one : sessions)
        completed += one->status() == Status::Completed ? 1 : 0;
    EXPECT_EQ(files.size(), completed + 1);
    EXPECT_LT(completed, 8);
}

TEST_F(Export, RunsManyAtOnce) {
    const QString source = makeSource(200'000);
    AVAssetExportSession::setMaximumConcurrentExports(8);
    std::vector<std::unique_ptr<AVAssetExportSession>> sessions;
    std::atomic<int> completed = 0;
    for (int i = 0; i < 40; ++i) {
        sessions.push_back(session(source, u"t%1"_s.arg(i), AVAssetExportPresetPassthrough));
        AVAssetExportSession* one = sessions.back().get();
        one->exportAsynchronouslyWithCompletionHandler([one, &completed] {
            completed += one->status() == Status::Completed && one->progress() == 1 ? 1 : 0;
        });
    }
    AVAssetExportSession::waitForAllExports();
    EXPECT_EQ(completed, 40);
}

TEST_F(Export, TakesOtherContainersThroughTheEngine) {
    if (const auto engine = mediaEngine(); !engine)
        GTEST_SKIP() << engine.error().text();
    const QString source = encode(m_dir, u"s.mkv"_s, "-metadata title=Oldtitle");
    const auto one = session(source, u"t.mp4"_s, AVAssetExportPresetPassthrough);
    ASSERT_EQ(exported(*one), Status::Completed) << one->error().text();
    const QByteArray bytes = TempDir::read(m_dir.path("t.mp4"));
    EXPECT_FALSE(bytes.contains("Oldtitle"));
    EXPECT_EQ(boxesIn(payloadAt(bytes, "moov")).size(), 4); // mvhd, two tracks, udta
    EXPECT_EQ(m_dir.files().size(), 2);
}

} // namespace
