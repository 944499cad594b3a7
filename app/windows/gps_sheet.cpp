// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/gps_sheet.h"

#include "app/activity/activity_parts.h"
#include "app/list/thumbnail_view.h"
#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/map_view.h"
#include "app/widgets/parts.h"
#include "app/widgets/token_label.h"
#include "media/position_text.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/text.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <optional>

namespace clipheave::app {

namespace {

constexpr QSize kGpsSize(880, 544);
constexpr int kGpsColumn = 248, kBesideMap = 20, kBodyPadding = 16, kBetweenRows = 12;
constexpr QSize kGpsThumbnail(72, 52);
constexpr int kNoteSide = 16;
/// 0.1 m: a pixel of the map is more.
constexpr int kPickedDecimals = 6;

std::optional<GeoPoint> positionIn(const GpsControls& controls) {
    const auto north =
        media::positionNumber(controls.latitudelab->text(), media::PositionPart::Latitude);
    const auto east =
        media::positionNumber(controls.longtitudelab->text(), media::PositionPart::Longitude);
    if (!north || !east)
        return std::nullopt;
    return GeoPoint{platform::doubleValue(*north), platform::doubleValue(*east)};
}

QVBoxLayout* gpsColumn(QWidget* parent) {
    auto* column = new QVBoxLayout(parent);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(kBetweenRows);
    return column;
}

/// Headings and buttons stand below the labels of the rows.
void addBelowLabels(QVBoxLayout& column, QWidget* part) {
    auto* row = new QHBoxLayout;
    row->setContentsMargins(FieldRow::kGutter, 0, 0, 0);
    row->addWidget(part);
    column.addLayout(row);
}

void addGpsHeading(QVBoxLayout& column, const QString& title, QWidget* parent) {
    auto* heading = new SectionHeading(title, parent);
    heading->setFixedHeight(24);
    addBelowLabels(column, heading);
}

} // namespace

GpsSheet::GpsSheet(QWidget* parent) : Sheet(tr("Edit GPS"), kGpsSize, parent) {
    setObjectName(QStringLiteral("changeGPSWindow"));
    auto* row = new QHBoxLayout(body());
    row->setContentsMargins(kBodyPadding - FieldRow::kGutter, kBodyPadding, kBodyPadding,
                            kBodyPadding);
    row->setSpacing(kBesideMap);
    auto* left = new QWidget(body());
    left->setFixedWidth(FieldRow::kGutter + Theme::instance().scaled(kGpsColumn));
    QVBoxLayout* column = gpsColumn(left);
    buildPhoto(*column);
    buildFields(*column);
    column->addStretch(1);
    row->addWidget(left);
    m_controls.previewMapView = new MapView(body());
    m_controls.previewMapView->setObjectName(QStringLiteral("previewMapView"));
    m_controls.previewMapView->setPickingEnabled(true);
    row->addWidget(m_controls.previewMapView, 1);
    buildFoot();
    connectControls();
    setFirstField(m_controls.latitudelab);
}

void GpsSheet::buildPhoto(QVBoxLayout& column) {
    auto* row = new QHBoxLayout;
    row->setContentsMargins(FieldRow::kGutter, 0, 0, 0);
    row->setSpacing(12);
    m_thumbnail = new ThumbnailView(kGpsThumbnail, body());
    row->addWidget(m_thumbnail);
    m_name = new ToneLabel(FontRole::BodyMedium, Token::text1, body());
    m_name->setObjectName(QStringLiteral("gpsPhotoName"));
    m_date = new ToneLabel(FontRole::Cell, Token::text3, body());
    m_date->setObjectName(QStringLiteral("gpsPhotoDate"));
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addStretch(1);
    texts->addWidget(m_name);
    texts->addWidget(m_date);
    texts->addStretch(1);
    row->addLayout(texts, 1);
    column.addLayout(row);
}

EditField* GpsSheet::addField(QVBoxLayout& column, const QString& label, const char* name) {
    auto* field = new EditField(body());
    field->setObjectName(QLatin1String(name));
    column.addWidget(new FieldRow(label, field, FieldRow::kLabelWidth, body()));
    return field;
}

void GpsSheet::buildFields(QVBoxLayout& column) {
    GpsControls& all = m_controls;
    addGpsHeading(column, tr("Position"), body());
    all.latitudelab = addField(column, tr("Latitude"), "latitudelab");
    all.latitudelab->setSuffix(QStringLiteral("°"));
    all.longtitudelab = addField(column, tr("Longitude"), "longtitudelab");
    all.longtitudelab->setSuffix(QStringLiteral("°"));
    all.altitudelab = addField(column, tr("Altitude"), "altitudelab");
    all.altitudelab->setSuffix(tr("m"));
    all.previewBtn =
        new Button(ButtonKind::Plain, tr("Preview on Map"), QStringLiteral("locate"), body());
    all.previewBtn->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    all.previewBtn->setObjectName(QStringLiteral("PreviewCurrentGPSInMap"));
    addBelowLabels(column, all.previewBtn);
    m_stamps = new QWidget(body());
    QVBoxLayout* stamps = gpsColumn(m_stamps);
    addGpsHeading(*stamps, tr("Time stamp, UTC"), m_stamps);
    all.dateStamplab = addField(*stamps, tr("Date"), "dateStamplab");
    all.dateStamplab->setPlaceholderText(QStringLiteral("YYYY:MM:DD"));
    all.timeStamplab = addField(*stamps, tr("Time"), "timeStamplab");
    all.timeStamplab->setPlaceholderText(QStringLiteral("HH:MM:SS"));
    column.addWidget(m_stamps);
}

void GpsSheet::buildFoot() {
    m_noteImage = new TokenIcon(kNoteSide, this);
    m_note = new ToneLabel(FontRole::Cell, Token::text2, this);
    m_note->setObjectName(QStringLiteral("gpsNote"));
    m_controls.cancelBtn = new Button(ButtonKind::Plain, tr("Cancel"), {}, this);
    m_controls.cancelBtn->setObjectName(QStringLiteral("cancelGPSBtn"));
    m_controls.saveBtn = new Button(ButtonKind::Primary, tr("Save GPS"), {}, this);
    m_controls.saveBtn->setObjectName(QStringLiteral("ClickSaveChangeGPSAction"));
    m_controls.saveBtn->setDefault(true);
    foot()->insertWidget(0, m_noteImage);
    foot()->insertWidget(1, m_note);
    foot()->addWidget(m_controls.cancelBtn);
    foot()->addWidget(m_controls.saveBtn);
}

void GpsSheet::connectControls() {
    const GpsControls& all = m_controls;
    for (EditField* field : all.fields()) {
        connect(field, &EditField::editingFinished, this, [this, field] {
            refreshFault(field);
            movePin();
        });
        connect(field, &EditField::textChanged, this, [this, field] {
            if (!field->fault().isEmpty()) // it goes as soon as it can, but comes with the end
                refreshFault(field);
        });
    }
    connect(all.previewMapView, &MapView::positionPicked, this, &GpsSheet::takePosition);
    connect(all.previewBtn, &Button::clicked, this, &GpsSheet::preview);
    connect(all.cancelBtn, &Button::clicked, this, &GpsSheet::reject);
    connect(all.saveBtn, &Button::clicked, this, &GpsSheet::save);
}

void GpsSheet::present(Purpose purpose, const media::ItemPointer& photo, qsizetype count) {
    const bool removes = purpose == Purpose::ChangeAndRemoveExif;
    const QString name = platform::displayPath(photo->fileName);
    setTitle(removes                   ? tr("Change GPS and Remove EXIF")
             : purpose == Purpose::Add ? tr("Add GPS")
                                       : tr("Edit GPS"));
    setSubtitle(count > 1 ? tr("%1 and %2 more").arg(name).arg(count - 1) : name);
    m_thumbnail->setItem(photo);
    m_name->setText(name);
    m_name->setToolTip(name);
    m_date->setText(photo->shootDateStr);
    m_stamps->setVisible(!removes);
    const QString primary =
        removes ? (count == 1 ? tr("Save 1 Photo without EXIF")
                              : tr("Save %1 Photos without EXIF").arg(count))
                : (count == 1 ? tr("Save GPS to 1 Photo") : tr("Save GPS to %1 Photos").arg(count));
    m_controls.saveBtn->setText(primary);
    m_controls.saveBtn->setAccessibleName(primary);
    for (EditField* field : m_controls.fields())
        field->setFault({});
    refreshNote();
    showPosition();
    open();
}

void GpsSheet::showPosition() {
    MapView* map = m_controls.previewMapView;
    const auto position = positionIn(m_controls);
    if (position) {
        map->setCentre(position->latitude, position->longitude);
        map->removeAllAnnotations();
        map->addAnnotation(position->latitude, position->longitude);
    } else if (m_controls.latitudelab->text().isEmpty() &&
               m_controls.longtitudelab->text().isEmpty()) {
        map->removeAllAnnotations();
        map->clearPosition();
    }
}

void GpsSheet::movePin() {
    if (const auto position = positionIn(m_controls))
        m_controls.previewMapView->movePin(position->latitude, position->longitude);
}

void GpsSheet::takePosition(double latitude, double longitude) {
    m_controls.latitudelab->setText(QString::number(latitude, 'f', kPickedDecimals));
    m_controls.longtitudelab->setText(QString::number(longitude, 'f', kPickedDecimals));
    movePin();
}

EditField* GpsSheet::markFaults() {
    EditField* first = nullptr;
    for (EditField* field : m_controls.fields()) {
        refreshFault(field);
        if (first == nullptr && !field->fault().isEmpty())
            first = field;
    }
    return first;
}

void GpsSheet::refreshFault(EditField* field) {
    field->setFault(m_faultRule ? m_faultRule(field->objectName(), field->text()) : QString());
    refreshNote();
}

/// The first fault, else what the map is for.
void GpsSheet::refreshNote() {
    QString fault;
    for (const EditField* field : m_controls.fields())
        if (fault.isEmpty())
            fault = field->fault();
    m_noteImage->setIcon(fault.isEmpty() ? QStringLiteral("pin") : QStringLiteral("alert"),
                         fault.isEmpty() ? Token::text3 : Token::warn);
    m_note->setText(fault.isEmpty() ? tr("Click the map to move the pin") : fault);
    m_note->setToken(fault.isEmpty() ? Token::text2 : Token::warn);
    m_note->setToolTip(fault);
}

} // namespace clipheave::app
