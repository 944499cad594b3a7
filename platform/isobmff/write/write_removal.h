// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/box.h"

#include <QByteArray>
#include <QStringList>

// What a removal of the metadata takes out of a file beside the items of its lists.
namespace clipheave::platform {

/// The payload of `moov` without foreign metadata (camera makers' and XMP `uuid` boxes, padding,
/// boxes that are no part of a movie) and without what its tracks say of themselves (names, titles,
/// camera and lens, also in handlers, sample tables and sample descriptions). Stays: all that
/// playing needs, spherical video, images, the sample tables.
[[nodiscard]] QByteArray withoutForeignMetadata(ByteView moovPayload);

/// True for a box of the file's top level that is needed for playing, or holds images; `head` is
/// the beginning of its payload.
[[nodiscard]] bool staysAtRemoval(const Box& box, ByteView head);

/// The sample formats of the tracks of timed metadata ("gpmd", "mebx"), which stay: they may hold
/// positions.
[[nodiscard]] QStringList timedMetadataFormats(ByteView moovPayload);

} // namespace clipheave::platform
