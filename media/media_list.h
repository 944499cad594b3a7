// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

#include <array>
#include <optional>
#include <vector>

namespace clipheave::media {

/// The columns of the media list, in the order shown.
enum class Column { Name, Size, Time, Type, Artist, Album, Date };
inline constexpr std::array kColumns = {Column::Name,   Column::Size,  Column::Time, Column::Type,
                                        Column::Artist, Column::Album, Column::Date};

/// Sorting of the media list by its columns. Every column has a flag, shared by the whole process,
/// that starts cleared and is flipped by each click of the header before the list is sorted: the
/// first click sorts with the flag set. Main thread only.
class MediaListSort {
public:
    /// Returns "Name", "Size", "Time", "Type", "Artist", "Album" or "Date".
    [[nodiscard]] static QString identifier(Column column);
    [[nodiscard]] static std::optional<Column> columnForIdentifier(QStringView identifier);
    [[nodiscard]] static QString header(Column column); ///< "Media Name" …
    /// Returns what the cell shows; empty for a missing value.
    [[nodiscard]] static const QString& cellText(const IKImageItem& item, Column column);

    [[nodiscard]] static bool flag(Column column);
    /// Flips the flag and returns its new value.
    static bool flipFlag(Column column);
    /// Clears all flags, as at the start of the program.
    static void resetFlags();

    /// Returns a negative number when `a` stands before `b`. Texts (name, type, artist, album):
    /// with `flag` they descend, those that begin with punctuation and then the empty ones last;
    /// without it they ascend, the empty ones and then those with punctuation first. Case is
    /// ignored and digit runs compare by value. Deliberate: two texts are never equal; of equal
    /// ones `a` stands behind with the flag and before without it. Size (as
    /// MediaKind::sizeFormString reads the text), time and date ascend with the flag and descend
    /// without; equal ones give 0.
    [[nodiscard]] static int compare(const IKImageItem& a, const IKImageItem& b, Column column,
                                     bool flag);

    /// Sorts by compare(), which gets two items in their current order. As equal texts
    /// are never equal, a sort with the flag set reverses their order and one without keeps it;
    /// so the two orders of a text column are each other's exact reverse. Equal sizes, times and
    /// dates keep their order. Missing dates are the earliest, a duration that is not a number
    /// counts as less than any.
    static void sortItems(std::vector<ItemPointer>& items, Column column, bool flag);
};

} // namespace clipheave::media
