// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/asset/media_file.h"

namespace clipheave::platform {

/// A media file as the layers above see it: metadata items, tracks, duration.
class AVURLAsset {
public:
    /// Fails when the file cannot be opened, or with InvalidData and the reason when no reader
    /// understands it.
    [[nodiscard]] static Result<AVURLAsset> assetWithPath(const QString& path);
    [[nodiscard]] static Result<AVURLAsset> assetWithFile(std::shared_ptr<const MediaFile> file);

    [[nodiscard]] const QString& path() const { return m_file->path(); }
    [[nodiscard]] const QList<AVMetadataItem>& metadata() const { return m_file->facts().metadata; }
    [[nodiscard]] const std::vector<AVAssetTrack>& tracks() const { return m_file->facts().tracks; }
    [[nodiscard]] double durationSeconds() const { return m_file->facts().durationSeconds; }
    [[nodiscard]] const std::shared_ptr<const MediaFile>& file() const { return m_file; }

private:
    explicit AVURLAsset(std::shared_ptr<const MediaFile> file) : m_file(std::move(file)) {}
    std::shared_ptr<const MediaFile> m_file;
};

} // namespace clipheave::platform
