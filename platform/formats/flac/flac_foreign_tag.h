// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"

#include <QStringList>

namespace clipheave::platform {

/// What an ID3 tag says that some programs write in front of a FLAC file, where the format has no
/// place for one (RFC 9639, section 8): most readers show the comments alone, others the tag alone.
struct FlacForeignTag {
    QByteArrayList comments; ///< "NAME=text", in the order of the frames
    EncodedImage cover;      ///< null: none
    QStringList notCarried;  ///< frames that no comment holds, each once ("PRIV", "TXXX:a=b")
};
/// Reads a tag. The comments that are `present` win over its texts, as they do in the reader; a
/// text that says something else is not carried. So is a cover where the file `hasPicture`, and
/// what is over 1 MiB of texts in all.
[[nodiscard]] FlacForeignTag readFlacForeignTag(FileReader& reader, const ByteRange& tag,
                                                const QByteArrayList& present, bool hasPicture);

} // namespace clipheave::platform
