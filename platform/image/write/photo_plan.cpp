// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/photo_plan.h"

#include "platform/image/messages.h"
#include "platform/image/write/xmp_packet.h"

namespace clipheave::platform {

void PhotoPlan::addRange(std::uint64_t offset, std::uint64_t length) {
    if (length == 0)
        return;
    if (!parts.empty() && parts.back().bytes.isEmpty() &&
        parts.back().offset + parts.back().length == offset)
        parts.back().length += length;
    else
        parts.push_back({{}, offset, length});
}

void PhotoPlan::add(PhotoPlan&& other) {
    for (FilePart& part : other.parts)
        part.bytes.isEmpty() ? addRange(part.offset, part.length) : add(part.bytes);
    notes += other.notes;
}

std::uint64_t PhotoPlan::size() const {
    std::uint64_t size = 0;
    for (const FilePart& part : parts)
        size += part.bytes.isEmpty() ? part.length : static_cast<std::uint64_t>(part.bytes.size());
    return size;
}

QByteArray changedXmpOrNote(const QByteArray& packet, const PhotoChange& change, Notes& notes) {
    const auto changed = changedXmpPacket(packet, change);
    if (changed)
        return *changed;
    const bool removes = change.removesAny();
    notes.append(removes ? kUnreadableXmpRemoved : kUnreadableXmpKept);
    return removes ? QByteArray() : packet;
}

QByteArray changedXmpWithIptc(const QByteArray& packet, const PhotoChange& change, Notes& notes) {
    std::vector<std::uint8_t> left;
    const QByteArray changed =
        xmpPacketWithIptc(changedXmpOrNote(packet, change, notes), change.iptc, left);
    QStringList names;
    for (const std::uint8_t dataSet : left)
        names.append(iptcName(dataSet));
    if (!names.isEmpty())
        notes.append(Message(kPropertiesNotWritten, {names.join(QStringLiteral(", "))}));
    return changed;
}

} // namespace clipheave::platform
