// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/unchanged_files.h"

#include "platform/foundation/messages.h"

namespace clipheave::platform {

namespace {

bool isSameState(const struct statx& a, const struct statx& b) {
    return a.stx_size == b.stx_size && a.stx_mtime.tv_sec == b.stx_mtime.tv_sec &&
           a.stx_mtime.tv_nsec == b.stx_mtime.tv_nsec && a.stx_ino == b.stx_ino &&
           a.stx_dev_major == b.stx_dev_major && a.stx_dev_minor == b.stx_dev_minor;
}

} // namespace

UnchangedFiles::UnchangedFiles(const QStringList& paths) {
    for (const QString& path : paths)
        add(path, FileReference::ofPath(path));
}

UnchangedFiles::UnchangedFiles(const FileReader& reader) {
    add(reader.path(), FileReference::ofDescriptor(reader.fd()));
}

void UnchangedFiles::add(const QString& path, const FileReference& reference) {
    File file{path, reference, {}};
    if (reference.status(file.status) == 0)
        m_files.push_back(std::move(file));
}

Result<void> UnchangedFiles::check() const {
    for (const File& file : m_files) {
        struct statx now {};
        if (const int error = file.reference.status(now))
            return systemFailure(kReadFile, file.path, error);
        if (!isSameState(file.status, now))
            return failure(ErrorCode::InvalidData, kReadFile, file.path, kFileHasChanged);
    }
    return {};
}

} // namespace clipheave::platform
