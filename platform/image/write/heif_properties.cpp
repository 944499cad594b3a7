// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/heif_cursor.h"
#include "platform/image/messages.h"
#include "platform/image/write/heif_tables.h"
#include "platform/isobmff/box.h"

#include <algorithm>
#include <array>
#include <functional>

// Properties of items and groups of them. Sources: ISO/IEC 23008-12:2022, 6.5 and 9.3; ISO/IEC
// 14496-12:2020, 8.18.
namespace clipheave::platform {

namespace {

constexpr std::uint32_t kMostAssociatedItems = 65'535;

Error brokenProperties() {
    return {ErrorCode::InvalidData, kReadImageBoxes, {}, kHeifBroken};
}

/// Properties that say something of people, places and times; a foreign one may say anything.
bool isPersonalProperty(std::uint32_t type) {
    static constexpr std::array kPersonalProperties{
        fourCc("udes"), fourCc("altt"), fourCc("crtt"), fourCc("mdft"),
        fourCc("itai"), fourCc("taic"), fourCc("uuid"),
    };
    return std::find(kPersonalProperties.begin(), kPersonalProperties.end(), type) !=
           kPersonalProperties.end();
}

struct PropertyAssociation {
    std::uint32_t id = 0;
    std::vector<std::uint16_t> properties; ///< the top bit: essential
};

/// `ipma`
struct PropertyAssociations {
    std::uint32_t head = 0; ///< version and flags
    std::vector<PropertyAssociation> items;

    [[nodiscard]] unsigned idBytes() const { return head >> 24 == 0 ? 2 : 4; }
    [[nodiscard]] unsigned indexBytes() const { return (head & 1) != 0 ? 2 : 1; }
    [[nodiscard]] std::uint16_t essentialBit() const {
        return static_cast<std::uint16_t>(indexBytes() == 2 ? 0x8000 : 0x80);
    }

    static Result<PropertyAssociations> read(ByteView payload) {
        HeifCursor cursor(payload);
        PropertyAssociations table;
        table.head = cursor.u32(4);
        const std::uint32_t count = cursor.u32(4);
        for (std::uint32_t i = 0; i < count && cursor.good(); ++i) {
            PropertyAssociation item{cursor.u32(table.idBytes()), {}};
            const std::uint32_t properties = cursor.u32(1);
            for (std::uint32_t n = 0; n < properties && cursor.good(); ++n)
                item.properties.push_back(
                    static_cast<std::uint16_t>(cursor.number(table.indexBytes())));
            table.items.push_back(std::move(item));
        }
        if (!cursor.good() || count > kMostAssociatedItems)
            return tl::unexpected(brokenProperties());
        return table;
    }

    [[nodiscard]] QByteArray box() const {
        QByteArray bytes;
        appendBigEndian(bytes, head, 4);
        appendBigEndian(bytes, items.size(), 4);
        for (const PropertyAssociation& item : items) {
            appendBigEndian(bytes, item.id, idBytes());
            appendBigEndian(bytes, item.properties.size(), 1);
            for (const std::uint16_t property : item.properties)
                appendBigEndian(bytes, property, indexBytes());
        }
        return heifBox(fourCc("ipma"), bytes);
    }
};

std::uint16_t numberOf(const PropertyAssociations& table, std::uint16_t property) {
    return static_cast<std::uint16_t>(property & ~table.essentialBit());
}

/// Returns the numbers of personal properties that no item needs to be shown.
std::set<std::uint16_t> personalProperties(ByteView ipco,
                                           const std::vector<PropertyAssociations>& tables) {
    std::set<std::uint16_t> numbers;
    std::uint16_t number = 0;
    BoxWalker properties(ipco);
    while (const auto box = properties.next())
        if (++number; isPersonalProperty(box->type))
            numbers.insert(number);
    for (const PropertyAssociations& table : tables)
        for (const PropertyAssociation& item : table.items)
            for (const std::uint16_t property : item.properties)
                if ((property & table.essentialBit()) != 0)
                    numbers.erase(numberOf(table, property));
    return numbers;
}

/// Returns the numbers of properties that these items alone have: readers take one of nobody for
/// one of the file.
std::set<std::uint16_t> propertiesOfOnly(const std::set<std::uint32_t>& items,
                                         const std::vector<PropertyAssociations>& tables) {
    std::set<std::uint16_t> theirs, others;
    for (const PropertyAssociations& table : tables)
        for (const PropertyAssociation& item : table.items)
            for (const std::uint16_t property : item.properties)
                (items.contains(item.id) ? theirs : others).insert(numberOf(table, property));
    std::erase_if(theirs, [&](std::uint16_t number) { return others.contains(number); });
    return theirs;
}

QByteArray withoutProperties(ByteView ipco, const std::set<std::uint16_t>& numbers) {
    QByteArray result;
    std::uint16_t number = 0;
    BoxWalker properties(ipco);
    while (const auto box = properties.next()) {
        if (numbers.contains(++number))
            result += heifBox(fourCc("free"),
                              QByteArray(static_cast<qsizetype>(box->payloadSize()), '\0'));
        else
            result += properties.whole(*box).toByteArray();
    }
    return heifBox(fourCc("ipco"), result);
}

void removeAssociations(PropertyAssociations& table, const std::set<std::uint32_t>& items,
                        const std::set<std::uint16_t>& numbers) {
    std::erase_if(table.items,
                  [&](const PropertyAssociation& item) { return items.contains(item.id); });
    for (PropertyAssociation& item : table.items)
        std::erase_if(item.properties, [&](std::uint16_t property) {
            return numbers.contains(numberOf(table, property));
        });
}

} // namespace

Result<QByteArray> changedItemProperties(ByteView iprp, const std::set<std::uint32_t>& removed,
                                         bool personal) {
    std::vector<PropertyAssociations> tables;
    ByteView ipco;
    BoxWalker reading(iprp);
    while (const auto box = reading.next()) {
        if (box->type == fourCc("ipco"))
            ipco = reading.payload(*box);
        if (box->type != fourCc("ipma"))
            continue;
        auto table = PropertyAssociations::read(reading.payload(*box));
        if (!table)
            return tl::unexpected(table.error());
        tables.push_back(std::move(*table));
    }
    if (!reading.problem().isEmpty())
        return tl::unexpected(brokenProperties());
    std::set<std::uint16_t> numbers = propertiesOfOnly(removed, tables);
    if (personal)
        numbers.merge(personalProperties(ipco, tables));
    QByteArray result;
    std::size_t table = 0;
    BoxWalker writing(iprp);
    while (const auto box = writing.next()) {
        if (box->type == fourCc("ipma")) {
            removeAssociations(tables[table], removed, numbers);
            result += tables[table++].box();
        } else if (box->type == fourCc("ipco") && !numbers.empty()) {
            result += withoutProperties(writing.payload(*box), numbers);
        } else {
            result += writing.whole(*box).toByteArray();
        }
    }
    return heifBox(fourCc("iprp"), result);
}

Result<QByteArray> changedEntityGroups(ByteView grpl, const std::set<std::uint32_t>& removed) {
    QByteArray result;
    BoxWalker groups(grpl);
    while (const auto box = groups.next()) {
        HeifCursor cursor(groups.payload(*box));
        QByteArray body;
        for (int i = 0; i < 2; ++i) // version and flags, number of the group
            appendBigEndian(body, cursor.u32(4), 4);
        const std::uint32_t count = cursor.u32(4);
        std::vector<std::uint32_t> left;
        for (std::uint32_t i = 0; i < count && cursor.good(); ++i)
            if (const std::uint32_t id = cursor.u32(4); !removed.contains(id))
                left.push_back(id);
        if (!cursor.good())
            return tl::unexpected(brokenProperties());
        if (left.empty() && count > 0)
            continue;
        appendBigEndian(body, left.size(), 4);
        for (const std::uint32_t id : left)
            appendBigEndian(body, id, 4);
        result += heifBox(box->type, body + cursor.rest().toByteArray());
    }
    if (!groups.problem().isEmpty())
        return tl::unexpected(brokenProperties());
    return heifBox(fourCc("grpl"), result);
}

} // namespace clipheave::platform
