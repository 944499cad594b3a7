// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch_rename.h"
#include "cli/json_writer.h"
#include "cli/write_run.h"
#include "platform/foundation/paths.h"

#include <memory>

namespace clipheave::cli {

namespace {

using batch::RenameMove;
using batch::RenameNote;
using jobs::WriteOutcome;

/// Runs an order of renames on this thread and shows how far it is.
std::shared_ptr<jobs::Run> performed(const jobs::RunOrder& order, const QString& what,
                                     Console& console) {
    std::weak_ptr<jobs::Run> weak;
    jobs::Run::Handlers handlers;
    handlers.outcome = [&](const WriteOutcome&) {
        if (const auto run = weak.lock())
            console.progress(what, run->done(), run->total());
    };
    handlers.stopRequested = &isInterrupted;
    auto run = jobs::Run::create(order, order.allItems(), handlers);
    weak = run;
    run->perform();
    console.clearProgress();
    return run;
}

/// Prints "old -> new" on standard output, notes and the files that would stay on standard error.
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

/// Prints {"items":[{"source","outputs","status":"planned"|"failed"|"skipped","message"}]}.
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

int undoRename(const GlobalOptions& global, Console& console) {
    const auto run = performed(batch::undoOrder(), QStringLiteral("put back"), console);
    if (const auto failure = run->failure())
        return failRename(*failure);
    return reportOutcomes(global, run->outcomes(), true);
}

/// Returns why the options make no sense together; null when they do.
QString renameUsageFault(const RenameOptions& options) {
    if (options.undo)
        return options.mode || options.dryRun || options.number || options.photos ||
                       !options.paths.isEmpty()
                   ? QStringLiteral("--undo takes neither paths nor other options")
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
    import.setTakesFilesOnce(true);
    if (options.photos)
        import.importPhotos(options.paths);
    else
        import.importMediaItemsThreader(options.paths);
    if (isInterrupted())
        return reportOutcomes(global, {}, false);
    const auto& items = import.localPhotoItemArray();
    reportUnknown(import);
    if (items.empty() && import.skipped().empty())
        return reportNothingToDo();
    const auto batch = std::make_shared<batch::RenameBatch>();
    batch->request = requestOf(global, options);
    batch->items = items;
    batch->plan = batch::planRename(batch->request, items, batch::surroundingsOnDisk());
    if (options.dryRun)
        return global.json ? printPlanAsJson(batch->plan, import.skipped())
                           : printPlan(global, batch->plan, import.skipped());
    const auto run = performed(batch::renameOrder(batch), QStringLiteral("renamed"), console);
    std::vector<WriteOutcome> outcomes = run->outcomes();
    for (const media::SkippedPath& skipped : import.skipped())
        outcomes.push_back(outcomeOfSkipped(skipped));
    return reportOutcomes(global, outcomes, import.skipped().empty());
}

} // namespace clipheave::cli
