// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/photo_rewrite.h"

#include "platform/foundation/log.h"
#include "platform/image/write/photo_writer.h"

#include <utility>

namespace clipheave::photo {

void startRewrite(const jobs::WriteJob& job, const QVariantMap& properties,
                  bool removesEverything) {
    startRewrite(
        job, [properties] { return properties; }, removesEverything);
}

void startRewrite(const jobs::WriteJob& job, std::function<QVariantMap()> properties,
                  bool removesEverything) {
    const auto writer = [source = job.source, output = job.output,
                         properties = std::move(properties), removesEverything](const auto&) {
        auto written = platform::rewritePhoto({source, output, properties(), removesEverything});
        if (!written)
            platform::log(platform::LogLevel::Error,
                          QStringLiteral("CGImageDestinationFinalize failed"), source);
        return written;
    };
    jobs::startSession(job,
                       platform::AVAssetExportSession::rewriting(job.source, job.output, writer));
}

} // namespace clipheave::photo
