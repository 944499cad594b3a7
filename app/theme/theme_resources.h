// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::app {

/// Makes the built-in files (":/icons", ":/images", ":/theme", ":/map") known. Further calls do
/// nothing.
void initThemeResources();

} // namespace clipheave::app
