// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/widgets/image_button.h"

#include <QDateTime>
#include <QPointer>
#include <QString>
#include <QWidget>

class QHBoxLayout;
class QLabel;

namespace clipheave::platform {
class MpvPlayer;
}

namespace clipheave::app {

class ScrubLine;
class Waveform;

/// Returns "01:15.08": minutes, seconds and hundredths, cut and not rounded; more than 99 minutes
/// are written out ("125:00.00"). Without hundredths "01:15". Negative times count as 0.
[[nodiscard]] QString transportTime(double seconds, bool hundredths = true);

/// An icon button in the colours of the dark theme, whichever is chosen.
class TransportButton : public ImageButton {
    Q_OBJECT
public:
    TransportButton(const QString& label, const QString& image, QWidget* parent);
    void setMeaning(const QString& label, const QString& image);
    /// White, for the one that plays.
    void setProminent() { m_prominent = true; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    bool m_prominent = false;
    bool m_ring = false;
};

/// The controls below a player. Two forms: for videos the scrub line above a row of buttons, for
/// audio files one row below the waveform. Dark in both themes, as the image above it.
class TransportBar : public QWidget {
    Q_OBJECT
public:
    enum class Form {
        Video, ///< completes the card of a PlayerView that lies directly above, without a gap
        Audio, ///< a card of its own
    };

    explicit TransportBar(platform::MpvPlayer* player, Form form, QWidget* parent = nullptr);

    /// Shows or hides the two buttons that go one frame back and forward. At first shown in the
    /// video form only; the audio form has no place for them.
    void setFrameStepping(bool shown);
    [[nodiscard]] Form form() const { return m_form; }
    /// Audio form: shows the waveform of the file once it is measured. Call it after the player has
    /// opened the file; it is hidden when that closes. `changed` is the modification date.
    void showWaveform(const QString& path, const QDateTime& changed);

Q_SIGNALS:
    void fullScreenRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void layOutVideo();
    void layOutAudio();
    void connectControls();
    void connectPlayer();
    void refreshState();
    void refreshTimes();
    void refreshAudio();
    void refreshFonts();

    Form m_form;
    QPointer<platform::MpvPlayer> m_player;
    ScrubLine* m_scrub;
    Waveform* m_waveform = nullptr; ///< audio form only
    TransportButton *m_back, *m_play, *m_forward, *m_audio, *m_fullScreen;
    QLabel *m_time, *m_total;
};

} // namespace clipheave::app
