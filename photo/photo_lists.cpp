// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/photo_lists.h"

#include "jobs/write_job.h"
#include "photo/messages.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"
#include "platform/image/cg_image_source.h"
#include "platform/image/photo_data.h"
#include "platform/image/write/photo_writer.h"
#include "platform/plist/property_list.h"

#include <chrono>
#include <optional>
#include <utility>

namespace clipheave::photo {

using namespace platform;
using jobs::WriteOutcome;
using jobs::WriteStatus;
using Clock = std::chrono::steady_clock;

namespace {

/// One photo whose list is wanted.
struct ListedPhoto {
    jobs::Ticket ticket;
    QString source, name;
    QVariantMap content;
    Notes notes;
    Clock::time_point start = Clock::now();

    void report(WriteStatus status, const std::optional<Error>& failure,
                const QStringList& outputs = {}) const {
        WriteOutcome outcome;
        outcome.source = source;
        outcome.outputs = outputs;
        outcome.status = status;
        outcome.failure = failure;
        outcome.notes = notes;
        outcome.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        ticket.report(outcome);
    }
};

/// Returns what the list may hold: all dictionaries for that of everything, the others need four.
QVariantMap propertiesFor(PhotoList list, const CGImageSource& source, const QString& path) {
    if (list != PhotoList::AllMetadata)
        return source.properties();
    auto data = CGImageSourceCreateWithData(path);
    const auto all = data ? CGImageSourceCopyPropertiesAtIndex(*data, 0)
                          : Result<QVariantMap>(tl::unexpected(data.error()));
    return all.value_or(source.properties()); // the file has gone meanwhile
}

/// Returns the photo with its content for the list; nothing when there is none, which has been
/// reported then.
std::optional<ListedPhoto> readPhoto(jobs::Run& run, const media::ItemPointer& item,
                                     PhotoList list) {
    if (!isPhotoOrSkip(run, item))
        return std::nullopt;
    ListedPhoto photo;
    photo.ticket = run.ticket(item->filePath);
    photo.source = item->filePath;
    photo.name = item->fileName;
    const auto source = CGImageSource::createWithPath(photo.source);
    if (!source) {
        photo.report(WriteStatus::Failed, source.error());
        return std::nullopt;
    }
    if (!source->problem().isEmpty())
        photo.notes.append(source->problem());
    photo.content = contentOf(list, propertiesFor(list, *source, photo.source));
    if (photo.content.isEmpty()) {
        photo.notes.append(kNothingForList);
        photo.report(WriteStatus::Skipped, {});
        return std::nullopt;
    }
    return photo;
}

Result<void> writeList(const QVariantMap& content, const QString& path) {
    const auto made =
        NSFileManager::defaultManager().createDirectoryAtPath(deletingLastPathComponent(path));
    return made ? writeToFile_atomically(content, path) : made;
}

void writeAndReport(const ListedPhoto& photo, const QString& path) {
    const auto written = writeList(photo.content, path);
    if (written)
        photo.report(WriteStatus::Completed, {}, {path});
    else
        photo.report(WriteStatus::Failed, written.error());
}

/// Ends the photos whose content does not stand in the file, since that of another one does.
void reportOthers(std::vector<ListedPhoto>& others, const QString& nameOfLast,
                  const std::optional<Error>& failure) {
    for (ListedPhoto& photo : others) {
        if (!failure)
            photo.notes.append(Message(kListOfAnother, {nameOfLast}));
        photo.report(failure ? WriteStatus::Failed : WriteStatus::Completed, failure);
    }
}

/// Starts the copy of one photo with other properties.
void importInto(jobs::Run& run, const media::ItemPointer& item, const QString& folder,
                const ImportedList& list, const PhotoRewriter& rewrite) {
    const QString& photo = item->filePath;
    const QString output = run.paths().claim(appendingPathComponent(folder, item->fileName));
    auto job = jobs::beginJob(run.ticket(photo), photo, output);
    if (!job)
        return;
    job->copiesOnFailure = false;
    for (const Message& note : list.notes)
        if (run.isFirst(note.code()))
            job->notes.append(note);
    jobs::startSession(*job, AVAssetExportSession::rewriting(
                                 photo, output,
                                 [photo, output, rewrite, properties = list.properties](
                                     const auto&) { return rewrite(photo, output, properties); }));
}

} // namespace

void PhotoLists::writeOne(PhotoList list, const PhotoRequest& request) {
    std::vector<ListedPhoto> photos;
    for (const auto& item : request.items) {
        if (m_run.isCancelled())
            break;
        if (auto photo = readPhoto(m_run, item, list))
            photos.push_back(std::move(*photo));
    }
    if (m_run.isCancelled()) {
        for (const ListedPhoto& photo : photos)
            photo.report(WriteStatus::Cancelled, {});
        return;
    }
    if (photos.empty())
        return;
    const ListedPhoto last = std::move(photos.back());
    photos.pop_back();
    const QString path = m_run.paths().claimShared(
        appendingPathComponent(request.settings.storagelocation, fileNameOf(list)));
    const auto written = writeList(last.content, path);
    const auto failed = written ? std::optional<Error>() : written.error();
    reportOthers(photos, last.name, failed);
    last.report(failed ? WriteStatus::Failed : WriteStatus::Completed, failed,
                failed ? QStringList() : QStringList{path});
}

void PhotoLists::WriteSelectedItemsExifDataToPlist(const PhotoRequest& request) {
    for (const auto& item : request.items) {
        if (m_run.isCancelled())
            return;
        const auto photo = readPhoto(m_run, item, PhotoList::AllMetadata);
        if (photo)
            writeAndReport(*photo, m_run.paths().claim(appendingPathComponent(
                                       request.settings.storagelocation,
                                       photo->name + QStringLiteral(".plist"))));
    }
}

void PhotoLists::ImportPlistToPhotos(const PhotoRequest& request, const QString& plist,
                                     const PhotoRewriter& rewrite) {
    const auto list = propertyListWithContentsOfFile(plist);
    if (!list)
        return m_run.fail(list.error());
    auto imported = propertiesFromPlist(*list);
    if (!imported) {
        imported.error().path = plist;
        return m_run.fail(imported.error());
    }
    for (const auto& item : request.items)
        if (isPhotoOrSkip(m_run, item))
            importInto(m_run, item, request.settings.storagelocation, *imported, rewrite);
}

jobs::RunOrder listOrder(void (PhotoLists::*write)(const PhotoRequest& request),
                         PhotoRequest request) {
    return photoOrder(
        [write](jobs::Run& run, const PhotoRequest& part) {
            PhotoLists lists(run);
            (lists.*write)(part);
        },
        std::move(request));
}

Result<Notes> rewriteWithProperties(const QString& source, const QString& target,
                                    const QVariantMap& properties) {
    return rewritePhoto({source, target, properties});
}

jobs::RunOrder importOrder(const QString& plist, PhotoRewriter rewrite, PhotoRequest request) {
    return photoOrder(
        [plist, rewrite = std::move(rewrite)](jobs::Run& run, const PhotoRequest& part) {
            PhotoLists(run).ImportPlistToPhotos(part, plist, rewrite);
        },
        std::move(request));
}

} // namespace clipheave::photo
