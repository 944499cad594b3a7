// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/folder_syncs.h"

#include "platform/foundation/handles.h"
#include "platform/foundation/messages.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/result.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace clipheave::platform {
namespace {

/// Folders whose new names are to be made durable later; null: at once.
thread_local QStringList* t_deferredFolders = nullptr;

void makeFolderDurable(const QString& folder) {
    const FileDescriptor fd(
        ::open(nativePath(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd || ::fsync(fd.get()) != 0)
        ignoreFailure(systemFailure(kSyncFolder, folder, errno).value(),
                      "the file itself is complete and in place");
}

} // namespace

DeferredFolderSyncs::DeferredFolderSyncs() {
    t_deferredFolders = new QStringList;
}

DeferredFolderSyncs::~DeferredFolderSyncs() {
    delete std::exchange(t_deferredFolders, nullptr);
}

QStringList DeferredFolderSyncs::take() {
    return std::exchange(*t_deferredFolders, {});
}

void syncFolders(const QStringList& folders) {
    for (const QString& folder : folders)
        makeFolderDurable(folder);
}

void syncNewNameIn(const QString& folder) {
    if (!t_deferredFolders)
        makeFolderDurable(folder);
    else if (!t_deferredFolders->contains(folder))
        t_deferredFolders->append(folder);
}

} // namespace clipheave::platform
