// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"
#include "platform/foundation/result.h"

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

// Directories of a TIFF structure: the EXIF block of a photo, or a whole TIFF file. Source: TIFF
// 6.0, section 2; Exif 2.32, 4.5 and 4.6.
namespace clipheave::platform {

/// Where a TIFF structure lies: a block in memory or a file.
struct TiffSource {
    std::uint64_t size = 0;
    /// Returns so many bytes at an offset, null when they are not there.
    std::function<QByteArray(std::uint64_t offset, std::uint64_t length)> read;

    /// The block is shared.
    [[nodiscard]] static TiffSource ofBlock(const QByteArray& block);
    /// The reader must outlive the source.
    [[nodiscard]] static TiffSource ofFile(FileReader& reader);
};

/// Tags that point to something.
inline constexpr std::uint16_t kExifPointer = 0x8769, kGpsPointer = 0x8825,
                               kInteropPointer = 0xA005, kSubDirectories = 0x014A,
                               kMakerNote = 0x927C;

struct TiffEntry {
    std::uint16_t tag = 0, type = 0;
    std::uint32_t count = 0;
    QByteArray field;              ///< the four bytes: the value, or where it lies
    std::uint64_t valueOffset = 0; ///< in the source; of the field when it holds the value
    std::uint64_t valueSize = 0;   ///< 0 for an unknown type
    bool isInside = true;          ///< false: the value lies outside the source

    [[nodiscard]] bool isInField() const { return valueSize <= 4; }
};

struct TiffDirectory {
    enum class Kind { Image, Exif, Gps, Interop, Sub };
    Kind kind = Kind::Image;
    std::uint64_t offset = 0;
    std::uint64_t pointerAt = 0;       ///< of the four bytes that lead here
    std::optional<std::size_t> parent; ///< the directory with that pointer as an entry
    std::uint16_t pointerTag = 0;      ///< of that entry
    std::vector<TiffEntry> entries;    ///< in file order
    std::uint32_t next = 0;            ///< offset of the next directory, 0 at the end

    /// Returns the bytes of the table: the count, the entries and the next offset.
    [[nodiscard]] std::uint64_t tableSize() const { return 2 + entries.size() * 12 + 4; }
    [[nodiscard]] const TiffEntry* find(std::uint16_t tag) const;
};

struct TiffStructure {
    bool isBigEndian = false;
    std::vector<TiffDirectory> directories; ///< the first image first

    [[nodiscard]] std::uint16_t u16(const QByteArray& bytes, qsizetype at = 0) const;
    [[nodiscard]] std::uint32_t u32(const QByteArray& bytes, qsizetype at = 0) const;
    [[nodiscard]] QByteArray bytes16(std::uint16_t value) const;
    [[nodiscard]] QByteArray bytes32(std::uint32_t value) const;
    /// Returns the numbers of an entry of bytes, shorts or longs; empty for another.
    [[nodiscard]] std::vector<std::uint32_t> numbers(const TiffSource& source,
                                                     const TiffEntry& entry) const;
    /// Returns the first directory of this kind.
    [[nodiscard]] std::optional<std::size_t> first(TiffDirectory::Kind kind) const;
};

/// Bytes of one value of a type, 0 for an unknown one.
[[nodiscard]] std::uint64_t tiffTypeSize(std::uint16_t type);

/// Reads all directories, each once whatever leads to it. InvalidData when it does not begin as
/// one, or the first directory is not there; LimitExceeded beyond 256 directories, or 4096
/// entries in the first.
[[nodiscard]] Result<TiffStructure> readTiffStructure(const TiffSource& source);

} // namespace clipheave::platform
