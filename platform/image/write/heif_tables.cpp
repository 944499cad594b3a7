// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/heif_tables.h"

#include "platform/image/heif_cursor.h"
#include "platform/image/messages.h"
#include "platform/isobmff/box.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

constexpr std::uint32_t kMostItems = 65'535;
constexpr std::size_t kMostExtents = 1u << 20;
constexpr std::size_t kMostReferences = 1u << 20;

Error brokenTable() {
    return {ErrorCode::InvalidData, kReadImageBoxes, {}, kHeifBroken};
}

QByteArray fullBoxHead(std::uint8_t version, std::uint32_t flags) {
    QByteArray bytes;
    appendBigEndian(bytes, std::uint32_t{version} << 24 | flags, 4);
    return bytes;
}

unsigned widthOf(std::uint64_t value, unsigned atLeast) {
    if (value == 0 || atLeast == 8)
        return atLeast;
    return value > UINT32_MAX ? 8 : 4;
}

/// Takes a text up to its zero.
QByteArray takeText(HeifCursor& cursor) {
    const QByteArrayView rest = cursor.rest().bytes();
    const qsizetype end = rest.indexOf('\0');
    const qsizetype length = end < 0 ? rest.size() : end;
    const QByteArray text = rest.first(length).toByteArray();
    for (qsizetype i = 0; i < std::min(length + 1, rest.size()); ++i)
        cursor.number(1);
    return text;
}

bool readExtents(HeifCursor& cursor, const ItemLocations& table, std::size_t& total,
                 ItemLocation& item) {
    const std::uint32_t count = cursor.u32(2);
    // Numbers of no bytes are not bounded by the bytes of the box.
    const bool isBounded = table.offsetBytes + table.lengthBytes + table.indexBytes > 0;
    total += count;
    if ((!isBounded && count > 1) || total > kMostExtents)
        return false;
    for (std::uint32_t i = 0; i < count && cursor.good(); ++i) {
        ItemExtent extent;
        extent.index = cursor.number(table.indexBytes);
        extent.offset = cursor.number(table.offsetBytes);
        extent.length = cursor.number(table.lengthBytes);
        item.extents.push_back(extent);
    }
    return cursor.good();
}

bool isWidth(unsigned width) {
    return width == 0 || width == 4 || width == 8;
}

} // namespace

QByteArray heifBox(std::uint32_t type, const QByteArray& payload) {
    constexpr qsizetype kHead = 8;
    QByteArray box;
    appendBigEndian(box, static_cast<std::uint64_t>(payload.size() + kHead), 4);
    appendBigEndian(box, type, 4);
    return box + payload;
}

void appendBigEndian(QByteArray& bytes, std::uint64_t value, unsigned width) {
    for (unsigned i = width; i-- > 0;)
        bytes.append(static_cast<char>(value >> (8 * i) & 0xFF));
}

Result<ItemLocations> ItemLocations::read(ByteView payload) {
    HeifCursor cursor(payload);
    const HeifBoxHead head = readHeifBoxHead(cursor);
    const std::uint32_t sizes = cursor.u32(2);
    ItemLocations table;
    table.version = static_cast<std::uint8_t>(head.version);
    table.flags = head.flags;
    table.offsetBytes = sizes >> 12 & 15;
    table.lengthBytes = sizes >> 8 & 15;
    table.baseBytes = sizes >> 4 & 15;
    table.indexBytes = head.version > 0 ? sizes & 15 : 0;
    if (head.version > 2 || !isWidth(table.offsetBytes) || !isWidth(table.lengthBytes) ||
        !isWidth(table.baseBytes) || !isWidth(table.indexBytes))
        return tl::unexpected(brokenTable());
    const unsigned idBytes = head.version < 2 ? 2 : 4;
    const std::uint32_t count = cursor.u32(idBytes);
    std::set<std::uint32_t> ids;
    std::size_t extents = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        ItemLocation item;
        item.id = cursor.u32(idBytes);
        item.construction = head.version > 0 ? cursor.u16() : std::uint16_t{0};
        item.dataReference = cursor.u16();
        item.base = cursor.number(table.baseBytes);
        if (!readExtents(cursor, table, extents, item) || !ids.insert(item.id).second ||
            i >= kMostItems)
            return tl::unexpected(brokenTable());
        table.items.push_back(std::move(item));
    }
    if (!cursor.good())
        return tl::unexpected(brokenTable());
    return table;
}

QByteArray ItemLocations::box() const {
    QByteArray bytes = fullBoxHead(version, flags);
    appendBigEndian(bytes, offsetBytes << 12 | lengthBytes << 8 | baseBytes << 4 | indexBytes, 2);
    const unsigned idBytes = version < 2 ? 2 : 4;
    appendBigEndian(bytes, items.size(), idBytes);
    for (const ItemLocation& item : items) {
        appendBigEndian(bytes, item.id, idBytes);
        if (version > 0)
            appendBigEndian(bytes, item.construction, 2);
        appendBigEndian(bytes, item.dataReference, 2);
        appendBigEndian(bytes, item.base, baseBytes);
        appendBigEndian(bytes, item.extents.size(), 2);
        for (const ItemExtent& extent : item.extents) {
            appendBigEndian(bytes, extent.index, indexBytes);
            appendBigEndian(bytes, extent.offset, offsetBytes);
            appendBigEndian(bytes, extent.length, lengthBytes);
        }
    }
    return heifBox(fourCc("iloc"), bytes);
}

const ItemLocation* ItemLocations::find(std::uint32_t id) const {
    const auto found = std::find_if(items.begin(), items.end(),
                                    [id](const ItemLocation& item) { return item.id == id; });
    return found == items.end() ? nullptr : &*found;
}

ItemLocation* ItemLocations::find(std::uint32_t id) {
    return const_cast<ItemLocation*>(std::as_const(*this).find(id));
}

bool ItemLocations::widen() {
    const ItemLocations old = {version, flags, offsetBytes, lengthBytes, baseBytes, indexBytes, {}};
    for (const ItemLocation& item : items) {
        baseBytes = std::max(baseBytes, widthOf(item.base, baseBytes));
        for (const ItemExtent& extent : item.extents) {
            offsetBytes = std::max(offsetBytes, widthOf(extent.offset, offsetBytes));
            lengthBytes = std::max(lengthBytes, widthOf(extent.length, lengthBytes));
        }
    }
    return offsetBytes != old.offsetBytes || lengthBytes != old.lengthBytes ||
           baseBytes != old.baseBytes;
}

bool ItemEntry::isXmp() const {
    return type == fourCc("mime") && contentType.startsWith("application/rdf+xml");
}

std::optional<ItemEntry> ItemEntry::read(ByteView box) {
    const auto head = parseBoxHeader(box, 0, box.size());
    if (!head)
        return std::nullopt;
    ItemEntry entry;
    entry.box = box.toByteArray();
    HeifCursor cursor(box.sub(head->headerSize));
    const unsigned version = readHeifBoxHead(cursor).version;
    entry.id = cursor.u32(version > 2 ? 4 : 2);
    entry.isProtected = cursor.u16() != 0;
    // The first two versions are of files without types.
    entry.type = version < 2 ? fourCc("mime") : cursor.u32(4);
    if (!cursor.good())
        return std::nullopt;
    entry.m_nameAt = box.size() - cursor.rest().size();
    entry.m_nameLength = static_cast<std::uint64_t>(takeText(cursor).size());
    if (entry.type == fourCc("mime")) {
        entry.contentType = takeText(cursor);
        entry.encoding = takeText(cursor);
    }
    return entry;
}

ItemEntry ItemEntry::make(std::uint32_t id, std::uint32_t type, const QByteArray& contentType) {
    constexpr std::uint8_t kVersion = 2;
    QByteArray payload = fullBoxHead(kVersion, 0);
    appendBigEndian(payload, id, 2);
    appendBigEndian(payload, 0, 2);
    appendBigEndian(payload, type, 4);
    payload.append('\0');
    if (!contentType.isEmpty())
        payload += contentType + '\0';
    return *read(heifBox(fourCc("infe"), payload));
}

QByteArray ItemEntry::namelessBox() const {
    const auto head = parseBoxHeader(box, 0, static_cast<std::uint64_t>(box.size()));
    if (!head || m_nameLength == 0)
        return box;
    QByteArray payload = box;
    payload.remove(static_cast<qsizetype>(m_nameAt), static_cast<qsizetype>(m_nameLength));
    return heifBox(fourCc("infe"), payload.mid(head->headerSize));
}

Result<ItemEntries> ItemEntries::read(ByteView payload) {
    HeifCursor cursor(payload);
    const HeifBoxHead head = readHeifBoxHead(cursor);
    ItemEntries table;
    table.version = static_cast<std::uint8_t>(head.version);
    table.flags = head.flags;
    const std::uint32_t count = cursor.u32(head.version == 0 ? 2 : 4);
    std::set<std::uint32_t> ids;
    BoxWalker boxes(cursor.rest());
    while (const auto box = boxes.next()) {
        const auto entry = ItemEntry::read(boxes.whole(*box));
        if (box->type != fourCc("infe") || box->cut || !entry || !ids.insert(entry->id).second ||
            ids.size() > kMostItems)
            return tl::unexpected(brokenTable());
        table.items.push_back(*entry);
    }
    if (!cursor.good() || !boxes.problem().isEmpty() || count != table.items.size())
        return tl::unexpected(brokenTable());
    return table;
}

QByteArray ItemEntries::box() const {
    QByteArray bytes = fullBoxHead(version, flags);
    appendBigEndian(bytes, items.size(), version == 0 ? 2 : 4);
    for (const ItemEntry& item : items)
        bytes += item.box;
    return heifBox(fourCc("iinf"), bytes);
}

const ItemEntry* ItemEntries::find(std::uint32_t id) const {
    const auto found = std::find_if(items.begin(), items.end(),
                                    [id](const ItemEntry& item) { return item.id == id; });
    return found == items.end() ? nullptr : &*found;
}

Result<ItemReferences> ItemReferences::read(ByteView payload) {
    HeifCursor cursor(payload);
    const HeifBoxHead head = readHeifBoxHead(cursor);
    ItemReferences table;
    table.version = static_cast<std::uint8_t>(head.version);
    table.flags = head.flags;
    const unsigned idBytes = head.version == 0 ? 2 : 4;
    BoxWalker boxes(cursor.rest());
    std::size_t total = 0;
    while (const auto box = boxes.next()) {
        HeifCursor body(boxes.payload(*box));
        ItemReference reference{box->type, body.u32(idBytes), {}};
        const std::uint32_t count = body.u32(2);
        total += count;
        for (std::uint32_t i = 0; i < count && body.good(); ++i)
            reference.to.push_back(body.u32(idBytes));
        if (!body.good() || total > kMostReferences)
            return tl::unexpected(brokenTable());
        table.references.push_back(std::move(reference));
    }
    if (!cursor.good() || !boxes.problem().isEmpty())
        return tl::unexpected(brokenTable());
    return table;
}

QByteArray ItemReferences::box() const {
    QByteArray bytes = fullBoxHead(version, flags);
    const unsigned idBytes = version == 0 ? 2 : 4;
    for (const ItemReference& reference : references) {
        QByteArray body;
        appendBigEndian(body, reference.from, idBytes);
        appendBigEndian(body, reference.to.size(), 2);
        for (const std::uint32_t id : reference.to)
            appendBigEndian(body, id, idBytes);
        bytes += heifBox(reference.type, body);
    }
    return heifBox(fourCc("iref"), bytes);
}

void ItemReferences::removeItems(const std::set<std::uint32_t>& ids) {
    std::vector<ItemReference> left;
    for (ItemReference& reference : references) {
        if (ids.contains(reference.from))
            continue;
        std::erase_if(reference.to, [&](std::uint32_t id) { return ids.contains(id); });
        if (!reference.to.empty())
            left.push_back(std::move(reference));
    }
    references = std::move(left);
}

} // namespace clipheave::platform
