// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// What this layer says to users; the sentences stand in the tables of the fronts.
namespace clipheave::jobs {

/// An item whose work was given up without an outcome: a fault of this program.
inline constexpr platform::MessageCode kNoOutcome{"no-outcome"};
/// Work that reports an item twice: a fault of this program. The text of the outcome.
inline constexpr platform::MessageCode kOutcomeDropped{"outcome-dropped"};
inline constexpr platform::MessageCode kCreationDateNotStored{"creation-date-not-stored"};
inline constexpr platform::MessageCode kDateBeyondFileSystem{"date-beyond-file-system"}; ///< date
inline constexpr platform::MessageCode kCopiedUnchanged{"copied-unchanged"};

} // namespace clipheave::jobs
