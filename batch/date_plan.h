// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_job.h"
#include "media/image_item.h"
#include "platform/foundation/message.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

// What a change of dates will do, as a value: computed for the preview while the user types and
// again for the job, by the same function.
namespace clipheave::batch {

/// What the window for several dates holds. The members have the names of its controls.
struct DateRequest {
    QString mutSetDatelab;      ///< one date for all; with five characters it counts
    bool AddDateNumBtn = false; ///< each file later than the one before
    QString AddDateNumlab;      ///< by so many of the unit
    QString AddDateUnitBtn = QStringLiteral("Second"); ///< a title
    bool AddTimeBtn = false;                           ///< off: subtract
    QString yearVaulab, monthVaulab, dayVaulab, hourVaulab, minuVaulab, secVaulab;
};

/// Titles of the pop-up, in their order: "Second", "Minute", "Hour".
[[nodiscard]] const QStringList& addDateUnitTitles();
/// Returns whether one date is set for all files; else every date is shifted.
[[nodiscard]] bool setsOneDate(const DateRequest& request);
/// Returns whether the request can be carried out: a date that is to be set has one of the two
/// forms.
[[nodiscard]] bool isUsable(const DateRequest& request);

/// What a user should know of one line of the plan before it happens.
enum class DateNote {
    None,
    KindSkipped,    ///< neither video nor audio: nothing is written
    NoDate,         ///< the file's text holds no date and is written as it stands
    NoCalendarDate, ///< the new text is no date that a calendar has; the file dates stay
    Missing,        ///< the source is not there any more
    NoNameDate,     ///< its name holds no date: nothing is written
    NoCameraDate,   ///< it has no camera date: nothing is written
};
[[nodiscard]] platform::Message dateNoteMessage(DateNote note); ///< empty for None

/// One line of the plan.
struct DateLine {
    QString source;
    QString now;   ///< the date that the file has, as text
    QString after; ///< exactly what will be written; null when nothing is
    DateNote note = DateNote::None;

    [[nodiscard]] bool isWritten() const { return !after.isNull(); }
};
/// The same for the dates of the file system. `now` and `after` are local times of the creation
/// date; both of two that become different.
struct FileDateLine : DateLine {
    jobs::OutputDates dates; ///< of the copy; an absent one stays the source's
};

/// Returns the dates of a file; nothing when it is not there. Tests give their own.
using FileDatesOf = std::function<std::optional<jobs::OutputDates>(const QString& path)>;
/// The disk as it is now; each file is asked once. Copies share what they know.
[[nodiscard]] FileDatesOf fileDatesOnDisk();

/// Return one line per item, in order; the request is usable. The step counts the lines that are
/// written. Deliberate: one date for all is typed in local time and written in universal time.
[[nodiscard]] std::vector<DateLine> planCameraDates(const DateRequest& request,
                                                    const std::vector<media::ItemPointer>& items,
                                                    const FileDatesOf& fileDates);
[[nodiscard]] std::vector<FileDateLine> planFileDates(const DateRequest& request,
                                                      const std::vector<media::ItemPointer>& items,
                                                      const FileDatesOf& fileDates);
/// Return what the copies of one date to another write, one line per item, in order: the creation
/// date to the modification date or the other way round, the camera date to the creation date, and
/// the creation date, in local time, to the camera date.
[[nodiscard]] std::vector<FileDateLine>
planCopiedFileDates(const std::vector<media::ItemPointer>& items, const FileDatesOf& fileDates,
                    bool toModification);
[[nodiscard]] std::vector<FileDateLine>
planCameraToFileDates(const std::vector<media::ItemPointer>& items, const FileDatesOf& fileDates);
[[nodiscard]] std::vector<DateLine>
planFileToCameraDates(const std::vector<media::ItemPointer>& items, const FileDatesOf& fileDates);
/// Returns the names that photos get as comments.
[[nodiscard]] std::vector<DateLine>
planNamesToComments(const std::vector<media::ItemPointer>& items);
/// Returns what videos get whose date is taken from their name; see dateFromFileName().
[[nodiscard]] std::vector<DateLine>
planDatesFromNames(const std::vector<media::ItemPointer>& items);

} // namespace clipheave::batch
