// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/further_dictionaries.h"

#include "platform/image/gif_blocks.h"
#include "platform/image/tag_text.h"
#include "platform/image/write/jpeg_segments.h"

#include <algorithm>
#include <array>
#include <optional>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kMostChunks = 4096, kMostTextChunk = 64u << 10;

template <class Number> QVariant numberOf(std::optional<Number> value) {
    return QVariant(static_cast<int>(value.value_or(0)));
}

/// The keywords that have a key of their own; other texts have none. Source: PNG, 11.3.3.2.
bool isPublishedText(const QByteArray& keyword) {
    static constexpr std::array kNames{
        "Author",     "Comment",           "Copyright", "Description", "Creation Time",
        "Disclaimer", "Modification Time", "Software",  "Source",      "Title",
        "Warning"};
    return std::any_of(kNames.begin(), kNames.end(),
                       [&](const char* name) { return keyword == name; });
}

/// Returns the text of a tEXt or an iTXt chunk that is not compressed.
QString textOfChunk(bool isUnicode, const QByteArray& behindKeyword) {
    if (!isUnicode)
        return QString::fromLatin1(behindKeyword);
    if (behindKeyword.size() < 2 || behindKeyword[0] != 0)
        return {};
    const qsizetype language = behindKeyword.indexOf('\0', 2);
    const qsizetype translated = language < 0 ? -1 : behindKeyword.indexOf('\0', language + 1);
    return translated < 0 ? QString() : QString::fromUtf8(behindKeyword.mid(translated + 1));
}

void addPngText(const QByteArray& type, const QByteArray& data, QVariantMap& png) {
    const QByteArray keyword = data.left(data.indexOf('\0'));
    const QString text = textOfChunk(type == "iTXt", data.mid(keyword.size() + 1));
    if (isPublishedText(keyword) && !text.isEmpty())
        png.insert(QString::fromLatin1(keyword), text);
}

void addPngNumbers(const QByteArray& type, ByteView data, QVariantMap& png) {
    constexpr double kUnit = 100'000;
    if (type == "IHDR" && data.u8(12))
        png.insert(QStringLiteral("InterlaceType"), numberOf(data.u8(12)));
    else if (type == "gAMA" && data.be32(0))
        png.insert(QStringLiteral("Gamma"), *data.be32(0) / kUnit);
    else if (type == "sRGB" && data.u8(0))
        png.insert(QStringLiteral("sRGBIntent"), numberOf(data.u8(0)));
    if (type == "pHYs" && data.u8(8) == 1) {
        png.insert(QStringLiteral("XPixelsPerMeter"), numberOf(data.be32(0)));
        png.insert(QStringLiteral("YPixelsPerMeter"), numberOf(data.be32(4)));
    }
    if (type == "cHRM" && data.has(0, 32)) {
        QVariantList points;
        for (std::uint64_t at = 0; at < 32; at += 4)
            points.append(data.be32(at).value_or(0) / kUnit);
        png.insert(QStringLiteral("Chromaticities"), points);
    }
}

} // namespace

QVariantMap jfifDictionary(FileReader& reader) {
    constexpr std::uint8_t kProgressive = 0xC2;
    const auto image = readJpegImage(reader, 0);
    if (!image || image->segments.empty())
        return {};
    const ByteView jfif(image->segments.front().payload);
    if (!jfif.startsWith(QByteArrayView("JFIF\0", 5)) || !jfif.has(5, 7))
        return {};
    const bool isProgressive =
        std::any_of(image->segments.begin(), image->segments.end(),
                    [](const JpegSegment& segment) { return segment.marker == kProgressive; });
    return {
        {QStringLiteral("JFIFVersion"), QVariantList{numberOf(jfif.u8(5)), numberOf(jfif.u8(6))}},
        {QStringLiteral("DensityUnit"), numberOf(jfif.u8(7))},
        {QStringLiteral("XDensity"), numberOf(jfif.be16(8))},
        {QStringLiteral("YDensity"), numberOf(jfif.be16(10))},
        {QStringLiteral("IsProgressive"), isProgressive}};
}

QVariantMap pngDictionary(FileReader& reader) {
    QVariantMap png;
    std::uint64_t at = 8;
    for (std::uint64_t count = 0; count < kMostChunks; ++count) {
        const QByteArray head = reader.viewUpTo(at, 8).toByteArray();
        const std::uint64_t length = ByteView(head).be32(0).value_or(0);
        const QByteArray type = head.mid(4);
        if (type.size() < 4 || type == "IEND")
            break;
        const bool isText = type == "tEXt" || type == "iTXt";
        if (length <= kMostTextChunk && type != "IDAT") {
            const QByteArray data = reader.viewUpTo(at + 8, length).toByteArray();
            isText ? addPngText(type, data, png) : addPngNumbers(type, ByteView(data), png);
        }
        at += 12 + length;
    }
    return png;
}

QVariantMap gifDictionary(FileReader& reader) {
    constexpr double kHundredths = 100, kShortest = 0.1;
    const ByteView screen = reader.viewUpTo(6, 5);
    if (!screen.has(0, 5))
        return {};
    QVariantMap gif{{QStringLiteral("CanvasPixelWidth"), numberOf(screen.le16(0))},
                    {QStringLiteral("CanvasPixelHeight"), numberOf(screen.le16(2))},
                    {QStringLiteral("HasGlobalColorMap"), (*screen.u8(4) & 0x80U) != 0}};
    std::uint64_t at = firstGifBlock(reader);
    for (auto block = gifBlockAt(reader, at); block && block->type == kGifExtension;
         block = gifBlockAt(reader, block->end())) {
        if (block->isExtension(kGifControl)) {
            const double delay =
                reader.viewUpTo(block->offset + 4, 2).le16(0).value_or(0) / kHundredths;
            gif.insert(QStringLiteral("UnclampedDelayTime"), delay);
            gif.insert(QStringLiteral("DelayTime"), std::max(delay, kShortest));
        } else if (block->name == "NETSCAPE2.0") {
            gif.insert(QStringLiteral("LoopCount"),
                       numberOf(reader.viewUpTo(block->offset + 16, 2).le16(0)));
        }
    }
    return gif;
}

QVariantMap photoshopDictionary(FileReader& reader) {
    const auto version = reader.viewUpTo(4, 2).be16(0);
    return version ? QVariantMap{{QStringLiteral("Version"), numberOf(version)}} : QVariantMap();
}

} // namespace clipheave::platform
