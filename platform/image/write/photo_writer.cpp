// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/photo_writer.h"

#include "platform/foundation/atomic_file.h"
#include "platform/foundation/log.h"
#include "platform/foundation/unchanged_files.h"
#include "platform/image/cg_image_source.h"
#include "platform/image/heif_reader.h"
#include "platform/image/messages.h"
#include "platform/image/write/photo_plan.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kSignatureBytes = 64;

bool isTiff(ByteView head) {
    static const QList<QByteArray> kHeads{QByteArray("II\x2A\0", 4), QByteArray("MM\0\x2A", 4),
                                          "IIRO", "IIRS", "MMOR"};
    return kHeads.contains(head.sub(0, 4).toByteArray());
}

Result<void> writeParts(AtomicFile& file, const FileReader& source, const PhotoPlan& plan) {
    for (const FilePart& part : plan.parts) {
        auto done = part.bytes.isEmpty() ? file.copyFrom(source.fd(), part.offset, part.length)
                                         : file.write(part.bytes);
        if (!done)
            return done;
    }
    return {};
}

Error inFile(Error error, const QString& path) {
    if (error.path.isEmpty())
        error.path = path;
    return error;
}

bool isList(const QVariant& value) {
    return value.typeId() == QMetaType::QVariantList || value.typeId() == QMetaType::QStringList;
}

bool isSame(const QVariant& asked, const QVariant& own) {
    return asked == own ||
           (isList(asked) || isList(own) ? asked.toStringList() == own.toStringList()
                                         : asked.toString() == own.toString());
}

/// Returns the properties without values that the photo has already, empty ones that it lacks
/// included. Written, such a value would be carried to where its fact stands again: an author who
/// is named in the IPTC block alone would go with the empty field.
QVariantMap withoutUnchanged(const QString& path, QVariantMap properties) {
    static constexpr const char* kNames[] = {"{TIFF}", "{Exif}", "{IPTC}"};
    const auto isAsked = [&](const char* name) {
        return properties.value(QLatin1String(name)).isValid();
    };
    if (std::none_of(std::begin(kNames), std::end(kNames), isAsked))
        return properties; // a removal need not read them
    const auto source = CGImageSource::createWithPath(path);
    for (const char* name : kNames) {
        if (!source || !isAsked(name))
            continue;
        const QVariantMap own = source->properties().value(QLatin1String(name)).toMap();
        const QVariantMap block = properties.value(QLatin1String(name)).toMap();
        QVariantMap changed;
        for (auto it = block.begin(); it != block.end(); ++it)
            if (!isSame(*it, own.value(it.key())))
                changed.insert(it.key(), *it);
        properties.insert(QLatin1String(name), changed);
    }
    return properties;
}

} // namespace

Result<PhotoPlan> plannedPhoto(FileReader& reader, const PhotoChange& change) {
    const QByteArray head = reader.viewUpTo(0, kSignatureBytes).toByteArray();
    if (head.startsWith("\xFF\xD8\xFF"))
        return planJpeg(reader, change);
    if (head.startsWith("\x89PNG\r\n\x1A\n"))
        return planPng(reader, change);
    if (head.startsWith("RIFF") && head.mid(8, 4) == "WEBP")
        return planWebp(reader, change);
    if (head.startsWith("8BPS"))
        return planPsd(reader, change);
    if (head.startsWith(QByteArrayLiteral("\0\0\0\x0CjP  \r\n\x87\n")))
        return planJp2(reader, change);
    if (head.startsWith("GIF8"))
        return planGif(reader, change);
    if (isTiff(head))
        return planTiff(reader, change);
    if (isHeif(ByteView(head)) && head.mid(8, 4) != "crx ")
        return planHeif(reader, change);
    // A photo of another kind, or none at all: the reader knows.
    const auto read = CGImageSource::createWithPath(reader.path());
    return read ? failure(ErrorCode::NotSupported, kWritePhotoTags, reader.path(),
                          kPhotoKindNotWritten)
                : failure(ErrorCode::InvalidData, kWritePhotoTags, reader.path(),
                          read.error().detail);
}

namespace {

Result<Notes> writePhoto(FileReader& reader, const QString& path, const PhotoChange& change) {
    const UnchangedFiles unchanged(reader);
    auto plan = plannedPhoto(reader, change);
    if (!plan)
        return tl::unexpected(inFile(plan.error(), reader.path()));
    if (!change.unknownKeys.isEmpty())
        plan->notes.append(
            Message(kPropertiesNotWritten, {change.unknownKeys.join(QStringLiteral(", "))}));
    auto file = AtomicFile::create(path, plan->size());
    if (!file)
        return tl::unexpected(file.error());
    if (auto written = writeParts(*file, reader, *plan); !written)
        return tl::unexpected(written.error());
    file->copyExtendedAttributes(reader.fd(), change.dropsEverything
                                                  ? AtomicFile::Attributes::OfSystem
                                                  : AtomicFile::Attributes::All);
    file->takePermissionsOf(FileReference::ofDescriptor(reader.fd()));
    if (auto same = unchanged.check(); !same)
        return tl::unexpected(same.error());
    if (auto committed = file->commit(); !committed)
        return tl::unexpected(committed.error());
    return plan->notes;
}

} // namespace

PhotoDestination CGImageDestinationCreateWithData(const QString& path, const QString& type,
                                                  std::size_t count) {
    PhotoDestination destination;
    destination.m_path = path;
    destination.m_type = type;
    destination.m_count = count;
    return destination;
}

Result<void> CGImageDestinationAddImageFromSource(PhotoDestination& destination, PhotoData& source,
                                                  std::size_t index,
                                                  const QVariantMap& properties) {
    const bool isFirst = destination.m_source == nullptr;
    const bool fits =
        isFirst ? CGImageSourceGetType(source) == destination.m_type
                : destination.m_source == &source && destination.m_properties == properties;
    if (!fits || index != destination.m_added || index >= destination.m_count)
        return failure(ErrorCode::InvalidArgument, kWritePhotoTags, source.path(),
                       kPropertiesOutOfRange);
    destination.m_source = &source;
    destination.m_properties = properties;
    ++destination.m_added;
    return {};
}

Result<Notes> CGImageDestinationFinalize(PhotoDestination& destination) {
    const bool isWhole =
        destination.m_source != nullptr && destination.m_added == destination.m_count;
    auto written = isWhole ? writePhoto(destination.m_source->reader(), destination.m_path,
                                        changeOf(withoutUnchanged(destination.m_source->path(),
                                                                  destination.m_properties)))
                           : failure(ErrorCode::InvalidArgument, kWritePhotoTags,
                                     destination.m_path, kNoFrames);
    if (!written)
        log(LogLevel::Error, QStringLiteral("CGImageDestinationFinalize failed"),
            destination.m_source != nullptr ? destination.m_source->path() : destination.m_path);
    return written;
}

Result<Notes> rewritePhoto(const PhotoRewrite& rewrite) {
    auto source = CGImageSourceCreateWithData(rewrite.source);
    if (!source)
        return tl::unexpected(source.error());
    // Of what is no image there is one too: the destination says that it cannot be written.
    const std::size_t count = std::max<std::size_t>(CGImageSourceGetCount(*source), 1);
    auto destination =
        CGImageDestinationCreateWithData(rewrite.target, CGImageSourceGetType(*source), count);
    const QVariantMap properties =
        rewrite.removesEverything ? everyDictionaryRemoved() : rewrite.properties;
    for (std::size_t index = 0; index < count; ++index)
        if (auto added =
                CGImageDestinationAddImageFromSource(destination, *source, index, properties);
            !added)
            return tl::unexpected(added.error());
    return CGImageDestinationFinalize(destination);
}

} // namespace clipheave::platform
