// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panes/transport_bar.h"

#include <QWidget>

namespace clipheave::app {

class PlayerView;

/// The frame and the controls below it as one card; for audio files the controls alone. Fills the
/// screen on request, Esc brings it back.
class PlayerCard : public QWidget {
    Q_OBJECT
public:
    explicit PlayerCard(TransportBar::Form form, QWidget* parent = nullptr);
    ~PlayerCard() override;

    [[nodiscard]] PlayerView* player() const { return m_player; }
    [[nodiscard]] TransportBar* transport() const { return m_transport; }
    /// Sets the width in px; the frame's area is 16:9.
    void setCardWidth(int width);
    void toggleFullScreen();
    [[nodiscard]] bool isFullScreen() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void leaveFullScreen();

    QWidget* m_stage; ///< what goes to full screen
    PlayerView* m_player;
    TransportBar* m_transport;
    int m_width = 0;
};

} // namespace clipheave::app
