// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace clipheave::platform {

/// While one lives, AtomicFile::commit() of this thread makes the bytes of a file durable as ever,
/// but leaves its new name to the caller of syncFolders() with what take() returns. Many small
/// files then wait for their folder once. A power cut in between costs new names, never whole
/// files.
class DeferredFolderSyncs {
public:
    DeferredFolderSyncs();
    ~DeferredFolderSyncs();
    DeferredFolderSyncs(const DeferredFolderSyncs&) = delete;
    DeferredFolderSyncs& operator=(const DeferredFolderSyncs&) = delete;
    [[nodiscard]] QStringList take();
};
/// Makes the names in these folders durable.
void syncFolders(const QStringList& folders);

/// Makes a new name in `folder` durable: at once, or later where a DeferredFolderSyncs lives.
void syncNewNameIn(const QString& folder);

} // namespace clipheave::platform
