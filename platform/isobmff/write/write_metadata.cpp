// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/write_metadata.h"

#include "platform/isobmff/messages.h"
#include "platform/isobmff/write/render_items.h"
#include "platform/isobmff/write/render_user_data.h"
#include "platform/isobmff/write/write_tables.h"
#include "platform/media/model/messages.h"

#include <QHash>
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

constexpr std::uint32_t kCoverCode = fourCc("covr");
constexpr QLatin1String kDateOfId3("id3/TDRC"), kLyricsOfId3("id3/USLT");

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

bool isForeignImage(const AVMetadataItem& item) {
    return !item.source && item.identifier == u"id3/APIC" && !writesNothing(item);
}

/// Builds the three lists of boxes and decides which of several items gets a place.
class ListRenderer {
public:
    ListRenderer(const PassthroughRequest& request, const SourceUserData& source)
        : m_items(*request.metadata), m_places(source.places), m_container(request.container),
          m_fields(request.fields) {}

    /// First pass: what the new items claim. Nothing that was carried over may shadow it.
    void renderNewItems();
    /// Second pass, in list order: carried boxes and the rendered ones.
    [[nodiscard]] Result<void> emitItems();
    void keepLocation(const SourceUserData& source);
    [[nodiscard]] MovieMetadata boxes(const SourceUserData& source, bool strip) const;

    [[nodiscard]] bool namesLocation() const { return m_namesLocation; }
    [[nodiscard]] Notes notes() const;

private:
    struct NewItem {
        ItemTarget target;
        QByteArray box;
    };
    [[nodiscard]] QByteArray render(const ItemTarget& target, const AVMetadataItem& item);
    [[nodiscard]] QByteArray renderUserDataItem(std::uint32_t code, const AVMetadataItem& item);
    [[nodiscard]] int fieldOf(const QString& identifier) const;
    [[nodiscard]] bool isShadowing(const AVMetadataItem& carried, const ItemTarget& target) const;
    [[nodiscard]] bool claims(const AVMetadataItem& item, const ItemTarget& target);
    [[nodiscard]] ItemTarget targetOf(const QString& identifier) const;
    void noteLost(const AVMetadataItem& item, const ItemTarget& target);
    void renderFurtherImages(qsizetype cover);
    void emitBox(const ItemTarget& target, const QByteArray& box);
    void emitKeyValues(const QByteArray& name, const QByteArray& values, bool joinEntries);
    [[nodiscard]] QByteArray keysMeta(const SourceUserData& source, bool strip) const;
    [[nodiscard]] QByteArray listMeta(const SourceUserData& source, bool strip) const;

    const QList<AVMetadataItem>& m_items;
    const std::vector<QByteArray>& m_places;
    OutputContainer m_container;
    FieldIdentifiers m_fields;
    bool m_namesLocation = false;
    Notes m_notes;
    QStringList m_lost; ///< names of what has no place

    std::map<qsizetype, NewItem> m_newItems; ///< by place in the list
    QHash<QByteArray, QString> m_claimed;    ///< place and key, with the text of the first
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

QByteArray ListRenderer::renderUserDataItem(std::uint32_t code, const AVMetadataItem& item) {
    if (code == fourCc("loci"))
        if (const QByteArray moved = movedPlaces(m_places, item); !moved.isEmpty())
            return moved;
    return renderUserData(code, item, m_notes);
}

QByteArray ListRenderer::render(const ItemTarget& target, const AVMetadataItem& item) {
    switch (target.place) {
    case Place::List:
        return renderListEntry(target.key, item, m_notes);
    case Place::UserData:
        return renderUserDataItem(qFromBigEndian<quint32>(target.key.constData()), item);
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

Notes ListRenderer::notes() const {
    QStringList lost = m_lost;
    lost.removeDuplicates();
    if (lost.isEmpty())
        return m_notes;
    return m_notes + Notes{Message(kTagsNotCarriedOver, {lost.join(QStringLiteral(", "))})};
}

/// Lyrics and lyricist have one entry; who comes second is a user's text.
ItemTarget ListRenderer::targetOf(const QString& identifier) const {
    ItemTarget target = itemTarget(identifier, m_container, false);
    if (identifier == kLyricsOfId3 && m_claimed.contains(claimName(target, {})))
        target.key = "com.apple.iTunes.UNSYNCEDLYRICS";
    return target;
}

/// A text of a field gives way to the one that people see, and a date to the year in its place.
void ListRenderer::noteLost(const AVMetadataItem& item, const ItemTarget& target) {
    const QString identifier = item.effectiveIdentifier();
    const bool givesWay = target.place != Place::Nowhere &&
                          (fieldOf(identifier) != kNoField || identifier == kDateOfId3 ||
                           m_claimed.value(claimName(target, item)) == item.stringValue());
    if (!givesWay && !isEncoderNote(item))
        m_lost.append(itemName(item));
}

/// The images of a foreign tag other than its cover, which stands last there: they follow the first
/// image in one entry.
void ListRenderer::renderFurtherImages(qsizetype cover) {
    QByteArray images;
    for (qsizetype i = 0; i < cover; ++i)
        if (isForeignImage(m_items[i]))
            images += render({Place::List, "covr"}, m_items[i]).mid(8);
    const auto first = std::find_if(m_newItems.begin(), m_newItems.end(), [](const auto& known) {
        return known.second.target.key == "covr";
    });
    if (images.isEmpty())
        return;
    if (first == m_newItems.end())
        m_newItems.emplace(cover, NewItem{{Place::List, "covr"}, renderBox(kCoverCode, images)});
    else
        first->second.box = renderBox(kCoverCode, first->second.box.mid(8) + images);
}

void ListRenderer::renderNewItems() {
    qsizetype cover = m_items.size() - 1;
    while (cover >= 0 && !isForeignImage(m_items[cover]))
        --cover;
    for (qsizetype i = 0; i < m_items.size(); ++i) {
        if (i < cover && isForeignImage(m_items[i]))
            continue;
        const AVMetadataItem& item = m_items[i];
        const QString identifier = item.effectiveIdentifier();
        const int field = fieldOf(identifier);
        m_namesLocation |= field == kLocationField;
        if (item.source)
            continue;
        const ItemTarget target = targetOf(identifier);
        const bool blank = writesNothing(item);
        if (!blank && (target.place == Place::Nowhere || !claims(item, target))) {
            noteLost(item, target);
            continue;
        }
        NewItem rendered{target, blank ? QByteArray() : render(target, item)};
        if (!blank && rendered.box.isEmpty())
            continue; // cannot be stored: what stands there stays
        m_newIdentifiers.insert(identifier);
        m_claimed.insert(claimName(target, item), item.stringValue());
        if (field != kNoField && !isOfOneLanguage(item))
            m_newFields.try_emplace(field, item.stringValue());
        if (!blank)
            m_newItems.emplace(i, std::move(rendered));
    }
    renderFurtherImages(cover);
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

/// The name by which players look for a user's text (ReplayGain, MusicBrainz).
QByteArray playerName(const QByteArray& name) {
    const QByteArray lower = name.toLower();
    for (const PlayerName& row : kPlayerNames)
        if (viewOf(lower) == row.name)
            return {row.known.data(), static_cast<qsizetype>(row.known.size())};
    if (lower.startsWith("replaygain_"))
        return lower;
    if (lower.startsWith("wm/"))
        return name.mid(3);
    // As the tags of Windows Media write them: "MusicBrainz/Album Id".
    return lower.startsWith("musicbrainz/") || lower.startsWith("acoustid/")
               ? QByteArray(name).replace('/', ' ')
               : name;
}

/// Nothing when the item is no user's text, or has no name.
std::optional<ItemTarget> userTextTarget(const QByteArray& identifier) {
    for (const std::string_view prefix : kUserTexts) {
        if (!viewOf(identifier).starts_with(prefix) || viewOf(identifier).size() == prefix.size())
            continue;
        const QByteArray name =
            QByteArray::fromPercentEncoding(identifier.mid(static_cast<qsizetype>(prefix.size())));
        if (name == "iTunSMPB") // the priming of an encoder that is not the output's
            return std::nullopt;
        return ItemTarget{Place::List, "com.apple.iTunes." + playerName(name)};
    }
    return std::nullopt;
}

} // namespace

ItemTarget itemTarget(const QString& identifier, OutputContainer container, bool carried) {
    const QByteArray latin = identifier.toLatin1();
    const std::string_view wanted = carried ? viewOf(latin) : translated(viewOf(latin), container);
    QByteArray name(wanted.data(), static_cast<qsizetype>(wanted.size()));
    if (!carried)
        if (const auto named = userTextTarget(name))
            return *named;
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
    ListRenderer renderer(request, source);
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
