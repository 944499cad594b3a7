// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/media_readers.h"

#include "media/fields.h"
#include "media/item_texts.h"
#include "media/media_kind.h"
#include "media/messages.h"
#include "platform/audio/audio_file.h"
#include "platform/foundation/error_text.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/text.h"
#include "platform/index/md_item.h"
#include "platform/media/asset/av_url_asset.h"

#include <cmath>

namespace clipheave::media {

namespace {

using namespace platform;

struct OpenedItem {
    MutableItemPointer item;
    std::shared_ptr<const MediaFile> file; ///< null when it could not be opened
};

void applyAttributes(IKImageItem& item, const FileAttributes& attributes) {
    item.sizeBytes = attributes.NSFileSize;
    item.fileSize = MediaKind::sizeText(attributes.NSFileSize);
    item.fileCreateDate = attributes.NSFileCreationDate;
    item.fileCreateDateStr = createdDateText(attributes.NSFileCreationDate);
    item.modificationDate = attributes.NSFileModificationDate;
}

/// The item with name, path and file attributes. A file that exists but cannot be opened keeps what
/// its folder holds of it.
Result<OpenedItem> beginItem(const QString& path, const QString& type) {
    auto item = std::make_shared<IKImageItem>();
    item->fileType = type;
    item->fileName = lastPathComponent(path);
    item->filePath = path;
    auto file = MediaFile::open(path);
    if (file) {
        applyAttributes(*item, (*file)->attributes());
        item->problem = (*file)->facts().problem.text();
        return OpenedItem{item, *file};
    }
    const auto attributes = NSFileManager::defaultManager().attributesOfItemAtPath(path);
    if (!attributes || !attributes->isRegular)
        return tl::unexpected(file.error());
    applyAttributes(*item, *attributes);
    item->problem = textBeside(file.error(), path);
    return OpenedItem{item, nullptr};
}

qint32 wholeSeconds(double seconds) {
    constexpr double kLargest = 2147483647.0;
    return seconds > 0 ? static_cast<qint32>(std::min(seconds, kLargest)) : 0;
}

void setDuration(IKImageItem& item, double seconds) {
    item.fileduration = seconds;
    item.fileduratStr = MediaKind::getMediaDuration(wholeSeconds(seconds));
}

void applyAudioAttributes(IKImageItem& item, const MDItem& index) {
    if (const auto seconds = index.copyAttribute(kMDItemDurationSeconds))
        setDuration(item, seconds->toDouble());
    if (const auto rate = index.copyAttribute(kMDItemAudioBitRate)) {
        item.audioBitRate = std::round(rate->toDouble());
        item.fileBitRate = QStringLiteral("%1 bps").arg(describeNumber(item.audioBitRate));
    }
    if (const auto rate = index.copyAttribute(kMDItemAudioSampleRate)) {
        item.audioSampleRate = rate->toDouble();
        item.fileSampleRate = QStringLiteral("%1 Hz").arg(describeNumber(item.audioSampleRate));
    }
    if (const auto channels = index.copyAttribute(kMDItemAudioChannelCount))
        item.fileChannels = describeNumber(channels->toDouble());
}

void applyVideoAttributes(IKImageItem& item, const MDItem& index) {
    if (const auto kind = index.copyAttribute(kMDItemKind))
        item.fileType = kind->toString();
    applyAudioAttributes(item, index);
    if (const auto height = index.copyAttribute(kMDItemPixelHeight))
        item.filepixHeigh = height->toInt();
    if (const auto width = index.copyAttribute(kMDItemPixelWidth))
        item.filePixWidth = width->toInt();
}

/// What the index alone gives of a file that is not an asset.
void applyIndexFallback(IKImageItem& item, const MDItem& index) {
    if (const auto seconds = index.copyAttribute(kMDItemDurationSeconds))
        item.fileduration = seconds->toDouble(); // Deliberate: without its text
    if (const auto name = index.copyAttribute(kMDItemDisplayName))
        item.fileName = name->toString();
    if (const auto size = index.copyAttribute(kMDItemFSSize))
        item.fileSize = MediaKind::sizeText(size->toULongLong());
    if (const auto album = index.copyAttribute(kMDItemAlbum))
        item.fileAblumName = album->toString();
    if (const auto year = index.copyAttribute(kMDItemRecordingYear))
        item.fileReleasedYear = describeNumber(year->toDouble());
    if (const auto date = index.copyAttribute(kMDItemContentCreationDate))
        item.fileCreateDate = date->toDateTime();
}

void logMetadata(const AVURLAsset& asset) {
    if (!logs(LogLevel::Trace))
        return;
    for (const AVMetadataItem& item : asset.metadata())
        log(LogLevel::Trace, QStringLiteral("%1=%2").arg(item.identifier, item.stringValue()),
            asset.path());
}

Result<MutableItemPointer> readTaggedAudio(const QString& path, WalkTable table) {
    const auto opened = beginItem(path, QStringLiteral("Audio"));
    if (!opened)
        return tl::unexpected(opened.error());
    const MutableItemPointer& item = opened->item;
    if (!opened->file)
        return item;
    applyAudioAttributes(*item, MDItem::create(opened->file));
    const auto asset = AVURLAsset::assetWithFile(opened->file);
    if (!asset) {
        if (item->problem.isEmpty())
            item->problem = textBeside(asset.error(), path);
        return item;
    }
    logMetadata(*asset);
    item->fileMetaArray = asset->metadata();
    applyMetadata(*item, asset->metadata(), table);
    return item;
}

void applyInfoDictionary(IKImageItem& item, const QMap<QString, QString>& info) {
    for (const Field& field : kFields) {
        const QString value =
            field.infoKey ? info.value(QString::fromUtf16(field.infoKey)) : QString();
        if (!value.isEmpty())
            item.*field.record = value;
    }
    const QString recorded = info.value(QStringLiteral("recorded date"));
    if (!recorded.isEmpty())
        applyShootDateText(item, recorded, SecondsCut::AsTheyAre);
}

void logFailure(const char16_t* text, const QString& path) {
    log(LogLevel::Trace, QString::fromUtf16(text), path);
}

void applyAudioFileProperties(IKImageItem& item, const std::shared_ptr<const MediaFile>& file) {
    const auto audio = AudioFileOpenURL(file, kAudioFileReadPermission);
    if (!audio) {
        log(LogLevel::Warning, QStringLiteral("AudioFileOpenURL failed"), item.filePath);
        if (item.problem.isEmpty())
            item.problem = kNotForAudioServices;
        return;
    }
    if (!AudioFileGetPropertyInfo(*audio, kAudioFilePropertyID3Tag))
        logFailure(u"AudioFileGetPropertyInfo failed for ID3 tag", item.filePath);
    const auto info = AudioFileGetInfoDictionary(*audio);
    if (info)
        applyInfoDictionary(item, *info);
    else
        logFailure(u"AudioFileGetProperty failed for property info dictionary", item.filePath);
    if (const auto artwork = AudioFileGetAlbumArtwork(*audio))
        item.fileImage = *artwork;
    else
        logFailure(u"Get picture failed", item.filePath);
}

} // namespace

Result<MutableItemPointer> readVideoItem(const QString& path, WalkTable table) {
    const auto opened = beginItem(path, QStringLiteral("Movie"));
    if (!opened)
        return tl::unexpected(opened.error());
    const MutableItemPointer& item = opened->item;
    if (!opened->file)
        return item;
    const MDItem index = MDItem::create(opened->file);
    applyVideoAttributes(*item, index);
    const auto asset = AVURLAsset::assetWithFile(opened->file);
    if (!asset) {
        if (item->problem.isEmpty())
            item->problem = textBeside(asset.error(), path);
        applyIndexFallback(*item, index);
        return item;
    }
    logMetadata(*asset);
    item->fileMetaArray = asset->metadata();
    applyMetadata(*item, asset->metadata(), table);
    if (item->fileduration == 0)
        setDuration(*item, asset->durationSeconds());
    return item;
}

Result<MutableItemPointer> readSomeMp3AudioFileWithFilePath(const QString& path) {
    return readTaggedAudio(path, WalkTable::Audio);
}

Result<MutableItemPointer> readSomeAiffAudioFileWithFilePath(const QString& path) {
    return readTaggedAudio(path, WalkTable::AiffAudio);
}

Result<MutableItemPointer> readSomeWAVAudioFileWithFilePath(const QString& path) {
    const auto opened = beginItem(path, QStringLiteral("Audio"));
    if (!opened)
        return tl::unexpected(opened.error());
    if (opened->file) {
        applyAudioAttributes(*opened->item, MDItem::create(opened->file));
        opened->item->fileMetaArray = opened->file->facts().metadata;
        applyAudioFileProperties(*opened->item, opened->file);
    }
    return opened->item;
}

} // namespace clipheave::media
