// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/write/isobmff_writer.h"

#include <QString>

#include <optional>

// The types of output files that exports and video writers take.
namespace clipheave::platform {

inline constexpr char16_t AVFileTypeQuickTimeMovie[] = u"com.apple.quicktime-movie";
inline constexpr char16_t AVFileTypeMPEG4[] = u"public.mpeg-4";
inline constexpr char16_t AVFileTypeAppleM4V[] = u"com.apple.m4v-video";
inline constexpr char16_t AVFileTypeAppleM4A[] = u"com.apple.m4a-audio";

/// Returns the container of one of the types above, or nothing for any other text.
[[nodiscard]] std::optional<OutputContainer> outputContainerOf(const QString& fileType);

} // namespace clipheave::platform
