// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/video_pane_view.h"

#include "app/panes/artwork_well.h"
#include "app/panes/elided_label.h"
#include "app/panes/form.h"
#include "app/panes/pane_layout.h"
#include "app/panes/player_card.h"
#include "app/panes/player_view.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/fact_label.h"
#include "app/widgets/map_view.h"
#include "app/widgets/parts.h"
#include "app/widgets/token_label.h"
#include "media/fact_lines.h"
#include "media/fields.h"
#include "media/position_text.h"
#include "platform/foundation/text.h"
#include "platform/player/mpv_player.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace clipheave::app {

namespace {

constexpr int kPlayerShare = 336, kContentShare = 568; // px, in a pane of its usual width
constexpr int kArtworkSide = 124, kFactGap = 12;
constexpr int kPositionLabel = 64, kPositionField = 100, kPositionGap = 16;
constexpr int kMarkSide = 12;

std::optional<double> degreesOf(const EditField* field, media::PositionPart part) {
    const auto number = media::positionNumber(field->text(), part);
    return number ? std::optional(platform::doubleValue(*number)) : std::nullopt;
}

/// The letter behind a number of degrees; none behind what is no number.
QString letterOf(std::optional<double> degrees, const QString& negative, const QString& positive) {
    if (!degrees)
        return {};
    return *degrees < 0 ? negative : positive;
}

} // namespace

VideoPaneView::VideoPaneView(QWidget* parent)
    : QWidget(parent), m_player(new PlayerCard(TransportBar::Form::Video, this)),
      m_column(makePaneColumn(this)) {
    setObjectName(QStringLiteral("mediaMetaView"));
    makePlayer();
    makeTags();
    makePosition();
    m_column->addStretch();
    connectFields();
}

PlayerView* VideoPaneView::player() const {
    return m_player->player();
}

void VideoPaneView::makePlayer() {
    m_top = new QBoxLayout(QBoxLayout::LeftToRight);
    m_top->setSpacing(kFactGap);
    m_top->addWidget(m_player, 0, Qt::AlignTop);
    auto* facts = new QVBoxLayout;
    facts->setSpacing(0);
    for (const media::FactLine& line : media::videoFacts({})) {
        if (!m_facts.empty())
            facts->addStretch();
        m_facts.push_back(new FactLabel(line.label, this));
        facts->addWidget(m_facts.back());
    }
    m_top->addLayout(facts, 1);
    addInset(m_column, m_top);
}

void VideoPaneView::makeTags() {
    m_tags = new SectionHeading(tr("Tags"), this);
    addHeading(m_column, m_tags);
    m_form = new Form(Form::Order::ByColumns, this);
    for (const media::VideoFormField& row : media::kVideoFormFields) {
        auto* field = new EditField(m_form);
        field->setObjectName(QLatin1String(row.objectName));
        m_form->addRow(new FieldRow(tr(row.label), field, FieldRow::kLabelWidth, m_form));
        m_fields.push_back(field);
    }
    m_column->addWidget(m_form);
}

void VideoPaneView::makePosition() {
    addHeading(m_column, new SectionHeading(tr("Artwork and position"), this));
    auto* row = new QHBoxLayout;
    row->setSpacing(0);
    m_artwork = new ArtworkWell(kArtworkSide, this);
    m_artwork->setObjectName(QStringLiteral("mediaImageView"));
    row->addWidget(m_artwork, 0, Qt::AlignTop);
    row->addSpacing(kPositionGap - FieldRow::kGutter);
    row->addLayout(makePositionFields());
    row->addSpacing(kPositionGap);
    m_map = new MapView(this);
    m_map->setObjectName(QStringLiteral("mediaMapView"));
    m_map->setFixedHeight(kArtworkSide);
    row->addWidget(m_map, 1, Qt::AlignTop);
    addInset(m_column, row);
}

QLayout* VideoPaneView::makePositionFields() {
    auto* fields = new QVBoxLayout;
    fields->setSpacing(0);
    const auto add = [&](const char* name, const QString& label) {
        auto* field = new EditField(this);
        field->setObjectName(QLatin1String(name));
        auto* line = new FieldRow(label, field, kPositionLabel, this);
        line->setFixedWidth(FieldRow::kGutter +
                            Theme::instance().scaled(kPositionLabel + kPositionField));
        fields->addWidget(line);
        fields->addStretch();
        return field;
    };
    m_latitude = add("mediaLatitude", tr("Latitude"));
    m_longitude = add("mediaLongtitude", tr("Longitude"));
    m_altitude = add("mediaAatitude", tr("Altitude"));
    m_altitude->setSuffix(tr("m"));
    auto* caption = new QHBoxLayout;
    caption->setContentsMargins(FieldRow::kGutter, 0, 0, 0);
    caption->setSpacing(6);
    m_locationMark = new TokenIcon(kMarkSide, this);
    m_locationMark->setIcon(QStringLiteral("check"), Token::accentText);
    caption->addWidget(m_locationMark);
    m_location = new ElidedLabel(Qt::ElideRight, FontRole::Caption, Token::text2, this);
    m_location->setObjectName(QStringLiteral("locationText"));
    m_location->setAccessibleName(tr("The position as Save Changes writes it"));
    caption->addWidget(m_location, 1);
    fields->addLayout(caption);
    return fields;
}

void VideoPaneView::setPaneWidth(int width) {
    m_paneWidth = width;
    const bool narrow = width < kNarrowPane;
    const int content = width - 2 * kPanePadding;
    m_top->setDirection(narrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    m_player->setCardWidth(narrow ? content : content * kPlayerShare / kContentShare);
    m_form->setColumns(narrow ? 1 : 2);
    fitPaneColumn(m_column, m_paneWidth, this->width());
}

void VideoPaneView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitPaneColumn(m_column, m_paneWidth, width());
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
    connect(player()->player(), &platform::MpvPlayer::durationChanged, this,
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
            m_pane.flags.*media::kVideoFormFields[i].group = true;
    // Deliberate: the altitude sets no flag.
    if (field == m_latitude || field == m_longitude) {
        m_pane.flags.gpsInfoChange = true;
        showPosition(); // back to the place that is being edited, wherever the map was moved
    }
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
        m_fields[i]->setShownText(pane.texts.*media::kVideoFormFields[i].text);
    m_latitude->setShownText(pane.texts.mediaLatitude);
    m_longitude->setShownText(pane.texts.mediaLongtitude);
    m_altitude->setShownText(pane.texts.mediaAatitude);
    m_artwork->setImage(pane.texts.mediaImageView);
    showPosition();
    refreshChanges();
    refreshLocation();
    if (item.filePath.isEmpty())
        player()->clear();
    else
        player()->setFile(item.filePath);
}

void VideoPaneView::clear() {
    show({}, media::ShowVideoViewWithItem({}));
}

media::VideoPane VideoPaneView::pane() const {
    media::VideoPane pane = m_pane;
    for (std::size_t i = 0; i < m_fields.size(); ++i)
        pane.texts.*media::kVideoFormFields[i].text = m_fields[i]->text();
    pane.texts.mediaLatitude = m_latitude->text();
    pane.texts.mediaLongtitude = m_longitude->text();
    pane.texts.mediaAatitude = m_altitude->text();
    pane.texts.mediaImageView = m_artwork->artwork();
    return pane;
}

QString VideoPaneView::artistText() const {
    return m_fields[2]->text();
}

void VideoPaneView::setArtwork(const platform::EncodedImage& image) {
    m_artwork->setImage(image);
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

std::optional<double> VideoPaneView::latitude() const {
    return degreesOf(m_latitude, media::PositionPart::Latitude);
}

std::optional<double> VideoPaneView::longitude() const {
    return degreesOf(m_longitude, media::PositionPart::Longitude);
}

void VideoPaneView::refreshLocation() {
    m_latitude->setSuffix(letterOf(latitude(), tr("S"), tr("N")));
    m_longitude->setSuffix(letterOf(longitude(), tr("W"), tr("E")));
    const media::PaneTexts texts = pane().texts;
    const bool whole = !texts.mediaLatitude.isEmpty() && !texts.mediaLongtitude.isEmpty();
    const LocationCaption caption =
        whole && m_locationRule ? m_locationRule(texts) : LocationCaption{};
    m_location->setWholeText(caption.text);
    m_locationMark->setVisible(!caption.text.isEmpty() && !caption.isFault);
}

void VideoPaneView::showPosition() {
    m_map->removeAllAnnotations();
    const auto north = latitude(), east = longitude();
    if (!north || !east)
        return m_map->clearPosition();
    m_map->setCentre(*north, *east);
    m_map->addAnnotation(*north, *east);
}

} // namespace clipheave::app
