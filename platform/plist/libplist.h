// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/handles.h"

#include <plist/plist.h>

#include <cstdint>
#include <memory>

// libplist under one set of names, from release 2.2 on.
namespace clipheave::platform {

using PlistNode = std::unique_ptr<void, Releaser<plist_free>>;

/// Makes a number. Release 2.3 renamed the type of numbers, and tells negative ones from large ones
/// by the function that makes them; the older function stands for both before.
inline plist_t newPlistInteger(std::int64_t value) {
#ifdef PLIST_UINT
    return plist_new_int(value);
#else
    return plist_new_uint(static_cast<std::uint64_t>(value));
#endif
}

} // namespace clipheave::platform
