// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/messages.h"
#include "platform/image/write/heif_meta.h"
#include "platform/image/write/heif_sequence.h"
#include "platform/image/write/motion_video.h"
#include "platform/image/write/photo_plan.h"
#include "platform/isobmff/write/write_patch.h"

#include <algorithm>
#include <array>

// Items of HEIF and AVIF files. All bytes of images stay as they are, and where they are as long as
// the `meta` box fits into its old place; else what stands behind it moves. Sources: ISO/IEC
// 14496-12:2015, 8.11; ISO/IEC 23008-12:2017.
namespace clipheave::platform {

namespace {

constexpr std::uint64_t kBoxHead = 8;
constexpr std::uint64_t kLargestHeifHeader = 64u << 20;

template <std::size_t Count>
bool isOneOf(std::uint32_t type, const std::array<std::uint32_t, Count>& types) {
    return std::find(types.begin(), types.end(), type) != types.end();
}

/// What a removal of everything leaves at the top level.
constexpr std::array kKeptBoxes{
    fourCc("ftyp"), fourCc("styp"), fourCc("meta"), fourCc("mdat"), fourCc("moov"), fourCc("moof"),
    fourCc("mfra"), fourCc("sidx"), fourCc("pdin"), fourCc("free"), fourCc("skip"),
};
std::uint64_t lengthOf(const std::vector<ByteRanges::Range>& ranges) {
    std::uint64_t length = 0;
    for (const auto& [begin, end] : ranges)
        length += end - begin;
    return length;
}

class HeifPlan {
public:
    HeifPlan(FileReader& reader, const PhotoChange& change, const HeifStructure& structure,
             HeifEdits edits)
        : m_reader(reader), m_change(change), m_file(structure), m_edits(std::move(edits)),
          m_meta(reader, structure), m_locations(structure.locations) {}

    Result<PhotoPlan> run() {
        using Step = Result<void> (HeifPlan::*)();
        if (auto done = checkSequence(); !done)
            return tl::unexpected(done.error());
        if (m_edits.isEmpty() && !m_change.dropsEverything) {
            PhotoPlan unchanged;
            unchanged.addRange(0, m_file.fileSize);
            unchanged.notes = m_edits.notes;
            return unchanged;
        }
        for (const Step step :
             {&HeifPlan::gatherRanges, &HeifPlan::placePayloads, &HeifPlan::changeMeta})
            if (auto done = (this->*step)(); !done)
                return tl::unexpected(done.error());
        return laidOut();
    }

private:
    Error error(ErrorCode code, const MessageCode& reason) const {
        return {code, kWritePhotoTags, m_reader.path(), reason};
    }

    [[nodiscard]] bool isEdited(std::uint32_t id) const {
        return m_edits.changed.contains(id) || m_edits.removed.contains(id);
    }

    /// Sequences may hold texts and places of their own.
    Result<void> checkSequence() {
        for (const Box& box : m_file.boxes) {
            if (box.type != fourCc("moov") || !m_change.dropsEverything)
                continue;
            const auto moov = boxBytes(box);
            if (!moov)
                return tl::unexpected(moov.error());
            if (hasLocatedTexts(*moov))
                return tl::unexpected(error(ErrorCode::NotSupported, kPhotoKindNotWritten));
        }
        if (m_change.dropsGps && !m_change.dropsEverything)
            noteVideos();
        return {};
    }

    /// A sequence, and the video of a motion photo, keep their places.
    void noteVideos() {
        std::vector<VideoPlace> places;
        if (m_file.has(fourCc("moov")))
            places.push_back(placeOfMotionVideo(m_reader, 0, m_file.end));
        for (const Box& box : m_file.boxes)
            if (box.type == fourCc("mpvd"))
                places.push_back(placeOfMotionVideo(m_reader, box.payloadOffset(), box.end()));
        const auto has = [&](VideoPlace place) {
            return std::find(places.begin(), places.end(), place) != places.end();
        };
        if (has(VideoPlace::There))
            m_edits.notes.append(kMotionVideoHoldsPlace);
        else if (has(VideoPlace::Unknown))
            m_edits.notes.append(kMotionVideoKept);
    }

    Result<QByteArray> boxBytes(const Box& box) {
        if (box.size > kLargestHeifHeader)
            return tl::unexpected(error(ErrorCode::LimitExceeded, kImageHeaderTooLong));
        return m_reader.read(box.offset, box.size);
    }

    /// Which bytes belong to items that go or change, and to those that stay. Fails where both want
    /// the same ones, or where an item lies over the boxes themselves.
    Result<void> gatherRanges() {
        ByteRanges payloads;
        for (const Box& box : m_file.boxes)
            if (!isOneOf(box.type, std::array{fourCc("ftyp"), fourCc("meta"), fourCc("moov")}))
                payloads.add(box.payloadOffset(), box.payloadSize());
        if (const Box* idat = m_file.child(fourCc("idat")))
            payloads.add(idat->payloadOffset(), idat->payloadSize());
        for (const ItemLocation& item : m_file.locations.items) {
            const bool edited = isEdited(item.id);
            for (const auto& [begin, end] : m_file.ranges(item))
                (edited ? m_old : m_kept).add(begin, end - begin);
            if (edited && isUsedByItems(item.id))
                return tl::unexpected(error(ErrorCode::NotSupported, kMetadataShared));
        }
        if (!m_old.without(payloads).empty() || !m_kept.without(payloads).empty())
            return tl::unexpected(error(ErrorCode::InvalidData, kHeifBroken));
        if (lengthOf(m_old.without(m_kept)) != lengthOf(m_old.without(ByteRanges())))
            return tl::unexpected(error(ErrorCode::NotSupported, kMetadataShared));
        return {};
    }

    /// An item that reaches to the end would take in what is added there.
    void stateLengths() {
        for (ItemLocation& item : m_locations.items) {
            const auto ranges = m_file.ranges(item);
            if (item.method() == ItemLocation::InFile && ranges.size() == item.extents.size())
                for (std::size_t i = 0; i < ranges.size(); ++i)
                    if (item.extents[i].length == 0)
                        item.extents[i].length = ranges[i].second - ranges[i].first;
        }
    }

    /// Returns whether other items are cut out of the bytes of this one.
    [[nodiscard]] bool isUsedByItems(std::uint32_t id) const {
        const auto& all = m_file.references.references;
        return std::any_of(all.begin(), all.end(), [&](const ItemReference& reference) {
            return reference.type == fourCc("iloc") && !m_edits.removed.contains(reference.from) &&
                   std::find(reference.to.begin(), reference.to.end(), id) != reference.to.end();
        });
    }

    /// A changed item stays where it was if it fits there; otherwise it goes into a new `mdat`.
    /// What an item leaves becomes zeros.
    Result<void> placePayloads() {
        stateLengths();
        ByteRanges written;
        for (const auto& [id, payload] : m_edits.changed) {
            ItemLocation* item = m_locations.find(id);
            const auto ranges = m_file.ranges(*item);
            const auto size = static_cast<std::uint64_t>(payload.size());
            const bool fits = ranges.size() == 1 && item->extents.size() == 1 &&
                              size <= ranges[0].second - ranges[0].first && isAlone(id, ranges[0]);
            if (!fits) {
                m_moved.emplace_back(id, payload);
                continue;
            }
            item->extents[0].length = size;
            m_layout.replace(ranges[0].first, payload);
            written.add(ranges[0].first, size);
        }
        if (m_change.dropsEverything)
            gatherUnused();
        for (const auto& range : m_old.without(written))
            m_layout.clear(range);
        return {};
    }

    [[nodiscard]] bool isAlone(std::uint32_t id, const ByteRanges::Range& range) const {
        return std::none_of(m_edits.changed.begin(), m_edits.changed.end(), [&](const auto& other) {
            if (other.first == id)
                return false;
            const auto ranges = m_file.ranges(*m_file.locations.find(other.first));
            return std::any_of(ranges.begin(), ranges.end(), [&](const ByteRanges::Range& taken) {
                return taken.first < range.second && range.first < taken.second;
            });
        });
    }

    /// Bytes that belong to no item hold what earlier programs left; with a sequence its samples,
    /// too.
    void gatherUnused() {
        ByteRanges areas;
        const bool hasSamples = m_file.has(fourCc("moov")) || m_file.has(fourCc("moof"));
        for (const Box& box : m_file.boxes)
            if ((box.type == fourCc("mdat") && !hasSamples) || box.type == fourCc("free") ||
                box.type == fourCc("skip"))
                areas.add(box.payloadOffset(), box.payloadSize());
        if (const Box* idat = m_file.child(fourCc("idat")))
            areas.add(idat->payloadOffset(), idat->payloadSize());
        for (const auto& [begin, end] : areas.without(m_kept))
            m_old.add(begin, end - begin);
    }

    Result<void> changeMeta() {
        if (auto done = m_meta.change(m_edits, m_change.dropsEverything); !done)
            return done;
        std::erase_if(m_locations.items,
                      [&](const ItemLocation& item) { return m_edits.removed.contains(item.id); });
        for (std::size_t i = 0; i < m_edits.added.size(); ++i) {
            const std::uint32_t id = m_meta.added()[i];
            m_locations.items.push_back(*m_meta.locations().find(id));
            m_moved.emplace_back(id, m_edits.added[i].payload);
        }
        m_meta.setLocations(m_locations);
        return {};
    }

    // Layout, twice: first to know where everything comes to stand, then with the offsets.

    Result<PhotoPlan> laidOut() {
        constexpr int kMostWidths = 4;
        for (int i = 0; i < kMostWidths; ++i) {
            const auto places = emitted(nullptr);
            if (!places)
                return tl::unexpected(places.error());
            auto locations = relocated(places->map());
            if (!locations)
                return tl::unexpected(locations.error());
            if (locations->widen()) {
                m_locations.offsetBytes = locations->offsetBytes;
                m_locations.lengthBytes = locations->lengthBytes;
                m_locations.baseBytes = locations->baseBytes;
                m_meta.setLocations(m_locations);
                continue;
            }
            m_meta.setLocations(*locations);
            auto layout = emitted(&places->map());
            if (!layout)
                return tl::unexpected(layout.error());
            PhotoPlan plan = layout->take();
            plan.notes = m_edits.notes;
            return plan;
        }
        return tl::unexpected(error(ErrorCode::LimitExceeded, kPhotoTooLarge));
    }

    Result<ItemLocations> relocated(const OffsetMap& map) const {
        ItemLocations table = m_locations;
        for (ItemLocation& item : table.items)
            if (!map.isIdentity() && item.method() == ItemLocation::InFile &&
                item.dataReference == 0 && !isMoved(item.id) && !moveItem(item, map))
                return tl::unexpected(error(ErrorCode::InvalidData, kHeifBroken));
        std::uint64_t at = m_movedAt + kBoxHead;
        for (const auto& [id, payload] : m_moved) {
            ItemLocation& item = *table.find(id);
            const auto size = static_cast<std::uint64_t>(payload.size());
            item.construction = static_cast<std::uint16_t>(item.construction & ~15);
            item.base = table.offsetBytes == 0 ? at : 0;
            item.extents = {{0, at - item.base, size}};
            at += size;
        }
        return table;
    }

    [[nodiscard]] bool isMoved(std::uint32_t id) const {
        return std::any_of(m_moved.begin(), m_moved.end(),
                           [id](const auto& moved) { return moved.first == id; });
    }

    /// Returns false when the item leads to bytes that are not there.
    static bool moveItem(ItemLocation& item, const OffsetMap& map) {
        std::vector<std::uint64_t> targets;
        for (const ItemExtent& extent : item.extents) {
            const auto target = map.map(item.base + extent.offset);
            if (!target || extent.offset > UINT64_MAX - item.base)
                return false;
            targets.push_back(*target);
        }
        if (targets.empty())
            return true;
        const std::uint64_t old = item.base + item.extents[0].offset;
        if (item.base != 0)
            item.base += targets[0] - old; // modulo 2^64
        if (*std::min_element(targets.begin(), targets.end()) < item.base)
            item.base = 0;
        for (std::size_t i = 0; i < targets.size(); ++i)
            item.extents[i].offset = targets[i] - item.base;
        return true;
    }

    /// `map`: where the bytes of the source stand, null as long as that is not known.
    Result<HeifLayout> emitted(const OffsetMap* map) {
        HeifLayout layout = m_layout;
        const std::size_t last = lastOfImage();
        for (std::size_t i = 0; i < m_file.boxes.size(); ++i) {
            const bool isLast = i == last;
            if (i == m_file.metaIndex) {
                i += addMeta(layout);
            } else if (!isDropped(m_file.boxes[i])) {
                if (auto done = addBox(layout, m_file.boxes[i], map); !done)
                    return tl::unexpected(done.error());
            }
            if (isLast)
                addMoved(layout);
        }
        if (!m_change.dropsEverything)
            layout.keep(m_file.end, m_file.fileSize);
        return layout;
    }

    /// New payloads stand behind the last box of the image, before what phones want at the end.
    [[nodiscard]] std::size_t lastOfImage() const {
        std::size_t last = m_file.metaIndex;
        for (std::size_t i = 0; i < m_file.boxes.size(); ++i)
            if (isOneOf(m_file.boxes[i].type,
                        std::array{fourCc("mdat"), fourCc("moov"), fourCc("moof")}))
                last = std::max(last, i);
        return last;
    }

    [[nodiscard]] bool isDropped(const Box& box) const {
        if (box.type == fourCc("mdat") && box.payloadSize() > 0)
            return m_layout.isCleared(box.payloadOffset(), box.end());
        return m_change.dropsEverything && !isOneOf(box.type, kKeptBoxes) &&
               !m_kept.intersects(box.offset, box.size);
    }

    /// Returns how many boxes behind `meta` it takes the place of.
    std::size_t addMeta(HeifLayout& layout) {
        const std::uint64_t size = m_meta.size();
        std::uint64_t space = m_file.meta().size;
        std::size_t taken = 0;
        if (!fitsInto(size, space) && hasFreeBehindMeta()) {
            space += m_file.boxes[m_file.metaIndex + 1].size;
            taken = 1;
        }
        m_meta.addTo(layout);
        if (fitsInto(size, space) && size < space)
            layout.add(heifBox(fourCc("free"),
                               QByteArray(static_cast<qsizetype>(space - size - kBoxHead), '\0')));
        return taken;
    }

    [[nodiscard]] static bool fitsInto(std::uint64_t size, std::uint64_t space) {
        return size == space || size + kBoxHead <= space;
    }

    [[nodiscard]] bool hasFreeBehindMeta() const {
        const std::size_t next = m_file.metaIndex + 1;
        if (next >= m_file.boxes.size() || m_file.boxes[next].size > kLargestHeifHeader)
            return false;
        const Box& box = m_file.boxes[next];
        return isOneOf(box.type, std::array{fourCc("free"), fourCc("skip")}) &&
               !m_kept.intersects(box.offset, box.size) && !m_old.intersects(box.offset, box.size);
    }

    Result<void> addBox(HeifLayout& layout, const Box& box, const OffsetMap* map) {
        const bool isPatched = box.type == fourCc("moov") || holdsOffsets(box.type);
        if (map != nullptr && isPatched && (!map->isIdentity() || m_change.dropsEverything))
            return addPatched(layout, box, *map);
        if (!box.toEnd || m_moved.empty()) {
            layout.keep(box.offset, box.end());
            return {};
        }
        if (box.size > UINT32_MAX)
            return tl::unexpected(error(ErrorCode::LimitExceeded, kPhotoTooLarge));
        QByteArray head;
        appendBigEndian(head, box.size, 4);
        appendBigEndian(head, box.type, 4);
        layout.add(head);
        layout.keep(box.payloadOffset(), box.end());
        return {};
    }

    Result<void> addPatched(HeifLayout& layout, const Box& box, const OffsetMap& map) {
        auto bytes = boxBytes(box);
        if (!bytes)
            return tl::unexpected(bytes.error());
        Result<void> done;
        if (box.type == fourCc("moov")) {
            if (m_change.dropsEverything)
                done = removeSequenceTexts(*bytes);
            if (done && !map.isIdentity())
                done = moveSequence(*bytes, map);
        } else if (!map.isIdentity()) {
            const auto patched = box.type == fourCc("sidx")
                                     ? patchSegmentIndex(*bytes, box.end(), map)
                                     : patchBox(*bytes, map);
            if (!patched)
                done = tl::unexpected(patched.error());
        }
        if (done)
            layout.add(*bytes);
        return done;
    }

    void addMoved(HeifLayout& layout) {
        m_movedAt = layout.size();
        QByteArray payloads;
        for (const auto& [id, payload] : m_moved)
            payloads += payload;
        if (!payloads.isEmpty())
            layout.add(heifBox(fourCc("mdat"), payloads));
    }

    FileReader& m_reader;
    const PhotoChange& m_change;
    const HeifStructure& m_file;
    HeifEdits m_edits;
    ByteRanges m_old, m_kept; ///< of items that go or change, and of the others
    HeifMeta m_meta;
    ItemLocations m_locations;                                 ///< offsets as in the source
    HeifLayout m_layout;                                       ///< replacements alone
    std::vector<std::pair<std::uint32_t, QByteArray>> m_moved; ///< payloads with a new place
    std::uint64_t m_movedAt = 0;                               ///< where their box begins
};

} // namespace

Result<PhotoPlan> planHeif(FileReader& reader, const PhotoChange& change) {
    const auto structure = readHeifStructure(reader);
    if (!structure)
        return tl::unexpected(structure.error());
    auto edits = heifEdits(reader, *structure, change);
    if (!edits)
        return tl::unexpected(edits.error());
    return HeifPlan(reader, change, *structure, std::move(*edits)).run();
}

} // namespace clipheave::platform
