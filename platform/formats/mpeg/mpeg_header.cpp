// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/mpeg_header.h"

#include <array>

namespace clipheave::platform {
namespace {

// Junk in front of the first frame: padding that a tag does not count, a broken tag, a RIFF header.
constexpr std::uint64_t kLongestMpegSearch = 256u << 10;
constexpr std::uint64_t kMpegSearchStep = 32u << 10;
constexpr int kFramesForAverage = 200;
// Header, side information, "Xing" with all its fields, the part of LAME.
constexpr std::uint64_t kInfoFrameBytes = 4 + 32 + 8 + 8 + 100 + 4 + 36;
// Delay and padding of an encoder are 12 bits each.
constexpr std::uint32_t kLargestGap = 0xFFF;

constexpr std::array<std::array<int, 16>, 5> kKiloBitRates{{
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0}, // 1, layer I
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0},    // 1, layer II
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},     // 1, layer III
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, 0},    // 2, layer I
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},         // 2, layers II, III
}};
constexpr std::array<int, 3> kMpegSampleRates{44100, 48000, 32000};

constexpr std::uint32_t kFreeFormat = 0, kNoBitRate = 15;
// 640 kbit/s, the most that decoders take, is 5760 bytes at 16 kHz.
constexpr std::uint64_t kShortestFreeFrame = 24, kLongestFreeFrame = 8192;
// Version, layer, protection, bit rate, sampling rate and mono or not are those of all frames.
constexpr std::uint32_t kFormatBits = 0xFFFFFC00;

/// All but what follows from the bit rate; nothing for reserved values.
std::optional<MpegFrameHeader> parseMpegFormat(ByteView head) {
    const auto bits = head.be32(0);
    if (!bits || (*bits & 0xFFE00000) != 0xFFE00000)
        return std::nullopt;
    const std::uint32_t version = *bits >> 19 & 3; // 3: MPEG 1, 2: MPEG 2, 0: MPEG 2.5
    const std::uint32_t layer = *bits >> 17 & 3;   // 3: I, 2: II, 1: III
    const std::uint32_t sampling = *bits >> 10 & 3;
    if (version == 1 || layer == 0 || (*bits >> 12 & 15) == kNoBitRate || sampling == 3)
        return std::nullopt;
    MpegFrameHeader header;
    header.version = version == 3 ? 1 : version == 2 ? 2 : 25;
    header.layer = static_cast<int>(4 - layer);
    header.sampleRate = kMpegSampleRates[sampling] / (version == 3 ? 1 : version == 2 ? 2 : 4);
    const bool mono = (*bits >> 6 & 3) == 3;
    header.channels = mono ? 1 : 2;
    const bool half = header.version != 1 && header.layer == 3;
    header.samples = header.layer == 1 ? 384 : half ? 576 : 1152;
    header.sideInfo = header.version == 1 ? (mono ? 17u : 32u) : (mono ? 9u : 17u);
    return header;
}

bool isPadded(ByteView head) {
    return (head.be32(0).value_or(0) >> 9 & 1) != 0;
}

int rateRow(int version, int layer) {
    if (version == 1)
        return layer - 1;
    return layer == 1 ? 3 : 4;
}

struct MpegInfoFrame {
    std::uint32_t frames = 0;
    std::uint32_t bytes = 0;
    std::uint32_t gap = 0; ///< encoder delay and padding, in samples
    bool constantRate = false;
};

/// The "Xing"/"Info" header with the part that LAME appends, or Fraunhofer's "VBRI".
std::optional<MpegInfoFrame> parseInfoFrame(ByteView frame, const MpegFrameHeader& header) {
    MpegInfoFrame info;
    const ByteView xing = frame.sub(4 + std::uint64_t{header.sideInfo});
    if (xing.startsWith("Xing") || xing.startsWith("Info")) {
        info.constantRate = xing.startsWith("Info");
        const std::uint32_t flags = xing.be32(4).value_or(0);
        std::uint64_t at = 8;
        if (flags & 1) {
            info.frames = xing.be32(at).value_or(0);
            at += 4;
        }
        if (flags & 2) {
            info.bytes = xing.be32(at).value_or(0);
            at += 4;
        }
        at += (flags & 4 ? 100u : 0u) + (flags & 8 ? 4u : 0u);
        const ByteView lame = xing.sub(at);
        if (lame.startsWith("LAME") || lame.startsWith("Lavc") || lame.startsWith("Lavf")) {
            const std::uint32_t gaps = lame.be32(20).value_or(0); // at byte 21, 24 bits
            info.gap = (gaps >> 12 & kLargestGap) + (gaps & kLargestGap);
        }
        return info;
    }
    const ByteView vbri = frame.sub(4 + 32);
    if (!vbri.startsWith("VBRI"))
        return std::nullopt;
    info.bytes = vbri.be32(10).value_or(0);
    info.frames = vbri.be32(14).value_or(0);
    return info;
}

/// Returns the average over the frames in one read at the start of the audio: a file of variable
/// rate without an info frame is not taken at the rate of its first, often silent, frame.
double averageBitRate(const ByteRange& audio, std::uint64_t at) {
    double bits = 0;
    double seconds = 0;
    for (int i = 0; i < kFramesForAverage; ++i) {
        const auto header = parseMpegHeader(audio.view(at, 4));
        if (!header)
            break;
        const double length = static_cast<double>(header->samples) / header->sampleRate;
        bits += header->bitRate * length;
        seconds += length;
        at += header->frameBytes;
        const bool sameWindow = at % FileReader::kWindow >= header->frameBytes;
        if (i > 0 && !sameWindow)
            break;
    }
    return seconds > 0 ? bits / seconds : 0;
}

/// Returns whether frames of the free format, `bytes` long without padding, fill `audio` from `at`
/// on: two of them, and as many more as there are, up to four.
bool areFreeFrames(const ByteRange& audio, std::uint64_t bytes, std::uint64_t slot) {
    const std::uint32_t format = audio.view(0, 4).be32(0).value_or(0) & kFormatBits;
    std::uint64_t at = 0;
    for (int i = 0; i < 4 && (i < 2 || at < audio.size()); ++i) {
        const ByteView head = audio.view(at, 4);
        if ((head.be32(0).value_or(0) & kFormatBits) != format)
            return false;
        at += bytes + (isPadded(head) ? slot : 0);
    }
    return at <= audio.size();
}

/// The free format names no bit rate: every frame is as long as the first, and the header of the
/// second tells how long (ISO/IEC 11172-3, 2.4.2.3). Looked for at the start alone.
std::optional<MpegStream> readFreeFormat(const ByteRange& audio) {
    const ByteView head = audio.view(0, 4);
    auto header = parseMpegFormat(head);
    if (!header || (head.be32(0).value_or(0) >> 12 & 15) != kFreeFormat)
        return std::nullopt;
    const std::uint64_t slot = header->layer == 1 ? 4 : 1;
    const std::uint64_t padding = isPadded(head) ? slot : 0;
    for (std::uint64_t bytes = kShortestFreeFrame; bytes <= kLongestFreeFrame; ++bytes) {
        if (!areFreeFrames(audio, bytes, slot))
            continue;
        MpegStream stream;
        stream.bitRate = static_cast<double>(bytes) * 8 * header->sampleRate / header->samples;
        header->bitRate = static_cast<int>(stream.bitRate);
        header->frameBytes = static_cast<std::uint32_t>(bytes + padding);
        stream.header = *header;
        stream.estimated = true;
        setAudioSize(stream, audio.size());
        return stream;
    }
    return std::nullopt;
}

/// Headers of the same stream follow, or the file ends where this frame does. Junk is not believed
/// at the first accidental match: away from the start two more headers are asked for.
bool startsStream(const ByteRange& audio, std::uint64_t at, const MpegFrameHeader& first) {
    const int wanted = at == 0 ? 1 : 2;
    std::uint64_t next = at + first.frameBytes;
    for (int i = 0; i < wanted; ++i) {
        if (next >= audio.size())
            return at == 0 || i > 0 || next == audio.size();
        const auto header = parseMpegHeader(audio.view(next, 4));
        if (!header || header->version != first.version || header->layer != first.layer ||
            header->sampleRate != first.sampleRate)
            return false;
        next += header->frameBytes;
    }
    return true;
}

/// An info frame proves the place by itself; some encoders give it a wrong length.
bool hasInfoFrame(const ByteRange& audio, std::uint64_t at) {
    const ByteView frame = audio.view(at, kInfoFrameBytes);
    const auto header = parseMpegHeader(frame);
    const auto info = header ? parseInfoFrame(frame, *header) : std::nullopt;
    return info && info->frames > 0;
}

/// Offset of the first header in [from, from + length) that is not reserved in some field.
std::optional<std::uint64_t> nextMpegHeader(const ByteRange& audio, std::uint64_t from,
                                            std::uint64_t length) {
    const ByteView part = audio.view(from, length + 3);
    for (qsizetype at = 0; (at = part.bytes().indexOf('\xFF', at)) >= 0; ++at) {
        if (parseMpegHeader(part.sub(static_cast<std::uint64_t>(at))))
            return from + static_cast<std::uint64_t>(at);
    }
    return std::nullopt;
}

std::optional<std::uint64_t> findMpegFrame(const ByteRange& audio) {
    const std::uint64_t last = std::min(audio.size(), kLongestMpegSearch);
    std::uint64_t at = 0;
    while (at < last) {
        // The first frame of a clean file is found within a few bytes.
        const std::uint64_t step = at == 0 ? 1 : kMpegSearchStep;
        const auto found = nextMpegHeader(audio, at, step);
        if (found && (hasInfoFrame(audio, *found) ||
                      startsStream(audio, *found, *parseMpegHeader(audio.view(*found, 4)))))
            return found;
        at = found ? *found + 1 : at + step;
    }
    return std::nullopt;
}

void applyInfoFrame(MpegStream& stream, const MpegInfoFrame& info, const ByteRange& audio) {
    const MpegFrameHeader& header = stream.header;
    const double samples = static_cast<double>(info.frames) * header.samples;
    const double played = samples > info.gap ? samples - info.gap : samples;
    stream.durationSeconds = played / header.sampleRate;
    const std::uint64_t bytes = info.bytes ? info.bytes : audio.size() - stream.offset;
    stream.bitRate = static_cast<double>(bytes) * 8 * header.sampleRate / samples;
    // The info frame itself may have another rate; the frame behind it says what was asked for.
    const auto next = parseMpegHeader(audio.view(stream.offset + header.frameBytes, 4));
    if (info.constantRate && next)
        stream.bitRate = next->bitRate;
}

} // namespace

std::optional<MpegFrameHeader> parseMpegHeader(ByteView head) {
    auto header = parseMpegFormat(head);
    const std::uint32_t rate = head.be32(0).value_or(0) >> 12 & 15;
    if (!header || rate == kFreeFormat)
        return std::nullopt;
    const auto row = static_cast<std::size_t>(rateRow(header->version, header->layer));
    header->bitRate = kKiloBitRates[row][rate] * 1000;
    const int padding = isPadded(head) ? 1 : 0;
    const int slots = header->samples / 8 * header->bitRate / header->sampleRate;
    header->frameBytes = static_cast<std::uint32_t>(
        header->layer == 1 ? (12 * header->bitRate / header->sampleRate + padding) * 4
                           : slots + padding);
    return header;
}

std::optional<MpegStream> readMpegStream(const ByteRange& audio) {
    if (auto stream = readFreeFormat(audio))
        return stream;
    const auto at = findMpegFrame(audio);
    if (!at)
        return std::nullopt;
    MpegStream stream;
    stream.offset = *at;
    stream.header = *parseMpegHeader(audio.view(*at, 4));
    const ByteView frame = audio.view(*at, kInfoFrameBytes);
    if (const auto info = parseInfoFrame(frame, stream.header); info && info->frames > 0) {
        applyInfoFrame(stream, *info, audio);
        return stream;
    }
    stream.bitRate = averageBitRate(audio, *at);
    stream.estimated = true;
    setAudioSize(stream, audio.size());
    return stream;
}

void setAudioSize(MpegStream& stream, std::uint64_t size) {
    if (stream.estimated && stream.bitRate > 0 && size > stream.offset)
        stream.durationSeconds = static_cast<double>(size - stream.offset) * 8 / stream.bitRate;
}

} // namespace clipheave::platform
