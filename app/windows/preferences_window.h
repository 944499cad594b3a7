// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/windows/own_window.h"
#include "media/preferences.h"

#include <QColor>

class QComboBox;
class QLineEdit;

namespace clipheave::app {

class ColourWell;
class Segment;
class StampPreview;

/// The preferences: storage folder, date stamp, appearance. It shows and emits signals; the
/// controller stores the values. Movable, not modal.
class PreferencesWindow : public OwnWindow {
    Q_OBJECT
public:
    explicit PreferencesWindow(QWidget* parent);

    /// Fills the controls. A pop-up that does not have the stored title shows no choice.
    void show(const media::Preferences& preferences, const QColor& fontColor);
    /// Brings the window up.
    void present();

    [[nodiscard]] QString storagePath() const;
    void setStoragePath(const QString& folder);
    /// Titles of the pop-ups; empty when nothing is chosen.
    [[nodiscard]] QString position() const;
    [[nodiscard]] QString dateFormat() const;
    /// "Lucida Grande 24".
    [[nodiscard]] QString fontLabel() const;
    /// The choice of the font panel; `size` in points.
    void setStampFont(const QString& family, int size);
    [[nodiscard]] QColor fontColor() const;
    /// The choice of the colour panel.
    void setStampColor(const QColor& color);
    [[nodiscard]] StampPreview* preview() const { return m_preview; }

    void reject() override;

Q_SIGNALS:
    void changeStoreLocation();
    void showFontPanel();
    void showColorPanel();
    /// Index of Appearance.
    void appearanceChosen(int appearance);
    void cancel();
    void save();

private:
    void buildStorage(QLayout& column);
    void buildStamp(QLayout& column);
    QWidget* makeStampForm();
    /// The font of the stamp, read only, and the button that asks for another.
    QLayout* makeFontRow(QWidget* form);
    void buildAppearance(QLayout& column);
    void buildFoot();
    void refreshPreview();

    QLineEdit* m_storagePath = nullptr;
    QComboBox *m_position = nullptr, *m_dateFormat = nullptr;
    QLineEdit* m_font = nullptr;
    ColourWell* m_color = nullptr;
    StampPreview* m_preview = nullptr;
    Segment* m_appearance = nullptr;
};

} // namespace clipheave::app
