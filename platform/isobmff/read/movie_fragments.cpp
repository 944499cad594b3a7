// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/read/movie_fragments.h"

#include "platform/isobmff/messages.h"

#include <algorithm>
#include <optional>

// Source: ISO/IEC 14496-12 sections 8.8 and 8.16.3.
namespace clipheave::platform {

namespace {

constexpr std::size_t kMaxFragmentTracks = 256;
constexpr std::uint64_t kMaxFragmentTable = 256u << 10;

const MovieTrack* trackWithId(const std::vector<MovieTrack>& tracks, std::uint32_t id) {
    const auto found = std::find_if(tracks.begin(), tracks.end(),
                                    [id](const MovieTrack& t) { return t.track.trackID == id; });
    return found == tracks.end() ? nullptr : &*found;
}

struct RunningTrack {
    std::uint32_t trackID = 0;
    std::uint64_t end = 0;   ///< ticks, by the last fragment's own start or by adding up
    std::uint64_t ticks = 0; ///< that the samples last
    std::uint64_t samples = 0;
    std::uint64_t bytes = 0;
    std::optional<std::uint64_t> start; ///< ticks, of the first fragment that says it
};

/// Adds without wrapping: hostile numbers end at the top.
std::uint64_t addClamped(std::uint64_t a, std::uint64_t b) {
    return a > UINT64_MAX - b ? UINT64_MAX : a + b;
}

class FragmentReader {
public:
    FragmentReader(HeaderReader& reader, const FragmentDefaults& defaults,
                   const std::vector<MovieTrack>& tracks)
        : m_reader(reader), m_defaults(defaults), m_tracks(tracks) {}

    [[nodiscard]] bool readRandomAccess();
    void readFragment(const Box& moof);
    void walk(std::uint64_t from);
    /// Returns where the earliest track begins, in seconds.
    [[nodiscard]] double start() const;
    /// Returns the sums; ends count from `start`. A file that was cut out of a stream begins late,
    /// and lasts no longer for it.
    [[nodiscard]] FragmentTotals totals(double start) const;
    Message problem;

private:
    struct Defaults {
        std::uint32_t duration = 0;
        std::uint32_t size = 0;
    };
    RunningTrack& running(std::uint32_t trackID);
    void readTrackFragment(const Box& traf);
    Defaults readHeader(ByteView tfhd, std::uint32_t trackID) const;
    void readRun(RunningTrack& track, ByteView trun, const Defaults& defaults);

    HeaderReader& m_reader;
    const FragmentDefaults& m_defaults;
    const std::vector<MovieTrack>& m_tracks;
    std::vector<RunningTrack> m_running;
    bool m_hasDecodeTimes = false;
};

RunningTrack& FragmentReader::running(std::uint32_t trackID) {
    const auto found = std::find_if(m_running.begin(), m_running.end(),
                                    [&](const RunningTrack& t) { return t.trackID == trackID; });
    if (found != m_running.end())
        return *found;
    if (m_running.size() >= kMaxFragmentTracks)
        return m_running.back();
    const MovieTrack* movie = trackWithId(m_tracks, trackID);
    // Samples in the movie header come first.
    const bool hasOwn = movie && movie->samples > 0;
    RunningTrack& track = m_running.emplace_back();
    track.trackID = trackID;
    if (hasOwn)
        track.start = 0;
    track.end = hasOwn ? movie->duration : 0;
    return track;
}

FragmentReader::Defaults FragmentReader::readHeader(ByteView tfhd, std::uint32_t trackID) const {
    Defaults result;
    for (const FragmentDefaults::Track& track : m_defaults.tracks) {
        if (track.trackID == trackID)
            result = {track.sampleDuration, track.sampleSize};
    }
    const std::uint32_t flags = tfhd.be32(0).value_or(0) & 0xFFFFFF;
    std::uint64_t at = 8;
    at += flags & 0x1u ? 8 : 0; // base data offset
    at += flags & 0x2u ? 4 : 0; // sample description index
    if (flags & 0x8u) {
        result.duration = tfhd.be32(at).value_or(0);
        at += 4;
    }
    if (flags & 0x10u)
        result.size = tfhd.be32(at).value_or(0);
    return result;
}

void FragmentReader::readRun(RunningTrack& track, ByteView trun, const Defaults& defaults) {
    const std::uint32_t flags = trun.be32(0).value_or(0) & 0xFFFFFF;
    const std::uint64_t count = trun.be32(4).value_or(0);
    std::uint64_t at = 8;
    at += flags & 0x1u ? 4 : 0; // data offset
    at += flags & 0x4u ? 4 : 0; // flags of the first sample
    const bool hasDuration = (flags & 0x100u) != 0, hasSize = (flags & 0x200u) != 0;
    const std::uint64_t width = 4u * (std::uint64_t{hasDuration} + std::uint64_t{hasSize} +
                                      ((flags & 0x400u) != 0) + ((flags & 0x800u) != 0));
    track.samples = addClamped(track.samples, count);
    std::uint64_t ticks = hasDuration ? 0 : count * defaults.duration;
    if (!hasSize)
        track.bytes = addClamped(track.bytes, count * defaults.size);
    const bool hasTable = hasDuration || hasSize;
    for (std::uint64_t i = 0; hasTable && i < count && trun.has(at, width); ++i, at += width) {
        if (hasDuration)
            ticks += *trun.be32(at);
        if (hasSize)
            track.bytes = addClamped(track.bytes, *trun.be32(at + (hasDuration ? 4 : 0)));
    }
    track.end = addClamped(track.end, ticks);
    track.ticks = addClamped(track.ticks, ticks);
}

void FragmentReader::readTrackFragment(const Box& traf) {
    FileBoxWalker walker(m_reader, traf.payloadOffset(), traf.end());
    RunningTrack* track = nullptr;
    Defaults defaults;
    while (const auto box = walker.next()) {
        const ByteView payload = m_reader.viewUpTo(box->payloadOffset(),
                                                   std::min(box->payloadSize(), kMaxFragmentTable));
        if (box->type == fourCc("tfhd")) {
            const std::uint32_t id = payload.be32(4).value_or(0);
            track = &running(id);
            defaults = readHeader(payload, id);
        } else if (box->type == fourCc("tfdt") && track) {
            const bool wide = payload.u8(0) == 1;
            m_hasDecodeTimes = true;
            track->end = wide ? payload.be64(4).value_or(0) : payload.be32(4).value_or(0);
            track->start = track->start.value_or(track->end);
        } else if (box->type == fourCc("trun") && track) {
            readRun(*track, payload, defaults);
        }
    }
}

void FragmentReader::readFragment(const Box& moof) {
    FileBoxWalker walker(m_reader, moof.payloadOffset(), moof.end());
    while (const auto box = walker.next()) {
        if (box->type == fourCc("traf"))
            readTrackFragment(*box);
    }
}

void FragmentReader::walk(std::uint64_t from) {
    FileBoxWalker walker(m_reader, from, m_reader.size());
    std::uint64_t count = 0;
    while (const auto box = walker.next()) {
        if (box->type != fourCc("moof"))
            continue;
        if (++count > kMaxFragments) {
            problem = kTooManyFragments;
            return;
        }
        readFragment(*box);
    }
    problem = walker.problem();
}

/// The last fragment by the index at the end of the file; false when there is none.
bool FragmentReader::readRandomAccess() {
    constexpr std::uint64_t kOffsetBox = 16; // mfro: header, version and flags, size of mfra
    if (m_reader.size() < kOffsetBox)
        return false;
    const ByteView tail = m_reader.view(m_reader.size() - kOffsetBox, kOffsetBox);
    const std::uint64_t size = tail.be32(12).value_or(0);
    if (tail.be32(4) != fourCc("mfro") || size < kOffsetBox || size > m_reader.size())
        return false;
    FileBoxWalker outer(m_reader, m_reader.size() - size, m_reader.size());
    const auto mfra = outer.next();
    if (!mfra || mfra->type != fourCc("mfra"))
        return false;
    std::uint64_t last = 0;
    FileBoxWalker walker(m_reader, mfra->payloadOffset(), mfra->end());
    while (const auto box = walker.next()) {
        if (box->type != fourCc("tfra"))
            continue;
        const ByteView head = m_reader.view(box->payloadOffset(), 16);
        const bool wide = head.u8(0) == 1;
        const std::uint32_t lengths = head.be32(8).value_or(0);
        const std::uint64_t count = head.be32(12).value_or(0);
        const std::uint64_t entry =
            (wide ? 16u : 8u) + (lengths >> 4 & 3) + (lengths >> 2 & 3) + (lengths & 3) + 3;
        if (count == 0 || box->payloadSize() < 16 + count * entry)
            continue;
        const ByteView bytes =
            m_reader.view(box->payloadOffset() + 16 + (count - 1) * entry, entry);
        last = std::max(last, wide ? bytes.be64(8).value_or(0) : bytes.be32(4).value_or(0));
    }
    if (last == 0)
        return false;
    // Behind the last indexed fragment others may follow that begin with no keyframe.
    walk(last);
    return m_hasDecodeTimes;
}

double FragmentReader::start() const {
    std::optional<double> earliest;
    for (const RunningTrack& track : m_running) {
        const MovieTrack* movie = trackWithId(m_tracks, track.trackID);
        if (!movie || movie->timescale == 0)
            continue;
        const double start = static_cast<double>(track.start.value_or(0)) / movie->timescale;
        earliest = std::min(earliest.value_or(start), start);
    }
    return earliest.value_or(0);
}

FragmentTotals FragmentReader::totals(double start) const {
    FragmentTotals totals;
    for (const RunningTrack& track : m_running) {
        const MovieTrack* movie = trackWithId(m_tracks, track.trackID);
        if (!movie || movie->timescale == 0)
            continue;
        const double end = static_cast<double>(track.end) / movie->timescale;
        const double seconds = end > start ? end - start : end;
        const double read = static_cast<double>(track.ticks) / movie->timescale;
        totals.tracks.push_back({track.trackID, seconds, read, track.samples, track.bytes});
        totals.seconds = std::max(totals.seconds, seconds);
    }
    return totals;
}

/// Seconds that one `sidx` lasts and where what it lists ends.
struct SegmentIndex {
    double seconds = 0;
    std::uint64_t end = 0;
};
SegmentIndex readSegmentIndex(HeaderReader& reader, const Box& box) {
    const ByteView bytes =
        reader.viewUpTo(box.payloadOffset(), std::min(box.payloadSize(), kMaxFragmentTable));
    const bool wide = bytes.u8(0) == 1;
    const std::uint32_t timescale = bytes.be32(8).value_or(0);
    const std::uint64_t first = wide ? bytes.be64(20).value_or(0) : bytes.be32(16).value_or(0);
    std::uint64_t at = wide ? 28 : 20;
    const std::uint64_t count = bytes.be16(at + 2).value_or(0);
    at += 4;
    std::uint64_t ticks = 0, length = 0;
    for (std::uint64_t i = 0; i < count && bytes.has(at, 12); ++i, at += 12) {
        length += *bytes.be32(at) & 0x7FFFFFFFu;
        ticks += *bytes.be32(at + 4);
    }
    if (timescale == 0)
        return {};
    return {static_cast<double>(ticks) / timescale,
            addClamped(addClamped(box.end(), first), length)};
}

} // namespace

FragmentDefaults readFragmentDefaults(HeaderReader& reader, const Box& mvex) {
    FragmentDefaults defaults;
    defaults.present = true;
    FileBoxWalker walker(reader, mvex.payloadOffset(), mvex.end());
    while (const auto box = walker.next()) {
        const ByteView bytes =
            reader.viewUpTo(box->payloadOffset(), std::min<std::uint64_t>(box->payloadSize(), 24));
        if (box->type == fourCc("mehd"))
            defaults.movieDuration =
                bytes.u8(0) == 1 ? bytes.be64(4).value_or(0) : bytes.be32(4).value_or(0);
        else if (box->type == fourCc("trex") && defaults.tracks.size() < kMaxFragmentTracks)
            defaults.tracks.push_back({bytes.be32(4).value_or(0), bytes.be32(12).value_or(0),
                                       bytes.be32(16).value_or(0)});
    }
    return defaults;
}

FragmentTotals readFragments(HeaderReader& reader, std::uint64_t moovEnd,
                             const FragmentDefaults& defaults,
                             const std::vector<MovieTrack>& tracks) {
    FileBoxWalker walker(reader, moovEnd, reader.size());
    double indexedSeconds = 0;
    std::uint64_t indexedEnd = 0;
    std::optional<Box> box = walker.next();
    for (; box && box->type != fourCc("moof"); box = walker.next()) {
        if (box->type != fourCc("sidx"))
            continue;
        const SegmentIndex index = readSegmentIndex(reader, *box);
        indexedSeconds = std::max(indexedSeconds, index.seconds);
        indexedEnd = std::max(indexedEnd, index.end);
    }
    if (!box)
        return {};
    // An index of the whole file, up to what may follow the fragments, saves walking them; the
    // first one gives the rates.
    constexpr std::uint64_t kTail = 64u << 10;
    const bool isIndexed =
        indexedSeconds > 0 && indexedEnd <= reader.size() && reader.size() - indexedEnd <= kTail;
    FragmentReader first(reader, defaults, tracks);
    first.readFragment(*box);
    if (isIndexed || defaults.movieDuration > 0) {
        FragmentTotals totals = first.totals(0);
        for (FragmentTotals::Track& track : totals.tracks)
            track.seconds = 0;
        totals.seconds = isIndexed ? indexedSeconds : 0;
        return totals;
    }
    FragmentReader last(reader, defaults, tracks);
    if (last.readRandomAccess())
        return last.totals(first.start());
    FragmentReader all(reader, defaults, tracks);
    all.walk(box->offset);
    FragmentTotals totals = all.totals(all.start());
    totals.problem = all.problem;
    return totals;
}

} // namespace clipheave::platform
