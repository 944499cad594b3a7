// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/read/item_lists.h"

#include "platform/isobmff/messages.h"
#include "platform/isobmff/meta_kind.h"
#include "platform/isobmff/read/item_texts.h"

#include <algorithm>
#include <array>
#include <vector>

// Sources: QuickTime File Format, "Metadata"; for `ilst` the layout that iTunes writes.
namespace clipheave::platform {

namespace {

constexpr std::uint64_t kFullBoxHead = 4;
constexpr std::uint64_t kDataHead = 8; // type and locale

// Numbers that some writers leave untyped.
constexpr std::array kNumberEntries{fourCc("cpil"), fourCc("tmpo"), fourCc("pgap"),
                                    fourCc("pcst"), fourCc("hdvd"), fourCc("stik"),
                                    fourCc("rtng"), fourCc("tvsn"), fourCc("tves")};

/// A list and, for QuickTime metadata, the keys that it refers to: the last before it, else the
/// first of all.
struct MetaList {
    Box list;
    std::optional<Box> keys;
};

struct MetaParts {
    MetaSigns signs;
    std::vector<MetaList> lists;
};

MetaParts findMetaParts(ItemSink& sink, const Box& meta) {
    const ByteView head =
        sink.reader.viewUpTo(meta.payloadOffset(), std::min<std::uint64_t>(meta.payloadSize(), 8));
    const std::uint64_t skipped = metaChildrenOffset(head);
    FileBoxWalker walker(sink.reader, meta.payloadOffset() + skipped, meta.end());
    MetaParts parts;
    std::optional<Box> keys;
    while (const auto box = walker.next()) {
        parts.signs.see(box->type);
        if (box->type == fourCc("hdlr"))
            parts.signs.handler = sink.reader.view(box->payloadOffset(), 12).be32(8).value_or(0);
        else if (box->type == fourCc("ilst"))
            parts.lists.push_back({*box, keys});
        else if (box->type == fourCc("keys"))
            keys = box;
        for (MetaList& list : parts.lists)
            if (!list.keys)
                list.keys = keys;
    }
    if (!walker.problem().isEmpty())
        sink.noteProblem(walker.problem());
    return parts;
}

/// The names of a `keys` box, index 1 first.
class KeyTable {
public:
    KeyTable(HeaderReader& reader, const Box& keys)
        : m_bytes(reader.viewUpTo(keys.payloadOffset(), keys.payloadSize()).toByteArray()) {
        const ByteView bytes(m_bytes);
        const std::uint64_t count = bytes.be32(kFullBoxHead).value_or(0);
        std::uint64_t at = kFullBoxHead + 4;
        constexpr std::uint64_t kKeyHead = 8; // size and name space
        while (m_names.size() < count) {
            const std::uint64_t size = bytes.be32(at).value_or(0);
            if (size < kKeyHead || !bytes.has(at, size))
                break;
            m_names.push_back(bytes.sub(at + kKeyHead, size - kKeyHead));
            at += size;
        }
    }
    [[nodiscard]] std::optional<ByteView> name(std::uint32_t index) const {
        if (index == 0 || index > m_names.size())
            return std::nullopt;
        return m_names[index - 1];
    }

private:
    QByteArray m_bytes;
    std::vector<ByteView> m_names;
};

QString localeTag(std::uint32_t locale) {
    const auto language = static_cast<std::uint16_t>(locale);
    // Below the packed codes stand indexes into language lists that nobody writes.
    if (language < kMacLanguageEnd)
        return {};
    QString tag = languageTag(language);
    const QString country = fourCcText(locale).left(2);
    const auto isLetter = [](QChar c) { return c >= QLatin1Char('A') && c <= QLatin1Char('Z'); };
    if (!tag.isEmpty() && isLetter(country[0]) && isLetter(country[1]))
        tag += QLatin1Char('-') + country;
    return tag;
}

struct EntryKey {
    KeyNames names;
    std::uint32_t code = 0; ///< four-character code, 0 for named keys
    bool isImage = false;
};

void addDataItem(ItemSink& sink, QList<AVMetadataItem>& group, const EntryKey& key, const Box& data,
                 const std::shared_ptr<const SourceBox>& source) {
    const ByteView head = sink.reader.view(data.payloadOffset(), kDataHead);
    if (data.payloadSize() < kDataHead || head.size() < kDataHead)
        return sink.noteProblem(kMetadataValueTooShort);
    // The high byte names a set of types; only set 0 is defined.
    std::uint32_t code = *head.be32(0) <= 0xFFFFFF ? *head.be32(0) : 0;
    const std::uint32_t locale = *head.be32(4);
    const FileSlice payload{sink.reader.path(), data.payloadOffset() + kDataHead,
                            data.payloadSize() - kDataHead};
    constexpr std::uint32_t kSignedInteger = 21;
    const bool isNumber =
        std::find(kNumberEntries.begin(), kNumberEntries.end(), key.code) != kNumberEntries.end();
    if (code == 0 && isNumber)
        code = kSignedInteger;
    AVMetadataItem item = newItem(key.names);
    setTypedValue(item, sink.reader, code, payload, key.isImage);
    item.extendedLanguageTag = localeTag(locale);
    item.source = source;
    sink.add(group, std::move(item));
}

/// The `data` boxes of one entry, an item each: several languages, or several images.
void addEntry(ItemSink& sink, QList<AVMetadataItem>& group, const EntryKey& key, const Box& entry) {
    const auto source = sourceOf(sink.reader, entry);
    FileBoxWalker walker(sink.reader, entry.payloadOffset(), entry.end());
    while (const auto box = walker.next()) {
        if (box->type == fourCc("data") && !box->cut)
            addDataItem(sink, group, key, *box, source);
    }
    if (!walker.problem().isEmpty())
        sink.noteProblem(walker.problem());
}

/// The name of a `----` entry: "com.apple.iTunes.MusicBrainz Album Id".
QByteArray longName(ItemSink& sink, const Box& entry) {
    QByteArray mean, name;
    FileBoxWalker walker(sink.reader, entry.payloadOffset(), entry.end());
    while (const auto box = walker.next()) {
        const bool isMean = box->type == fourCc("mean");
        if ((!isMean && box->type != fourCc("name")) || box->payloadSize() < kFullBoxHead)
            continue;
        const ByteView text = sink.reader.view(box->payloadOffset() + kFullBoxHead,
                                               box->payloadSize() - kFullBoxHead);
        (isMean ? mean : name) = text.toByteArray();
    }
    return mean.isEmpty() ? name : mean + '.' + name;
}

void readITunesList(ItemSink& sink, const Box& list) {
    FileBoxWalker walker(sink.reader, list.payloadOffset(), list.end());
    while (const auto entry = walker.next()) {
        EntryKey key;
        key.code = entry->type;
        key.isImage = entry->type == fourCc("covr");
        const QByteArray code = fourCcText(entry->type).toLatin1();
        key.names = entry->type == fourCc("----") ? internKey("itlk", longName(sink, *entry))
                                                  : internKey("itsk", code);
        addEntry(sink, sink.itunes, key, *entry);
    }
    if (!walker.problem().isEmpty())
        sink.noteProblem(walker.problem());
}

void readKeyedList(ItemSink& sink, const Box& list, const KeyTable& keys) {
    FileBoxWalker walker(sink.reader, list.payloadOffset(), list.end());
    while (const auto entry = walker.next()) {
        const auto name = keys.name(entry->type);
        if (!name) {
            sink.noteProblem(kMetadataKeyUnknown);
            continue;
        }
        EntryKey key;
        key.names = internKey("mdta", *name);
        key.isImage = name->bytes() == "com.apple.quicktime.artwork";
        addEntry(sink, sink.keyed, key, *entry);
    }
    if (!walker.problem().isEmpty())
        sink.noteProblem(walker.problem());
}

} // namespace

void readMetaItems(ItemSink& sink, const Box& meta) {
    const MetaParts parts = findMetaParts(sink, meta);
    const MetaKind kind = metaKind(parts.signs);
    if (kind == MetaKind::Foreign)
        return;
    for (const MetaList& part : parts.lists) {
        if (kind == MetaKind::ITunesList)
            readITunesList(sink, part.list);
        else if (part.keys)
            readKeyedList(sink, part.list, KeyTable(sink.reader, *part.keys));
        else
            sink.noteProblem(kMetadataKeysMissing);
    }
}

} // namespace clipheave::platform
