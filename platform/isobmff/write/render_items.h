// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/media/model/metadata_item.h"

#include <QByteArray>

#include <cstdint>

// Boxes made of new metadata items. Sources: iTunes metadata list and QuickTime metadata (QuickTime
// File Format, "Metadata").
namespace clipheave::platform {

/// A box with a 32-bit size.
[[nodiscard]] QByteArray renderBox(std::uint32_t type, QByteArrayView payload);
/// Carried bytes as a box that may stand anywhere: the size field says what is there, whatever it
/// said before (0 and overlong sizes reach to the end of the parent). Empty when it is not one.
[[nodiscard]] QByteArray renderCarriedBox(const QByteArray& bytes);

/// One entry of the iTunes list for `key`: a four-character code, or "com.apple.iTunes.NAME" for a
/// "----" entry. Empty, with a note, when the value cannot be stored.
[[nodiscard]] QByteArray renderListEntry(const QByteArray& key, const AVMetadataItem& item,
                                         Notes& notes);
/// The `data` box of one value of a QuickTime metadata key.
[[nodiscard]] QByteArray renderKeyData(const AVMetadataItem& item, Notes& notes);
/// The three letters of a language tag in 15 bits ("und" when there is none).
[[nodiscard]] std::uint16_t packedLanguage(const QString& tag);

} // namespace clipheave::platform
