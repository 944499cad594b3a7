// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

class QLabel;

namespace clipheave::platform {
class MpvPlayer;
}

namespace clipheave::app {

class PictureButton;
class ScrubLine;

/// "01:15.08": minutes, seconds and hundredths, cut and not rounded; more than 99 minutes are
/// written out ("125:00.00"). Nothing negative.
[[nodiscard]] QString transportTime(double seconds);

/// The controls below a player. Two forms: for videos the scrub line above a row of buttons, for
/// sounds one row. Dark in both themes, as the picture above it.
class TransportBar : public QWidget {
    Q_OBJECT
public:
    enum class Form { Video, Audio };

    explicit TransportBar(Form form, platform::MpvPlayer* player, QWidget* parent = nullptr);

    /// Shows or hides the two buttons that go one frame back and forward.
    void setFrameStepping(bool shown);
    [[nodiscard]] Form form() const { return m_form; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void fullScreenRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void makeControls();
    void layOutVideo();
    void layOutAudio();
    void connectPlayer();
    void refresh();
    void refreshTimes();

    Form m_form;
    QPointer<platform::MpvPlayer> m_player;
    ScrubLine* m_scrub;
    PictureButton *m_back, *m_play, *m_forward, *m_sound, *m_fullScreen;
    QLabel *m_time, *m_total;
};

} // namespace clipheave::app
