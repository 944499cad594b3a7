// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/log.h"
#include "platform/player/mpv_core.h"
#include "platform/player/mpv_player.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>

namespace clipheave::platform {

void MpvCore::readEvents() {
    m_eventsPosted = false;
    for (;;) {
        const mpv_event* event = m_mpv.waitEvent(m_handle, 0);
        if (event->event_id == MPV_EVENT_NONE)
            return;
        handle(*event);
    }
}

void MpvCore::handle(const mpv_event& event) {
    switch (event.event_id) {
    case MPV_EVENT_START_FILE:
        return handleStart(*static_cast<const mpv_event_start_file*>(event.data));
    case MPV_EVENT_END_FILE:
        return handleEnd(*static_cast<const mpv_event_end_file*>(event.data));
    case MPV_EVENT_FILE_LOADED:
        m_known = m_started;
        ask(Question::Video, "vid", MPV_FORMAT_INT64);
        ask(Question::Rotation, "current-tracks/video/demux-rotation", MPV_FORMAT_INT64);
        return ask(Question::Duration, "duration", MPV_FORMAT_DOUBLE);
    case MPV_EVENT_PLAYBACK_RESTART:
        return seekEnded();
    case MPV_EVENT_VIDEO_RECONFIG:
        m_ownImages = m_known;
        ask(Question::Width, "dwidth", MPV_FORMAT_INT64);
        return ask(Question::Height, "dheight", MPV_FORMAT_INT64);
    case MPV_EVENT_AUDIO_RECONFIG:
        return ask(Question::AudioOutput, "current-ao", MPV_FORMAT_STRING);
    case MPV_EVENT_COMMAND_REPLY:
        return event.reply_userdata == mark(Question::Open) ? handleOpened(event) : void();
    case MPV_EVENT_GET_PROPERTY_REPLY:
        return handleReply(event);
    case MPV_EVENT_PROPERTY_CHANGE:
        return handleProperty(*static_cast<const mpv_event_property*>(event.data));
    default:
        return;
    }
}

void MpvCore::handleStart(const mpv_event_start_file& start) {
    m_started = start.playlist_entry_id == m_entry;
}

void MpvCore::handleEnd(const mpv_event_end_file& end) {
    if (!isOpen() || end.playlist_entry_id != m_entry)
        return;
    // Whatever ends it without close(): an error, an empty file, a list of other files.
    const char* why =
        end.reason == MPV_END_FILE_REASON_ERROR ? m_mpv.errorString(end.error) : nullptr;
    forgetFile();
    command({"stop"});
    Q_EMIT m_owner.failed(
        why != nullptr ? MpvPlayer::tr("The file cannot be played: %1.").arg(QString::fromUtf8(why))
                       : MpvPlayer::tr("There is nothing to play in this file."));
}

void MpvCore::handleOpened(const mpv_event& event) {
    const auto* command = static_cast<const mpv_event_command*>(event.data);
    if (event.error >= 0 && command->result.format == MPV_FORMAT_NODE_MAP) {
        const mpv_node_list& map = *command->result.u.list;
        for (int i = 0; i < map.num; ++i)
            if (std::strcmp(map.keys[i], "playlist_entry_id") == 0)
                m_entry = map.values[i].u.int64;
    }
    if (m_entry != kNoEntry)
        return;
    forgetFile();
    Q_EMIT m_owner.failed(MpvPlayer::tr("The file cannot be opened."));
}

void MpvCore::handleReply(const mpv_event& event) {
    const auto about = static_cast<Question>(event.reply_userdata & 0xFF);
    if (!m_started || event.reply_userdata != mark(about))
        return;
    const auto& property = *static_cast<const mpv_event_property*>(event.data);
    const bool known = event.error >= 0 && property.data != nullptr;
    const bool whole = known && property.format == MPV_FORMAT_INT64;
    const int64_t number = whole ? *static_cast<const int64_t*>(property.data) : 0;
    const int small = number >= 0 && number <= INT_MAX ? static_cast<int>(number) : 0;
    switch (about) {
    case Question::Video: // a number, or "no", which is none
        m_hasVideo = whole;
        return;
    case Question::Rotation:
        m_rotation = small % 90 == 0 ? small % 360 : 0;
        m_frame = {}; // drawn again, rotated
        return;
    case Question::Duration:
        return fileLoaded(known ? *static_cast<const double*>(property.data) : 0);
    case Question::Width:
        return setCodedSize({small, m_codedSize.height()});
    case Question::Height:
        return setCodedSize({m_codedSize.width(), small});
    case Question::AudioOutput:
        return known ? logSilence(*static_cast<char* const*>(property.data)) : void();
    default:
        return;
    }
}

void MpvCore::logSilence(const char* output) {
    static bool logged = false;
    if (std::strcmp(output, "null") != 0 || std::exchange(logged, true))
        return;
    log(LogLevel::Info, MpvPlayer::tr("No working sound device: files play silently"));
}

void MpvCore::fileLoaded(double duration) {
    m_loaded = true;
    m_duration = std::max(duration, 0.0);
    if (const auto target = std::exchange(m_seekWhenLoaded, std::nullopt))
        seek(*target);
    setCodedSize(m_codedSize);
    Q_EMIT m_owner.durationChanged(m_duration);
}

void MpvCore::setCodedSize(QSize size) {
    m_codedSize = size;
    const QSize upright = m_rotation % 180 != 0 ? size.transposed() : size;
    const QSize seen = m_loaded && m_hasVideo && !upright.isEmpty() ? upright : QSize();
    if (std::exchange(m_videoSize, seen) != seen && m_hasFrame)
        Q_EMIT m_owner.frameReady();
}

void MpvCore::handleProperty(const mpv_event_property& property) {
    if (!m_loaded || property.data == nullptr)
        return;
    if (property.format == MPV_FORMAT_FLAG) {
        const bool ended = *static_cast<const int*>(property.data) != 0;
        if (ended && !m_atEnd)
            reachedEnd();
        m_atEnd = ended;
        return;
    }
    if (property.format != MPV_FORMAT_DOUBLE)
        return;
    const double seconds = std::max(*static_cast<const double*>(property.data), 0.0);
    if (std::strcmp(property.name, "duration") == 0)
        updateDuration(seconds);
    else
        updatePosition(seconds);
}

void MpvCore::reachedEnd() {
    m_atEnd = true;
    if (m_paused)
        return; // the user went there, it was not played to its end
    updatePaused(true);
    Q_EMIT m_owner.endReached();
}

} // namespace clipheave::platform
