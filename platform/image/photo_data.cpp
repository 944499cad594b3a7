// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/photo_data.h"

#include "platform/image/cg_image_source.h"
#include "platform/image/further_dictionaries.h"
#include "platform/image/gif_blocks.h"
#include "platform/image/heif_reader.h"
#include "platform/image/messages.h"
#include "platform/image/photo_tags.h"
#include "platform/image/write/jpeg_trailer.h"
#include "platform/image/write/tiff_structure.h"
#include "platform/media/model/encoded_image.h"

#include <algorithm>
#include <utility>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kHead = 64;
const QByteArray kExifSegment("Exif\0\0", 6);

struct Signature {
    QByteArray bytes;
    const char* type;
};
const Signature kSignatures[] = {
    {"\xFF\xD8\xFF", "public.jpeg"},
    {"\x89PNG", "public.png"},
    {"GIF8", "com.compuserve.gif"},
    {"8BPS", "com.adobe.photoshop-image"},
    {QByteArray("\0\0\0\x0CjP  ", 8), "public.jpeg-2000"},
    {QByteArray("II*\0", 4), "public.tiff"},
    {QByteArray("MM\0*", 4), "public.tiff"},
};

/// Returns where the images behind the first one of a JPEG file lie.
std::vector<ByteSpan> imagesBehind(FileReader& reader) {
    const auto image = readJpegImage(reader, 0);
    const auto end = image ? endOfJpegImage(reader, *image) : Result<std::uint64_t>(0);
    if (!image || !end)
        return {};
    std::vector<ByteSpan> indexed;
    for (const JpegSegment& segment : image->segments)
        if (isMpIndex(segment))
            indexed = furtherImages(segment, reader.size());
    return jpegTrailer(reader, *end, indexed).images;
}

std::size_t countOfFrames(FileReader& reader) {
    std::size_t frames = 0;
    std::uint64_t at = firstGifBlock(reader);
    while (const auto block = gifBlockAt(reader, at)) {
        if (block->type == kGifTrailer)
            break;
        frames += block->type == kGifImage ? 1 : 0;
        at = block->end();
    }
    return std::max<std::size_t>(frames, 1);
}

std::size_t countOfDirectories(FileReader& reader) {
    const auto structure = readTiffStructure(TiffSource::ofFile(reader));
    if (!structure)
        return 1;
    return static_cast<std::size_t>(
        std::count_if(structure->directories.begin(), structure->directories.end(),
                      [](const TiffDirectory& directory) {
                          return directory.kind == TiffDirectory::Kind::Image;
                      }));
}

Result<QVariantMap> propertiesOfImageBehind(FileReader& reader, const ByteSpan& span) {
    const auto image = readJpegImage(reader, span.offset);
    if (!image)
        return tl::unexpected(image.error());
    HeifFacts facts;
    for (const JpegSegment& segment : image->segments)
        if (facts.exif.isEmpty() && segment.payload.startsWith(kExifSegment))
            facts.exif = segment.payload.mid(kExifSegment.size());
    const auto tags = decodePhotoTags(facts);
    if (!tags)
        return tl::unexpected(tags.error());
    QVariantMap properties;
    if (const auto header = sniffImage(reader.viewUpTo(span.offset, FileReader::kWindow))) {
        properties.insert(QStringLiteral("PixelWidth"), header->size.width());
        properties.insert(QStringLiteral("PixelHeight"), header->size.height());
    }
    for (const auto& [name, dictionary] : {std::pair(QStringLiteral("{Exif}"), tags->exif),
                                           std::pair(QStringLiteral("{TIFF}"), tags->tiff),
                                           std::pair(QStringLiteral("{GPS}"), tags->gps)})
        if (!dictionary.isEmpty())
            properties.insert(name, dictionary);
    return properties;
}

} // namespace

Result<PhotoData> CGImageSourceCreateWithData(const QString& path) {
    auto reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    return PhotoData(std::move(*reader));
}

QString CGImageSourceGetType(PhotoData& data) {
    const QByteArray head = data.reader().viewUpTo(0, kHead).toByteArray();
    for (const Signature& signature : kSignatures)
        if (head.startsWith(signature.bytes))
            return QLatin1String(signature.type);
    if (head.startsWith("RIFF") && head.mid(8, 4) == "WEBP")
        return QStringLiteral("org.webmproject.webp");
    if (head.mid(8, 3) == "crx")
        return QStringLiteral("com.canon.cr3-raw-image");
    if (head.mid(8, 4) == "avif" || head.mid(8, 4) == "avis")
        return QStringLiteral("public.avif");
    if (isHeif(ByteView(head)))
        return QStringLiteral("public.heic");
    return head.startsWith("II") || head.startsWith("MM")
               ? QStringLiteral("public.camera-raw-image")
               : QString();
}

std::size_t CGImageSourceGetCount(PhotoData& data) {
    const QString type = CGImageSourceGetType(data);
    if (type == u"public.jpeg")
        return 1 + imagesBehind(data.reader()).size();
    if (type == u"com.compuserve.gif")
        return countOfFrames(data.reader());
    if (type == u"public.tiff")
        return countOfDirectories(data.reader());
    return type.isEmpty() ? 0 : 1;
}

Result<QVariantMap> CGImageSourceCopyPropertiesAtIndex(PhotoData& data, std::size_t index) {
    if (index > 0 && CGImageSourceGetType(data) == u"public.jpeg") {
        const auto images = imagesBehind(data.reader());
        if (index <= images.size())
            return propertiesOfImageBehind(data.reader(), images[index - 1]);
    }
    if (index > 0 && index >= CGImageSourceGetCount(data))
        return failure(ErrorCode::InvalidArgument, kReadPhoto, data.path(), kNoImage);
    const auto first = CGImageSource::createWithPath(data.path());
    if (!first)
        return tl::unexpected(first.error());
    QVariantMap properties = first->properties();
    properties.insert(furtherDictionaries(data.reader()));
    return properties;
}

} // namespace clipheave::platform
