// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/av_file_type.h"

namespace clipheave::platform {

std::optional<OutputContainer> outputContainerOf(const QString& type) {
    if (type == QStringView(AVFileTypeQuickTimeMovie))
        return OutputContainer::QuickTimeMovie;
    if (type == QStringView(AVFileTypeAppleM4V))
        return OutputContainer::M4V;
    if (type == QStringView(AVFileTypeAppleM4A))
        return OutputContainer::M4A;
    if (type == QStringView(AVFileTypeMPEG4))
        return OutputContainer::Mp4;
    return std::nullopt;
}

} // namespace clipheave::platform
