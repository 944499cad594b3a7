// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/write_metadata.h"

#include "platform/isobmff/messages.h"
#include "platform/isobmff/write/render_items.h"
#include "platform/isobmff/write/render_user_data.h"
#include "platform/isobmff/write/write_tables.h"

#include <QSet>
#include <QtEndian>

#include <algorithm>
#include <map>
#include <numeric>

namespace clipheave::platform {
namespace {

using Place = ItemTarget::Place;

// Numbers of the application's fields begin with 1.
constexpr int kNoField = 0;
constexpr int kLocationField = -1;

std::string_view viewOf(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

bool writesNothing(const AVMetadataItem& item) {
    if (item.source)
        return false;
    if (const auto* text = std::get_if<QString>(&item.value))
        return text->isEmpty();
    if (const auto* bytes = std::get_if<QByteArray>(&item.value))
        return bytes->isEmpty();
    if (const auto* slice = std::get_if<FileSlice>(&item.value))
        return slice->length == 0;
    return std::holds_alternative<std::monostate>(item.value);
}

/// Builds the three lists of boxes and decides which of several items gets a place.
class ListRenderer {
public:
    explicit ListRenderer(const PassthroughRequest& request)
        : m_items(*request.metadata), m_container(request.container), m_fields(request.fields) {}

    /// First pass: what the new items claim. Nothing that was carried over may shadow it.
    void renderNewItems();
    /// Second pass, in list order: carried boxes and the rendered ones.
    [[nodiscard]] Result<void> emitItems();
    void keepLocation(const SourceUserData& source);
    [[nodiscard]] MovieMetadata boxes(const SourceUserData& source, bool strip) const;

    [[nodiscard]] bool namesLocation() const { return m_namesLocation; }
    [[nodiscard]] Notes& notes() { return m_notes; }

private:
    struct NewItem {
        ItemTarget target;
        QByteArray box;
    };
    [[nodiscard]] QByteArray render(const ItemTarget& target, const AVMetadataItem& item);
    [[nodiscard]] int fieldOf(const QString& identifier) const;
    [[nodiscard]] bool isShadowing(const AVMetadataItem& carried, const ItemTarget& target) const;
    [[nodiscard]] bool claims(const AVMetadataItem& item, const ItemTarget& target);
    void emitBox(const ItemTarget& target, const QByteArray& box);
    void emitKeyValues(const QByteArray& name, const QByteArray& values, bool joinEntries);
    [[nodiscard]] QByteArray keysMeta(const SourceUserData& source, bool strip) const;
    [[nodiscard]] QByteArray listMeta(const SourceUserData& source, bool strip) const;

    const QList<AVMetadataItem>& m_items;
    OutputContainer m_container;
    FieldIdentifiers m_fields;
    bool m_namesLocation = false;
    Notes m_notes;

    std::map<qsizetype, NewItem> m_newItems; ///< by place in the list
    QSet<QByteArray> m_claimed;              ///< place and key
    QSet<QString> m_newIdentifiers;
    std::map<int, QString> m_newFields; ///< with the value that came first
    QSet<const SourceBox*> m_emitted;

    QByteArray m_list, m_userData, m_keyEntries;
    std::vector<QByteArray> m_keyNames;
    std::map<QByteArray, qsizetype> m_joinable; ///< where the entry of a new key begins
};

bool isOfOneLanguage(const AVMetadataItem& item) {
    const QString& language = item.extendedLanguageTag;
    return !language.isEmpty() && language != QLatin1String("und");
}

QByteArray claimName(const ItemTarget& target, const AVMetadataItem& item) {
    QByteArray name(1, static_cast<char>(target.place));
    name += target.key;
    // A QuickTime key may stand once for each language.
    if (target.place == Place::Keys && isOfOneLanguage(item))
        name += '\0' + item.extendedLanguageTag.toUtf8();
    return name;
}

QByteArray ListRenderer::render(const ItemTarget& target, const AVMetadataItem& item) {
    switch (target.place) {
    case Place::List:
        return renderListEntry(target.key, item, m_notes);
    case Place::UserData:
        return renderUserData(qFromBigEndian<quint32>(target.key.constData()), item, m_notes);
    case Place::Keys:
        return renderKeyData(item, m_notes);
    case Place::Nowhere:
        break;
    }
    return {};
}

/// Returns the number of the field that is read from this identifier; kNoField for all others.
int ListRenderer::fieldOf(const QString& identifier) const {
    const QByteArray latin = identifier.toLatin1();
    if (isLocation(viewOf(latin)))
        return kLocationField;
    const auto found =
        std::find_if(m_fields.begin(), m_fields.end(), [&](const FieldIdentifier& field) {
            return field.identifier == viewOf(latin);
        });
    return found == m_fields.end() ? kNoField : found->field;
}

/// True when the item's place and field are its own: the first in the list is what people see.
bool ListRenderer::claims(const AVMetadataItem& item, const ItemTarget& target) {
    if (m_claimed.contains(claimName(target, item)))
        return false;
    const QString identifier = item.effectiveIdentifier();
    const int field = fieldOf(identifier);
    if (field == kNoField)
        return true;
    const auto first = m_newFields.find(field);
    return first == m_newFields.end() || first->second == item.stringValue() ||
           viewOf(identifier.toLatin1()).starts_with(kLocationKeys) ||
           (target.place == Place::Keys && isOfOneLanguage(item));
}

void ListRenderer::renderNewItems() {
    for (qsizetype i = 0; i < m_items.size(); ++i) {
        const AVMetadataItem& item = m_items[i];
        const QString identifier = item.effectiveIdentifier();
        const int field = fieldOf(identifier);
        m_namesLocation |= field == kLocationField;
        if (item.source)
            continue;
        const ItemTarget target = itemTarget(identifier, m_container, false);
        const bool blank = writesNothing(item);
        if (!blank && (target.place == Place::Nowhere || !claims(item, target)))
            continue;
        NewItem rendered{target, blank ? QByteArray() : render(target, item)};
        if (!blank && rendered.box.isEmpty())
            continue; // cannot be stored: what stands there stays
        m_newIdentifiers.insert(identifier);
        m_claimed.insert(claimName(target, item));
        if (field != kNoField && !isOfOneLanguage(item))
            m_newFields.try_emplace(field, item.stringValue());
        if (!blank)
            m_newItems.emplace(i, std::move(rendered));
    }
}

bool ListRenderer::isShadowing(const AVMetadataItem& carried, const ItemTarget& target) const {
    const QString identifier = carried.effectiveIdentifier();
    const int field = fieldOf(identifier);
    return m_newIdentifiers.contains(identifier) ||
           (field != kNoField && m_newFields.contains(field)) ||
           m_claimed.contains(claimName(target, {}));
}

Result<void> ListRenderer::emitItems() {
    for (qsizetype i = 0; i < m_items.size(); ++i) {
        const AVMetadataItem& item = m_items[i];
        if (const auto rendered = m_newItems.find(i); rendered != m_newItems.end())
            emitBox(rendered->second.target, rendered->second.box);
        if (!item.source || m_emitted.contains(item.source.get()))
            continue;
        const ItemTarget target = itemTarget(item.effectiveIdentifier(), m_container, true);
        if (target.place == Place::Nowhere || isShadowing(item, target))
            continue;
        const auto bytes = item.source->load();
        if (!bytes)
            return tl::unexpected(bytes.error());
        m_emitted.insert(item.source.get());
        const QByteArray box = renderCarriedBox(*bytes);
        const std::uint32_t type = ByteView(box).be32(4).value_or(0);
        if (target.place == Place::UserData && isStructuralUserData(type))
            continue; // stands in the file anyway
        if (target.place == Place::Keys)
            emitKeyValues(target.key, box.mid(8), false);
        else
            emitBox(target, box);
    }
    return {};
}

void ListRenderer::emitBox(const ItemTarget& target, const QByteArray& box) {
    if (target.place == Place::Keys)
        emitKeyValues(target.key, box, true);
    else
        (target.place == Place::List ? m_list : m_userData) += box;
}

void ListRenderer::emitKeyValues(const QByteArray& name, const QByteArray& values,
                                 bool joinEntries) {
    if (joinEntries) {
        if (const auto entry = m_joinable.find(name); entry != m_joinable.end()) {
            // Another language of a key: one entry with several values.
            const qsizetype at = entry->second;
            const auto size = qFromBigEndian<quint32>(m_keyEntries.constData() + at);
            m_keyEntries.insert(at + size, values);
            qToBigEndian(size + static_cast<quint32>(values.size()), m_keyEntries.data() + at);
            for (auto& [other, position] : m_joinable)
                position += position > at ? values.size() : 0;
            return;
        }
        m_joinable.emplace(name, m_keyEntries.size());
    }
    auto known = std::find(m_keyNames.begin(), m_keyNames.end(), name);
    if (known == m_keyNames.end())
        known = m_keyNames.insert(m_keyNames.end(), name);
    const auto index = static_cast<std::uint32_t>(known - m_keyNames.begin() + 1);
    m_keyEntries += renderBox(index, values);
}

void ListRenderer::keepLocation(const SourceUserData& source) {
    if (source.location.empty() && source.locationEntries.empty() && source.locationKeys.empty())
        return;
    for (const QByteArray& entry : source.locationEntries)
        m_list += entry;
    for (const QByteArray& box : source.location)
        m_userData += box;
    for (const SourceUserData::KeyEntry& entry : source.locationKeys)
        emitKeyValues(entry.name, entry.values, false);
    m_notes << kLocationKept;
}

QByteArray joined(const std::vector<QByteArray>& boxes) {
    return std::accumulate(boxes.begin(), boxes.end(), QByteArray());
}

QByteArray handlerBox(const char* handler, const char* manufacturer) {
    // Version and flags, predefined, handler, three reserved words, an empty name.
    return renderBox(fourCc("hdlr"), QByteArray(8, '\0') + QByteArray(handler, 4) +
                                         QByteArray(manufacturer, 4) + QByteArray(9, '\0'));
}

QByteArray ListRenderer::keysMeta(const SourceUserData& source, bool strip) const {
    QByteArray keys(8, '\0');
    qToBigEndian(static_cast<quint32>(m_keyNames.size()), keys.data() + 4);
    for (const QByteArray& name : m_keyNames)
        keys += renderBox(fourCc("mdta"), name);
    QByteArray children = handlerBox("mdta", "\0\0\0\0") + renderBox(fourCc("keys"), keys) +
                          renderBox(fourCc("ilst"), m_keyEntries);
    children += joined(source.localeTables);
    if (!strip)
        children += joined(source.besideKeys);
    // Without version and flags in every brand: QuickTime's form, which cameras also write into MP4
    // and which readers that know this box at the movie level expect (exiftool stops at a FullBox).
    return renderBox(fourCc("meta"), children);
}

QByteArray ListRenderer::listMeta(const SourceUserData& source, bool strip) const {
    QByteArray children = handlerBox("mdir", "appl") + renderBox(fourCc("ilst"), m_list);
    if (!strip)
        children += joined(source.besideList);
    return renderBox(fourCc("meta"), QByteArray(4, '\0') + children);
}

MovieMetadata ListRenderer::boxes(const SourceUserData& source, bool strip) const {
    QByteArray children = m_userData + joined(source.structural);
    if (!m_list.isEmpty() || (!strip && !source.besideList.empty()))
        children += listMeta(source, strip);
    MovieMetadata result;
    if (!m_keyEntries.isEmpty() || (!strip && !source.besideKeys.empty()))
        result.meta = keysMeta(source, strip);
    if (!strip) {
        children += joined(source.foreignUserDataMeta);
        result.meta += joined(source.foreignMeta);
    }
    if (!children.isEmpty())
        result.udta = renderBox(fourCc("udta"), children);
    return result;
}

std::string_view translated(std::string_view identifier, OutputContainer container) {
    for (const ItemTranslation& row : kTranslations)
        if (row.identifier == identifier)
            return container == OutputContainer::QuickTimeMovie ? row.quickTime : row.mp4;
    return identifier;
}

} // namespace

ItemTarget itemTarget(const QString& identifier, OutputContainer container, bool carried) {
    const QByteArray latin = identifier.toLatin1();
    const std::string_view wanted = carried ? viewOf(latin) : translated(viewOf(latin), container);
    QByteArray name(wanted.data(), static_cast<qsizetype>(wanted.size()));
    // User texts (ReplayGain, MusicBrainz) by the names that players look for.
    constexpr QByteArrayView kUserText("id3/TXXX%3A");
    if (!carried && name.startsWith(kUserText))
        name.replace(0, kUserText.size(), "itlk/com.apple.iTunes.");
    const qsizetype slash = name.indexOf('/');
    const QByteArray space = name.left(slash);
    ItemTarget target;
    target.key = QByteArray::fromPercentEncoding(name.mid(slash + 1));
    if (slash < 0 || target.key.isEmpty())
        return target;
    if (space == "itsk" || space == "itlk")
        target.place = Place::List;
    else if (space == "mdta")
        target.place = Place::Keys;
    else if ((space == "uiso" || space == "udta") && target.key.size() == 4)
        target.place = Place::UserData;
    return target;
}

Result<RenderedList> renderMetadataList(const PassthroughRequest& request,
                                        const SourceUserData& source) {
    const bool isEmpty = request.metadata->isEmpty();
    const bool strips = request.removesMetadata || isEmpty;
    // What gave no items cannot be in the list, so a save would lose it.
    if (!strips && !source.problem.isEmpty())
        return failure(ErrorCode::InvalidData, kRebuildMovieHeader, request.source, source.problem);
    ListRenderer renderer(request);
    renderer.renderNewItems();
    const auto emitted = renderer.emitItems();
    if (!emitted)
        return tl::unexpected(emitted.error());
    RenderedList result;
    result.stripped = strips;
    // A list that does not name the location leaves it; an empty one that is not the removal of a
    // video leaves nothing.
    if ((request.removesMetadata || !isEmpty) && !renderer.namesLocation())
        renderer.keepLocation(source);
    result.boxes = renderer.boxes(source, result.stripped);
    result.notes = renderer.notes();
    return result;
}

} // namespace clipheave::platform
