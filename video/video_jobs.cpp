// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_jobs.h"
