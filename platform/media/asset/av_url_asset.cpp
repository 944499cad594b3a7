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
    const MediaFacts& facts = file->facts();
    // A problem that is a text of the system (not one of our messages) is an error of input.
    if (facts.container == Container::Unknown)
        return failure(facts.problem.isOurs() ? ErrorCode::InvalidData : ErrorCode::Io,
                       kReadMediaFile, file->path(), facts.problem);
    return AVURLAsset(std::move(file));
}

} // namespace clipheave::platform
