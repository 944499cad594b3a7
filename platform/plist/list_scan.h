// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"
#include "platform/foundation/result.h"

#include <QString>

// What a list must be before libplist may see it. libplist 2.2 crashes on 100,000 nested arrays in
// 1 MB of the binary form and on 1,000,000 in XML, and copies a shared object for each reference.
namespace clipheave::platform {

/// Fails for a text that is not well-formed XML, declares anything of its own in its document type,
/// or has too many levels or elements.
[[nodiscard]] Result<void> checkXmlList(const QString& text);
/// Fails for a list whose trailer, offsets or references lead outside of it, that holds itself, or
/// that has too many levels or too much content. Layout: the description in CFBinaryPList.c.
[[nodiscard]] Result<void> checkBinaryList(ByteView bytes);

} // namespace clipheave::platform
