// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/user_defaults.h"

#include <QString>
#include <QStringList>

namespace clipheave::media {

// The keys of the per-user defaults, spelt as they have always been.
inline constexpr char16_t kStoragePathKey[] = u"storagePath";
inline constexpr char16_t kFontNameKey[] = u"fontName";
inline constexpr char16_t kFontSizeKey[] = u"fontsize";
inline constexpr char16_t kPositionKey[] = u"Postion";
inline constexpr char16_t kDateFormatKey[] = u"Dateformat";

/// Stamp positions and date formats, in the order of their pop-up lists.
[[nodiscard]] const QStringList& stampPositions();
[[nodiscard]] const QStringList& stampDateFormats();

/// The preference values as the application holds them after start.
struct Preferences {
    QString storagelocation;
    QString currentFontname;
    int currentFontSize = 0;
    /// Deliberate: "Lucida Grande 24" at the first start although the size is 14; later the name
    /// and size that are in force.
    QString fontLabel;
    QString position;   ///< title in stampPositions(); the stored default matches none by its case
    QString dateFormat; ///< title in stampDateFormats()
    bool firstStart = false;
};

/// Returns what applies now; writes nothing and creates nothing.
[[nodiscard]] Preferences readPreferences(const platform::NSUserDefaults& defaults);
/// Returns what the application holds after a start; writes nothing and creates nothing. At the
/// first start the position is the default that is stored then, which is no title.
[[nodiscard]] Preferences preferencesAtStart(const platform::NSUserDefaults& defaults);
/// Starts the preferences of the application: at the first start writes the defaults, later writes
/// every existing value back unchanged, and creates the storage folder. A folder that cannot be
/// made is not a failure here; the jobs that write there fail.
[[nodiscard]] platform::Result<Preferences>
applyPreferencesAtStart(platform::NSUserDefaults& defaults);
/// Stores the output folder and creates it.
[[nodiscard]] platform::Result<void> setStorageLocation(platform::NSUserDefaults& defaults,
                                                        const QString& folder);
/// Returns "<videos folder>/com.Tarvolin.clipheave".
[[nodiscard]] QString defaultStorageLocation();

} // namespace clipheave::media
