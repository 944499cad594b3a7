// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/write_run.h"

#include "cli/item_json.h"
#include "media/media_kind.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/temporary_records.h"

#include <algorithm>
#include <chrono>

namespace clipheave::cli {

namespace {

using jobs::WriteOutcome;
using jobs::WriteStatus;

constexpr std::chrono::milliseconds kTick(100);

/// Waits for the end of a run; an interruption cancels what is left of it.
void waitForEnd(jobs::Run& run, const QString& what, Console& console) {
    while (!run.waitForEnd(kTick)) {
        if (isInterrupted())
            run.cancel();
        const jobs::RunProgress running = run.progress();
        console.progress(what, run.done(), run.total(), {running.mean(), running.files()});
    }
    platform::AVAssetExportSession::waitForAllExports();
    console.clearProgress();
}

/// "clip.mp4: failed: The disk is full"; the reason may be missing.
QString endLine(const WriteOutcome& outcome) {
    QStringList parts{outcome.source, QLatin1String(statusName(outcome.status))};
    if (const QString text = outcome.text(); !text.isEmpty())
        parts.append(text);
    return parts.join(u": ");
}

/// The photo browser takes any file that is given by name.
bool holdsPhoto(const std::vector<media::ItemPointer>& items) {
    return std::any_of(items.begin(), items.end(), [](const media::ItemPointer& item) {
        return media::MediaKind::isPhoto(item->filePath);
    });
}

/// Returns what was given and is no file that the command takes, each as skipped.
std::vector<WriteOutcome> outcomesOfUnknown(const media::MediaImport& import) {
    std::vector<WriteOutcome> outcomes;
    for (const media::SkippedPath& unknown : import.unknown())
        outcomes.push_back(outcomeOfSkipped(unknown));
    return outcomes;
}

} // namespace

std::vector<jobs::WriteRequest> requestsFor(const media::MediaImport& import,
                                            const jobs::RunSettings& settings) {
    std::vector<jobs::WriteRequest> requests;
    for (const auto& item : import.localPhotoItemArray()) {
        jobs::WriteRequest& request = requests.emplace_back();
        request.item = item;
        request.pane = media::ShowVideoViewWithItem(*item);
        request.settings = settings;
        // The window keeps a video pane beside the audio pane, with an artist of its own; here the
        // item's artist takes that place.
        if (media::MediaKind::isAudio(item->filePath))
            request.audioPane = media::ShowAudioViewWithItem(*item, item->fileArist);
    }
    return requests;
}

WriteOutcome outcomeOfSkipped(const media::SkippedPath& skipped) {
    WriteOutcome outcome;
    outcome.source = skipped.path;
    outcome.status = WriteStatus::Skipped;
    outcome.notes = {skipped.reason};
    return outcome;
}

void reportUnknown(const media::MediaImport& import) {
    for (const media::SkippedPath& unknown : import.unknown())
        printError(endLine(outcomeOfSkipped(unknown)));
}

void reportSkipped(const media::MediaImport& import) {
    for (const media::SkippedPath& skipped : import.skipped())
        printError(endLine(outcomeOfSkipped(skipped)));
}

int reportOutcomes(const GlobalOptions& global, const std::vector<WriteOutcome>& outcomes,
                   bool allImported) {
    bool allDone = allImported;
    // Deliberate: an audio file among the videos of a folder does not fail the job that skips it.
    bool anythingDone = outcomes.empty();
    QByteArray lines;
    for (const WriteOutcome& outcome : outcomes) {
        for (const QString& output : outcome.outputs)
            lines += platform::nativePath(output) + '\n';
        anythingDone |= outcome.status == WriteStatus::Completed;
        if (outcome.status != WriteStatus::Completed) {
            allDone &= outcome.status == WriteStatus::Skipped;
            printError(endLine(outcome));
        } else if (!outcome.text().isEmpty() && !global.quiet) {
            printError(QStringLiteral("%1: %2").arg(outcome.source, outcome.text()));
        }
    }
    if (global.json) {
        JsonWriter json;
        writeOutcomes(json, outcomes);
        lines = json.take();
    }
    if (!printOut(lines))
        allDone = false;
    if (interruption())
        return interruption();
    return allDone && anythingDone ? kAllDone : kSomeFailed;
}

int runOverItems(const GlobalOptions& global, const QStringList& paths, const QString& what,
                 const MakeOrder& makeOrder, Console& console, Repeats repeats,
                 ImportPaths importPaths) {
    media::MediaImport import;
    import.setStopRequested(&isInterrupted);
    import.setTakesFilesOnce(repeats == Repeats::TakenOnce);
    (import.*importPaths)(paths);
    const auto& items = import.localPhotoItemArray();
    const std::vector<WriteOutcome> unknown = outcomesOfUnknown(import);
    if (items.empty() && import.skipped().empty()) {
        const int reported = reportOutcomes(global, unknown, true);
        const int nothing = reportNothingToDo();
        return interruption() ? reported : nothing;
    }

    const QString storage = storageLocation(global);
    const auto made = platform::NSFileManager::defaultManager().createDirectoryAtPath(storage);
    if (!made) {
        printError(made.error().text());
        return kSomeFailed;
    }
    platform::removeTemporariesOfDeadProcesses();
    const auto order =
        makeOrder(import, {storage, import.bImportLocalFolder(), import.bImportLocalPath()});
    const auto run = jobs::Run::create(order, order.allItems(), {{}, {}, &isInterrupted});
    run->paths().protect(order.sources);
    run->perform();
    waitForEnd(*run, what, console);
    std::vector<WriteOutcome> outcomes = run->outcomes();
    outcomes.insert(outcomes.end(), unknown.begin(), unknown.end());
    for (const media::SkippedPath& skipped : import.skipped())
        outcomes.push_back(outcomeOfSkipped(skipped));
    const int status = reportOutcomes(global, outcomes, import.skipped().empty());
    const bool nothing = importPaths == &media::MediaImport::importPhotos && !holdsPhoto(items) &&
                         import.skipped().empty();
    return nothing && status == kSomeFailed ? reportNothingToDo() : status;
}

} // namespace clipheave::cli
