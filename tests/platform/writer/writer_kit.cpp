// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/writer/writer_kit.h"

#include "media/fields.h"
#include "tests/testkit/items.h"

#include <QtEndian>

#include <algorithm>

using namespace testkit;

namespace writertest {

QList<FoundBox> boxesIn(const QByteArray& bytes, qint64 base) {
    QList<FoundBox> found;
    for (qint64 at = 0; at + 8 <= bytes.size();) {
        qint64 size = qFromBigEndian<quint32>(bytes.constData() + at), head = 8;
        if (size == 1 && at + 16 <= bytes.size()) {
            size = qFromBigEndian<qint64>(bytes.constData() + at + 8);
            head = 16;
        }
        if (size == 0 || size > bytes.size() - at)
            size = bytes.size() - at;
        if (size < head)
            break;
        found.push_back({bytes.mid(at + 4, 4), base + at, bytes.mid(at + head, size - head)});
        at += size;
    }
    return found;
}

QByteArray payloadAt(const QByteArray& file, const char* path) {
    QByteArray level = file;
    for (const QByteArray& type : QByteArray(path).split('/')) {
        QByteArray next;
        for (const FoundBox& found : boxesIn(level)) {
            if (found.type == type) {
                next = found.payload.isNull() ? QByteArray("") : found.payload;
                break;
            }
        }
        if (next.isNull())
            return {};
        // A `meta` of ISO base media has a version and flags first.
        level = type == "meta" && next.mid(4, 4) != "hdlr" ? next.mid(4) : next;
    }
    return level;
}

QByteArray topLevel(const QByteArray& file) {
    QList<QByteArray> types;
    for (const FoundBox& found : boxesIn(file))
        types << found.type;
    return types.join(' ');
}

static void keptOfTrack(const QByteArray& payload, const QByteArray& path,
                        QList<QByteArray>& lines) {
    for (const FoundBox& found : boxesIn(payload)) {
        const QByteArray name = path + '/' + found.type;
        if (found.type == "mdia" || found.type == "minf" || found.type == "stbl")
            keptOfTrack(found.payload, name, lines);
        else if (found.type != "stco" && found.type != "co64" && found.type != "saio")
            lines << name + ' ' + found.payload.toHex();
    }
}

QList<QByteArray> keptBoxes(const QByteArray& file) {
    QList<QByteArray> lines;
    for (const FoundBox& found : boxesIn(file)) {
        if (found.type == "ftyp" || found.type == "free")
            continue;
        if (found.type != "moov") {
            lines << found.type + ' ' + found.payload.toHex();
            continue;
        }
        for (const FoundBox& child : boxesIn(found.payload)) {
            if (child.type == "trak")
                keptOfTrack(child.payload, "moov/trak", lines);
            else if (child.type != "udta" && child.type != "meta")
                lines << "moov/" + child.type + ' ' + child.payload.toHex();
        }
    }
    std::sort(lines.begin(), lines.end()); // `moov` may have changed sides
    return lines;
}

QList<QByteArray> chunkHeads(const QByteArray& file) {
    const QList<FoundBox> top = boxesIn(file);
    // Up to 64 bytes; what stands behind the last chunk is none of it.
    const auto head = [&](qint64 offset) {
        qint64 end = file.size();
        for (const FoundBox& found : top)
            if (found.offset > offset)
                end = std::min(end, found.offset);
        return file.mid(offset, std::min<qint64>(64, end - offset));
    };
    QList<QByteArray> heads;
    for (const FoundBox& track : boxesIn(payloadAt(file, "moov"))) {
        if (track.type != "trak")
            continue;
        for (const int width : {4, 8}) {
            const QByteArray table = payloadAt(track.payload, width == 4 ? "mdia/minf/stbl/stco"
                                                                         : "mdia/minf/stbl/co64");
            const qsizetype end =
                table.size() < 8
                    ? 0
                    : 8 + qsizetype{width} * qFromBigEndian<qint32>(table.constData() + 4);
            for (qsizetype at = 8; at + width <= std::min(end, table.size()); at += width) {
                const qint64 offset = width == 4 ? qFromBigEndian<quint32>(table.constData() + at)
                                                 : qFromBigEndian<qint64>(table.constData() + at);
                heads << head(offset);
            }
        }
    }
    return heads;
}

QByteArray mediaHash(const QString& path) {
    // "V" leaves cover art out, which is metadata.
    return testkit::streamHash(path, "-map 0:V? -map 0:a? -map 0:s? -map 0:d? -map 0:t?");
}

QString encode(const TempDir& dir, const QString& name, const QByteArray& options) {
    QString path = dir.path(name);
    ffmpeg("-f lavfi -i testsrc=s=160x90:d=2 -f lavfi -i sine=d=2 -c:v libx264 -preset ultrafast "
           "-c:a aac " +
               options,
           {path});
    return path;
}

QByteArray HandMade::bytes() const {
    const auto movie = [&](quint64 media) {
        QByteArray offsets = be(4, 4);
        for (quint64 i = 0; i < 4; ++i)
            offsets += be(media + i * 1000, wide ? 8 : 4);
        const QByteArray table =
            box("stsd", be(0, 8)) + fullBox(wide ? "co64" : "stco", offsets) + moreTrack;
        const QByteArray track =
            box("trak", box("tkhd", QByteArray(84, '\1')) +
                            box("mdia", box("minf", references + box("stbl", table))) +
                            box("udta", box("name", "a track's own name")) + trackMetadata);
        return box("moov", box("mvhd", QByteArray(100, '\0')) + track +
                               (udta.isNull() ? QByteArray() : box("udta", udta)) +
                               (meta.isNull() ? QByteArray() : box("meta", meta)) + moreMoov);
    };
    const QByteArray head = box("ftyp", brand + be(512, 4) + brand) + beforeMedia;
    const auto moovSize = moovFirst ? movie(0).size() : 0;
    const auto media = static_cast<quint64>(head.size() + moovSize + 8);
    return head + (moovFirst ? movie(media) : QByteArray()) + box("mdat", payload) +
           (moovFirst ? QByteArray() : movie(media)) + afterAll;
}

QByteArray listText(const char* code, const QByteArray& text) {
    return box(code, box("data", be(1, 4) + be(0, 4) + text));
}

QByteArray listMeta(const QByteArray& entries) {
    const QByteArray handler = fullBox("hdlr", be(0, 4) + "mdirappl" + QByteArray(9, '\0'));
    return fullBox("meta", handler + box("ilst", entries));
}

QByteArray keysMeta(const QList<QPair<QByteArray, QByteArray>>& texts) {
    QByteArray keys = be(static_cast<quint64>(texts.size()), 4), values;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        keys += box("mdta", texts[i].first);
        QByteArray entry = listText("----", texts[i].second);
        qToBigEndian(static_cast<quint32>(i + 1), entry.data() + 4);
        values += entry;
    }
    return fullBox("hdlr", be(0, 4) + "mdta" + QByteArray(13, '\0')) + fullBox("keys", keys) +
           box("ilst", values);
}

QByteArray quickTimeText(const char* code, const QByteArray& text) {
    return box(code, be(static_cast<quint64>(text.size()), 2) + be(0x15C7, 2) + text);
}

QByteArray locationBox(double latitude, double longitude) {
    const auto fixed = [](double value) {
        return be(static_cast<quint32>(static_cast<qint32>(value * 65536)), 4);
    };
    return fullBox("loci", be(0x55C4, 2) + QByteArray(2, '\0') + fixed(longitude) +
                               fixed(latitude) + fixed(0) + QByteArray("earth\0\0", 7));
}

AVMetadataItem newItem(const char* identifier, const QString& text) {
    return testkit::itemOf(QString::fromLatin1(identifier), text);
}

Items readItems(const QString& path) {
    auto reader = FileReader::open(path);
    if (!reader)
        return {};
    const auto facts = readIsobmff(*reader);
    return facts ? facts->metadata : Items();
}

QString shown(const Items& items, const QStringList& identifiers) {
    QString text;
    for (const AVMetadataItem& item : items)
        if (identifiers.contains(item.identifier))
            text = item.stringValue();
    return text;
}

Result<PassthroughOutcome> write(const QString& source, const QString& target,
                                 const std::optional<Items>& items, OutputContainer container,
                                 bool moovFirst) {
    PassthroughRequest request;
    request.source = source;
    request.target = target;
    request.container = container;
    request.metadata = items;
    request.fields = clipheave::media::kFieldIdentifiers; // as every export of the program
    request.moovFirst = moovFirst;
    return writePassthrough(request);
}

QByteArray rewritten(const TempDir& dir, const QByteArray& source,
                     const std::optional<Items>& items, OutputContainer container, bool moovFirst) {
    const QString target = dir.path("rewritten");
    const auto outcome = write(dir.write("source", source), target, items, container, moovFirst);
    return outcome ? TempDir::read(target) : QByteArray();
}

} // namespace writertest
