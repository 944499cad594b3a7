// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/video_pane_view.h"

#include "app/panes/artwork_well.h"
#include "app/panes/form.h"
#include "app/panes/player_view.h"
#include "app/panes/transport_bar.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/fact_label.h"
#include "app/widgets/map_view.h"
#include "app/widgets/parts.h"
#include "app/widgets/token_label.h"
#include "platform/foundation/text.h"
#include "platform/player/mpv_player.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace clipheave::app {

namespace {

constexpr int kPlayerWidth = 336, kPlayerHeight = 189, kArtworkSide = 124;
constexpr int kPositionLabel = 62, kPositionField = 94, kMapHeight = 124;

double signedNumber(const QString& text) {
    return platform::doubleValue(text);
}

} // namespace

VideoPaneView::VideoPaneView(QWidget* parent)
    : QWidget(parent), m_player(new PlayerView(this)),
      m_transport(new TransportBar(m_player->player(), TransportBar::Form::Video, this)) {
    setObjectName(QStringLiteral("mediaMetaView"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(16, 12, 16, 12);
    column->setSpacing(12);
    column->addWidget(makePlayer());
    column->addWidget(makeTags());
    column->addWidget(makePosition());
    column->addStretch();
    connectFields();
}

QWidget* VideoPaneView::makePlayer() {
    auto* part = new QWidget(this);
    auto* row = new QHBoxLayout(part);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(12);
    auto* left = new QVBoxLayout;
    left->setSpacing(4);
    m_player->setFixedSize(kPlayerWidth, kPlayerHeight);
    m_transport->setFixedWidth(kPlayerWidth);
    left->addWidget(m_player);
    left->addWidget(m_transport);
    left->addStretch();
    row->addLayout(left);
    auto* facts = new QVBoxLayout;
    facts->setSpacing(2);
    for (const media::FactLine& line : media::videoFacts({})) {
        auto* label = new FactLabel(line.label, part);
        facts->addWidget(label);
        m_facts.push_back(label);
    }
    facts->addStretch();
    row->addLayout(facts, 1);
    return part;
}

QWidget* VideoPaneView::makeTags() {
    auto* part = new QWidget(this);
    auto* column = new QVBoxLayout(part);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    m_tags = new SectionHeading(tr("Tags"), part);
    column->addWidget(m_tags);
    auto* form = new Form(Form::Order::ByColumns, part);
    for (const media::VideoFormField& row : media::videoFormFields()) {
        auto* field = new EditField(form);
        field->setObjectName(QLatin1String(row.objectName));
        form->addRow(new FieldRow(tr(row.label), field, FieldRow::kLabelWidth, form));
        m_fields.push_back(field);
    }
    // Rows reach into the padding by the room of their marks, so that labels stand under the
    // heading.
    auto* shifted = new QHBoxLayout;
    shifted->setContentsMargins(-FieldRow::kGutter, 0, 0, 0);
    shifted->addWidget(form);
    column->addLayout(shifted);
    return part;
}

QWidget* VideoPaneView::makePosition() {
    auto* part = new QWidget(this);
    auto* column = new QVBoxLayout(part);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    column->addWidget(new SectionHeading(tr("Artwork and position"), part));
    auto* row = new QHBoxLayout;
    row->setSpacing(16);
    m_artwork = new ArtworkWell(kArtworkSide, part);
    m_artwork->setObjectName(QStringLiteral("mediaImageView"));
    connect(m_artwork, &ArtworkWell::openRequested, this, &VideoPaneView::artworkRequested);
    row->addWidget(m_artwork, 0, Qt::AlignTop);
    auto* fields = new QVBoxLayout;
    fields->setSpacing(8);
    const auto add = [&](const char* name, const QString& label, const QString& suffix) {
        auto* field = new EditField(part);
        field->setObjectName(QLatin1String(name));
        field->setSuffix(suffix);
        auto* line = new FieldRow(label, field, kPositionLabel, part);
        line->setFixedWidth(FieldRow::kGutter + kPositionLabel + kPositionField);
        fields->addWidget(line);
        return field;
    };
    m_latitude = add("mediaLatitude", tr("Latitude"), {});
    m_longitude = add("mediaLongtitude", tr("Longitude"), {});
    m_altitude = add("mediaAatitude", tr("Altitude"), QStringLiteral("m"));
    m_location = new TokenLabel({}, FontRole::Caption, Token::text3, part);
    m_location->setContentsMargins(FieldRow::kGutter, 0, 0, 0);
    fields->addWidget(m_location);
    row->addLayout(fields);
    m_map = new MapView(part);
    m_map->setObjectName(QStringLiteral("mediaMapView"));
    m_map->setFixedHeight(kMapHeight);
    row->addWidget(m_map, 1, Qt::AlignTop);
    column->addLayout(row);
    return part;
}

void VideoPaneView::connectFields() {
    std::vector<EditField*> all = m_fields;
    all.insert(all.end(), {m_latitude, m_longitude, m_altitude});
    for (EditField* field : all) {
        connect(field, &EditField::editingBegun, this, [this, field] { beginEditing(field); });
        connect(field, &EditField::textChanged, this, [this] {
            refreshChanges();
            refreshLocation();
        });
    }
    for (EditField* field : {m_latitude, m_longitude})
        connect(field, &EditField::textEdited, this, &VideoPaneView::showPosition);
    connect(m_player->player(), &platform::MpvPlayer::durationChanged, this,
            [this](double seconds) {
                if (!m_needsDuration || seconds <= 0)
                    return;
                m_needsDuration = false;
                m_facts[3]->setFact(QStringLiteral("Duration: "),
                                    media::MediaKind::getMediaDuration(static_cast<int>(seconds)));
                Q_EMIT durationKnown(seconds);
            });
}

void VideoPaneView::beginEditing(EditField* field) {
    for (std::size_t i = 0; i < m_fields.size(); ++i)
        if (m_fields[i] == field)
            m_pane.flags.*media::videoFormFields()[i].group = true;
    // Deliberate: the altitude sets no flag.
    if (field == m_latitude || field == m_longitude)
        m_pane.flags.gpsInfoChange = true;
    Q_EMIT fieldEditingBegan(field->objectName());
}

void VideoPaneView::show(const media::IKImageItem& item, const media::VideoPane& pane) {
    m_pane = pane;
    const QList<media::FactLine> facts = media::videoFacts(item);
    for (std::size_t i = 0; i < m_facts.size(); ++i)
        m_facts[i]->setFact(facts[static_cast<qsizetype>(i)].label,
                            facts[static_cast<qsizetype>(i)].value);
    m_needsDuration = item.fileduratStr.isEmpty();
    for (std::size_t i = 0; i < m_fields.size(); ++i)
        m_fields[i]->setShownText(pane.texts.*media::videoFormFields()[i].text);
    m_latitude->setShownText(pane.texts.mediaLatitude);
    m_longitude->setShownText(pane.texts.mediaLongtitude);
    m_altitude->setShownText(pane.texts.mediaAatitude);
    m_artwork->setPicture(pane.texts.mediaImageView);
    showPosition();
    refreshChanges();
    refreshLocation();
    if (item.filePath.isEmpty())
        m_player->clear();
    else
        m_player->setFile(item.filePath);
}

void VideoPaneView::clear() {
    show({}, media::ShowVideoViewWithItem({}));
}

media::VideoPane VideoPaneView::pane() const {
    media::VideoPane pane = m_pane;
    for (std::size_t i = 0; i < m_fields.size(); ++i)
        pane.texts.*media::videoFormFields()[i].text = m_fields[i]->text();
    pane.texts.mediaLatitude = m_latitude->text();
    pane.texts.mediaLongtitude = m_longitude->text();
    pane.texts.mediaAatitude = m_altitude->text();
    pane.texts.mediaImageView = m_artwork->picture();
    return pane;
}

QString VideoPaneView::artistText() const {
    return m_fields[2]->text();
}

void VideoPaneView::setArtwork(const platform::EncodedPicture& picture) {
    m_artwork->setPicture(picture);
    refreshChanges();
}

void VideoPaneView::setLocationRule(LocationRule rule) {
    m_locationRule = std::move(rule);
    refreshLocation();
}

void VideoPaneView::refreshChanges() {
    int changed = 0;
    for (const EditField* field : m_fields)
        changed += field->isChanged();
    m_tags->setNote(changed > 0 ? tr("%1 changed").arg(changed) : QString());
}

void VideoPaneView::refreshLocation() {
    const QString latitude = m_latitude->text(), longitude = m_longitude->text();
    m_latitude->setSuffix(latitude.isEmpty()           ? QString()
                          : signedNumber(latitude) < 0 ? tr("S")
                                                       : tr("N"));
    m_longitude->setSuffix(longitude.isEmpty()           ? QString()
                           : signedNumber(longitude) < 0 ? tr("W")
                                                         : tr("E"));
    const bool whole = !latitude.isEmpty() && !longitude.isEmpty() && m_locationRule;
    m_location->setText(whole ? QStringLiteral("✓ ") +
                                    m_locationRule(latitude, longitude, m_altitude->text())
                              : QString());
}

void VideoPaneView::showPosition() {
    m_map->removeAllAnnotations();
    if (m_latitude->text().isEmpty() || m_longitude->text().isEmpty())
        return m_map->clearPosition();
    const double latitude = signedNumber(m_latitude->text()),
                 longitude = signedNumber(m_longitude->text());
    m_map->setCentre(latitude, longitude);
    m_map->addAnnotation(latitude, longitude);
}

} // namespace clipheave::app
