// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_request.h"

#include <QHash>
#include <QPair>
#include <QSet>
#include <QString>
#include <QStringList>

#include <mutex>

namespace clipheave::jobs {

/// The flat rule: the file's name in the storage folder.
[[nodiscard]] QString flatOutputPath(const WriteRequest& request);
/// The mirrored rule: below the storage folder as below the parent of the imported folder; flat
/// when no folder was imported. The path's folder may still be missing.
/// Deliberate: the text of the parent folder is taken out wherever it stands in the path, so a
/// folder inside that repeats it is gone too. Never leads out of the storage folder.
[[nodiscard]] QString mirroredOutputPath(const WriteRequest& request);
/// Where a video is copied under its title, folder by the mirrored rule. The title is used as it
/// stands; null when it would lead out of the storage folder.
[[nodiscard]] QString titledOutputPath(const WriteRequest& request);

/// Assigns the output paths of one run. Thread-safe.
class OutputPaths {
public:
    /// No output replaces one of these files, whatever leads to it.
    void protect(const QStringList& sources);
    /// `wanted`, or the first of "B 2.E", "B 3.E" … that is neither a protected file nor was
    /// assigned in this run. A file at `wanted` is the run's to replace, one at a numbered name
    /// only when it is an output of before: what else stands beside a source is the user's.
    [[nodiscard]] QString claim(const QString& wanted);
    /// The same without looking at what was assigned: the same name at every call, and in the next
    /// run, so that a run made again replaces its outputs.
    [[nodiscard]] QString claimShared(const QString& wanted) const;
    /// False when `path` was assigned in this run already.
    [[nodiscard]] bool claimExactly(const QString& path);

    /// True when the path leads to a protected file.
    [[nodiscard]] bool isProtected(const QString& path) const;

private:
    [[nodiscard]] bool leadsToSource(const QString& path) const;
    /// True when an output may take this numbered name.
    [[nodiscard]] bool mayStandAt(const QString& numbered) const;

    mutable std::mutex m_mutex;
    QSet<QString> m_taken;
    QHash<QString, int> m_steps; ///< how many numbers were tried, by the wanted path
    QSet<QString> m_protectedPaths;
    QSet<QPair<quint64, quint64>> m_protected; ///< device and inode of each
};

} // namespace clipheave::jobs
