// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/console.h"
#include "cli/json_writer.h"
#include "media/media_import.h"

namespace clipheave::cli {

/// Writes a list of items to standard output as they come: one JSON array, an object each, which is
/// never in memory as a whole.
class ItemStream {
public:
    /// `withMetadata` adds the raw metadata items of each file; the progress bar of `console` makes
    /// room for what is written.
    ItemStream(Console& console, bool withMetadata)
        : m_console(console), m_withMetadata(withMetadata) {}

    void add(const media::IKImageItem& item);
    void add(const media::SkippedPath& skipped);
    /// Closes the array. Returns false when standard output could not be written, now or before.
    /// Without it the array stays open: half a list is not taken for a whole one.
    [[nodiscard]] bool finish();

private:
    void begin();
    void writeOut(const QByteArray& bytes);

    Console& m_console;
    JsonWriter m_json;
    bool m_withMetadata;
    bool m_begun = false;
    bool m_written = true; ///< everything so far
};

} // namespace clipheave::cli
