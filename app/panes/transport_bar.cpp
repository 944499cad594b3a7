// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/transport_bar.h"

#include "app/panes/scrub_line.h"
#include "app/panes/waveform.h"
#include "platform/player/mpv_player.h"

#include <QFocusEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace clipheave::app {

using platform::MpvPlayer;

namespace {

constexpr double kBarRadius = 8;
constexpr int kWheelStep = 120; // one notch
constexpr int kVolumeStep = 5;  // per cent
constexpr double kPartDisabledOpacity = 0.4;

/// The bar continues the image, so it is dark in both themes.
QColor barColour(Token token) {
    return Theme::colorOf(token, true);
}

void setLabelColour(QLabel* label, Token token) {
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, barColour(token));
    label->setPalette(palette);
}

} // namespace

QString transportTime(double seconds, bool hundredths) {
    // A hundredth that a double just misses (1.15 is 1.149999…) still counts.
    constexpr double kRounding = 1e-6;
    const double whole = std::isfinite(seconds) ? std::clamp(seconds, 0.0, 1e9) : 0.0;
    const auto ticks = static_cast<qint64>(std::floor(whole * 100 + kRounding));
    const QChar zero(u'0');
    const QString text =
        QStringLiteral("%1:%2").arg(ticks / 6000, 2, 10, zero).arg(ticks / 100 % 60, 2, 10, zero);
    return hundredths ? QStringLiteral("%1.%2").arg(text).arg(ticks % 100, 2, 10, zero) : text;
}

TransportButton::TransportButton(const QString& label, const QString& image, QWidget* parent)
    : ImageButton(Kind::Icon, label, image, parent) {
}

void TransportButton::setMeaning(const QString& label, const QString& image) {
    setText(label);
    setAccessibleName(label);
    setToolTip(label);
    setImage(image);
}

void TransportButton::focusInEvent(QFocusEvent* event) {
    m_ring = showsFocusRing(event->reason());
    ImageButton::focusInEvent(event);
}

void TransportButton::paintEvent(QPaintEvent*) {
    constexpr int kSide = 16;
    constexpr double kRadius = 6;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool lit = isEnabled() && (underMouse() || isDown());
    if (lit) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(barColour(isDown() ? Token::bg4 : Token::bg3));
        painter.drawRoundedRect(rect(), kRadius, kRadius);
    }
    if (m_ring && hasFocus()) {
        painter.setPen(QPen(barColour(Token::accent), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), kRadius, kRadius);
    }
    if (!isEnabled())
        painter.setOpacity(kPartDisabledOpacity);
    const Token token = m_prominent ? Token::name : lit ? Token::text1 : Token::text2;
    painter.drawPixmap(QRect((width() - kSide) / 2, (height() - kSide) / 2, kSide, kSide),
                       themePixmap(image(), kSide, barColour(token), devicePixelRatioF()));
}

TransportBar::TransportBar(MpvPlayer* player, Form form, QWidget* parent)
    : QWidget(parent), m_form(form), m_player(player), m_scrub(new ScrubLine(this)),
      m_back(new TransportButton(tr("Frame Back"), QStringLiteral("frame-back"), this)),
      m_play(new TransportButton(tr("Play"), QStringLiteral("play"), this)),
      m_forward(new TransportButton(tr("Frame Forward"), QStringLiteral("frame-forward"), this)),
      m_audio(new TransportButton(tr("Mute"), QStringLiteral("volume"), this)),
      m_fullScreen(new TransportButton(tr("Full Screen"), QStringLiteral("fullscreen"), this)),
      m_time(new QLabel(this)), m_total(new QLabel(this)) {
    m_play->setProminent();
    m_time->setAccessibleName(tr("Position"));
    m_total->setAccessibleName(tr("Duration"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    if (m_form == Form::Video)
        layOutVideo();
    else
        layOutAudio();
    setFrameStepping(m_form == Form::Video);
    connectControls();
    connectPlayer();
    connect(&Theme::instance(), &Theme::changed, this, &TransportBar::refreshFonts);
    refreshFonts();
    refreshState();
    refreshAudio();
}

void TransportBar::layOutVideo() {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(8, 6, 8, 5);
    column->setSpacing(1);
    column->addWidget(m_scrub);
    auto* row = new QHBoxLayout;
    row->setSpacing(2);
    for (QWidget* button : {m_back, m_play, m_forward})
        row->addWidget(button);
    row->addSpacing(4);
    row->addWidget(m_time);
    row->addWidget(m_total);
    row->addStretch();
    row->addWidget(m_audio);
    row->addWidget(m_fullScreen);
    column->addLayout(row);
}

void TransportBar::layOutAudio() {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    m_waveform = new Waveform(this);
    m_waveform->hide();
    auto* inset = new QHBoxLayout;
    inset->setContentsMargins(10, 0, 10, 0);
    inset->addWidget(m_waveform);
    column->addLayout(inset);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(8, 6, 8, 6);
    row->setSpacing(2);
    row->addWidget(m_play);
    row->addSpacing(4);
    row->addWidget(m_time);
    row->addSpacing(4);
    row->addWidget(m_scrub, 1);
    row->addSpacing(4);
    row->addWidget(m_total);
    row->addSpacing(4);
    row->addWidget(m_audio);
    column->addLayout(row);
    m_fullScreen->hide();
}

void TransportBar::showWaveform(const QString& path, const QDateTime& changed) {
    if (m_waveform != nullptr)
        m_waveform->showFile(path, changed);
}

void TransportBar::setFrameStepping(bool shown) {
    m_back->setVisible(shown && m_form == Form::Video);
    m_forward->setVisible(shown && m_form == Form::Video);
}

void TransportBar::connectControls() {
    for (ScrubLine* line : {m_scrub, static_cast<ScrubLine*>(m_waveform)}) {
        if (line == nullptr)
            continue;
        connect(line, &ScrubLine::valueChanged, this, [this](int milliseconds) {
            if (m_player != nullptr)
                m_player->seek(milliseconds / 1000.0);
        });
        connect(line, &ScrubLine::sliderReleased, this, &TransportBar::refreshTimes);
    }
    connect(m_play, &ImageButton::clicked, this, [this] {
        if (m_player != nullptr)
            m_player->setPaused(!m_player->isPaused());
    });
    connect(m_back, &ImageButton::clicked, this, [this] {
        if (m_player != nullptr)
            m_player->stepBackward();
    });
    connect(m_forward, &ImageButton::clicked, this, [this] {
        if (m_player != nullptr)
            m_player->stepForward();
    });
    connect(m_audio, &ImageButton::clicked, this, [this] {
        if (m_player != nullptr)
            m_player->setMuted(!m_player->isMuted());
    });
    connect(m_fullScreen, &ImageButton::clicked, this, &TransportBar::fullScreenRequested);
}

void TransportBar::connectPlayer() {
    if (m_player == nullptr)
        return;
    connect(m_player, &MpvPlayer::positionChanged, this, &TransportBar::refreshTimes);
    connect(m_player, &MpvPlayer::durationChanged, this, &TransportBar::refreshState);
    connect(m_player, &MpvPlayer::pausedChanged, this, &TransportBar::refreshState);
    connect(m_player, &MpvPlayer::failed, this, &TransportBar::refreshState);
    connect(m_player, &MpvPlayer::volumeChanged, this, &TransportBar::refreshAudio);
}

void TransportBar::refreshState() {
    const bool loaded = m_player != nullptr && m_player->isLoaded();
    const bool paused = m_player == nullptr || m_player->isPaused();
    m_play->setMeaning(paused ? tr("Play") : tr("Pause"),
                       paused ? QStringLiteral("play") : QStringLiteral("pause"));
    m_play->setEnabled(loaded);
    setLabelColour(m_time, loaded ? Token::text1 : Token::text3);
    setLabelColour(m_total, loaded ? Token::text2 : Token::text3);
    m_scrub->setEnabled(loaded && m_player->duration() > 0);
    if (m_waveform != nullptr) {
        m_waveform->setEnabled(m_scrub->isEnabled());
        if (m_player == nullptr || !m_player->isOpen())
            m_waveform->clear();
    }
    for (QWidget* button : {m_back, m_forward, m_fullScreen})
        button->setEnabled(loaded && m_player->hasVideo());
    refreshTimes();
}

void TransportBar::refreshTimes() {
    const bool video = m_form == Form::Video;
    const double position = m_player != nullptr ? m_player->position() : 0;
    const double duration = m_player != nullptr ? m_player->duration() : 0;
    const QString total = transportTime(duration, video);
    m_time->setText(transportTime(position, video));
    m_total->setText(video ? QStringLiteral("\u2002/\u2002\u2009%1").arg(total) : total);
    // As wide as the longest time, so that nothing beside it moves while it plays.
    m_time->setMinimumWidth(m_time->fontMetrics().horizontalAdvance(total));
    m_scrub->showPosition(position, duration);
    if (m_waveform != nullptr)
        m_waveform->showPosition(position, duration);
}

void TransportBar::refreshAudio() {
    const bool silent = m_player != nullptr && (m_player->isMuted() || m_player->volume() == 0);
    m_audio->setMeaning(silent ? tr("Unmute") : tr("Mute"),
                        silent ? QStringLiteral("sound-off") : QStringLiteral("volume"));
    if (m_player != nullptr)
        m_audio->setAccessibleDescription(tr("Volume %1 %").arg(m_player->volume()));
}

void TransportBar::refreshFonts() {
    const QFont font = Theme::instance().font(FontRole::Caption);
    m_time->setFont(font);
    m_total->setFont(font);
    refreshTimes();
    update();
}

/// Over the audio button the wheel sets the volume; elsewhere it scrolls the pane.
void TransportBar::wheelEvent(QWheelEvent* event) {
    if (m_player == nullptr || !m_audio->geometry().contains(event->position().toPoint()))
        return event->ignore();
    const int change = event->angleDelta().y() * kVolumeStep / kWheelStep;
    m_player->setVolume(m_player->volume() + change);
    event->accept();
}

void TransportBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(rect());
    QRectF card = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    if (m_form == Form::Video)
        card.setTop(card.top() - 2 * kBarRadius); // the upper corners belong to the image
    painter.setPen(Theme::instance().color(Token::line1));
    painter.setBrush(barColour(Token::bg1));
    painter.drawRoundedRect(card, kBarRadius, kBarRadius);
    if (m_waveform == nullptr || m_waveform->isHidden())
        return;
    painter.setClipRect(0, 0, width(), m_waveform->geometry().bottom() + 1);
    painter.setBrush(barColour(Token::well));
    painter.drawRoundedRect(card, kBarRadius, kBarRadius);
}

} // namespace clipheave::app
