// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/av_url_asset.h"

#include "platform/media/messages.h"

namespace clipheave::platform {

Result<AVURLAsset> AVURLAsset::assetWithPath(const QString& path) {
    return MediaFile::open(path).and_then(
        [](const std::shared_ptr<const MediaFile>& file) { return assetWithFile(file); });
}

Result<AVURLAsset> AVURLAsset::assetWithFile(std::shared_ptr<const MediaFile> file) {
    if (!file)
        return failure(ErrorCode::InvalidArgument, kOpenMediaFile);
    if (file->facts().container == Container::Unknown)
        return failure(ErrorCode::InvalidData, kReadMediaFile, file->path(), file->facts().problem);
    return AVURLAsset(std::move(file));
}

} // namespace clipheave::platform
