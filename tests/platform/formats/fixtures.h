// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/format_readers.h"
#include "tests/testkit/media.h"

#include <QFile>

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
    auto file = FileReader::open(folder.write("file", bytes));
    return reader(*file);
}

/// identifier -> text or "<n bytes>", as a walk over all items leaves it: the last one counts.
inline std::map<QString, QString> walk(const MediaFacts& facts) {
    std::map<QString, QString> values;
    for (const auto& item : facts.metadata) {
        if (const auto* bytes = std::get_if<QByteArray>(&item.value))
            values[item.identifier] = u"<%1 bytes>"_s.arg(bytes->size());
        else
            values[item.identifier] = item.stringValue();
    }
    return values;
}

/// A GIF's header: 5 x 3 pixels.
inline QByteArray gif() {
    return raw("GIF89a\x05\x00\x03\x00\x00\x00\x00") + QByteArray(20, '\x01');
}

/// What `rewrite` makes of a file, or the code of the reason when it refuses; it leaves the source
/// as it is and nothing but the target behind.
template <class Rewrite>
QByteArray rewritten(const testkit::TempDir& dir, const QByteArray& file, const Rewrite& rewrite) {
    const QString source = dir.write("in/file", file), target = dir.path("out");
    const auto done = rewrite(source, target);
    EXPECT_EQ(testkit::TempDir::read(source), file);
    EXPECT_EQ(dir.files().size(), done ? 1 : 0);
    const QByteArray written = testkit::TempDir::read(target);
    QFile::remove(target);
    return done ? written : QByteArray(done.error().detail.code().id);
}

} // namespace fixtures
