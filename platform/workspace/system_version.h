// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QString>

#include <cstdint>

namespace clipheave::platform {

/// The system's version, as its three selectors give it.
struct SystemVersion {
    std::uint32_t major = 0, minor = 0, bugFix = 0;
    friend bool operator==(const SystemVersion&, const SystemVersion&) = default;
};

/// Returns the distribution's version ("12", "24.04"); InvalidData when it has no number.
[[nodiscard]] Result<SystemVersion> systemVersion();
/// Returns "24.04.1" as 24, 4, 1; missing parts are 0. InvalidData without a leading number.
[[nodiscard]] Result<SystemVersion> parseSystemVersion(const QString& text);
/// Returns the parts of a version packed as binary-coded digits, below 0x1040: the high two nibbles
/// are the major number, then minor and bug fix.
[[nodiscard]] SystemVersion decodePackedVersion(std::uint32_t packed);

} // namespace clipheave::platform
