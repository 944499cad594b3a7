// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/media/model/encoded_image.h"
#include "platform/media/model/metadata_item.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace clipheave::media {

/// How a thumbnail browser gets at the image of an item.
enum class ImageRepresentationType {
    Path,      ///< an image file
    MoviePath, ///< a movie file
    QuickLook, ///< whatever the thumbnail service makes of the path
};

/// One file of the media list. The field names are the record's fixed names. A tag that the file
/// does not carry is a null text.
struct IKImageItem {
    platform::EncodedImage fileImage;
    QString fileImagePath; ///< image file dropped onto the artwork well
    QString filePath;      ///< the item's identity
    QString fileType = QStringLiteral("Image");
    std::uint8_t bhasCopy = 0;      ///< reserved
    QString hasCopy;                ///< reserved
    std::shared_ptr<void> fileNode; ///< reserved
    QString fileName;
    QString fileSize;     ///< as text, "12.35 MB"
    QString shootDateStr; ///< capture date as read
    QDateTime shootDate;
    QDateTime fileCreateDate;
    QDateTime fileModifyDate; ///< no import fills it
    QString fileCreateDateStr;
    QString fileReleasedYear;
    QString fileAblumName;
    double fileduration = 0; ///< seconds
    QString fileduratStr;
    std::int32_t filePixWidth = 0;
    std::int32_t filepixHeigh = 0;
    QString fileArist;
    QString fileCopyright;
    QString fileTitle;
    QString fileMake;
    QString fileModel;
    QString fileSoftware; ///< reserved, no reader fills it
    QString fileFormat;   ///< reserved, no reader fills it
    QString fileKeyWords;
    QString filePublisher;
    QString fileDescription;
    QString fileBitRate;    ///< "192000 bps"
    QString fileSampleRate; ///< "48000 Hz"
    QString fileChannels;
    // Sign texts hold nothing, "+" or "-"; the numbers are never negative.
    QString latitudeFormat;
    QString longtitudeFormat;
    QString AtitudeFormat;
    double filelatitude = 0;        ///< degrees
    double filelongtitude = 0;      ///< degrees
    double fileAtitude = 0;         ///< metres
    std::weak_ptr<void> cameraItem; ///< the device's side, camera import only
    QString fileComments;
    QString fileSubTitle;
    QString fileBand;
    QString fileComposer;
    QString fileLyricist;
    QString fileAlbumArist; ///< Deliberate: readers put the track number here; the pane shows it so
    QString fileDirector;
    QString fileActor;
    QString fileproducer;
    QList<platform::AVMetadataItem>
        fileMetaArray; ///< raw items of a video, in the container's order

    /// What kept the file from being read in full; empty when nothing did. For the log, the
    /// activity panel and the command line; not shown in the panes.
    platform::Message problem;
    std::uint64_t sizeBytes = 0; ///< behind `fileSize`
    QDateTime modificationDate;  ///< of the file system; `fileModifyDate` stays empty by design
    double audioBitRate = 0;     ///< bit/s behind `fileBitRate`, 0 when unknown
    double audioSampleRate = 0;  ///< Hz behind `fileSampleRate`, 0 when unknown

    // What the thumbnail browser asks of an item.
    [[nodiscard]] ImageRepresentationType imageRepresentationType() const;
    [[nodiscard]] QString imageRepresentation() const { return filePath; }
    [[nodiscard]] QString imageUID() const { return filePath; }
    [[nodiscard]] QString imageTitle() const { return fileName; }
};

/// An item as threads share it: no one writes to it any more. A change of a field is a changed copy
/// that takes the item's place.
using ItemPointer = std::shared_ptr<const IKImageItem>;
/// An item that one thread still fills, before it is handed over.
using MutableItemPointer = std::shared_ptr<IKImageItem>;

using ItemChange = std::function<void(IKImageItem& copy)>;
/// Returns a copy of `item` with the change made.
[[nodiscard]] ItemPointer changedCopy(const IKImageItem& item, const ItemChange& change);

} // namespace clipheave::media
