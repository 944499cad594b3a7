// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/messages.h"
#include "tests/platform/engine/engine_fixture.h"

#include <bit>

namespace clipheave::platform {

namespace {

using testkit::be;

constexpr int kRate = 44100, kFramesPerPacket = 1024;

struct Padding {
    qint64 packets, valid;
    int priming, remainder;
};

QByteArray cafChunk(const char* type, const QByteArray& body) {
    return type + be(static_cast<quint64>(body.size()), 8) + body;
}

/// Returns the AAC packets of an ADTS file, whose headers have seven bytes.
QByteArrayList packetsOf(const QByteArray& adts) {
    QByteArrayList packets;
    for (qsizetype at = 0; at + 7 <= adts.size();) {
        const auto byte = [&](qsizetype i) { return static_cast<quint8>(adts[at + i]); };
        const int size = (byte(3) & 3) << 11 | byte(4) << 3 | byte(5) >> 5;
        packets << adts.mid(at + 7, size - 7);
        at += size;
    }
    return packets;
}

/// Returns a CAF file of mono AAC, 44.1 kHz.
QByteArray cafOf(const QByteArrayList& packets, const Padding& padding) {
    const QByteArray description = be(std::bit_cast<quint64>(double(kRate)), 8) + "aac " +
                                   be(2, 4) + be(0, 4) + be(kFramesPerPacket, 4) + be(1, 4) +
                                   be(0, 4);
    // Lengths of four bytes, as other programs write and expect them here.
    const QByteArray cookie = QByteArray::fromHex("0380808022000000048080801440150000000000000000"
                                                  "00000005808080021208068080800102");
    QByteArray table = be(quint64(padding.packets), 8) + be(quint64(padding.valid), 8) +
                       be(quint32(padding.priming), 4) + be(quint32(padding.remainder), 4);
    for (const QByteArray& packet : packets)
        table += QByteArray(1, char(0x80 | packet.size() >> 7)) + char(packet.size() & 0x7F);
    return testkit::raw("caff\0\1\0\0") + cafChunk("desc", description) + cafChunk("kuki", cookie) +
           cafChunk("pakt", table) + cafChunk("data", be(0, 4) + packets.join());
}

class AudioToM4a : public EngineTest {
protected:
    QString converted(const QString& source) {
        const QString target = m_dir.path("out.m4a");
        const auto done = m_engine->audioToM4a(source, target, {});
        EXPECT_TRUE(done) << done.error().text();
        m_notes = done.value_or(Notes());
        return target;
    }
    static QByteArray decoded(const QString& path) {
        return testkit::ffmpeg("-i % -f s16le -c:a pcm_s16le -", {path});
    }
    static QByteArray durationOf(const QString& path) {
        return testkit::ffprobe("-of csv=p=0 -show_entries stream=duration_ts", path)
            .trimmed()
            .split(',')
            .first();
    }

    Notes m_notes;
};

} // namespace

TEST_F(AudioToM4a, PaddingOfAPacketTableIsNotHeard) {
    testkit::ffmpeg("-f lavfi -i sine=d=3:r=44100 -c:a aac %", {m_dir.path("a.aac")});
    const QByteArrayList packets = packetsOf(testkit::TempDir::read(m_dir.path("a.aac")));
    const qint64 all = packets.size() * kFramesPerPacket;
    const int remainder = static_cast<int>(all - 1024 - 3LL * kRate);
    const struct {
        Padding padding;
        qint64 heard, skipped;
    } cases[] = {{{packets.size(), 3LL * kRate, 1024, remainder}, 3LL * kRate, 1024},
                 {{packets.size(), all, 0, 0}, all, 0},
                 // Numbers that contradict each other hide nothing.
                 {{packets.size(), 10, 1024, remainder}, all, 0},
                 {{packets.size(), all + 1024, -1024, 0}, all, 0},
                 {{packets.size(), INT64_MAX, INT32_MAX, INT32_MAX}, all, 0}};
    for (const auto& [padding, heard, skipped] : cases) {
        const QString source = m_dir.write("a.caf", cafOf(packets, padding));
        const QString target = converted(source);
        EXPECT_EQ(durationOf(target), QByteArray::number(heard)) << padding.valid;
        const QByteArray wanted = decoded(source), got = decoded(target);
        EXPECT_EQ(wanted.size(), 2 * all);
        EXPECT_GE(got.size(), 2 * heard) << padding.valid;
        EXPECT_EQ(got, wanted.mid(2 * skipped, got.size())) << padding.valid;
    }
}

TEST_F(AudioToM4a, PaddingOfDecodedAudioIsNotHeard) {
    // Silence until half a second, in a codec that M4A does not hold.
    const QString source = m_dir.path("a.caf");
    testkit::ffmpeg("-f lavfi -i aevalsrc=if(lt(t\\,0.5)\\,0\\,0.5*sin(2000*t)):d=3:s=44100 "
                    "-c:a libmp3lame %",
                    {source});
    QByteArray caf = testkit::TempDir::read(source);
    const auto onset = [](const QByteArray& audio) {
        qsizetype at = 0;
        const auto* values = static_cast<const qint16*>(static_cast<const void*>(audio.data()));
        while (at < audio.size() / 2 && std::abs(values[at]) < 1000)
            ++at;
        return at;
    };
    // All is heard as long as the table names no padding, to the sample.
    const qint64 all = decoded(source).size() / 2, priming = 5000, heard = all - priming - 333;
    EXPECT_EQ(durationOf(converted(source)), QByteArray::number(all));
    const qsizetype before = onset(decoded(m_dir.path("out.m4a")));
    const qsizetype table = caf.indexOf("pakt") + 12;
    caf.replace(table + 8, 16, be(quint64(heard), 8) + be(quint64(priming), 4) + be(333, 4));
    const QString target = converted(m_dir.write("b.caf", caf));
    EXPECT_EQ(durationOf(target), QByteArray::number(heard));
    EXPECT_NEAR(double(onset(decoded(target))), double(before - priming), 300); // pre-echo
}

TEST_F(AudioToM4a, CopiedPacketsFollowEachOtherToTheSample) {
    const struct {
        const char *name, *codec;
        qint64 samples;
    } cases[] = {{"a.caf", "alac", 3LL * kRate},
                 {"b.caf", "ac3", 87 * 1536},
                 {"c.ac3", "ac3", 87 * 1536},
                 {"d.mka", "aac", 131 * 1024},
                 {"e.aac", "aac", 131 * 1024}};
    for (const auto& [name, codec, samples] : cases) {
        const QString source = m_dir.path(name);
        testkit::ffmpeg(QByteArray("-f lavfi -i sine=d=3:r=44100 -c:a ") + codec + " %", {source});
        const QString target = converted(source);
        EXPECT_EQ(durationOf(target), QByteArray::number(samples)) << name;
        EXPECT_EQ(decoded(target), decoded(source)) << name;
    }
}

TEST_F(AudioToM4a, OnlyAFrameIsDamagedAndNoTagBehindIt) {
    const QString whole = m_dir.path("a.flac");
    testkit::ffmpeg("-f lavfi -i anoisesrc=d=2 -ac 1 %", {whole});
    const QByteArray flac = testkit::TempDir::read(whole);
    const QByteArray id3 = "TAG" + QByteArray(125, 'x');
    const QByteArray item =
        testkit::le(5000, 4) + testkit::le(2, 4) + testkit::raw("Blob\0") + QByteArray(5000, 'y');
    const QByteArray ape = item + "APETAGEX" + testkit::le(2000, 4) +
                           testkit::le(static_cast<quint64>(item.size()) + 32, 4) +
                           testkit::le(1, 4) + QByteArray(12, '\0');
    const QByteArray tags[] = {{}, id3, ape, ape + "LYRICSBEGINwordsLYRICSEND" + id3};
    for (const QByteArray& tag : tags) {
        for (const qsizetype cut : {0, 4000}) {
            converted(m_dir.write("b.flac", flac.chopped(cut) + tag));
            EXPECT_EQ(m_notes.contains(Message(kDamagedPackets, {u"1"_s})), cut > 0)
                << tag.size() << ' ' << cut;
        }
    }
}

TEST_F(AudioToM4a, NamesWhatTheAudioLoses) {
    // The first quarter of each second is twice as loud as full scale.
    const QString loud = m_dir.path("loud.wav");
    testkit::ffmpeg("-f lavfi -i aevalsrc=if(lt(mod(t\\,1)\\,0.25)\\,-2\\,1):d=2:s=8000 "
                    "-c:a pcm_f32le %",
                    {loud});
    converted(loud);
    EXPECT_THAT(m_notes, testing::Contains(Message(kSamplesClipped, {u"4000"_s})));

    const QString both = m_dir.path("both.ogg");
    testkit::ffmpeg("-f lavfi -i testsrc=d=2:s=64x48:r=10 -f lavfi -i sine=d=2 -c:v libtheora "
                    "-c:a libvorbis -metadata:s:a CHAPTER001=00:00:01.000 "
                    "-metadata:s:a CHAPTER001NAME=In -metadata:s:a CHAPTER002=00:01:30.000 "
                    "-metadata:s:a CHAPTER002NAME=Out %",
                    {both});
    const QString target = converted(both);
    EXPECT_THAT(m_notes, testing::IsSupersetOf({Message(kStreamsLeftOut, {u"video (theora)"_s}),
                                                Message(kChaptersBeyondEnd, {u"1"_s})}));
    EXPECT_NEAR(testkit::ffprobe("-of csv=p=0 -show_entries format=duration", target).toDouble(), 2,
                0.1);
}

TEST_F(AudioToM4a, EndsChaptersWithTheAudio) {
    const QString list = m_dir.write(
        "chapters", ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=90000\ntitle=In\n");
    for (const char* codec : {"aac", "flac"}) { // copied, encoded
        const QString book = m_dir.path("book.mka");
        testkit::ffmpeg(QByteArray("-f lavfi -i sine=d=2 -i % -map_chapters 1 -c:a ") + codec,
                        {list, book});
        const QString target = converted(book);
        const QByteArray chapters = testkit::ffprobe(
            "-of csv=p=0 -show_entries chapter=end_time:chapter_tags=title", target);
        EXPECT_NEAR(chapters.left(8).toDouble(), 2, 0.1) << chapters;
        EXPECT_TRUE(chapters.endsWith(",In\n")) << chapters;
        EXPECT_NEAR(
            testkit::ffprobe("-of csv=p=0 -show_entries format=duration", target).toDouble(), 2,
            0.1);
    }
}

} // namespace clipheave::platform
