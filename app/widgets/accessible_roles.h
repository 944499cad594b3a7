// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::app {

/// Gives the drawn widgets the roles that assistive technology reports (image, video) in place of
/// "filler". Call it before assistive technology meets the first of them; later calls do nothing.
void installAccessibleRoles();

} // namespace clipheave::app
