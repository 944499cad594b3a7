// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panes/photo_pane_view.h"

class QLabel;
class QStackedWidget;

namespace clipheave::app {

class Button;
class ElidedLabel;
class FootNote;
class ImageButton;
class TokenLabel;

/// What Apply would write to.
struct PhotoTargets {
    int photos = 0, others = 0; ///< of the selection; others are no photos and are skipped
    QStringList names;          ///< of the photos, while the list is sorted; else empty
    QSet<QString> several;      ///< fields in which they differ
};

/// The right side of the photo browser: "photoEditView". Head with the way back, the pane of the
/// photo, foot with Apply, which says what will be written.
class PhotoPane : public QWidget {
    Q_OBJECT
public:
    /// Why the texts cannot be written, and in which field; no reason when they can.
    struct Fault {
        QString field, reason;
    };
    using FaultRule = std::function<Fault(const photo::PaneTexts&)>;

    explicit PhotoPane(SharedFields& shared, QWidget* parent = nullptr);

    /// Shows `reason` in the place of a photo.
    void showNothing(const QString& reason = {});
    /// Fills the pane; what was typed is dropped.
    void showPhoto(const PhotoContent& content);
    void setTargets(const PhotoTargets& targets);
    void setFaultRule(FaultRule rule) { m_faultRule = std::move(rule); }
    [[nodiscard]] PhotoPaneView* view() const { return m_view; }
    /// Returns whether a photo is shown.
    [[nodiscard]] bool showsPhoto() const;

    // States of the foot after Apply, until the next edit or selection
    void showSaving(int done, int total);
    void showSaved(int saved, int failed);
    void showNothingToWrite();
    [[nodiscard]] QString footNote() const;

Q_SIGNALS:
    void fieldEditingBegan(const QString& objectName);
    void revealRequested();
    void outputsRequested(); ///< "Show" behind what was saved
    void templateMenuRequested(const QPoint& position);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QWidget* makeHead();
    QWidget* makeEmpty();
    QWidget* makeFoot();
    void refreshFoot();
    [[nodiscard]] QString targetText() const;
    [[nodiscard]] QString changesText() const;

    PhotoPaneView* m_view;
    QStackedWidget* m_stack;
    QWidget *m_head = nullptr, *m_foot = nullptr;
    ElidedLabel* m_name = nullptr;
    TokenLabel* m_more = nullptr;
    ImageButton* m_reveal = nullptr;
    QWidget* m_kind = nullptr;
    QLabel* m_emptyReason = nullptr;
    FootNote* m_note = nullptr;
    Button* m_show = nullptr;
    FaultRule m_faultRule;
    PhotoTargets m_targets;
};

} // namespace clipheave::app
