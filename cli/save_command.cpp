// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/write_run.h"
#include "media/fields.h"
#include "media/media_kind.h"
#include "platform/foundation/dates.h"
#include "platform/image/image_transcode.h"

namespace clipheave::cli {

namespace {

/// Fields of the photo pane alone; known names, so not wrong usage, but on no other pane.
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
        const media::Field* field = media::videoField(name);
        if (!field && !media::audioField(name) && !isOtherKindsField(name))
            return QStringLiteral("unknown field \"%1\"").arg(name);
        if (field && QLatin1String(field->names.plain) == u"created" &&
            !platform::parseDateText(text))
            return QString::fromUtf16(kDateAlert);
        if (field && QLatin1String(field->names.plain).endsWith(u"tude") && !text.isEmpty() &&
            !isPlainNumber(text))
            return QStringLiteral("%1 takes a number, not \"%2\"").arg(name, text);
    }
    return {};
}

/// Shows the item in its pane and types the values; the reason when a field is not on its pane.
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
    const auto start = [&](metadata::VideoMetadata& writer, jobs::WriteRequest request) {
        QString notThere;
        if (request.audioPane)
            notThere = fillAudioPane(*request.audioPane, options, artwork);
        else if (media::MediaKind::isVideo(request.item->filePath))
            notThere = fillPane(request.pane, options, artwork);
        if (!notThere.isEmpty())
            return writer.refuse(request, notThere);
        writer.SaveMeidaFileChangesAction(request);
    };
    return runWriting(global, options.paths, QStringLiteral("saved"), start, console);
}

int runClear(const GlobalOptions& global, const QStringList& paths, Console& console) {
    return runWriting(
        global, paths, QStringLiteral("cleared"),
        [](auto& writer, const auto& request) { writer.RemoveMediaFileAction(request); }, console);
}

int runTitleToName(const GlobalOptions& global, const QStringList& paths, Console& console) {
    return runWriting(
        global, paths, QStringLiteral("copied"),
        [](auto& writer, const auto& request) { writer.CopyvideoTitletoFileNameAction(request); },
        console);
}

int runNameToTitle(const GlobalOptions& global, const QStringList& paths, Console& console) {
    return runWriting(
        global, paths, QStringLiteral("saved"),
        [](auto& writer, const auto& request) { writer.CopyvideofilenametoTitleAction(request); },
        console);
}

} // namespace clipheave::cli
