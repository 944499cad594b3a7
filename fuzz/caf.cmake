# SPDX-License-Identifier: GPL-3.0-or-later
clipheave_fuzz(caf platform_formats)
