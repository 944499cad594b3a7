// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/player/mpv_player.h"

#include "platform/foundation/main_thread.h"
#include "platform/foundation/paths.h"
#include "platform/player/mpv_core.h"

#include <algorithm>

namespace clipheave::platform {

MpvPlayer::MpvPlayer(QObject* parent) : QObject(parent) {
}

MpvPlayer::~MpvPlayer() = default;

void MpvPlayer::preload() {
    BackgroundJob::detach([] { static_cast<void>(mpvLibrary()); });
}

void MpvPlayer::open(const QString& path) {
    if (m_core == nullptr) {
        QString reason;
        m_core = MpvCore::make(*this, reason);
        if (m_core == nullptr) {
            Q_EMIT failed(reason);
            return;
        }
        m_core->setAudio(m_volume, m_muted);
    }
    m_core->open(nativePath(path));
}

void MpvPlayer::close() {
    if (m_core != nullptr)
        m_core->close();
}

bool MpvPlayer::isOpen() const {
    return m_core != nullptr && m_core->isOpen();
}

bool MpvPlayer::isLoaded() const {
    return m_core != nullptr && m_core->isLoaded();
}

void MpvPlayer::setPaused(bool paused) {
    if (m_core != nullptr)
        m_core->setPaused(paused);
}

bool MpvPlayer::isPaused() const {
    return m_core == nullptr || m_core->isPaused();
}

void MpvPlayer::seek(double seconds) {
    if (m_core != nullptr)
        m_core->seek(seconds);
}

void MpvPlayer::stepForward() {
    if (m_core != nullptr)
        m_core->step(true);
}

void MpvPlayer::stepBackward() {
    if (m_core != nullptr)
        m_core->step(false);
}

double MpvPlayer::position() const {
    return m_core != nullptr ? m_core->position() : 0;
}

double MpvPlayer::duration() const {
    return m_core != nullptr ? m_core->duration() : 0;
}

void MpvPlayer::setVolume(int percent) {
    m_volume = std::clamp(percent, 0, 100);
    if (m_core != nullptr)
        m_core->setAudio(m_volume, m_muted);
    Q_EMIT volumeChanged(m_volume, m_muted);
}

int MpvPlayer::volume() const {
    return m_volume;
}

void MpvPlayer::setMuted(bool muted) {
    m_muted = muted;
    if (m_core != nullptr)
        m_core->setAudio(m_volume, m_muted);
    Q_EMIT volumeChanged(m_volume, m_muted);
}

bool MpvPlayer::isMuted() const {
    return m_muted;
}

bool MpvPlayer::hasVideo() const {
    return m_core != nullptr && m_core->hasVideo();
}

QSize MpvPlayer::videoSize() const {
    return m_core != nullptr ? m_core->videoSize() : QSize();
}

QImage MpvPlayer::render(QSize pixels) {
    return m_core != nullptr ? m_core->render(pixels) : QImage();
}

} // namespace clipheave::platform
