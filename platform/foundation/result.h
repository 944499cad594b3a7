// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

#include <QString>

#include <tl/expected.hpp>

namespace clipheave::platform {

/// What went wrong, in terms of what a caller can do about it.
enum class ErrorCode {
    NotFound,        ///< the path does not exist
    AccessDenied,    ///< the user may not read or write it
    NotSupported,    ///< a well-formed thing that this program does not handle (a FIFO, a codec)
    InvalidData,     ///< the bytes contradict their own format
    Truncated,       ///< the file ends before the bytes it announces
    LimitExceeded,   ///< a count or size in the file is beyond what is read
    AlreadyExists,   ///< the target is there and may not be replaced
    NoSpace,         ///< disk full or quota reached
    Cancelled,       ///< the user or a signal asked to stop
    InvalidArgument, ///< the caller's value is out of range
    Io,              ///< any other failure of the system
};

struct Error {
    ErrorCode code = ErrorCode::Io;
    Message operation; ///< what was being done, "read the movie header"
    QString path;      ///< the file concerned, empty when there is none
    Message detail; ///< why: a reason of ours, or the text of the system or library; may be empty

    /// Says what is wrong in plain words first, then what was being done, the file and the text of
    /// the system: "The disk is full: Write: /a: No space left on device". Leaves empty parts out.
    [[nodiscard]] QString text() const;
};

/// `true` means success. Mark every function that returns one [[nodiscard]].
template <class T> using Result = tl::expected<T, Error>;

/// Shorthand for returning a failure.
[[nodiscard]] inline tl::unexpected<Error> failure(ErrorCode code, Message operation,
                                                   QString path = {}, Message detail = {}) {
    return tl::unexpected<Error>(
        Error{code, std::move(operation), std::move(path), std::move(detail)});
}

/// The failure of the system call that has just set errno (pass `savedErrno` when it may have
/// changed).
[[nodiscard]] tl::unexpected<Error> systemFailure(Message operation, QString path, int savedErrno);

/// Drops a failure on purpose and logs why that is right; the only way to ignore one.
void ignoreFailure(const Error& error, const char* why);
template <class T> void ignoreFailure(const Result<T>& result, const char* why) {
    if (!result)
        ignoreFailure(result.error(), why);
}

} // namespace clipheave::platform
