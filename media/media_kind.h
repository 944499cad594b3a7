// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

namespace clipheave::media {

/// The four extension tables, the size and the duration texts; stateless, the controller inherits
/// them. A lookup takes the extension without its dot, compares the whole of it without regard to
/// ASCII case and returns the 0-based index of the first equal entry, or -1 (also for null).
struct MediaKind {
    static int GetImageType(const char* extension);     ///< raw camera photos
    static int GetDragImageType(const char* extension); ///< photos and drawings taken by drop
    static int GetAudioType(const char* extension);
    static int GetViedoType(const char* extension);

    /// Returns whether the extension of a path is in the table.
    static bool isAudio(const QString& path);
    static bool isVideo(const QString& path);
    static bool isPhoto(const QString& path);

    /// Writes the size as text into `buffer` (100 bytes) and returns it: "999 bytes", "1.00 KB" …
    /// "1.00 TB"; decimal units, divided step by step in single precision.
    static char* size_to_unit_out_buffer(std::uint64_t size, char* buffer);
    static QString sizeText(std::uint64_t size);
    /// Returns the bytes that such a text reads as, for sorting: the last character is the unit,
    /// the rest is read as a leading number; 0 for an empty text. Deliberate: "12.35 MB" and "800
    /// bytes" are misread, and lists sorted by size stand in that order.
    static std::uint64_t sizeFormString(const QString& text);
    /// Returns whole seconds as "1h:2m:5s", "59m:59s" or "5s".
    static QString getMediaDuration(std::int32_t seconds);
};

} // namespace clipheave::media
