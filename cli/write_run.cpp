// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/write_run.h"

#include "cli/item_json.h"
#include "media/media_kind.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/temporaries.h"

#include <condition_variable>
#include <map>
#include <mutex>

namespace clipheave::cli {

namespace {

using jobs::WriteOutcome;
using jobs::WriteStatus;

/// Collects outcomes that arrive on export threads.
class OutcomeCollector {
public:
    jobs::OutcomeHandler handler() {
        return [this](const WriteOutcome& outcome) {
            const std::scoped_lock lock(m_mutex);
            m_bySource[outcome.source].push_back(outcome);
            ++m_count;
            m_arrived.notify_all();
        };
    }
    /// Waits until `count` outcomes are there; calls `tick` meanwhile.
    void waitFor(int count, const std::function<void(int)>& tick) {
        std::unique_lock lock(m_mutex);
        while (m_count < count) {
            m_arrived.wait_for(lock, std::chrono::milliseconds(100));
            const int done = m_count;
            lock.unlock();
            tick(done);
            lock.lock();
        }
    }
    int count() {
        const std::scoped_lock lock(m_mutex);
        return m_count;
    }
    /// In the order of the items; a file listed twice has two.
    std::vector<WriteOutcome> inOrderOf(const std::vector<media::ItemPointer>& items) {
        const std::scoped_lock lock(m_mutex);
        std::vector<WriteOutcome> ordered;
        for (const auto& item : items) {
            auto& outcomes = m_bySource[item->filePath];
            if (outcomes.empty())
                continue;
            ordered.push_back(outcomes.front());
            outcomes.erase(outcomes.begin());
        }
        return ordered;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::map<QString, std::vector<WriteOutcome>> m_bySource;
    int m_count = 0;
};

jobs::WriteRequest requestFor(const media::ItemPointer& item, const QString& storage,
                              const media::MediaImport& import) {
    jobs::WriteRequest request{item, media::ShowVideoViewWithItem(*item), storage,
                               import.bImportLocalFolder(), import.bImportLocalPath()};
    // There is no video pane beside it whose artist could stand in the memory.
    if (media::MediaKind::isAudio(item->filePath))
        request.audioPane = media::ShowAudioViewWithItem(*item, item->fileArist);
    return request;
}

} // namespace

WriteOutcome outcomeOfSkipped(const media::SkippedPath& skipped) {
    WriteOutcome outcome;
    outcome.source = skipped.path;
    outcome.status = WriteStatus::Skipped;
    outcome.message = skipped.reason.text();
    return outcome;
}

void reportUnknown(const media::MediaImport& import) {
    for (const media::SkippedPath& unknown : import.unknown())
        printError(QStringLiteral("%1: skipped: %2").arg(unknown.path, unknown.reason.text()));
}

int reportOutcomes(const GlobalOptions& global, const std::vector<WriteOutcome>& outcomes,
                   bool allImported) {
    bool allDone = allImported;
    // Deliberate: an audio file among the videos of a folder is no failure of the job that passes
    // it over.
    bool anythingDone = outcomes.empty();
    QByteArray lines;
    for (const WriteOutcome& outcome : outcomes) {
        for (const QString& output : outcome.outputs)
            lines += platform::nativePath(output) + '\n';
        anythingDone |= outcome.status == WriteStatus::Completed;
        if (outcome.status != WriteStatus::Completed) {
            allDone &= outcome.status == WriteStatus::Skipped;
            printError(QStringLiteral("%1: %2: %3")
                           .arg(outcome.source, QLatin1String(statusName(outcome.status)),
                                outcome.message));
        } else if (!outcome.message.isEmpty() && !global.quiet) {
            printError(QStringLiteral("%1: %2").arg(outcome.source, outcome.message));
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
                 const StartRun& start, Console& console) {
    media::MediaImport import;
    import.setStopRequested(&isInterrupted);
    import.importMediaItemsThreader(paths);
    const auto& items = import.localPhotoItemArray();
    reportUnknown(import);
    if (items.empty() && import.skipped().empty())
        return reportNothingToDo();

    const QString storage = storageLocation(global);
    const auto made = platform::NSFileManager::defaultManager().createDirectoryAtPath(storage);
    if (!made) {
        printError(made.error().text());
        return kSomeFailed;
    }
    platform::removeStaleTemporaries(storage);
    OutcomeCollector collector;
    const auto progress = start({collector.handler(), import, storage});
    const auto total = static_cast<int>(items.size());
    collector.waitFor(total, [&](int done) {
        const jobs::RunProgress running = progress();
        console.progress(what, done, total, {running.mean(), running.files()});
    });
    platform::AVAssetExportSession::waitForAllExports();
    console.clearProgress();
    std::vector<WriteOutcome> outcomes = collector.inOrderOf(items);
    for (const media::SkippedPath& skipped : import.skipped())
        outcomes.push_back(outcomeOfSkipped(skipped));
    return reportOutcomes(global, outcomes, import.skipped().empty());
}

int runWriting(const GlobalOptions& global, const QStringList& paths, const QString& what,
               const StartWriting& start, Console& console) {
    const auto startAll = [&start](const ItemRun& run) -> RunProgressTeller {
        auto writer = std::make_shared<metadata::VideoMetadata>(run.handler);
        writer->protectSources(sourcesOf(run.import));
        for (const auto& item : run.import.localPhotoItemArray()) {
            auto request = requestFor(item, run.storage, run.import);
            if (isInterrupted())
                writer->refuse(request, QStringLiteral("cancelled"), WriteStatus::Cancelled);
            else
                start(*writer, std::move(request));
        }
        return [writer] { return writer->runningProgress(); };
    };
    return runOverItems(global, paths, what, startAll, console);
}

QStringList sourcesOf(const media::MediaImport& import) {
    QStringList sources;
    for (const auto& item : import.localPhotoItemArray())
        sources.append(item->filePath);
    return sources;
}

} // namespace clipheave::cli
