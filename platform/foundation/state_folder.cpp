// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/state_folder.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"

#include <QDir>

#include <sys/stat.h>

namespace clipheave::platform {

QString stateFolder() {
    const QString set = pathFromNative(qgetenv("XDG_STATE_HOME"));
    const QString state =
        set.startsWith(u'/') ? set : QDir::homePath() + QLatin1String("/.local/state");
    return state + QLatin1String("/clipheave");
}

Result<void> createStateFolder() {
    const QString folder = stateFolder();
    const auto& manager = NSFileManager::defaultManager();
    if (manager.fileExistsAtPath(folder))
        return {};
    if (Result<void> made = manager.createDirectoryAtPath(folder); !made)
        return made;
    ::chmod(nativePath(folder).constData(), 0700); // names are nobody else's business
    return {};
}

} // namespace clipheave::platform
