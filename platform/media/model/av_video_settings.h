// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVariantMap>

namespace clipheave::platform {

/// Settings of a reader's output or a writer's input: values under the keys below.
using AVVideoSettings = QVariantMap;

inline constexpr char16_t kCVPixelBufferPixelFormatTypeKey[] = u"PixelFormatType"; ///< a number
inline constexpr char16_t AVVideoCodecKey[] = u"AVVideoCodecKey";                  ///< a text
inline constexpr char16_t AVVideoWidthKey[] = u"AVVideoWidthKey";                  ///< pixels
inline constexpr char16_t AVVideoHeightKey[] = u"AVVideoHeightKey";                ///< pixels

inline constexpr char16_t AVVideoCodecTypeH264[] = u"avc1";

} // namespace clipheave::platform
