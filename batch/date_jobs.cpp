// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/date_jobs.h"

#include "batch/messages.h"
#include "jobs/run.h"
#include "media/media_kind.h"
#include "metadata/video_metadata.h"
#include "platform/foundation/paths.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>

namespace clipheave::batch {

using namespace platform;
using jobs::WriteRequest;
using media::MediaKind;

namespace {

/// Starts the writing of one line for its request.
template <class Line>
using LineWriter =
    std::function<void(jobs::Run& run, const Line& line, const WriteRequest& request)>;

Message reasonOf(const DateLine& line) {
    return dateNoteMessage(line.note);
}

/// Returns the order that writes the lines that are to be written and skips the others, each with
/// its note.
template <class Line>
jobs::RunOrder orderOf(std::vector<Line> lines, Requests requests, LineWriter<Line> write) {
    struct Kept {
        std::vector<Line> lines;
        Requests requests;
    };
    jobs::RunOrder order;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        order.sources.append(lines[i].source);
        if (lines[i].isWritten() && lines[i].note != DateNote::None)
            order.notes.insert(i, {reasonOf(lines[i])});
    }
    const auto kept = std::make_shared<const Kept>(Kept{std::move(lines), std::move(requests)});
    order.work = [kept, write = std::move(write)](jobs::Run& run, const auto& items) {
        for (const std::size_t item : items) {
            const Line& line = kept->lines[item];
            if (line.isWritten())
                write(run, line, kept->requests[item]);
            else
                run.ticket(line.source)
                    .report(jobs::refusal(line.source, reasonOf(line),
                                          line.note == DateNote::Missing
                                              ? jobs::WriteStatus::Failed
                                              : jobs::WriteStatus::Skipped));
        }
    };
    return order;
}

bool hasExtension(const WriteRequest& request, const char16_t* extension) {
    return pathExtension(request.item->filePath)
               .compare(QStringView(extension), Qt::CaseInsensitive) == 0;
}

void writeAudioDate(metadata::AudioMetadata& writers, const WriteRequest& request,
                    const QString& date) {
    if (hasExtension(request, u"mp3"))
        return writers.SetMp3MetadateItem_withDateStr(request, date);
    if (hasExtension(request, u"flac"))
        return writers.SetFlaCAuidoExifItem_withDateStr(request, date);
    writers.SetAuidoExifDateItem_withDateStr(request, date);
}

/// The writer of a camera date by the kind of the item.
void writeCameraDate(jobs::Run& run, const DateLine& line, const WriteRequest& request,
                     const PhotoDateWriter& writePhoto) {
    metadata::VideoMetadata writers(run);
    if (MediaKind::isAudio(line.source))
        return writeAudioDate(writers.audio(), request, line.after);
    if (MediaKind::isVideo(line.source))
        return writers.SetVideoFileWithFilePath_WithExifPath_withDateStr(
            line.source, jobs::flatOutputPath(request), line.after);
    writePhoto(run, request, line.after);
}

void writeFileDates(jobs::Run& run, const FileDateLine& line, const WriteRequest& request) {
    run.paths().protect({line.source});
    auto job = jobs::beginJob(run.ticket(line.source), line.source,
                              run.paths().claim(jobs::flatOutputPath(request)));
    if (!job)
        return;
    if (line.dates.creation)
        job->dates.creation = line.dates.creation;
    if (line.dates.modification)
        job->dates.modification = line.dates.modification;
    jobs::startCopy(*job, NSFileManager::IfExists::Replace);
}

void writeNameDate(jobs::Run& run, const DateLine& line, const WriteRequest& request) {
    metadata::VideoMetadata(run).SetVideoDateItems(request, line.after);
}

} // namespace

jobs::RunOrder cameraDateOrder(std::vector<DateLine> lines, Requests requests,
                               PhotoDateWriter writePhoto) {
    return orderOf<DateLine>(std::move(lines), std::move(requests),
                             [writePhoto = std::move(writePhoto)](jobs::Run& run,
                                                                  const DateLine& line,
                                                                  const WriteRequest& request) {
                                 writeCameraDate(run, line, request, writePhoto);
                             });
}

jobs::RunOrder fileDateOrder(std::vector<FileDateLine> lines, Requests requests) {
    return orderOf<FileDateLine>(std::move(lines), std::move(requests), &writeFileDates);
}

jobs::RunOrder nameDateOrder(std::vector<DateLine> lines, Requests requests) {
    return orderOf<DateLine>(std::move(lines), std::move(requests), &writeNameDate);
}

} // namespace clipheave::batch
