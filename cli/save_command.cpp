// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/commands.h"
#include "cli/item_json.h"
#include "media/media_kind.h"
#include "media/panes.h"
#include "metadata/video_metadata.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/text.h"
#include "platform/image/picture_transcode.h"

#include <condition_variable>
#include <map>
#include <mutex>

namespace clipheave::cli {

namespace {

using metadata::WriteOutcome;
using metadata::WriteStatus;

/// Fields that another kind's pane has; known names, so not wrong usage, but not on a video.
constexpr const char* kOtherKindsFields[] = {
    "subtitle",     "fileSubTitle", "albumArtist", "fileAlbumArist",   "composer",
    "fileComposer", "band",         "fileBand",    "lyricist",         "fileLyricist",
    "comments",     "fileComments", "year",        "fileReleasedYear", "make",
    "fileMake",     "model",        "fileModel",   "imageDescription", "cameraDate",
    "gpsDate",      "gpsTime",
};

bool isOtherKindsField(const QString& name) {
    for (const char* field : kOtherKindsFields)
        if (name == QLatin1String(field))
            return true;
    return false;
}

constexpr char16_t kDateAlert[] =
    u"Invalid date format: Input the valid date format: YYYY:MM:DD HH:MM:SS or YYYY-MM-DD HH:MM:SS";

bool isPlainNumber(const QString& text) {
    bool ok = false;
    text.trimmed().toDouble(&ok);
    return ok;
}

/// The reason why the values cannot be taken at all; null when they can.
QString usageFault(const SaveOptions& options) {
    for (const auto& [name, text] : options.set) {
        const media::VideoField* field = media::videoField(name);
        if (!field && !isOtherKindsField(name))
            return QStringLiteral("unknown field \"%1\"").arg(name);
        if (field && QLatin1String(field->name) == u"created" && !platform::parseDateText(text))
            return QString::fromUtf16(kDateAlert);
        if (field && QLatin1String(field->name).endsWith(u"tude") && !text.isEmpty() &&
            !isPlainNumber(text))
            return QStringLiteral("%1 takes a number, not \"%2\"").arg(name, text);
    }
    return {};
}

/// Collects outcomes that arrive on export threads.
class OutcomeCollector {
public:
    metadata::OutcomeHandler handler() {
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

WriteOutcome outcomeWithoutWriting(const QString& source, WriteStatus status,
                                   const QString& message) {
    WriteOutcome outcome;
    outcome.source = source;
    outcome.status = status;
    outcome.message = message;
    return outcome;
}

/// Shows the item in its pane and types the values; the reason when a field is not on its pane.
QString fillPane(media::VideoPane& pane, const SaveOptions& options,
                 const platform::EncodedPicture& artwork) {
    for (const auto& [name, text] : options.set) {
        const media::VideoField* field = media::videoField(name);
        if (!field)
            return QStringLiteral("a video has no field \"%1\"").arg(name);
        media::typeIntoField(pane, *field, text);
    }
    if (!artwork.isNull())
        pane.texts.mediaImageView = artwork;
    return {};
}

void startSave(metadata::VideoMetadata& writer, const media::ItemPointer& item,
               const SaveOptions& options, const platform::EncodedPicture& artwork,
               const QString& storage, const metadata::OutcomeHandler& handler) {
    metadata::SaveRequest request{item, media::ShowVideoViewWithItem(*item), storage};
    if (media::MediaKind::isVideo(item->filePath)) {
        const QString fault = fillPane(request.pane, options, artwork);
        if (!fault.isEmpty())
            return handler(outcomeWithoutWriting(item->filePath, WriteStatus::Failed, fault));
    }
    writer.SaveMeidaFileChangesAction(request);
}

int report(const GlobalOptions& global, const std::vector<WriteOutcome>& outcomes,
           bool allImported) {
    bool allDone = allImported;
    QByteArray lines;
    for (const WriteOutcome& outcome : outcomes) {
        for (const QString& output : outcome.outputs)
            lines += platform::nativePath(output) + '\n';
        if (outcome.status != WriteStatus::Completed) {
            allDone = false;
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
    return allDone ? kAllDone : kSomeFailed;
}

} // namespace

int runSave(const GlobalOptions& global, const SaveOptions& options, Console& console) {
    const QString fault = usageFault(options);
    if (!fault.isEmpty()) {
        printError(fault);
        return kWrongUsage;
    }
    platform::EncodedPicture artwork;
    if (!options.artwork.isEmpty()) {
        const auto picture = platform::pictureForArtwork(options.artwork);
        if (!picture) {
            printError(picture.error().text());
            return kWrongUsage;
        }
        artwork = *picture;
    }
    media::MediaImport import;
    import.setStopRequested([] { return interruption() != 0;
});
import.importMediaItemsThreader(options.paths);
const auto& items = import.localPhotoItemArray();
if (items.empty() && import.skipped().empty())
    return reportNothingToDo();

const QString storage = storageLocation(global);
if (const auto made = platform::NSFileManager::defaultManager().createDirectoryAtPath(storage);
    !made) {
    printError(made.error().text());
    return kSomeFailed;
}
platform::removeStaleTemporaries(storage);
OutcomeCollector collector;
metadata::VideoMetadata writer(collector.handler());
int started = 0;
for (const auto& item : items) {
    if (interruption())
        break;
    startSave(writer, item, options, artwork, storage, collector.handler());
    ++started;
}
collector.waitFor(started, [&](int done) {
    console.progress(QStringLiteral("saved"), done, started, writer.runningProgress());
});
platform::AVAssetExportSession::waitForAllExports();
console.clearProgress();
std::vector<WriteOutcome> outcomes = collector.inOrderOf(items);
for (const media::SkippedPath& skipped : import.skipped())
    outcomes.push_back(outcomeWithoutWriting(skipped.path, WriteStatus::Skipped, skipped.reason));
return report(global, outcomes, import.skipped().empty());
} // namespace clipheave::cli

} // namespace clipheave::cli
