// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/media/model/encoded_image.h"
#include "platform/media/model/metadata_item.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QSize>
#include <QString>

#include <array>
#include <optional>
#include <vector>

namespace clipheave::platform {

/// What the bytes of a file are, whatever its name says.
enum class Container {
    Unknown,
    QuickTime, ///< ISO base media with the brand "qt  ", or without a brand
    Mp4,       ///< every other ISO base media file (MP4, M4V, M4A, 3GP, F4V)
    MpegAudio, ///< MP3, MP2, MP1, with or without tags
    Flac,
    Wave, ///< RIFF and RF64
    Aiff, ///< AIFF and AIFC
    Caf,
    Au,
    Tagged, ///< read by the tag library: Ogg, Opus, Speex, ASF/WMA, APE, WavPack, Musepack, …
    Other,  ///< read by the media engine
};

struct AVAssetTrack {
    std::uint32_t trackID = 0;
    QString mediaType; ///< "vide", "soun", "text", "meta", "tmcd", "sbtl", …
    QString codec;     ///< four-character code or the library's name
    double durationSeconds = 0;
    QSize naturalSize;      ///< pixels as stored, before the transform; video only
    double pixelAspect = 1; ///< width of a stored pixel by its height; video only
    /// The 3x3 display matrix {a b u c d v x y w} as real numbers; identity when absent.
    std::array<double, 9> preferredTransform{1, 0, 0, 0, 1, 0, 0, 0, 1};
    bool enabled = true;
    bool isAttachedPicture = false; ///< cover art carried as a video track
    bool isChapterTrack = false;    ///< titles or images of another track's chapters
    double nominalFrameRate = 0;    ///< frames per second, 0 when unknown
    double sampleRate = 0;          ///< Hz
    int channels = 0;
    double bitRate = 0; ///< bit/s, 0 when unknown
};

/// Everything that one pass over the headers of a file gives. Missing facts are 0, null or empty.
struct MediaFacts {
    Container container = Container::Unknown;
    QString majorBrand; ///< of ISO base media, "qt  "
    /// The items in the order: `ilst`, `udta`, `meta`/keys, each in file order; of other formats in
    /// file order. ID3 frames have key space "org.id3"; AIFF and CAF texts "caaf".
    QList<AVMetadataItem> metadata;
    std::vector<AVAssetTrack> tracks; ///< in file order
    double durationSeconds = 0;
    double audioBitRate = 0;    ///< bit/s of the first audio track
    double audioSampleRate = 0; ///< Hz
    int audioChannels = 0;
    QSize pixelSize; ///< of the first video track that is not an attached picture, as stored, not
                     ///< rotated
    bool hasChapters = false;      ///< of ISO base media: as a track
    QDateTime contentCreationDate; ///< embedded creation time; invalid when there is none

    // What the audio-file properties return; filled for WAV, FLAC, AU, AIFF and CAF.
    QMap<QString, QString> infoDictionary; ///< "album", "artist", "track number", …
    EncodedImage albumArtwork;             ///< null when there is none
    std::uint64_t id3TagSize = 0;          ///< bytes of the raw ID3v2 tag, 0 when there is none

    /// Why the reading ended before everything was read; empty when all went well.
    Message problem;
};

} // namespace clipheave::platform
