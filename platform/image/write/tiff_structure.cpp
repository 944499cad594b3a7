// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/tiff_structure.h"

#include "platform/image/messages.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <set>

namespace clipheave::platform {

namespace {

constexpr std::size_t kMostDirectories = 256;
constexpr std::uint16_t kMostEntries = 4096;
constexpr std::uint64_t kMostNumbers = 1u << 20;

/// Panasonic and Olympus begin their raw files with numbers of their own.
bool isTiffMagic(std::uint16_t magic) {
    return magic == 42 || magic == 0x4F52 || magic == 0x5352;
}

/// Goes through the directories; where one leads stands on a list, so nothing recurses.
class Walk {
public:
    Walk(const TiffSource& source, TiffStructure& structure)
        : m_source(source), m_structure(structure) {}

    Result<void> run(std::uint32_t first) {
        TiffDirectory image;
        image.offset = first;
        image.pointerAt = 4;
        m_open.push_back(image);
        while (!m_open.empty()) {
            TiffDirectory directory = std::move(m_open.front());
            m_open.erase(m_open.begin());
            if (directory.offset == 0 || !m_seen.insert(directory.offset).second)
                continue;
            if (m_structure.directories.size() >= kMostDirectories)
                return failure(ErrorCode::LimitExceeded, kReadPhotoTags, {}, kTooManyDirectories);
            if (auto read = readTable(directory); !read)
                return read;
        }
        return {};
    }

private:
    Result<void> readTable(TiffDirectory& directory) {
        const QByteArray count = m_source.read(directory.offset, 2);
        const std::uint16_t entries = count.isNull() ? 0 : m_structure.u16(count);
        const QByteArray table = m_source.read(directory.offset + 2, entries * 12ull + 4);
        if (entries > kMostEntries && m_structure.directories.empty())
            return failure(ErrorCode::LimitExceeded, kReadPhotoTags, {}, kTooManyDirectories);
        // A pointer to nowhere, or to what is no table, is left as it is.
        if (count.isNull() || table.isNull() || entries > kMostEntries)
            return {};
        for (int i = 0; i < entries; ++i)
            directory.entries.push_back(
                entryOf(table.mid(i * 12, 12), directory.offset + 2 + i * 12ull));
        directory.next = m_structure.u32(table, entries * 12);
        m_structure.directories.push_back(directory);
        follow(m_structure.directories.size() - 1);
        return {};
    }

    TiffEntry entryOf(const QByteArray& bytes, std::uint64_t at) const {
        TiffEntry entry;
        entry.tag = m_structure.u16(bytes, 0);
        entry.type = m_structure.u16(bytes, 2);
        entry.count = m_structure.u32(bytes, 4);
        entry.field = bytes.mid(8, 4);
        entry.valueSize = tiffTypeSize(entry.type) * entry.count;
        entry.valueOffset = entry.isInField() ? at + 8 : m_structure.u32(entry.field);
        entry.isInside = entry.valueOffset <= m_source.size &&
                         entry.valueSize <= m_source.size - entry.valueOffset;
        return entry;
    }

    void open(TiffDirectory::Kind kind, std::uint32_t offset, std::uint64_t pointerAt,
              std::optional<std::size_t> parent, std::uint16_t tag) {
        TiffDirectory directory;
        directory.kind = kind;
        directory.offset = offset;
        directory.pointerAt = pointerAt;
        directory.parent = parent;
        directory.pointerTag = tag;
        m_open.push_back(directory);
    }

    void follow(std::size_t index) {
        using Kind = TiffDirectory::Kind;
        const TiffDirectory directory = m_structure.directories[index];
        const bool holdsImage = directory.kind == Kind::Image || directory.kind == Kind::Sub;
        for (const TiffEntry& entry : directory.entries) {
            if (holdsImage && entry.tag == kExifPointer)
                followOne(Kind::Exif, entry, index);
            else if (holdsImage && entry.tag == kGpsPointer)
                followOne(Kind::Gps, entry, index);
            else if (directory.kind == Kind::Exif && entry.tag == kInteropPointer)
                followOne(Kind::Interop, entry, index);
            else if (holdsImage && entry.tag == kSubDirectories)
                followAll(entry, index);
        }
        if (directory.kind == Kind::Image && directory.next != 0)
            open(Kind::Image, directory.next, directory.offset + directory.tableSize() - 4,
                 std::nullopt, 0);
    }

    void followOne(TiffDirectory::Kind kind, const TiffEntry& entry, std::size_t parent) {
        if (entry.count == 1 && entry.valueSize == 4)
            open(kind, m_structure.u32(entry.field), entry.valueOffset, parent, entry.tag);
    }

    void followAll(const TiffEntry& entry, std::size_t parent) {
        std::uint64_t at = entry.valueOffset;
        for (const std::uint32_t offset : m_structure.numbers(m_source, entry)) {
            if (m_open.size() > kMostDirectories)
                return;
            open(TiffDirectory::Kind::Sub, offset, at, parent, entry.tag);
            at += 4;
        }
    }

    const TiffSource& m_source;
    TiffStructure& m_structure;
    std::vector<TiffDirectory> m_open;
    std::set<std::uint64_t> m_seen;
};

} // namespace

TiffSource TiffSource::ofFile(FileReader& reader) {
    return {reader.size(), [&reader](std::uint64_t offset, std::uint64_t length) {
                return reader.read(offset, length).value_or(QByteArray());
            }};
}

TiffSource TiffSource::ofBlock(const QByteArray& block) {
    const auto size = static_cast<std::uint64_t>(block.size());
    return {size, [block, size](std::uint64_t offset, std::uint64_t length) {
                return offset <= size && length <= size - offset
                           ? block.mid(static_cast<qsizetype>(offset),
                                       static_cast<qsizetype>(length))
                           : QByteArray();
            }};
}

const TiffEntry* TiffDirectory::find(std::uint16_t tag) const {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [tag](const TiffEntry& entry) { return entry.tag == tag; });
    return found != entries.end() ? &*found : nullptr;
}

std::uint16_t TiffStructure::u16(const QByteArray& bytes, qsizetype at) const {
    return isBigEndian ? qFromBigEndian<quint16>(bytes.constData() + at)
                       : qFromLittleEndian<quint16>(bytes.constData() + at);
}

std::uint32_t TiffStructure::u32(const QByteArray& bytes, qsizetype at) const {
    return isBigEndian ? qFromBigEndian<quint32>(bytes.constData() + at)
                       : qFromLittleEndian<quint32>(bytes.constData() + at);
}

QByteArray TiffStructure::bytes16(std::uint16_t value) const {
    QByteArray bytes(2, '\0');
    isBigEndian ? qToBigEndian(value, bytes.data()) : qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray TiffStructure::bytes32(std::uint32_t value) const {
    QByteArray bytes(4, '\0');
    isBigEndian ? qToBigEndian(value, bytes.data()) : qToLittleEndian(value, bytes.data());
    return bytes;
}

std::vector<std::uint32_t> TiffStructure::numbers(const TiffSource& source,
                                                  const TiffEntry& entry) const {
    const std::uint64_t size = tiffTypeSize(entry.type);
    const bool isNumber = entry.type == 1 || entry.type == 3 || entry.type == 4 || entry.type == 13;
    if (!isNumber || entry.count > kMostNumbers || !entry.isInside)
        return {};
    const QByteArray bytes = entry.isInField()
                                 ? entry.field.left(static_cast<qsizetype>(size * entry.count))
                                 : source.read(entry.valueOffset, entry.valueSize);
    std::vector<std::uint32_t> numbers;
    for (qsizetype at = 0; at + static_cast<qsizetype>(size) <= bytes.size();
         at += static_cast<qsizetype>(size)) {
        if (size == 1)
            numbers.push_back(static_cast<std::uint8_t>(bytes[at]));
        else
            numbers.push_back(size == 2 ? u16(bytes, at) : u32(bytes, at));
    }
    return numbers;
}

std::optional<std::size_t> TiffStructure::first(TiffDirectory::Kind kind) const {
    for (std::size_t i = 0; i < directories.size(); ++i)
        if (directories[i].kind == kind)
            return i;
    return std::nullopt;
}

std::uint64_t tiffTypeSize(std::uint16_t type) {
    static constexpr std::array<std::uint64_t, 14> kSizes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type < kSizes.size() ? kSizes[type] : 0;
}

Result<TiffStructure> readTiffStructure(const TiffSource& source) {
    const QByteArray head = source.read(0, 8);
    TiffStructure structure;
    structure.isBigEndian = head.startsWith("MM");
    if (head.isNull() || (!structure.isBigEndian && !head.startsWith("II")) ||
        !isTiffMagic(structure.u16(head, 2)))
        return failure(ErrorCode::InvalidData, kReadPhotoTags, {}, kExifUnreadable);
    if (auto walked = Walk(source, structure).run(structure.u32(head, 4)); !walked)
        return tl::unexpected(walked.error());
    if (structure.directories.empty())
        return failure(ErrorCode::InvalidData, kReadPhotoTags, {}, kExifUnreadable);
    return structure;
}

} // namespace clipheave::platform
