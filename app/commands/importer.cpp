// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/commands/importer.h"

#include "app/activity/activity_model.h"
#include "app/commands/import_state.h"
#include "app/commands/item_list.h"
#include "app/jobs/job_board.h"
#include "media/media_import.h"
#include "platform/foundation/main_thread.h"

#include <QSet>

#include <chrono>
#include <utility>

namespace clipheave::app {

namespace {

/// The list is refreshed after every file; files that are read faster than a screen is drawn share
/// one hand-over, so that the reading does not wait for an image that nobody can see.
constexpr auto kHandOverInterval = std::chrono::milliseconds(8);

/// "3 added, 1 failed"; what did not happen is left out.
QString importSummary(int added, int failed, int skipped) {
    if (added == 0 && failed == 0)
        return skipped > 0 ? Importer::tr("%1 skipped").arg(skipped)
                           : Importer::tr("No media file found");
    if (failed == 0 && skipped == 0)
        return added == 1 ? Importer::tr("1 file added")
                          : Importer::tr("%1 files added").arg(added);
    QString summary = Importer::tr("%1 added").arg(added);
    if (failed > 0)
        summary += Importer::tr(", %1 failed").arg(failed);
    if (skipped > 0)
        summary += Importer::tr(", %1 skipped").arg(skipped);
    return summary;
}

} // namespace

Importer::Importer(ImportState& state, ItemList& list, ActivityModel& activity, JobBoard& board)
    : m_state(state), m_list(list), m_activity(activity), m_board(board) {
}

void Importer::start(const QStringList& paths, bool photos) {
    const int job = m_activity.beginJob(photos ? tr("Import photos") : tr("Import"));
    m_board.setRetry(job, [this, photos](const QStringList& failed) { retry(failed, photos); });
    ++m_state.running;
    platform::BackgroundJob::detach([this, paths, photos, job] { read(paths, photos, job); });
}

/// On a thread of its own.
void Importer::read(const QStringList& paths, bool photos, int job) {
    std::vector<media::ItemPointer> ready;
    auto lastHandOver = std::chrono::steady_clock::now();
    const auto handOver = [&] {
        platform::performOnMainThread([&] { append(job, std::exchange(ready, {})); });
        lastHandOver = std::chrono::steady_clock::now();
    };
    media::MediaImport reading([&](const media::ItemPointer& item) {
        if (item)
            ready.push_back(item);
        if (std::chrono::steady_clock::now() - lastHandOver >= kHandOverInterval)
            handOver();
    });
    reading.setStopRequested([this] { return m_state.stopping.load(); });
    if (photos)
        reading.importPhotos(paths);
    else
        reading.importMediaItemsThreader(paths);
    handOver();
    platform::performOnMainThread([&] { finish(reading, job); });
}

/// A file that could be read only in part is in the list already: the new reading takes its place.
void Importer::retry(const QStringList& paths, bool photos) {
    const QSet<QString> again(paths.begin(), paths.end());
    m_list.remove([&again](const media::IKImageItem& item) {
        return !item.problem.isEmpty() && again.contains(item.filePath);
    });
    start(paths, photos);
}

void Importer::append(int job, const std::vector<media::ItemPointer>& items) {
    for (const auto& item : items) {
        m_list.append(item);
        if (!item->problem.isEmpty())
            m_activity.fileFinished(job,
                                    {item->filePath, {}, FileState::Failed, item->problem.text()});
    }
    Q_EMIT itemsRead();
}

void Importer::finish(const media::MediaImport& import, int job) {
    const int skipped = static_cast<int>(import.skipped().size());
    const int unknown = static_cast<int>(import.unknown().size());
    const int count = static_cast<int>(import.localPhotoItemArray().size());
    if (count + skipped > 0) {
        m_state.bImportLocalFolder = import.bImportLocalFolder();
        m_state.bImportLocalPath = import.bImportLocalPath();
    }
    for (const media::SkippedPath& file : import.skipped())
        m_activity.fileFinished(job, {file.path, {}, FileState::Failed, file.reason.text()});
    for (const media::SkippedPath& file : import.unknown())
        m_activity.fileFinished(job, {file.path, {}, FileState::Skipped, file.reason.text()});
    m_activity.setTotal(job, count + skipped + unknown);
    const ActivityJob* row = m_activity.job(job);
    const int failed = row ? row->failed : 0;
    // A file that was read only in part is in the list, and counts as failed.
    m_activity.endJob(job, importSummary(count + skipped - failed, failed, unknown));
    --m_state.running;
    Q_EMIT finished();
}

} // namespace clipheave::app
