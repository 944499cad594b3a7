// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/export_time.h"
#include "platform/engine/io/file_input.h"

namespace clipheave::platform {

/// One stream of a file, read as packets. Times are those of the file's presentation: edit lists
/// applied, 0 its start.
class ExportSource {
public:
    /// `index`: position among the streams of `type` that are no attached pictures. NotSupported
    /// when there is none.
    [[nodiscard]] static Result<std::unique_ptr<ExportSource>> open(const QString& path,
                                                                    AVMediaType type, int index);

    [[nodiscard]] const QString& path() const { return m_reader.path(); }
    [[nodiscard]] AVFormatContext& context() const { return *m_input->context(); }
    [[nodiscard]] AVStream& stream() const { return *m_stream; }
    [[nodiscard]] const AVCodecParameters& codec() const { return *m_stream->codecpar; }
    [[nodiscard]] std::optional<Ticks> time(std::int64_t timestamp) const;
    /// Fragments cut out of a longer stream: the times begin far from zero, and what the headers
    /// give as the length counts from zero or is that of the whole stream.
    [[nodiscard]] bool isPieceOfStream() const;
    /// End of the stream as the headers tell it; none where they do not.
    [[nodiscard]] std::optional<Ticks> announcedEnd() const;
    /// The next packet of the stream, AVERROR_EOF at the end. Unreadable pieces are jumped over.
    [[nodiscard]] int read(AVPacket& packet);
    /// Goes to a place from where `time` can be decoded. False when the reading position is the
    /// same as before.
    [[nodiscard]] bool seekBefore(Ticks time);
    [[nodiscard]] bool rewind();
    /// InvalidData when the file is shorter than its index says, so far as an index is there.
    [[nodiscard]] Result<void> checkComplete() const;
    /// Whether the file, some stream of it, goes on about as far as `time`. At the end of the
    /// reading: the place is another one afterwards.
    [[nodiscard]] bool fileReaches(Ticks time);
    [[nodiscard]] int unreadable() const { return m_unreadable; }

    [[nodiscard]] tl::unexpected<Error> failed(ErrorCode code, const QString& detail) const;

private:
    explicit ExportSource(FileReader reader) : m_reader(std::move(reader)) {}
    [[nodiscard]] bool chooseStream(AVMediaType type, int index);

    FileReader m_reader;
    std::unique_ptr<FileInput> m_input;
    AVStream* m_stream = nullptr;
    Ticks m_origin = 0; ///< of the presentation in libavformat's times
    int m_unreadable = 0;
};

/// Decodes one stream of a source.
class ExportDecoder {
public:
    /// NotSupported without a decoder. `threads` as libavcodec counts them.
    [[nodiscard]] static Result<std::unique_ptr<ExportDecoder>> open(ExportSource& source,
                                                                     int threads);
    /// The next frame; AVERROR_EOF at the end. Damaged packets are left out and counted.
    [[nodiscard]] int next(AVFrame& frame);
    /// After the source has been moved.
    void restart();
    [[nodiscard]] int damaged() const { return m_damaged; }
    /// What the decoder said last of a damaged packet.
    [[nodiscard]] QString complaint() const {
        return m_complaint < 0 ? ffmpegText(m_complaint) : QStringLiteral("no data");
    }

private:
    explicit ExportDecoder(ExportSource& source) : m_source(source) {}
    void countDamage(int code);

    ExportSource& m_source;
    Codec m_codec;
    Packet m_packet{av_packet_alloc()};
    bool m_drained = false;
    int m_damaged = 0;
    int m_complaint = 0;
};

/// What is worth telling of a source that had to be read past damage; empty when there was none.
[[nodiscard]] QString damageNote(const ExportSource& source, int damaged);

} // namespace clipheave::platform
