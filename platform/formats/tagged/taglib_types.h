// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <taglib.h>

#include <cstddef>

// What differs between releases 1.13 and 2.0 of the tag library.
namespace clipheave::platform {

#if TAGLIB_MAJOR_VERSION >= 2
using TagLibLength = std::size_t;
using TagLibStart = TagLib::offset_t; ///< of bytes that are inserted or removed
using TagLibOffset = TagLib::offset_t;
#else
using TagLibLength = unsigned long;
using TagLibStart = unsigned long;
using TagLibOffset = long;
#endif

} // namespace clipheave::platform
