// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/heif_edits.h"

#include "platform/image/heif_items.h"
#include "platform/image/messages.h"
#include "platform/image/write/photo_plan.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kMostItemBytes = 64u << 20;
constexpr std::size_t kMostMetadataItems = 256;
const QByteArray kXmpContentType = QByteArrayLiteral("application/rdf+xml");

class HeifItemEdits {
public:
    HeifItemEdits(FileReader& reader, const HeifStructure& structure, const PhotoChange& change)
        : m_reader(reader), m_structure(structure), m_change(change) {}

    Result<HeifEdits> run() {
        std::vector<const ItemEntry*> exif, xmp;
        for (const ItemEntry& item : m_structure.entries.items) {
            if (m_structure.locations.find(item.id) == nullptr)
                continue; // an item without bytes
            if (item.type == fourCc("Exif"))
                exif.push_back(&item);
            else if (item.isXmp())
                xmp.push_back(&item);
        }
        if (m_change.dropsEverything) {
            removePersonal();
            return std::move(m_edits);
        }
        if (exif.size() + xmp.size() > kMostMetadataItems)
            return tl::unexpected(error(ErrorCode::LimitExceeded, kTooManyDirectories));
        if (auto done = changeExif(exif); !done)
            return tl::unexpected(done.error());
        if (auto done = changeXmp(xmp); !done)
            return tl::unexpected(done.error());
        return std::move(m_edits);
    }

private:
    Error error(ErrorCode code, const MessageCode& reason) const {
        return {code, kWritePhotoTags, m_reader.path(), reason};
    }

    /// Items that are no images, and the small copies of images.
    void removePersonal() {
        for (const ItemEntry& item : m_structure.entries.items) {
            const bool isText =
                item.type == fourCc("mime") && !item.contentType.startsWith("image/");
            if (item.type == fourCc("Exif") || item.type == fourCc("uri ") ||
                item.type == fourCc("rgan") || isText)
                m_edits.removed.insert(item.id);
        }
        for (const ItemReference& reference : m_structure.references.references)
            if (reference.type == fourCc("thmb") && isOnlyCopy(reference.from))
                m_edits.removed.insert(reference.from);
        for (const ItemReference& reference : m_structure.references.references)
            if (reference.type == fourCc("dimg") && m_edits.removed.contains(reference.from))
                removeTiles(reference);
        m_edits.removed.erase(m_structure.primary);
    }

    /// Returns whether an image serves as nothing but a thumbnail.
    [[nodiscard]] bool isOnlyCopy(std::uint32_t item) const {
        const auto& all = m_structure.references.references;
        return std::none_of(all.begin(), all.end(), [&](const ItemReference& reference) {
            const bool leadsHere =
                std::find(reference.to.begin(), reference.to.end(), item) != reference.to.end();
            return (leadsHere && reference.type != fourCc("cdsc")) ||
                   (reference.from == item && reference.type == fourCc("auxl"));
        });
    }

    void removeTiles(const ItemReference& image) {
        const auto& all = m_structure.references.references;
        for (const std::uint32_t tile : image.to)
            if (std::none_of(all.begin(), all.end(), [&](const ItemReference& reference) {
                    return &reference != &image &&
                           std::find(reference.to.begin(), reference.to.end(), tile) !=
                               reference.to.end();
                }))
                m_edits.removed.insert(tile);
    }

    /// Returns the one that describes the main image, else the first.
    const ItemEntry* mainOf(const std::vector<const ItemEntry*>& items) const {
        for (const ItemEntry* item : items)
            if (m_structure.refers(item->id, fourCc("cdsc"), m_structure.primary))
                return item;
        return items.empty() ? nullptr : items.front();
    }

    Result<QByteArray> load(const ItemEntry& item) {
        const ItemLocation* location = m_structure.locations.find(item.id);
        if (item.isProtected || location->dataReference != 0 ||
            location->method() > ItemLocation::InIdat)
            return tl::unexpected(error(ErrorCode::NotSupported, kPhotoKindNotWritten));
        auto bytes = m_structure.load(m_reader, *location, m_bytesLeft);
        if (bytes)
            m_bytesLeft -= static_cast<std::uint64_t>(bytes->size());
        return bytes;
    }

    Result<void> changeExif(const std::vector<const ItemEntry*>& items) {
        if (!m_change.changesTags())
            return {};
        const ItemEntry* main = mainOf(items);
        for (const ItemEntry* item : items) {
            auto done = item == main ? changeExif(*item, m_change) : changeFurtherExif(*item);
            if (!done && m_change.dropsExif && m_change.dropsGps) {
                m_edits.removed.insert(item->id); // what cannot be read goes whole
                continue;
            }
            if (!done)
                return done;
        }
        return main != nullptr ? Result<void>() : addExif();
    }

    Result<void> changeExif(const ItemEntry& item, const PhotoChange& change) {
        const auto bytes = load(item);
        if (!bytes)
            return tl::unexpected(bytes.error());
        const auto at = tiffOffsetOfExifItem(*bytes);
        if (!at)
            return tl::unexpected(error(ErrorCode::InvalidData, kExifUnreadable));
        const auto head = static_cast<qsizetype>(*at);
        const auto changed = changedTiffBlock(bytes->mid(head), change);
        if (!changed)
            return tl::unexpected(changed.error());
        if (changed->isEmpty())
            m_edits.removed.insert(item.id);
        else if (const QByteArray payload = bytes->left(head) + *changed; payload != *bytes)
            m_edits.changed[item.id] = payload;
        return {};
    }

    Result<void> changeFurtherExif(const ItemEntry& item) {
        const auto bytes = load(item);
        const auto at = bytes ? tiffOffsetOfExifItem(*bytes) : std::nullopt;
        const auto editor = TiffEditor::open(
            TiffSource::ofBlock(at ? bytes->mid(static_cast<qsizetype>(*at)) : QByteArray()));
        if (editor)
            return changeExif(item, changeOfFurtherImage(m_change, *editor));
        if (m_change.removesBlocks() || m_change.dropsGps)
            return tl::unexpected(error(ErrorCode::InvalidData, kExifUnreadable));
        m_edits.notes.append(kFurtherImageKept);
        return {};
    }

    Result<void> addExif() {
        const auto block = changedTiffBlock({}, m_change);
        if (!block)
            return tl::unexpected(block.error());
        constexpr qsizetype kTiffOffset = 4; // 0: the structure follows at once
        if (!block->isEmpty())
            m_edits.added.push_back({fourCc("Exif"), {}, QByteArray(kTiffOffset, '\0') + *block});
        return {};
    }

    Result<void> changeXmp(const std::vector<const ItemEntry*>& items) {
        const ItemEntry* main = mainOf(items);
        for (const ItemEntry* item : items)
            if (auto done = changeXmp(*item, item == main); !done)
                return done;
        if (main != nullptr)
            return {};
        const QByteArray packet = changedXmpWithIptc({}, m_change, m_edits.notes);
        if (!packet.isEmpty())
            m_edits.added.push_back({fourCc("mime"), kXmpContentType, packet});
        return {};
    }

    Result<void> changeXmp(const ItemEntry& item, bool isMain) {
        const auto bytes = load(item);
        if (!bytes)
            return tl::unexpected(bytes.error());
        const QByteArray changed = isMain ? changedXmpWithIptc(*bytes, m_change, m_edits.notes)
                                          : changedXmpOrNote(*bytes, m_change, m_edits.notes);
        if (changed.isEmpty())
            m_edits.removed.insert(item.id);
        else if (changed != *bytes)
            m_edits.changed[item.id] = changed;
        return {};
    }

    FileReader& m_reader;
    const HeifStructure& m_structure;
    const PhotoChange& m_change;
    HeifEdits m_edits;
    std::uint64_t m_bytesLeft = kMostItemBytes;
};

} // namespace

Result<HeifEdits> heifEdits(FileReader& reader, const HeifStructure& structure,
                            const PhotoChange& change) {
    return HeifItemEdits(reader, structure, change).run();
}

} // namespace clipheave::platform
