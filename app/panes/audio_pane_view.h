// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/audio_pane.h"

#include <QWidget>

#include <vector>

class QVBoxLayout;

namespace clipheave::app {

class ArtworkWell;
class EditField;
class FactLabel;
class Form;
class PlayerCard;
class PlayerView;
class SectionHeading;
class SharedFields;

/// The pane of an audio file: artwork, facts, player, tags.
class AudioPaneView : public QWidget {
    Q_OBJECT
public:
    /// Six of its fields are `shared`, which outlive it.
    explicit AudioPaneView(SharedFields& shared, QWidget* parent = nullptr);

    void show(const media::IKImageItem& item, const media::AudioPane& pane);
    using QWidget::show;
    [[nodiscard]] media::AudioPane pane() const;
    void setArtwork(const platform::EncodedImage& image);
    [[nodiscard]] PlayerView* player() const;
    /// As VideoPaneView::setPaneWidth().
    void setPaneWidth(int width);

Q_SIGNALS:
    void fieldEditingBegan(const QString& objectName);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void makeHead();
    void makeTags();
    void connectField(EditField* field, bool media::ChangeFlags::*group);
    [[nodiscard]] bool isElsewhere(const EditField* field) const;
    void refreshChanges();

    SharedFields& m_shared;
    PlayerCard* m_player;
    QVBoxLayout* m_column;
    Form* m_form = nullptr;
    int m_paneWidth = 0;
    ArtworkWell* m_artwork = nullptr;
    SectionHeading* m_tags = nullptr;
    std::vector<FactLabel*> m_facts;
    std::vector<EditField*> m_fields; ///< in the order of media::kAudioFields
    media::AudioPane m_pane;
};

} // namespace clipheave::app
