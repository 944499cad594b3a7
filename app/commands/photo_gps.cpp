// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/gps_state.h"
#include "app/commands/surroundings.h"
#include "app/widgets/edit_field.h"
#include "app/windows/gps_sheet.h"
#include "app/windows/main_window.h"
#include "app/windows/map_window.h"
#include "media/position_text.h"
#include "photo/messages.h"
#include "photo/photo_edits.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/text.h"

#include <algorithm>
#include <utility>

namespace clipheave::app {

namespace {

struct PlaceField {
    EditField* GpsControls::*control;
    QString photo::PlaceTexts::*text;
};
constexpr PlaceField kPlaceFields[] = {
    {&GpsControls::latitudelab, &photo::PlaceTexts::latitudelab},
    {&GpsControls::longtitudelab, &photo::PlaceTexts::longtitudelab},
    {&GpsControls::altitudelab, &photo::PlaceTexts::altitudelab},
    {&GpsControls::dateStamplab, &photo::PlaceTexts::dateStamplab},
    {&GpsControls::timeStamplab, &photo::PlaceTexts::timeStamplab},
};

photo::PlaceTexts placeIn(const GpsControls& controls) {
    photo::PlaceTexts place;
    for (const auto& [control, text] : kPlaceFields)
        place.*text = (controls.*control)->text();
    return place;
}

void fill(const GpsControls& controls, const photo::PlaceTexts& place) {
    for (const auto& [control, text] : kPlaceFields)
        (controls.*control)->setShownText(place.*text);
}

/// With six decimals at most: 0.1 m, where a photo's fractions give sixteen digits.
void shorten(QString& number) {
    if (number.isEmpty())
        return;
    number = QString::number(platform::doubleValue(number), 'f', 6);
    while (number.endsWith(u'0'))
        number.chop(1);
    if (number.endsWith(u'.'))
        number.chop(1);
}

/// The GPS data of a photo; empty texts where it has none, and of one that cannot be read, which is
/// logged.
photo::PlaceTexts placeOf(const media::IKImageItem& photo, ActivityModel& activity) {
    auto pane = photo::paneOfPhoto(photo.filePath);
    if (!pane) {
        activity.addLog(pane.error().text(), photo.filePath, true);
        return {};
    }
    for (QString* number :
         {&pane->place.latitudelab, &pane->place.longtitudelab, &pane->place.altitudelab})
        shorten(*number);
    return pane->place;
}

bool isEmpty(const photo::PlaceTexts& place) {
    return std::ranges::all_of(
        kPlaceFields, [&place](const PlaceField& field) { return (place.*field.text).isEmpty(); });
}

/// Why this text alone cannot be written, in words.
QString faultOf(const GpsControls& controls, const QString& name, const QString& typed) {
    photo::PlaceTexts place{QStringLiteral("0"), QStringLiteral("0"), QStringLiteral("0"), {}, {}};
    for (const auto& [control, text] : kPlaceFields)
        if (name == (controls.*control)->objectName())
            place.*text = typed;
    const auto fault = photo::placeFault(place, false);
    return fault && !typed.isEmpty() ? fault->text() : QString();
}

void focusFirstEmpty(const GpsControls& controls) {
    for (EditField* field : controls.fields())
        if (field->text().isEmpty() && field->isVisible())
            return field->setFocus(Qt::OtherFocusReason);
}

} // namespace

bool AppDelegate::bAddGPS() const {
    return m_gps->bAddGPS;
}

void AppDelegate::connectGps() {
    GpsSheet* sheet = m_gpsSheet.get();
    sheet->setFaultRule([sheet](const QString& field, const QString& text) {
        return faultOf(sheet->controls(), field, text);
    });
    connect(sheet, &GpsSheet::preview, this, &AppDelegate::PreviewCurrentGPSInMap);
    connect(sheet, &GpsSheet::save, this, &AppDelegate::ClickSaveChangeGPSAction);
    connect(sheet, &GpsSheet::finished, this, [this, sheet] {
        m_gps->request = {};
        // Nothing of one photo may come into another by a later command that reads these fields.
        fill(sheet->controls(), {});
    });
}

void AppDelegate::openGpsSheet(const media::ItemPointer& photo, const photo::PlaceTexts& place) {
    const auto& items = m_gps->request.items;
    const auto count =
        std::ranges::count_if(items, [](const auto& item) { return isPhoto(item->filePath); });
    fill(m_gpsSheet->controls(), place);
    m_gpsSheet->present(m_gps->removesExif ? GpsSheet::Purpose::ChangeAndRemoveExif
                        : m_gps->bAddGPS   ? GpsSheet::Purpose::Add
                                           : GpsSheet::Purpose::Edit,
                        photo, count);
}

void AppDelegate::EditeGPSExifDataPhoto() {
    const auto photo = selectedPhoto();
    if (!photo)
        return showNoSelectionAlert();
    const photo::PlaceTexts place = placeOf(*photo, *m_activity);
    if (isEmpty(place))
        return showNoGpsAlert(tr("The selected photo does not contain GPS information."));
    *m_gps = {false, false, {selectedItems(), runSettings()}};
    openGpsSheet(photo, place);
}

void AppDelegate::AddGPSExifDataPhoto() {
    const auto photo = selectedPhoto();
    if (!photo)
        return showNoSelectionAlert();
    *m_gps = {true, false, {selectedItems(), runSettings()}};
    openGpsSheet(photo, {});
}

void AppDelegate::ChangeGPSExifDataPhoto() {
    const auto photo = selectedPhoto();
    if (!photo)
        return showNoSelectionAlert();
    *m_gps = {false, true, {selectedItems(), runSettings()}};
    openGpsSheet(photo, placeOf(*photo, *m_activity));
}

void AppDelegate::PreviewCurrentGPSInMap() {
    m_gpsSheet->markFaults();
    m_gpsSheet->showPosition();
}

void AppDelegate::ClickSaveChangeGPSAction() {
    if (m_gps->request.items.empty())
        return showNoSelectionAlert();
    const GpsControls& controls = m_gpsSheet->controls();
    const photo::PlaceTexts place = placeIn(controls);
    const auto fault = photo::placeFault(place, !m_gps->removesExif);
    if (fault && fault->code() == photo::kValueEmpty) {
        m_surroundings->alerts->ask(m_gpsSheet.get(), tr("Vaule Error"),
                                    tr("Each value cannot be empty."), {tr(" Ok ")});
        return focusFirstEmpty(controls);
    }
    if (EditField* faulty = m_gpsSheet->markFaults())
        return faulty->setFocus(Qt::OtherFocusReason);
    const auto write = m_gps->removesExif ? &photo::PhotoEdits::ChangeGPSExifDataPhoto
                                          : &photo::PhotoEdits::ClickSaveChangeGPSAction;
    startWriting(m_gps->removesExif ? tr("Change GPS and remove EXIF data") : tr("Save GPS data"),
                 photo::photoOrder(
                     [write, place](jobs::Run& run, const photo::PhotoRequest& request) {
                         photo::PhotoEdits edits(run);
                         (edits.*write)(request, place);
                     },
                     m_gps->request));
    m_gpsSheet->accept();
}

void AppDelegate::ShowMapAction() {
    const auto photo = selectedPhoto();
    if (!photo)
        return showNoSelectionAlert();
    const photo::PlaceTexts place = placeOf(*photo, *m_activity);
    const auto north = media::positionNumber(place.latitudelab, media::PositionPart::Latitude);
    const auto east = media::positionNumber(place.longtitudelab, media::PositionPart::Longitude);
    if (!north || !east)
        return showNoGpsAlert(tr("This photo does not contain GPS information."));
    m_mapWindow->present(platform::displayPath(photo->fileName), platform::doubleValue(*north),
                         platform::doubleValue(*east));
}

void AppDelegate::showNoGpsAlert(const QString& text) {
    m_surroundings->alerts->ask(m_window.get(), tr("No GPS Data"), text, {tr(" Ok ")});
}

} // namespace clipheave::app
