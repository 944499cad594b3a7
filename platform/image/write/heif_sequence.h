// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/write/write_offsets.h"

#include <QByteArray>

namespace clipheave::platform {

/// Returns whether the `moov` box of an image sequence has metadata in other places of the file;
/// also where the box is damaged.
[[nodiscard]] bool hasLocatedTexts(const QByteArray& moov);
/// Makes user data, metadata and foreign boxes free space and the dates zero; sizes stay.
/// InvalidData for a damaged header.
[[nodiscard]] Result<void> removeSequenceTexts(QByteArray& moov);
/// Lets the chunk offsets follow where the bytes move; sizes stay. LimitExceeded when one no longer
/// fits, InvalidData when it leads to no kept byte. Source: ISO/IEC 14496-12:2015, 8.7.5.
[[nodiscard]] Result<void> moveSequence(QByteArray& moov, const OffsetMap& map);

} // namespace clipheave::platform
