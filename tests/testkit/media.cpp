// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/testkit/media.h"

#include <QFile>
#include <QJsonDocument>
#include <QtEndian>

#include <array>

namespace testkit {

namespace {

quint64 sizeOf(const QByteArray& bytes) {
    return static_cast<quint64>(bytes.size());
}

} // namespace

QByteArray ffmpeg(const QByteArray& options, const QStringList& more) {
    const RunResult done = run(u"ffmpeg"_s, words("-v error -y " + options, more));
    EXPECT_EQ(done.exitCode, 0) << options << '\n' << done.err;
    return done.out;
}

QByteArray ffprobe(const QByteArray& options, const QString& path) {
    return run(u"ffprobe"_s, words("-v error " + options, {path})).out;
}

QJsonObject ffprobe(const QString& path) {
    const QByteArray text = ffprobe("-of json -show_format -show_streams -show_chapters", path);
    return QJsonDocument::fromJson(text).object();
}

QByteArray streamHash(const QString& path, const QByteArray& maps) {
    const RunResult done =
        run(u"ffmpeg"_s,
            words("-v error -i % " + maps + " -c copy -copy_unknown -f streamhash -", {path}));
    return done.exitCode == 0 ? done.out : QByteArray();
}

void rotateClockwise(const QString& path, int degrees) {
    constexpr qsizetype kMatrix = 44, kMatrixSize = 36; // behind the type, of version 0
    QByteArray bytes = TempDir::read(path);
    for (qsizetype at = bytes.lastIndexOf("moov"); (at = bytes.indexOf("tkhd", at + 4)) >= 0;) {
        const char* size = bytes.constData() + at + kMatrix + kMatrixSize;
        const auto width = qFromBigEndian<qint32>(size), height = qFromBigEndian<qint32>(size + 4);
        if (width == 0)
            continue; // audio
        constexpr qint32 kOne = 1 << 16, kLast = 1 << 30;
        const std::array<qint32, 9> quarter{0, kOne, 0, -kOne, 0, 0, height, 0, kLast},
            half{-kOne, 0, 0, 0, -kOne, 0, width, height, kLast},
            threeQuarters{0, -kOne, 0, kOne, 0, 0, 0, width, kLast};
        QByteArray matrix;
        for (const qint32 number : degrees == 90 ? quarter : degrees == 180 ? half : threeQuarters)
            matrix += be(static_cast<quint32>(number), 4);
        bytes.replace(at + kMatrix, kMatrixSize, matrix);
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()) << path;
}

QByteArray exiftool(const QByteArray& options, const QStringList& more) {
    const RunResult done = run(u"exiftool"_s, words(options, more));
    EXPECT_EQ(done.exitCode, 0) << done.err;
    return done.out.trimmed();
}

QByteArray syncSafe(qsizetype size) {
    QByteArray bytes;
    for (int shift = 21; shift >= 0; shift -= 7)
        bytes += static_cast<char>(size >> shift & 0x7F);
    return bytes;
}

QByteArray id3Tag(int version, const QByteArray& frames, int flags, qsizetype claimed) {
    return QByteArray("ID3") + static_cast<char>(version) + '\0' + static_cast<char>(flags) +
           syncSafe(claimed < 0 ? frames.size() : claimed) + frames;
}

QByteArray id3Frame(const char* id, const QByteArray& body, int formatFlags) {
    return QByteArray(id, 4) + be(sizeOf(body), 4) + '\0' + static_cast<char>(formatFlags) + body;
}

QByteArray id3Text(const char* id, const QByteArray& text) {
    return id3Frame(id, '\0' + text);
}

QByteArray oldId3Frame(const char* id, const QByteArray& body) {
    return QByteArray(id, 3) + be(sizeOf(body), 3) + body;
}

QByteArray mpegFrames(int count) {
    QByteArray bytes;
    for (int i = 1; i <= count; ++i)
        bytes += QByteArray("\xFF\xFB\x90\x64", 4) + QByteArray(413, static_cast<char>(i));
    return bytes;
}

QByteArray flacBlock(int type, const QByteArray& body, bool last) {
    return be(static_cast<quint64>(type | (last ? 0x80 : 0)), 1) + be(sizeOf(body), 3) + body;
}

QByteArray vorbisComments(const QByteArrayList& entries) {
    const auto counted = [](const QByteArray& text) { return le(sizeOf(text), 4) + text; };
    QByteArray body = counted("maker") + le(static_cast<quint64>(entries.size()), 4);
    for (const QByteArray& entry : entries)
        body += counted(entry);
    return body;
}

QByteArray chunk(const char* id, const QByteArray& body, bool bigEndian) {
    return QByteArray(id, 4) + (bigEndian ? be(sizeOf(body), 4) : le(sizeOf(body), 4)) + body +
           QByteArray(body.size() % 2, '\0');
}

QByteArray waveFile(const QByteArray& samples, const WaveFormat& format) {
    const auto number = [](int value, int bytes) { return le(static_cast<quint64>(value), bytes); };
    const int block = format.channels * format.bits / 8;
    return chunk("RIFF",
                 "WAVE" +
                     chunk("fmt ", number(format.codec, 2) + number(format.channels, 2) +
                                       number(format.rate, 4) + number(format.rate * block, 4) +
                                       number(block, 2) + number(format.bits, 2)) +
                     chunk("data", samples));
}

} // namespace testkit
