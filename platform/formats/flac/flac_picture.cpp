// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/flac/flac_picture.h"

#include <QtEndian>

namespace clipheave::platform {
namespace {

QByteArray bigEndian32(qsizetype value) {
    QByteArray bytes(4, '\0');
    qToBigEndian(static_cast<std::uint32_t>(value), bytes.data());
    return bytes;
}

} // namespace

std::optional<std::uint32_t> flacPictureType(const ByteRange& block) {
    return block.view(0, 4).be32(0);
}

std::optional<FlacPicture> parseFlacPicture(const ByteRange& block) {
    const auto type = flacPictureType(block);
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

QByteArray renderFlacFrontCover(const EncodedImage& image) {
    const QByteArray data = image.bytes();
    if (data.isEmpty())
        return {};
    const QByteArray mime = "image/" + image.format().toLatin1();
    // No description; 24 bits a pixel and no palette, whatever the image has: readers ask the
    // image.
    return bigEndian32(FlacPicture::kFrontCover) + bigEndian32(mime.size()) + mime +
           bigEndian32(0) + bigEndian32(image.size().width()) + bigEndian32(image.size().height()) +
           bigEndian32(24) + bigEndian32(0) + bigEndian32(data.size()) + data;
}

} // namespace clipheave::platform
