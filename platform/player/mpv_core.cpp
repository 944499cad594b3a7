// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/player/mpv_core.h"

#include "platform/player/mpv_player.h"

#include <QDir>
#include <QTransform>

#include <algorithm>
#include <array>
#include <clocale>
#include <cmath>
#include <utility>
#include <vector>

namespace clipheave::platform {

namespace {

struct MpvOption {
    const char *name, *value;
};

/// Asking the audio system of a machine without an audio device makes its library write complaints
/// to the terminal.
bool hasAudioDevice() {
    return !QDir(QStringLiteral("/dev/snd"))
                .entryList({QStringLiteral("pcm*p")}, QDir::System)
                .isEmpty();
}

// Deliberate: nothing beside the file is opened, so that playing it never reaches into another
// folder or the network; no subtitles, so that frames are those stored in the file.
constexpr std::array kMpvOptions{
    MpvOption{"vo", "libmpv"},
    MpvOption{"hwdec", "no"},
    MpvOption{"audio-client-name", "ClipHeave"},
    MpvOption{"terminal", "no"},
    MpvOption{"config", "no"},
    MpvOption{"load-scripts", "no"},
    MpvOption{"ytdl", "no"},
    MpvOption{"osc", "no"},
    MpvOption{"osd-level", "0"},
    MpvOption{"input-default-bindings", "no"},
    MpvOption{"resume-playback", "no"},
    MpvOption{"audio-display", "no"}, // the panes show the cover themselves
    MpvOption{"keep-open", "yes"},
    MpvOption{"idle", "yes"},
    MpvOption{"pause", "yes"},
    MpvOption{"hr-seek", "yes"},
    MpvOption{"keepaspect", "no"}, // the caller gives the proportions
    // Rotated here: when it draws into memory, the library does not rotate frames, and crashes when
    // it is asked to.
    MpvOption{"video-rotate", "no"},
    MpvOption{"sid", "no"},
    MpvOption{"autoload-files", "no"},
    MpvOption{"sub-auto", "no"},
    MpvOption{"audio-file-auto", "no"},
    MpvOption{"cover-art-auto", "no"},
    MpvOption{"access-references", "no"},
    MpvOption{"ordered-chapters", "no"},
    MpvOption{"demuxer-lavf-o", "protocol_whitelist=file"},
};

constexpr int kMostFrameSide = 16384;
constexpr int kMostStepsBack = 8; // that a held key may queue
constexpr QSize kUnaskedFrameSize(64, 36);
constexpr double kSameSeconds = 1e-6;

bool sameSeconds(double a, double b) {
    return std::abs(a - b) < kSameSeconds;
}

} // namespace

std::unique_ptr<MpvCore> MpvCore::make(MpvPlayer& owner, QString& reason) {
    const MpvLibrary* library = mpvLibrary();
    if (library == nullptr) {
        reason = MpvPlayer::tr("The player is not installed.");
        return nullptr;
    }
    std::unique_ptr<MpvCore> core(new MpvCore(*library, owner));
    return core->start(reason) ? std::move(core) : nullptr;
}

bool MpvCore::start(QString& reason) {
    // The library refuses to work with a decimal comma. A window sets this at its start, but a
    // toolkit's plug-in may have changed it since.
    std::setlocale(LC_NUMERIC, "C");
    m_mainThread = std::make_unique<QObject>();
    m_handle = m_mpv.create();
    if (m_handle == nullptr || !configure() || !makeRenderer()) {
        reason = MpvPlayer::tr("The player does not start.");
        return false;
    }
    m_mpv.observeProperty(m_handle, 0, "time-pos", MPV_FORMAT_DOUBLE);
    m_mpv.observeProperty(m_handle, 0, "duration", MPV_FORMAT_DOUBLE);
    m_mpv.observeProperty(m_handle, 0, "eof-reached", MPV_FORMAT_FLAG);
    m_mpv.setWakeupCallback(
        m_handle,
        [](void* self) {
            auto* core = static_cast<MpvCore*>(self);
            if (!core->m_eventsPosted.exchange(true))
                QMetaObject::invokeMethod(
                    core->m_mainThread.get(), [core] { core->readEvents(); }, Qt::QueuedConnection);
        },
        this);
    return true;
}

bool MpvCore::configure() {
    // Some may be unknown to a newer library, which is not a reason not to play.
    for (const MpvOption& option : kMpvOptions)
        m_mpv.setOptionString(m_handle, option.name, option.value);
    // The last one always works: no device, no audio.
    m_mpv.setOptionString(m_handle, "ao", hasAudioDevice() ? "pulse,alsa,null" : "pulse,null");
    return m_mpv.initialize(m_handle) >= 0;
}

bool MpvCore::makeRenderer() {
    std::array<char, sizeof(MPV_RENDER_API_TYPE_SW)> type{MPV_RENDER_API_TYPE_SW};
    std::array<mpv_render_param, 2> parameters{
        {{MPV_RENDER_PARAM_API_TYPE, type.data()}, {MPV_RENDER_PARAM_INVALID, nullptr}}};
    if (m_mpv.renderContextCreate(&m_renderer, m_handle, parameters.data()) < 0)
        return false;
    m_mpv.renderContextSetUpdateCallback(
        m_renderer,
        [](void* self) {
            auto* core = static_cast<MpvCore*>(self);
            if (!core->m_imagePosted.exchange(true))
                QMetaObject::invokeMethod(
                    core->m_mainThread.get(), [core] { core->imageChanged(); },
                    Qt::QueuedConnection);
        },
        this);
    return true;
}

MpvCore::~MpvCore() {
    // After these two calls no thread of the library comes back to this object. The drawing context
    // has to go before the player it belongs to.
    if (m_handle != nullptr)
        m_mpv.setWakeupCallback(m_handle, nullptr, nullptr);
    if (m_renderer != nullptr) {
        m_mpv.renderContextSetUpdateCallback(m_renderer, nullptr, nullptr);
        m_mpv.renderContextFree(m_renderer);
    }
    if (m_handle != nullptr)
        m_mpv.terminateDestroy(m_handle);
}

quint64 MpvCore::mark(Question about) const {
    constexpr int kQuestionBits = 8;
    return m_generation << kQuestionBits | static_cast<quint64>(about);
}

void MpvCore::command(std::initializer_list<const char*> words, Question about) {
    std::vector<const char*> arguments(words);
    arguments.push_back(nullptr);
    m_mpv.commandAsync(m_handle, mark(about), arguments.data());
}

void MpvCore::ask(Question about, const char* property, mpv_format format) {
    m_mpv.getPropertyAsync(m_handle, mark(about), property, format);
}

void MpvCore::setFlag(const char* name, bool value) {
    int flag = value ? 1 : 0;
    m_mpv.setPropertyAsync(m_handle, 0, name, MPV_FORMAT_FLAG, &flag);
}

void MpvCore::open(const QByteArray& nativePath) {
    forgetFile();
    m_open = true;
    updatePaused(true);
    setFlag("pause", true);
    // A name that does not begin with a slash could be taken for an address.
    const QByteArray name = nativePath.startsWith('/') ? nativePath : "./" + nativePath;
    command({"loadfile", name.constData()}, Question::Open);
}

void MpvCore::close() {
    forgetFile();
    updatePaused(true);
    command({"stop"});
}

void MpvCore::forgetFile() {
    const bool hadFrame = m_hasFrame, wasLoaded = m_loaded;
    ++m_generation;
    m_entry = kNoEntry;
    m_open = m_started = m_known = m_loaded = m_ownImages = false;
    m_atEnd = m_hasVideo = m_hasFrame = m_seeking = false;
    m_stepsBack = m_rotation = 0;
    m_seekWhenLoaded.reset();
    m_codedSize = m_videoSize = {};
    m_frame = {};
    updatePosition(0);
    m_duration = 0;
    if (wasLoaded)
        Q_EMIT m_owner.durationChanged(0);
    if (hadFrame)
        Q_EMIT m_owner.frameReady();
}

void MpvCore::setPaused(bool paused) {
    if (!isOpen() || paused == m_paused)
        return;
    if (!paused && m_atEnd)
        seek(0);
    setFlag("pause", paused);
    updatePaused(paused);
}

void MpvCore::seek(double seconds) {
    if (!isOpen() || !std::isfinite(seconds))
        return;
    if (!m_loaded) {
        m_seekWhenLoaded = seconds;
        return;
    }
    double target = std::max(seconds, 0.0);
    if (m_duration > 0)
        target = std::min(target, m_duration);
    const QByteArray text = QByteArray::number(target, 'f', 6);
    command({"seek", text.constData(), "absolute+exact"});
    m_seeking = true;
    m_stepsBack = 0;
    m_atEnd = false;
    updatePosition(target);
}

void MpvCore::step(bool forward) {
    if (!m_loaded || !m_hasVideo)
        return;
    updatePaused(true);
    if (forward)
        return command({"frame-step"});
    // A step back is a seek, and the library drops one that comes during another.
    if (m_seeking) {
        m_stepsBack = std::min(m_stepsBack + 1, kMostStepsBack);
        return;
    }
    m_seeking = true;
    command({"frame-back-step"});
}

void MpvCore::seekEnded() {
    m_seeking = false;
    if (m_stepsBack == 0)
        return;
    --m_stepsBack;
    step(false);
}

void MpvCore::setAudio(int volume, bool muted) {
    double value = volume;
    m_mpv.setPropertyAsync(m_handle, 0, "volume", MPV_FORMAT_DOUBLE, &value);
    setFlag("mute", muted);
}

QImage MpvCore::render(QSize pixels) {
    m_frameSize = pixels.boundedTo({kMostFrameSide, kMostFrameSide});
    if (!m_hasFrame || m_videoSize.isEmpty() || m_frameSize.isEmpty())
        return {};
    if (m_frame.size() != m_frameSize && !draw(m_frameSize))
        return {};
    return m_frame;
}

bool MpvCore::draw(QSize pixels) {
    const bool swapped = m_rotation % 180 != 0;
    if (m_rotation != 0 || m_frame.size() != pixels || !m_frame.isDetached())
        m_frame = QImage(swapped ? pixels.transposed() : pixels, QImage::Format_RGB32);
    if (m_frame.isNull() || !drawUpright(m_frame))
        return false;
    if (m_rotation != 0)
        m_frame = m_frame.transformed(QTransform().rotate(m_rotation));
    return true;
}

bool MpvCore::drawUpright(QImage& image) {
    std::array<int, 2> size{image.width(), image.height()};
    std::size_t stride = static_cast<std::size_t>(image.bytesPerLine());
    std::array<char, 5> format{"bgr0"};
    int wait = 0; // never hold up the main thread until a frame is due
    std::array<mpv_render_param, 6> parameters{{{MPV_RENDER_PARAM_SW_SIZE, size.data()},
                                                {MPV_RENDER_PARAM_SW_FORMAT, format.data()},
                                                {MPV_RENDER_PARAM_SW_STRIDE, &stride},
                                                {MPV_RENDER_PARAM_SW_POINTER, image.bits()},
                                                {MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &wait},
                                                {MPV_RENDER_PARAM_INVALID, nullptr}}};
    if (m_mpv.renderContextRender(m_renderer, parameters.data()) < 0)
        return false;
    // The fourth byte is left at zero, which a translucent window would show as a hole.
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            line[x] |= 0xFF000000U;
    }
    return true;
}

void MpvCore::imageChanged() {
    m_imagePosted = false;
    readEvents(); // what this image belongs to
    if ((m_mpv.renderContextUpdate(m_renderer) & MPV_RENDER_UPDATE_FRAME) == 0)
        return;
    // Drawn even when nothing shows it: the library waits 200 ms for each frame that is not drawn.
    const bool drawn = draw(m_frameSize.isEmpty() ? kUnaskedFrameSize : m_frameSize);
    // The previous file may still be drawn once more.
    m_hasFrame = m_ownImages && drawn;
    if (m_hasFrame && !m_videoSize.isEmpty())
        Q_EMIT m_owner.frameReady();
}

void MpvCore::updatePaused(bool paused) {
    if (std::exchange(m_paused, paused) != paused)
        Q_EMIT m_owner.pausedChanged(paused);
}

void MpvCore::updatePosition(double seconds) {
    if (!sameSeconds(std::exchange(m_position, seconds), seconds))
        Q_EMIT m_owner.positionChanged(seconds);
}

void MpvCore::updateDuration(double seconds) {
    if (!sameSeconds(std::exchange(m_duration, seconds), seconds))
        Q_EMIT m_owner.durationChanged(seconds);
}

} // namespace clipheave::platform
