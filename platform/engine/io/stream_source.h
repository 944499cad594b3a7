// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/file_input.h"
#include "platform/engine/io/ticks.h"

namespace clipheave::platform {

/// One stream of a file, read as packets. Times are those of the file's presentation: edit lists
/// applied, 0 its start.
class StreamSource {
public:
    /// `index`: position among the streams of `type` that are not attached pictures. NotSupported
    /// when there is none.
    [[nodiscard]] static Result<std::unique_ptr<StreamSource>> open(const QString& path,
                                                                    AVMediaType type, int index);

    [[nodiscard]] const QString& path() const { return m_reader.path(); }
    [[nodiscard]] AVFormatContext& context() const { return *m_input->context(); }
    [[nodiscard]] AVStream& stream() const { return *m_stream; }
    [[nodiscard]] const AVCodecParameters& codec() const { return *m_stream->codecpar; }
    /// Returns the presentation time of a timestamp of the stream; none without one.
    [[nodiscard]] std::optional<Ticks> time(std::int64_t timestamp) const;
    /// Returns whether the file was cut out of a longer stream: its times start far from zero, and
    /// the duration in its headers counts from zero or is that of the whole stream.
    [[nodiscard]] bool isCutOut() const;
    /// Returns the end of the stream as the headers give it; none where they do not.
    [[nodiscard]] std::optional<Ticks> announcedEnd() const;
    /// Reads the next packet of the stream; AVERROR_EOF at the end. Skips what cannot be read.
    [[nodiscard]] int read(AVPacket& packet);
    /// Seeks to where the decoding of `time` can start. False when the position did not change.
    [[nodiscard]] bool seekBefore(Ticks time);
    /// Seeks to the start of the file. False when it cannot.
    [[nodiscard]] bool rewind();
    /// InvalidData when the file is shorter than its index says, so far as an index is there.
    [[nodiscard]] Result<void> checkComplete() const;
    /// Returns whether any stream of the file lasts about until `time`. Only when all has been
    /// read: the position is another one afterwards.
    [[nodiscard]] bool fileReaches(Ticks time);
    /// Returns how many reads failed and were skipped.
    [[nodiscard]] int unreadable() const { return m_unreadable; }

    [[nodiscard]] tl::unexpected<Error> failed(ErrorCode code, const Message& detail) const;

private:
    explicit StreamSource(FileReader reader) : m_reader(std::move(reader)) {}
    [[nodiscard]] bool chooseStream(AVMediaType type, int index);

    FileReader m_reader;
    std::unique_ptr<FileInput> m_input;
    AVStream* m_stream = nullptr;
    Ticks m_origin = 0; ///< of the presentation in libavformat's times
    int m_unreadable = 0;
};

/// Returns the note on a source that had to be read past damage: `damaged` packets that could not
/// be decoded and the stretches of the file that could not be read. Empty when there was none.
[[nodiscard]] Message damageNote(const StreamSource& source, int damaged);

} // namespace clipheave::platform
