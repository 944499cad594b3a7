// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"

namespace clipheave::platform {

/// Returns how many bytes of a FLAC packet stand before the ID3v1, APE and Lyrics3 tags at its end:
/// the format has no place for a tag behind the audio, so libavformat leaves it on the last packet.
/// A packet whose checksum holds is all audio.
[[nodiscard]] std::uint64_t flacAudioSize(ByteView packet);

} // namespace clipheave::platform
