// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/heif_structure.h"

#include "platform/image/heif_items.h"
#include "platform/image/messages.h"

#include <algorithm>
#include <array>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kMostHeifBoxes = 1024;
constexpr std::uint64_t kLargestTable = 16u << 20;

Error brokenHeif(const FileReader& reader) {
    return {ErrorCode::InvalidData, kReadImageBoxes, reader.path(), kHeifBroken};
}

/// Boxes that the image is made of: bytes that begin like another, cut one are what some phones
/// write behind the last box.
bool isOfImage(std::uint32_t type) {
    static constexpr std::array kOfImage{fourCc("ftyp"), fourCc("meta"), fourCc("mdat"),
                                         fourCc("moov"), fourCc("moof"), fourCc("idat")};
    return std::find(kOfImage.begin(), kOfImage.end(), type) != kOfImage.end();
}

Result<void> readTopLevel(FileReader& reader, HeaderReader& headers, HeifStructure& structure) {
    FileBoxWalker top(headers, kMostHeifBoxes);
    while (const auto box = top.next()) {
        if (box->cut && isOfImage(box->type))
            return tl::unexpected(brokenHeif(reader));
        if (box->cut)
            break;
        structure.boxes.push_back(*box);
        structure.end = box->end();
    }
    const auto isMeta = [](const Box& box) { return box.type == fourCc("meta"); };
    const auto& boxes = structure.boxes;
    const auto meta = std::find_if(boxes.begin(), boxes.end(), isMeta);
    if (meta == boxes.end())
        return failure(ErrorCode::NotSupported, kWritePhotoTags, reader.path(),
                       kPhotoKindNotWritten);
    structure.metaIndex = static_cast<std::size_t>(meta - boxes.begin());
    return std::count_if(boxes.begin(), boxes.end(), isMeta) == 1
               ? Result<void>()
               : tl::unexpected(brokenHeif(reader));
}

Result<void> readChildren(FileReader& reader, HeaderReader& headers, HeifStructure& structure) {
    constexpr std::uint64_t kHeadToKnow = 16;
    const Box& meta = structure.meta();
    const ByteView head =
        headers.viewUpTo(meta.payloadOffset(), std::min(kHeadToKnow, meta.payloadSize()));
    const std::uint64_t begin = meta.payloadOffset() + metaChildrenOffset(head);
    FileBoxWalker walker(headers, begin, meta.end(), kMostHeifBoxes);
    std::uint64_t end = begin;
    std::set<std::uint32_t> once;
    static const std::set<std::uint32_t> kOnce{fourCc("pitm"), fourCc("iinf"), fourCc("iloc"),
                                               fourCc("iref"), fourCc("iprp"), fourCc("idat"),
                                               fourCc("grpl")};
    while (const auto box = walker.next()) {
        if (box->cut || (kOnce.contains(box->type) && !once.insert(box->type).second))
            return tl::unexpected(brokenHeif(reader));
        structure.children.push_back(*box);
        end = box->end();
    }
    return end == meta.end() ? Result<void>() : tl::unexpected(brokenHeif(reader));
}

Result<QByteArray> payloadOf(FileReader& reader, const Box& box) {
    if (box.payloadSize() > kLargestTable)
        return failure(ErrorCode::LimitExceeded, kReadImageBoxes, reader.path(),
                       kImageHeaderTooLong);
    return reader.read(box.payloadOffset(), box.payloadSize());
}

template <class Table> Result<void> readTable(FileReader& reader, const Box* box, Table& table) {
    if (box == nullptr)
        return {};
    const auto payload = payloadOf(reader, *box);
    if (!payload)
        return tl::unexpected(payload.error());
    auto read = Table::read(*payload);
    if (!read)
        return tl::unexpected(brokenHeif(reader));
    table = std::move(*read);
    return {};
}

Result<void> readTables(FileReader& reader, HeifStructure& structure) {
    const Box* entries = structure.child(fourCc("iinf"));
    const Box* locations = structure.child(fourCc("iloc"));
    const Box* primary = structure.child(fourCc("pitm"));
    if (entries == nullptr || locations == nullptr || primary == nullptr)
        return tl::unexpected(brokenHeif(reader));
    if (auto done = readTable(reader, entries, structure.entries); !done)
        return done;
    if (auto done = readTable(reader, locations, structure.locations); !done)
        return done;
    if (auto done = readTable(reader, structure.child(fourCc("iref")), structure.references); !done)
        return done;
    const auto pitm = payloadOf(reader, *primary);
    const auto item = pitm ? primaryItem(*pitm) : std::nullopt;
    if (!item)
        return tl::unexpected(brokenHeif(reader));
    structure.primary = *item;
    return {};
}

} // namespace

const Box* HeifStructure::child(std::uint32_t type) const {
    const auto found = std::find_if(children.begin(), children.end(),
                                    [type](const Box& box) { return box.type == type; });
    return found == children.end() ? nullptr : &*found;
}

bool HeifStructure::has(std::uint32_t topLevelType) const {
    return std::any_of(boxes.begin(), boxes.end(),
                       [=](const Box& box) { return box.type == topLevelType; });
}

bool HeifStructure::refers(std::uint32_t from, std::uint32_t type, std::uint32_t to) const {
    return std::any_of(references.references.begin(), references.references.end(),
                       [&](const ItemReference& reference) {
                           return reference.from == from && reference.type == type &&
                                  std::find(reference.to.begin(), reference.to.end(), to) !=
                                      reference.to.end();
                       });
}

std::vector<ByteRanges::Range> HeifStructure::ranges(const ItemLocation& item) const {
    std::vector<ByteRanges::Range> result;
    const Box* idat = child(fourCc("idat"));
    const bool inIdat = item.method() == ItemLocation::InIdat;
    if (item.method() > ItemLocation::InIdat || item.dataReference != 0 ||
        (inIdat && idat == nullptr))
        return result;
    const std::uint64_t origin = inIdat ? idat->payloadOffset() : 0;
    const std::uint64_t total = inIdat ? idat->payloadSize() : fileSize;
    for (const ItemExtent& extent : item.extents) {
        const std::uint64_t at = item.base + extent.offset;
        // The whole file is no item: derived images are written that way.
        const bool isNone = extent.length == 0 && at == 0;
        if (at < item.base || at >= total || isNone)
            continue;
        const std::uint64_t left = total - at;
        const std::uint64_t length = extent.length == 0 ? left : std::min(extent.length, left);
        result.emplace_back(origin + at, origin + at + length);
    }
    return result;
}

Result<QByteArray> HeifStructure::load(FileReader& reader, const ItemLocation& item,
                                       std::uint64_t limit) const {
    QByteArray bytes;
    std::uint64_t announced = 0;
    for (const ItemExtent& extent : item.extents)
        announced += std::min(extent.length, fileSize + 1);
    for (const auto& [begin, end] : ranges(item)) {
        if (end - begin > limit - static_cast<std::uint64_t>(bytes.size()))
            return failure(ErrorCode::LimitExceeded, kReadImageBoxes, reader.path(),
                           kExifUnreadable);
        const auto part = reader.read(begin, end - begin);
        if (!part)
            return part;
        bytes += *part;
    }
    if (static_cast<std::uint64_t>(bytes.size()) < announced)
        return failure(ErrorCode::Truncated, kReadImageBoxes, reader.path(), kHeifBroken);
    return bytes;
}

Result<HeifStructure> readHeifStructure(FileReader& reader) {
    HeifStructure structure;
    structure.fileSize = reader.size();
    HeaderReader headers(reader);
    if (auto done = readTopLevel(reader, headers, structure); !done)
        return tl::unexpected(done.error());
    if (auto done = readChildren(reader, headers, structure); !done)
        return tl::unexpected(done.error());
    if (auto done = readTables(reader, structure); !done)
        return tl::unexpected(done.error());
    return structure;
}

} // namespace clipheave::platform
