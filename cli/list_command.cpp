// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/commands.h"
#include "cli/item_stream.h"
#include "cli/item_table.h"
#include "cli/write_run.h"

namespace clipheave::cli {

namespace {

/// Takes the items of a run as they come; none is kept.
class Listing {
public:
    Listing(Console& console, bool json, bool metadata)
        : m_json(json), m_stream(console, metadata) {}

    void add(const media::IKImageItem& item) {
        m_isEmpty = m_tableIsEmpty = false;
        m_hasProblems = m_hasProblems || !item.problem.isEmpty();
        m_json ? m_stream.add(item) : m_table.add(item);
    }
    /// A skipped path stands in the JSON list only; standard error names it.
    void add(const media::SkippedPath& skipped) {
        m_isEmpty = false;
        m_hasProblems = true;
        if (m_json)
            m_stream.add(skipped);
    }
    [[nodiscard]] bool isEmpty() const { return m_isEmpty; }
    /// Some file gave no item, or could not be read in full.
    [[nodiscard]] bool hasProblems() const { return m_hasProblems; }
    /// Returns false when standard output could not be written.
    [[nodiscard]] bool finish() {
        if (m_json)
            return m_stream.finish();
        return m_tableIsEmpty || printOut(m_table.text());
    }

private:
    bool m_json;
    bool m_isEmpty = true, m_tableIsEmpty = true;
    bool m_hasProblems = false;
    ItemStream m_stream;
    ItemTable m_table;
};

} // namespace

int runList(const GlobalOptions& global, const ListOptions& options, Console& console) {
    Listing listing(console, global.json, options.metadata);
    int count = 0;
    media::MediaImport import([&](const media::ItemPointer& item) {
        console.progress(QStringLiteral("read"), ++count, 0);
        if (item)
            listing.add(*item);
    });
    import.setKeepsItems(false);
    import.setTakesFilesOnce(true);
    import.setStopRequested(&isInterrupted);
    if (options.photos)
        import.importPhotos(options.paths);
    else
        import.importMediaItemsThreader(options.paths);
    console.clearProgress();
    if (isInterrupted())
        return interruption();
    for (const media::SkippedPath& skipped : import.skipped())
        listing.add(skipped);
    reportSkipped(import);
    reportUnknown(import);
    if (listing.isEmpty())
        return reportNothingToDo();
    const bool written = listing.finish();
    return written && !listing.hasProblems() ? kAllDone : kSomeFailed;
}

} // namespace clipheave::cli
