// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/format_readers.h"
#include "tests/testkit/media.h"

#include <map>

namespace fixtures {

using clipheave::platform::FileReader;
using clipheave::platform::MediaFacts;
using clipheave::platform::Result;
using testkit::chunk;
using testkit::flacBlock;
using testkit::id3Frame;
using testkit::id3Tag;
using testkit::id3Text;
using testkit::mpegFrames;
using testkit::oldId3Frame;
using testkit::raw;
using testkit::syncSafe;
using testkit::vorbisComments;

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

/// A GIF's header: 5 x 3 pixels.
inline QByteArray gif() {
    return raw("GIF89a\x05\x00\x03\x00\x00\x00\x00") + QByteArray(20, '\x01');
}

} // namespace fixtures
