# SPDX-License-Identifier: GPL-3.0-or-later
clipheave_fuzz(photo_writer platform_image)
