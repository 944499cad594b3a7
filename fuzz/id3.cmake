# SPDX-License-Identifier: GPL-3.0-or-later
clipheave_fuzz(id3 platform_formats)
