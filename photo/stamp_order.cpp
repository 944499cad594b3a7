// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/stamp_order.h"

#include "jobs/write_job.h"
#include "photo/date_stamp.h"
#include "photo/photo_order.h"
#include "platform/image/cg_image_source.h"

#include <utility>

namespace clipheave::photo {

using namespace platform;

namespace {

/// The stamped copy carries the photo's date, the plain one none.
jobs::OutputDates datesOf(const CGImageSource& source, const QString& output) {
    if (isWrittenPlain(output))
        return {};
    const auto date = captureDate(source.properties(), source.attributes().NSFileCreationDate);
    return {date, date};
}

/// Begins the job of one photo: what it needs of the headers is read here, the rest where it runs.
void beginStamp(jobs::Run& run, const media::ItemPointer& item, const StampRequest& request) {
    if (!isPhotoOrSkip(run, item))
        return;
    const QString& photo = item->filePath;
    const QString output = run.paths().claim(stampedPath(photo, request.settings.storagelocation));
    auto job = jobs::beginJob(run.ticket(photo), photo, output);
    if (!job)
        return;
    const auto source = CGImageSource::createWithPath(photo);
    if (!source)
        return jobs::failJob(*job, source.error());
    job->copiesOnFailure = false;
    job->dates = datesOf(*source, output);
    const DateStamp stamp(
        photo, source->properties(),
        recordedDate(source->properties(), source->attributes().NSFileCreationDate), request.style);
    jobs::startSession(
        *job, AVAssetExportSession::rewriting(photo, output, [stamp, output](const auto& progress) {
            return stamp.write(output, progress);
        }));
}

} // namespace

jobs::RunOrder stampOrder(StampRequest request) {
    jobs::RunOrder order;
    for (const auto& item : request.items)
        order.sources.append(item->filePath);
    order.work = [request = std::move(request)](jobs::Run& run, const auto& items) {
        for (const std::size_t item : items)
            beginStamp(run, request.items[item], request);
    };
    return order;
}

} // namespace clipheave::photo
