// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/photo_pane_view.h"

#include "app/panes/form.h"
#include "app/panes/pane_layout.h"
#include "app/panes/photo_preview.h"
#include "app/panes/shared_fields.h"
#include "app/theme/theme.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/fact_label.h"
#include "app/widgets/map_view.h"
#include "app/widgets/parts.h"
#include "media/position_text.h"
#include "platform/foundation/text.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>
#include <optional>

namespace clipheave::app {

namespace {

constexpr std::size_t kFactCount = 9;
constexpr int kPreviewShare = 336, kPhotoContentShare = 568; // px, in a pane of its usual width
constexpr int kPhotoFactGap = 12, kFactSpacing = 3;
constexpr int kPlaceColumn = 212, kPlaceGap = 20, kPlaceRowGap = 8, kPlaceHeight = 128;
constexpr int kPickDecimals = 5; // about a metre

using Place = SharedFields::Place;

std::optional<double> degreesIn(const EditField* field, media::PositionPart part) {
    const auto number = media::positionNumber(field->text(), part);
    return number ? std::optional(platform::doubleValue(*number)) : std::nullopt;
}

/// A date fills its field; the fields of the position are short, and one has a unit.
bool hasRoomForSuffix(const PhotoField& row) {
    return row.section != &media::ChangeFlags::gpsInfoChange &&
           QLatin1String(row.objectName) != QLatin1String("cameraDatelab");
}

} // namespace

PhotoPaneView::PhotoPaneView(SharedFields& shared, QWidget* parent)
    : QWidget(parent), m_shared(shared), m_column(makePaneColumn(this)) {
    makeTop();
    makeForm(tr("Basic information"), &media::ChangeFlags::basicInfoChange);
    makeForm(tr("Camera"), &media::ChangeFlags::cameraInfoChange);
    makePosition();
    m_column->addStretch();
    connect(&m_shared, &SharedFields::moved, this, [this] {
        for (Form* form : m_forms)
            form->refreshTabOrder();
        refresh();
    });
}

void PhotoPaneView::makeTop() {
    m_top = new QBoxLayout(QBoxLayout::LeftToRight);
    m_top->setSpacing(kPhotoFactGap);
    m_preview = new PhotoPreview(this);
    m_top->addWidget(m_preview, 0, Qt::AlignTop);
    auto* facts = new QVBoxLayout;
    facts->setSpacing(kFactSpacing);
    for (std::size_t i = 0; i < kFactCount; ++i) {
        m_facts.push_back(new FactLabel({}, this));
        facts->addWidget(m_facts.back());
    }
    facts->addStretch();
    m_top->addLayout(facts, 1);
    addInset(m_column, m_top);
}

void PhotoPaneView::makeForm(const QString& title, bool media::ChangeFlags::*section) {
    m_sections.push_back({title, new SectionHeading(title, this), section});
    addHeading(m_column, m_sections.back().heading);
    auto* form = new Form(Form::Order::ByRows, this);
    for (const PhotoField& row : kPhotoFields)
        if (row.section == section)
            form->addRow(makeRow(row, 0));
    m_column->addWidget(form);
    m_forms.push_back(form);
}

void PhotoPaneView::makePosition() {
    const QString title = tr("Position");
    m_sections.push_back(
        {title, new SectionHeading(title, this), &media::ChangeFlags::gpsInfoChange});
    addHeading(m_column, m_sections.back().heading);
    auto* row = new QHBoxLayout;
    row->setSpacing(kPlaceGap);
    auto* fields = new QVBoxLayout;
    fields->setSpacing(kPlaceRowGap);
    for (const PhotoField& line : kPhotoFields)
        if (line.section == &media::ChangeFlags::gpsInfoChange)
            fields->addWidget(makeRow(line, kPlaceColumn));
    fields->addStretch();
    row->addLayout(fields);
    field("gpsAitlab")->setSuffix(tr("m"));
    m_map = new MapView(this);
    m_map->setObjectName(QStringLiteral("gpsPaneMapView"));
    m_map->setFixedHeight(kPlaceHeight);
    m_map->setPickingEnabled(true);
    m_map->setToolTip(tr("Click to take a position"));
    row->addWidget(m_map, 1, Qt::AlignTop);
    m_column->addLayout(row);
    connect(m_map, &MapView::positionPicked, this, &PhotoPaneView::takePick);
}

/// `fixedWidth`: from the label on; 0 for a row that takes the room there is.
FieldRow* PhotoPaneView::makeRow(const PhotoField& row, int fixedWidth) {
    const QString name = QLatin1String(row.objectName);
    EditField* field = m_shared.field(name);
    const bool isShared = field != nullptr;
    if (!isShared) {
        field = new EditField(this);
        field->setObjectName(name);
    }
    // A shared field comes with the others.
    auto* line =
        new FieldRow(tr(row.label), isShared ? nullptr : field, FieldRow::kLabelWidth, this);
    if (isShared)
        m_shared.addRow(Place::Photo, name, line);
    if (fixedWidth > 0)
        line->setFixedWidth(FieldRow::kGutter + Theme::instance().scaled(fixedWidth));
    connectField(field, row);
    m_fields.push_back(field);
    return line;
}

void PhotoPaneView::connectField(EditField* field, const PhotoField& row) {
    const auto isHere = [this, field] {
        return !SharedFields::isShared(field->objectName()) || m_shared.place() == Place::Photo;
    };
    connect(field, &EditField::editingBegun, this, [this, isHere, &row] {
        if (isHere())
            begin(row);
    });
    connect(field, &EditField::textChanged, this, [this, isHere] {
        if (isHere())
            refresh();
    });
    if (row.section == &media::ChangeFlags::gpsInfoChange)
        connect(field, &EditField::textEdited, this, &PhotoPaneView::showPosition);
}

void PhotoPaneView::begin(const PhotoField& row) {
    m_flags.*row.section = true;
    Q_EMIT fieldEditingBegan(QLatin1String(row.objectName));
    refresh();
}

void PhotoPaneView::takePick(double latitude, double longitude) {
    begin(*std::find_if(std::begin(kPhotoFields), std::end(kPhotoFields), [](const auto& row) {
        return QLatin1String(row.objectName) == QLatin1String("gpsLatilab");
    }));
    field("gpsLatilab")->setText(QString::number(latitude, 'f', kPickDecimals));
    field("gpsLongtlab")->setText(QString::number(longitude, 'f', kPickDecimals));
    m_map->movePin(latitude, longitude);
}

EditField* PhotoPaneView::field(const char* name) const {
    for (EditField* field : m_fields)
        if (field->objectName() == QLatin1String(name))
            return field;
    return nullptr;
}

void PhotoPaneView::show(const PhotoContent& content) {
    for (std::size_t i = 0; i < m_facts.size(); ++i) {
        const media::FactLine fact = content.facts.value(static_cast<qsizetype>(i));
        m_facts[i]->setFact(fact.label, fact.value);
    }
    m_flags = {};
    photo::PaneTexts texts = content.texts;
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const QString name = m_fields[i]->objectName();
        if (SharedFields::isShared(name))
            m_shared.setShownText(Place::Photo, name, kPhotoFields[i].text(texts));
        else
            m_fields[i]->setShownText(kPhotoFields[i].text(texts));
    }
    m_preview->setItem(content.item);
    showPosition();
    refresh();
}

photo::PaneTexts PhotoPaneView::texts() const {
    photo::PaneTexts texts;
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const QString name = m_fields[i]->objectName();
        kPhotoFields[i].text(texts) =
            SharedFields::isShared(name) ? m_shared.text(Place::Photo, name) : m_fields[i]->text();
    }
    texts.basicInfoChange = m_flags.basicInfoChange;
    texts.cameraInfoChange = m_flags.cameraInfoChange;
    texts.gpsInfoChange = m_flags.gpsInfoChange;
    return texts;
}

QStringList PhotoPaneView::changedSections() const {
    QStringList titles;
    for (const Section& section : m_sections)
        if (m_flags.*section.flag)
            titles.append(section.title);
    return titles;
}

void PhotoPaneView::setSeveral(const QSet<QString>& fields) {
    m_several = fields;
    refreshSeveral();
}

QStringList PhotoPaneView::severalLabels() const {
    QStringList labels;
    for (const PhotoField& row : kPhotoFields)
        if (m_several.contains(QLatin1String(row.objectName)) && m_flags.*row.section)
            labels.append(tr(row.label));
    return labels;
}

/// Behind the text of the shown photo, and in the place of one that it does not have.
void PhotoPaneView::refreshSeveral() {
    if (m_shared.place() != Place::Photo)
        return;
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        EditField* field = m_fields[i];
        const bool differs = m_several.contains(field->objectName()) && !field->isChanged();
        field->setPlaceholderText(differs ? tr("several values") : QString());
        if (field->fault().isEmpty())
            field->setToolTip(differs ? tr("The selected photos have several values here")
                                      : QString());
        if (hasRoomForSuffix(kPhotoFields[i]))
            field->setSuffix(differs && !field->text().isEmpty() ? tr("several values")
                                                                 : QString());
    }
}

void PhotoPaneView::setFault(const QString& name, const QString& reason) {
    for (EditField* field : m_fields)
        field->setFault(field->objectName() == name ? reason : QString());
}

bool PhotoPaneView::restore(QWidget* widget) {
    auto* field = qobject_cast<EditField*>(widget);
    if (field == nullptr || !field->isChanged() || !isAncestorOf(field))
        return false;
    field->setText(field->shownText());
    showPosition();
    return true;
}

void PhotoPaneView::focusFirst() {
    m_fields.front()->setFocus(Qt::OtherFocusReason);
}

void PhotoPaneView::refresh() {
    for (const Section& section : m_sections)
        section.heading->setNote(m_flags.*section.flag ? tr("changed") : QString());
    refreshSeveral();
    Q_EMIT edited();
}

void PhotoPaneView::showPosition() {
    m_map->removeAllAnnotations();
    const auto north = degreesIn(field("gpsLatilab"), media::PositionPart::Latitude);
    const auto east = degreesIn(field("gpsLongtlab"), media::PositionPart::Longitude);
    if (!north || !east)
        return m_map->clearPosition();
    m_map->setCentre(*north, *east);
    m_map->addAnnotation(*north, *east);
}

void PhotoPaneView::setPaneWidth(int width) {
    m_paneWidth = width;
    const bool narrow = width < kNarrowPane;
    const int content = width - 2 * kPanePadding;
    m_top->setDirection(narrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    m_preview->setPreviewWidth(content * kPreviewShare / kPhotoContentShare);
    for (Form* form : m_forms)
        form->setColumns(narrow ? 1 : 2);
    fitPaneColumn(m_column, m_paneWidth, this->width());
}

void PhotoPaneView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitPaneColumn(m_column, m_paneWidth, width());
}

} // namespace clipheave::app
