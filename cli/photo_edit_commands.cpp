// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/photo_edit_commands.h"

#include "cli/write_run.h"
#include "photo/date_edits.h"
#include "photo/photo_edits.h"

namespace clipheave::cli {

namespace {

using photo::PhotoEdits;
using photo::PhotoRequest;

int runEdit(const GlobalOptions& global, const PhotoOptions& options,
            const photo::PhotoWorker& worker, Console& console) {
    const auto order = [&](const auto& import, const auto& settings) {
        return photo::photoOrder(worker, {import.localPhotoItemArray(), settings});
    };
    return runOverItems(global, options.paths, QStringLiteral("made"), order, console,
                        Repeats::TakenOnce, &media::MediaImport::importPhotos);
}

struct Removal {
    const char* block;
    void (PhotoEdits::*remove)(const PhotoRequest& request);
};
constexpr Removal kRemovals[] = {
    {"exif", &PhotoEdits::RemoveExifDataFromPhoto},
    {"gps", &PhotoEdits::RemoveGPSDataFromPhoto},
    {"iptc", &PhotoEdits::RemoveIPTCDataFromPhoto},
    {"exif-gps", &PhotoEdits::DeleteExifAndGPSData},
    {"all", &PhotoEdits::DeleteAllPhotoMetadataData},
};

} // namespace

int runPhotoRemove(const GlobalOptions& global, const PhotoOptions& options, Console& console) {
    for (const Removal& removal : kRemovals)
        if (options.block == QLatin1String(removal.block))
            return runEdit(
                global, options,
                [&](jobs::Run& run, const PhotoRequest& request) {
                    PhotoEdits edits(run);
                    (edits.*removal.remove)(request);
                },
                console);
    printError(QStringLiteral("photo remove: \"%1\" is none of exif, gps, iptc, exif-gps, all")
                   .arg(options.block));
    return kWrongUsage;
}

int runPhotoPlace(const GlobalOptions& global, const PhotoOptions& options, Console& console) {
    const photo::PlaceTexts place{options.latitude, options.longitude, options.altitude,
                                  options.date, options.time};
    const bool isChange = options.job == u"change-gps";
    if (const auto fault = photo::placeFault(place, !isChange)) {
        printError(fault->text());
        return kWrongUsage;
    }
    return runEdit(
        global, options,
        [&](jobs::Run& run, const PhotoRequest& request) {
            PhotoEdits edits(run);
            if (isChange)
                edits.ChangeGPSExifDataPhoto(request, place);
            else
                edits.ClickSaveChangeGPSAction(request, place);
        },
        console);
}

namespace {

/// A field of the photo pane; editing it changes its section.
struct PaneField {
    const char* names[3]; ///< of --set; the last may be null
    QString photo::PaneTexts::*text;
    bool photo::PaneTexts::*section;
};
constexpr PaneField kPaneFields[] = {
    {{"title", "fileTitle"}, &photo::PaneTexts::titlelab, &photo::PaneTexts::basicInfoChange},
    {{"keywords", "fileKeyWords"},
     &photo::PaneTexts::keywordslab,
     &photo::PaneTexts::basicInfoChange},
    {{"imageDescription", "description", "fileDescription"},
     &photo::PaneTexts::imageDescrilab,
     &photo::PaneTexts::basicInfoChange},
    {{"artist", "fileArist"}, &photo::PaneTexts::artistlab, &photo::PaneTexts::basicInfoChange},
    {{"copyright", "fileCopyright"},
     &photo::PaneTexts::copyrightlab,
     &photo::PaneTexts::basicInfoChange},
    {{"comments", "fileComments"},
     &photo::PaneTexts::commentslab,
     &photo::PaneTexts::basicInfoChange},
    {{"make", "fileMake"}, &photo::PaneTexts::cameraMakelab, &photo::PaneTexts::cameraInfoChange},
    {{"model", "fileModel"}, &photo::PaneTexts::cameraModelab, &photo::PaneTexts::cameraInfoChange},
    {{"cameraDate", "recorded"},
     &photo::PaneTexts::cameraDatelab,
     &photo::PaneTexts::cameraInfoChange},
};
struct PlaceField {
    const char* name;
    QString photo::PlaceTexts::*text;
};
constexpr PlaceField kPlaceFields[] = {
    {"latitude", &photo::PlaceTexts::latitudelab}, {"longitude", &photo::PlaceTexts::longtitudelab},
    {"altitude", &photo::PlaceTexts::altitudelab}, {"gpsDate", &photo::PlaceTexts::dateStamplab},
    {"gpsTime", &photo::PlaceTexts::timeStamplab},
};

bool isNamed(const PaneField& field, const QString& name) {
    for (const char* known : field.names)
        if (known != nullptr && name == QLatin1String(known))
            return true;
    return false;
}

/// False for a name that the pane does not have.
bool type(const QString& name, const QString& text, photo::PaneTexts& pane) {
    for (const PaneField& field : kPaneFields)
        if (isNamed(field, name)) {
            pane.*field.text = text;
            pane.*field.section = true;
            return true;
        }
    for (const PlaceField& field : kPlaceFields)
        if (name == QLatin1String(field.name)) {
            pane.place.*field.text = text;
            pane.gpsInfoChange = true;
            return true;
        }
    return false;
}

/// Types the values into the pane as the photo fills it: the other fields of a section keep what it
/// has.
void applyTo(jobs::Run& run, const PhotoRequest& photo, const PhotoOptions& options) {
    const QString& path = photo.items.front()->filePath;
    auto pane = photo::paneOfPhoto(path);
    if (!pane) {
        run.ticket(path).report(jobs::refusal(path, pane.error().text()));
        return;
    }
    for (const auto& [name, text] : options.set)
        type(name, text, *pane);
    PhotoEdits(run).ClickApplyChangeAction(photo, *pane);
}

} // namespace

int runPhotoApply(const GlobalOptions& global, const PhotoOptions& options, Console& console) {
    photo::PaneTexts typed;
    for (const auto& [name, text] : options.set)
        if (!type(name, text, typed)) {
            printError(QStringLiteral("unknown field \"%1\"").arg(name));
            return kWrongUsage;
        }
    if (options.set.empty()) {
        printError(QStringLiteral("photo apply takes at least one --set FIELD=TEXT"));
        return kWrongUsage;
    }
    photo::PaneTexts checked = typed;
    if (typed.gpsInfoChange)
        for (QString photo::PlaceTexts::*part :
             {&photo::PlaceTexts::latitudelab, &photo::PlaceTexts::longtitudelab,
              &photo::PlaceTexts::altitudelab})
            if ((typed.place.*part).isEmpty())
                checked.place.*part = QStringLiteral("0"); // the photo's own may stand there
    if (const auto fault = photo::paneFault(checked)) {
        printError(fault->text());
        return kWrongUsage;
    }
    return runEdit(
        global, options,
        [&](jobs::Run& run, const PhotoRequest& request) {
            for (const auto& item : request.items)
                applyTo(run, {{item}, request.settings}, options);
        },
        console);
}

int runPhotoDates(const GlobalOptions& global, const PhotoOptions& options, Console& console) {
    for (const QString& text : {options.taken, options.digitised})
        if (!text.isNull() && !photo::isUsable({{}, text})) {
            printError(QString::fromUtf16(kDateAlert));
            return kWrongUsage;
        }
    const photo::DateTexts texts{options.taken, options.digitised};
    return runEdit(
        global, options,
        [&texts](jobs::Run& run, const PhotoRequest& request) {
            photo::PhotoDateEdits(run).ClickDateChangedSaveAction(request, texts);
        },
        console);
}

} // namespace clipheave::cli
