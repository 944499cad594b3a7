// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/format_readers.h"
#include "tests/testkit/testkit.h"

#include <map>

namespace fixtures {

using clipheave::platform::FileReader;
using clipheave::platform::MediaFacts;
using clipheave::platform::Result;

/// Bytes through a file into a reader.
inline Result<MediaFacts> read(Result<MediaFacts> (*reader)(FileReader&), const QByteArray& bytes) {
    const testkit::TempDir folder;
    auto file = FileReader::open(folder.write(QStringLiteral("file"), bytes));
    return reader(*file);
}

/// identifier -> text or "<n bytes>", as a walk over all items leaves it: the last one counts.
inline std::map<QString, QString> walk(const MediaFacts& facts) {
    std::map<QString, QString> values;
    for (const auto& item : facts.metadata) {
        if (const auto* bytes = std::get_if<QByteArray>(&item.value))
            values[item.identifier] = QStringLiteral("<%1 bytes>").arg(bytes->size());
        else
            values[item.identifier] = item.stringValue();
    }
    return values;
}

inline QByteArray syncSafe(quint32 n) {
    return testkit::be((n & 0x7F) | (n << 1 & 0x7F00) | (n << 2 & 0x7F0000) | (n << 3 & 0x7F000000),
                       4);
}

/// A tag of the version, `flags` in its header.
inline QByteArray id3Tag(int version, const QByteArray& frames, int flags = 0) {
    return "ID3" + testkit::be(static_cast<quint64>(version), 1) + testkit::be(0, 1) +
           testkit::be(static_cast<quint64>(flags), 1) +
           syncSafe(static_cast<quint32>(frames.size())) + frames;
}

/// A frame of v2.3 or v2.4 (sizes below 128 are the same in both).
inline QByteArray frame(const char* id, const QByteArray& body, int formatFlags = 0) {
    return id + testkit::be(static_cast<quint64>(body.size()), 4) + testkit::be(0, 1) +
           testkit::be(static_cast<quint64>(formatFlags), 1) + body;
}

/// A frame of v2.2.
inline QByteArray oldFrame(const char* id, const QByteArray& body) {
    return id + testkit::be(static_cast<quint64>(body.size()), 3) + body;
}

/// The literal's bytes, zeros included, without the final one.
template <std::size_t N> QByteArray raw(const char (&text)[N]) {
    return {text, static_cast<qsizetype>(N - 1)};
}

/// `count` silent frames: MPEG 1 layer III, 128 kbit/s, 44100 Hz, stereo; 417 bytes each.
inline QByteArray mpegFrames(int count) {
    return (raw("\xFF\xFB\x90\x00") + QByteArray(413, '\0')).repeated(count);
}

/// A GIF's header: 5 x 3 pixels.
inline QByteArray gif() {
    return raw("GIF89a\x05\x00\x03\x00\x00\x00\x00") + QByteArray(20, '\x01');
}

inline QByteArray chunk(const char* id, const QByteArray& body, bool bigEndian = false) {
    const auto size = static_cast<quint64>(body.size());
    return QByteArray(id, 4) + (bigEndian ? testkit::be(size, 4) : testkit::le(size, 4)) + body +
           QByteArray(body.size() % 2, '\0');
}

} // namespace fixtures
