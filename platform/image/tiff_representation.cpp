// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/tiff_representation.h"

#include "platform/image/artwork_decoding.h"
#include "platform/image/messages.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>

namespace clipheave::platform {

namespace {

constexpr int kLzw = 1;
constexpr int kJpegQuality = 95; // no difference to the eye

Result<EncodedImage> transcoded(const EncodedImage& original, const char* format) {
    const MessageCode operation = kConvertImage;
    const auto image = decodedArtwork(original.bytes(), operation);
    if (!image)
        return tl::unexpected(image.error());
    QBuffer output;
    output.open(QIODevice::WriteOnly);
    QImageWriter writer(&output, format);
    if (format == QByteArrayView("tiff"))
        writer.setCompression(kLzw);
    else if (format == QByteArrayView("jpeg"))
        writer.setQuality(kJpegQuality);
    if (!writer.write(*image))
        return failure(ErrorCode::NotSupported, operation, {}, writer.errorString());
    EncodedImage result = EncodedImage::fromBytes(output.data());
    if (result.isNull())
        return failure(ErrorCode::Io, operation);
    return result;
}

/// TIFF 6.0, section 2: a little-endian file of one directory, whose numbers are all known.
class TiffHeader {
public:
    static constexpr std::uint32_t kSize = 8 + 2 + 14 * 12 + 4 + 6 + 2 + 16;

    TiffHeader(std::uint32_t width, std::uint32_t height) {
        constexpr std::uint32_t kEntries = 14, kBits = 8 + 2 + kEntries * 12 + 4;
        constexpr std::uint32_t kResolutions = kBits + 8;
        m_bytes.append("II*\0\x08\0\0\0", 8);
        number<std::uint16_t>(kEntries);
        entry(256, kLong, width);
        entry(257, kLong, height);
        entry(258, kShort, kBits, 3); // bits per sample
        entry(259, kShort, 1);        // not compressed
        entry(262, kShort, 2);        // RGB
        entry(273, kLong, kSize);     // one strip
        entry(274, kShort, 1);        // upright
        entry(277, kShort, 3);        // samples per pixel
        entry(278, kLong, height);    // rows of the strip
        entry(279, kLong, width * height * 3);
        entry(282, kRational, kResolutions);
        entry(283, kRational, kResolutions + 8);
        entry(284, kShort, 1); // components interleaved
        entry(296, kShort, 2); // resolution per inch
        number<std::uint32_t>(0);
        for (const int bits : {8, 8, 8, 0})
            number(static_cast<std::uint16_t>(bits));
        for (const std::uint32_t part : {72u, 1u, 72u, 1u})
            number(part);
    }
    [[nodiscard]] const QByteArray& bytes() const { return m_bytes; }

private:
    static constexpr std::uint16_t kShort = 3, kLong = 4, kRational = 5;
    template <class T> void number(T value) {
        const T ordered = qToLittleEndian(value);
        m_bytes.append(reinterpret_cast<const char*>(&ordered), sizeof ordered);
    }
    /// A single short stands in the first half of the value, which little-endian does by itself.
    void entry(std::uint16_t tag, std::uint16_t type, std::uint32_t value,
               std::uint32_t count = 1) {
        number(tag);
        number(type);
        number(count);
        number(value);
    }
    QByteArray m_bytes;
};

} // namespace

Result<QByteArray> TIFFRepresentation(const RawFrame& original) {
    const MessageCode operation = kCreateTiff;
    const qint64 pixels = qint64{std::max(original.width, 0)} * std::max(original.height, 0);
    if (pixels == 0 || original.rgb32.size() != pixels * 4)
        return failure(ErrorCode::InvalidArgument, operation);
    if (pixels > (qint64{UINT32_MAX} - TiffHeader::kSize) / 3)
        return failure(ErrorCode::LimitExceeded, operation);
    const TiffHeader header(static_cast<std::uint32_t>(original.width),
                            static_cast<std::uint32_t>(original.height));
    // Writes four bytes for every three: the last write needs one byte more.
    QByteArray bytes(header.bytes().size() + pixels * 3 + 1, Qt::Uninitialized);
    std::memcpy(bytes.data(), header.bytes().constData(),
                static_cast<std::size_t>(header.bytes().size()));
    char* to = bytes.data() + header.bytes().size();
    const auto* pixel = reinterpret_cast<const std::uint32_t*>(original.rgb32.constData());
    for (qint64 i = 0; i < pixels; ++i, to += 3) {
        const std::uint32_t ordered = qToBigEndian(pixel[i] << 8);
        std::memcpy(to, &ordered, sizeof ordered);
    }
    bytes.chop(1);
    return bytes;
}

Result<EncodedImage> TIFFRepresentation(const EncodedImage& original) {
    return original.format() == u"tiff" ? Result<EncodedImage>(original)
                                        : transcoded(original, "tiff");
}

Result<EncodedImage> artworkForItemList(const EncodedImage& original) {
    if (original.format() == u"jpeg" || original.format() == u"png")
        return original;
    return transcoded(original, original.format() == u"heif" ? "jpeg" : "png");
}

} // namespace clipheave::platform
