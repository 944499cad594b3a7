// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace clipheave::platform {

/// Caps on what a `meta` box may announce; honest files of many tiles stay far below.
inline constexpr std::uint32_t kMaxHeifItems = 4096;
inline constexpr std::uint32_t kMaxHeifExtents = 64;
inline constexpr std::uint32_t kMaxHeifProperties = 4096;

struct HeifExtent {
    std::uint64_t offset = 0, length = 0; ///< length 0: to the end
};
struct HeifLocation {
    int constructionMethod = 0; ///< 0 file, 1 the `idat` box, 2 another item
    std::vector<HeifExtent> extents;
};

// Each takes the payload of its box behind the version and flags where the box is a full one, and
// returns nothing for what is not there. Source: ISO/IEC 14496-12:2015, 8.11.

/// `pitm`: the main item.
[[nodiscard]] std::optional<std::uint32_t> primaryItem(ByteView pitm);
/// `iinf`: the first item of a type, such as "Exif".
[[nodiscard]] std::optional<std::uint32_t> itemOfType(ByteView iinf, std::uint32_t type);
/// `iloc`: where an item lies.
[[nodiscard]] std::optional<HeifLocation> itemLocation(ByteView iloc, std::uint32_t item);
/// `ipma`: the properties of an item as indices into `ipco` from 1, in the order of application.
[[nodiscard]] std::vector<std::uint32_t> itemProperties(ByteView ipma, std::uint32_t item);

/// Returns where the TIFF structure begins in an Exif item, which is a 4-byte offset and, at that
/// offset, the structure; some writers count wrongly or leave the "Exif" mark of JPEG before it.
/// Source: ISO/IEC 23008-12:2017, A.2.1.
[[nodiscard]] std::optional<std::uint64_t> tiffOffsetOfExifItem(ByteView item);

/// Combines a sequence of transforms into one Exif orientation.
class HeifOrientation {
public:
    /// `quartersAnticlockwise`: steps of 90 degrees, as `irot` counts them.
    void rotate(int quartersAnticlockwise);
    void mirror(bool leftRight);
    [[nodiscard]] int exifValue() const;

private:
    int m_quarters = 0;      ///< of a clockwise rotation, applied after the mirroring
    bool m_mirrored = false; ///< left and right exchanged
};

} // namespace clipheave::platform
