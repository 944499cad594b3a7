# SPDX-License-Identifier: GPL-3.0-or-later
clipheave_fuzz(mpeg_tags platform_formats)
