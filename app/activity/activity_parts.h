// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/activity/activity_model.h"
#include "app/theme/theme.h"

#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <QWidget>

class QPainter;

namespace clipheave::app {

/// Returns false where the style, which follows the desktop, wants no animations.
[[nodiscard]] bool animationsEnabled(const QWidget* widget);

/// Lets a button be lower than the 32 px that the window's sheet gives to every push button.
void allowLowButton(QWidget* button);

/// Image and colour of a state; the image alone identifies the state.
struct StateLook {
    QString image;
    Token token = Token::text3;
};
[[nodiscard]] StateLook lookOf(const ActivityJob& job);
[[nodiscard]] StateLook lookOf(FileState state);
/// The colour of the job's progress bar.
[[nodiscard]] Token progressToken(const ActivityJob& job);

/// Draws the image of 16 px in the middle of `rect`; the spinner rotated unless `still`.
void paintState(QPainter& painter, const QRect& rect, const StateLook& look, bool still);
/// Draws a progress bar; all of it in a faint colour when `fraction` is below 0 (unknown).
void paintProgress(QPainter& painter, const QRectF& bar, double fraction, Token token);

/// One line in a token's colour, shortened where it does not fit.
class ToneLabel : public QLabel {
    Q_OBJECT
public:
    ToneLabel(FontRole role, Token token, QWidget* parent = nullptr);
    void setToken(Token token);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    FontRole m_role;
    Token m_token;
};

/// The spinner of a running job; it moves only while it is visible.
class BusyIndicator : public QWidget {
    Q_OBJECT
public:
    static constexpr int kRotation = 900; ///< ms
    static constexpr int kInterval = 40;  ///< ms between two images

    explicit BusyIndicator(QWidget* parent = nullptr);
    [[nodiscard]] bool isSpinning() const { return m_timer.isActive(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QTimer m_timer;
};

/// A progress bar of 160 x 4 px, for assistive technology too. A fraction below 0: unknown.
class ThinProgress : public QProgressBar {
    Q_OBJECT
public:
    explicit ThinProgress(QWidget* parent = nullptr);
    void setFraction(double fraction);

    [[nodiscard]] QSize sizeHint() const override { return {160, 4}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {60, 4}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace clipheave::app
