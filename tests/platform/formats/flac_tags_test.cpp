// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/flac/flac_tags.h"
#include "platform/formats/messages.h"
#include "platform/foundation/file_manager.h"
#include "tests/platform/formats/fixtures.h"

namespace {

using namespace clipheave::platform;
using fixtures::rewritten;
using testkit::be;
using testkit::flacBlock;
using testkit::le;
using testkit::TempDir;
using testkit::textsOf;
using testkit::vorbisComments;

const QByteArray kStreamInfo(34, '\1');
const QByteArray kFlacAudio = "\xFF\xF8 audio";

QByteArray flacFile(const QByteArrayList& entries, const QByteArray& more = {}) {
    return "fLaC" + flacBlock(0, kStreamInfo) + flacBlock(4, vorbisComments(entries)) + more +
           flacBlock(1, QByteArray(20, '\0'), true) + kFlacAudio;
}

class FlacTags : public testing::Test {
protected:
    QByteArray changed(const QByteArray& file, const FlacTagChanges& changes) {
        return rewritten(m_dir, file, [&](const QString& source, const QString& target) {
            const auto done = rewriteFlacTags(source, target, changes, {});
            m_notes = done.value_or(Notes());
            return done;
        });
    }
    TempDir m_dir;
    Notes m_notes;
};

TEST_F(FlacTags, OnlyTheChangedCommentsChange) {
    const QByteArray other = flacBlock(2, "application") + flacBlock(6, be(4, 4) + "back cover");
    const QByteArray file = flacFile(
        {"Title=old", "ARTIST=A", "artist=B", "LABEL=kept", "\xFFno name", "COMMENTS=c"}, other);
    EXPECT_EQ(changed(file, {{{u"title"_s, u"N\u00E9"_s},
                              {u"artist"_s, u"A; B"_s}, // as it was read
                              {u"comments"_s, u"new"_s},
                              {u"recorded date"_s, u"2001:02:03 04:05:06"_s},
                              {u"year"_s, QString()},
                              {u"track number"_s, u"7"_s}},
                             {}}),
              flacFile({"TITLE=N\xC3\xA9", "ARTIST=A", "artist=B", "LABEL=kept", "\xFFno name",
                        "COMMENT=new", "DATE=2001:02:03 04:05:06"},
                       other));
    EXPECT_EQ(changed(file, {}), file);
    EXPECT_EQ(changed(flacFile({"DESCRIPTION=d"}), {{{u"comments"_s, QString()}}, {}}),
              flacFile({}));
    const QByteArray bare = "fLaC" + flacBlock(0, kStreamInfo, true) + kFlacAudio;
    EXPECT_EQ(changed(bare, {{{u"album"_s, u"A"_s}}, {}}),
              "fLaC" + flacBlock(0, kStreamInfo) +
                  flacBlock(4, le(0, 4) + le(1, 4) + le(7, 4) + "ALBUM=A", true) + kFlacAudio);
}

TEST_F(FlacTags, AForeignTagMovesIntoTheCommentsWithAnyChange) {
    using testkit::id3Text;
    const QByteArray image("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\2\0\0\0\3\10\2\0\0\0", 29);
    const QByteArray frames = id3Text("TIT2", "T") + id3Text("TPE1", "Shadowed") +
                              id3Text("TPOS", "2/3") + id3Text("TXXX", QByteArray("Gain\0+1", 7)) +
                              testkit::id3Frame("PRIV", "owner") +
                              testkit::id3Frame("APIC", QByteArray("\0\0\3\0", 4) + image);
    const QByteArray file = testkit::id3Tag(3, frames) + flacFile({"artist=A"});
    EXPECT_EQ(changed(file, {}), file);
    const QByteArray moved = changed(file, {{{u"title"_s, QString()}}, {}});
    EXPECT_TRUE(
        moved.startsWith("fLaC" + flacBlock(0, kStreamInfo) +
                         flacBlock(4, vorbisComments({"artist=A", "DISCNUMBER=2/3", "GAIN=+1"}))));
    EXPECT_TRUE(moved.endsWith(image + kFlacAudio));
    EXPECT_EQ(textsOf(m_notes).join(u' '), u"tags not carried over: TPE1, PRIV");
}

TEST_F(FlacTags, TagsBehindTheAudioMoveIntoTheCommentsToo) {
    const QByteArray file =
        flacFile({"TITLE=A title that ID3v1 has to cut off", "DATE=1999-05", "TRACKNUMBER=2"});
    const auto field = [](const QByteArray& text) { return text.leftJustified(30, '\0', true); };
    const QByteArray tag = "TAG" + field("A title that ID3v1 has to cut off") + field("Artist") +
                           field("") + "1999" + field("Note") + '\377';
    EXPECT_EQ(changed(file + tag, {}), file + tag);
    EXPECT_EQ(changed(file + tag, {{{u"composer"_s, u"C"_s}}, {}}),
              flacFile({"TITLE=A title that ID3v1 has to cut off", "DATE=1999-05", "TRACKNUMBER=2",
                        "ARTIST=Artist", "COMMENT=Note", "YEAR=1999", "COMPOSER=C"}));
    EXPECT_EQ(m_notes, Notes());
    // What only looks like a tag stays with the audio.
    EXPECT_TRUE(changed(file + "APETAGEX", {{{u"composer"_s, u"C"_s}}, {}}).endsWith("APETAGEX"));
    // A number with its total is nothing else where the comments have both.
    const QByteArray front =
        testkit::id3Tag(3, testkit::id3Text("TRCK", "2/10") + testkit::id3Text("TYER", "1999"));
    EXPECT_EQ(changed(front + file, {{{u"composer"_s, u"C"_s}}, {}}),
              flacFile({"TITLE=A title that ID3v1 has to cut off", "DATE=1999-05", "TRACKNUMBER=2",
                        "TRACKTOTAL=10", "YEAR=1999", "COMPOSER=C"}));
    EXPECT_EQ(m_notes, Notes());
}

TEST_F(FlacTags, ANewCoverReplacesTheFrontCoverAlone) {
    const auto image = EncodedImage::fromBytes(
        QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\2\0\0\0\3\10\2\0\0\0", 29));
    ASSERT_FALSE(image.isNull());
    const QByteArray back = flacBlock(6, be(4, 4) + "back"),
                     front = flacBlock(6, be(3, 4) + "front");
    const QByteArray fresh =
        flacBlock(6, be(3, 4) + be(9, 4) + "image/png" + be(0, 4) + be(2, 4) + be(3, 4) +
                         be(24, 4) + be(0, 4) + be(29, 4) + image.bytes());
    EXPECT_EQ(changed(flacFile({}, back + front), {{}, image}), flacFile({}, back + fresh));
    const QByteArray added = changed(flacFile({}, back), {{}, image});
    EXPECT_TRUE(added.contains(back));
    EXPECT_TRUE(added.endsWith("\x86" + fresh.mid(1) + kFlacAudio));
}

TEST_F(FlacTags, DamagedFilesAreRefused) {
    const FlacTagChanges changes{{{u"title"_s, u"n"_s}}, {}};
    const QByteArray good = flacFile({"TITLE=t"});
    EXPECT_EQ(changed(good.left(good.size() - 20), changes), kFlacBlockDamaged.id);
    EXPECT_EQ(changed("fLaC" + flacBlock(4, vorbisComments({}), true) + kFlacAudio, changes),
              kNoFlacStreamInfo.id);
    EXPECT_EQ(changed("fLaC" + flacBlock(0, kStreamInfo, true) + "no sync", changes),
              kNoFlacAudio.id);
    EXPECT_EQ(changed(QByteArray(good).replace("TITLE=t", "TITLE="), changes),
              kFlacBlockDamaged.id);
    QByteArray lying = good;
    lying.replace(lying.indexOf("maker") - 4, 4, le(0xFFFFFFFF, 4));
    EXPECT_EQ(changed(lying, changes), kFlacCommentsDamaged.id);
    EXPECT_EQ(changed(good, {{{u"title"_s, QString(17 << 20, u'x')}}, {}}), kFlacBlockTooLarge.id);
    EXPECT_EQ(changed({}, changes), kSignatureMissing.id);
}

} // namespace
