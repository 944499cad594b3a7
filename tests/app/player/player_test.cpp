// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/player_view.h"
#include "app/panes/scrub_line.h"
#include "app/panes/transport_bar.h"
#include "platform/foundation/paths.h"
#include "platform/player/mpv_player.h"
#include "tests/testkit/media.h"

#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <cstdio>
#include <memory>

using namespace clipheave::app;
using clipheave::platform::MpvPlayer;

namespace {

constexpr int kFrames = 20;
constexpr double kRate = 10;

/// 2 s of 64 x 36 at 10 frames a second; frame n is grey with luma 16 + 10 n. Made once for
/// all tests.
class PlayerTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        SKIP_WITHOUT("ffmpeg");
        s_folder = std::make_unique<testkit::TempDir>();
        using testkit::ffmpeg;
        ffmpeg("-f lavfi -i nullsrc=s=64x36:r=10:d=2,geq=lum='16+10*N':cb=128:cr=128 -f lavfi -i "
               "sine=d=2 -c:v libx264 -qp 0 -g 8 -pix_fmt yuv420p -c:a aac",
               {clip("grey.mp4")});
        ffmpeg("-f lavfi -i color=white:s=64x36:r=10:d=1 -c:v libx264 -pix_fmt yuv420p",
               {clip("white.mp4")});
        ffmpeg("-f lavfi -i color=black:s=64x36:r=10:d=1,drawbox=w=16:h=36:c=white:t=fill -c:v "
               "libx264 -pix_fmt yuv420p",
               {clip("left.mp4")}); // white on its left side
        ffmpeg("-i % -c copy", {clip("left.mp4"), clip("rotated.mp4")});
        testkit::rotateClockwise(clip("rotated.mp4"), 270);
        ffmpeg("-i % -frames:v 1",
               {clip("rotated.mp4"), clip("rotated.png")}); // as another program rotates it
        ffmpeg("-f lavfi -i sine=d=3", {clip("tone.wav")});
    }
    static void TearDownTestSuite() { s_folder.reset(); }

    static QString clip(const char* name) { return s_folder->path(name); }

    static inline std::unique_ptr<testkit::TempDir> s_folder;
};

/// Number of the frame that is shown, from its grey; -1 when there is none.
int shownFrame(MpvPlayer& player) {
    const QImage image = player.render({32, 18});
    if (image.isNull())
        return -1;
    const double luma = 16 + qGray(image.pixel(16, 9)) * 219.0 / 255;
    return qRound((luma - 16) / 10);
}

bool showsFrame(MpvPlayer& player, int number) {
    const bool shown = QTest::qWaitFor([&] { return shownFrame(player) == number; }, 3000);
    if (!shown)
        ADD_FAILURE() << "frame " << shownFrame(player) << " is shown, not " << number;
    return shown;
}

bool opens(MpvPlayer& player, const QString& path) {
    player.open(path);
    return QTest::qWaitFor([&] { return player.isLoaded(); }, 5000);
}

} // namespace

TEST_F(PlayerTest, ShowsExactlyTheFrameAskedFor) {
    MpvPlayer player;
    player.setMuted(true);
    ASSERT_TRUE(opens(player, clip("grey.mp4")));
    EXPECT_NEAR(player.duration(), 2, 0.05);
    EXPECT_TRUE(player.hasVideo());
    EXPECT_TRUE(player.isPaused());
    ASSERT_TRUE(showsFrame(player, 0));
    EXPECT_EQ(player.videoSize(), QSize(64, 36));
    for (const int frame : {7, 13, 1, 18, kFrames - 1, 8, 0}) {
        player.seek(frame / kRate);
        EXPECT_TRUE(showsFrame(player, frame));
    }
    player.seek(1.2);
    ASSERT_TRUE(showsFrame(player, 12));
    player.stepForward();
    EXPECT_TRUE(showsFrame(player, 13));
    EXPECT_NEAR(player.position(), 1.3, 0.01);
    player.stepBackward();
    EXPECT_TRUE(showsFrame(player, 12));
    player.stepBackward();
    EXPECT_TRUE(showsFrame(player, 11));
    // The same frame in another size, opaque also where a window shines through.
    const QImage larger = player.render({130, 70});
    ASSERT_EQ(larger.size(), QSize(130, 70));
    EXPECT_EQ(qAlpha(larger.convertToFormat(QImage::Format_ARGB32).pixel(0, 0)), 255);
    EXPECT_EQ(reinterpret_cast<const QRgb*>(larger.constScanLine(69))[129] >> 24, 255U);
    EXPECT_NEAR(qGray(larger.pixel(129, 69)), 11 * 10 * 255.0 / 219, 2);
}

TEST_F(PlayerTest, ManySeeksAreNotHeldUp) {
    MpvPlayer player;
    ASSERT_TRUE(opens(player, clip("grey.mp4")));
    ASSERT_TRUE(showsFrame(player, 0));
    QElapsedTimer clock;
    clock.start();
    for (int frame = 1; frame <= 10; ++frame) {
        player.seek(frame / kRate);
        ASSERT_TRUE(showsFrame(player, frame));
    }
    EXPECT_LT(clock.elapsed(), 1500); // 200 ms each when frames are left undrawn
}

TEST_F(PlayerTest, PlaysToTheEndAndThenFromTheStart) {
    MpvPlayer player;
    player.setMuted(true);
    QSignalSpy ended(&player, &MpvPlayer::endReached);
    QSignalSpy paused(&player, &MpvPlayer::pausedChanged);
    ASSERT_TRUE(opens(player, clip("grey.mp4")));
    player.seek(1.6);
    player.setPaused(false);
    EXPECT_FALSE(player.isPaused());
    ASSERT_TRUE(ended.wait(5000));
    EXPECT_TRUE(player.isPaused());
    EXPECT_EQ(paused.size(), 2);
    EXPECT_TRUE(showsFrame(player, kFrames - 1));
    player.setPaused(false);
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return player.position() > 0.1 && player.position() < 1; }, 3000));
}

TEST_F(PlayerTest, ReportsWhatCannotBePlayed) {
    MpvPlayer player;
    QSignalSpy failed(&player, &MpvPlayer::failed);
    const QString broken = s_folder->write("broken.mp4", QByteArray(4000, 'x'));
    // A list of other files is no medium: what it names is not opened.
    const QString list =
        s_folder->write("list.m3u", "#EXTM3U\n" + clip("grey.mp4").toUtf8() + "\n");
    for (const QString& path : {broken, list, s_folder->path("missing.mp4")}) {
        player.open(path);
        ASSERT_TRUE(failed.wait(5000)) << path;
        EXPECT_FALSE(failed.takeLast().first().toString().isEmpty());
        EXPECT_FALSE(player.isOpen());
        EXPECT_TRUE(player.render({32, 18}).isNull());
        QTest::qWait(100);
        EXPECT_FALSE(player.isLoaded());
    }
    ASSERT_TRUE(opens(player, clip("grey.mp4")));
    EXPECT_TRUE(showsFrame(player, 0));
    EXPECT_TRUE(failed.isEmpty());
}

TEST_F(PlayerTest, AudioAloneAndNamesOfAnyBytes) {
    MpvPlayer player;
    player.setMuted(true);
    ASSERT_TRUE(opens(player, clip("grey.mp4")));
    ASSERT_TRUE(showsFrame(player, 0));
    ASSERT_TRUE(opens(player, clip("tone.wav")));
    EXPECT_NEAR(player.duration(), 3, 0.01);
    EXPECT_FALSE(player.hasVideo());
    EXPECT_TRUE(player.render({32, 18}).isNull()); // nothing is left of the file before
    player.seek(2);
    player.setPaused(false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return player.position() > 2.2; }, 3000));

    const QByteArray odd = s_folder->path().toUtf8() + "/a\xFF %n#.mp4";
    ASSERT_EQ(::rename(QFile::encodeName(clip("white.mp4")).constData(), odd.constData()), 0);
    EXPECT_TRUE(opens(player, clipheave::platform::pathFromNative(odd)));
    EXPECT_TRUE(QTest::qWaitFor([&] { return shownFrame(player) > kFrames; }, 3000));
    ASSERT_EQ(::rename(odd.constData(), QFile::encodeName(clip("white.mp4")).constData()), 0);

    ASSERT_TRUE(opens(player, clip("rotated.mp4")));
    const QImage rotated(clip("rotated.png"));
    ASSERT_EQ(rotated.size(), QSize(36, 64));
    EXPECT_TRUE(QTest::qWaitFor([&] { return player.videoSize() == QSize(36, 64); }, 3000))
        << player.videoSize().width() << " x " << player.videoSize().height();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !player.render({36, 64}).isNull(); }, 3000));
    for (const int y : {4, 60})
        EXPECT_NEAR(qGray(player.render({36, 64}).pixel(18, y)), qGray(rotated.pixel(18, y)), 3)
            << y;
}

TEST_F(PlayerTest, OpensAndGoesQuicklyManyTimes) {
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 20; ++i) {
        MpvPlayer player;
        player.open(clip(i % 2 == 0 ? "grey.mp4" : "tone.wav"));
        if (i % 3 == 0) {
            EXPECT_TRUE(QTest::qWaitFor([&] { return player.isLoaded(); }, 5000));
        }
        if (i % 4 == 0)
            player.setPaused(false);
        if (i % 5 == 0)
            player.close();
    }
    MpvPlayer player;
    for (int i = 0; i < 20; ++i)
        player.open(clip(i % 2 == 0 ? "tone.wav" : "white.mp4"));
    player.open(clip("grey.mp4")); // only the last one counts
    EXPECT_TRUE(showsFrame(player, 0));
    EXPECT_NEAR(player.duration(), 2, 0.05);
    EXPECT_LT(clock.elapsed(), 30000);
    RecordProperty("milliseconds", static_cast<int>(clock.elapsed()));
}

TEST_F(PlayerTest, ViewShowsTheFrameBetweenBars) {
    PlayerView view;
    view.resize(100, 100);
    view.show();
    view.setFile(clip("white.mp4"));
    const auto greyAt = [&](int x, int y) { return qGray(view.grab().toImage().pixel(x, y)); };
    EXPECT_TRUE(QTest::qWaitFor([&] { return greyAt(50, 50) > 250; }, 3000));
    EXPECT_GT(greyAt(50, 24), 250); // 100 x 56 of the 100 x 100
    EXPECT_LT(greyAt(50, 18), 60);
    EXPECT_LT(greyAt(50, 82), 60);
    view.setFile(clip("grey.mp4"));
    ASSERT_TRUE(showsFrame(*view.player(), 0));
    QTest::keyClick(&view, Qt::Key_Period);
    EXPECT_TRUE(showsFrame(*view.player(), 1));
    QTest::keyClick(&view, Qt::Key_Comma);
    EXPECT_TRUE(showsFrame(*view.player(), 0));
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_FALSE(view.player()->isPaused());
    view.clear();
    EXPECT_LT(greyAt(50, 50), 20);
}

TEST_F(PlayerTest, BarSeeksWhereItIsPressed) {
    PlayerView view;
    TransportBar bar(view.player(), TransportBar::Form::Video);
    bar.resize(336, bar.sizeHint().height());
    bar.show();
    auto* line = bar.findChild<ScrubLine*>();
    auto* play = bar.findChildren<TransportButton*>().at(1);
    EXPECT_FALSE(play->isEnabled());
    view.setFile(clip("grey.mp4"));
    ASSERT_TRUE(showsFrame(*view.player(), 0));
    ASSERT_TRUE(play->isEnabled());

    // The track ends 6 px before either edge: the middle of the widget is the middle of the time.
    QTest::mousePress(line, Qt::LeftButton, {}, {line->width() / 2, 8});
    EXPECT_NEAR(view.player()->position(), view.player()->duration() / 2, 0.02);
    EXPECT_TRUE(showsFrame(*view.player(), 10));
    QTest::mouseMove(line, {6, 8});
    EXPECT_TRUE(showsFrame(*view.player(), 0));
    QTest::mouseRelease(line, Qt::LeftButton, {}, {6, 8});
    QTest::keyClick(line, Qt::Key_Right);
    EXPECT_TRUE(showsFrame(*view.player(), 10));
    EXPECT_EQ(bar.findChildren<QLabel*>().at(0)->text(), u"00:01.00");
    EXPECT_EQ(line->value(), 1000);

    QTest::mouseClick(play, Qt::LeftButton);
    EXPECT_FALSE(view.player()->isPaused());
    EXPECT_EQ(play->accessibleName(), u"Pause");
    view.clear();
    EXPECT_FALSE(play->isEnabled());
    EXPECT_EQ(play->accessibleName(), u"Play");
}

TEST(TransportTime, IsCutToHundredths) {
    EXPECT_EQ(transportTime(75.08), u"01:15.08");
    EXPECT_EQ(transportTime(198.129), u"03:18.12");
    EXPECT_EQ(transportTime(1.15), u"00:01.15");
    EXPECT_EQ(transportTime(59.999), u"00:59.99");
    EXPECT_EQ(transportTime(7500), u"125:00.00");
    EXPECT_EQ(transportTime(-3), u"00:00.00");
    EXPECT_EQ(transportTime(std::nan("")), u"00:00.00");
    EXPECT_EQ(transportTime(90.9, false), u"01:30");
}
