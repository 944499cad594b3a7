// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QString>

#include <cstdint>

namespace clipheave::app {

/// The user's thumbnail folder, shared with file managers (freedesktop.org, Thumbnail Managing
/// Standard): "normal" holds images of at most 128 pixels, "large" of 256, each a PNG named by
/// the MD5 of the file's address, with the address and the modification time inside. Thread-safe;
/// holds no state but the folder.
class ThumbnailCache {
public:
    static constexpr int kNormalSide = 128;
    static constexpr int kLargeSide = 256;

    /// `folder` as a path; the default is "thumbnails" in the user's cache folder.
    explicit ThumbnailCache(QString folder = defaultFolder());
    [[nodiscard]] static QString defaultFolder();
    /// Returns "file:///…" with every byte escaped that the standard's own programs escape.
    [[nodiscard]] static QByteArray fileAddress(const QString& path);

    /// Returns the stored image; null when there is none or the file has changed since. `modified`
    /// in seconds since 1970; `side` is kNormalSide or kLargeSide.
    [[nodiscard]] QImage find(const QString& path, std::int64_t modified, int side) const;
    /// Stores the image in one step. Failures leave nothing behind and are not reported.
    void store(const QString& path, std::int64_t modified, int side, const QImage& image) const;
    /// Returns false for the thumbnails themselves: nothing is stored for them.
    [[nodiscard]] bool takes(const QString& path) const;
    /// Returns where the image of the file is, whether there or not.
    [[nodiscard]] QString fileFor(const QString& path, int side) const;

private:
    QString m_folder;
};

} // namespace clipheave::app
