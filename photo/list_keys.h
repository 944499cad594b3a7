// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::photo {

/// What a key of the property dictionaries holds, and so what a list may give for it.
enum class ListValue {
    Text,
    Texts, ///< an array
    Number,
    Numbers,    ///< an array
    DateTime,   ///< "yyyy:MM:dd HH:mm:ss"
    Day,        ///< "yyyy:MM:dd"
    Clock,      ///< "HH:mm:ss", with a fraction of up to six digits or without
    Coordinate, ///< a number whose sign is in the key of the same name with "Ref"
    Version,    ///< fixed
    OfImage,    ///< describes the stored image, not what is known of the photo
};

/// A key and the dictionary to which it belongs.
struct ListKey {
    QString name;       ///< "DateTimeOriginal"
    QString dictionary; ///< "{Exif}"
    ListValue value = ListValue::Text;
};
/// Returns the row of a key, which all dictionaries have under different names; null for a name
/// that none of "{TIFF}", "{Exif}", "{GPS}" and "{IPTC}" has.
[[nodiscard]] const ListKey* listKey(const QString& name);

/// A number that its dictionary holds as an absolute value and a letter or digit.
struct SignedKey {
    const char* name;     ///< "Latitude"
    const char* positive; ///< "N"
    const char* negative; ///< "S"
    double largest;
};
/// Returns the row of a key of ListValue::Coordinate; null for others.
[[nodiscard]] const SignedKey* signedKey(const QString& name);
/// Returns the key of the letter: "LatitudeRef".
[[nodiscard]] QString referenceKey(const QString& name);

} // namespace clipheave::photo
