// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace clipheave::metadata {

/// Leaves the bytes of the cover that an MP3 file is about to get in "art.jpg" of the user's
/// temporary folder, replacing it in one step. Deliberate: the name says JPEG, the bytes are TIFF,
/// and the file stays; other programs pick it up there. A failure is logged and no more.
void writeTemporaryArtwork(const QByteArray& bytes);

} // namespace clipheave::metadata
