// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/messages.h"
#include "platform/formats/mpeg/id3_tag_builder.h"
#include "platform/formats/mpeg/mpeg_tags.h"
#include "platform/foundation/file_manager.h"
#include "tests/platform/formats/fixtures.h"

namespace {

using namespace clipheave::platform;
using fixtures::rewritten;
using testkit::id3Frame;
using testkit::id3Tag;
using testkit::id3Text;
using testkit::le;
using testkit::mpegFrames;
using testkit::TempDir;

QByteArray id3v1() {
    return QByteArray("TAG") + QByteArray(125, 'x');
}

/// An APEv2 tag of one item.
QByteArray ape(bool withHeader) {
    const QByteArray item = le(3, 4) + le(0, 4) + QByteArray("Title\0abc", 9);
    const auto block = [&](quint64 flags) {
        return QByteArray("APETAGEX") + le(2000, 4) +
               le(static_cast<quint64>(item.size()) + 32, 4) + le(1, 4) + le(flags, 4) +
               QByteArray(8, '\0');
    };
    const quint64 has = withHeader ? 0x80000000u : 0;
    return (withHeader ? block(has | 0x20000000u) : QByteArray()) + item + block(has);
}

QByteArray lyrics3v2() {
    const QByteArray text = "LYRICSBEGININD0000200LYR00005Words";
    return text + QByteArray::number(text.size()).rightJustified(6, '0') + "LYRICS200";
}

QByteArray musicMatch() {
    const QByteArray version = "18273645" + QByteArray(248, ' ');
    const QByteArray before = QByteArray(4 + 4 + 4, '\0'); // no image
    QByteArray offsets;
    for (const int at : {1, 5, 9, 13, 13 + 256})
        offsets += le(static_cast<quint64>(at), 4);
    return version + before + version + QByteArray(7868, ' ') + offsets +
           QByteArray("Brava Software Inc.").leftJustified(32, ' ') +
           QByteArray("3.05").leftJustified(16, ' ');
}

QByteArray title(const QString& text) {
    return renderId3Tag({{ID3FID_TITLE_, text}}, {}).value_or(QByteArray());
}

class MpegTags : public testing::Test {
protected:
    /// What the file becomes under a new title; the code of the reason when it is refused.
    QByteArray retagged(const QByteArray& file) {
        return rewritten(m_dir, file, [](const QString& source, const QString& target) {
            return replaceMpegTags(source, target, title(u"T"_s), {});
        });
    }
    TempDir m_dir;
};

TEST_F(MpegTags, TheNewTagIsExactlyWhatTheFormatSays) {
    EXPECT_EQ(title(u"T\u0416\U0001F3AC"_s),
              id3Tag(3, id3Frame("TIT2", QByteArray("\1\377\376T\0\x16\x04\x3C\xD8\xAC\xDF", 11))));
    const QByteArray tag =
        *renderId3Tag({{ID3FID_SUBTITLE_, u""_s}, {ID3FID_COMMENT_, u"C"_s}}, "II*");
    EXPECT_EQ(tag,
              id3Tag(3, id3Frame("TIT3", QByteArray("\x01")) +
                            id3Frame("COMM", QByteArray("\1\0\0\0\xFF\xFE\0\0\377\376C\0", 12)) +
                            id3Frame("APIC", QByteArray("\x01\0\x03\xFF\xFE\0\0II*", 10))));
    EXPECT_EQ(renderId3Tag({}, {}), QByteArray());
}

TEST_F(MpegTags, FramesOfTheFreeFormatAreAudio) {
    const auto frame = [](bool padded, char with) {
        return QByteArray("\xFF\xFB", 2) + (padded ? '\2' : '\0') + '\x44' +
               QByteArray(496 + padded, with);
    };
    const QByteArray audio = frame(true, 'a') + frame(false, 'b') + frame(true, 'c');
    EXPECT_EQ(retagged(id3v1() + audio), kNoMpegFrame.id) << "not at the start";
    EXPECT_EQ(retagged(title(u"Old"_s) + audio + id3v1()), title(u"T"_s) + audio);
    EXPECT_EQ(retagged(audio.left(700)), kNoMpegFrame.id) << "one frame alone";
    const auto facts = fixtures::read(readMpegAudio, audio);
    ASSERT_TRUE(facts);
    EXPECT_NEAR(facts->durationSeconds, 3 * 1152 / 44100.0, 0.001);
}

TEST_F(MpegTags, EveryKindOfTagGoesAndTheAudioStays) {
    const QByteArray old =
        id3Tag(3, id3Frame("TCON", QByteArray("\0Rock", 5)) + QByteArray(64, '\0'));
    const QByteArray fresh = title(u"T"_s);
    const QByteArray enhanced = "TAG+" + QByteArray(223, 'y') + id3v1();
    const QByteArray appended = id3Tag(4, id3Frame("TIT2", "\3abc"), 0x10) + "3DI\4" +
                                id3Tag(4, id3Frame("TIT2", "\3abc"), 0x10).mid(4, 6);
    const QByteArray lyrics3v1 = "LYRICSBEGIN[00:01]WordsLYRICSEND";
    EXPECT_EQ(
        retagged(old + old + mpegFrames() + musicMatch() + ape(true) + lyrics3v2() + enhanced),
        fresh + mpegFrames());
    for (const QByteArray& tail :
         {id3v1(), enhanced, ape(true), ape(false), lyrics3v2() + id3v1(), lyrics3v1 + id3v1(),
          appended, appended + ape(true) + id3v1(), musicMatch(), musicMatch() + id3v1()})
        EXPECT_EQ(retagged(mpegFrames() + tail), fresh + mpegFrames());
    EXPECT_EQ(retagged(ape(true) + mpegFrames()), fresh + mpegFrames()) << "at the start";
    const QByteArray unsynchronised =
        id3Tag(3, QByteArray("TIT2\0\0\0\x05\0\0\1\xFF\0\xFE\xFF", 15), 0x80);
    EXPECT_EQ(retagged(unsynchronised + mpegFrames()), fresh + mpegFrames());
    EXPECT_EQ(retagged("junk in front" + mpegFrames()), fresh + "junk in front" + mpegFrames());
}

TEST_F(MpegTags, WhatCannotBeTrustedIsNotTakenOff) {
    const QByteArray text = id3Frame("TIT2", QByteArray("\0abc", 4));
    EXPECT_EQ(retagged(id3Tag(3, text, 0, 100 << 20) + mpegFrames()), kLeadingTagBeyondFile.id);
    EXPECT_EQ(retagged(id3Tag(3, text, 0, text.size() + 900) + mpegFrames()),
              kLeadingTagCoversAudio.id);
    EXPECT_EQ(retagged(id3Tag(3, text)), kNoMpegFrame.id);
    EXPECT_EQ(retagged({}), kNoMpegFrame.id);
    EXPECT_EQ(retagged(QByteArray(5000, '\0')), kNoMpegFrame.id);
    // Ends that only look like tags belong to the audio.
    const QByteArray fresh = title(u"T"_s);
    QByteArray lying = ape(true);
    lying.replace(lying.size() - 20, 4, le(900, 4));
    QByteArray cut = lyrics3v2().mid(4);
    for (const QByteArray& tail :
         {lying, cut, "9999999LYRICS200" + QByteArray(), ape(false).mid(3), musicMatch().mid(9000)})
        EXPECT_EQ(retagged(mpegFrames() + tail), fresh + mpegFrames() + tail);
}

TEST_F(MpegTags, CancellingLeavesNothing) {
    const QString source = m_dir.write("in/a.mp3", mpegFrames());
    const auto done =
        replaceMpegTags(source, m_dir.path("o.mp3"), {}, [](double) { return false; });
    ASSERT_FALSE(done);
    EXPECT_EQ(done.error().code, ErrorCode::Cancelled);
    EXPECT_TRUE(m_dir.files().isEmpty());
}

} // namespace
