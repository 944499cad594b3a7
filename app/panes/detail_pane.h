// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panes/video_pane_view.h"
#include "app/theme/theme.h"

#include <QStringList>

class QMimeData;
class QScrollArea;
class QStackedWidget;

namespace clipheave::app {

class AudioPaneView;
class ElidedLabel;
class ImageButton;
class SharedFields;
class TokenIcon;
class TokenLabel;

/// The right side of the window: head, the pane of the selected file, foot with Save.
class DetailPane : public QWidget {
    Q_OBJECT
public:
    explicit DetailPane(QWidget* parent = nullptr);

    void showNothing();
    void showVideo(const media::IKImageItem& item, const media::VideoPane& pane);
    void showAudio(const media::IKImageItem& item, const media::AudioPane& pane);
    [[nodiscard]] media::VideoPane videoPane() const { return m_video->pane(); }
    [[nodiscard]] media::AudioPane audioPane() const;
    /// Returns the text of the video pane's artist field, whatever is shown.
    [[nodiscard]] QString videoArtistText() const { return m_video->artistText(); }
    /// Puts an image into the well of the pane that is shown.
    void setArtwork(const platform::EncodedImage& image);
    void setLocationTextRule(VideoPaneView::LocationRule rule) {
        m_video->setLocationRule(std::move(rule));
    }
    /// Takes the image file of a clipboard into the well of the pane that is shown.
    void pasteArtwork(const QMimeData* copied);
    /// Sets how many files Save will write; the foot says so.
    void setTouchedCount(int count);
    /// Sets the names of the files that Save will write. While the list is `sorted` the foot names
    /// them: Save takes the selected row numbers in import order, so these may be other files than
    /// the selected ones.
    void setTouchedNames(const QStringList& names, bool sorted);
    [[nodiscard]] QString footNote() const;
    /// Returns the fields that stand in the form of audio files or in that of photos.
    [[nodiscard]] SharedFields& sharedFields() const { return *m_shared; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void fieldEditingBegan(const QString& objectName);
    void revealRequested();
    void moreRequested(const QPoint& position);
    void artworkRequested(); ///< a click on a well: asks for an image file
    void pasteRequested();   ///< into the well that has the focus
    void durationKnown(double seconds);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makeHead();
    QWidget* makeFoot();
    QWidget* makeEmpty();
    QScrollArea* scrolled(QWidget* body);
    void setHead(const QString& name, const QString& icon, Token token);
    void refreshNote();

    TokenIcon* m_kind = nullptr;
    ElidedLabel* m_name = nullptr;
    TokenLabel* m_note = nullptr;
    QStringList m_touchedNames; ///< empty: the note counts them
    ImageButton *m_reveal = nullptr, *m_more = nullptr;
    QWidget* m_foot = nullptr;
    QStackedWidget* m_stack;
    SharedFields* m_shared;
    VideoPaneView* m_video;
    AudioPaneView* m_audio;
};

} // namespace clipheave::app
