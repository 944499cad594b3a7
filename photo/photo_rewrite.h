// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_job.h"

#include <QVariantMap>

#include <functional>

namespace clipheave::photo {

/// Starts the session that writes the job's photo with these properties; see
/// platform::rewritePhoto().
void startRewrite(const jobs::WriteJob& job, const QVariantMap& properties);
/// The same with properties that depend on the photo; they are made on the thread that writes.
void startRewrite(const jobs::WriteJob& job, std::function<QVariantMap()> properties);

} // namespace clipheave::photo
