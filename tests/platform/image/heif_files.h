// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/testkit/testkit.h"

#include <vector>

namespace testkit {

struct HeifItem {
    int id;
    const char* type;
    QByteArray bytes;
    int describes = 0;    ///< the item that a `cdsc` reference names
    QByteArray tail = {}; ///< of its entry behind the type: name, content type
    int method = 0;       ///< 1: in `idat`
};

/// A HEIF file with an image of `item` 1; boxes of each item lie in `mdat` one after the other.
struct HeifFile {
    std::vector<HeifItem> items;
    int locationVersion = 1;
    bool hasBase = false; ///< offsets relative to the base of each item
    bool metaLast = false;
    QByteArray behindMeta; ///< whole boxes
    QByteArray end;        ///< of the file
    QByteArray properties; ///< boxes of `ipco` that item 1 has
    int propertyCount = 0;
    QByteArray mdatHead; ///< of a form of its own
    QByteArray unused;   ///< bytes of `mdat` behind the items

    [[nodiscard]] QByteArray build() const {
        std::vector<quint64> places;
        quint64 at = 0;
        for (const HeifItem& item : items) {
            places.push_back(item.method == 1 ? 0 : at);
            at += item.method == 1 ? 0 : static_cast<quint64>(item.bytes.size());
        }
        const QByteArray ftyp = box("ftyp", "heic" + be(0, 4) + "mif1");
        const QByteArray mdat = mediaData();
        const quint64 head = static_cast<quint64>(mdatHead.isEmpty() ? 8 : mdatHead.size());
        const auto sizeOf = [](const QByteArray& bytes) {
            return static_cast<quint64>(bytes.size());
        };
        if (metaLast)
            return ftyp + mdat + meta(places, sizeOf(ftyp) + head) + end;
        const quint64 before = sizeOf(ftyp) + sizeOf(meta(places, 0)) + sizeOf(behindMeta);
        return ftyp + meta(places, before + head) + behindMeta + mdat + end;
    }

private:
    [[nodiscard]] QByteArray mediaData() const {
        QByteArray bytes;
        for (const HeifItem& item : items)
            if (item.method == 0)
                bytes += item.bytes;
        return mdatHead.isEmpty() ? box("mdat", bytes + unused) : mdatHead + bytes + unused;
    }

    [[nodiscard]] QByteArray locations(const std::vector<quint64>& places, quint64 start) const {
        const int idBytes = locationVersion < 2 ? 2 : 4;
        QByteArray bytes = be(static_cast<quint64>(locationVersion) << 24, 4) +
                           be(hasBase ? 0x4440 : 0x4400, 2) + be(items.size(), idBytes);
        for (std::size_t i = 0; i < items.size(); ++i) {
            const HeifItem& item = items[i];
            const quint64 at = item.method == 1 ? 0 : start + places[i];
            bytes += be(static_cast<quint64>(item.id), idBytes);
            if (locationVersion > 0)
                bytes += be(static_cast<quint64>(item.method), 2);
            bytes += be(0, 2) + (hasBase ? be(at, 4) : QByteArray()) + be(1, 2) +
                     be(hasBase ? 0 : at, 4) + be(static_cast<quint64>(item.bytes.size()), 4);
        }
        return box("iloc", bytes);
    }

    [[nodiscard]] QByteArray meta(const std::vector<quint64>& places, quint64 start) const {
        QByteArray entries, references, inside;
        for (const HeifItem& item : items) {
            entries += box("infe", be(2u << 24, 4) + be(static_cast<quint64>(item.id), 2) +
                                       be(0, 2) + item.type +
                                       (item.tail.isEmpty() ? QByteArray(1, '\0') : item.tail));
            if (item.describes != 0)
                references += box("cdsc", be(static_cast<quint64>(item.id), 2) + be(1, 2) +
                                              be(static_cast<quint64>(item.describes), 2));
            if (item.method == 1)
                inside += item.bytes;
        }
        QByteArray associations = be(1, 4) + be(1, 2) + be(static_cast<quint64>(propertyCount), 1);
        for (int i = 1; i <= propertyCount; ++i)
            associations += be(static_cast<quint64>(i), 1);
        return fullBox("meta",
                       fullBox("pitm", be(1, 2)) + fullBox("iinf", be(items.size(), 2) + entries) +
                           (references.isEmpty() ? QByteArray() : fullBox("iref", references)) +
                           box("iprp", box("ipco", properties) + fullBox("ipma", associations)) +
                           (inside.isEmpty() ? QByteArray() : box("idat", inside)) +
                           locations(places, start));
    }
};

} // namespace testkit
