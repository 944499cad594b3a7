// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string_view>

namespace clipheave::platform {

/// An identifier under which files hold a field of the application's record, with the field's
/// number, from 1. Several identifiers have one number: a new value replaces what was carried over
/// under any of them, else an older text would win when the file is read again.
struct FieldIdentifier {
    std::string_view identifier; ///< "mdta/com.apple.quicktime.copyright"
    int field = 0;
};
/// A table that outlives every export: the application's own.
using FieldIdentifiers = std::span<const FieldIdentifier>;

} // namespace clipheave::platform
