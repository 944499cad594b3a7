// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "batch/date_plan.h"
#include "batch/rename_plan.h"
#include "cli/console.h"
#include "media/media_import.h"
#include "media/preferences.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

namespace clipheave::cli {

/// Options that stand before any command.
struct GlobalOptions {
    QString storage; ///< replaces the preference "storagePath" for this run; empty: the preference
    QString config;  ///< preferences file; empty: the user's
    bool json = false;
    bool quiet = false;
    bool verbose = false;
    int jobs = 0; ///< exports at once; 0: the machine's cores
};

struct ListOptions {
    QStringList paths;
    bool metadata = false;
    bool photos = false;
};

struct SaveOptions {
    QStringList paths;
    std::vector<std::pair<QString, QString>> set; ///< FIELD, TEXT
    QString artwork;                              ///< image file, empty: none
};

struct RenameOptions {
    QStringList paths;
    std::optional<batch::RenameMode> mode;
    QString text; ///< the custom text or the template
    bool number = false;
    QString dateFormat;  ///< a title; null: not given
    bool photos = false; ///< photos and videos, instead of videos and audio files
    bool dryRun = false;
    bool undo = false;
};

struct VideoOptions {
    QStringList paths;
    QString job;    ///< "rotate", "merge", …
    QString choice; ///< the menu title or its short form; empty for jobs without a choice
};

struct DatesOptions {
    QStringList paths;
    QString job;                ///< "set", "shift", "from-name", "copy"
    QString copy;               ///< "created-to-modified", … of a copy
    batch::DateRequest request; ///< of "set" and "shift"
    bool files = false;         ///< the dates of the file system instead of the camera date
    bool dryRun = false;
};

struct StampOptions {
    // Null, and 0: the preference.
    QString position, layout, font, color;
    int fontSize = 0;
};

struct PhotoOptions {
    QStringList paths;
    QString job; ///< "stamp", …
    StampOptions stamp;
    QString list;                                      ///< "tiff", … of an export
    QString plist;                                     ///< the file of an import
    QString block;                                     ///< that "remove" takes away
    QString latitude, longitude, altitude, date, time; ///< of "gps" and "change-gps"
    QString taken, digitised;                          ///< of "dates"; null: the photo's own
    std::vector<std::pair<QString, QString>> set;      ///< FIELD, TEXT of "apply"
};

// Each command returns an ExitStatus.
int runList(const GlobalOptions& global, const ListOptions& options, Console& console);
int runSave(const GlobalOptions& global, const SaveOptions& options, Console& console);
int runClear(const GlobalOptions& global, const QStringList& paths, Console& console);
int runTitleToName(const GlobalOptions& global, const QStringList& paths, Console& console);
int runNameToTitle(const GlobalOptions& global, const QStringList& paths, Console& console);
int runRename(const GlobalOptions& global, const RenameOptions& options, Console& console);
int runDates(const GlobalOptions& global, const DatesOptions& options, Console& console);
int runVideo(const GlobalOptions& global, const VideoOptions& options, Console& console);
int runPhoto(const GlobalOptions& global, const PhotoOptions& options, Console& console);
int runPrefs(const GlobalOptions& global, const QString& key, const QString& value, bool hasValue);
int runDemo(const GlobalOptions& global, const QString& folder, Console& console);

/// Returns the preferences of this run, as the window holds them after a start.
[[nodiscard]] media::Preferences storedPreferences(const GlobalOptions& global);
/// Returns the output folder of this run, as an absolute path.
[[nodiscard]] QString storageLocation(const GlobalOptions& global);
/// Returns the path, taken from the current folder when it is relative. One with "." or ".." in it
/// becomes the full name of what it leads to, where that exists; any other stays unchanged.
[[nodiscard]] QString absolutePath(const QString& path);

} // namespace clipheave::cli
