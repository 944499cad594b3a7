// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/date_jobs.h"
#include "cli/item_json.h"
#include "cli/write_run.h"
#include "photo/date_edits.h"
#include "platform/foundation/paths.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace clipheave::cli {

namespace {

using batch::DateLine;
using batch::FileDateLine;
using media::ItemPointer;
using Items = std::vector<ItemPointer>;

/// What a command would write and how it writes it.
struct DateCommand {
    std::function<std::vector<DateLine>(const Items& items)> plan;
    std::function<jobs::RunOrder(const Items& items, batch::Requests requests)> order;
};

void writePhotoDate(jobs::Run& run, const jobs::WriteRequest& request, const QString& date) {
    photo::PhotoDateEdits(run).writeCameraDate(request.item, request.settings, date);
}

std::vector<DateLine> plainLines(const std::vector<FileDateLine>& lines) {
    return {lines.begin(), lines.end()};
}

template <class Plan, class Order> DateCommand fileDates(Plan plan, Order order) {
    return {[plan](const Items& items) { return plainLines(plan(items)); },
            [plan, order](const Items& items, batch::Requests requests) {
                return order(plan(items), std::move(requests));
            }};
}

template <class Plan> DateCommand cameraDates(Plan plan) {
    return {plan, [plan](const Items& items, batch::Requests requests) {
                return batch::cameraDateOrder(plan(items), std::move(requests), &writePhotoDate);
            }};
}

DateCommand changeOf(const DatesOptions& options) {
    const batch::DateRequest& request = options.request;
    if (options.files)
        return fileDates(
            [request](const Items& items) {
                return batch::planFileDates(request, items, batch::fileDatesOnDisk());
            },
            &batch::fileDateOrder);
    return cameraDates([request](const Items& items) {
        return batch::planCameraDates(request, items, batch::fileDatesOnDisk());
    });
}

DateCommand copyOf(const QString& what) {
    const auto copied = [](bool toModification) {
        return [toModification](const Items& items) {
            return batch::planCopiedFileDates(items, batch::fileDatesOnDisk(), toModification);
        };
    };
    if (what == u"created-to-modified")
        return fileDates(copied(true), &batch::fileDateOrder);
    if (what == u"modified-to-created")
        return fileDates(copied(false), &batch::fileDateOrder);
    if (what == u"camera-to-created")
        return fileDates(
            [](const Items& items) {
                return batch::planCameraToFileDates(items, batch::fileDatesOnDisk());
            },
            &batch::fileDateOrder);
    return cameraDates([](const Items& items) {
        return batch::planFileToCameraDates(items, batch::fileDatesOnDisk());
    });
}

/// The names of photos as their comments.
DateCommand namesToComments() {
    return {&batch::planNamesToComments, [](const Items&, batch::Requests requests) {
                photo::PhotoRequest photos;
                for (const jobs::WriteRequest& request : requests)
                    photos.items.push_back(request.item);
                photos.settings = requests.empty() ? jobs::RunSettings() : requests[0].settings;
                return photo::photoOrder(
                    [](jobs::Run& run, const photo::PhotoRequest& part) {
                        photo::PhotoDateEdits(run).ClickCopyFileNameToCommentsAction(part);
                    },
                    photos);
            }};
}

DateCommand commandOf(const DatesOptions& options) {
    if (options.copy == u"name-to-comments")
        return namesToComments();
    if (options.job == u"copy")
        return copyOf(options.copy);
    if (options.job != u"from-name")
        return changeOf(options);
    return {&batch::planDatesFromNames, [](const Items& items, batch::Requests requests) {
                return batch::nameDateOrder(batch::planDatesFromNames(items), std::move(requests));
            }};
}

/// Prints "PATH: now -> after" on standard output, what is to be known besides on standard error.
int printLines(const GlobalOptions& global, const std::vector<DateLine>& lines) {
    bool anyWritten = false, anyMissing = false;
    QByteArray text;
    for (const DateLine& line : lines) {
        anyWritten |= line.isWritten();
        anyMissing |= line.note == batch::DateNote::Missing;
        if (line.isWritten())
            text += platform::nativePath(line.source) + ": " + line.now.toUtf8() + " -> " +
                    line.after.toUtf8() + '\n';
        const QString note = batch::dateNoteMessage(line.note).text();
        if (!note.isEmpty() && (!global.quiet || !line.isWritten()))
            printError(QStringLiteral("%1: %2").arg(line.source, note));
    }
    return printOut(text) && anyWritten && !anyMissing ? kAllDone : kSomeFailed;
}

/// Prints {"items":[{"source","now","after","status":"planned"|"skipped","message"}]}.
int printLinesAsJson(const std::vector<DateLine>& lines) {
    bool anyWritten = false, anyMissing = false;
    JsonWriter json;
    json.beginObject().key("items").beginArray();
    for (const DateLine& line : lines) {
        anyWritten |= line.isWritten();
        anyMissing |= line.note == batch::DateNote::Missing;
        json.beginObject();
        json.key("source").string(line.source);
        json.key("now").string(line.now);
        json.key("after").string(line.after);
        json.key("status").string(line.isWritten() ? u"planned" : u"skipped");
        json.key("message").string(batch::dateNoteMessage(line.note).text());
        json.endObject();
    }
    json.endArray().endObject();
    return printOut(json.take()) && anyWritten && !anyMissing ? kAllDone : kSomeFailed;
}

int printPlanned(const GlobalOptions& global, const DatesOptions& options,
                 const DateCommand& command) {
    media::MediaImport import;
    import.setStopRequested(&isInterrupted);
    import.setTakesFilesOnce(true);
    import.importEveryKind(options.paths);
    reportUnknown(import);
    reportSkipped(import);
    if (interruption())
        return interruption();
    if (import.localPhotoItemArray().empty() && import.skipped().empty())
        return reportNothingToDo();
    const auto lines = command.plan(import.localPhotoItemArray());
    const int status = global.json ? printLinesAsJson(lines) : printLines(global, lines);
    return import.skipped().empty() ? status : kSomeFailed;
}

} // namespace

int runDates(const GlobalOptions& global, const DatesOptions& options, Console& console) {
    if (options.job == u"set" &&
        (!batch::setsOneDate(options.request) || !batch::isUsable(options.request))) {
        printError(QString::fromUtf16(kDateAlert));
        return kWrongUsage;
    }
    const DateCommand command = commandOf(options);
    if (options.dryRun)
        return printPlanned(global, options, command);
    const auto order = [&command](const auto& import, const auto& settings) {
        return command.order(import.localPhotoItemArray(), requestsFor(import, settings));
    };
    return runOverItems(global, options.paths, QStringLiteral("dated"), order, console,
                        Repeats::TakenOnce, &media::MediaImport::importEveryKind);
}

} // namespace clipheave::cli
