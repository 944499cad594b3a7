// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/messages.h"
#include "platform/image/photo_dictionaries.h"
#include "platform/image/write/iptc_block.h"
#include "platform/image/write/photo_plan.h"
#include "platform/image/write/xmp_packet.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace clipheave::platform {

using Kind = TiffDirectory::Kind;

namespace {

constexpr std::uint16_t kXmpTag = 700, kIptcTag = 33723, kResourcesTag = 34377,
                        kDngVersion = 0xC612, kPhotometric = 0x0106;
constexpr std::uint32_t kColourFilterArray = 32803;
constexpr std::uint16_t kByteType = 1, kLongValue = 4;
constexpr std::uint64_t kMostTiffBlock = 64u << 20;

/// Tags that say something of people, places, devices and works, besides those of "{TIFF}".
/// Sources: TIFF 6.0; TIFF/EP (ISO 12234-2); DNG 1.6; GeoTIFF 1.1.
constexpr std::uint16_t kPersonal[] = {
    0x011D, // PageName
    kXmpTag,  0x828F /* BatteryLevel */,
    kIptcTag, kResourcesTag,
    0x82A5,   0x82A6,
    0x82AB, // of Molecular Dynamics
    0x830E,   0x8480,
    0x8482,   0x85D8,
    0x87AF,   0x87B0,
    0x87B1, // of places
    0x9003,   0x9004,
    0x9211,   0x9213,
    0x9214,   0x9216, // TIFF/EP
    0x935C,           // layers, with their names
    0x9C9B,   0x9C9C,
    0x9C9D,   0x9C9E,
    0x9C9F,           // of Windows
    0xA480,   0xA481, // of GDAL
    0xC4A5,           // PrintIM
    0xC62F,   0xC630,
    0xC634,   0xC65D,
    0xC68B,   0xC68C, // serial number, lens, private data, names
    0xC615,   0xC716,
    0xC717,   0xC718,
    0xC719,   0xC71B,
    0xC763,   0xC789,
    0xC7A1, // the camera's name at its place of sale, who made the previews and when, of takes
};

/// Returns whether the pixels need the maker's data to be developed: raw photos but for DNG, which
/// describes itself.
bool needsMakerNote(const TiffSource& source, const TiffStructure& structure) {
    if (structure.directories.front().find(kDngVersion) != nullptr)
        return false;
    const TiffDirectory& first = structure.directories.front();
    const bool hasMakerNote = std::any_of(
        structure.directories.begin(), structure.directories.end(),
        [](const TiffDirectory& directory) {
            return directory.kind == Kind::Exif && directory.find(kMakerNote) != nullptr;
        });
    // Where the raw image lies out of reach, in a file that is cut.
    if (hasMakerNote && (first.find(kSubDirectories) != nullptr || first.next != 0))
        return true;
    const QByteArray head = source.read(0, 10);
    if (head.mid(8, 2) == "CR" || (head.size() > 3 && head[2] != 0x2A && head[3] != 0x2A))
        return true;
    return std::any_of(structure.directories.begin(), structure.directories.end(),
                       [&](const TiffDirectory& directory) {
                           const TiffEntry* entry = directory.find(kPhotometric);
                           const auto numbers = entry != nullptr ? structure.numbers(source, *entry)
                                                                 : std::vector<std::uint32_t>();
                           return !numbers.empty() && numbers.front() == kColourFilterArray;
                       });
}

QByteArray valueOfEntry(const TiffSource& source, const TiffEntry& entry) {
    if (!entry.isInside || entry.valueSize > kMostTiffBlock)
        return {};
    return source.read(entry.valueOffset, entry.valueSize);
}

class TiffPlan {
public:
    TiffPlan(FileReader& reader, const PhotoChange& change)
        : m_reader(reader), m_source(TiffSource::ofFile(reader)), m_change(change) {}

    Result<PhotoPlan> run() {
        auto editor = TiffEditor::open(m_source);
        if (!editor) {
            Error error = editor.error();
            error.path = m_reader.path();
            return tl::unexpected(std::move(error));
        }
        const bool losesMakerNote = m_change.dropsExif || m_change.dropsEverything;
        if (losesMakerNote && needsMakerNote(m_source, editor->structure()))
            return failure(ErrorCode::NotSupported, kWritePhotoTags, m_reader.path(),
                           kRawNeedsExif);
        PhotoChange tags = m_change;
        tags.dropsEverything = false; // its list of what stays is that of a block without pixels
        if (m_change.dropsEverything) {
            tags.dropsTiff = tags.dropsExif = tags.dropsGps = true;
            editor->clearGaps();
            for (const std::uint16_t tag : kPersonal)
                for (const Kind kind : {Kind::Image, Kind::Sub})
                    editor->remove(kind, tag);
            for (const std::uint16_t tag : tagsOfTiffDictionary())
                editor->remove(Kind::Sub, tag);
        } else if (auto done = changeBlocks(*editor); !done) {
            return tl::unexpected(done.error());
        }
        applyChange(tags, *editor);
        const auto patch = editor->finish();
        if (!patch)
            return tl::unexpected(patch.error());
        return placed(*patch);
    }

private:
    /// XMP, IPTC and image resources stand as values in the directories.
    Result<void> changeBlocks(TiffEditor& editor) {
        const TiffDirectory& first = editor.structure().directories.front();
        const TiffEntry* iptc = first.find(kIptcTag);
        const auto beside = changeBlock(editor, iptc, &changedIptc);
        if (!beside)
            return tl::unexpected(beside.error());
        const auto changeResources = [&](const QByteArray& block, const PhotoChange& change) {
            return iptc == nullptr
                       ? changedImageResources(block, change, ResourceBlocks::Iptc, m_notes)
                       : changedImageResourcesBeside(*beside, block, change, m_notes);
        };
        if (auto done = changeBlock(editor, first.find(kResourcesTag), changeResources); !done)
            return tl::unexpected(done.error());
        const TiffEntry* xmp = first.find(kXmpTag);
        const QByteArray old = xmp != nullptr ? valueOfEntry(m_source, *xmp) : QByteArray();
        const QByteArray packet = changedXmpOrNote(old, m_change, m_notes);
        if (packet != old)
            write(editor, kXmpTag, kByteType, packet);
        if (first.find(kIptcTag) == nullptr && first.find(kResourcesTag) == nullptr &&
            !m_change.iptc.empty()) {
            const auto block = changedIptc({}, m_change);
            if (!block)
                return tl::unexpected(block.error());
            write(editor, kIptcTag, kLongValue, *block);
        }
        return {};
    }

    using Changer =
        std::function<Result<QByteArray>(const QByteArray& block, const PhotoChange& change)>;
    /// Returns the value as it is written, padding included; nothing when it stays.
    Result<std::optional<QByteArray>> changeBlock(TiffEditor& editor, const TiffEntry* entry,
                                                  const Changer& changer) {
        const bool concerns =
            m_change.touchesIptc() ||
            (m_change.changesTags() && entry != nullptr && entry->tag == kResourcesTag);
        if (entry == nullptr || !concerns)
            return std::nullopt;
        const QByteArray old = valueOfEntry(m_source, *entry);
        const auto changed = changer(old, m_change);
        if (!changed && !m_change.touchesIptc())
            return std::nullopt;
        if (!changed && !m_change.dropsIptc)
            return tl::unexpected(changed.error());
        const QByteArray block = padded(changed ? *changed : QByteArray(), entry->type);
        if (block == old)
            return std::nullopt;
        write(editor, entry->tag, entry->type, block);
        return block;
    }

    static QByteArray padded(const QByteArray& block, std::uint16_t type) {
        const qsizetype missing = type == kLongValue ? (4 - block.size() % 4) % 4 : 0;
        return block + QByteArray(missing, '\0');
    }

    static void write(TiffEditor& editor, std::uint16_t tag, std::uint16_t type,
                      const QByteArray& value) {
        if (value.isEmpty())
            return editor.remove(Kind::Image, tag);
        const QByteArray block = padded(value, type);
        const std::uint64_t size = std::max<std::uint64_t>(tiffTypeSize(type), 1);
        editor.set(Kind::Image, tag,
                   {type,
                    static_cast<std::uint32_t>(static_cast<std::uint64_t>(block.size()) / size),
                    block});
    }

    Result<PhotoPlan> placed(const TiffPatch& patch) const {
        PhotoPlan plan;
        plan.notes = m_notes;
        std::uint64_t at = 0;
        for (const auto& [offset, bytes] : patch.replacements) {
            if (offset < at) // directories that overlap
                return failure(ErrorCode::InvalidData, kWritePhotoTags, m_reader.path(),
                               kExifUnreadable);
            plan.addRange(at, offset - at);
            plan.add(bytes);
            at = offset + static_cast<std::uint64_t>(bytes.size());
        }
        plan.addRange(at, m_reader.size() - at);
        plan.add(patch.tail);
        return plan;
    }

    FileReader& m_reader;
    TiffSource m_source;
    const PhotoChange& m_change;
    Notes m_notes;
};

} // namespace

Result<PhotoPlan> planTiff(FileReader& reader, const PhotoChange& change) {
    return TiffPlan(reader, change).run();
}

} // namespace clipheave::platform
