# SPDX-License-Identifier: GPL-3.0-or-later
clipheave_fuzz(plist platform_plist)
