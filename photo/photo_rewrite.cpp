// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/photo_rewrite.h"

#include "platform/image/write/photo_writer.h"

#include <utility>

namespace clipheave::photo {

void startRewrite(const jobs::WriteJob& job, const QVariantMap& properties) {
    startRewrite(job, [properties] { return properties; });
}

void startRewrite(const jobs::WriteJob& job, std::function<QVariantMap()> properties) {
    const auto writer = [source = job.source, output = job.output,
                         properties = std::move(properties)](const auto&) {
        return platform::rewritePhoto({source, output, properties()});
    };
    jobs::startSession(job,
                       platform::AVAssetExportSession::rewriting(job.source, job.output, writer));
}

} // namespace clipheave::photo
