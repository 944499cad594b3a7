// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/asset/media_file.h"

#include <QString>
#include <QVariant>

#include <optional>

namespace clipheave::platform {

inline constexpr char16_t kMDItemDurationSeconds[] = u"kMDItemDurationSeconds";
inline constexpr char16_t kMDItemKind[] = u"kMDItemKind";
inline constexpr char16_t kMDItemAudioBitRate[] = u"kMDItemAudioBitRate";
inline constexpr char16_t kMDItemAudioSampleRate[] = u"kMDItemAudioSampleRate";
inline constexpr char16_t kMDItemAudioChannelCount[] = u"kMDItemAudioChannelCount";
inline constexpr char16_t kMDItemPixelHeight[] = u"kMDItemPixelHeight";
inline constexpr char16_t kMDItemPixelWidth[] = u"kMDItemPixelWidth";
inline constexpr char16_t kMDItemDisplayName[] = u"kMDItemDisplayName";
inline constexpr char16_t kMDItemFSSize[] = u"kMDItemFSSize";
inline constexpr char16_t kMDItemAlbum[] = u"kMDItemAlbum";
inline constexpr char16_t kMDItemRecordingYear[] = u"kMDItemRecordingYear";
inline constexpr char16_t kMDItemContentCreationDate[] = u"kMDItemContentCreationDate";

/// The file-metadata index's view of one file.
class MDItem {
public:
    [[nodiscard]] static MDItem create(std::shared_ptr<const MediaFile> file);
    /// The attribute by its constant's name: double (seconds, bit/s, Hz), int (channels, pixels,
    /// year), qulonglong (bytes), QString or QDateTime; nothing when the file does not have it.
    [[nodiscard]] std::optional<QVariant> copyAttribute(QStringView name) const;

private:
    explicit MDItem(std::shared_ptr<const MediaFile> file) : m_file(std::move(file)) {}
    std::shared_ptr<const MediaFile> m_file;
};

/// The desktop's own name of the file's type ("MPEG-4 video"), by name and, where the name does not
/// decide, by the container found in the bytes; in the user's language. Thread-safe, cached.
[[nodiscard]] QString kindTextForFile(const QString& path, Container container);

} // namespace clipheave::platform
