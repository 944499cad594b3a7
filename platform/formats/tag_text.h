// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"

#include <QByteArrayView>
#include <QString>
#include <QStringList>

namespace clipheave::platform {

/// UTF-8 where the bytes are valid UTF-8, else Windows-1252 (Latin-1 with its printable additions).
/// Ends at the first NUL; outer blanks are dropped.
[[nodiscard]] QString textOfUnknownEncoding(QByteArrayView bytes);
/// As above, but MacRoman where it is not UTF-8: texts of AIFF files.
[[nodiscard]] QString textOfMacFile(QByteArrayView bytes);

/// Encodings of ID3v2 texts (ID3v2.4.0 structure, section 4); any other number counts as Latin-1.
enum class Id3Encoding : std::uint8_t { Latin1 = 0, Utf16 = 1, Utf16BigEndian = 2, Utf8 = 3 };

/// Cuts the text up to the next terminator off the front of `bytes`; without a terminator all is
/// the text.
[[nodiscard]] QString takeId3Text(Id3Encoding encoding, ByteView& bytes);
/// All texts between terminators, empty ones left out.
[[nodiscard]] QStringList id3Texts(Id3Encoding encoding, ByteView bytes);

} // namespace clipheave::platform
