// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_manager.h"
#include "platform/media/model/media_facts.h"

#include <memory>

namespace clipheave::platform {

/// One file opened once: its attributes, and the facts that its headers gave when they were read
/// once. The platform objects (AVURLAsset, MDItem, AudioFile) of one import share it.
class MediaFile {
public:
    /// Fails only when the file cannot be opened (NotFound, AccessDenied, NotSupported, Io). A file
    /// that no reader understands opens with Container::Unknown and a `problem`.
    [[nodiscard]] static Result<std::shared_ptr<const MediaFile>> open(const QString& path);

    [[nodiscard]] const QString& path() const { return m_path; }
    [[nodiscard]] const FileAttributes& attributes() const { return m_attributes; }
    [[nodiscard]] const MediaFacts& facts() const { return m_facts; }

private:
    QString m_path;
    FileAttributes m_attributes;
    MediaFacts m_facts;
};

/// Returns the container that the first bytes show; the file's name does not count. Source: the
/// signatures of each format.
[[nodiscard]] Container sniffContainer(ByteView head);

} // namespace clipheave::platform
