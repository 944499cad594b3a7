// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <QByteArray>

#include <optional>

// The blocks of a GIF file. Source: GIF89a specification.
namespace clipheave::platform {

inline constexpr std::uint8_t kGifExtension = 0x21, kGifImage = 0x2C, kGifTrailer = 0x3B,
                              kGifControl = 0xF9, kGifComment = 0xFE, kGifApplication = 0xFF;

/// One block of the top level.
struct GifBlock {
    std::uint8_t type = 0, label = 0; ///< a label has an extension alone
    QByteArray name;                  ///< of an application extension
    std::uint64_t offset = 0, size = 0;

    [[nodiscard]] std::uint64_t end() const { return offset + size; }
    [[nodiscard]] bool isExtension(std::uint8_t wanted) const {
        return type == kGifExtension && label == wanted;
    }
};

/// Returns where the first block begins: behind the header and the global table of colours.
[[nodiscard]] std::uint64_t firstGifBlock(FileReader& reader);
/// Returns the block at an offset; nothing where none begins or the file ends within it.
[[nodiscard]] std::optional<GifBlock> gifBlockAt(FileReader& reader, std::uint64_t offset);

} // namespace clipheave::platform
