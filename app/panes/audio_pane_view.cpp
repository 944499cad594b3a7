// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/audio_pane_view.h"

#include "app/panes/artwork_well.h"
#include "app/panes/form.h"
#include "app/panes/player_view.h"
#include "app/panes/transport_bar.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/fact_label.h"
#include "app/widgets/parts.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace clipheave::app {

namespace {

constexpr int kAudioArtworkSide = 184;

} // namespace

AudioPaneView::AudioPaneView(QWidget* parent)
    : QWidget(parent), m_player(new PlayerView(this)),
      m_transport(new TransportBar(m_player->player(), TransportBar::Form::Audio, this)) {
    setObjectName(QStringLiteral("audioContentView"));
    m_player->hide();
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(16, 12, 16, 12);
    column->setSpacing(16);
    column->addWidget(makeHead());
    auto* card = new Card(this);
    auto* cardRow = new QHBoxLayout(card);
    cardRow->setContentsMargins(12, 6, 12, 6);
    cardRow->addWidget(m_transport);
    column->addWidget(card);
    column->addWidget(makeTags());
    column->addStretch();
}

QWidget* AudioPaneView::makeHead() {
    auto* part = new QWidget(this);
    auto* row = new QHBoxLayout(part);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(20);
    m_artwork = new ArtworkWell(kAudioArtworkSide, part);
    m_artwork->setObjectName(QStringLiteral("audioArtImageView"));
    connect(m_artwork, &ArtworkWell::openRequested, this, &AudioPaneView::artworkRequested);
    row->addWidget(m_artwork, 0, Qt::AlignTop);
    auto* facts = new QVBoxLayout;
    facts->setSpacing(0);
    for (const media::FactLine& line : media::audioFacts({})) {
        auto* label = new FactLabel(line.label, part);
        facts->addWidget(label);
        m_facts.push_back(label);
    }
    facts->addStretch();
    row->addLayout(facts, 1);
    return part;
}

QWidget* AudioPaneView::makeTags() {
    auto* part = new QWidget(this);
    auto* column = new QVBoxLayout(part);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    m_tags = new SectionHeading(tr("Tags"), part);
    column->addWidget(m_tags);
    auto* form = new Form(Form::Order::ByRows, part);
    for (const media::AudioField& row : media::audioFields()) {
        auto* field = new EditField(form);
        field->setObjectName(QLatin1String(row.objectName));
        form->addRow(new FieldRow(tr(row.label), field, FieldRow::kLabelWidth, form));
        connect(field, &EditField::editingBegun, this, [this, field, group = row.group] {
            if (group)
                m_pane.flags.*group = true;
            Q_EMIT fieldEditingBegan(field->objectName());
        });
        connect(field, &EditField::textChanged, this, &AudioPaneView::refreshChanges);
        m_fields.push_back(field);
    }
    // Named only among the change flags; nobody sees it.
    auto* hidden = new EditField(part);
    hidden->setObjectName(QStringLiteral("audioCreateDatelab"));
    hidden->hide();
    auto* shifted = new QHBoxLayout;
    shifted->setContentsMargins(-FieldRow::kGutter, 0, 0, 0);
    shifted->addWidget(form);
    column->addLayout(shifted);
    return part;
}

void AudioPaneView::show(const media::IKImageItem& item, const media::AudioPane& pane) {
    m_pane = pane;
    const QList<media::FactLine> facts = media::audioFacts(item);
    for (std::size_t i = 0; i < m_facts.size(); ++i)
        m_facts[i]->setFact(facts[static_cast<qsizetype>(i)].label,
                            facts[static_cast<qsizetype>(i)].value);
    for (std::size_t i = 0; i < m_fields.size(); ++i)
        m_fields[i]->setShownText(pane.texts.*media::audioFields()[i].text);
    m_artwork->setPicture(pane.texts.audioArtImageView);
    refreshChanges();
    m_player->setFile(item.filePath);
}

media::AudioPane AudioPaneView::pane() const {
    media::AudioPane pane = m_pane;
    for (std::size_t i = 0; i < m_fields.size(); ++i)
        pane.texts.*media::audioFields()[i].text = m_fields[i]->text();
    pane.texts.audioArtImageView = m_artwork->picture();
    return pane;
}

void AudioPaneView::setArtwork(const platform::EncodedPicture& picture) {
    m_artwork->setPicture(picture);
}

void AudioPaneView::refreshChanges() {
    int changed = 0;
    for (const EditField* field : m_fields)
        changed += field->isChanged();
    m_tags->setNote(changed > 0 ? tr("%1 changed").arg(changed) : QString());
}

} // namespace clipheave::app
