// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <QByteArray>
#include <QSize>
#include <QString>

#include <optional>
#include <variant>

namespace clipheave::platform {

/// An image as a file carries it, still encoded: "jpeg", "png", "gif", "bmp", "webp", "tiff",
/// "heif". Decoding is left to whoever paints it. Images over `kInlineLimit` that lie unbroken in a
/// file stay there, so that a library of albums does not fill the memory.
class EncodedImage {
public:
    static constexpr std::uint64_t kInlineLimit = 4096;

    EncodedImage() = default;
    /// Null when the bytes do not begin as an image of a known format with a plausible size.
    [[nodiscard]] static EncodedImage fromBytes(const QByteArray& bytes);
    /// The same for a range of a file that `reader` has open; at most its head is read.
    [[nodiscard]] static EncodedImage fromSlice(FileReader& reader, const FileSlice& slice);

    [[nodiscard]] bool isNull() const { return m_format.isEmpty(); }
    [[nodiscard]] QString format() const { return m_format; }
    [[nodiscard]] QSize size() const { return m_size; } ///< pixels, from the image's header
    [[nodiscard]] std::uint64_t byteCount() const;
    /// The encoded bytes; null when the file has gone or changed.
    [[nodiscard]] QByteArray bytes() const;

    friend bool operator==(const EncodedImage& a, const EncodedImage& b);

private:
    QString m_format;
    QSize m_size;
    std::variant<QByteArray, FileSlice> m_data;
};

/// Format and pixel size from the head of an encoded image; nothing when it is not one. Handles
/// JPEG (start-of-frame), PNG (IHDR), GIF, BMP, WebP (VP8, VP8L, VP8X), TIFF (first IFD), HEIF and
/// AVIF (largest `ispe`).
struct FrameHeader {
    QString format;
    QSize size;
};
[[nodiscard]] std::optional<FrameHeader> sniffImage(ByteView head);

} // namespace clipheave::platform
