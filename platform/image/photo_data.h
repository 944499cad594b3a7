// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <QString>
#include <QVariantMap>

#include <cstddef>

namespace clipheave::platform {

/// The data of a photo, opened as an image source: nothing is read before it is asked for.
class PhotoData {
public:
    [[nodiscard]] const QString& path() const { return m_reader.path(); }
    [[nodiscard]] FileReader& reader() { return m_reader; }

private:
    explicit PhotoData(FileReader reader) : m_reader(std::move(reader)) {}
    FileReader m_reader;
    friend Result<PhotoData> CGImageSourceCreateWithData(const QString&);
};

/// Returns the source over the data of the file at `path`; the failures of FileReader::open().
[[nodiscard]] Result<PhotoData> CGImageSourceCreateWithData(const QString& path);
/// Returns the uniform type ("public.jpeg") by the data's signature; empty for an unknown one.
[[nodiscard]] QString CGImageSourceGetType(PhotoData& data);
/// Returns the number of images: of a JPEG file with those behind the first, of a GIF file its
/// frames, of TIFF its directories; 1 for other kinds, 0 for an unknown one.
[[nodiscard]] std::size_t CGImageSourceGetCount(PhotoData& data);
/// Returns all property dictionaries of an image: of the first those of CGImageSource and
/// furtherDictionaries(); of further ones of a JPEG file their size, "{Exif}", "{TIFF}" and
/// "{GPS}", of other kinds what holds for the whole file. InvalidArgument beyond the last image,
/// InvalidData when nothing can be read.
[[nodiscard]] Result<QVariantMap> CGImageSourceCopyPropertiesAtIndex(PhotoData& data,
                                                                     std::size_t index);

} // namespace clipheave::platform
