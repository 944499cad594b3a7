// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/flac/flac_tags.h"
#include "platform/formats/messages.h"
#include "platform/foundation/file_manager.h"
#include "tests/testkit/media.h"

#include <QDir>

namespace {

using namespace clipheave::platform;
using testkit::be;
using testkit::flacBlock;
using testkit::le;
using testkit::TempDir;
using testkit::vorbisComments;

const QByteArray kStreamInfo(34, '\1');
const QByteArray kFlacAudio = "\xFF\xF8 sound";

QByteArray flacFile(const QByteArrayList& entries, const QByteArray& more = {}) {
    return "fLaC" + flacBlock(0, kStreamInfo) + flacBlock(4, vorbisComments(entries)) + more +
           flacBlock(1, QByteArray(20, '\0'), true) + kFlacAudio;
}

class FlacTags : public testing::Test {
protected:
    QByteArray changed(const QByteArray& file, const FlacTagChanges& changes) {
        const QString source = m_dir.write(QStringLiteral("in/a.flac"), file);
        const QString target = m_dir.path(QStringLiteral("out.flac"));
        const auto done = rewriteFlacTags(source, target, changes, {});
        EXPECT_EQ(TempDir::read(source), file);
        EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden).size(), done ? 1 : 0);
        const QByteArray written = TempDir::read(target);
        QFile::remove(target);
        return done ? written : QByteArray(done.error().detail.code().id);
    }
    TempDir m_dir;
};

TEST_F(FlacTags, OnlyTheChangedCommentsChange) {
    const QByteArray other = flacBlock(2, "application") + flacBlock(6, be(4, 4) + "back cover");
    const QByteArray file = flacFile(
        {"Title=old", "ARTIST=A", "artist=B", "LABEL=kept", "\xFFno name", "COMMENTS=c"}, other);
    EXPECT_EQ(
        changed(file, {{{QStringLiteral("title"), QStringLiteral("N\u00E9")},
                        {QStringLiteral("artist"), QStringLiteral("A; B")}, // as it was read
                        {QStringLiteral("comments"), QStringLiteral("new")},
                        {QStringLiteral("recorded date"), QStringLiteral("2001:02:03 04:05:06")},
                        {QStringLiteral("year"), QString()},
                        {QStringLiteral("track number"), QStringLiteral("7")}},
                       {}}),
        flacFile({"TITLE=N\xC3\xA9", "ARTIST=A", "artist=B", "LABEL=kept", "\xFFno name",
                  "COMMENT=new", "DATE=2001:02:03 04:05:06"},
                 other));
    EXPECT_EQ(changed(file, {}), file);
    EXPECT_EQ(changed(flacFile({"DESCRIPTION=d"}), {{{QStringLiteral("comments"), QString()}}, {}}),
              flacFile({}));
    const QByteArray bare = "fLaC" + flacBlock(0, kStreamInfo, true) + kFlacAudio;
    const QByteArray tagged = QByteArray("ID3\3\0\0\0\0\0\1x", 11) + bare;
    EXPECT_EQ(changed(tagged, {{{QStringLiteral("album"), QStringLiteral("A")}}, {}}).left(15),
              tagged.left(15));
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
    const FlacTagChanges changes{{{QStringLiteral("title"), QStringLiteral("n")}}, {}};
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
    EXPECT_EQ(changed(good, {{{QStringLiteral("title"), QString(17 << 20, u'x')}}, {}}),
              kFlacBlockTooLarge.id);
    EXPECT_EQ(changed({}, changes), kSignatureMissing.id);
}

} // namespace
