// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_manager.h"
#include "platform/foundation/result.h"

#include <QSize>
#include <QString>
#include <QVariantMap>

namespace clipheave::platform {

/// A photo opened for its properties; pixels are not decoded.
class CGImageSource {
public:
    /// Reads headers only. InvalidData when nothing about the image can be read, with the reason.
    [[nodiscard]] static Result<CGImageSource> createWithPath(const QString& path);

    /// The property dictionaries of image 0 under their published names: top level "PixelWidth",
    /// "PixelHeight", "Orientation", "DPIWidth", "DPIHeight", "ColorModel", "Depth", "ProfileName",
    /// and the dictionaries "{Exif}", "{TIFF}", "{GPS}", "{IPTC}" (QVariantMap each).
    [[nodiscard]] const QVariantMap& properties() const { return m_properties; }
    [[nodiscard]] QSize pixelSize() const; ///< as stored, not rotated; empty when unknown
    [[nodiscard]] const FileAttributes& attributes() const { return m_attributes; }
    /// Why some of it could not be read; null when all went well.
    [[nodiscard]] const Message& problem() const { return m_problem; }

private:
    CGImageSource() = default;
    QVariantMap m_properties;
    FileAttributes m_attributes;
    Message m_problem;
};

} // namespace clipheave::platform
