// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/video_metadata.h"
#include "tests/testkit/media.h"
#include "tests/testkit/open_run.h"

#include <algorithm>
#include <functional>

namespace clipheave::metadata {

/// A request for a made-up item of a file.
inline jobs::WriteRequest requestOf(const QString& path, const QString& storage) {
    jobs::WriteRequest made;
    made.item = media::changedCopy({}, [&path](auto& item) {
        item.filePath = path;
        item.fileName = path.section(u'/', -1);
    });
    made.settings.storagelocation = storage;
    return made;
}

/// Runs over made-up items, with the storage folder "out".
class WriteFixture : public testing::Test {
protected:
    jobs::WriteRequest request(const QString& path) const {
        return requestOf(path, m_dir.path("out"));
    }
    /// Outcomes in the order of their sources' names.
    std::vector<jobs::WriteOutcome> run(const std::function<void(VideoMetadata&)>& commands) const {
        auto outcomes = testkit::outcomesOf([&](jobs::Run& run) {
            VideoMetadata writer(run);
            commands(writer);
        });
        std::sort(outcomes.begin(), outcomes.end(),
                  [](const auto& a, const auto& b) { return a.source < b.source; });
        return outcomes;
    }
    jobs::WriteOutcome saved(const jobs::WriteRequest& request) const {
        return run([&](VideoMetadata& writer) { writer.SaveMeidaFileChangesAction(request); })
            .back();
    }
    QStringList filesOut() const { return m_dir.files("out"); }

    testkit::TempDir m_dir;
};

} // namespace clipheave::metadata
