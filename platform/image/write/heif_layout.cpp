// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/heif_layout.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

void addZeros(PhotoPlan& plan, std::uint64_t length) {
    static const QByteArray kZeros(1 << 16, '\0'); // shared by all parts
    const auto most = static_cast<std::uint64_t>(kZeros.size());
    for (; length >= most; length -= most)
        plan.add(kZeros);
    plan.add(kZeros.left(static_cast<qsizetype>(length)));
}

} // namespace

void HeifLayout::replace(std::uint64_t offset, const QByteArray& bytes) {
    if (!bytes.isEmpty())
        m_replacements[offset] = {offset + static_cast<std::uint64_t>(bytes.size()), bytes};
}

void HeifLayout::clear(const ByteRanges::Range& range) {
    m_replacements[range.first] = {range.second, {}};
}

bool HeifLayout::isCleared(std::uint64_t begin, std::uint64_t end) const {
    const auto found = m_replacements.find(begin);
    return found != m_replacements.end() && found->second.bytes.isEmpty() &&
           found->second.end >= end;
}

void HeifLayout::place(std::uint64_t begin, std::uint64_t end, const Replacement& replacement,
                       std::uint64_t origin) {
    if (replacement.bytes.isEmpty())
        addZeros(m_plan, end - begin);
    else
        m_plan.add(replacement.bytes.mid(static_cast<qsizetype>(begin - origin),
                                         static_cast<qsizetype>(end - begin)));
}

void HeifLayout::keep(std::uint64_t begin, std::uint64_t end) {
    if (begin >= end)
        return;
    m_map.add({begin, end, m_size});
    m_size += end - begin;
    auto next = m_replacements.upper_bound(begin);
    if (next != m_replacements.begin() && std::prev(next)->second.end > begin)
        --next;
    for (std::uint64_t at = begin; at < end; ++next) {
        if (next == m_replacements.end() || next->first >= end) {
            m_plan.addRange(at, end - at);
            return;
        }
        const std::uint64_t from = std::max(at, next->first);
        const std::uint64_t until = std::min(end, next->second.end);
        m_plan.addRange(at, from - at);
        place(from, until, next->second, next->first);
        at = until;
    }
}

void HeifLayout::add(const QByteArray& bytes) {
    m_plan.add(bytes);
    m_size += static_cast<std::uint64_t>(bytes.size());
}

} // namespace clipheave::platform
