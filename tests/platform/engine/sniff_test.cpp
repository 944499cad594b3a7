// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/container_sniffer.h"
#include "tests/testkit/media.h"

#include <QSize>

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

TEST(Sniff, StreamsOfAnAsfHeaderBehindLongObjects) {
    SKIP_WITHOUT("ffmpeg");
    const testkit::TempDir dir;
    const QString path = dir.path("a.wmv");
    testkit::ffmpeg("-f lavfi -i testsrc=d=1:s=64x48:r=25 -f lavfi -i sine=d=1 -c:v wmv2 "
                    "-c:a wmav2",
                    {path});
    QByteArray plain = testkit::TempDir::read(path);
    const QByteArray extension = QByteArray::fromHex("b503bf5f2ea9cf118ee300c00c205365");
    const QByteArray padding = QByteArray::fromHex("74d40618dfca0945a4ba9aabcb96aae8");
    const auto add = [](QByteArray& bytes, qsizetype place, int width, qsizetype more) {
        quint64 size = 0;
        for (int i = width; i-- > 0;)
            size = size << 8 | static_cast<quint8>(bytes[place + i]);
        bytes.replace(place, width, testkit::le(size + quint64(more), width));
    };
    // The file with more in its header extension.
    const auto longer = [&](const QByteArray& contents) {
        QByteArray bytes = plain;
        const qsizetype at = bytes.indexOf(extension);
        for (const auto& [place, width] :
             {std::pair(16, 8), {70, 8}, {int(at) + 16, 8}, {int(at) + 42, 4}})
            add(bytes, place, width, contents.size());
        return bytes.insert(at + 46, contents);
    };
    const auto sniffed = [&](const QByteArray& bytes) {
        auto reader = FileReader::open(dir.write("b.wmv", bytes));
        return sniffFile(*reader);
    };
    const QByteArray far = longer(padding + testkit::le(20'024, 8) + QByteArray(20'000, '\0'));
    EXPECT_TRUE(sniffed(far).hasVideo);
    EXPECT_TRUE(sniffed(far).hasAudio);
    const auto facts = MediaFile::open(dir.path("b.wmv"));
    ASSERT_TRUE(facts);
    EXPECT_EQ((*facts)->facts().pixelSize, QSize(64, 48));
    EXPECT_EQ((*facts)->facts().audioSampleRate, 44100);
    EXPECT_NEAR((*facts)->facts().durationSeconds, 1, 0.1);
    // Sizes that lie end the search within their object; it is finite.
    EXPECT_TRUE(sniffed(longer(padding + testkit::le(UINT64_MAX, 8))).hasVideo);
    QByteArray nested;
    for (int i = 0; i < 500; ++i)
        nested += extension + testkit::le(quint64(500 - i) * 46, 8) + QByteArray(22, '\0');
    EXPECT_TRUE(sniffed(longer(nested)).hasVideo);

    // The description of the video within its extended one, behind a long name.
    const qsizetype video = plain.indexOf(QByteArray::fromHex("c0ef19bc4d5bcf11a8fd00805f5c442b"));
    const auto size = qsizetype(static_cast<quint8>(plain[video - 8])); // of the object
    const QByteArray stream = plain.mid(video - 24, size);
    plain.remove(video - 24, size);
    add(plain, 16, 8, -size);
    EXPECT_FALSE(sniffed(plain).hasVideo);
    const QByteArray name = testkit::le(0, 2) + testkit::le(30'000, 2) + QByteArray(30'000, 'n');
    const QByteArray payload = QByteArray(18, 'p') + testkit::le(3, 4) + "abc";
    const QByteArray rest =
        QByteArray(60, '\0') + testkit::le(1, 2) + testkit::le(1, 2) + name + payload + stream;
    const QByteArray within = longer(QByteArray::fromHex("cba5e61472c632438399a96952065b5a") +
                                     testkit::le(quint64(rest.size()) + 24, 8) + rest);
    EXPECT_TRUE(sniffed(within).hasVideo);
    EXPECT_EQ((*MediaFile::open(dir.path("b.wmv")))->facts().pixelSize, QSize(64, 48));
}

} // namespace clipheave::platform
