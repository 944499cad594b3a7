// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/json_writer.h"
#include "jobs/write_outcome.h"
#include "media/image_item.h"
#include "media/media_import.h"

namespace clipheave::cli {

/// Writes one object for a listed item; `withMetadata` adds the raw items in container order.
void writeItem(JsonWriter& json, const media::IKImageItem& item, bool withMetadata);
/// Writes one object for a path that the import skipped.
void writeSkipped(JsonWriter& json, const media::SkippedPath& skipped);
/// Writes {"items":[{"source","outputs","status","message","seconds"}]}
void writeOutcomes(JsonWriter& json, const std::vector<jobs::WriteOutcome>& outcomes);
[[nodiscard]] const char* statusName(jobs::WriteStatus status);

} // namespace clipheave::cli
