// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/write_outcome.h"

#include "platform/foundation/error_text.h"

namespace clipheave::jobs {

using namespace platform;

QString WriteOutcome::text() const {
    Notes all;
    if (failure)
        all.append(textBeside(*failure, source));
    return textOf(all + notes);
}

WriteOutcome refusal(const QString& source, const Message& reason, WriteStatus status) {
    WriteOutcome outcome;
    outcome.source = source;
    outcome.status = status;
    outcome.failure = Error{ErrorCode::Io, {}, {}, reason};
    return outcome;
}

} // namespace clipheave::jobs
