// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"
#include "platform/media/model/media_engine.h"

#include <memory>
#include <optional>

namespace clipheave::platform {

inline constexpr char16_t kUTTypeGIF[] = u"com.compuserve.gif";

/// The dictionary kCGImagePropertyGIFDictionary.
struct CGImageGIFProperties {
    /// How often the animation is shown, 0: without end; absent: once.
    std::optional<int> kCGImagePropertyGIFLoopCount;
};

/// An animated image file that appears in one step. Images are written as they come,
/// each with a palette of its own; no image carries a delay, players then use their default.
class CGImageDestination {
public:
    ~CGImageDestination();
    CGImageDestination(const CGImageDestination&) = delete;
    CGImageDestination& operator=(const CGImageDestination&) = delete;

private:
    CGImageDestination();
    struct State;
    std::unique_ptr<State> m_state;
    friend Result<std::unique_ptr<CGImageDestination>>
    CGImageDestinationCreateWithURL(const QString&, const QString&, int);
    friend void CGImageDestinationTakePermissionsOf(CGImageDestination&, const QString&);
    friend Result<void> CGImageDestinationSetProperties(CGImageDestination&,
                                                        const CGImageGIFProperties&);
    friend Result<void> CGImageDestinationAddImage(CGImageDestination&, const RawFrame&);
    friend Result<void> CGImageDestinationFinalize(CGImageDestination&);
};

/// A file at `path` of up to `count` images; nothing stands there before it is finalized.
/// NotSupported for a type other than kUTTypeGIF, InvalidArgument without an image.
[[nodiscard]] Result<std::unique_ptr<CGImageDestination>>
CGImageDestinationCreateWithURL(const QString& path, const QString& type, int count);
/// Gives the file the permissions of the one at `source`; before it is finalized.
void CGImageDestinationTakePermissionsOf(CGImageDestination& destination, const QString& source);
/// Before the first image; InvalidArgument afterwards or for a count over 65535.
[[nodiscard]] Result<void> CGImageDestinationSetProperties(CGImageDestination& destination,
                                                           const CGImageGIFProperties& properties);
/// All images have the size of the first, at most 65535 x 65535; InvalidArgument otherwise and
/// for more than were announced.
[[nodiscard]] Result<void> CGImageDestinationAddImage(CGImageDestination& destination,
                                                      const RawFrame& image);
/// Puts the file under its name, replacing an older one. InvalidArgument without an image, the
/// first failure of the writing otherwise; then nothing is left.
[[nodiscard]] Result<void> CGImageDestinationFinalize(CGImageDestination& destination);

} // namespace clipheave::platform
