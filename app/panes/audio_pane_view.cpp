// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/audio_pane_view.h"

#include "app/panes/artwork_well.h"
#include "app/panes/form.h"
#include "app/panes/pane_layout.h"
#include "app/panes/player_card.h"
#include "app/panes/player_view.h"
#include "app/panes/shared_fields.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/fact_label.h"
#include "app/widgets/parts.h"
#include "media/fact_lines.h"
#include "media/fields.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace clipheave::app {

namespace {

constexpr int kAudioArtworkSide = 184, kAudioFactGap = 20, kPlayerGap = 16; // px

} // namespace

AudioPaneView::AudioPaneView(SharedFields& shared, QWidget* parent)
    : QWidget(parent), m_shared(shared), m_player(new PlayerCard(TransportBar::Form::Audio, this)),
      m_column(makePaneColumn(this)) {
    setObjectName(QStringLiteral("audioContentView"));
    makeHead();
    m_column->addSpacing(kPlayerGap);
    addInset(m_column, m_player);
    makeTags();
    m_column->addStretch();
}

PlayerView* AudioPaneView::player() const {
    return m_player->player();
}

void AudioPaneView::makeHead() {
    auto* row = new QHBoxLayout;
    row->setSpacing(kAudioFactGap);
    m_artwork = new ArtworkWell(kAudioArtworkSide, this);
    m_artwork->setObjectName(QStringLiteral("audioArtImageView"));
    row->addWidget(m_artwork, 0, Qt::AlignTop);
    auto* facts = new QVBoxLayout;
    facts->setSpacing(0);
    for (const media::FactLine& line : media::audioFacts({})) {
        if (!m_facts.empty())
            facts->addStretch();
        m_facts.push_back(new FactLabel(line.label, this));
        facts->addWidget(m_facts.back());
    }
    row->addLayout(facts, 1);
    addInset(m_column, row);
}

void AudioPaneView::makeTags() {
    m_tags = new SectionHeading(tr("Tags"), this);
    addHeading(m_column, m_tags);
    m_form = new Form(Form::Order::ByRows, this);
    for (const media::AudioField& row : media::kAudioFields) {
        const QString name = QLatin1String(row.objectName);
        EditField* field = m_shared.field(name);
        if (!field) {
            field = new EditField(m_form);
            field->setObjectName(name);
        }
        auto* line = new FieldRow(tr(row.label), field, FieldRow::kLabelWidth, m_form);
        if (SharedFields::isShared(name))
            m_shared.addRow(SharedFields::Place::Audio, name, line);
        m_form->addRow(line);
        connectField(field, row.group);
        m_fields.push_back(field);
    }
    m_column->addWidget(m_form);
    connect(&m_shared, &SharedFields::moved, this, [this] {
        m_form->refreshTabOrder();
        refreshChanges();
    });
    // A change flag belongs to this field, which is never shown.
    auto* hidden = new EditField(this);
    hidden->setObjectName(QStringLiteral("audioCreateDatelab"));
    hidden->hide();
}

void AudioPaneView::connectField(EditField* field, bool media::ChangeFlags::*group) {
    connect(field, &EditField::editingBegun, this, [this, field, group] {
        if (isElsewhere(field))
            return;
        if (group)
            m_pane.flags.*group = true;
        Q_EMIT fieldEditingBegan(field->objectName());
    });
    connect(field, &EditField::textChanged, this, &AudioPaneView::refreshChanges);
}

bool AudioPaneView::isElsewhere(const EditField* field) const {
    return SharedFields::isShared(field->objectName()) &&
           m_shared.place() != SharedFields::Place::Audio;
}

void AudioPaneView::setPaneWidth(int width) {
    m_paneWidth = width;
    m_player->setCardWidth(width - 2 * kPanePadding);
    m_form->setColumns(width < kNarrowPane ? 1 : 2);
    fitPaneColumn(m_column, m_paneWidth, this->width());
}

void AudioPaneView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitPaneColumn(m_column, m_paneWidth, width());
}

void AudioPaneView::show(const media::IKImageItem& item, const media::AudioPane& pane) {
    m_pane = pane;
    const QList<media::FactLine> facts = media::audioFacts(item);
    for (std::size_t i = 0; i < m_facts.size(); ++i)
        m_facts[i]->setFact(facts[static_cast<qsizetype>(i)].label,
                            facts[static_cast<qsizetype>(i)].value);
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const QString& text = pane.texts.*media::kAudioFields[i].text;
        if (isElsewhere(m_fields[i]))
            m_shared.setShownText(SharedFields::Place::Audio, m_fields[i]->objectName(), text);
        else
            m_fields[i]->setShownText(text);
    }
    m_artwork->setImage(pane.texts.audioArtImageView);
    refreshChanges();
    player()->setFile(item.filePath);
    m_player->transport()->showWaveform(item.filePath, item.modificationDate);
}

media::AudioPane AudioPaneView::pane() const {
    media::AudioPane pane = m_pane;
    for (std::size_t i = 0; i < m_fields.size(); ++i)
        pane.texts.*media::kAudioFields[i].text =
            isElsewhere(m_fields[i])
                ? m_shared.text(SharedFields::Place::Audio, m_fields[i]->objectName())
                : m_fields[i]->text();
    pane.texts.audioArtImageView = m_artwork->artwork();
    return pane;
}

void AudioPaneView::setArtwork(const platform::EncodedImage& image) {
    m_artwork->setImage(image);
}

void AudioPaneView::refreshChanges() {
    int changed = 0;
    for (const EditField* field : m_fields)
        changed += isElsewhere(field)
                       ? m_shared.isChanged(SharedFields::Place::Audio, field->objectName())
                       : field->isChanged();
    m_tags->setNote(changed > 0 ? tr("%1 changed").arg(changed) : QString());
}

} // namespace clipheave::app
