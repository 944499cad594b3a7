// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

#include <QString>

#include <functional>

// The texts of metadata mode: tag words, date layouts, numbers.
namespace clipheave::batch {

/// Reads a file's creation date as "YYYY-MM-DD HH:MM:SS +0000".
using CreationDateText = std::function<QString(const QString& path)>;

/// The template with every tag word replaced by the item's value and without the characters
/// "{}(),/". Not numbered yet. `dateFormat` is a title of renameDateFormatTitles().
[[nodiscard]] QString nameFromTemplate(const QString& filenameTemplate,
                                       const media::IKImageItem& item, const QString& dateFormat,
                                       const CreationDateText& creationDateText);

/// What stands for the camera date; null when the format's title is none of
/// renameDateFormatTitles().
[[nodiscard]] QString cameraDateText(const media::IKImageItem& item, const QString& dateFormat,
                                     const CreationDateText& creationDateText);

/// Six digits at least: 7 is "000007", 1234567 is "1234567".
[[nodiscard]] QString paddedNumber(int number);

} // namespace clipheave::batch
