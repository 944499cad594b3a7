// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/tagged/taglib_types.h"
#include "platform/foundation/file_reader.h"

#include <tiostream.h>

namespace clipheave::platform {

/// Gives the tag library the bytes of an open file, read only: names that are not UTF-8 work, small
/// files cost no further system call, and a file that makes the library search or load without end
/// runs dry after `kFetchLimit` bytes. One that makes it read for ever ends in a std::runtime_error
/// out of readBlock().
class TagLibStream final : public TagLib::IOStream {
public:
    static constexpr std::uint64_t kFetchLimit = 48u << 20;

    explicit TagLibStream(FileReader& reader)
        : m_reader(reader), m_fetchedBefore(reader.bytesFetched()) {}

    TagLib::FileName name() const override { return ""; }
    TagLib::ByteVector readBlock(TagLibLength length) override;
    void writeBlock(const TagLib::ByteVector&) override {}
    void insert(const TagLib::ByteVector&, TagLibStart, TagLibLength) override {}
    void removeBlock(TagLibStart, TagLibLength) override {}
    bool readOnly() const override { return true; }
    bool isOpen() const override { return true; }
    void seek(TagLibOffset offset, Position position) override;
    TagLibOffset tell() const override { return m_position; }
    TagLibOffset length() override { return static_cast<TagLibOffset>(m_reader.size()); }
    void truncate(TagLibOffset) override {}

private:
    FileReader& m_reader;
    std::uint64_t m_fetchedBefore;
    std::uint64_t m_reads = 0;
    std::uint64_t m_readsBehindTheEnd = 0;
    TagLibOffset m_position = 0;
};

} // namespace clipheave::platform
