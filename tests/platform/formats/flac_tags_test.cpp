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
            return rewriteFlacTags(source, target, changes, {});
        });
    }
    TempDir m_dir;
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
    const QByteArray tagged = QByteArray("ID3\3\0\0\0\0\0\1x", 11) + bare;
    EXPECT_EQ(changed(tagged, {{{u"album"_s, u"A"_s}}, {}}).left(15), tagged.left(15));
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
