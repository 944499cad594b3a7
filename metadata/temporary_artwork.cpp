// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/temporary_artwork.h"

#include "metadata/messages.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"

#include <QDir>
#include <QTemporaryFile>

#include <cstdio>

namespace clipheave::metadata {

void writeTemporaryArtwork(const QByteArray& bytes) {
    // The temporary folder may be everybody's: a file of our own, readable by us alone, moved over
    // the name. A link that another user has planted there is replaced, not followed.
    const QString target = QDir::tempPath() + QStringLiteral("/art.jpg");
    QTemporaryFile file(QDir::tempPath() + QStringLiteral("/art-XXXXXX.tmp"));
    const bool written = file.open() && file.write(bytes) == bytes.size() && file.flush();
    if (written && std::rename(platform::nativePath(file.fileName()).constData(),
                               platform::nativePath(target).constData()) == 0) {
        file.setAutoRemove(false);
        return;
    }
    platform::log(platform::LogLevel::Info, platform::Message(kArtworkCopyNotWritten).text(),
                  target);
}

} // namespace clipheave::metadata
