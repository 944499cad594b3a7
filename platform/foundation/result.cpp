// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/result.h"

#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"

#include <cerrno>
#include <system_error>

namespace clipheave::platform {
namespace {

ErrorCode codeOfErrno(int number) {
    switch (number) {
    case ENOENT:
    case ENOTDIR:
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

} // namespace

QString Error::text() const {
    QString joined = operation.text();
    for (const QString& part : {displayPath(path), detail.text()}) {
        if (part.isEmpty())
            continue;
        if (!joined.isEmpty())
            joined += QLatin1String(": ");
        joined += part;
    }
    return joined;
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
