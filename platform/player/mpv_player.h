// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>

#include <memory>

namespace clipheave::platform {

class MpvCore;

/// Plays one local file at a time, with audio where the machine has a device, else silently. Frames
/// are drawn into an image of any size; no window system is needed. Main thread only. The library
/// behind it is loaded at the first open(); where it is missing, open() ends in failed().
class MpvPlayer : public QObject {
    Q_OBJECT
public:
    explicit MpvPlayer(QObject* parent = nullptr);
    ~MpvPlayer() override;

    /// Loads the library in a thread of its own, so that the first open() does not wait some 100 ms
    /// for it. For an idle moment after the start; optional.
    static void preload();

    /// Replaces what is open; paused at the first frame. Nothing but this file is read: no
    /// subtitles, audio files or playlists that it names or that lie beside it. Ends in either
    /// durationChanged() and, for a video, frameReady(), or in failed().
    void open(const QString& path);
    void close();
    /// Returns true from open() until close() or failed(), also while the file is being loaded.
    [[nodiscard]] bool isOpen() const;
    /// Returns true from the first durationChanged() on.
    [[nodiscard]] bool isLoaded() const;

    void setPaused(bool paused);
    [[nodiscard]] bool isPaused() const;
    /// Goes to the first frame that begins at or after `seconds` (5 ms of tolerance), clamped to
    /// the file.
    void seek(double seconds);
    void stepForward();
    void stepBackward();

    /// Returns seconds; 0 when nothing is open.
    [[nodiscard]] double position() const;
    /// Returns seconds; 0 when nothing is open or the duration is unknown.
    [[nodiscard]] double duration() const;
    /// Sets the volume, 0 to 100, kept from file to file.
    void setVolume(int percent);
    [[nodiscard]] int volume() const;
    void setMuted(bool muted);
    [[nodiscard]] bool isMuted() const;
    /// Returns true for a video track; cover art does not count. Known when durationChanged()
    /// comes.
    [[nodiscard]] bool hasVideo() const;
    /// Returns the size for display: rotated, in square pixels. Empty until the first frame is
    /// known.
    [[nodiscard]] QSize videoSize() const;

    /// Returns the current frame, stretched to `pixels` (opaque RGB32); the caller keeps the aspect
    /// ratio of videoSize(). Null when there is none. Later frames are drawn at this size until
    /// another is asked for.
    [[nodiscard]] QImage render(QSize pixels);

Q_SIGNALS:
    void positionChanged(double seconds);
    /// Emitted when a file has been opened, whatever its duration, when the duration is known
    /// better, and with 0 when the file is closed.
    void durationChanged(double seconds);
    void pausedChanged(bool paused);
    void volumeChanged(int percent, bool muted);
    /// There is another frame for render(), or none any more.
    void frameReady();
    /// Played to its end; it stays open, paused at the last frame.
    void endReached();
    /// The file is not open any more; `reason` is for the user.
    void failed(const QString& reason);

private:
    std::unique_ptr<MpvCore> m_core; ///< made at the first open()
    int m_volume = 100;
    bool m_muted = false;
};

} // namespace clipheave::platform
