# SPDX-License-Identifier: GPL-3.0-or-later
clipheave_fuzz(au platform_formats)
