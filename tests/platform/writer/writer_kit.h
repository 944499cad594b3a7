// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/messages.h"
#include "platform/isobmff/read/isobmff_reader.h"
#include "platform/isobmff/write/isobmff_writer.h"
#include "tests/testkit/media.h"

namespace writertest {

using namespace clipheave::platform;
using Items = QList<AVMetadataItem>;

/// A box of a file, found by a walk that shares nothing with the program's.
struct FoundBox {
    QByteArray type;
    qint64 offset = 0;
    QByteArray payload;
};
[[nodiscard]] QList<FoundBox> boxesIn(const QByteArray& bytes, qint64 base = 0);
/// The payload of the first box on a path like "moov/udta"; null when there is none.
[[nodiscard]] QByteArray payloadAt(const QByteArray& file, const char* path);
/// The types on the top level, one after the other: "ftyp mdat moov".
[[nodiscard]] QByteArray topLevel(const QByteArray& file);

/// All that has to survive a pass-through, as lines: top-level boxes but `ftyp`, `moov` and
/// padding, the children of `moov` but the metadata, without the tables of offsets.
[[nodiscard]] QList<QByteArray> keptBoxes(const QByteArray& file);
/// The first bytes of every chunk of every track, in order.
[[nodiscard]] QList<QByteArray> chunkHeads(const QByteArray& file);

/// FFmpeg's hash of each stream's packets; empty when it cannot read the file.
[[nodiscard]] QByteArray mediaHash(const QString& path);
/// Encodes two seconds of video and a tone with further ffmpeg options.
[[nodiscard]] QString encode(const testkit::TempDir& dir, const QString& name,
                             const QByteArray& options);

/// A movie of one track with four chunks, built by hand. `udta` and `meta` are payloads.
struct HandMade {
    QByteArray brand = "isom";
    bool moovFirst = false, wide = false;
    QByteArray udta, meta, moreMoov, moreTrack, trackMetadata, references;
    QByteArray beforeMedia, afterAll;
    QByteArray payload = QByteArray(1000, 'a') + QByteArray(1000, 'b') + QByteArray(1000, 'c') +
                         QByteArray(1000, 'd');
    [[nodiscard]] QByteArray bytes() const;
};
/// One `ilst` entry with a text.
[[nodiscard]] QByteArray listText(const char* code, const QByteArray& text);
/// The `meta` box of an iTunes list with these entries.
[[nodiscard]] QByteArray listMeta(const QByteArray& entries);
/// The payload of a QuickTime `meta` with these texts.
[[nodiscard]] QByteArray keysMeta(const QList<QPair<QByteArray, QByteArray>>& texts);
[[nodiscard]] QByteArray quickTimeText(const char* code, const QByteArray& text);
[[nodiscard]] QByteArray locationBox(double latitude, double longitude);

[[nodiscard]] AVMetadataItem newItem(const char* identifier, const QString& text);
[[nodiscard]] Items readItems(const QString& path);
/// The value of the last item with one of the identifiers: what the record shows.
[[nodiscard]] QString shown(const Items& items, const QStringList& identifiers);

[[nodiscard]] Result<PassthroughOutcome> write(const QString& source, const QString& target,
                                               const std::optional<Items>& items,
                                               OutputContainer container = OutputContainer::M4V,
                                               bool moovFirst = false);
/// The same for bytes; the target's bytes, null after a failure.
[[nodiscard]] QByteArray rewritten(const testkit::TempDir& dir, const QByteArray& source,
                                   const std::optional<Items>& items,
                                   OutputContainer container = OutputContainer::M4V,
                                   bool moovFirst = false);

} // namespace writertest
