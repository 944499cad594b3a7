// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/photo_data.h"

#include <QString>
#include <QVariantMap>

#include <cstddef>

namespace clipheave::platform {

/// An image destination over the data of a new photo, which appears under its name in one step.
/// Pixels are copied, never coded.
class PhotoDestination {
    QString m_path, m_type;
    std::size_t m_count = 0, m_added = 0;
    PhotoData* m_source = nullptr;
    QVariantMap m_properties;

    friend PhotoDestination CGImageDestinationCreateWithData(const QString&, const QString&,
                                                             std::size_t);
    friend Result<void> CGImageDestinationAddImageFromSource(PhotoDestination&, PhotoData&,
                                                             std::size_t, const QVariantMap&);
    friend Result<Notes> CGImageDestinationFinalize(PhotoDestination&);
};

/// Returns a destination for the file at `path` with `count` images of a type; nothing is written
/// yet.
[[nodiscard]] PhotoDestination
CGImageDestinationCreateWithData(const QString& path, const QString& type, std::size_t count);
/// Adds an image of the source, which must outlive the destination. The properties name by
/// dictionary ("{Exif}", "{TIFF}", "{GPS}", "{IPTC}") a map of the keys that override or add, or an
/// invalid value (kCFNull), which removes the block; an invalid value of a key removes the key.
/// What is not named stays. InvalidArgument for an image out of order, of another source or type
/// or with other properties than the one before: the images of a file change together.
[[nodiscard]] Result<void> CGImageDestinationAddImageFromSource(PhotoDestination& destination,
                                                                PhotoData& source,
                                                                std::size_t index,
                                                                const QVariantMap& properties);
/// Writes the file with the attributes, the permissions and the modification date of the source.
/// Returns notes. NotSupported for kinds that cannot be written without loss, InvalidData for
/// damaged files, InvalidArgument when images are missing; then nothing is left, and the log says
/// "CGImageDestinationFinalize failed".
[[nodiscard]] Result<Notes> CGImageDestinationFinalize(PhotoDestination& destination);

/// Returns the properties that remove all metadata: nothing personal stays, also XMP, comments,
/// thumbnails, further images and trailers go; orientation and colour profile stay.
[[nodiscard]] QVariantMap everyDictionaryRemoved();

/// A new file of a photo with other properties.
struct PhotoRewrite {
    QString source, target;
    QVariantMap properties;         ///< of every image, see CGImageDestinationAddImageFromSource()
    bool removesEverything = false; ///< instead of them: everyDictionaryRemoved()
};
/// Adds every image of the source to a destination and finalizes it.
[[nodiscard]] Result<Notes> rewritePhoto(const PhotoRewrite& rewrite);

} // namespace clipheave::platform
