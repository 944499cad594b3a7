# SPDX-License-Identifier: GPL-3.0-or-later
clipheave_fuzz(picture platform_media_model)
