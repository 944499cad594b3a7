// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"
#include "platform/foundation/result.h"

namespace clipheave::platform {

/// A file being written by libavformat; removed again unless finish() succeeded.
class FileOutput {
public:
    /// `container` is the muxer's name.
    [[nodiscard]] static Result<std::unique_ptr<FileOutput>> create(const char* container,
                                                                    const QString& target);
    ~FileOutput();
    FileOutput(const FileOutput&) = delete;
    FileOutput& operator=(const FileOutput&) = delete;

    [[nodiscard]] AVFormatContext* context() const { return m_context.get(); }
    /// `options` are those of the muxer.
    [[nodiscard]] Result<void> writeHeader(Dictionary& options);
    /// Writes what the container has at its end and closes the file.
    [[nodiscard]] Result<void> finish();
    [[nodiscard]] tl::unexpected<Error> failed(MessageCode operation, int code) const;

private:
    FileOutput() = default;

    QString m_target;
    QByteArray m_native;
    OutputFormat m_context;
    bool m_finished = false;
};

} // namespace clipheave::platform
