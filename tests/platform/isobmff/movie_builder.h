// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/read/isobmff_reader.h"
#include "tests/testkit/items.h"
#include "tests/testkit/testkit.h"

/// Hand-made movies for the tests of the reader.
namespace testkit {

inline QByteArray ftyp(const char* brand) {
    return box("ftyp", QByteArray(brand, 4) + be(0, 4) + QByteArray(brand, 4));
}

/// Version 0, 600 units a second.
inline QByteArray mvhd(quint64 created, quint64 duration, quint64 timescale = 600) {
    return fullBox("mvhd", be(created, 4) + be(created, 4) + be(timescale, 4) + be(duration, 4) +
                               QByteArray(80, '\0'));
}

inline QByteArray tkhd(quint32 id, int width = 0, int height = 0, quint32 flags = 1) {
    QByteArray matrix;
    for (const quint32 value : {0x10000u, 0u, 0u, 0u, 0x10000u, 0u, 0u, 0u, 0x40000000u})
        matrix += be(value, 4);
    return box("tkhd", be(flags, 4) + be(0, 8) + be(id, 4) + be(0, 4) + be(0, 4) +
                           QByteArray(16, '\0') + matrix +
                           be(static_cast<quint64>(width) << 16, 4) +
                           be(static_cast<quint64>(height) << 16, 4));
}

struct TrackParts {
    quint32 id = 1;
    const char* handler = "vide";
    QByteArray stsdEntry;
    QByteArray tables; ///< stts, stsz
    QByteArray header; ///< tkhd, made when empty
    QByteArray extra;  ///< after tkhd: tref, udta
    quint64 timescale = 1000;
    quint64 duration = 2000;
};
inline QByteArray trak(const TrackParts& parts) {
    const QByteArray mdhd = fullBox("mdhd", be(0, 8) + be(parts.timescale, 4) +
                                                be(parts.duration, 4) + be(0x55C4, 2) + be(0, 2));
    const QByteArray hdlr =
        fullBox("hdlr", be(0, 4) + QByteArray(parts.handler, 4) + QByteArray(13, '\0'));
    const QByteArray stsd = fullBox("stsd", be(1, 4) + parts.stsdEntry);
    return box("trak",
               (parts.header.isEmpty() ? tkhd(parts.id) : parts.header) + parts.extra +
                   box("mdia", mdhd + hdlr + box("minf", box("stbl", stsd + parts.tables))));
}

inline QByteArray visualEntry(const char* codec, int width, int height) {
    return box(codec, QByteArray(6, '\0') + be(1, 2) + QByteArray(16, '\0') +
                          be(static_cast<quint64>(width), 2) + be(static_cast<quint64>(height), 2) +
                          QByteArray(50, '\0'));
}
inline QByteArray audioEntry(const char* codec, int channels, quint64 rate,
                             const QByteArray& children = {}) {
    return box(codec, QByteArray(6, '\0') + be(1, 2) + QByteArray(8, '\0') +
                          be(static_cast<quint64>(channels), 2) + be(16, 2) + be(0, 4) +
                          be(rate << 16, 4) + children);
}

inline QByteArray dataBox(quint32 type, const QByteArray& payload, quint32 locale = 0) {
    return box("data", be(type, 4) + be(locale, 4) + payload);
}
inline QByteArray itunesMeta(const QByteArray& entries) {
    return fullBox("meta", fullBox("hdlr", be(0, 4) + "mdirappl" + QByteArray(9, '\0')) +
                               box("ilst", entries));
}
inline QByteArray keysBox(const QList<QByteArray>& names) {
    QByteArray keys = be(static_cast<quint64>(names.size()), 4);
    for (const QByteArray& name : names)
        keys += be(static_cast<quint64>(name.size()) + 8, 4) + "mdta" + name;
    return fullBox("keys", keys);
}
/// An entry of a keyed `ilst`: its type is the index.
inline QByteArray keyedEntry(quint32 index, const QByteArray& data) {
    return be(static_cast<quint64>(data.size()) + 8, 4) + be(index, 4) + data;
}

/// What the reader says about these bytes.
inline clipheave::platform::MediaFacts read(const TempDir& dir, const QByteArray& bytes) {
    auto reader = clipheave::platform::FileReader::open(dir.write("movie", bytes));
    EXPECT_TRUE(reader.has_value());
    auto facts = clipheave::platform::readIsobmff(*reader);
    EXPECT_TRUE(facts.has_value());
    return facts.value_or(clipheave::platform::MediaFacts());
}

inline QStringList itemTexts(const clipheave::platform::MediaFacts& facts) {
    return itemTexts(facts.metadata);
}

} // namespace testkit
