// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/guarded.h"

#include "platform/foundation/messages.h"

#include <new>

namespace clipheave::platform {

Error errorOf(const std::exception& thrown) {
    if (dynamic_cast<const std::bad_alloc*>(&thrown))
        return {ErrorCode::Io, {}, {}, kOutOfMemory};
    return {ErrorCode::Io, {}, {}, QString::fromLocal8Bit(thrown.what())};
}

} // namespace clipheave::platform
