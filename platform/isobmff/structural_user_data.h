// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/box.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace clipheave::platform {

/// Children of the movie's `udta` that are structure, not metadata: the reader makes no items of
/// them, the writer keeps them whatever the list of items says. Sources: QuickTime File Format,
/// "User data atoms" (play settings); ISO/IEC 14496-12 section 9 (hints); the chapter list of MP4
/// audio books; slow-motion parameters of phones.
inline constexpr std::array kStructuralUserData{
    fourCc("chpl"), // chapter list
    fourCc("ndrm"), // written with it, says that there is no protection
    fourCc("WLOC"), // window location
    fourCc("LOOP"), // loop style
    fourCc("SelO"), // play the selection only
    fourCc("AllF"), // play all frames
    fourCc("ptv "), // full-screen playing
    fourCc("hnti"), // hint information of streaming servers
    fourCc("hinf"), // their statistics
    fourCc("tagc"), // media characteristic
    fourCc("FIEL"), // field order
    fourCc("SDLN"), // sequence playing
    fourCc("smrd"), // slow motion
    fourCc("smta"), // slow motion: speed regions
};
[[nodiscard]] constexpr bool isStructuralUserData(std::uint32_t code) {
    return std::find(kStructuralUserData.begin(), kStructuralUserData.end(), code) !=
           kStructuralUserData.end();
}

} // namespace clipheave::platform
