// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/result.h"

#include "platform/foundation/log.h"
#include "platform/foundation/messages.h"
#include "platform/foundation/paths.h"

#include <cerrno>
#include <system_error>

namespace clipheave::platform {
namespace {

ErrorCode codeOfErrno(int number) {
    switch (number) {
    case ENOENT:
    case ENOTDIR:
    case ELOOP: // links that lead to each other
        return ErrorCode::NotFound;
    case EACCES:
    case EPERM:
    case EROFS:
        return ErrorCode::AccessDenied;
    case EEXIST:
    case ENOTEMPTY:
        return ErrorCode::AlreadyExists;
    case ENOSPC:
    case EDQUOT:
        return ErrorCode::NoSpace;
    case EOPNOTSUPP: // the same number as ENOTSUP
    case ENOSYS:
    case ENXIO: // a socket, or a FIFO without a reader
        return ErrorCode::NotSupported;
    case EFBIG:
        return ErrorCode::LimitExceeded;
    case ENAMETOOLONG:
    case EINVAL:
        return ErrorCode::InvalidArgument;
    default:
        return ErrorCode::Io;
    }
}

/// What the code alone says to a user; empty where only the detail says anything.
Message sentenceOf(ErrorCode code) {
    switch (code) {
    case ErrorCode::NotFound:
        return kNotFound;
    case ErrorCode::AccessDenied:
        return kAccessDenied;
    case ErrorCode::NotSupported:
        return kNotSupported;
    case ErrorCode::InvalidData:
        return kDamagedFile;
    case ErrorCode::Truncated:
        return kFileEndsEarly;
    case ErrorCode::LimitExceeded:
        return kLimitExceeded;
    case ErrorCode::AlreadyExists:
        return kNameTaken;
    case ErrorCode::NoSpace:
        return kDiskFull;
    case ErrorCode::Cancelled:
        return kCancelled;
    case ErrorCode::InvalidArgument:
    case ErrorCode::Io:
        break;
    }
    return {};
}

} // namespace

QString Error::text() const {
    // A reason of ours says what is wrong better than the code can.
    QStringList parts;
    for (const QString& part :
         {detail.isOurs() ? detail.text() : sentenceOf(code).text(), operation.text(),
          displayPath(path), detail.isOurs() ? QString() : detail.text()})
        if (!part.isEmpty())
            parts.append(part);
    return parts.join(QLatin1String(": "));
}

tl::unexpected<Error> systemFailure(Message operation, QString path, int savedErrno) {
    return failure(codeOfErrno(savedErrno), std::move(operation), std::move(path),
                   QString::fromStdString(std::generic_category().message(savedErrno)));
}

void ignoreFailure(const Error& error, const char* why) {
    if (logs(LogLevel::Trace))
        log(LogLevel::Trace,
            error.text() + QLatin1String(" (ignored: ") + QLatin1String(why) + u')', error.path);
}

} // namespace clipheave::platform
