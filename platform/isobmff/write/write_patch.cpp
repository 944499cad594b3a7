// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/write_patch.h"

#include "platform/isobmff/box.h"
#include "platform/isobmff/messages.h"

#include <QtEndian>

#include <algorithm>

// Layouts: ISO/IEC 14496-12 sections 8.11.3 (iloc), 8.8.7 (tfhd), 8.8.10 (tfra), 8.16.3 (sidx).
namespace clipheave::platform {
namespace {

constexpr std::uint64_t kMaxItemExtents = 1u << 20;

tl::unexpected<Error> patchFailure(ErrorCode code, MessageCode detail) {
    return failure(code, kMoveFileOffsets, {}, detail);
}

/// An unsigned number of 0, 4 or 8 bytes in a box that is being patched.
struct PatchField {
    std::uint64_t at = 0;
    int width = 0;

    [[nodiscard]] std::optional<std::uint64_t> read(const QByteArray& box) const {
        const ByteView view(box);
        if (width == 0)
            return 0;
        return width == 8 ? view.be64(at) : std::optional<std::uint64_t>(view.be32(at));
    }
    [[nodiscard]] bool write(QByteArray& box, std::uint64_t value) const {
        if (width == 0 || (width == 4 && value > UINT32_MAX))
            return false;
        if (width == 8)
            qToBigEndian(static_cast<quint64>(value), box.data() + at);
        else
            qToBigEndian(static_cast<quint32>(value), box.data() + at);
        return true;
    }
};

Result<bool> patchAbsolute(QByteArray& box, const PatchField& field, const OffsetMap& map) {
    const auto old = field.read(box);
    if (!old)
        return patchFailure(ErrorCode::InvalidData, kOffsetBeyondBox);
    const auto moved = map.map(*old);
    if (!moved)
        return patchFailure(ErrorCode::InvalidData, kOffsetOutsidePayload);
    if (*moved == *old)
        return false;
    if (!field.write(box, *moved))
        return patchFailure(ErrorCode::NotSupported, kNoSpaceForOffset);
    return true;
}

/// One item of an `iloc`: a base and extents, of which either may carry the file offset.
Result<bool> patchItemLocation(QByteArray& box, const PatchField& base,
                               const std::vector<PatchField>& extents, const OffsetMap& map) {
    const std::uint64_t start = base.read(box).value_or(0);
    bool changed = false;
    std::vector<std::uint64_t> shifts; // modulo 2^64
    for (const PatchField& extent : extents) {
        const std::uint64_t old = start + extent.read(box).value_or(0);
        const auto moved = map.map(old);
        if (!moved)
            return patchFailure(ErrorCode::InvalidData, kItemOutsidePayload);
        shifts.push_back(*moved - old);
        changed |= shifts.back() != 0;
    }
    if (!changed)
        return false;
    const bool uniform = std::all_of(shifts.begin(), shifts.end(),
                                     [&](std::uint64_t shift) { return shift == shifts[0]; });
    if (uniform && base.width != 0 && base.write(box, start + shifts[0]))
        return true;
    for (std::size_t i = 0; i < extents.size(); ++i) {
        const std::uint64_t value = extents[i].read(box).value_or(0) + shifts[i];
        if (shifts[i] != 0 && !extents[i].write(box, value))
            return patchFailure(ErrorCode::NotSupported, kNoSpaceForItemOffset);
    }
    return true;
}

/// Cursor over the packed numbers of an `iloc`.
struct ItemCursor {
    const QByteArray& box;
    std::uint64_t at = 0, end = 0;
    bool good = true;

    std::uint64_t take(int width) {
        const ByteView view(box);
        const auto bytes = static_cast<std::uint64_t>(width);
        if (!good || at > end || bytes > end - at) {
            good = false;
            return 0;
        }
        std::uint64_t value = 0;
        for (std::uint64_t i = 0; i < bytes; ++i)
            value = value << 8 | view.u8(at + i).value_or(0);
        at += bytes;
        return value;
    }
    PatchField field(int width) {
        const PatchField result{at, width};
        take(width);
        return result;
    }
};

struct ItemWidths {
    int version = 0, offset = 0, length = 0, base = 0, index = 0;
};

Result<bool> patchOneItem(QByteArray& box, ItemCursor& cursor, const ItemWidths& widths,
                          const OffsetMap& map, std::uint64_t& extentBudget) {
    cursor.take(widths.version < 2 ? 2 : 4);
    const std::uint64_t method = widths.version > 0 ? cursor.take(2) & 0xF : 0;
    const std::uint64_t reference = cursor.take(2);
    const PatchField base = cursor.field(widths.base);
    const std::uint64_t count = cursor.take(2);
    if (count > extentBudget)
        return patchFailure(ErrorCode::LimitExceeded, kTooManyItemExtents);
    extentBudget -= count;
    std::vector<PatchField> extents;
    for (std::uint64_t i = 0; i < count && cursor.good; ++i) {
        cursor.take(widths.index);
        extents.push_back(cursor.field(widths.offset));
        cursor.take(widths.length);
    }
    if (!cursor.good)
        return patchFailure(ErrorCode::InvalidData, kItemLocationsCut);
    if (method != 0 || reference != 0)
        return false; // inside the box itself, or in another file
    return patchItemLocation(box, base, extents, map);
}

Result<bool> patchItemLocations(QByteArray& box, const Box& iloc, const OffsetMap& map) {
    ItemCursor cursor{box, iloc.payloadOffset(), iloc.end()};
    ItemWidths widths;
    widths.version = static_cast<int>(cursor.take(4) >> 24);
    const std::uint64_t sizes = cursor.take(2);
    const auto nibble = [&](int shift) { return static_cast<int>(sizes >> shift & 0xF); };
    widths.offset = nibble(12);
    widths.length = nibble(8);
    widths.base = nibble(4);
    widths.index = widths.version > 0 ? nibble(0) : 0;
    for (const int width : {widths.offset, widths.length, widths.base, widths.index})
        if (width != 0 && width != 4 && width != 8)
            return patchFailure(ErrorCode::InvalidData, kItemLocationWidthUnknown);
    const std::uint64_t items = cursor.take(widths.version < 2 ? 2 : 4);
    std::uint64_t extentBudget = kMaxItemExtents;
    bool changed = false;
    for (std::uint64_t i = 0; i < items; ++i) {
        auto item = patchOneItem(box, cursor, widths, map, extentBudget);
        if (!item)
            return item;
        changed |= *item;
    }
    return changed;
}

Result<bool> patchFragmentTable(QByteArray& box, const Box& tfra, const OffsetMap& map) {
    ItemCursor cursor{box, tfra.payloadOffset(), tfra.end()};
    const bool wide = cursor.take(4) >> 24 != 0;
    cursor.take(4);
    const std::uint64_t lengths = cursor.take(4);
    const int numbers =
        static_cast<int>((lengths >> 4 & 3) + (lengths >> 2 & 3) + (lengths & 3)) + 3;
    const std::uint64_t count = cursor.take(4);
    bool changed = false;
    for (std::uint64_t i = 0; i < count; ++i) {
        cursor.take(wide ? 8 : 4);
        const PatchField offset = cursor.field(wide ? 8 : 4);
        cursor.take(numbers);
        if (!cursor.good)
            return patchFailure(ErrorCode::InvalidData, kFragmentTableCut);
        auto entry = patchAbsolute(box, offset, map);
        if (!entry)
            return entry;
        changed |= *entry;
    }
    return changed;
}

Result<bool> patchTrackFragment(QByteArray& box, const Box& traf, const OffsetMap& map) {
    const QByteArray before = box; // shared until something is written
    BoxWalker walker(ByteView(before).sub(traf.payloadOffset(), traf.payloadSize()),
                     traf.payloadOffset());
    bool changed = false;
    while (const auto child = walker.next()) {
        constexpr std::uint32_t kBaseDataOffsetPresent = 1;
        if (child->type != fourCc("tfhd") ||
            (walker.payload(*child).be32(0).value_or(0) & kBaseDataOffsetPresent) == 0)
            continue;
        if (child->payloadSize() < 16)
            return patchFailure(ErrorCode::InvalidData, kFragmentHeaderTooShort);
        auto patched = patchAbsolute(box, {child->payloadOffset() + 8, 8}, map);
        if (!patched)
            return patched;
        changed |= *patched;
    }
    return changed;
}

/// `gps `: 4 bytes, a count, then offset and size of each "freeGPS" block of the file.
Result<bool> patchCameraIndex(QByteArray& box, const Box& gps, const OffsetMap& map) {
    ItemCursor cursor{box, gps.payloadOffset(), gps.end()};
    cursor.take(4);
    const std::uint64_t count = cursor.take(4);
    if (!cursor.good || count > (gps.end() - cursor.at) / 8)
        return false; // not that layout: leave it alone
    bool changed = false;
    for (std::uint64_t i = 0; i < count; ++i) {
        const PatchField offset = cursor.field(4);
        cursor.take(4);
        const auto moved = map.map(offset.read(box).value_or(0));
        if (moved && *moved != offset.read(box).value_or(0))
            changed |= offset.write(box, *moved);
    }
    return changed;
}

Result<bool> patchChildren(QByteArray& box, const Box& parent, std::uint64_t skip,
                           std::uint32_t childType, const OffsetMap& map,
                           Result<bool> (*patch)(QByteArray&, const Box&, const OffsetMap&)) {
    const QByteArray before = box;
    const ByteView children =
        ByteView(before).sub(parent.payloadOffset() + skip, parent.payloadSize() - skip);
    BoxWalker walker(children, parent.payloadOffset() + skip);
    bool changed = false;
    while (const auto child = walker.next()) {
        if (child->type != childType)
            continue;
        auto patched = patch(box, *child, map);
        if (!patched)
            return patched;
        changed |= *patched;
    }
    return changed;
}

} // namespace

bool holdsOffsets(std::uint32_t type) {
    return type == fourCc("meta") || type == fourCc("mfra") || type == fourCc("moof") ||
           type == fourCc("sidx") || type == fourCc("gps ");
}

Result<bool> patchBox(QByteArray& box, const OffsetMap& map) {
    const ByteView view(box);
    const auto parent = parseBoxHeader(view.sub(0, 16), 0, view.size());
    if (!parent)
        return false;
    const ByteView payload = view.sub(parent->payloadOffset(), parent->payloadSize());
    switch (parent->type) {
    case fourCc("meta"): {
        const std::uint64_t skip = metaChildrenOffset(payload);
        if (payload.size() < skip)
            return false;
        return patchChildren(box, *parent, skip, fourCc("iloc"), map, patchItemLocations);
    }
    case fourCc("mfra"):
        return patchChildren(box, *parent, 0, fourCc("tfra"), map, patchFragmentTable);
    case fourCc("moof"):
        return patchChildren(box, *parent, 0, fourCc("traf"), map, patchTrackFragment);
    case fourCc("gps "):
        return patchCameraIndex(box, *parent, map);
    default:
        return false;
    }
}

Result<bool> patchSegmentIndex(QByteArray& box, std::uint64_t sourceEnd, const OffsetMap& map) {
    const ByteView view(box);
    const auto parent = parseBoxHeader(view.sub(0, 16), 0, view.size());
    const auto head = parent ? view.be32(parent->payloadOffset()) : std::nullopt;
    if (!head)
        return false;
    const bool wide = *head >> 24 != 0;
    const PatchField field{parent->payloadOffset() + (wide ? 20 : 16), wide ? 8 : 4};
    const auto distance = field.read(box);
    if (!distance)
        return false;
    const auto newEnd = map.map(sourceEnd), target = map.map(sourceEnd + *distance);
    // Deliberate: an index that points nowhere stays as it is; players do without it.
    if (!newEnd || !target || *target < *newEnd || *target - *newEnd == *distance)
        return false;
    if (!field.write(box, *target - *newEnd))
        return patchFailure(ErrorCode::NotSupported, kNoSpaceInSegmentIndex);
    return true;
}

} // namespace clipheave::platform
