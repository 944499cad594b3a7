// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/rename_plan.h"
