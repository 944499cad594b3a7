// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/write_source_metadata.h"

#include "platform/isobmff/messages.h"
#include "platform/isobmff/meta_kind.h"
#include "platform/isobmff/write/render_items.h"
#include "platform/isobmff/write/write_tables.h"

#include <algorithm>

namespace clipheave::platform {
namespace {

constexpr std::uint32_t kMaxKeys = 1u << 16;

QByteArray identifierBytes(const char* prefix, QByteArrayView key) {
    return QByteArray(prefix) + key.toByteArray().toPercentEncoding({}, {}, '%');
}

bool saysWhere(const QByteArray& identifier) {
    return isLocation(
        std::string_view(identifier.constData(), static_cast<std::size_t>(identifier.size())));
}

/// Entries of a list that the reader makes no items of would vanish with the next save.
void noteProblem(SourceUserData& found, const Message& problem) {
    if (found.problem.isEmpty())
        found.problem = problem;
}

std::vector<QByteArray> keyNames(ByteView keys) {
    std::vector<QByteArray> names;
    const std::uint32_t count = std::min(keys.be32(4).value_or(0), kMaxKeys);
    std::uint64_t at = 8;
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto size = keys.be32(at);
        if (!size || *size < 8 || !keys.has(at, *size))
            break;
        names.push_back(keys.sub(at + 8, *size - 8).toByteArray());
        at += *size;
    }
    return names;
}

struct KeyedEntries {
    const std::vector<QByteArray> names;
    SourceUserData& found;

    void take(const BoxWalker& entries, const Box& entry) {
        if (entry.type == 0 || entry.type > names.size())
            return noteProblem(found, kMetadataKeyUnknown);
        const QByteArray& name = names[entry.type - 1];
        if (saysWhere(identifierBytes("mdta/", name)))
            found.locationKeys.push_back({name, entries.payload(entry).toByteArray()});
    }
};

bool hasValue(ByteView entry) {
    BoxWalker walker(entry);
    while (const auto box = walker.next())
        if (box->type == fourCc("data") && !box->cut)
            return true;
    return false;
}

/// Why the reader makes no item of an entry; null when it makes one, and of padding, where there
/// is nothing to lose.
Message entryProblem(const BoxWalker& entries, const Box& entry) {
    if (entry.cut)
        return {kBoxBeyondEnd, {fourCcText(entry.type), QString::number(entry.offset)}};
    if (entry.type == fourCc("free") || hasValue(entries.payload(entry)))
        return {};
    BoxWalker walker(entries.payload(entry));
    while (walker.next()) {
    }
    return walker.problem();
}

/// Calls `take` for each entry of an `ilst`; `found` gets what hides some of them.
template <class Take> void walkList(ByteView list, SourceUserData& found, const Take& take) {
    BoxWalker entries(list);
    while (const auto entry = entries.next()) {
        noteProblem(found, entryProblem(entries, *entry));
        if (++found.entries > kMaxItems)
            noteProblem(found, kTooManyMetadataItems);
        take(entries, *entry);
    }
    if (!entries.problem().isEmpty())
        noteProblem(found, entries.problem());
}

void readKeyedList(ByteView keys, ByteView list, SourceUserData& found) {
    if (keys.empty() && !list.empty())
        return noteProblem(found, kMetadataKeysMissing);
    KeyedEntries entries{keyNames(keys), found};
    walkList(list, found,
             [&](const BoxWalker& walker, const Box& entry) { entries.take(walker, entry); });
}

void readITunesList(ByteView list, SourceUserData& found) {
    walkList(list, found, [&](const BoxWalker& walker, const Box& entry) {
        const QByteArray whole = walker.whole(entry).toByteArray();
        if (!entry.cut && saysWhere(identifierBytes("itsk/", QByteArrayView(whole).sliced(4, 4))))
            found.locationEntries.push_back(renderCarriedBox(whole));
    });
}

/// Every list of a `meta`, as the reader does.
void readLists(ByteView children, MetaKind kind, SourceUserData& found) {
    ByteView keys = findPayload(children, {fourCc("keys")});
    BoxWalker walker(children);
    while (const auto box = walker.next()) {
        if (box->type == fourCc("keys"))
            keys = walker.payload(*box);
        else if (box->type == fourCc("ilst") && kind == MetaKind::KeyedList)
            readKeyedList(keys, walker.payload(*box), found);
        else if (box->type == fourCc("ilst"))
            readITunesList(walker.payload(*box), found);
    }
}

/// What stands beside the list: tables that its values refer to, and what nobody here reads.
void readBesideList(ByteView children, MetaKind kind, SourceUserData& found) {
    BoxWalker walker(children);
    while (const auto box = walker.next()) {
        const QByteArray whole = renderCarriedBox(walker.whole(*box).toByteArray());
        switch (box->type) {
        case fourCc("hdlr"):
        case fourCc("keys"):
        case fourCc("ilst"):
        case fourCc("free"):
        case fourCc("skip"):
            break;
        case fourCc("ctry"):
        case fourCc("lang"):
            found.localeTables.push_back(whole);
            break;
        default:
            (kind == MetaKind::KeyedList ? found.besideKeys : found.besideList).push_back(whole);
        }
    }
}

void readMeta(const BoxWalker& walker, const Box& meta, std::vector<QByteArray>& foreign,
              SourceUserData& found) {
    const ByteView children = metaChildren(walker.payload(meta));
    const MetaKind kind = metaKindOf(children);
    if (kind == MetaKind::Foreign) {
        foreign.push_back(renderCarriedBox(walker.whole(meta).toByteArray()));
        return;
    }
    readLists(children, kind, found);
    readBesideList(children, kind, found);
}

bool isUserDataPadding(std::uint32_t type) {
    return type == fourCc("free") || type == fourCc("skip") || type == fourCc("wide");
}

void readUserData(ByteView udta, SourceUserData& found) {
    BoxWalker children(udta);
    while (const auto child = children.next()) {
        if (child->type == fourCc("meta")) {
            readMeta(children, *child, found.foreignUserDataMeta, found);
            continue;
        }
        const bool structural = isStructuralUserData(child->type);
        if (child->cut && !structural && !isUserDataPadding(child->type))
            noteProblem(found, Message(kBoxBeyondEnd,
                                       {fourCcText(child->type), QString::number(child->offset)}));
        const QByteArray code = children.whole(*child).sub(4, 4).toByteArray();
        if (!structural && !saysWhere(identifierBytes("uiso/", code)))
            continue;
        auto& list = structural ? found.structural : found.location;
        list.push_back(renderCarriedBox(children.whole(*child).toByteArray()));
        if (child->type == fourCc("loci"))
            found.places.push_back(list.back());
    }
}

constexpr std::array kQuickTimeBrands{fourCc("qt  ")};
constexpr std::array kM4VBrands{fourCc("M4V "), fourCc("M4A "), fourCc("mp42"), fourCc("isom")};
constexpr std::array kM4ABrands{fourCc("M4A "), fourCc("mp42"), fourCc("isom")};
constexpr std::array kMp4Brands{fourCc("mp41"), fourCc("mp42"), fourCc("isom")};

struct FileTypeForm {
    std::uint32_t major, minor;
    const std::uint32_t* brands;
    std::size_t brandCount;
};
FileTypeForm fileTypeForm(OutputContainer container) {
    switch (container) {
    case OutputContainer::QuickTimeMovie:
        return {fourCc("qt  "), 0, kQuickTimeBrands.data(), kQuickTimeBrands.size()};
    case OutputContainer::M4V:
        return {fourCc("M4V "), 1, kM4VBrands.data(), kM4VBrands.size()};
    case OutputContainer::M4A:
        return {fourCc("M4A "), 0, kM4ABrands.data(), kM4ABrands.size()};
    case OutputContainer::Mp4:
        break;
    }
    return {fourCc("mp42"), 1, kMp4Brands.data(), kMp4Brands.size()};
}

} // namespace

SourceUserData readSourceUserData(ByteView moovPayload) {
    SourceUserData found;
    BoxWalker walker(moovPayload);
    while (const auto box = walker.next()) {
        if (box->type == fourCc("udta"))
            readUserData(walker.payload(*box), found);
        else if (box->type == fourCc("meta"))
            readMeta(walker, *box, found.foreignMeta, found);
    }
    return found;
}

QByteArray renderFileType(OutputContainer container, ByteView sourceFtyp) {
    const FileTypeForm form = fileTypeForm(container);
    std::vector<std::uint32_t> brands(form.brands, form.brands + form.brandCount);
    // A source without `ftyp` is a QuickTime movie of old. Its sample descriptions have QuickTime's
    // layout, which some decoders only expect when the brand is there.
    std::vector<std::uint32_t> offered{sourceFtyp.be32(0).value_or(fourCc("qt  "))};
    for (std::uint64_t at = 8; const auto brand = sourceFtyp.be32(at); at += 4)
        offered.push_back(*brand);
    for (const std::uint32_t brand : offered) {
        const bool needed =
            brand == fourCc("qt  ") ||
            std::find(kDecoderBrands.begin(), kDecoderBrands.end(), brand) != kDecoderBrands.end();
        if (needed && std::find(brands.begin(), brands.end(), brand) == brands.end())
            brands.push_back(brand);
    }
    const auto number = [](std::uint32_t value) {
        return QByteArray{}
            .append(static_cast<char>(value >> 24))
            .append(static_cast<char>(value >> 16))
            .append(static_cast<char>(value >> 8))
            .append(static_cast<char>(value));
    };
    QByteArray payload = number(form.major) + number(form.minor);
    for (const std::uint32_t brand : brands)
        payload += number(brand);
    return renderBox(fourCc("ftyp"), payload);
}

} // namespace clipheave::platform
