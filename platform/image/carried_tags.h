// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <QByteArray>
#include <QSize>

#include <memory>

namespace clipheave::platform {

/// The metadata of a photo of any kind on its way into a JPEG file that is made of its pixels: EXIF
/// with position and maker notes, IPTC, XMP and the comment. What describes the file that it came
/// from stays behind: thumbnails, strips and tiles, colour profile, raw settings, the parts of a
/// motion photo or gain map. One thread at a time.
class CarriedTags {
public:
    /// Reads what the file holds; nothing when it has no tags or none that can be read.
    [[nodiscard]] static CarriedTags of(FileReader& reader);
    CarriedTags();
    CarriedTags(CarriedTags&&) noexcept;
    CarriedTags& operator=(CarriedTags&&) noexcept;
    ~CarriedTags();

    /// Returns whether the tags name Adobe RGB as the colours of a photo without a profile. Source:
    /// DCF 2.0, 3.6: uncalibrated colours and the interoperability index "R03".
    [[nodiscard]] bool isAdobeRgb() const;
    /// States the orientation 1, the colours of sRGB and the chroma positions of JFIF, in EXIF and
    /// where XMP states them.
    void describeUprightSrgb();
    /// States the size in EXIF, and where XMP states it.
    void setPixelDimensions(QSize size);

    struct Segments {
        QByteArray bytes; ///< APP1, APP13 and COM with their markers and lengths
        Notes leftOut;    ///< what does not fit or cannot be rendered
    };
    /// Returns the metadata as segments of a JPEG file.
    [[nodiscard]] Segments segments() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Returns the JPEG file with the segments behind its first one (JFIF), where readers expect them;
/// as it is when it does not begin as a JPEG file does.
[[nodiscard]] QByteArray withSegments(const QByteArray& jpeg, const QByteArray& segments);

} // namespace clipheave::platform
