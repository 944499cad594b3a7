// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/player/mpv_library.h"

#include <QByteArray>
#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>

#include <atomic>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>

namespace clipheave::platform {

class MpvPlayer;

/// One running player of the library with its drawing context: the state of the open file as its
/// events report it. Lives on the main thread; the library's own threads only wake it up.
class MpvCore {
public:
    /// Returns null when the library is missing or does not start; `reason` then says why.
    static std::unique_ptr<MpvCore> make(MpvPlayer& owner, QString& reason);
    ~MpvCore();
    MpvCore(const MpvCore&) = delete;
    MpvCore& operator=(const MpvCore&) = delete;

    void open(const QByteArray& nativePath);
    void close();
    void setPaused(bool paused);
    void seek(double seconds);
    void step(bool forward);
    void setAudio(int volume, bool muted);
    QImage render(QSize pixels);

    [[nodiscard]] bool isOpen() const { return m_open; }
    [[nodiscard]] bool isLoaded() const { return m_loaded; }
    [[nodiscard]] bool isPaused() const { return m_paused; }
    [[nodiscard]] bool hasVideo() const { return m_hasVideo; }
    [[nodiscard]] double position() const { return m_position; }
    [[nodiscard]] double duration() const { return m_duration; }
    [[nodiscard]] QSize videoSize() const { return m_videoSize; }

private:
    static constexpr qint64 kNoEntry = -1;
    /// What a reply is about; sent together with m_generation.
    enum class Question : quint8 {
        Open,
        Other,
        Video,
        Rotation,
        Duration,
        Width,
        Height,
        AudioOutput
    };

    MpvCore(const MpvLibrary& library, MpvPlayer& owner) : m_mpv(library), m_owner(owner) {}
    bool start(QString& reason);
    bool configure();
    bool makeRenderer();
    void command(std::initializer_list<const char*> words, Question about = Question::Other);
    void ask(Question about, const char* property, mpv_format format);
    [[nodiscard]] quint64 mark(Question about) const;
    void setFlag(const char* name, bool value);

    void readEvents();
    void handle(const mpv_event& event);
    void handleStart(const mpv_event_start_file& start);
    void handleEnd(const mpv_event_end_file& end);
    void handleProperty(const mpv_event_property& property);
    void handleOpened(const mpv_event& event);
    void handleReply(const mpv_event& event);
    void fileLoaded(double duration);
    /// Logs once a run why nothing is heard: `output` is the audio output without a device.
    static void logSilence(const char* output);
    void setCodedSize(QSize size);
    void reachedEnd();
    void forgetFile();
    void updatePaused(bool paused);
    void updatePosition(double seconds);
    void updateDuration(double seconds);
    void imageChanged();
    void seekEnded();
    [[nodiscard]] bool draw(QSize pixels);
    [[nodiscard]] bool drawUpright(QImage& image);

    const MpvLibrary& m_mpv;
    MpvPlayer& m_owner;
    mpv_handle* m_handle = nullptr;
    mpv_render_context* m_renderer = nullptr;
    std::unique_ptr<QObject> m_mainThread; ///< what the library's threads post to
    std::atomic<bool> m_eventsPosted = false, m_imagePosted = false;

    bool m_open = false;
    quint64 m_generation = 0; ///< counts open() and close(): replies to older questions are dropped
    qint64 m_entry = kNoEntry; ///< of the file that was asked for, once the library has replied
    bool m_started = false;    ///< events belong to that file, not to the one before
    bool m_known = false;      ///< its tracks are known
    bool m_loaded = false;     ///< the first replies about it have arrived
    bool m_ownImages = false;  ///< frames are its own, not the last of the file before
    bool m_paused = true;
    bool m_atEnd = false;
    bool m_seeking = false;
    int m_stepsBack = 0; ///< asked for during a seek
    int m_rotation = 0;  ///< degrees clockwise, a multiple of 90
    bool m_hasVideo = false;
    bool m_hasFrame = false;
    double m_position = 0, m_duration = 0;
    std::optional<double> m_seekWhenLoaded;
    QSize m_codedSize; ///< before the rotation
    QSize m_videoSize;
    QSize m_frameSize; ///< what was last asked for
    QImage m_frame;
};

} // namespace clipheave::platform
