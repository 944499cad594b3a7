// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>

#include <memory>

namespace clipheave::platform {

class MpvCore;

/// Plays one local file at a time, with audio where the machine has a device and silently where
/// not. Images are drawn into an image of any size; no window system is needed. Main thread only.
/// The library behind it is loaded at the first open(); where it is missing, open() leads to
/// failed().
class MpvPlayer : public QObject {
    Q_OBJECT
public:
    explicit MpvPlayer(QObject* parent = nullptr);
    ~MpvPlayer() override;

    /// Loads the library in a thread of its own, so that the first open() does not wait some 100 ms
    /// for it. For idle moments after the start; may be left out.
    static void preload();

    /// Replaces what is open; paused at the first frame. Nothing but this file is read: no
    /// subtitles, audio files or playlists that it names or that lie beside it. Ends in either
    /// durationChanged() and, with an image, frameReady(), or in failed().
    void open(const QString& path);
    void close();
    /// From open() until close() or failed(), also while the file is still being looked at.
    [[nodiscard]] bool isOpen() const;
    /// From the first durationChanged() on.
    [[nodiscard]] bool isLoaded() const;

    void setPaused(bool paused);
    [[nodiscard]] bool isPaused() const;
    /// Exact: to the first frame that begins at or after `seconds` (5 ms of tolerance), clamped to
    /// the file.
    void seek(double seconds);
    void stepForward();
    void stepBackward();

    /// Seconds; 0 when nothing is open.
    [[nodiscard]] double position() const;
    /// Seconds; 0 when nothing is open or the file does not tell.
    [[nodiscard]] double duration() const;
    /// 0 to 100, kept from file to file.
    void setVolume(int percent);
    [[nodiscard]] int volume() const;
    void setMuted(bool muted);
    [[nodiscard]] bool isMuted() const;
    /// Whether there is a moving image; cover art is none. Known when durationChanged() comes.
    [[nodiscard]] bool hasVideo() const;
    /// As it is to be seen: turned and with square pixels. Empty until the first frame is known.
    [[nodiscard]] QSize videoSize() const;

    /// The current frame, stretched to `pixels` (opaque RGB32); the caller keeps the proportions of
    /// videoSize(). Null when there is none. Later frames are drawn at this size until another is
    /// asked.
    [[nodiscard]] QImage render(QSize pixels);

Q_SIGNALS:
    void positionChanged(double seconds);
    /// When a file has been opened, whatever its duration, when it is known better, and with 0 when
    /// the file is gone.
    void durationChanged(double seconds);
    void pausedChanged(bool paused);
    void volumeChanged(int percent, bool muted);
    /// Another frame, or none any more: render() gives it.
    void frameReady();
    /// Played to its end; it stays open, paused at the last frame.
    void endReached();
    /// The file is not open any more. The text says why, in words for people.
    void failed(const QString& reason);

private:
    std::unique_ptr<MpvCore> m_core; ///< made at the first open()
    int m_volume = 100;
    bool m_muted = false;
};

} // namespace clipheave::platform
