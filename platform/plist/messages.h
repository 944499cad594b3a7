// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// The sentences of this layer; their words stand in the tables of the fronts.
namespace clipheave::platform {

inline constexpr MessageCode kReadPropertyList{"read-property-list"};
inline constexpr MessageCode kWritePropertyList{"write-property-list"};

inline constexpr MessageCode kNoPropertyList{"no-property-list"};
inline constexpr MessageCode kPropertyListTooLarge{"property-list-too-large"};
inline constexpr MessageCode kPropertyListTooDeep{"property-list-too-deep"}; ///< levels
inline constexpr MessageCode kPropertyListHoldsItself{"property-list-holds-itself"};
inline constexpr MessageCode kPropertyListDeclares{"property-list-declares"};
inline constexpr MessageCode kNoPropertyListValue{"no-property-list-value"}; ///< type

} // namespace clipheave::platform
