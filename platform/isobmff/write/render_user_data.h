// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/media/model/metadata_item.h"

#include <QByteArray>

#include <cstdint>
#include <vector>

// Source: QuickTime user data text; 3GPP TS 26.244 section 8.
namespace clipheave::platform {

/// One child of `udta`: "date" as bare text, "loci" from ISO 6709 text, ©-codes as QuickTime text,
/// the rest as 3GPP text; bytes of unknown codes as they are.
[[nodiscard]] QByteArray renderUserData(std::uint32_t code, const AVMetadataItem& item,
                                        Notes& notes);

/// Returns the `loci` boxes of a file, one for each language, with the position of `item` in place
/// of their own: names, roles, bodies and notes stay. Empty when the item holds no position or none
/// of the boxes can take it.
[[nodiscard]] QByteArray movedPlaces(const std::vector<QByteArray>& places,
                                     const AVMetadataItem& item);

} // namespace clipheave::platform
