// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::app {

/// Tells assistive technology what the drawn widgets are (images, a video) in place of "filler".
/// Once, before the first of them is asked.
void installAccessibleRoles();

} // namespace clipheave::app
