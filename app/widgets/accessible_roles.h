// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::app {

/// Gives the drawn widgets the roles that assistive technology reports (image, video) in place of
/// "filler".
/// Once, before the first of them is asked.
void installAccessibleRoles();

} // namespace clipheave::app
