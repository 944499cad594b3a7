// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/flac/vorbis_comment.h"

#include "platform/formats/tag_text.h"

#include <QtEndian>

namespace clipheave::platform {
namespace {

constexpr std::uint32_t kMostTagsRead = 2000;
constexpr std::uint64_t kLongestTagRead = 256u << 10;
constexpr qsizetype kLongestTagName = 256;

QByteArray littleEndian32(qsizetype value) {
    QByteArray bytes(4, '\0');
    qToLittleEndian(static_cast<quint32>(value), bytes.data());
    return bytes;
}

/// Returns the bytes whose length stands at `at`, and moves `at` behind them.
std::optional<ByteRange> takeCounted(const ByteRange& block, std::uint64_t& at) {
    const auto length = block.view(at, 4).le32(0);
    if (!length || *length > block.size() - at - 4)
        return std::nullopt;
    const std::uint64_t start = at + 4;
    at = start + *length;
    return block.sub(start, *length);
}

} // namespace

VorbisComment splitVorbisComment(const ByteRange& block, std::uint32_t most) {
    VorbisComment comment;
    std::uint64_t at = 0;
    const auto vendor = takeCounted(block, at);
    const auto count = vendor ? block.view(at, 4).le32(0) : std::nullopt;
    if (!count)
        return comment;
    comment.vendor = *vendor;
    at += 4;
    for (std::uint32_t i = 0; i < std::min(*count, most); ++i) {
        const auto entry = takeCounted(block, at);
        if (!entry)
            return comment;
        comment.entries.push_back(*entry);
    }
    comment.isComplete = *count <= most;
    return comment;
}

QByteArray renderVorbisComment(const QByteArray& vendor, const QByteArrayList& entries) {
    QByteArray block = littleEndian32(vendor.size()) + vendor + littleEndian32(entries.size());
    for (const QByteArray& entry : entries)
        block += littleEndian32(entry.size()) + entry;
    return block;
}

bool isCommentNamed(const QByteArray& entry, QByteArrayView name) {
    return entry.size() > name.size() && entry[name.size()] == '=' &&
           QByteArrayView(entry).first(name.size()).compare(name, Qt::CaseInsensitive) == 0;
}

QList<NamedTag> tagsOfVorbisComment(const ByteRange& block) {
    QList<NamedTag> tags;
    for (const ByteRange& entry : splitVorbisComment(block, kMostTagsRead).entries) {
        const auto bytes = entry.load(kLongestTagRead);
        const qsizetype equals = bytes ? bytes->indexOf('=') : -1;
        if (equals <= 0 || equals > kLongestTagName)
            continue;
        const QByteArrayView text(*bytes);
        tags.append({QString::fromLatin1(text.first(equals)),
                     textOfUnknownEncoding(text.sliced(equals + 1))});
    }
    return tags;
}

} // namespace clipheave::platform
