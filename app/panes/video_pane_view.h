// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/audio_pane.h"
#include "media/media_kind.h"
#include "media/video_pane.h"

#include <QWidget>

#include <functional>
#include <optional>
#include <vector>

class QBoxLayout;
class QLayout;
class QVBoxLayout;

namespace clipheave::app {

class ArtworkWell;
class EditField;
class ElidedLabel;
class FactLabel;
class Form;
class MapView;
class PlayerCard;
class PlayerView;
class SectionHeading;
class TokenIcon;

/// The pane of a video: player, facts, tags, artwork and position. It shows and takes texts; what
/// they mean is the media layer's.
class VideoPaneView : public QWidget {
    Q_OBJECT
public:
    /// The line below the position fields.
    struct LocationCaption {
        QString text;
        bool isFault = false; ///< why the position cannot be saved
    };
    /// Returns what a save makes of the position texts of a pane.
    using LocationRule = std::function<LocationCaption(const media::PaneTexts&)>;

    explicit VideoPaneView(QWidget* parent = nullptr);

    void show(const media::IKImageItem& item, const media::VideoPane& pane);
    using QWidget::show;
    void clear();
    /// Returns the texts as they stand, what was shown, and the groups in which an edit has begun.
    [[nodiscard]] media::VideoPane pane() const;
    [[nodiscard]] QString artistText() const;
    void setArtwork(const platform::EncodedImage& image);
    /// Sets how a save joins the three position texts; shown below the fields.
    void setLocationRule(LocationRule rule);
    [[nodiscard]] PlayerView* player() const;
    /// Lays out for a pane of this width in px, its scroll bar included: below kNarrowPane the
    /// facts stand below the player and the form has one column.
    void setPaneWidth(int width);

Q_SIGNALS:
    void fieldEditingBegan(const QString& objectName);
    void durationKnown(double seconds);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void makePlayer();
    void makeTags();
    void makePosition();
    QLayout* makePositionFields();
    void connectFields();
    void beginEditing(EditField* field);
    void refreshChanges();
    void refreshLocation();
    void showPosition();
    /// Degrees as a save takes them; nothing for a text that it refuses.
    [[nodiscard]] std::optional<double> latitude() const;
    [[nodiscard]] std::optional<double> longitude() const;

    PlayerCard* m_player;
    QVBoxLayout* m_column;
    QBoxLayout* m_top = nullptr; ///< player and facts
    Form* m_form = nullptr;
    SectionHeading* m_tags = nullptr;
    std::vector<FactLabel*> m_facts;
    std::vector<EditField*> m_fields; ///< in the order of media::kVideoFormFields
    EditField *m_latitude = nullptr, *m_longitude = nullptr, *m_altitude = nullptr;
    ElidedLabel* m_location = nullptr;
    TokenIcon* m_locationMark = nullptr;
    ArtworkWell* m_artwork = nullptr;
    MapView* m_map = nullptr;
    media::VideoPane m_pane; ///< as it was shown, with the flags set since
    LocationRule m_locationRule;
    bool m_needsDuration = false;
    int m_paneWidth = 0;
};

} // namespace clipheave::app
