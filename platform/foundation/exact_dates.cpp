// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/exact_dates.h"

#include "platform/foundation/creation_date.h"

#include <array>
#include <fcntl.h>

namespace clipheave::platform {

namespace {

timespec modificationDate(const struct statx& status) {
    timespec date{};
    date.tv_sec = status.stx_mtime.tv_sec;
    date.tv_nsec = status.stx_mtime.tv_nsec;
    return date;
}

/// Returns whether a date is another one's, but for what is below the millisecond.
bool isRounded(const timespec& date, const timespec& exact) {
    return date.tv_nsec != exact.tv_nsec && dateFromTimespec(date) == dateFromTimespec(exact);
}

} // namespace

void restoreExactDates(const QString& from, const QString& to) {
    const auto source = FileReference::ofPath(from), target = FileReference::ofPath(to);
    struct statx exact {};
    struct statx rounded {};
    if (source.status(exact) != 0 || target.status(rounded) != 0)
        return;
    const timespec creation = creationDate(source, exact), modification = modificationDate(exact);
    const auto stored = storedCreationDate(target);
    if (stored && isRounded(*stored, creation))
        storeCreationDate(target, creation);
    timespec omitted{};
    omitted.tv_nsec = UTIME_OMIT; // the access date
    const std::array<timespec, 2> times{omitted, modification};
    if (isRounded(modificationDate(rounded), modification))
        ::utimensat(AT_FDCWD, target.name.constData(), times.data(), 0);
}

} // namespace clipheave::platform
