// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/tiff_editor.h"

#include <algorithm>
#include <optional>

namespace clipheave::platform {

using Kind = TiffDirectory::Kind;

namespace {

constexpr std::uint16_t kThumbnail = 0x0201, kThumbnailLength = 0x0202;
constexpr std::uint16_t kStripOffsets = 0x0111, kTileOffsets = 0x0144;
constexpr std::uint16_t kDirectoryType = 13;

/// Returns whether every offset in the structure is known here.
bool isWhollyKnown(const TiffStructure& structure) {
    std::size_t images = 0;
    for (const TiffDirectory& directory : structure.directories) {
        images += directory.kind == Kind::Image ? 1 : 0;
        if (directory.kind == Kind::Sub)
            return false;
        for (const TiffEntry& entry : directory.entries)
            if (entry.tag == kMakerNote || entry.tag == kStripOffsets ||
                entry.tag == kTileOffsets || entry.tag == kSubDirectories ||
                entry.type == kDirectoryType || !entry.isInside || entry.valueSize == 0)
                return false;
    }
    return images <= 2;
}

/// Writes the directories one after the other, each followed by its values.
class Compaction {
public:
    Compaction(const TiffSource& source, const TiffStructure& structure)
        : m_source(source), m_structure(structure) {}

    QByteArray run() {
        m_out = m_source.read(0, 4) + m_structure.bytes32(8);
        std::optional<std::uint64_t> nextAt;
        for (std::size_t i = 0; i < m_structure.directories.size(); ++i) {
            if (m_structure.directories[i].kind != Kind::Image)
                continue;
            if (nextAt)
                patch(*nextAt, static_cast<std::uint64_t>(m_out.size()));
            nextAt = write(i);
        }
        return m_out;
    }

private:
    void patch(std::uint64_t at, std::uint64_t value) {
        m_out.replace(static_cast<qsizetype>(at), 4,
                      m_structure.bytes32(static_cast<std::uint32_t>(value)));
    }
    void align() {
        if (m_out.size() % 2 != 0)
            m_out += '\0';
    }

    std::optional<std::size_t> childOf(std::size_t parent, std::uint16_t tag) const {
        for (std::size_t i = 0; i < m_structure.directories.size(); ++i)
            if (m_structure.directories[i].parent == parent &&
                m_structure.directories[i].pointerTag == tag)
                return i;
        return std::nullopt;
    }

    /// Returns where the offset of the next directory stands.
    std::uint64_t write(std::size_t index) {
        const TiffDirectory& directory = m_structure.directories[index];
        const auto start = static_cast<std::uint64_t>(m_out.size());
        m_out += m_structure.bytes16(static_cast<std::uint16_t>(directory.entries.size()));
        for (const TiffEntry& entry : directory.entries)
            m_out += m_structure.bytes16(entry.tag) + m_structure.bytes16(entry.type) +
                     m_structure.bytes32(entry.count) + entry.field;
        const auto nextAt = static_cast<std::uint64_t>(m_out.size());
        m_out += m_structure.bytes32(0);
        for (std::size_t i = 0; i < directory.entries.size(); ++i)
            writeValue(index, directory.entries[i], start + 2 + i * 12 + 8);
        return nextAt;
    }

    void writeValue(std::size_t index, const TiffEntry& entry, std::uint64_t fieldAt) {
        const TiffDirectory& directory = m_structure.directories[index];
        if (const auto child = childOf(index, entry.tag)) {
            patch(fieldAt, static_cast<std::uint64_t>(m_out.size()));
            write(*child);
        } else if (!entry.isInField()) {
            patch(fieldAt, static_cast<std::uint64_t>(m_out.size()));
            m_out += m_source.read(entry.valueOffset, entry.valueSize);
        } else if (entry.tag == kThumbnail && directory.kind == Kind::Image) {
            writeThumbnail(directory, entry, fieldAt);
        }
        align();
    }

    void writeThumbnail(const TiffDirectory& directory, const TiffEntry& entry,
                        std::uint64_t fieldAt) {
        const TiffEntry* length = directory.find(kThumbnailLength);
        const auto offsets = m_structure.numbers(m_source, entry);
        const auto lengths = length != nullptr ? m_structure.numbers(m_source, *length) : offsets;
        if (length == nullptr || offsets.size() != 1 || lengths.size() != 1)
            return;
        patch(fieldAt, static_cast<std::uint64_t>(m_out.size()));
        // What is cut keeps its announced length.
        const std::uint64_t there = offsets[0] < m_source.size ? m_source.size - offsets[0] : 0;
        m_out += m_source.read(offsets[0], std::min<std::uint64_t>(lengths[0], there));
    }

    const TiffSource& m_source;
    const TiffStructure& m_structure;
    QByteArray m_out;
};

} // namespace

QByteArray compactedTiffBlock(const QByteArray& block) {
    const TiffSource source = TiffSource::ofBlock(block);
    const auto structure = readTiffStructure(source);
    if (!structure || !isWhollyKnown(*structure))
        return block;
    const QByteArray compact = Compaction(source, *structure).run();
    return compact.size() < block.size() ? compact : block;
}

QByteArray emptyTiffBlock() {
    return QByteArray("MM\0\x2A\0\0\0\x08\0\0\0\0\0\0", 14);
}

} // namespace clipheave::platform
