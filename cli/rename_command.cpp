// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch_rename.h"
#include "cli/json_writer.h"
#include "cli/write_run.h"
#include "platform/foundation/paths.h"

#include <chrono>

namespace clipheave::cli {

namespace {

using batch::RenameMove;
using batch::RenameNote;
using batch::RenameOutcome;
using jobs::WriteOutcome;
using jobs::WriteStatus;

/// Collects the outcomes of a job and shows how far it is.
class RenameRun {
public:
    RenameRun(Console& console, const QString& what) : m_console(console), m_what(what) {}

    batch::RenameProgress progress() {
        batch::RenameProgress progress;
        progress.done = [this](const RenameOutcome& outcome, std::size_t index, std::size_t total) {
            take(outcome);
            m_console.progress(m_what, static_cast<int>(index), static_cast<int>(total));
        };
        progress.stopRequested = &isInterrupted;
        return progress;
    }
    [[nodiscard]] std::vector<WriteOutcome>& outcomes() { return m_outcomes; }

private:
    void take(const RenameOutcome& outcome) {
        const auto now = std::chrono::steady_clock::now();
        WriteOutcome written;
        written.source = outcome.source;
        if (outcome.moved)
            written.outputs.append(outcome.target);
        written.status = outcome.moved ? WriteStatus::Completed : WriteStatus::Failed;
        written.message = outcome.message;
        written.seconds = std::chrono::duration<double>(now - m_last).count();
        m_last = now;
        m_outcomes.push_back(std::move(written));
    }

    Console& m_console;
    QString m_what;
    std::vector<WriteOutcome> m_outcomes;
    std::chrono::steady_clock::time_point m_last = std::chrono::steady_clock::now();
};

/// "old -> new" and what a user should know of it; files that would stay have no line.
int printPlan(const GlobalOptions& global, const std::vector<RenameMove>& plan,
              const std::vector<media::SkippedPath>& skipped) {
    bool allMoves = skipped.empty();
    QByteArray lines;
    for (const RenameMove& move : plan) {
        allMoves = allMoves && !move.stays;
        const QString note = batch::renameNoteText(move.note);
        if (!move.stays)
            lines += platform::nativePath(move.source) + " -> " +
                     platform::nativePath(move.target) + '\n';
        if (move.stays)
            printError(QStringLiteral("%1 stays: %2").arg(move.source, note));
        else if (!note.isEmpty() && !global.quiet)
            printError(QStringLiteral("%1: %2").arg(move.source, note));
    }
    for (const media::SkippedPath& path : skipped)
        printError(QStringLiteral("%1: skipped: %2").arg(path.path, path.reason.text()));
    return printOut(lines) && allMoves ? kAllDone : kSomeFailed;
}

/// {"items":[{"source","outputs","status":"planned"|"failed"|"skipped","message"}]}
int printPlanAsJson(const std::vector<RenameMove>& plan,
                    const std::vector<media::SkippedPath>& skipped) {
    bool allMoves = skipped.empty();
    JsonWriter json;
    json.beginObject().key("items").beginArray();
    for (const RenameMove& move : plan) {
        allMoves = allMoves && !move.stays;
        json.beginObject();
        json.key("source").string(move.source);
        json.key("outputs").beginArray();
        if (!move.stays)
            json.string(move.target);
        json.endArray();
        json.key("status").string(move.stays ? u"failed" : u"planned");
        json.key("message").string(batch::renameNoteText(move.note));
        json.endObject();
    }
    for (const media::SkippedPath& path : skipped) {
        json.beginObject();
        json.key("source").string(path.path);
        json.key("outputs").beginArray().endArray();
        json.key("status").string(u"skipped");
        json.key("message").string(path.reason.text());
        json.endObject();
    }
    json.endArray().endObject();
    return printOut(json.take()) && allMoves ? kAllDone : kSomeFailed;
}

int failRename(const platform::Error& error) {
    printError(error.text());
    return error.code == platform::ErrorCode::NotFound ? kNothingToDo : kSomeFailed;
}

/// The items that an interruption has left alone.
void addCancelled(std::vector<WriteOutcome>& outcomes, const std::vector<RenameMove>& plan) {
    while (outcomes.size() < plan.size()) {
        WriteOutcome outcome;
        outcome.source = plan[outcomes.size()].source;
        outcome.status = WriteStatus::Cancelled;
        outcomes.push_back(std::move(outcome));
    }
}

int undoRename(const GlobalOptions& global, Console& console) {
    RenameRun run(console, QStringLiteral("put back"));
    const auto undone = batch::undoLastRename(run.progress());
    console.clearProgress();
    if (!undone)
        return failRename(undone.error());
    return reportOutcomes(global, run.outcomes(), true);
}

/// Why the options make no sense together; null when they do.
QString renameUsageFault(const RenameOptions& options) {
    if (options.undo)
        return options.mode || options.dryRun || options.number || !options.paths.isEmpty()
                   ? QStringLiteral("--undo stands alone")
                   : QString();
    if (!options.mode)
        return QStringLiteral("rename takes either --text or --template, or --undo");
    if (options.paths.isEmpty())
        return QStringLiteral("rename takes files and folders");
    if (options.dateFormat.isNull())
        return {};
    if (options.mode == batch::RenameMode::CustomText)
        return QStringLiteral("--date-format belongs to --template");
    if (!batch::renameDateFormatTitles().contains(options.dateFormat))
        return QStringLiteral("--date-format takes one of: ") +
               batch::renameDateFormatTitles().join(u", ");
    return {};
}

batch::RenameRequest requestOf(const GlobalOptions& global, const RenameOptions& options) {
    batch::RenameRequest request;
    request.mode = *options.mode;
    request.customNamelab = options.text;
    request.filenameFormatstrlab = options.text;
    request.checkStartNumber = request.seqNumBtn = options.number;
    if (!options.dateFormat.isNull())
        request.renameDateFormatBtn = options.dateFormat;
    request.storagelocation = storageLocation(global);
    return request;
}

} // namespace

int runRename(const GlobalOptions& global, const RenameOptions& options, Console& console) {
    const QString fault = renameUsageFault(options);
    if (!fault.isEmpty()) {
        printError(fault);
        return kWrongUsage;
    }
    if (options.undo)
        return undoRename(global, console);
    media::MediaImport import;
    import.setStopRequested(&isInterrupted);
    import.importMediaItemsThreader(options.paths);
    if (isInterrupted())
        return interruption();
    const auto& items = import.localPhotoItemArray();
    reportUnknown(import);
    if (items.empty() && import.skipped().empty())
        return reportNothingToDo();
    const auto plan =
        batch::planRename(requestOf(global, options), items, batch::surroundingsOnDisk());
    if (options.dryRun)
        return global.json ? printPlanAsJson(plan, import.skipped())
                           : printPlan(global, plan, import.skipped());
    RenameRun run(console, QStringLiteral("renamed"));
    const auto renamed = batch::runRename(plan, run.progress());
    console.clearProgress();
    if (!renamed)
        return failRename(renamed.error());
    addCancelled(run.outcomes(), plan);
    for (const media::SkippedPath& skipped : import.skipped())
        run.outcomes().push_back(outcomeOfSkipped(skipped));
    return reportOutcomes(global, run.outcomes(), import.skipped().empty());
}

} // namespace clipheave::cli
