// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/formats/taglib_stream.h"

#include <algorithm>

namespace clipheave::platform {
namespace {

// A loop over the same few bytes fetches nothing; this ends it.
constexpr std::uint64_t kMostBlocks = 1u << 20;

} // namespace

TagLib::ByteVector TagLibStream::readBlock(unsigned long length) {
    const auto at = static_cast<std::uint64_t>(m_position);
    if (at >= m_reader.size() || ++m_blocks > kMostBlocks)
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
    m_position += static_cast<long>(bytes.size());
    return bytes;
}

void TagLibStream::seek(long offset, Position position) {
    const long base = position == Beginning ? 0 : position == Current ? m_position : length();
    long target = 0;
    // An offset from the file may be anything; a place before the start is the start.
    if (__builtin_add_overflow(base, offset, &target) || target < 0)
        target = 0;
    m_position = target;
}

} // namespace clipheave::platform
