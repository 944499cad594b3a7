// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"
#include "platform/foundation/file_reader.h"

#include <chrono>

namespace clipheave::platform {

/// What one opening of a file may cost. A file that needs more is given up with what was read.
struct InputLimits {
    std::uint64_t bytes = 16u << 20;
    std::chrono::milliseconds time{3000};
    /// Bytes that libavformat reads ahead: few for one stream among others whose places are known.
    int readAhead = 32 << 10;
    bool direct = false; ///< past the reader's window, for whole files
    static InputLimits none() {
        return {UINT64_MAX, std::chrono::hours(24 * 365), 32 << 10, false};
    }
};

enum class StreamsOfUse { All, Audio };

/// A file opened by libavformat over a FileReader: only the demuxers of media containers, and no
/// other file or address that the contents may name. Borrows the reader.
class FileInput {
public:
    [[nodiscard]] static Result<std::unique_ptr<FileInput>> open(FileReader& reader,
                                                                 const InputLimits& limits);
    ~FileInput();
    FileInput(const FileInput&) = delete;
    FileInput& operator=(const FileInput&) = delete;

    [[nodiscard]] AVFormatContext* context() const { return m_context.get(); }
    /// Reads packets until the codec parameters are known, of all streams or of the audio alone:
    /// the decoding of a video's first frames is most of the work. False when that failed.
    [[nodiscard]] bool findStreamInfo(StreamsOfUse use = StreamsOfUse::All);
    [[nodiscard]] bool exhausted() const { return m_exhausted; }

private:
    FileInput(FileReader& reader, const InputLimits& limits);
    [[nodiscard]] int readDirect(std::uint8_t* buffer, int size);
    static int readBytes(void* self, std::uint8_t* buffer, int size);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);
    static int interrupted(void* self);
    [[nodiscard]] bool checkLimits();

    FileReader& m_reader;
    InputLimits m_limits;
    std::chrono::steady_clock::time_point m_start;
    std::uint64_t m_position = 0, m_fetched = 0;
    bool m_exhausted = false;
    AVIOContext* m_io = nullptr;
    InputFormat m_context;
};

} // namespace clipheave::platform
