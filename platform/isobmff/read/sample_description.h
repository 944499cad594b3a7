// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"
#include "platform/media/model/media_facts.h"

namespace clipheave::platform {

/// Sets codec, size, sample rate, channels and announced bit rate from the payload of an `stsd`
/// box, of which at least the first entry should be there.
void readSampleDescription(AVAssetTrack& track, ByteView stsd, bool quickTime);

} // namespace clipheave::platform
