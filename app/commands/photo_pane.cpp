// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/photo_pane.h"
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/item_list.h"
#include "app/commands/pane_state.h"
#include "app/commands/surroundings.h"
#include "app/commands/write_report.h"
#include "app/jobs/job_board.h"
#include "app/list/media_list_model.h"
#include "app/list/photo_grid.h"
#include "app/windows/main_window.h"
#include "app/windows/photo_dates_window.h"
#include "media/position_text.h"
#include "photo/messages.h"
#include "photo/photo_edits.h"
#include "photo/photo_facts.h"

#include <QItemSelectionModel>

#include <algorithm>

namespace clipheave::app {

namespace {

using media::IKImageItem;

bool isPhotoItem(const media::ItemPointer& item) {
    return media::MediaKind::isPhoto(item->filePath);
}

/// What a field of the pane shows of an item, as the import has read it.
struct KnownText {
    const char* field;
    QString (*of)(const IKImageItem& item);
};

QString signedNumber(const QString& sign, double number) {
    return sign.isEmpty() ? QString() : sign + QString::number(number);
}

/// Deliberate: without the comments, which no import reads; thousands of photos are compared
/// without opening one.
constexpr KnownText kKnownTexts[] = {
    {"titlelab", [](const IKImageItem& item) { return item.fileTitle; }},
    {"artistlab", [](const IKImageItem& item) { return item.fileArist; }},
    {"keywordslab", [](const IKImageItem& item) { return item.fileKeyWords; }},
    {"copyrightlab", [](const IKImageItem& item) { return item.fileCopyright; }},
    {"imageDescrilab", [](const IKImageItem& item) { return item.fileDescription; }},
    {"cameraMakelab", [](const IKImageItem& item) { return item.fileMake; }},
    {"cameraModelab", [](const IKImageItem& item) { return item.fileModel; }},
    {"cameraDatelab", [](const IKImageItem& item) { return item.shootDateStr; }},
    {"gpsLatilab",
     [](const IKImageItem& item) { return signedNumber(item.latitudeFormat, item.filelatitude); }},
    {"gpsLongtlab",
     [](const IKImageItem& item) {
         return signedNumber(item.longtitudeFormat, item.filelongtitude);
     }},
    {"gpsAitlab",
     [](const IKImageItem& item) { return signedNumber(item.AtitudeFormat, item.fileAtitude); }},
};

/// The fields in which the photos differ.
QSet<QString> severalOf(const std::vector<media::ItemPointer>& photos) {
    QSet<QString> several;
    for (const KnownText& known : kKnownTexts) {
        const auto differs = [&](const media::ItemPointer& photo) {
            return known.of(*photo) != known.of(*photos.front());
        };
        if (std::any_of(photos.begin(), photos.end(), differs))
            several.insert(QLatin1String(known.field));
    }
    return several;
}

PhotoTargets targetsOf(const std::vector<media::ItemPointer>& selected, bool sorted) {
    std::vector<media::ItemPointer> photos;
    std::copy_if(selected.begin(), selected.end(), std::back_inserter(photos), isPhotoItem);
    PhotoTargets targets;
    targets.photos = static_cast<int>(photos.size());
    targets.others = static_cast<int>(selected.size() - photos.size());
    targets.several = severalOf(photos);
    if (sorted)
        for (const auto& photo : photos)
            targets.names.append(photo->fileName);
    return targets;
}

/// The field that a reason is about; for a value that misses, the first that is empty.
QString fieldAtFault(const photo::PaneTexts& texts, const platform::Message& fault) {
    if (fault.code() == photo::kNoCameraDate)
        return QStringLiteral("cameraDatelab");
    if (fault.code() == photo::kPhotoLatitudeNotInRange || texts.place.latitudelab.isEmpty())
        return QStringLiteral("gpsLatilab");
    if (fault.code() == photo::kPhotoLongitudeNotInRange || texts.place.longtitudelab.isEmpty())
        return QStringLiteral("gpsLongtlab");
    return QStringLiteral("gpsAitlab");
}

PhotoPane::Fault shownFaultOf(const photo::PaneTexts& texts) {
    const auto fault = photo::paneFault(texts);
    return fault ? PhotoPane::Fault{fieldAtFault(texts, *fault), fault->text()}
                 : PhotoPane::Fault();
}

/// Shows in the foot of the pane how an Apply goes, beside what its row in the panel says; while
/// the photo that it began with is shown.
void followInFoot(BoardJob& job, PhotoPane& pane, const ActivityModel& activity, PaneState& state) {
    const auto isShown = [&state, began = state.shownPhoto] { return state.shownPhoto == began; };
    job.took = [&, isShown, report = job.took](int id, std::vector<JobArrival>& arrivals) {
        for (const JobArrival& arrival : arrivals)
            state.photoOutputs += arrival.outcome.outputs;
        report(id, arrivals);
        if (const ActivityJob* row = activity.job(id); row && isShown())
            pane.showSaving(row->finished, row->total);
    };
    job.ended = [&, isShown, report = job.ended](int id, jobs::Run& run) {
        report(id, run);
        if (const ActivityJob* row = activity.job(id); row && isShown())
            pane.showSaved(row->succeeded(), row->failed);
    };
}

} // namespace

void AppDelegate::connectPhotoPane() {
    PhotoPane* pane = m_window->photoPane();
    pane->setFaultRule(&shownFaultOf);
    connect(pane, &PhotoPane::fieldEditingBegan, this,
            [this](const QString& field) { control_textShouldBeginEditing(field); });
    connect(pane, &PhotoPane::revealRequested, this, &AppDelegate::revealCurrentItem);
    connect(pane, &PhotoPane::outputsRequested, this,
            [this] { m_surroundings->workspace->selectFiles(m_pane->photoOutputs); });
}

void AppDelegate::StartEditViewAction() {
    if (selectedItems().empty())
        return showNoSelectionAlert();
    if (!m_window->showsPhotos())
        m_window->showPhotosOfList();
    m_window->setEditsPhotos(true);
    refreshPhotoPane();
    m_window->photoPane()->view()->focusFirst();
}

void AppDelegate::HideEditViewAction() {
    m_window->setEditsPhotos(false);
    m_window->photoGrid()->setFocus();
}

void AppDelegate::ClickApplyChangeAction() {
    const auto items = selectedItems();
    if (items.empty())
        return showNoSelectionAlert();
    PhotoPane* pane = m_window->photoPane();
    if (!m_window->editsPhotos() || !pane->showsPhoto())
        return StartEditViewAction(); // there is nothing yet that could be applied
    const photo::PaneTexts texts = pane->view()->texts();
    if (!texts.basicInfoChange && !texts.cameraInfoChange && !texts.gpsInfoChange)
        return pane->showNothingToWrite();
    if (const auto fault = photo::paneFault(texts)) // the others stand in the foot already
        return fault->code() == photo::kValueEmpty ? showValueErrorAlert() : void();
    startApply({items, runSettings()}, texts);
}

/// The order keeps the texts as they are now: another try writes the same.
void AppDelegate::startApply(const photo::PhotoRequest& request, const photo::PaneTexts& texts) {
    BoardJob job;
    job.title = tr("Apply changes");
    job.order = photo::photoOrder(
        [texts](jobs::Run& run, const photo::PhotoRequest& wanted) {
            photo::PhotoEdits(run).ClickApplyChangeAction(wanted, texts);
        },
        request);
    WriteReport{*m_activity, *m_surroundings->workspace, [this] { Q_EMIT saveFinished(); }}
        .attachTo(job);
    m_pane->photoOutputs.clear();
    followInFoot(job, *m_window->photoPane(), *m_activity, *m_pane);
    m_window->photoPane()->showSaving(0, static_cast<int>(request.items.size()));
    m_board->start(job);
}

void AppDelegate::showValueErrorAlert() {
    m_surroundings->alerts->ask(m_window.get(), tr("Vaule Error"),
                                tr("Each value cannot be empty."), {tr(" Ok ")});
}

void AppDelegate::ChangeDateExifFromPhoto() {
    const media::ItemPointer item = selectedPhoto();
    if (!item)
        return showNoSelectionAlert();
    const auto dates = photo::photoDates(*item);
    if (!dates) {
        m_activity->addLog(dates.error().text(), item->filePath, true);
        return m_window->showStatus(dates.error().text());
    }
    m_photoDatesWindow->present(item->fileName,
                                {dates->taken, dates->digitised, dates->created, dates->modified});
}

void AppDelegate::refreshPhotoPane() {
    PhotoPane* pane = m_window->photoPane();
    const auto selected = selectedItems();
    // What was typed stays while its photo is selected, whatever else is.
    const bool keeps = !pane->view()->changedSections().isEmpty() &&
                       std::ranges::find(selected, m_pane->shownPhoto) != selected.end();
    const media::ItemPointer item = keeps ? m_pane->shownPhoto : selectedPhoto();
    if (item != m_pane->shownPhoto || !item || !pane->showsPhoto())
        showPhoto(item);
    pane->setTargets(targetsOf(selected, m_mediaController->isSorted()));
}

void AppDelegate::showPhoto(const media::ItemPointer& item) {
    m_pane->showPhoto(item);
    PhotoPane* pane = m_window->photoPane();
    if (!item)
        return pane->showNothing();
    const auto shown = photo::shownPhoto(*item);
    if (!shown) // an empty form would take what the photo has away
        return pane->showNothing(shown.error().text());
    pane->showPhoto({item, shown->texts, shown->facts});
}

} // namespace clipheave::app
