// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/container_sniffer.h"
#include "tests/testkit/media.h"

namespace clipheave::platform {

using testkit::be;
using testkit::box;

namespace {

QByteArray padded(const QByteArray& head) {
    return head + QByteArray(600, '\0');
}

QByteArray id3Tag(int payload) {
    return testkit::id3Tag(4, QByteArray(payload, '\0'));
}

QByteArray packets(int first, int step) {
    QByteArray bytes(3 * step + first, '\0');
    for (int i = 0; i < 3; ++i)
        bytes[first + i * step] = '\x47';
    return bytes;
}

} // namespace

TEST(Sniff, BytesDecide) {
    const struct {
        QByteArray head;
        Container expected;
    } cases[] = {
        {box("ftyp", "qt  " + be(0, 4)), Container::QuickTime},
        {box("ftyp", "isom" + be(0, 4)), Container::Mp4},
        {box("moov", be(0, 4)), Container::QuickTime},
        {QByteArray("\0\0\0\x01mdat", 8) + be(4000, 8), Container::QuickTime},
        {"fLaC", Container::Flac},
        {"RIFF1234WAVEfmt ", Container::Wave},
        {"RF64\xFF\xFF\xFF\xFFWAVEds64", Container::Wave},
        {"RIFF1234AVI LIST", Container::Other},
        {"FORM1234AIFC", Container::Aiff},
        {"FORM1234ILBM", Container::Unknown},
        {"caff", Container::Caf},
        {".snd", Container::Au},
        {"OggS", Container::Tagged},
        {QByteArray("\xFF\xFB\x90\x64", 4), Container::MpegAudio},
        {QByteArray("\xFF\xFB\xF0\x64", 4), Container::Unknown}, // forbidden bit rate
        {QByteArray("\xFF\xEB\x90\x64", 4), Container::Unknown}, // forbidden version
        {QByteArray("\xFF\xF1\x50\x80", 4), Container::Other},   // ADTS
        {"\x1A\x45\xDF\xA3", Container::Other},
        {packets(0, 188), Container::Other},
        {packets(4, 192), Container::Other},
        {"G one sync byte alone", Container::Unknown},
        {"plain text", Container::Unknown},
        {id3Tag(100) + "fLaC", Container::Flac},
        {id3Tag(100) + QByteArray("\xFF\xF1\x50\x80", 4), Container::Other},
        {id3Tag(100) + "nothing known", Container::MpegAudio},
    };
    for (const auto& [head, expected] : cases)
        EXPECT_EQ(sniffContainer(padded(head)), expected) << head.left(16).toHex();
    EXPECT_EQ(sniffContainer(ByteView()), Container::Unknown);
}

TEST(Sniff, FileBehindTags) {
    const testkit::TempDir dir;
    const auto sniffed = [&](const QString& name, const QByteArray& bytes) {
        auto reader = FileReader::open(dir.write(name, bytes));
        return sniffFile(*reader);
    };
    // Two tags, longer than what is read at once; the name is no help.
    const SniffedFile flac = sniffed(u"a.mp3"_s, id3Tag(9000) + id3Tag(9000) + "fLaC");
    EXPECT_EQ(flac.container, Container::Flac);
    EXPECT_TRUE(flac.hasId3Prefix);
    EXPECT_EQ(sniffed(u"b.mp3"_s, "padding first").container, Container::MpegAudio);
    EXPECT_EQ(sniffed(u"b.txt"_s, "padding first").container, Container::Unknown);
    EXPECT_TRUE(sniffed(u"v.ogg"_s, "OggS" + QByteArray(30, '\0') + "\x80theora").hasVideo);
    EXPECT_FALSE(sniffed(u"a.ogg"_s, "OggS" + QByteArray(30, '\0') + "\x01vorbis").hasVideo);
    EXPECT_EQ(sniffed(u"empty"_s, {}).container, Container::Unknown);
}

} // namespace clipheave::platform
