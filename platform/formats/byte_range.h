// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/encoded_image.h"
#include "platform/media/model/metadata_item.h"

#include <algorithm>

namespace clipheave::platform {

/// A run of bytes that a parser walks: a part of an open file, or bytes at hand when the file's had
/// to be transformed first. Borrows the reader.
class ByteRange {
public:
    /// At most to the end of the file.
    ByteRange(FileReader& reader, std::uint64_t offset, std::uint64_t length)
        : m_reader(&reader), m_offset(std::min(offset, reader.size())),
          m_length(std::min(length, reader.size() - m_offset)) {}
    explicit ByteRange(QByteArray bytes)
        : m_bytes(std::move(bytes)), m_length(static_cast<std::uint64_t>(m_bytes.size())) {}

    [[nodiscard]] std::uint64_t size() const { return m_length; }
    /// Cut at the end; empty beyond it.
    [[nodiscard]] ByteRange sub(std::uint64_t offset, std::uint64_t length = UINT64_MAX) const {
        ByteRange part = *this;
        part.m_offset += std::min(offset, m_length);
        part.m_length = std::min(length, m_length - std::min(offset, m_length));
        return part;
    }
    /// At most FileReader::kWindow bytes, cut at the end; borrowed until the next call of any
    /// range.
    [[nodiscard]] ByteView view(std::uint64_t offset, std::uint64_t length) const {
        const ByteRange part = sub(offset, length);
        return part.m_reader ? part.m_reader->viewUpTo(part.m_offset, part.m_length)
                             : ByteView(part.m_bytes).sub(part.m_offset, part.m_length);
    }
    /// The whole range; nothing when it is longer than `limit` or cannot be read.
    [[nodiscard]] std::optional<QByteArray> load(std::uint64_t limit) const {
        if (m_length > limit)
            return std::nullopt;
        if (!m_reader)
            return m_bytes.mid(static_cast<qsizetype>(m_offset), static_cast<qsizetype>(m_length));
        auto bytes = m_reader->read(m_offset, m_length);
        return bytes ? std::optional(std::move(*bytes)) : std::nullopt;
    }
    /// The bytes as an item carries them: large ones stay in the file.
    [[nodiscard]] AVMetadataItem::Value value() const {
        if (m_reader && m_length > EncodedImage::kInlineLimit)
            return FileSlice{m_reader->path(), m_offset, m_length};
        return load(UINT64_MAX).value_or(QByteArray());
    }
    [[nodiscard]] EncodedImage image() const {
        return m_reader ? EncodedImage::fromSlice(*m_reader, {m_reader->path(), m_offset, m_length})
                        : EncodedImage::fromBytes(load(UINT64_MAX).value_or(QByteArray()));
    }

private:
    FileReader* m_reader = nullptr;
    QByteArray m_bytes;
    std::uint64_t m_offset = 0;
    std::uint64_t m_length = 0;
};

} // namespace clipheave::platform
