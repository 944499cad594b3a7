// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/messages.h"
#include "tests/platform/writer/writer_kit.h"

#include "platform/isobmff/write/write_layout.h"
#include "platform/media/model/messages.h"

#include <QFile>
#include <QtEndian>

#include <csignal>
#include <sys/resource.h>

using namespace testkit;
using namespace writertest;

namespace {

const QString kNewTitle = u"A new title, ünïcode"_s;
const Items kTitleOnly{newItem("itsk/%A9nam", kNewTitle)};

struct EncodedCase {
    const char* name;
    const char* options;
    bool rotated = false;
};
void PrintTo(const EncodedCase& encoded, std::ostream* out) {
    *out << encoded.name;
}

class EncodedFiles : public testing::TestWithParam<EncodedCase> {};

constexpr const char* kOldTags = " -metadata title=Oldtitle -metadata location=+48.8583+002.2945/";

INSTANTIATE_TEST_SUITE_P(
    Writer, EncodedFiles,
    testing::Values(EncodedCase{"last.mp4", ""}, EncodedCase{"first.mp4", "-movflags +faststart"},
                    EncodedCase{"last.mov", "-timecode 01:00:00:00"},
                    EncodedCase{"keys.mov", "-movflags +use_metadata_tags+faststart"},
                    EncodedCase{"last.m4v", "-f ipod"}, EncodedCase{"rotated.mp4", "", true},
                    EncodedCase{"two.mov", "-map 0 -map 1 -map 0 -map 1 -c:v:1 mpeg4"},
                    EncodedCase{"frag.mp4", "-movflags +frag_keyframe+empty_moov -g 10"},
                    EncodedCase{"based.mp4", "-movflags +frag_keyframe -g 10 -ignore_editlist 1"},
                    EncodedCase{"dash.mp4", "-movflags +frag_keyframe+dash+global_sidx -g 10"},
                    EncodedCase{"large.mp4", "-b:v 4M -minrate 4M -movflags +faststart"}));

QByteArray validation(const QString& path) {
    return exiftool("-validate -warning -s3", {path});
}

TEST_P(EncodedFiles, KeepEverythingButTheMetadata) {
    const TempDir dir;
    const QString name = QString::fromLatin1(GetParam().name);
    const QString source = encode(dir, name, QByteArray(GetParam().options) + kOldTags);
    if (GetParam().rotated)
        rotateClockwise(source, 90);
    const QByteArray before = TempDir::read(source), hash = mediaHash(source);
    ASSERT_FALSE(hash.isEmpty());
    for (const bool moovFirst : {false, true}) {
        const QString target = dir.path(u"out-"_s + name);
        const auto outcome =
            write(source, target, kTitleOnly,
                  moovFirst ? OutputContainer::M4V : OutputContainer::QuickTimeMovie, moovFirst);
        ASSERT_TRUE(outcome) << outcome.error().text();
        EXPECT_THAT(outcome->notes, testing::ElementsAre(kLocationKept));
        const QByteArray after = TempDir::read(target);
        EXPECT_EQ(mediaHash(target), hash);
        EXPECT_TRUE(chunkHeads(after) == chunkHeads(before));
        // The boxes of fragments hold offsets of their own.
        EXPECT_TRUE(before.contains("moof") || keptBoxes(after) == keptBoxes(before));
        EXPECT_FALSE(after.contains("Oldtitle"));
        EXPECT_EQ(boxesIn(after).constLast().type == "moov",
                  !moovFirst && boxesIn(before).constLast().type == "moov");
        EXPECT_EQ(QString::fromUtf8(exiftool("-s3 -Title", {target})), kNewTitle);
        EXPECT_EQ(validation(target), validation(source));
    }
}

TEST(Layout, PayloadStaysOrKeepsItsPlaceInABlock) {
    HandMade media;
    media.payload.resize(300'000, 'x');
    for (const bool moovFirst : {false, true}) {
        media.moovFirst = moovFirst;
        const TempDir dir;
        const QByteArray source = media.bytes();
        QByteArray target = rewritten(dir, source, kTitleOnly);
        EXPECT_EQ((target.indexOf("mdat") - source.indexOf("mdat")) % 4096, 0) << moovFirst;
        EXPECT_EQ(chunkHeads(target), chunkHeads(source));
        // Saving again takes the padding up again instead of adding more.
        const qsizetype once = target.size();
        for (int i = 0; i < 3; ++i)
            target = rewritten(dir, target, kTitleOnly);
        EXPECT_EQ(target.size(), once);
    }
    media = {};
    media.beforeMedia = box("wide", {}) + box("uuid", QByteArray(40, 'u'));
    media.afterAll = box("free", "not empty") + box("abcd", "last") + "tail";
    const TempDir dir;
    EXPECT_EQ(topLevel(rewritten(dir, media.bytes(), kTitleOnly, OutputContainer::Mp4)),
              "ftyp wide uuid mdat moov free abcd");
    EXPECT_TRUE(rewritten(dir, media.bytes(), kTitleOnly).endsWith("lasttail"));
    EXPECT_EQ(topLevel(rewritten(dir, media.bytes(), kTitleOnly, OutputContainer::M4V, true)),
              "ftyp moov wide uuid mdat free abcd");
}

TEST(Layout, FileTypesAreThoseOfTheContainers) {
    const TempDir dir;
    HandMade media;
    const auto fileType = [&](OutputContainer container) {
        return payloadAt(rewritten(dir, media.bytes(), Items(), container), "ftyp");
    };
    EXPECT_EQ(fileType(OutputContainer::M4V), QByteArray("M4V \0\0\0\1M4V M4A mp42isom", 24));
    EXPECT_EQ(fileType(OutputContainer::M4A), QByteArray("M4A \0\0\0\0M4A mp42isom", 20));
    EXPECT_EQ(fileType(OutputContainer::Mp4), QByteArray("mp42\0\0\0\1mp41mp42isom", 20));
    EXPECT_EQ(fileType(OutputContainer::QuickTimeMovie), QByteArray("qt  \0\0\0\0qt  ", 12));
    // Sample descriptions in QuickTime's layout keep the brand that announces them.
    media.brand = "qt  ";
    EXPECT_TRUE(fileType(OutputContainer::M4V).endsWith("isomqt  "));
}

TEST(Offsets, OfEveryKindFollowThePayload) {
    const TempDir dir;
    HandMade media;
    media.moovFirst = true;
    media.moreTrack = fullBox("saio", be(1, 4) + be(0, 4));
    media.moreMoov = box("gps ", be(0, 4) + be(1, 4) + be(0, 4) + be(100, 4));
    const QByteArray mark(16, 'M');
    const auto build = [&](quint64 at) {
        media.moreTrack = fullBox("saio", be(1, 4) + be(at, 4));
        media.moreMoov = box("gps ", be(0, 4) + be(1, 4) + be(at, 4) + be(100, 4));
        const QByteArray item = be(1, 2) + be(0, 2) + be(at, 4) + be(1, 2) + be(8, 4) + be(4, 4);
        const QByteArray base = box("tfhd", be(1, 4) + be(1, 4) + be(at, 8));
        const QByteArray entry = be(0, 4) + be(at, 4) + be(0, 3);
        media.afterAll = fullBox("meta", box("hdlr", be(0, 8) + "pict") +
                                             fullBox("iloc", be(0x4440, 2) + be(1, 2) + item)) +
                         box("moof", box("traf", base)) +
                         box("mfra", fullBox("tfra", be(1, 4) + be(0, 4) + be(1, 4) + entry));
        return media.bytes();
    };
    media.payload.replace(2000, mark.size(), mark);
    const auto at = static_cast<quint64>(build(0).indexOf(mark));
    const QByteArray source = build(at);
    const QByteArray target =
        rewritten(dir, source, Items{newItem("itsk/%A9nam", QString(5000, u'x'))});
    const auto moved = static_cast<quint64>(target.indexOf(mark));
    ASSERT_NE(moved, at);
    EXPECT_EQ(payloadAt(target, "moov/trak/mdia/minf/stbl/saio").mid(8), be(moved, 4));
    EXPECT_EQ(payloadAt(target, "moov/gps ").mid(8, 4), be(moved, 4));
    EXPECT_EQ(payloadAt(target, "meta/iloc").mid(12, 4), be(moved, 4));
    EXPECT_EQ(payloadAt(target, "meta/iloc").mid(18, 4), be(8, 4));
    EXPECT_EQ(payloadAt(target, "moof/traf/tfhd").mid(8), be(moved, 8));
    EXPECT_EQ(payloadAt(target, "mfra/tfra").mid(20, 4), be(moved, 4));
    EXPECT_EQ(chunkHeads(target), chunkHeads(source));
}

TEST(Offsets, BecomeWideWhenTheyLeaveFourGigabytes) {
    // The payload is cut short, as after a broken copy, so that the offsets may be this large.
    const TempDir dir;
    HandMade media;
    media.moovFirst = true;
    QByteArray source = media.bytes();
    const qsizetype media32 = source.indexOf("mdat") - 4;
    source =
        source.left(media32) + be(1, 4) + "mdat" + be(0x2'0000'0000, 8) + source.mid(media32 + 8);
    const qsizetype table = source.indexOf("stco") + 12;
    source.replace(table + 12, 4, be(0xFFFF'FF00, 4));
    const QByteArray target =
        rewritten(dir, source, Items{newItem("itsk/%A9nam", QString(5000, u'x'))});
    const QByteArray wide = payloadAt(target, "moov/trak/mdia/minf/stbl/co64");
    const auto shift = static_cast<quint64>(target.indexOf("mdat") - source.indexOf("mdat"));
    ASSERT_EQ(wide.size(), 8 + 4 * 8);
    EXPECT_EQ(wide.mid(32, 8), be(0xFFFF'FF00 + shift, 8));
    EXPECT_EQ(wide.mid(8, 8), be(qFromBigEndian<quint32>(source.constData() + table) + shift, 8));
    EXPECT_TRUE(target.endsWith(media.payload)); // every byte that exists
}

TEST(Offsets, OfOtherFilesStayAndThoseOfNowhereFail) {
    const TempDir dir;
    const Items grown{newItem("itsk/%A9nam", QString(5000, u'x'))};
    HandMade media;
    media.moovFirst = true;
    QByteArray source = media.bytes();
    source.replace(source.indexOf("stco") + 12, 4, be(0x7FFF'FFFF, 4));
    const auto outcome = write(dir.write("s", source), dir.path("t"), grown);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error().code, ErrorCode::InvalidData);
    EXPECT_EQ(dir.files().join(u' '), u"s");
    const auto tableOf = [](const QByteArray& bytes) {
        return payloadAt(bytes, "moov/trak/mdia/minf/stbl/stco");
    };
    const QByteArray elsewhere = fullBox("url ", "file:///other.mov");
    media.references = box("dinf", fullBox("dref", be(1, 4) + elsewhere));
    const QByteArray target = rewritten(dir, media.bytes(), grown);
    EXPECT_NE(target.indexOf("mdat"), media.bytes().indexOf("mdat"));
    EXPECT_EQ(tableOf(target), tableOf(media.bytes()));
    const QByteArray here = box("url ", be(1, 4));
    media.references = box("dinf", fullBox("dref", be(2, 4) + elsewhere + here));
    EXPECT_TRUE(rewritten(dir, media.bytes(), grown).isNull());
    media.references = box("dinf", fullBox("dref", be(1, 4) + here));
    EXPECT_NE(tableOf(rewritten(dir, media.bytes(), grown)), tableOf(media.bytes()));
}

TEST(Sources, ThatCannotBeWrittenSayWhy) {
    const TempDir dir;
    HandMade media;
    const auto codeOf = [&](const QByteArray& bytes) {
        const QString target = dir.path("t");
        const auto outcome = write(dir.write("s", bytes), target, kTitleOnly);
        EXPECT_EQ(dir.files().size(), 1);
        return outcome ? ErrorCode::Io : outcome.error().code;
    };
    EXPECT_EQ(codeOf({}), ErrorCode::InvalidData);
    EXPECT_EQ(codeOf(box("ftyp", "isom") + box("mdat", "x")), ErrorCode::InvalidData);
    EXPECT_EQ(codeOf(media.bytes().chopped(1)), ErrorCode::Truncated);
    // Compressed headers by another method, with a lying size, of something else.
    const auto compressed = [](const char* method, quint64 size, const QByteArray& data) {
        return box("cmov", box("dcom", method) + box("cmvd", be(size, 4) + qCompress(data).mid(4)));
    };
    const QByteArray inner = box("moov", box("mvhd", QByteArray(100, '\0')));
    const auto size = static_cast<quint64>(inner.size());
    const std::pair<QByteArray, ErrorCode> damaged[] = {
        {compressed("lzma", size, inner), ErrorCode::NotSupported},
        {compressed("zlib", size - 1, inner), ErrorCode::InvalidData},
        {compressed("zlib", size + 1, inner), ErrorCode::InvalidData},
        {compressed("zlib", 0xFFFFFFFF, inner), ErrorCode::LimitExceeded},
        {compressed("zlib", 4, "moov"), ErrorCode::InvalidData},
        {box("cmov", "zlib"), ErrorCode::NotSupported}};
    for (const auto& [cmov, code] : damaged) {
        media.moreMoov = cmov;
        EXPECT_EQ(codeOf(media.bytes()), code);
        auto reader = FileReader::open(dir.path("s"));
        EXPECT_FALSE(readIsobmff(*reader)->problem.isEmpty());
    }
    media.moreMoov = be(500, 4) + "over";
    EXPECT_EQ(codeOf(media.bytes()), ErrorCode::InvalidData);
    const QString path = dir.write("s", HandMade().bytes());
    const auto same = write(path, dir.path("./s"), kTitleOnly);
    EXPECT_EQ(same ? ErrorCode::Io : same.error().code, ErrorCode::InvalidArgument);
    EXPECT_EQ(TempDir::read(path), HandMade().bytes());
}

TEST(Sources, CompressedMovieHeadersAreReadAndWrittenPlain) {
    const TempDir dir;
    HandMade media;
    const QByteArray cover = QByteArray("\x89PNG") + QByteArray(90'000, 'c');
    media.udta = listMeta(listText("\xA9nam", "Old") + listText("\xA9"
                                                                "alb",
                                                                cover));
    const QByteArray plain = media.bytes();
    const QByteArray header = box("moov", payloadAt(plain, "moov"));
    QByteArray bytes = plain;
    ASSERT_TRUE(bytes.endsWith(header)) << "offsets stay the same";
    bytes.chop(header.size());
    bytes += box("moov", box("cmov", box("dcom", "zlib") + box("cmvd", qCompress(header))));
    const QString source = dir.write("s", bytes), target = dir.path("t");
    auto reader = FileReader::open(source), other = FileReader::open(dir.write("plain", plain));
    const auto facts = readIsobmff(*reader), wanted = readIsobmff(*other);
    ASSERT_TRUE(facts && wanted);
    EXPECT_TRUE(facts->problem.isEmpty());
    EXPECT_EQ(facts->durationSeconds, wanted->durationSeconds);
    EXPECT_EQ(facts->tracks.size(), wanted->tracks.size());
    ASSERT_EQ(facts->metadata.size(), wanted->metadata.size());
    for (qsizetype i = 0; i < facts->metadata.size(); ++i)
        EXPECT_EQ(facts->metadata[i].dataValue(), wanted->metadata[i].dataValue());
    ASSERT_TRUE(write(source, target, kTitleOnly));
    EXPECT_EQ(chunkHeads(TempDir::read(target)), chunkHeads(plain));
    EXPECT_EQ(keptBoxes(TempDir::read(target)), keptBoxes(rewritten(dir, plain, kTitleOnly)));
}

TEST(Sources, ThatEndBeforeTheirSamplesAreNamed) {
    const TempDir dir;
    const auto notesOf = [&dir](const QByteArray& bytes) {
        const auto done = write(dir.write("cut", bytes), dir.path("t"), std::nullopt);
        return done ? done->notes : Notes();
    };
    const auto load = [&dir](const QString& name, const QByteArray& options) {
        return TempDir::read(encode(dir, name, options));
    };
    const QByteArray whole = load(u"first.mp4"_s, "-b:v 2M -movflags +faststart");
    const qsizetype media = whole.indexOf("mdat") - 4;
    EXPECT_THAT(notesOf(whole), testing::IsEmpty());
    const Notes half = notesOf(whole.left(media + (whole.size() - media) / 2));
    ASSERT_EQ(half.size(), 1);
    EXPECT_EQ(half[0].code(), kEndsBeforeDuration);
    EXPECT_NEAR(half[0].arguments()[0].toDouble(), 1, 0.4);
    EXPECT_NEAR(half[0].arguments()[1].toDouble(), 2, 0.1);
    EXPECT_EQ(notesOf(whole.left(media)).size(), 1);
    EXPECT_EQ(notesOf(load(u"f.mp4"_s, "-movflags +frag_keyframe+empty_moov").chopped(900)),
              Notes{kEndsBeforeAnnouncedBytes});
}

TEST(Sources, OfOddLayoutsAreWritten) {
    const TempDir dir;
    HandMade media;
    // The first of several headers counts; the other would keep the old texts alive.
    media.udta = listMeta(listText("\xA9nam", "Secret"));
    media.afterAll = box("moov", box("udta", box("abcd", "Secret")));
    const QByteArray one = rewritten(dir, media.bytes(), kTitleOnly);
    EXPECT_EQ(topLevel(one), "ftyp mdat moov");
    EXPECT_FALSE(one.contains("Secret"));
    // A payload without a size reaches to the end; a header without payload is one as well.
    media = {};
    media.moovFirst = true;
    QByteArray open = media.bytes();
    open.replace(open.indexOf("mdat") - 4, 4, be(0, 4));
    EXPECT_EQ(chunkHeads(rewritten(dir, open, kTitleOnly)), chunkHeads(open));
    const QByteArray bare = box("moov", box("mvhd", QByteArray(100, '\0')));
    EXPECT_EQ(topLevel(rewritten(dir, bare, kTitleOnly)), "ftyp moov");
}

TEST(Interrupted, WritesOfAFileThatIsWrittenToFail) {
    const testkit::TempDir dir;
    PassthroughRequest request;
    request.source = dir.write("s.mp4", HandMade{}.bytes());
    request.target = dir.path("t.mp4");
    request.progress = [&request](double) {
        QFile source(request.source);
        return source.open(QIODevice::Append) && source.write("x") == 1;
    };
    const auto done = writePassthrough(request);
    ASSERT_FALSE(done);
    EXPECT_EQ(done.error().detail, Message(kFileHasChanged));
    EXPECT_EQ(dir.files(), QStringList{u"s.mp4"_s});
}

TEST(Interrupted, WritesLeaveNothing) {
    const TempDir dir;
    HandMade media;
    media.payload.resize(3'000'000, 'x');
    const QString source = dir.write("s", media.bytes());
    const auto files = [&] { return dir.files(); };
    PassthroughRequest request;
    request.source = source;
    request.target = dir.path("t");
    request.metadata = kTitleOnly;
    double last = 0;
    request.progress = [&](double done) {
        EXPECT_GE(done, last);
        last = done;
        return done < 0.5;
    };
    const auto cancelled = writePassthrough(request);
    ASSERT_FALSE(cancelled);
    EXPECT_EQ(cancelled.error().code, ErrorCode::Cancelled);
    EXPECT_EQ(files(), QStringList{u"s"_s});

    request.progress = {};
    rlimit old{};
    ::getrlimit(RLIMIT_FSIZE, &old);
    const auto handler = ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{1'000'000, old.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const auto full = writePassthrough(request);
    ::setrlimit(RLIMIT_FSIZE, &old);
    ::signal(SIGXFSZ, handler);
    EXPECT_FALSE(full);
    EXPECT_EQ(files(), QStringList{u"s"_s});
    EXPECT_TRUE(writePassthrough(request));
}

} // namespace
