// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <QVariantMap>

namespace clipheave::platform {

/// Returns the dictionaries of a photo besides those that every list of photos needs, under their
/// published names: "{JFIF}", "{PNG}", "{GIF}", "{8BIM}" of its format, "{ExifAux}" and the makers'
/// ("{MakerCanon}" and so on, with the names of the tag library where no other is published). Reads
/// the tags of the file; empty for what it does not have or what cannot be read.
[[nodiscard]] QVariantMap furtherDictionaries(FileReader& reader);

/// Returns "{JFIF}" of a JPEG file: version, densities and their unit, whether it is progressive.
[[nodiscard]] QVariantMap jfifDictionary(FileReader& reader);
/// Returns "{PNG}": gamma, chromaticities, rendering intent, densities, interlacing, its texts.
[[nodiscard]] QVariantMap pngDictionary(FileReader& reader);
/// Returns "{GIF}" of the first image: delay, repetitions, size, whether a table of colours is for
/// all images.
[[nodiscard]] QVariantMap gifDictionary(FileReader& reader);
/// Returns "{8BIM}" of a Photoshop document: the version of its format.
[[nodiscard]] QVariantMap photoshopDictionary(FileReader& reader);

} // namespace clipheave::platform
