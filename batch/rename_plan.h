// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"
#include "platform/foundation/message.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

// What a batch rename will do, as a value: computed for the preview while the user types and again
// for the job, by the same function.
namespace clipheave::batch {

enum class RenameMode { CustomText, MetadataTags };

/// What the rename window holds. The members have the names of its controls.
struct RenameRequest {
    RenameMode mode = RenameMode::CustomText; ///< useCustomName
    QString customNamelab;
    bool checkStartNumber = false;
    QString filenameFormatstrlab = QStringLiteral("{Existing File Name}");
    bool seqNumBtn = false;
    QString renameDateFormatBtn = QStringLiteral("Please Choose Date format"); ///< a title
    QString storagelocation;
};

/// Titles of the pop-ups, in their order.
[[nodiscard]] const QStringList& addTagsTitles();
[[nodiscard]] const QStringList& tagPositionTitles();
[[nodiscard]] const QStringList& renameDateFormatTitles();
/// The template after the tag of this title was inserted before (`atBeginning`) or after it;
/// unchanged for the resting item and unknown titles.
[[nodiscard]] QString insertPhotoTag(const QString& filenameTemplate, const QString& tagTitle,
                                     bool atBeginning);
/// Where the tag words of a template stand, for tinting: each is start and length in UTF-16 units,
/// braces included where they stand around the word.
struct TagWordSpan {
    int start = 0, length = 0;
};
[[nodiscard]] std::vector<TagWordSpan> tagWordSpans(const QString& filenameTemplate);

/// What a user should know of one line of the plan before it happens.
enum class RenameNote {
    None,
    NameExists,  ///< a retry name is used, or, where that exists too, the file will stay
    NoTitle,     ///< the template names the title and the file has none
    EmptyName,   ///< nothing before the dot
    NameTooLong, ///< over 255 bytes: the file will stay
    Missing,     ///< the source is not there any more
    NoFolder,    ///< the text leads into a folder that is not there: the file will stay
    NotPossible, ///< no file can be called so: the file will stay
};
[[nodiscard]] platform::Message renameNoteMessage(RenameNote note); ///< empty for None
/// The same in the words of the front: "name exists", …
[[nodiscard]] inline QString renameNoteText(RenameNote note) {
    return renameNoteMessage(note).text();
}

/// One line of the plan.
struct RenameMove {
    QString source;
    QString target;      ///< full path, the retry name already taken
    QString newFileName; ///< base name and extension, what metadata mode writes into `fileName`
    QString retryTarget; ///< used once when the target turns out to be taken; null when used up
    /// The storage folder, where a retry name may lead: created when it is not there. No other
    /// folder ever is. Null in custom-text mode.
    QString storageFolder;
    bool stays = false; ///< the move is bound to fail (its note says why)
    RenameNote note = RenameNote::None;
};

/// What the plan asks of the disk. Tests give their own.
struct RenameSurroundings {
    /// Is the name taken?
    std::function<bool(const QString& path)> fileExists;
    /// The file system's creation date as "YYYY-MM-DD HH:MM:SS +0000".
    std::function<QString(const QString& path)> creationDateText;
};
/// The disk as it is now: each folder is listed once, at its first use. Copies share the listings.
[[nodiscard]] RenameSurroundings surroundingsOnDisk();

/// One move per item, in order. They are carried out one after the other, so each line takes the
/// names into account that those before it take and leave. Pure apart from its questions to
/// `surroundings`.
[[nodiscard]] std::vector<RenameMove> planRename(const RenameRequest& request,
                                                 const std::vector<media::ItemPointer>& items,
                                                 const RenameSurroundings& surroundings);

} // namespace clipheave::batch
