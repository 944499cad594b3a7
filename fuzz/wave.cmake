# SPDX-License-Identifier: GPL-3.0-or-later
clipheave_fuzz(wave platform_formats)
