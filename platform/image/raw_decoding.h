// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"
#include "platform/foundation/result.h"

#include <QImage>

#include <memory>
#include <optional>

namespace clipheave::platform {

/// Returns whether the first bytes are those of a raw photo, or of TIFF, which most of them use.
[[nodiscard]] bool mayBeRaw(ByteView head);

/// A raw photo, opened with its headers read. One thread at a time.
class RawPhoto {
public:
    /// InvalidData with the library's reason when it is none that the library knows, LimitExceeded
    /// when hasTooManyPixels().
    [[nodiscard]] static Result<RawPhoto> open(const FileReader& reader);
    RawPhoto(RawPhoto&&) noexcept;
    RawPhoto& operator=(RawPhoto&&) noexcept;
    ~RawPhoto();

    /// Returns the size of the developed image, as stored, before the rotation.
    [[nodiscard]] QSize size() const;
    /// Returns the largest JPEG or bitmap that the camera has put into the file, upright; null when
    /// there is none that can be decoded. `side`: a JPEG is decoded to at least as many pixels on
    /// its longer side, which is faster than all of them.
    [[nodiscard]] QImage preview(std::optional<int> side = {});
    /// Returns the image as people know it, upright: the camera's own where it is as large as the
    /// photo (at least nine tenths of each side), because it has the camera's colours, else
    /// developed in sRGB.
    [[nodiscard]] Result<QImage> image();

private:
    struct State;
    explicit RawPhoto(std::unique_ptr<State> state);
    [[nodiscard]] Result<QImage> developed();
    std::unique_ptr<State> m_state;
};

} // namespace clipheave::platform
