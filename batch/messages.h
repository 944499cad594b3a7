// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// What this layer says to users; the sentences stand in the tables of the fronts.
namespace clipheave::batch {

using platform::MessageCode;

// Notes of a plan
inline constexpr MessageCode kNameExists{"name-exists"};
inline constexpr MessageCode kNoTitle{"no-title"};
inline constexpr MessageCode kEmptyName{"empty-name"};
inline constexpr MessageCode kNameTooLong{"name-too-long"};
inline constexpr MessageCode kFileMissing{"file-missing"};
inline constexpr MessageCode kNoSuchFolder{"no-such-folder"};
inline constexpr MessageCode kNoFileName{"no-file-name"};

// Outcomes
inline constexpr MessageCode kOriginalStays{"original-stays"}; ///< text of the system
inline constexpr MessageCode kNewNameStays{"new-name-stays"};  ///< text of the system
inline constexpr MessageCode kOldNameTaken{"old-name-taken"};
inline constexpr MessageCode kAnotherFile{"another-file"};
inline constexpr MessageCode kFileGone{"file-gone"};
inline constexpr MessageCode kFolderGone{"folder-gone"};
inline constexpr MessageCode kChangedCopyStays{"changed-copy-stays"};

// The journal
inline constexpr MessageCode kCreateJournal{"create-journal"};
inline constexpr MessageCode kOpenJournal{"open-journal"};
inline constexpr MessageCode kWriteJournal{"write-journal"};
inline constexpr MessageCode kUndoRename{"undo-rename"};
inline constexpr MessageCode kJournalEndsInHalfALine{"journal-half-line"};
inline constexpr MessageCode kJournalNotRemoved{"journal-not-removed"};
inline constexpr MessageCode kNothingToUndo{"nothing-to-undo"};
inline constexpr MessageCode kRenameRunning{"rename-running"};

// Notes of a plan of dates
inline constexpr MessageCode kNotForThisKind{"not-for-this-kind"};
inline constexpr MessageCode kNoDateInText{"no-date-in-text"};
inline constexpr MessageCode kNoCalendarDate{"no-calendar-date"};
inline constexpr MessageCode kNoDateInName{"no-date-in-name"};
inline constexpr MessageCode kCameraDateMissing{"camera-date-missing"};

} // namespace clipheave::batch
