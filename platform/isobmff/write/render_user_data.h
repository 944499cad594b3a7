// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/media/model/metadata_item.h"

#include <QByteArray>

#include <cstdint>

// Source: QuickTime user data text; 3GPP TS 26.244 section 8.
namespace clipheave::platform {

/// One child of `udta`: "date" as bare text, "loci" from ISO 6709 text, ©-codes as QuickTime text,
/// the rest as 3GPP text; bytes of unknown codes as they are.
[[nodiscard]] QByteArray renderUserData(std::uint32_t code, const AVMetadataItem& item,
                                        Notes& notes);

} // namespace clipheave::platform
