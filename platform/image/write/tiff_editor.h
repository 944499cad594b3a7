// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/tiff_structure.h"

#include <map>
#include <set>

namespace clipheave::platform {

/// A value in the byte order of its structure.
struct TiffValue {
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    QByteArray bytes;
};

/// What becomes of a structure: all other bytes stay where they are, so whatever counts offsets
/// from its beginning, maker notes above all, stays true.
struct TiffPatch {
    std::map<std::uint64_t, QByteArray> replacements; ///< by offset, apart from each other
    QByteArray tail;                                  ///< behind the end

    [[nodiscard]] bool isEmpty() const { return replacements.empty() && tail.isEmpty(); }
    [[nodiscard]] QByteArray applied(const QByteArray& block) const;
};

/// Gathers changes of the directories and lays them out. Old values become zeros.
class TiffEditor {
public:
    using Kind = TiffDirectory::Kind;
    /// InvalidData, LimitExceeded as readTiffStructure().
    [[nodiscard]] static Result<TiffEditor> open(TiffSource source);

    [[nodiscard]] const TiffStructure& structure() const { return m_structure; }
    /// Returns whether the first image has such a directory.
    [[nodiscard]] bool has(Kind kind) const;
    /// Returns whether a directory of the first image has the tag.
    [[nodiscard]] bool has(Kind kind, std::uint16_t tag) const;
    [[nodiscard]] bool hasMakerNote() const;

    /// Sets a tag of the first image; its directory (Image, Exif, Gps) is made if it is missing.
    void set(Kind kind, std::uint16_t tag, const TiffValue& value);
    /// Removes a tag from every directory of the kind.
    void remove(Kind kind, std::uint16_t tag);
    /// Removes all directories of the kind, with those below them; not Image.
    void removeAll(Kind kind);
    /// Removes all tags of the images but these.
    void keepOnly(const std::set<std::uint16_t>& tags);
    /// Takes out what no directory leads to, older states of the file above all; not where an entry
    /// that is not known may lead there.
    void clearGaps() { m_clearsGaps = true; }
    /// Removes the images behind the first, with their data where it is known: the thumbnail.
    void removeFurtherImages();

    /// LimitExceeded when offsets no longer fit.
    [[nodiscard]] Result<TiffPatch> finish() const;

private:
    using Changes = std::map<std::uint16_t, std::optional<TiffValue>>;
    friend class TiffLayout;

    TiffEditor(TiffSource source, TiffStructure structure)
        : m_source(std::move(source)), m_structure(std::move(structure)) {}
    void removeDirectory(std::size_t index);

    TiffSource m_source;
    TiffStructure m_structure;
    std::map<std::size_t, Changes> m_changes; ///< by directory
    std::map<Kind, Changes> m_added;          ///< directories that the first image gets
    std::set<std::size_t> m_removed;
    bool m_endsAfterFirst = false, m_clearsGaps = false;
};

/// Returns the block without the gaps that removed values leave; the block itself where something
/// in it may count offsets that are not known here (maker notes, unknown directories).
[[nodiscard]] QByteArray compactedTiffBlock(const QByteArray& block);
/// Returns a block of one empty directory.
[[nodiscard]] QByteArray emptyTiffBlock();

} // namespace clipheave::platform
