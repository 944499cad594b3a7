// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/audio/audio_file.h"

#include "platform/audio/messages.h"

#include <algorithm>
#include <utility>

namespace clipheave::platform {
namespace {

struct InfoSource {
    QLatin1String identifier;
    QLatin1String key;
};

// MPEG audio and MPEG-4 have no info dictionary: it is made of these metadata items.
constexpr InfoSource kInfoSources[] = {
    {QLatin1String("id3/TIT2"), QLatin1String("title")},
    {QLatin1String("itsk/%A9nam"), QLatin1String("title")},
    {QLatin1String("id3/TPE1"), QLatin1String("artist")},
    {QLatin1String("itsk/%A9ART"), QLatin1String("artist")},
    {QLatin1String("id3/TALB"), QLatin1String("album")},
    {QLatin1String("itsk/%A9alb"), QLatin1String("album")},
    {QLatin1String("id3/TRCK"), QLatin1String("track number")},
    {QLatin1String("id3/TYER"), QLatin1String("year")},
    {QLatin1String("itsk/%A9day"), QLatin1String("year")},
    {QLatin1String("id3/TRDA"), QLatin1String("recorded date")},
    {QLatin1String("id3/COMM"), QLatin1String("comments")},
    {QLatin1String("itsk/%A9cmt"), QLatin1String("comments")},
    {QLatin1String("id3/TCOP"), QLatin1String("copyright")},
    {QLatin1String("itsk/cprt"), QLatin1String("copyright")},
    {QLatin1String("id3/TCOM"), QLatin1String("composer")},
    {QLatin1String("itsk/%A9wrt"), QLatin1String("composer")},
    {QLatin1String("id3/TEXT"), QLatin1String("lyricist")},
    {QLatin1String("itsk/%A9lyr"), QLatin1String("lyricist")},
    {QLatin1String("uiso/date"), QLatin1String("recorded date")},
    {QLatin1String("id3/TIT3"), QLatin1String("subtitle")},
    {QLatin1String("itsk/%A9st3"), QLatin1String("subtitle")},
    {QLatin1String("id3/TCON"), QLatin1String("genre")},
    {QLatin1String("itsk/%A9gen"), QLatin1String("genre")},
};

bool hasAudio(const MediaFacts& facts) {
    return std::any_of(facts.tracks.begin(), facts.tracks.end(),
                       [](const auto& track) { return track.mediaType == QLatin1String("soun"); });
}

bool isAudioFile(const MediaFacts& facts) {
    switch (facts.container) {
    case Container::Wave:
    case Container::Aiff:
    case Container::Caf:
    case Container::Au:
    case Container::Flac:
    case Container::MpegAudio:
        return true;
    case Container::Mp4:
        return hasAudio(facts);
    case Container::Unknown:
    case Container::QuickTime:
    case Container::Tagged:
    case Container::Other:
        break;
    }
    return false;
}

QMap<QString, QString> dictionaryOf(const QList<AVMetadataItem>& items) {
    QMap<QString, QString> info;
    const auto put = [&info](QLatin1String key, const QString& text) {
        if (!text.isEmpty())
            info.insert(key, text);
    };
    for (const AVMetadataItem& item : items) {
        const QString identifier = item.effectiveIdentifier();
        if (identifier == QLatin1String("itsk/trkn"))
            put(QLatin1String("track number"), trackNumberText(item));
        const auto* row =
            std::find_if(std::begin(kInfoSources), std::end(kInfoSources),
                         [&](const InfoSource& source) { return identifier == source.identifier; });
        if (row != std::end(kInfoSources))
            put(row->key, item.stringValue());
    }
    return info;
}

EncodedImage artworkAmong(const QList<AVMetadataItem>& items) {
    const auto isCover = [](const AVMetadataItem& item) {
        const QString identifier = item.effectiveIdentifier();
        return identifier == QLatin1String("id3/APIC") || identifier == QLatin1String("itsk/covr");
    };
    const auto found = std::find_if(items.crbegin(), items.crend(), isCover);
    if (found == items.crend())
        return {};
    if (const auto* slice = std::get_if<FileSlice>(&found->value)) {
        auto reader = FileReader::open(slice->path);
        return reader ? EncodedImage::fromSlice(*reader, *slice) : EncodedImage();
    }
    return EncodedImage::fromBytes(found->dataValue());
}

tl::unexpected<Error> noSuchProperty() {
    return failure(ErrorCode::NotFound, kReadAudioFileProperty);
}

} // namespace

Result<AudioFile> AudioFileOpenURL(const QString& path, AudioFilePermissions permissions) {
    auto file = MediaFile::open(path);
    if (!file)
        return tl::unexpected(file.error());
    return AudioFileOpenURL(std::move(*file), permissions);
}

Result<AudioFile> AudioFileOpenURL(std::shared_ptr<const MediaFile> file,
                                   AudioFilePermissions permissions) {
    const MessageCode operation = kOpenAudioFile;
    if (!file || permissions < kAudioFileReadPermission ||
        permissions > kAudioFileReadWritePermission)
        return failure(ErrorCode::InvalidArgument, operation);
    if (!isAudioFile(file->facts()))
        return failure(ErrorCode::NotSupported, operation, file->path());
    return AudioFile(std::move(file));
}

Result<std::uint64_t> AudioFileGetPropertyInfo(const AudioFile& file, std::uint32_t property) {
    std::uint64_t size = 0;
    if (property == kAudioFilePropertyID3Tag) {
        size = file.facts().id3TagSize;
    } else if (property == kAudioFilePropertyInfoDictionary) {
        const auto info = AudioFileGetInfoDictionary(file);
        for (auto it = info->cbegin(); it != info->cend(); ++it)
            size +=
                static_cast<std::uint64_t>(it.key().toUtf8().size() + it.value().toUtf8().size());
    } else if (property == kAudioFilePropertyAlbumArtwork) {
        if (const auto image = AudioFileGetAlbumArtwork(file))
            size = image->byteCount();
    }
    if (size == 0)
        return noSuchProperty();
    return size;
}

Result<QMap<QString, QString>> AudioFileGetInfoDictionary(const AudioFile& file) {
    const MediaFacts& facts = file.facts();
    const bool isMpeg =
        facts.container == Container::MpegAudio || facts.container == Container::Mp4;
    return isMpeg && facts.infoDictionary.isEmpty() ? dictionaryOf(facts.metadata)
                                                    : facts.infoDictionary;
}

Result<EncodedImage> AudioFileGetAlbumArtwork(const AudioFile& file) {
    const MediaFacts& facts = file.facts();
    EncodedImage image =
        facts.albumArtwork.isNull() ? artworkAmong(facts.metadata) : facts.albumArtwork;
    if (image.isNull())
        return noSuchProperty();
    return image;
}

} // namespace clipheave::platform
