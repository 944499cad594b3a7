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
    [[nodiscard]] Result<void> writeHeader(Dictionary& options);
    [[nodiscard]] Result<void> finish();
    [[nodiscard]] tl::unexpected<Error> failed(const char* operation, int code) const;

private:
    FileOutput() = default;

    QString m_target;
    QByteArray m_native;
    OutputFormat m_context;
    bool m_finished = false;
};

} // namespace clipheave::platform
