// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/index/md_item.h"
#include "tests/testkit/media.h"

#include <QElapsedTimer>

#include <thread>
#include <vector>

namespace clipheave::platform {

namespace {

/// Half a second of stereo silence at 8 kHz, 16 bit.
QByteArray waveFile() {
    return testkit::waveFile(QByteArray(16'000, '\0'), {8000, 2, 16});
}

} // namespace

TEST(MDItem, ReturnsWhatTheFileHas) {
    const testkit::TempDir dir;
    const auto file = MediaFile::open(dir.write("Ton.wav", waveFile()));
    ASSERT_TRUE(file);
    const MDItem item = MDItem::create(*file);
    EXPECT_DOUBLE_EQ(item.copyAttribute(kMDItemDurationSeconds)->toDouble(), 0.5);
    EXPECT_EQ(item.copyAttribute(kMDItemAudioSampleRate), QVariant(8000.0));
    EXPECT_EQ(item.copyAttribute(kMDItemAudioBitRate), QVariant(256'000.0));
    EXPECT_EQ(item.copyAttribute(kMDItemAudioChannelCount), QVariant(2));
    EXPECT_EQ(item.copyAttribute(kMDItemDisplayName), QVariant(u"Ton.wav"_s));
    EXPECT_EQ(item.copyAttribute(kMDItemFSSize),
              QVariant(static_cast<qulonglong>(waveFile().size())));
    EXPECT_EQ(item.copyAttribute(kMDItemKind), QVariant(u"WAV audio"_s));
    EXPECT_TRUE(item.copyAttribute(kMDItemContentCreationDate)->toDateTime().isValid());
    for (const char16_t* absent : {kMDItemPixelWidth, kMDItemPixelHeight, kMDItemAlbum,
                                   kMDItemRecordingYear, u"kMDItemUnheardOf"})
        EXPECT_FALSE(item.copyAttribute(absent)) << QStringView(absent).toString();
}

TEST(MDItem, AlbumAndYearFromTags) {
    const testkit::TempDir dir;
    const QByteArray bytes =
        testkit::id3Tag(3, testkit::id3Text("TALB", "Lieder") + testkit::id3Text("TYER", "1998")) +
        testkit::mpegFrames(20);
    const auto file = MediaFile::open(dir.write("a.mp3", bytes));
    ASSERT_TRUE(file);
    const MDItem item = MDItem::create(*file);
    EXPECT_EQ(item.copyAttribute(kMDItemAlbum), QVariant(u"Lieder"_s));
    EXPECT_EQ(item.copyAttribute(kMDItemRecordingYear), QVariant(1998));
}

TEST(KindText, NameFirstThenContainer) {
    const struct {
        const char* name;
        Container container;
        const char* expected;
    } cases[] = {
        {"a.mp4", Container::Mp4, "MPEG-4 video"},
        {"a.MOV", Container::QuickTime, "QuickTime video"},
        {"a.mp3", Container::MpegAudio, "MP3 audio"},
        {"a.mp4", Container::QuickTime, "MPEG-4 video"},
        {"a.ts", Container::Other, "MPEG-2 transport stream"}, // not a translator's text
        {"a.mp2", Container::MpegAudio, "MP2 audio"},
        {"a.mp2", Container::Other, "MPEG video"},
        {"a.caf", Container::Caf, "CAF audio"},
        {"a.MOD", Container::Other, "MPEG video"}, // of a camcorder
        {"noextension", Container::Flac, "FLAC audio"},
        {"dir.mp3/noextension", Container::Wave, "WAV audio"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(kindTextForFile(QString::fromLatin1(c.name), c.container),
                  QLatin1String(c.expected))
            << c.name;
    EXPECT_TRUE(kindTextForFile(u"noextension"_s, Container::Unknown).isEmpty());
}

TEST(KindText, ThreadsAndSpeed) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([i] {
            for (int n = 0; n < 500; ++n)
                EXPECT_EQ(kindTextForFile(u"a.flac"_s, Container::Flac),
                          kindTextForFile(u"%1-%2.flac"_s.arg(i).arg(n), Container::Flac));
        });
    threads.clear();
    QElapsedTimer timer;
    timer.start();
    for (int n = 0; n < 1000; ++n)
        (void)kindTextForFile(u"a.flac"_s, Container::Flac);
    EXPECT_LT(timer.elapsed(), 50) << "a known type comes from memory";
}

} // namespace clipheave::platform
