// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/tiff_editor.h"

#include "platform/image/messages.h"
#include "platform/image/write/byte_ranges.h"

#include <algorithm>
#include <array>
#include <limits>

namespace clipheave::platform {

using Kind = TiffDirectory::Kind;

namespace {

/// Tags of where the image data of a directory lies, each with that of its lengths.
constexpr std::array<std::pair<std::uint16_t, std::uint16_t>, 3> kImageData{
    {{0x0111, 0x0117}, {0x0144, 0x0145}, {0x0201, 0x0202}}};

constexpr std::uint16_t kLongType = 4;

/// An entry of a table that is written anew.
struct NewEntry {
    std::uint16_t tag = 0, type = 0;
    std::uint32_t count = 0;
    QByteArray field;
};

bool isThere(const TiffEntry& entry) {
    return !entry.isInField() && entry.isInside;
}

} // namespace

/// One layout of an editor's changes.
class TiffLayout {
public:
    explicit TiffLayout(const TiffEditor& editor)
        : m_editor(editor), m_structure(editor.m_structure),
          m_base(editor.m_source.size + editor.m_source.size % 2) {}

    Result<TiffPatch> run() {
        findRanges();
        for (const auto& [kind, changes] : m_editor.m_added)
            m_addedAt[kind] = addTable(changes);
        // Those below before those above, which learn where they went.
        for (std::size_t i = m_structure.directories.size(); i-- > 0;)
            if (needsTable(i))
                writeTable(i);
        zeroFreed();
        if (m_base + static_cast<std::uint64_t>(m_tail.size()) >
            std::numeric_limits<std::uint32_t>::max())
            return failure(ErrorCode::LimitExceeded, kWritePhotoTags, {}, kPhotoTooLarge);
        if (!m_tail.isEmpty() && m_base != m_editor.m_source.size)
            m_tail.prepend('\0');
        return TiffPatch{std::move(m_replacements), std::move(m_tail)};
    }

private:
    using Changes = TiffEditor::Changes;

    const Changes* changesOf(std::size_t index) const {
        const auto found = m_editor.m_changes.find(index);
        return found != m_editor.m_changes.end() ? &found->second : nullptr;
    }
    bool isRemoved(std::size_t index) const { return m_editor.m_removed.count(index) > 0; }
    bool isChanged(std::size_t index, std::uint16_t tag) const {
        const Changes* changes = changesOf(index);
        return changes != nullptr && changes->count(tag) > 0;
    }

    void findRanges() {
        m_kept.add(0, 8);
        for (std::size_t i = 0; i < m_structure.directories.size(); ++i) {
            const TiffDirectory& directory = m_structure.directories[i];
            (isRemoved(i) ? m_freed : m_tables).add(directory.offset, directory.tableSize());
            for (const TiffEntry& entry : directory.entries)
                if (isThere(entry))
                    (isRemoved(i) || isChanged(i, entry.tag) ? m_freed : m_kept)
                        .add(entry.valueOffset, entry.valueSize);
            addImageData(i);
        }
    }

    void addImageData(std::size_t index) {
        const TiffDirectory& directory = m_structure.directories[index];
        for (const auto& [offsetTag, lengthTag] : kImageData) {
            const TiffEntry* offsets = directory.find(offsetTag);
            const TiffEntry* lengths = directory.find(lengthTag);
            if (offsets == nullptr || lengths == nullptr)
                continue;
            const auto at = m_structure.numbers(m_editor.m_source, *offsets);
            const auto size = m_structure.numbers(m_editor.m_source, *lengths);
            const bool goes = isRemoved(index) || isChanged(index, offsetTag);
            for (std::size_t i = 0; i < std::min(at.size(), size.size()); ++i)
                if (at[i] <= m_editor.m_source.size && size[i] <= m_editor.m_source.size - at[i])
                    (goes ? m_freed : m_kept).add(at[i], size[i]);
        }
    }

    bool losesChild(std::size_t index) const {
        for (const std::size_t removed : m_editor.m_removed)
            if (m_structure.directories[removed].parent == index)
                return true;
        return false;
    }
    bool needsTable(std::size_t index) const {
        if (isRemoved(index))
            return false;
        const bool endsHere = index == 0 && m_editor.m_endsAfterFirst;
        const bool getsChild = index == 0 && (!m_addedAt.empty() || !m_moved.empty());
        return changesOf(index) != nullptr || losesChild(index) || endsHere || getsChild;
    }

    /// Returns whether the entry leads to a directory that is removed.
    bool leadsToRemoved(std::size_t index, const TiffEntry& entry) const {
        return std::any_of(m_editor.m_removed.begin(), m_editor.m_removed.end(),
                           [&](std::size_t removed) {
                               const TiffDirectory& child = m_structure.directories[removed];
                               return child.parent == index && child.pointerTag == entry.tag &&
                                      child.pointerAt == entry.valueOffset;
                           });
    }

    std::vector<NewEntry> entriesOf(std::size_t index) {
        std::vector<NewEntry> entries;
        const TiffDirectory& directory = m_structure.directories[index];
        const Changes* changes = changesOf(index);
        std::set<std::uint16_t> done;
        for (const TiffEntry& entry : directory.entries) {
            if (leadsToRemoved(index, entry))
                continue;
            if (!isChanged(index, entry.tag)) {
                entries.push_back({entry.tag, entry.type, entry.count, entry.field});
                continue;
            }
            const std::optional<TiffValue>& value = changes->at(entry.tag);
            if (value && done.insert(entry.tag).second)
                entries.push_back(placed(entry.tag, *value, &entry));
        }
        if (changes != nullptr)
            for (const auto& [tag, value] : *changes)
                if (value && done.insert(tag).second)
                    insert(entries, placed(tag, *value, nullptr));
        if (index == 0)
            addPointers(entries);
        return entries;
    }

    /// What is there keeps its order, right or wrong: readers got along with it.
    static void insert(std::vector<NewEntry>& entries, const NewEntry& entry) {
        const auto place = std::find_if(entries.begin(), entries.end(), [&](const NewEntry& other) {
            return other.tag > entry.tag;
        });
        entries.insert(place, entry);
    }

    void addPointers(std::vector<NewEntry>& entries) {
        const auto point = [&](Kind kind, std::uint64_t offset) {
            const std::uint16_t tag = kind == Kind::Exif ? kExifPointer : kGpsPointer;
            const QByteArray field = m_structure.bytes32(static_cast<std::uint32_t>(offset));
            const auto old =
                std::find_if(entries.begin(), entries.end(),
                             [tag](const NewEntry& entry) { return entry.tag == tag; });
            if (old != entries.end())
                *old = {tag, kLongType, 1, field};
            else
                insert(entries, {tag, kLongType, 1, field});
        };
        for (const auto& [kind, offset] : m_addedAt)
            point(kind, offset);
        for (const auto& [index, offset] : m_moved)
            point(m_structure.directories[index].kind, offset);
    }

    /// `old`: the entry that it replaces.
    NewEntry placed(std::uint16_t tag, const TiffValue& value, const TiffEntry* old) {
        NewEntry entry{tag, value.type, value.count, value.bytes};
        if (value.bytes.size() <= 4) {
            entry.field.resize(4, '\0');
            return entry;
        }
        const auto size = static_cast<std::uint64_t>(value.bytes.size());
        const bool fits = old != nullptr && isThere(*old) && size <= old->valueSize &&
                          !m_kept.intersects(old->valueOffset, old->valueSize) &&
                          !m_tables.intersects(old->valueOffset, old->valueSize);
        entry.field = m_structure.bytes32(static_cast<std::uint32_t>(
            fits ? replace(old->valueOffset, value.bytes) : append(value.bytes)));
        return entry;
    }

    std::uint64_t replace(std::uint64_t offset, const QByteArray& bytes) {
        m_replacements[offset] = bytes;
        m_kept.add(offset, static_cast<std::uint64_t>(bytes.size()));
        return offset;
    }
    std::uint64_t append(const QByteArray& bytes) {
        const std::uint64_t offset = m_base + static_cast<std::uint64_t>(m_tail.size());
        m_tail += bytes;
        if (m_tail.size() % 2 != 0)
            m_tail += '\0';
        return offset;
    }

    QByteArray rendered(const std::vector<NewEntry>& entries, std::uint32_t next) const {
        QByteArray table = m_structure.bytes16(static_cast<std::uint16_t>(entries.size()));
        for (const NewEntry& entry : entries)
            table += m_structure.bytes16(entry.tag) + m_structure.bytes16(entry.type) +
                     m_structure.bytes32(entry.count) + entry.field;
        return table + m_structure.bytes32(next);
    }

    std::uint64_t addTable(const Changes& changes) {
        std::vector<NewEntry> entries;
        for (const auto& [tag, value] : changes)
            if (value)
                entries.push_back(placed(tag, *value, nullptr));
        return append(rendered(entries, 0));
    }

    /// Returns the bytes that the table takes. Some writers leave out the offset of the next
    /// directory where there is never one; a value stands there.
    std::uint64_t roomOf(const TiffDirectory& directory) const {
        const std::uint64_t withNext = directory.tableSize(), without = withNext - 4;
        const bool hasNext =
            directory.kind == Kind::Image || !m_kept.intersects(directory.offset + without, 4);
        return hasNext ? withNext : without;
    }

    void writeTable(std::size_t index) {
        const TiffDirectory& directory = m_structure.directories[index];
        const std::uint64_t room = roomOf(directory);
        const bool hasNext = room == directory.tableSize();
        const bool endsHere = (index == 0 && m_editor.m_endsAfterFirst) || !hasNext;
        QByteArray table = rendered(entriesOf(index), endsHere ? 0 : directory.next);
        if (!hasNext && static_cast<std::uint64_t>(table.size()) - 4 <= room)
            table.chop(4);
        if (static_cast<std::uint64_t>(table.size()) <= room) {
            table.resize(static_cast<qsizetype>(room), '\0');
            m_replacements[directory.offset] = table;
            return;
        }
        const std::uint64_t offset = append(table);
        m_isMoved.insert(index);
        if (index == 0)
            m_replacements[4] = m_structure.bytes32(static_cast<std::uint32_t>(offset));
        else
            m_moved[index] = offset;
    }

    /// Returns whether the tag may hold offsets: those of images, and what neither TIFF 6.0 nor DNG
    /// 1.6 explains.
    static bool mayLead(const TiffEntry& entry) {
        constexpr std::uint16_t kExtraProfiles = 0xC6F5;
        const bool isOfDng = (entry.tag >= 0xC612 && entry.tag < 0xC800) ||
                             (entry.tag >= 0xCD00 && entry.tag < 0xCE00);
        const bool isOfImage =
            std::any_of(kImageData.begin(), kImageData.end(),
                        [&](const auto& pair) { return entry.tag == pair.first; });
        return isOfImage || entry.tag == kExtraProfiles || (entry.tag >= 0x0200 && !isOfDng);
    }

    bool leadsIntoGap() const {
        constexpr std::uint16_t kLengths = 0x0202;
        for (std::size_t i = 0; i < m_structure.directories.size(); ++i)
            for (const TiffEntry& entry : m_structure.directories[i].entries) {
                const bool isLong = tiffTypeSize(entry.type) == 4;
                if (isRemoved(i) || isChanged(i, entry.tag) || !isLong || !mayLead(entry) ||
                    entry.tag == kLengths || leadsToRemoved(i, entry))
                    continue;
                for (const std::uint32_t at : m_structure.numbers(m_editor.m_source, entry))
                    if (at < m_editor.m_source.size && !m_kept.intersects(at, 1))
                        return true;
            }
        return false;
    }

    /// What nothing needs any more becomes zeros.
    void zeroFreed() {
        for (std::size_t i = 0; i < m_structure.directories.size(); ++i) {
            const TiffDirectory& directory = m_structure.directories[i];
            if (!isRemoved(i))
                (m_isMoved.count(i) > 0 ? m_freed : m_kept)
                    .add(directory.offset, roomOf(directory));
        }
        if (m_editor.m_clearsGaps && !leadsIntoGap())
            m_freed.add(8, m_editor.m_source.size - 8);
        for (const auto& [begin, end] : m_freed.without(m_kept))
            m_replacements[begin] = QByteArray(static_cast<qsizetype>(end - begin), '\0');
    }

    const TiffEditor& m_editor;
    const TiffStructure& m_structure;
    const std::uint64_t m_base; ///< where the tail begins
    ByteRanges m_kept, m_freed; ///< values and image data
    ByteRanges m_tables;        ///< of the directories that stay, where they were
    std::set<std::size_t> m_isMoved;
    std::map<Kind, std::uint64_t> m_addedAt;
    std::map<std::size_t, std::uint64_t> m_moved; ///< directories below the first image
    std::map<std::uint64_t, QByteArray> m_replacements;
    QByteArray m_tail;
};

QByteArray TiffPatch::applied(const QByteArray& block) const {
    QByteArray bytes = block;
    for (const auto& [offset, replacement] : replacements)
        bytes.replace(static_cast<qsizetype>(offset), replacement.size(), replacement);
    return bytes + tail;
}

Result<TiffEditor> TiffEditor::open(TiffSource source) {
    auto structure = readTiffStructure(source);
    if (!structure)
        return tl::unexpected(structure.error());
    return TiffEditor(std::move(source), std::move(*structure));
}

static std::optional<std::size_t> ofFirstImage(const TiffStructure& structure, Kind kind) {
    if (kind == Kind::Image)
        return 0;
    for (std::size_t i = 0; i < structure.directories.size(); ++i)
        if (structure.directories[i].kind == kind && structure.directories[i].parent == 0)
            return i;
    return std::nullopt;
}

bool TiffEditor::has(Kind kind) const {
    return ofFirstImage(m_structure, kind).has_value();
}

bool TiffEditor::has(Kind kind, std::uint16_t tag) const {
    const auto index = ofFirstImage(m_structure, kind);
    return index && m_structure.directories[*index].find(tag) != nullptr;
}

bool TiffEditor::hasMakerNote() const {
    return std::any_of(m_structure.directories.begin(), m_structure.directories.end(),
                       [](const TiffDirectory& directory) {
                           return directory.kind == Kind::Exif &&
                                  directory.find(kMakerNote) != nullptr;
                       });
}

void TiffEditor::set(Kind kind, std::uint16_t tag, const TiffValue& value) {
    const auto index = ofFirstImage(m_structure, kind);
    if (index && m_removed.count(*index) == 0)
        m_changes[*index][tag] = value;
    else
        m_added[kind][tag] = value;
}

void TiffEditor::remove(Kind kind, std::uint16_t tag) {
    for (std::size_t i = 0; i < m_structure.directories.size(); ++i)
        if (m_structure.directories[i].kind == kind &&
            m_structure.directories[i].find(tag) != nullptr)
            m_changes[i][tag] = std::nullopt;
    if (const auto added = m_added.find(kind); added != m_added.end())
        added->second.erase(tag);
}

void TiffEditor::removeDirectory(std::size_t index) {
    m_removed.insert(index);
    for (std::size_t i = 0; i < m_structure.directories.size(); ++i)
        if (m_structure.directories[i].parent == index && m_removed.count(i) == 0)
            removeDirectory(i);
}

void TiffEditor::removeAll(Kind kind) {
    for (std::size_t i = 0; i < m_structure.directories.size(); ++i)
        if (m_structure.directories[i].kind == kind)
            removeDirectory(i);
    m_added.erase(kind);
}

void TiffEditor::keepOnly(const std::set<std::uint16_t>& tags) {
    for (std::size_t i = 0; i < m_structure.directories.size(); ++i) {
        const TiffDirectory& directory = m_structure.directories[i];
        if (directory.kind != Kind::Image && directory.kind != Kind::Sub)
            continue;
        for (const TiffEntry& entry : directory.entries)
            if (tags.count(entry.tag) == 0)
                m_changes[i][entry.tag] = std::nullopt;
    }
}

void TiffEditor::removeFurtherImages() {
    bool isFirst = true;
    for (std::size_t i = 0; i < m_structure.directories.size(); ++i) {
        if (m_structure.directories[i].kind != Kind::Image)
            continue;
        if (!isFirst)
            removeDirectory(i);
        isFirst = false;
    }
    m_endsAfterFirst = true;
}

Result<TiffPatch> TiffEditor::finish() const {
    return TiffLayout(*this).run();
}

} // namespace clipheave::platform
