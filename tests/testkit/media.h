// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/testkit/testkit.h"

#include <QJsonObject>

/// Skips the running test where a program is missing.
#define SKIP_WITHOUT(program)                                                                      \
    if (!testkit::hasProgram(QStringLiteral(program)))                                             \
    GTEST_SKIP() << "needs " program

// Media files: by other programs, or byte by byte.
namespace testkit {

/// Runs ffmpeg and returns its standard output; a failure fails the running test. `options` and
/// `more` are those of words(). An existing output is replaced.
QByteArray ffmpeg(const QByteArray& options, const QStringList& more = {});
/// Returns what ffprobe prints for `options` about a file; empty when it cannot read it.
[[nodiscard]] QByteArray ffprobe(const QByteArray& options, const QString& path);
/// Returns format, streams and chapters of a file as ffprobe's JSON.
[[nodiscard]] QJsonObject ffprobe(const QString& path);
/// Returns ffmpeg's hash of the packets of each stream that `maps` selects; empty when it cannot
/// read the file.
[[nodiscard]] QByteArray streamHash(const QString& path, const QByteArray& maps = "-map 0");
/// Writes the display matrix of a rotation by 90, 180 or 270 degrees into the video tracks of an
/// ISO base media file. ffmpeg's releases have no option in common for it.
void rotateClockwise(const QString& path, int degrees);
/// Runs exiftool likewise and returns what it prints, without spaces around it.
QByteArray exiftool(const QByteArray& options, const QStringList& more);

/// Returns the literal's bytes, zeros included, without the final one.
template <std::size_t N> QByteArray raw(const char (&text)[N]) {
    return {text, static_cast<qsizetype>(N - 1)};
}

/// Returns `size`, below 2^28, as ID3 stores it: four bytes of seven bits.
[[nodiscard]] QByteArray syncSafe(qsizetype size);
/// Returns an ID3v2 tag of the version, `flags` in its header. It claims to be as long as `frames`
/// unless `claimed` is not negative.
[[nodiscard]] QByteArray id3Tag(int version, const QByteArray& frames, int flags = 0,
                                qsizetype claimed = -1);
/// Returns a frame of version 2.3, which below 128 bytes is also one of 2.4.
[[nodiscard]] QByteArray id3Frame(const char* id, const QByteArray& body, int formatFlags = 0);
/// Returns a text frame likewise, its text as Latin-1.
[[nodiscard]] QByteArray id3Text(const char* id, const QByteArray& text);
/// Returns a frame of version 2.2.
[[nodiscard]] QByteArray oldId3Frame(const char* id, const QByteArray& body);
/// Returns frames of MPEG 1 layer III, 128 kbit/s, 44.1 kHz, stereo: 417 bytes each, of which the
/// first four are the header and the others the frame's number from 1.
[[nodiscard]] QByteArray mpegFrames(int count = 4);

/// Returns a metadata block of FLAC.
[[nodiscard]] QByteArray flacBlock(int type, const QByteArray& body, bool last = false);
/// Returns the body of a block of Vorbis comments, "NAME=text" each.
[[nodiscard]] QByteArray vorbisComments(const QByteArrayList& entries);

/// Returns a chunk of RIFF, or of AIFF when `bigEndian`, padded to an even length.
[[nodiscard]] QByteArray chunk(const char* id, const QByteArray& body, bool bigEndian = false);
struct WaveFormat {
    int rate = 8000, channels = 1, bits = 8;
    int codec = 1; ///< 1: PCM
};
/// Returns a WAVE file of these samples, as they are stored.
[[nodiscard]] QByteArray waveFile(const QByteArray& samples, const WaveFormat& format = {});

} // namespace testkit
