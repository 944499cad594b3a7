// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/asset/media_file.h"

#include <QByteArray>
#include <QMap>
#include <QString>

namespace clipheave::platform {

enum AudioFilePermissions : int {
    kAudioFileReadPermission = 1,
    kAudioFileWritePermission = 2,
    kAudioFileReadWritePermission = 3,
};

/// Four-character codes of the properties.
inline constexpr std::uint32_t kAudioFilePropertyID3Tag = 0x69643374;         // 'id3t'
inline constexpr std::uint32_t kAudioFilePropertyInfoDictionary = 0x696E666F; // 'info'
inline constexpr std::uint32_t kAudioFilePropertyAlbumArtwork = 0x61617274;   // 'aart'

/// An audio file opened for reading its properties.
class AudioFile {
public:
    [[nodiscard]] const MediaFacts& facts() const { return m_file->facts(); }

private:
    friend Result<AudioFile> AudioFileOpenURL(std::shared_ptr<const MediaFile>,
                                              AudioFilePermissions);
    explicit AudioFile(std::shared_ptr<const MediaFile> file) : m_file(std::move(file)) {}
    std::shared_ptr<const MediaFile> m_file;
};

/// Opens the file, whatever its name says. NotSupported unless the bytes are of a format that audio
/// file services open (WAV, AIFF, CAF, AU, FLAC, MPEG audio, MPEG-4 audio), InvalidArgument for
/// unknown permissions, else the error of opening it.
[[nodiscard]] Result<AudioFile> AudioFileOpenURL(const QString& path,
                                                 AudioFilePermissions permissions);
[[nodiscard]] Result<AudioFile> AudioFileOpenURL(std::shared_ptr<const MediaFile> file,
                                                 AudioFilePermissions permissions);
/// Returns the size in bytes of a property's value; NotFound when the file does not carry it.
[[nodiscard]] Result<std::uint64_t> AudioFileGetPropertyInfo(const AudioFile& file,
                                                             std::uint32_t property);
/// Returns 'info', key -> text; empty when the file carries none.
[[nodiscard]] Result<QMap<QString, QString>> AudioFileGetInfoDictionary(const AudioFile& file);
/// Returns 'aart', the image; NotFound when the file carries none.
[[nodiscard]] Result<EncodedImage> AudioFileGetAlbumArtwork(const AudioFile& file);

} // namespace clipheave::platform
