// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/flac/vorbis_comment.h"

#include "platform/formats/tag_text.h"

namespace clipheave::platform {
namespace {

constexpr std::uint32_t kMostComments = 2000;
// Longer ones are images and the like in text form.
constexpr std::uint32_t kLongestComment = 256u << 10;
constexpr std::uint32_t kLongestCommentName = 256;

} // namespace

QList<NamedTag> parseVorbisComment(const ByteRange& block) {
    QList<NamedTag> tags;
    std::uint64_t at = 4 + std::uint64_t{block.view(0, 4).le32(0).value_or(0)};
    const std::uint32_t count = std::min(block.view(at, 4).le32(0).value_or(0), kMostComments);
    at += 4;
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto length = block.view(at, 4).le32(0);
        if (!length || *length > block.size() - at - 4)
            break;
        const auto bytes = block.sub(at + 4, *length).load(kLongestComment);
        at += 4 + std::uint64_t{*length};
        const qsizetype equals = bytes ? bytes->indexOf('=') : -1;
        if (equals <= 0 || equals > kLongestCommentName)
            continue;
        const QByteArrayView text(*bytes);
        tags.append({QString::fromLatin1(text.first(equals)),
                     textOfUnknownEncoding(text.sliced(equals + 1))});
    }
    return tags;
}

std::optional<FlacPicture> parseFlacPicture(const ByteRange& block) {
    const auto type = block.view(0, 4).be32(0);
    const auto mimeLength = block.view(4, 4).be32(0);
    if (!type || !mimeLength)
        return std::nullopt;
    std::uint64_t at = 8 + std::uint64_t{*mimeLength};
    const auto descriptionLength = block.view(at, 4).be32(0);
    if (!descriptionLength)
        return std::nullopt;
    at += 4 + std::uint64_t{*descriptionLength} + 16; // width, height, depth, colours
    const auto length = block.view(at, 4).be32(0);
    if (!length || *length == 0 || at + 4 >= block.size())
        return std::nullopt;
    return FlacPicture{*type, block.sub(at + 4, *length)};
}

} // namespace clipheave::platform
