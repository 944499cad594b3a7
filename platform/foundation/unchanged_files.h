// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"
#include "platform/foundation/file_system.h"

#include <QStringList>

#include <vector>

namespace clipheave::platform {

/// Remembers files that must stay as they are while something is made of them: what was read of one
/// that was written to meanwhile may be of two states.
class UnchangedFiles {
public:
    /// By name: also another file under the name is a change. One that cannot be read is left to
    /// whoever reads it.
    explicit UnchangedFiles(const QStringList& paths);
    /// The open file, whatever becomes of its name. The reader must live as long.
    explicit UnchangedFiles(const FileReader& reader);
    /// Fails with InvalidData when the size, the modification date or the identity of one of them
    /// is another now.
    [[nodiscard]] Result<void> check() const;

private:
    struct File {
        QString path;
        FileReference reference;
        struct statx status;
    };
    void add(const QString& path, const FileReference& reference);

    std::vector<File> m_files;
};

} // namespace clipheave::platform
