// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/transport_bar.h"

#include "platform/player/mpv_player.h"

#include <QFocusEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <climits>
#include <cmath>

namespace clipheave::app {

using platform::MpvPlayer;

namespace {

constexpr double kBarRadius = 8;
constexpr int kWheelStep = 120; // one notch
constexpr int kVolumeStep = 5;  // per cent
constexpr double kTrackHeight = 4;
constexpr double kKnobRadius = 6;
constexpr int kSecond = 1000;
constexpr double kPartDisabledOpacity = 0.4;

/// The bar continues the picture, so it is dark in both themes.
QColor barColour(Token token) {
    return Theme::colorOf(token, true);
}

int milliseconds(double seconds) {
    return static_cast<int>(std::clamp(std::round(seconds * kSecond), 0.0, double{INT_MAX}));
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

ScrubLine::ScrubLine(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    setAccessibleName(tr("Position"));
    setFocusPolicy(Qt::TabFocus);
    setSingleStep(kSecond);
    setPageStep(10 * kSecond);
    setRange(0, 0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ScrubLine::showPosition(double seconds, double duration) {
    if (isSliderDown())
        return;
    const QSignalBlocker quiet(this);
    setRange(0, milliseconds(duration));
    setValue(milliseconds(seconds));
    update();
}

int ScrubLine::valueAt(double x) const {
    const double length = std::max(width() - 2 * kKnobRadius, 1.0);
    const double part = std::clamp((x - kKnobRadius) / length, 0.0, 1.0);
    return static_cast<int>(std::lround(part * maximum()));
}

double ScrubLine::placeOf(int value) const {
    const double part = maximum() > 0 ? static_cast<double>(value) / maximum() : 0;
    return kKnobRadius + part * (width() - 2 * kKnobRadius);
}

void ScrubLine::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || maximum() == 0)
        return event->ignore();
    setSliderDown(true);
    setSliderPosition(valueAt(event->position().x()));
    event->accept();
}

void ScrubLine::mouseMoveEvent(QMouseEvent* event) {
    if (!isSliderDown())
        return event->ignore();
    setSliderPosition(valueAt(event->position().x()));
    event->accept();
}

void ScrubLine::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !isSliderDown())
        return event->ignore();
    setSliderDown(false);
    event->accept();
}

/// Deliberate: scrolling the pane never moves the position by accident.
void ScrubLine::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void ScrubLine::focusInEvent(QFocusEvent* event) {
    m_focusRing = showsFocusRing(event->reason());
    QSlider::focusInEvent(event);
}

void ScrubLine::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (!isEnabled())
        painter.setOpacity(kPartDisabledOpacity);
    const double middle = height() / 2.0;
    const double place = placeOf(sliderPosition());
    QRectF track(kKnobRadius, middle - kTrackHeight / 2, width() - 2 * kKnobRadius, kTrackHeight);
    painter.setBrush(barColour(Token::line2));
    painter.drawRoundedRect(track, kTrackHeight / 2, kTrackHeight / 2);
    if (!isEnabled())
        return; // nothing is open: no knob that could be taken
    track.setRight(place);
    painter.setBrush(barColour(Token::accent));
    painter.drawRoundedRect(track, kTrackHeight / 2, kTrackHeight / 2);
    if (m_focusRing && hasFocus())
        painter.drawEllipse(QPointF(place, middle), kKnobRadius + 2, kKnobRadius + 2);
    painter.setBrush(barColour(Token::name));
    painter.drawEllipse(QPointF(place, middle), kKnobRadius, kKnobRadius);
}

TransportButton::TransportButton(const QString& label, const QString& picture, QWidget* parent)
    : PictureButton(Kind::Icon, label, picture, parent) {
}

void TransportButton::setMeaning(const QString& label, const QString& picture) {
    setText(label);
    setAccessibleName(label);
    setToolTip(label);
    setPicture(picture);
}

void TransportButton::focusInEvent(QFocusEvent* event) {
    m_ring = showsFocusRing(event->reason());
    PictureButton::focusInEvent(event);
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
                       themePixmap(picture(), kSide, barColour(token), devicePixelRatioF()));
}

TransportBar::TransportBar(MpvPlayer* player, Form form, QWidget* parent)
    : QWidget(parent), m_form(form), m_player(player), m_scrub(new ScrubLine(this)),
      m_back(new TransportButton(tr("Frame Back"), QStringLiteral("frame-back"), this)),
      m_play(new TransportButton(tr("Play"), QStringLiteral("play"), this)),
      m_forward(new TransportButton(tr("Frame Forward"), QStringLiteral("frame-forward"), this)),
      m_sound(new TransportButton(tr("Mute"), QStringLiteral("volume"), this)),
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
    refreshSound();
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
    row->addWidget(m_sound);
    row->addWidget(m_fullScreen);
    column->addLayout(row);
}

void TransportBar::layOutAudio() {
    auto* row = new QHBoxLayout(this);
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
    row->addWidget(m_sound);
    m_fullScreen->hide();
}

void TransportBar::setFrameStepping(bool shown) {
    m_back->setVisible(shown && m_form == Form::Video);
    m_forward->setVisible(shown && m_form == Form::Video);
}

void TransportBar::connectControls() {
    connect(m_scrub, &ScrubLine::valueChanged, this, [this](int milliseconds) {
        if (m_player != nullptr)
            m_player->seek(milliseconds / 1000.0);
    });
    connect(m_scrub, &ScrubLine::sliderReleased, this, &TransportBar::refreshTimes);
    connect(m_play, &PictureButton::clicked, this, [this] {
        if (m_player != nullptr)
            m_player->setPaused(!m_player->isPaused());
    });
    connect(m_back, &PictureButton::clicked, this, [this] {
        if (m_player != nullptr)
            m_player->stepBackward();
    });
    connect(m_forward, &PictureButton::clicked, this, [this] {
        if (m_player != nullptr)
            m_player->stepForward();
    });
    connect(m_sound, &PictureButton::clicked, this, [this] {
        if (m_player != nullptr)
            m_player->setMuted(!m_player->isMuted());
    });
    connect(m_fullScreen, &PictureButton::clicked, this, &TransportBar::fullScreenRequested);
}

void TransportBar::connectPlayer() {
    if (m_player == nullptr)
        return;
    connect(m_player, &MpvPlayer::positionChanged, this, &TransportBar::refreshTimes);
    connect(m_player, &MpvPlayer::durationChanged, this, &TransportBar::refreshState);
    connect(m_player, &MpvPlayer::pausedChanged, this, &TransportBar::refreshState);
    connect(m_player, &MpvPlayer::failed, this, &TransportBar::refreshState);
    connect(m_player, &MpvPlayer::volumeChanged, this, &TransportBar::refreshSound);
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
}

void TransportBar::refreshSound() {
    const bool silent = m_player != nullptr && (m_player->isMuted() || m_player->volume() == 0);
    m_sound->setMeaning(silent ? tr("Unmute") : tr("Mute"),
                        silent ? QStringLiteral("sound-off") : QStringLiteral("volume"));
    if (m_player != nullptr)
        m_sound->setAccessibleDescription(tr("Volume %1 %").arg(m_player->volume()));
}

void TransportBar::refreshFonts() {
    const QFont font = Theme::instance().font(FontRole::Caption);
    m_time->setFont(font);
    m_total->setFont(font);
    refreshTimes();
    update();
}

/// Over the sound button the wheel sets the volume; elsewhere it scrolls the pane.
void TransportBar::wheelEvent(QWheelEvent* event) {
    if (m_player == nullptr || !m_sound->geometry().contains(event->position().toPoint()))
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
        card.setTop(card.top() - 2 * kBarRadius); // the upper corners belong to the picture
    painter.setPen(Theme::instance().color(Token::line1));
    painter.setBrush(barColour(Token::bg1));
    painter.drawRoundedRect(card, kBarRadius, kBarRadius);
}

} // namespace clipheave::app
