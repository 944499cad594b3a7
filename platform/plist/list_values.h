// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"
#include "platform/plist/libplist.h"

#include <QVariant>

namespace clipheave::platform {

/// Returns the value of a node with all that it holds, which has been checked for its levels.
[[nodiscard]] QVariant valueOfNode(plist_t node);
/// Returns the node of a value; null for an invalid value. Fails as dataWithPropertyList() says.
[[nodiscard]] Result<PlistNode> nodeOfValue(const QVariant& value, int levelsAbove = 0);

} // namespace clipheave::platform
