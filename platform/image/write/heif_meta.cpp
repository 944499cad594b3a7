// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/heif_meta.h"

#include "platform/image/messages.h"

#include <algorithm>
#include <array>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kMetaHead = 8;
constexpr std::uint64_t kLargestList = 16u << 20;
constexpr std::uint32_t kLargestShortId = 0xFFFF;

/// What a removal of everything leaves in `meta`.
bool belongsToImages(std::uint32_t type) {
    static constexpr std::array kKeptChildren{
        fourCc("hdlr"), fourCc("dinf"), fourCc("pitm"), fourCc("iinf"), fourCc("iloc"),
        fourCc("iref"), fourCc("iprp"), fourCc("idat"), fourCc("grpl"), fourCc("ipro"),
    };
    return std::find(kKeptChildren.begin(), kKeptChildren.end(), type) != kKeptChildren.end();
}

} // namespace

HeifMeta::HeifMeta(FileReader& reader, const HeifStructure& structure)
    : m_reader(reader), m_file(structure), m_entries(structure.entries),
      m_locations(structure.locations), m_references(structure.references) {
}

Result<void> HeifMeta::change(const HeifEdits& edits, bool personal) {
    const auto goes = [&](const auto& item) { return edits.removed.contains(item.id); };
    std::erase_if(m_entries.items, goes);
    std::erase_if(m_locations.items, goes);
    m_references.removeItems(edits.removed);
    if (personal)
        for (ItemEntry& entry : m_entries.items)
            entry.box = entry.namelessBox();
    for (const HeifEdits::NewItem& item : edits.added)
        if (auto done = addItem(item); !done)
            return done;
    return gatherChildren(edits.removed, personal);
}

Result<void> HeifMeta::addItem(const HeifEdits::NewItem& item) {
    const auto id = freeId();
    if (!id)
        return failure(ErrorCode::LimitExceeded, kWritePhotoTags, m_reader.path(), kPhotoTooLarge);
    m_entries.items.push_back(ItemEntry::make(*id, item.type, item.contentType));
    m_locations.items.push_back({*id, 0, 0, 0, {{}}});
    if (m_references.references.empty() && m_file.primary > kLargestShortId)
        m_references.version = 1;
    m_references.references.push_back({fourCc("cdsc"), *id, {m_file.primary}});
    m_added.push_back(*id);
    return {};
}

/// Returns a number that no item and no group of the file has.
std::optional<std::uint32_t> HeifMeta::freeId() {
    std::set<std::uint32_t> used{0, m_file.primary};
    for (const ItemEntry& entry : m_entries.items)
        used.insert(entry.id);
    for (const ItemLocation& item : m_locations.items)
        used.insert(item.id);
    for (const ItemReference& reference : m_file.references.references) {
        used.insert(reference.from);
        used.insert(reference.to.begin(), reference.to.end());
    }
    addGroupIds(used);
    const auto beyond = used.upper_bound(kLargestShortId);
    if (const std::uint32_t next = *std::prev(beyond) + 1; next <= kLargestShortId)
        return next;
    for (std::uint32_t id = 1; id <= kLargestShortId; ++id)
        if (!used.contains(id))
            return id;
    return std::nullopt;
}

void HeifMeta::addGroupIds(std::set<std::uint32_t>& used) {
    const Box* box = m_file.child(fourCc("grpl"));
    const auto groups = box != nullptr ? payloadOf(*box) : Result<QByteArray>();
    BoxWalker walker(groups ? ByteView(*groups) : ByteView());
    while (const auto group = walker.next())
        used.insert(walker.payload(*group).be32(4).value_or(0));
}

Result<QByteArray> HeifMeta::payloadOf(const Box& box) {
    if (box.payloadSize() > kLargestList)
        return failure(ErrorCode::LimitExceeded, kReadImageBoxes, m_reader.path(),
                       kImageHeaderTooLong);
    return m_reader.read(box.payloadOffset(), box.payloadSize());
}

Result<void> HeifMeta::gatherChildren(const std::set<std::uint32_t>& removed, bool personal) {
    const bool hasReferences = m_file.child(fourCc("iref")) != nullptr;
    for (const Box& box : m_file.children) {
        if (personal && !belongsToImages(box.type))
            continue;
        auto child = changedChild(box, removed, personal);
        if (!child)
            return tl::unexpected(child.error());
        if (child->size() > 0)
            m_children.push_back(std::move(*child));
        if (box.type == fourCc("iinf") && !hasReferences && !m_references.references.empty())
            m_children.push_back({nullptr, m_references.box(), false});
    }
    return {};
}

Result<HeifMeta::Child>
HeifMeta::changedChild(const Box& box, const std::set<std::uint32_t>& removed, bool personal) {
    if (box.type == fourCc("iloc"))
        return Child{nullptr, m_locations.box(), true};
    if (box.type == fourCc("iinf"))
        return Child{nullptr, m_entries.box(), false};
    if (box.type == fourCc("iref"))
        return Child{nullptr, m_references.references.empty() ? QByteArray() : m_references.box(),
                     false};
    const bool isProperties = box.type == fourCc("iprp");
    if ((!isProperties && box.type != fourCc("grpl")) || (removed.empty() && !personal))
        return Child{&box, {}, false};
    const auto payload = payloadOf(box);
    if (!payload)
        return tl::unexpected(payload.error());
    const auto changed = isProperties ? changedItemProperties(*payload, removed, personal)
                                      : changedEntityGroups(*payload, removed);
    if (!changed)
        return tl::unexpected(changed.error());
    return Child{nullptr, *changed, false};
}

void HeifMeta::setLocations(const ItemLocations& locations) {
    for (Child& child : m_children)
        if (child.isLocations)
            child.bytes = locations.box();
}

std::uint64_t HeifMeta::prefix() const {
    return m_file.children.empty() ? 0
                                   : m_file.children.front().offset - m_file.meta().payloadOffset();
}

std::uint64_t HeifMeta::size() const {
    std::uint64_t size = kMetaHead + prefix();
    for (const Child& child : m_children)
        size += child.size();
    return size;
}

void HeifMeta::addTo(HeifLayout& layout) const {
    QByteArray head;
    appendBigEndian(head, size(), 4);
    appendBigEndian(head, fourCc("meta"), 4);
    layout.add(head);
    const std::uint64_t begin = m_file.meta().payloadOffset();
    layout.keep(begin, begin + prefix());
    for (const Child& child : m_children)
        child.source != nullptr ? layout.keep(child.source->offset, child.source->end())
                                : layout.add(child.bytes);
}

} // namespace clipheave::platform
