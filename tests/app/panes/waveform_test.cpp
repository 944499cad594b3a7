// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/waveform.h"

#include "app/theme/theme.h"
#include "platform/media/model/media_engine.h"
#include "tests/testkit/testkit.h"

#include <QImage>
#include <QSignalSpy>
#include <QTest>

namespace clipheave::app {
namespace {

QString writeTone(const testkit::TempDir& folder, const char* name, int pattern) {
    const auto engine = platform::mediaEngine();
    EXPECT_TRUE(engine);
    platform::SampleMedia tone;
    tone.container = u"wav"_s;
    tone.audioCodec = u"pcm_s16le"_s;
    tone.pattern = pattern;
    QString path = folder.path(name);
    EXPECT_TRUE((*engine)->writeSample(tone, path));
    return path;
}

TEST(PeakLoader, OnlyWhatWasAskedForLastArrivesAndOnlyOnceFromTheFile) {
    const testkit::TempDir folder;
    const QString first = writeTone(folder, "first.wav", 0),
                  last = writeTone(folder, "last.wav", 3);
    const QDateTime changed = QDateTime::currentDateTime();
    PeakLoader loader;
    QSignalSpy loaded(&loader, &PeakLoader::loaded);
    loader.load(first, changed);
    loader.load(last, changed);
    ASSERT_TRUE(loaded.wait(5000));
    QTest::qWait(100);
    ASSERT_EQ(loaded.count(), 1);
    const QByteArray peaks = loaded.at(0).at(0).toByteArray();
    EXPECT_EQ(peaks, (*platform::mediaEngine())->audioPeaks(last, 1024, [] { return true; }));

    ASSERT_TRUE(QFile::remove(last));
    loader.load(last, changed);
    ASSERT_EQ(loaded.count(), 2) << "measured before: at once";
    EXPECT_EQ(loaded.at(1).at(0).toByteArray(), peaks);
    loader.load(last, changed.addSecs(1));
    ASSERT_TRUE(loaded.wait(5000)) << "changed since: measured again, and it is gone";
    EXPECT_TRUE(loaded.at(2).at(0).toByteArray().isEmpty());
    loader.load(first, changed);
    loader.cancel();
    EXPECT_FALSE(loaded.wait(200));
}

TEST(Waveform, ShowsWhatIsPlayedHidesWithoutAudioAndSeeksByMouseAndKeys) {
    const testkit::TempDir folder;
    Waveform line;
    line.resize(407, line.sizeHint().height());
    line.showFile(writeTone(folder, "tone.wav", 1), QDateTime::currentDateTime());
    ASSERT_TRUE(QTest::qWaitFor([&line] { return !line.peaks().isEmpty(); }));
    EXPECT_TRUE(line.isVisible());
    line.showPosition(1, 2);
    const QImage image = line.grab().toImage();
    const auto count = [&image](int from, int to, Token token) {
        const QRgb wanted = Theme::colorOf(token, true).rgb();
        int found = 0;
        for (int x = from; x < to; ++x)
            for (int y = 0; y < image.height(); ++y)
                found += image.pixel(x, y) == wanted ? 1 : 0;
        return found;
    };
    EXPECT_GT(count(0, 200, Token::accent), 500) << "what is played";
    EXPECT_EQ(count(0, 195, Token::line3), 0);
    EXPECT_EQ(count(208, 407, Token::accent), 0);
    EXPECT_GT(count(208, 407, Token::line3), 500) << "what is to come";

    QSignalSpy moved(&line, &QSlider::valueChanged);
    QTest::mouseClick(&line, Qt::LeftButton, {}, {204, 20});
    QTest::mouseClick(&line, Qt::LeftButton, {}, {403, 20});
    ASSERT_EQ(moved.count(), 2);
    EXPECT_NEAR(moved.at(0).at(0).toInt(), 1003, 8);
    EXPECT_EQ(moved.at(1).at(0).toInt(), 2000);
    line.setFocus();
    QTest::keyClick(&line, Qt::Key_Left);
    EXPECT_EQ(line.value(), 1000);
    EXPECT_EQ(line.accessibleName(), u"Waveform");

    line.showFile(folder.write("notes.wav", "no audio at all"), {});
    EXPECT_TRUE(QTest::qWaitFor([&line] { return line.isHidden(); }));
}

} // namespace
} // namespace clipheave::app
