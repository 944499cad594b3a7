// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/isobmff/movie_builder.h"
#include "tests/testkit/corpus_files.h"
#include "tests/testkit/media.h"

#include "platform/isobmff/box.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonObject>

using namespace clipheave::platform;
using namespace testkit;

namespace {

QString str(const char* text) {
    return QString::fromUtf8(text);
}

/// An elementary stream descriptor with 128 kbit/s and this AudioSpecificConfig.
QByteArray esds(const QByteArray& config, quint64 objectType = 0x40) {
    const QByteArray info = be(5, 1) + be(static_cast<quint64>(config.size()), 1) + config;
    const QByteArray decoder =
        be(objectType, 1) + be(0x15, 1) + be(0, 3) + be(256000, 4) + be(128000, 4) + info;
    const QByteArray stream =
        be(0, 2) + be(0, 1) + be(4, 1) + be(static_cast<quint64>(decoder.size()), 1) + decoder;
    return fullBox("esds", be(3, 1) + QByteArray("\x80\x80\x80", 3) +
                               be(static_cast<quint64>(stream.size()), 1) + stream);
}

AVAssetTrack audioTrack(const char* brand, const QByteArray& entry, const QByteArray& tables = {}) {
    const TempDir dir;
    TrackParts parts;
    parts.handler = "soun";
    parts.stsdEntry = entry;
    parts.tables = tables;
    const MediaFacts facts = read(dir, ftyp(brand) + box("moov", mvhd(0, 600) + trak(parts)));
    EXPECT_EQ(facts.tracks.size(), 1u);
    return facts.tracks.empty() ? AVAssetTrack() : facts.tracks[0];
}

TEST(IsobmffMovie, VideoFactsComeFromTheFirstTrackThatIsNotAnImage) {
    const TempDir dir;
    TrackParts chapters;
    chapters.id = 2;
    chapters.stsdEntry = visualEntry("jpeg", 160, 90);
    TrackParts video;
    video.stsdEntry = visualEntry("avc1", 1920, 1080);
    video.tables = fullBox("stts", be(1, 4) + be(50, 4) + be(40, 4)) +
                   fullBox("stsz", be(0, 4) + be(50, 4) + QByteArray(200, '\1'));
    video.extra = box("tref", box("chap", be(2, 4)));
    video.header = tkhd(1, 960, 540, 0);
    video.header.replace(48, 8, be(0, 4) + be(0x10000, 4)); // a, b of a rotation by 90 degrees
    const quint64 created = 2'082'844'800 + 86'400;
    const MediaFacts facts =
        read(dir, ftyp("isom") + box("mdat", "payload") +
                      box("moov", mvhd(created, 900) + trak(chapters) + trak(video)));
    EXPECT_EQ(facts.container, Container::Mp4);
    EXPECT_EQ(facts.majorBrand, str("isom"));
    EXPECT_EQ(facts.durationSeconds, 1.5);
    EXPECT_EQ(facts.contentCreationDate.toString(Qt::ISODate), str("1970-01-02T00:00:00Z"));
    ASSERT_EQ(facts.tracks.size(), 2u);
    EXPECT_TRUE(facts.tracks[0].isAttachedPicture);
    EXPECT_EQ(facts.pixelSize, QSize(1920, 1080));
    EXPECT_EQ(facts.tracks[1].nominalFrameRate, 25);
    EXPECT_FALSE(facts.tracks[1].enabled);
    EXPECT_EQ(facts.tracks[1].preferredTransform[1], 1);
    EXPECT_EQ(facts.tracks[1].preferredTransform[8], 1);
    EXPECT_TRUE(facts.problem.isEmpty());
}

TEST(IsobmffMovie, AudioFactsComeFromWhereTheTruthIs) {
    // Rate and channels of AAC are those of its configuration; 22050 Hz doubled by replication.
    const AVAssetTrack aac =
        audioTrack("M4A ", audioEntry("mp4a", 2, 22050, esds(QByteArray("\x2B\x8A\x08\x00", 4))));
    EXPECT_EQ(aac.sampleRate, 44100);
    EXPECT_EQ(aac.channels, 1);
    EXPECT_EQ(aac.bitRate, 128000);
    // The sizes of the samples, where there is a table, beat what the encoder announced.
    const AVAssetTrack summed =
        audioTrack("M4A ", audioEntry("mp4a", 2, 44100, esds("\x12\x10")),
                   fullBox("stsz", be(0, 4) + be(2, 4) + be(1000, 4) + be(1500, 4)));
    EXPECT_EQ(summed.bitRate, 10000);
    // QuickTime version 1 hides the descriptor in "wave"; version 2 has its own fields.
    QByteArray v1 =
        audioEntry("mp4a", 1, 1, be(0, 16) + box("wave", box("frma", "mp4a") + esds("\x12\x10")));
    v1.replace(16, 2, be(1, 2));
    EXPECT_EQ(audioTrack("qt  ", v1).channels, 2);
    EXPECT_EQ(audioTrack("qt  ", v1).sampleRate, 44100);
    QByteArray v2 = audioEntry("lpcm", 3, 1,
                               be(72, 4) + be(0x40E7700000000000, 8) + be(6, 4) +
                                   be(0x7F000000, 4) + be(24, 4) + be(0, 12));
    v2.replace(16, 2, be(2, 2));
    const AVAssetTrack pcm = audioTrack("qt  ", v2, fullBox("stsz", be(1, 4) + be(96000, 4)));
    EXPECT_EQ(pcm.sampleRate, 48000);
    EXPECT_EQ(pcm.channels, 6);
    EXPECT_EQ(pcm.bitRate, 48000 * 6 * 24);
    const AVAssetTrack alac =
        audioTrack("M4A ", audioEntry("alac", 2, 44100,
                                      fullBox("alac", be(4096, 4) + be(0, 5) + be(2, 1) + be(0, 6) +
                                                          be(700000, 4) + be(96000, 4))));
    EXPECT_EQ(alac.sampleRate, 96000);
    EXPECT_EQ(alac.channels, 2);
    const struct {
        quint64 objectType;
        const char* codec;
    } others[] = {{0x40, "mp4a"}, {0x67, "mp4a"}, {0x6B, ".mp3"},    {0xA0, "sevc"},
                  {0xA1, "ssmv"}, {0xE1, "sqcp"}, {0xA2, "mp4a.A2"}, {0xA5, "ac-3"}};
    for (const auto& [objectType, codec] : others)
        EXPECT_EQ(
            audioTrack("mp42", audioEntry("mp4a", 1, 8000, esds("\x12\x10", objectType))).codec,
            str(codec));
    const AVAssetTrack ac3 =
        audioTrack("mp42", audioEntry("ac-3", 2, 48000, box("dac3", "\x10\x3D\x40")));
    EXPECT_EQ(ac3.channels, 6);
}

QByteArray fragment(quint32 samples, quint64 decodeTime) {
    const QByteArray tfhd = box("tfhd", be(8, 4) + be(1, 4) + be(40, 4)); // 40 ticks a sample
    const QByteArray tfdt = fullBox("tfdt", be(decodeTime, 4));
    const QByteArray trun = fullBox("trun", be(samples, 4));
    return box("moof", fullBox("mfhd", be(1, 4)) + box("traf", tfhd + tfdt + trun)) +
           box("mdat", "x");
}

TEST(IsobmffMovie, FragmentsGiveTheDuration) {
    const TempDir dir;
    TrackParts parts;
    parts.stsdEntry = visualEntry("avc1", 64, 64);
    parts.duration = 0;
    const auto movie = [&](const QByteArray& mehd) {
        return ftyp("iso5") +
               box("moov", mvhd(0, 0) + trak(parts) +
                               box("mvex", mehd + fullBox("trex", be(1, 4) + be(0, 16))));
    };
    const QByteArray fragments = fragment(25, 0) + fragment(50, 1000);
    // Walked; announced; by the index at the front; by the one at the end, which needs only the
    // last.
    const MediaFacts walked = read(dir, movie({}) + fragments);
    EXPECT_EQ(walked.durationSeconds, 3);
    EXPECT_EQ(walked.tracks[0].nominalFrameRate, 25);
    EXPECT_EQ(read(dir, movie(fullBox("mehd", be(2400, 4))) + fragments).durationSeconds, 4);
    const QByteArray sidx =
        fullBox("sidx", be(1, 4) + be(1000, 4) + be(0, 8) + be(0, 2) + be(1, 2) +
                            be(static_cast<quint64>(fragments.size()), 4) + be(5000, 4) + be(0, 4));
    EXPECT_EQ(read(dir, movie({}) + sidx + fragments).durationSeconds, 5);
    const QByteArray hole = be(3, 4) + "hole"; // a walk would end here
    const quint64 last = static_cast<quint64>(movie({}).size() + fragment(25, 0).size()) + 8;
    const QByteArray tfra = fullBox("tfra", be(1, 4) + be(0, 4) + be(1, 4) + be(9999, 4) +
                                                be(last, 4) + be(0x010101, 3));
    const QByteArray mfra =
        box("mfra", tfra + fullBox("mfro", be(static_cast<quint64>(tfra.size()) + 24, 4)));
    EXPECT_EQ(read(dir, movie({}) + fragment(25, 7000) + hole + fragment(50, 1000) + mfra)
                  .durationSeconds,
              3);
    // Cut out of a stream: what came before the start does not last.
    const MediaFacts late = read(dir, movie({}) + fragment(25, 70'000) + fragment(50, 71'000));
    EXPECT_EQ(late.durationSeconds, 3);
    EXPECT_EQ(late.tracks[0].durationSeconds, 3);
    EXPECT_EQ(read(dir, movie({}) + fragment(25, 70'000) + hole + fragment(50, 71'000) + mfra)
                  .durationSeconds,
              3);
}

TEST(IsobmffMovie, DamageKeepsWhatStoodBefore) {
    const TempDir dir;
    const QByteArray good = box("udta", itunesMeta(box("\xA9nam", dataBox(1, "Title"))));
    const QByteArray whole =
        ftyp("M4A ") + box("moov", mvhd(0, 600) + good + box("udta", QByteArray(400, 'x')));
    for (qsizetype cut = 24; cut < whole.size(); ++cut) {
        auto reader = FileReader::open(dir.write("cut", whole.left(cut)));
        const auto facts = readIsobmff(*reader);
        ASSERT_TRUE(facts.has_value());
        EXPECT_FALSE(facts->problem.isEmpty()) << cut;
        if (cut > whole.size() - 400) {
            EXPECT_EQ(facts->metadata.value(0).stringValue(), str("Title"));
        }
    }
    // Boxes that begin with nonsense sizes and counts.
    const QByteArray hostile =
        box("meta", keysBox({}).replace(12, 4, be(0xFFFFFFFF, 4)) +
                        box("ilst", be(0xFFFFFFFF, 4) + "\xA9nam" + be(3, 4)));
    const MediaFacts facts = read(dir, box("moov", mvhd(0, 600) + hostile + be(4, 4) + "udta"));
    EXPECT_EQ(facts.durationSeconds, 1);
    EXPECT_TRUE(facts.metadata.isEmpty());
    EXPECT_FALSE(facts.problem.isEmpty());
    for (const QByteArray& nothing :
         {QByteArray(), QByteArray("no movie at all, really"), box("mdat", "x")}) {
        auto reader = FileReader::open(dir.write("none", nothing));
        const auto failed = readIsobmff(*reader);
        ASSERT_FALSE(failed.has_value());
        EXPECT_EQ(failed.error().code, ErrorCode::InvalidData);
    }
}

TEST(IsobmffMovie, NestingAndFloodsEnd) {
    const TempDir dir;
    QByteArray nested;
    for (int depth = 0; depth < 10'000; ++depth)
        nested =
            be(static_cast<quint64>(nested.size()) + 8, 4) + (depth % 2 ? "moov" : "udta") + nested;
    EXPECT_LE(read(dir, nested).metadata.size(), 1); // one unknown box, not looked into
    QByteArray many;
    for (int i = 0; i < 20'000; ++i)
        many += box("\xA9nam", dataBox(1, "x"));
    const MediaFacts facts = read(dir, box("moov", box("udta", itunesMeta(many))));
    EXPECT_EQ(facts.metadata.size(), 10'000);
    EXPECT_FALSE(facts.problem.isEmpty());
}

TEST(IsobmffMovie, LargeFilesAreReadInFewCalls) {
    const TempDir dir;
    TrackParts video;
    video.stsdEntry = visualEntry("avc1", 1920, 1080);
    const auto table = [](const char* type, int megabytes) {
        return fullBox(type, be(0, 4) + be(static_cast<quint64>(megabytes) << 18, 4) +
                                 QByteArray(megabytes << 20, '\1'));
    };
    video.tables = table("stts", 2) + table("ctts", 2) + table("stsz", 3) + table("stco", 3);
    const QByteArray cover = QByteArray("\xFF\xD8\xFF\xE0", 4) + QByteArray(4 << 20, 'x');
    const QByteArray udta = box(
        "udta", itunesMeta(box("covr", dataBox(13, cover)) + box("\xA9nam", dataBox(1, "Title"))));
    const QByteArray moov = box("moov", mvhd(0, 600) + trak(video) + trak(video) + udta);
    // Five gigabytes of payload before the movie header, of which nothing is on the disk.
    const QString path =
        dir.write("large.mp4", ftyp("mp42") + be(1, 4) + "mdat" + be(5ull << 30, 8));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek((5ll << 30) + 20));
    ASSERT_EQ(file.write(moov), moov.size());
    file.close();
    auto reader = FileReader::open(path);
    const auto facts = readIsobmff(*reader);
    ASSERT_TRUE(facts.has_value());
    EXPECT_TRUE(facts->problem.isEmpty()) << facts->problem.text();
    EXPECT_EQ(facts->tracks.size(), 2u);
    ASSERT_EQ(facts->metadata.size(), 2);
    EXPECT_EQ(facts->metadata[1].stringValue(), str("Title"));
    EXPECT_EQ(facts->metadata[0].dataValue(), cover);
    EXPECT_LT(reader->bytesFetched(), 512u << 10);
}

TEST(Boxes, HeadersOfAllSizesAndTheirFaults) {
    const QByteArray bytes =
        box("free", "ab") + be(1, 4) + "wide" + be(20, 8) + "wxyz" + be(0, 4) + "last" + "rest";
    BoxWalker walker(bytes, 100);
    const auto first = walker.next(), second = walker.next(), third = walker.next();
    ASSERT_TRUE(first && second && third);
    EXPECT_EQ(first->offset, 100u);
    EXPECT_EQ(walker.payload(*second).toByteArray(), QByteArray("wxyz"));
    EXPECT_EQ(second->headerSize, 16u);
    EXPECT_EQ(third->end(), 100u + static_cast<quint64>(bytes.size()));
    EXPECT_TRUE(third->toEnd);
    EXPECT_FALSE(walker.next().has_value());
    EXPECT_TRUE(walker.problem().isEmpty());
    const QByteArray terminated = box("free", {}) + be(0, 4);
    BoxWalker ended(terminated);
    EXPECT_TRUE(ended.next() && !ended.next() && ended.problem().isEmpty());
    for (const QByteArray& bad : {be(7, 4) + "free", be(1, 4) + "free" + be(15, 8),
                                  be(1, 4) + "free" + be(1, 4), QByteArray("abc")}) {
        BoxWalker damaged(bad);
        EXPECT_FALSE(damaged.next().has_value());
        EXPECT_FALSE(damaged.problem().isEmpty());
    }
    EXPECT_EQ(unpackLanguage(0x15C7), str("eng"));
    EXPECT_TRUE(unpackLanguage(0).isEmpty());
}

/// The values that ffprobe prints for the first stream of a kind.
QJsonObject probedStream(const QJsonObject& probed, const char* kind) {
    for (const QJsonValue value : probed["streams"_L1].toArray()) {
        QJsonObject stream = value.toObject();
        const bool image = stream["disposition"_L1]["attached_pic"_L1].toInt() == 1;
        if (stream["codec_type"_L1].toString() == QLatin1String(kind) && !image)
            return stream;
    }
    return {};
}

class IsobmffCorpus : public testing::TestWithParam<const char*> {};

TEST_P(IsobmffCorpus, AgreesWithFfprobe) {
    SKIP_WITHOUT("ffprobe");
    SKIP_WITHOUT_CORPUS();
    const QString path = corpus() + u'/' + QLatin1String(GetParam());
    const QJsonObject probed = testkit::ffprobe(path);
    auto reader = FileReader::open(path);
    const auto facts = readIsobmff(*reader);
    ASSERT_TRUE(facts.has_value());
    const double seconds = probed["format"_L1]["duration"_L1].toString().toDouble();
    EXPECT_NEAR(facts->durationSeconds, seconds, 0.06);
    const QJsonObject video = probedStream(probed, "video"), audio = probedStream(probed, "audio");
    const QSize size(video["width"_L1].toInt(-1), video["height"_L1].toInt(-1));
    EXPECT_EQ(facts->pixelSize, size);
    EXPECT_EQ(facts->audioChannels, audio["channels"_L1].toInt());
    EXPECT_EQ(facts->audioSampleRate, audio["sample_rate"_L1].toString().toDouble());
    const double rate = audio["bit_rate"_L1].toString().toDouble();
    EXPECT_NEAR(facts->audioBitRate, rate, rate / 50);
}
INSTANTIATE_TEST_SUITE_P(
    Files, IsobmffCorpus,
    testing::Values("video/ExoPlayer__video_1.mp4", "video/fq__in24.mp4",
                    "video/media__sample_ac3_fragmented.mp4", "video/media__sample_alac_20bit.mp4",
                    "video/metadata-extractor-images__with-gps.mov", "video/mp4parser__example.f4v",
                    "audio/tinytag__mp4_extended_size.m4a", "audio/mutagen__nero-chapters.m4b",
                    "video/media__bbb_176x144_128kbps_15fps_h263.3gp"));

TEST(IsobmffCorpusItems, PositionsAndDatesOfRealCameras) {
    SKIP_WITHOUT_CORPUS();
    const auto items = [](const char* name) {
        auto reader = FileReader::open(corpus() + u'/' + QLatin1String(name));
        return itemTexts(readIsobmff(*reader).value());
    };
    EXPECT_THAT(items("video/metadata-extractor-images__with-gps.mov"),
                testing::IsSupersetOf(
                    {str("mdta/com.apple.quicktime.make=Apple"),
                     str("mdta/com.apple.quicktime.model=iPhone 6"),
                     str("mdta/com.apple.quicktime.location.ISO6709=+32.0929+034.8620+028.516/"),
                     str("mdta/com.apple.quicktime.creationdate=2019-07-24T11:25:40+0300")}));
    EXPECT_THAT(
        items("video/metadata-extractor-images__FLIR_Thermal.mp4"),
        testing::IsSupersetOf({str("uiso/loci=+34.0754-118.2543+000.000/"),
                               str("uiso/auth=FLIR One"), str("uiso/date=2021-05-16T19:27:55Z")}));
    EXPECT_THAT(items("video/gpmf-parser__max-heromode.mp4"),
                testing::Contains(str("uiso/%A9xyz=+33.1268-117.3273/")));
}

} // namespace
