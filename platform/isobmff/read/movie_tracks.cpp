// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/read/movie_tracks.h"

#include "platform/isobmff/read/sample_description.h"

#include <algorithm>
#include <cmath>

// Source: ISO/IEC 14496-12 sections 8.3 to 8.7.
namespace clipheave::platform {

namespace {

/// Tables over this size are not read for the bit rate or the frame rate.
constexpr std::uint64_t kMaxTableBytes = 256u << 10;
constexpr std::uint64_t kMaxDescriptionBytes = 64u << 10;

void readTrackHeader(MovieTrack& movie, ByteView tkhd, std::uint32_t movieTimescale) {
    const bool wide = tkhd.u8(0) == 1;
    movie.track.enabled = (tkhd.u8(3).value_or(0) & 1u) != 0;
    movie.track.trackID = tkhd.be32(wide ? 20 : 12).value_or(0);
    const auto duration = wide ? tkhd.be64(28) : std::optional<std::uint64_t>(tkhd.be32(20));
    const std::uint64_t unknown = wide ? UINT64_MAX : UINT32_MAX;
    if (duration && *duration != unknown && movieTimescale > 0)
        movie.track.durationSeconds = static_cast<double>(*duration) / movieTimescale;
    const std::uint64_t matrix = wide ? 52 : 40;
    if (!tkhd.has(matrix, 44))
        return;
    for (std::uint64_t i = 0; i < 9; ++i) {
        const auto raw = static_cast<std::int32_t>(*tkhd.be32(matrix + i * 4));
        const double one = i % 3 == 2 ? 1 << 30 : 1 << 16;
        movie.track.preferredTransform[i] = raw / one;
    }
    movie.track.naturalSize = QSize(static_cast<int>(*tkhd.be32(matrix + 36) >> 16),
                                    static_cast<int>(*tkhd.be32(matrix + 40) >> 16));
}

void readMediaHeader(MovieTrack& movie, ByteView mdhd) {
    const bool wide = mdhd.u8(0) == 1;
    movie.timescale = mdhd.be32(wide ? 20 : 12).value_or(0);
    const std::uint64_t duration =
        wide ? mdhd.be64(24).value_or(0) : std::uint64_t{mdhd.be32(16).value_or(0)};
    if (duration != (wide ? UINT64_MAX : UINT32_MAX))
        movie.duration = duration;
}

struct SampleSizes {
    std::uint64_t samples = 0;
    std::uint64_t total = 0; ///< bytes, 0 when it was not worth reading
    bool constant = false;   ///< all samples have one size
};

SampleSizes readSampleSizes(HeaderReader& reader, const Box& stsz, bool withTotal) {
    constexpr std::uint64_t kSizesHead = 12;
    const ByteView head = reader.view(stsz.payloadOffset(), kSizesHead);
    if (stsz.payloadSize() < kSizesHead || head.empty())
        return {};
    const std::uint64_t constant = stsz.type == fourCc("stsz") ? *head.be32(4) : 0;
    SampleSizes sizes{*head.be32(8), 0, constant > 0};
    if (sizes.constant) {
        sizes.total = constant * sizes.samples;
        return sizes;
    }
    const std::uint64_t bytes = stsz.payloadSize() - kSizesHead;
    sizes.samples = std::min<std::uint64_t>(sizes.samples, bytes * 2); // stz2 may hold two a byte
    if (!withTotal || bytes >= kMaxTableBytes || stsz.type != fourCc("stsz"))
        return sizes;
    const ByteView table = reader.view(stsz.payloadOffset() + kSizesHead, bytes);
    const std::uint64_t count = std::min(sizes.samples, table.size() / 4);
    for (std::uint64_t i = 0; i < count; ++i)
        sizes.total += *table.be32(i * 4);
    return sizes;
}

/// Ticks that the samples of a short `stts` last; 0 for a long one.
std::uint64_t sampleTicks(HeaderReader& reader, const Box& stts) {
    constexpr std::uint64_t kTimesHead = 8;
    if (stts.payloadSize() > kMaxDescriptionBytes)
        return 0;
    const ByteView bytes = reader.view(stts.payloadOffset(), stts.payloadSize());
    const std::uint64_t count =
        std::min<std::uint64_t>(bytes.be32(4).value_or(0), bytes.size() / 8);
    std::uint64_t ticks = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        const auto samples = bytes.be32(kTimesHead + i * 8);
        const auto delta = bytes.be32(kTimesHead + i * 8 + 4);
        // A negative or huge step is damage; 2^63 cannot be reached by the rest.
        if (samples && delta && *delta < 1u << 31)
            ticks += std::uint64_t{*samples} * *delta;
    }
    return ticks;
}

class TrackReader {
public:
    TrackReader(HeaderReader& reader, const TrackRequest& request, Message& problem)
        : m_reader(reader), m_request(request), m_problem(problem) {}

    MovieTrack read(const Box& trak) {
        // Each level is looked through by its own loop: the boxes that matter lie at fixed depths.
        forEach(trak, [this](const Box& box) { atTrack(box); });
        if (m_media)
            forEach(*m_media, [this](const Box& box) { atMedia(box); });
        if (m_information)
            forEach(*m_information, [this](const Box& box) { atInformation(box); });
        if (m_tables)
            forEach(*m_tables, [this](const Box& box) { atTables(box); });
        finish();
        return m_movie;
    }

private:
    template <class Visit> void forEach(const Box& parent, Visit visit) {
        FileBoxWalker walker(m_reader, parent.payloadOffset(), parent.end());
        while (const auto box = walker.next())
            visit(*box);
        if (m_problem.isEmpty())
            m_problem = walker.problem();
    }
    ByteView payload(const Box& box) {
        return m_reader.viewUpTo(box.payloadOffset(),
                                 std::min(box.payloadSize(), kMaxDescriptionBytes));
    }

    void atTrack(const Box& box) {
        if (box.type == fourCc("tkhd"))
            readTrackHeader(m_movie, payload(box), m_request.movieTimescale);
        else if (box.type == fourCc("tref"))
            m_movie.chapterOf = findPayload(payload(box), {fourCc("chap")}).be32(0).value_or(0);
        else if (box.type == fourCc("mdia") && !m_media)
            m_media = box;
    }
    void atMedia(const Box& box) {
        if (box.type == fourCc("mdhd"))
            readMediaHeader(m_movie, payload(box));
        else if (box.type == fourCc("hdlr"))
            m_movie.track.mediaType = fourCcText(payload(box).be32(8).value_or(0));
        else if (box.type == fourCc("minf") && !m_information)
            m_information = box;
    }
    void atInformation(const Box& box) {
        // Without a handler the kind of media header decides.
        QString& mediaType = m_movie.track.mediaType;
        if (box.type == fourCc("vmhd") && mediaType.isEmpty())
            mediaType = QStringLiteral("vide");
        else if (box.type == fourCc("smhd") && mediaType.isEmpty())
            mediaType = QStringLiteral("soun");
        else if (box.type == fourCc("stbl") && !m_tables)
            m_tables = box;
    }
    void atTables(const Box& box) {
        const bool isVideo = m_movie.track.mediaType == QLatin1String("vide");
        const bool isAudio = m_movie.track.mediaType == QLatin1String("soun");
        if (box.type == fourCc("stsd"))
            readSampleDescription(m_movie.track, payload(box), m_request.quickTime);
        else if (box.type == fourCc("stsz") || box.type == fourCc("stz2"))
            m_sizes = readSampleSizes(m_reader, box, isAudio && m_request.withBitRate);
        else if (box.type == fourCc("stts") && isVideo)
            m_ticks = sampleTicks(m_reader, box);
    }

    void finish() {
        AVAssetTrack& track = m_movie.track;
        m_movie.samples = m_sizes.samples;
        const double ticks = m_movie.timescale;
        const double seconds = ticks > 0 ? static_cast<double>(m_movie.duration) / ticks : 0;
        if (seconds > 0)
            track.durationSeconds = seconds;
        if (track.mediaType == QLatin1String("soun") && track.sampleRate <= 0)
            track.sampleRate = ticks;
        if (track.mediaType == QLatin1String("vide")) {
            const double lasting = m_ticks > 0 ? static_cast<double>(m_ticks) / ticks : seconds;
            if (ticks > 0 && lasting > 0)
                track.nominalFrameRate = static_cast<double>(m_sizes.samples) / lasting;
        } else if (track.mediaType != QLatin1String("soun")) {
            track.naturalSize = {};
        }
        // For uncompressed audio the description knows better: its table may count frames as bytes.
        const bool described = m_sizes.constant && track.bitRate > 0;
        if (m_sizes.total > 0 && seconds > 0 && !described)
            track.bitRate = std::floor(static_cast<double>(m_sizes.total) * 8 / seconds);
    }

    HeaderReader& m_reader;
    const TrackRequest& m_request;
    Message& m_problem;
    MovieTrack m_movie;
    std::optional<Box> m_media, m_information, m_tables;
    SampleSizes m_sizes;
    std::uint64_t m_ticks = 0;
};

} // namespace

MovieTrack readTrack(HeaderReader& reader, const Box& trak, const TrackRequest& request,
                     Message& problem) {
    return TrackReader(reader, request, problem).read(trak);
}

} // namespace clipheave::platform
