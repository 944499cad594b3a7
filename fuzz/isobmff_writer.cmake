# SPDX-License-Identifier: GPL-3.0-or-later
clipheave_fuzz(isobmff_writer platform_isobmff)
