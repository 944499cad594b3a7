// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/write_run.h"
#include "media/fields.h"
#include "media/media_kind.h"
#include "platform/foundation/dates.h"
#include "platform/image/image_transcode.h"

namespace clipheave::cli {

namespace {

/// Fields of the photo pane alone. Their names are known, so they are not a usage error, but videos
/// and audio files fail with them.
constexpr const char* kOtherKindsFields[] = {
    "make",       "fileMake", "model",   "fileModel", "imageDescription",
    "cameraDate", "gpsDate",  "gpsTime",
};

bool isOtherKindsField(const QString& name) {
    for (const char* field : kOtherKindsFields)
        if (name == QLatin1String(field))
            return true;
    return false;
}

/// Returns why no file can take the values; null when some can.
QString usageFault(const SaveOptions& options) {
    media::VideoPane typed;
    for (const auto& [name, text] : options.set) {
        const media::Field* field = media::videoField(name);
        if (!field && !media::audioField(name) && !isOtherKindsField(name))
            return QStringLiteral("unknown field \"%1\"").arg(name);
        if (field && QLatin1String(field->names.plain) == u"created" &&
            !platform::parseDateText(text))
            return QString::fromUtf16(kDateAlert);
        if (field)
            media::typeIntoField(typed, *field, text);
        if (const auto fault = metadata::positionFault(typed.texts))
            return fault->text();
    }
    return {};
}

/// Types the values into the pane. Returns the reason when a field is not on it.
QString fillPane(media::VideoPane& pane, const SaveOptions& options,
                 const platform::EncodedImage& artwork) {
    for (const auto& [name, text] : options.set) {
        const media::Field* field = media::videoField(name);
        if (!field)
            return QStringLiteral("a video has no field \"%1\"").arg(name);
        media::typeIntoField(pane, *field, text);
    }
    if (!artwork.isNull())
        pane.texts.mediaImageView = artwork;
    return {};
}

/// The same for an audio file.
QString fillAudioPane(media::AudioPane& pane, const SaveOptions& options,
                      const platform::EncodedImage& artwork) {
    for (const auto& [name, text] : options.set) {
        const media::Field* field = media::audioField(name);
        if (!field)
            return QStringLiteral("an audio file has no field \"%1\"").arg(name);
        pane.texts.*field->audio.text = text;
    }
    if (!artwork.isNull())
        pane.texts.audioArtImageView = artwork;
    return {};
}

/// Types the values into the pane of the item's kind. Returns the reason when a field is not on it.
QString fillPanes(jobs::WriteRequest& request, const SaveOptions& options,
                  const platform::EncodedImage& artwork) {
    if (request.audioPane)
        return fillAudioPane(*request.audioPane, options, artwork);
    if (media::MediaKind::isVideo(request.item->filePath))
        return fillPane(request.pane, options, artwork);
    return {};
}

/// Returns the order for the items without a fault; the others fail with theirs.
jobs::RunOrder failingFaulty(std::vector<QString> faults, jobs::RunOrder order) {
    const auto write = order.work;
    order.work = [write, faults = std::move(faults), sources = order.sources](jobs::Run& run,
                                                                              const auto& items) {
        std::vector<std::size_t> writable;
        for (const std::size_t item : items) {
            const QString& source = sources[static_cast<qsizetype>(item)];
            if (faults[item].isEmpty())
                writable.push_back(item);
            else
                run.ticket(source).report(jobs::refusal(source, faults[item]));
        }
        write(run, writable);
    };
    return order;
}

int runWriter(const GlobalOptions& global, const QStringList& paths, const QString& what,
              metadata::Writer writer, Console& console) {
    const auto order = [writer](const auto& import, const auto& settings) {
        return metadata::writeOrder(writer, requestsFor(import, settings));
    };
    return runOverItems(global, paths, what, order, console);
}

} // namespace

int runSave(const GlobalOptions& global, const SaveOptions& options, Console& console) {
    const QString fault = usageFault(options);
    if (!fault.isEmpty()) {
        printError(fault);
        return kWrongUsage;
    }
    platform::EncodedImage artwork;
    if (!options.artwork.isEmpty()) {
        const auto image = platform::imageForArtwork(options.artwork);
        if (!image) {
            printError(image.error().text());
            return kWrongUsage;
        }
        artwork = *image;
    }
    const auto order = [&](const auto& import, const auto& settings) {
        std::vector<jobs::WriteRequest> requests = requestsFor(import, settings);
        std::vector<QString> faults;
        for (jobs::WriteRequest& request : requests)
            faults.push_back(fillPanes(request, options, artwork));
        return failingFaulty(
            faults, metadata::writeOrder(&metadata::VideoMetadata::SaveMeidaFileChangesAction,
                                         std::move(requests)));
    };
    return runOverItems(global, options.paths, QStringLiteral("saved"), order, console);
}

int runClear(const GlobalOptions& global, const QStringList& paths, Console& console) {
    return runWriter(global, paths, QStringLiteral("cleared"),
                     &metadata::VideoMetadata::RemoveMediaFileAction, console);
}

int runTitleToName(const GlobalOptions& global, const QStringList& paths, Console& console) {
    return runWriter(global, paths, QStringLiteral("copied"),
                     &metadata::VideoMetadata::CopyvideoTitletoFileNameAction, console);
}

int runNameToTitle(const GlobalOptions& global, const QStringList& paths, Console& console) {
    return runWriter(global, paths, QStringLiteral("saved"),
                     &metadata::VideoMetadata::CopyvideofilenametoTitleAction, console);
}

} // namespace clipheave::cli
