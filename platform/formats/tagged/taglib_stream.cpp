// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/tagged/taglib_stream.h"

#include <algorithm>
#include <stdexcept>

namespace clipheave::platform {
namespace {

// Counts in a file make the library ask again and again, also behind the end, for hours if let.
// Real files need some thousands of reads and hardly one behind the end.
constexpr std::uint64_t kMostReads = 1u << 17;
constexpr std::uint64_t kMostReadsBehindTheEnd = 4096;

} // namespace

TagLib::ByteVector TagLibStream::readBlock(TagLibLength length) {
    const auto at = static_cast<std::uint64_t>(m_position);
    if (++m_reads > kMostReads ||
        (at >= m_reader.size() && ++m_readsBehindTheEnd > kMostReadsBehindTheEnd))
        throw std::runtime_error("the tag library reads without end");
    if (at >= m_reader.size())
        return {};
    const std::uint64_t spent = m_reader.bytesFetched() - m_fetchedBefore;
    if (spent >= kFetchLimit)
        return {};
    const std::uint64_t size =
        std::min({std::uint64_t{length}, m_reader.size() - at, kFetchLimit - spent});
    TagLib::ByteVector bytes;
    if (size <= FileReader::kWindow) {
        const QByteArrayView view = m_reader.viewUpTo(at, size).bytes();
        bytes = TagLib::ByteVector(view.data(), static_cast<unsigned int>(view.size()));
    } else if (const auto read = m_reader.read(at, size)) {
        bytes = TagLib::ByteVector(read->constData(), static_cast<unsigned int>(read->size()));
    }
    m_position += static_cast<TagLibOffset>(bytes.size());
    return bytes;
}

void TagLibStream::seek(TagLibOffset offset, Position position) {
    const TagLibOffset base = position == Beginning ? 0
                              : position == Current ? m_position
                                                    : length();
    TagLibOffset target = 0;
    // An offset from the file may be anything; a place before the start is the start.
    if (__builtin_add_overflow(base, offset, &target) || target < 0)
        target = 0;
    m_position = target;
}

} // namespace clipheave::platform
