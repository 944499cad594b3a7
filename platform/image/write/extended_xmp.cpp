// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/extended_xmp.h"

#include "platform/foundation/byte_view.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QtEndian>

#include <algorithm>
#include <map>

namespace clipheave::platform {

namespace {

const QByteArray kExtensionHead("http://ns.adobe.com/xmp/extension/\0", 35);
constexpr qsizetype kDigestSize = 32, kLengthAt = 67, kOffsetAt = 71, kExtensionHeader = 75;
constexpr qsizetype kMostOfSegment = 65'400;

QByteArray be32Bytes(qsizetype value) {
    QByteArray bytes(4, '\0');
    qToBigEndian(static_cast<quint32>(value), bytes.data());
    return bytes;
}

/// The segments of one digest, by their offsets: they may come in any order.
struct XmpSegments {
    QByteArray digest;
    std::uint32_t length = 0;
    std::map<std::uint32_t, QByteArray> parts;

    void add(const QByteArray& payload) {
        const ByteView view(payload);
        length = view.be32(kLengthAt).value_or(0);
        parts.emplace(view.be32(kOffsetAt).value_or(0), payload.mid(kExtensionHeader));
    }
    /// Returns the packet, empty when a part is missing.
    [[nodiscard]] QByteArray joined() const {
        QByteArray packet;
        for (const auto& [offset, part] : parts) {
            if (offset != static_cast<std::uint64_t>(packet.size()))
                return {};
            packet += part;
        }
        return static_cast<std::uint64_t>(packet.size()) == length ? packet : QByteArray();
    }
};

} // namespace

QByteArray extendedXmpDigest(const JpegSegment& segment) {
    if (segment.marker != kJpegApp1 || !segment.payload.startsWith(kExtensionHead) ||
        segment.payload.size() < kExtensionHeader)
        return {};
    return segment.payload.mid(kExtensionHead.size(), kDigestSize);
}

std::vector<ExtendedXmp> extendedXmpOf(const JpegImage& image) {
    std::vector<XmpSegments> all;
    for (const JpegSegment& segment : image.segments) {
        const QByteArray digest = extendedXmpDigest(segment);
        if (digest.isEmpty())
            continue;
        auto known = std::find_if(all.begin(), all.end(),
                                  [&](const XmpSegments& one) { return one.digest == digest; });
        if (known == all.end())
            known = all.insert(all.end(), XmpSegments{digest, 0, {}});
        known->add(segment.payload);
    }
    std::vector<ExtendedXmp> packets;
    for (const XmpSegments& one : all)
        packets.push_back({one.digest, one.joined()});
    return packets;
}

QByteArray digestOfXmp(const QByteArray& packet) {
    return QCryptographicHash::hash(packet, QCryptographicHash::Md5).toHex().toUpper();
}

std::vector<QByteArray> extendedXmpPayloads(const QByteArray& packet) {
    const QByteArray head = kExtensionHead + digestOfXmp(packet) + be32Bytes(packet.size());
    std::vector<QByteArray> payloads;
    for (qsizetype at = 0; at < packet.size(); at += kMostOfSegment)
        payloads.push_back(head + be32Bytes(at) + packet.mid(at, kMostOfSegment));
    return payloads;
}

QByteArray namingExtendedXmp(const QByteArray& main, const QByteArray& digest,
                             const QByteArray& packet) {
    QByteArray changed = main;
    if (!packet.isEmpty())
        return changed.replace(digest, digestOfXmp(packet));
    // As an attribute or as an element, which a packet may have it in.
    const QString name = QStringLiteral("[\\w.-]+:") + QLatin1String(kHasExtendedXmp);
    const QString value = QRegularExpression::escape(QString::fromLatin1(digest));
    const QRegularExpression named(
        QStringLiteral("\\s+%1\\s*=\\s*[\"']%2[\"']|<%1>\\s*%2\\s*</%1>").arg(name, value));
    return QString::fromUtf8(main).remove(named).toUtf8();
}

} // namespace clipheave::platform
