// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/file_input.h"

#include "platform/engine/messages.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <unistd.h>
#include <vector>

namespace clipheave::platform {

namespace {

constexpr std::int64_t kProbeBytes = 512 << 10;
constexpr std::int64_t kAnalyzeMicroseconds = 2'000'000;
/// Below this score the demuxer is a guess: text and noise resemble MPEG audio a little.
constexpr int kLeastProbeScore = 2;

// Containers of audio and video. Left out on purpose: playlists and everything else that leads to
// other files, images, subtitles, devices.
constexpr char kDemuxers[] =
    "aac,ac3,aiff,amr,amrnb,amrwb,ape,asf,asf_o,au,avi,caf,dirac,dsf,dts,dtshd,dv,eac3,flac,flv,"
    "gxf,"
    "h261,h263,h264,hevc,iff,ivf,latm,loas,m4v,matroska,mlp,mov,mp3,mpc,mpc8,mpeg,mpegts,mpegvideo,"
    "mxf,nsv,nut,nuv,obu,av1,ogg,oma,pva,rm,shn,sox,tak,truehd,tta,vc1,vivo,voc,w64,wav,wtv,wv";

int refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EPERM);
}

} // namespace

FileInput::FileInput(FileReader& reader, const InputLimits& limits)
    : m_reader(reader), m_limits(limits), m_start(std::chrono::steady_clock::now()) {
}

FileInput::~FileInput() {
    m_context.reset();
    if (m_io != nullptr)
        av_freep(&m_io->buffer);
    avio_context_free(&m_io);
}

bool FileInput::checkLimits() {
    m_exhausted = m_exhausted || m_fetched >= m_limits.bytes ||
                  std::chrono::steady_clock::now() - m_start >= m_limits.time;
    return m_exhausted;
}

int FileInput::interrupted(void* self) {
    return static_cast<FileInput*>(self)->checkLimits() ? 1 : 0;
}

int FileInput::readDirect(std::uint8_t* buffer, int size) {
    const auto wanted = static_cast<std::size_t>(std::max(size, 0));
    const ssize_t got = pread(m_reader.fd(), buffer, wanted, static_cast<off_t>(m_position));
    if (got <= 0)
        return got == 0 ? AVERROR_EOF : AVERROR(errno);
    m_position += static_cast<std::uint64_t>(got);
    m_fetched += static_cast<std::uint64_t>(got);
    return static_cast<int>(got);
}

int FileInput::readBytes(void* self, std::uint8_t* buffer, int size) {
    auto& input = *static_cast<FileInput*>(self);
    if (input.checkLimits())
        return AVERROR_EXIT;
    if (input.m_limits.direct)
        return input.readDirect(buffer, size);
    const ByteView bytes =
        input.m_reader.viewUpTo(input.m_position, static_cast<std::uint64_t>(std::max(size, 0)));
    if (bytes.empty())
        return AVERROR_EOF;
    std::memcpy(buffer, bytes.data(), bytes.size());
    input.m_position += bytes.size();
    input.m_fetched += bytes.size();
    return static_cast<int>(bytes.size());
}

std::int64_t FileInput::seek(void* self, std::int64_t offset, int whence) {
    auto& input = *static_cast<FileInput*>(self);
    const auto size = static_cast<std::int64_t>(input.m_reader.size());
    if ((whence & AVSEEK_SIZE) != 0)
        return size;
    const int from = whence & ~AVSEEK_FORCE;
    if (from != SEEK_SET && from != SEEK_CUR && from != SEEK_END)
        return AVERROR(EINVAL);
    std::int64_t base = 0;
    if (from == SEEK_CUR)
        base = static_cast<std::int64_t>(input.m_position);
    else if (from == SEEK_END)
        base = size;
    if (offset < -base || offset > std::numeric_limits<std::int64_t>::max() - base)
        return AVERROR(EINVAL);
    input.m_position = static_cast<std::uint64_t>(base + offset);
    return base + offset;
}

Result<std::unique_ptr<FileInput>> FileInput::open(FileReader& reader, const InputLimits& limits) {
    const auto failed = [&](int code) {
        const bool unknown = code == AVERROR_DEMUXER_NOT_FOUND || code == AVERROR(EINVAL);
        return failure(unknown ? ErrorCode::NotSupported : ErrorCode::InvalidData, kOpenContainer,
                       reader.path(), unknown ? Message(kUnknownContainer) : ffmpegReason(code));
    };
    std::unique_ptr<FileInput> input(new FileInput(reader, limits));
    const int readAhead = std::max(limits.readAhead, 1 << 10);
    auto* buffer = static_cast<std::uint8_t*>(av_malloc(static_cast<std::size_t>(readAhead)));
    input->m_io = avio_alloc_context(buffer, readAhead, 0, input.get(), &readBytes, nullptr, &seek);
    AVFormatContext* context = avformat_alloc_context();
    if (input->m_io == nullptr || context == nullptr) {
        avformat_free_context(context);
        return failed(AVERROR(ENOMEM));
    }
    context->pb = input->m_io;
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->probesize = kProbeBytes;
    context->max_analyze_duration = kAnalyzeMicroseconds;
    context->interrupt_callback = {&interrupted, input.get()};
    context->io_open = &refuseToOpen;
    context->format_whitelist = av_strdup(kDemuxers);
    context->protocol_whitelist = av_strdup("none");
    // On failure the context is freed. The name is kept away: the bytes alone decide.
    const int opened = avformat_open_input(&context, "", nullptr, nullptr);
    if (opened < 0)
        return failed(opened);
    input->m_context.reset(context);
    if (context->probe_score < kLeastProbeScore)
        return failed(AVERROR_DEMUXER_NOT_FOUND);
    return input;
}

bool FileInput::findStreamInfo(StreamsOfUse use) {
    // One thread each: the decoders see a few frames only, and imports run several files at once.
    std::vector<AVDictionary*> options(m_context->nb_streams, nullptr);
    for (std::size_t i = 0; i < options.size(); ++i) {
        av_dict_set(&options[i], "threads", "1", 0);
        if (use == StreamsOfUse::Audio &&
            m_context->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
            av_dict_set(&options[i], "skip_frame", "all", 0);
    }
    const int found =
        avformat_find_stream_info(m_context.get(), options.empty() ? nullptr : options.data());
    for (AVDictionary*& option : options)
        av_dict_free(&option);
    return found >= 0;
}

} // namespace clipheave::platform
