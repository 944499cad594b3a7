// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"
#include "platform/foundation/result.h"

#include <QByteArray>

namespace clipheave::platform {

/// A compressed or an inflated movie header beyond this is damage.
inline constexpr std::uint64_t kMaxInflatedHeader = 32u << 20;

/// Returns the movie header, a whole `moov` box, that the payload of a `cmov` box holds compressed.
/// NotSupported for another method than zlib, LimitExceeded when it is too large, InvalidData where
/// it is damaged, does not give as many bytes as it announces, or holds no header. Source:
/// QuickTime File Format, "Compressed Movie Resources".
[[nodiscard]] Result<QByteArray> inflatedMovieHeader(ByteView cmov);

} // namespace clipheave::platform
