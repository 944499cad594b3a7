// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/read/isobmff_reader.h"

#include "platform/foundation/memory_file.h"
#include "platform/foundation/utc.h"
#include "platform/isobmff/compressed_header.h"
#include "platform/isobmff/messages.h"
#include "platform/isobmff/read/item_lists.h"
#include "platform/isobmff/read/movie_fragments.h"
#include "platform/isobmff/read/user_data.h"

#include <algorithm>
#include <cmath>

// Source: ISO/IEC 14496-12 sections 4, 6.2 and 8.2.
namespace clipheave::platform {

namespace {

/// Top-level boxes that are read in search of the movie header.
constexpr std::uint64_t kMaxBoxesBeforeMovie = 1024;
constexpr std::size_t kMaxTracks = 256;

struct TopLevel {
    std::optional<Box> fileType, movie;
    Message problem;
};

TopLevel findTopLevel(HeaderReader& reader) {
    TopLevel top;
    FileBoxWalker walker(reader, kMaxBoxesBeforeMovie);
    while (const auto box = walker.next()) {
        if (box->type == fourCc("ftyp") && !top.fileType)
            top.fileType = box;
        if (box->type == fourCc("moov")) {
            // Nothing behind the movie header is of use unless there are fragments.
            top.movie = box;
            break;
        }
    }
    top.problem = walker.problem();
    return top;
}

QDateTime creationDate(std::uint64_t seconds) {
    // Seconds since 1904; clocks that count from 1970 give less than the years between.
    constexpr std::uint64_t kFrom1904To1970 = 2'082'844'800;
    constexpr std::uint64_t kYear2100 = 4'102'444'800;
    if (seconds == 0 || seconds == kFrom1904To1970)
        return {};
    const std::uint64_t unixSeconds =
        seconds > kFrom1904To1970 ? seconds - kFrom1904To1970 : seconds;
    if (unixSeconds > kYear2100)
        return {};
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(unixSeconds), kUtc);
}

class MovieReader {
public:
    MovieReader(FileReader& file, MediaFacts& facts,
                HeaderReader::Home home = HeaderReader::Home::File)
        : m_reader(file, home), m_facts(facts), m_sink{m_reader, false, {}, {}, {}, {}} {}

    [[nodiscard]] bool read();
    /// Reads a file that is one movie header, of a movie with this brand.
    void readHeaderAlone(bool quickTime);

private:
    void readFileType(const std::optional<Box>& box);
    void readMovie(const Box& moov);
    void atMovie(const Box& box);
    void readMovieHeader(const Box& mvhd);
    void readMovieTrack(const Box& trak);
    void addFragments(std::uint64_t moovEnd);
    void applyFragmentRates(const FragmentTotals& totals);
    void markChapterTracks();
    void summarize();

    void readCompressed(const Box& cmov);

    HeaderReader m_reader;
    MediaFacts& m_facts;
    ItemSink m_sink;
    std::uint32_t m_timescale = 0;
    FragmentDefaults m_fragments;
    std::vector<MovieTrack> m_tracks;
    bool m_hasAudio = false;
    bool m_isInflated = false; ///< this header was compressed: there is no other in it
    bool m_isComplete = false; ///< a compressed header has given the facts
};

bool MovieReader::read() {
    const TopLevel top = findTopLevel(m_reader);
    if (!top.fileType && !top.movie)
        return false;
    readFileType(top.fileType);
    if (top.movie)
        readMovie(*top.movie);
    m_sink.noteProblem(top.problem);
    if (!top.movie)
        m_sink.noteProblem(kNoMovieHeader);
    m_facts.problem = m_sink.problem;
    return true;
}

void MovieReader::readHeaderAlone(bool quickTime) {
    m_sink.quickTime = quickTime;
    m_isInflated = true;
    FileBoxWalker walker(m_reader, 1);
    if (const auto moov = walker.next())
        readMovie(*moov);
    m_facts.problem = m_sink.problem;
}

void MovieReader::readFileType(const std::optional<Box>& box) {
    const auto brand = box ? m_reader.viewUpTo(box->payloadOffset(), 4).be32(0) : std::nullopt;
    if (brand && box->payloadSize() >= 4)
        m_facts.majorBrand = fourCcText(*brand);
    m_sink.quickTime = !box || brand == fourCc("qt  ");
    m_facts.container = m_sink.quickTime ? Container::QuickTime : Container::Mp4;
}

void MovieReader::readMovie(const Box& moov) {
    FileBoxWalker walker(m_reader, moov.payloadOffset(), moov.end());
    while (const auto box = walker.next())
        atMovie(*box);
    m_sink.noteProblem(walker.problem());
    if (m_fragments.present)
        addFragments(moov.end());
    if (m_isComplete)
        return;
    markChapterTracks();
    summarize();
}

/// A compressed header stands for the whole one, and holds no other.
void MovieReader::readCompressed(const Box& cmov) {
    if (m_isInflated || m_isComplete || cmov.payloadSize() > kMaxInflatedHeader)
        return m_sink.noteProblem(kMovieHeaderCompressed);
    const QByteArray payload = m_reader.copy(cmov.payloadOffset(), cmov.payloadSize());
    const auto header = inflatedMovieHeader(payload);
    if (!header)
        return m_sink.noteProblem(header.error().detail);
    auto memory = openMemoryFile(*header);
    if (!memory)
        return m_sink.noteProblem(memory.error().detail);
    MovieReader inner(*memory, m_facts, HeaderReader::Home::Memory);
    inner.readHeaderAlone(m_sink.quickTime);
    m_isComplete = true;
    m_sink.noteProblem(m_facts.problem);
}

void MovieReader::atMovie(const Box& box) {
    switch (box.type) {
    case fourCc("mvhd"):
        return readMovieHeader(box);
    case fourCc("trak"):
        return readMovieTrack(box);
    case fourCc("mvex"):
        m_fragments = readFragmentDefaults(m_reader, box);
        return;
    case fourCc("udta"):
        return readUserData(m_sink, box);
    case fourCc("meta"):
        return readMetaItems(m_sink, box);
    case fourCc("cmov"):
        return readCompressed(box);
    default:
        return;
    }
}

void MovieReader::readMovieHeader(const Box& mvhd) {
    const ByteView bytes =
        m_reader.viewUpTo(mvhd.payloadOffset(), std::min<std::uint64_t>(mvhd.payloadSize(), 108));
    const bool wide = bytes.u8(0) == 1;
    const std::uint64_t created = wide ? bytes.be64(4).value_or(0) : bytes.be32(4).value_or(0);
    m_facts.contentCreationDate = creationDate(created);
    m_timescale = bytes.be32(wide ? 20 : 12).value_or(0);
    const std::uint64_t duration =
        wide ? bytes.be64(24).value_or(0) : std::uint64_t{bytes.be32(16).value_or(0)};
    const bool unknown = duration == (wide ? UINT64_MAX : UINT32_MAX);
    if (m_timescale > 0 && !unknown)
        m_facts.durationSeconds = static_cast<double>(duration) / m_timescale;
}

void MovieReader::readMovieTrack(const Box& trak) {
    if (m_tracks.size() >= kMaxTracks)
        return m_sink.noteProblem(kTooManyTracks);
    const TrackRequest request{m_timescale, m_sink.quickTime, !m_hasAudio};
    m_tracks.push_back(readTrack(m_reader, trak, request, m_sink.problem));
    m_hasAudio = m_hasAudio || m_tracks.back().track.mediaType == QLatin1String("soun");
}

void MovieReader::addFragments(std::uint64_t moovEnd) {
    const double announced =
        m_timescale > 0 ? static_cast<double>(m_fragments.movieDuration) / m_timescale : 0;
    const FragmentTotals totals = readFragments(m_reader, moovEnd, m_fragments, m_tracks);
    m_facts.durationSeconds = std::max({m_facts.durationSeconds, announced, totals.seconds});
    m_sink.noteProblem(totals.problem);
    applyFragmentRates(totals);
}

void MovieReader::applyFragmentRates(const FragmentTotals& totals) {
    for (MovieTrack& movie : m_tracks) {
        AVAssetTrack& track = movie.track;
        const auto found = std::find_if(
            totals.tracks.begin(), totals.tracks.end(),
            [&](const FragmentTotals::Track& t) { return t.trackID == track.trackID; });
        if (found == totals.tracks.end())
            continue;
        track.durationSeconds = std::max(track.durationSeconds, found->seconds);
        if (found->secondsRead <= 0)
            continue;
        if (track.mediaType == QLatin1String("vide") && track.nominalFrameRate <= 0)
            track.nominalFrameRate = static_cast<double>(found->samples) / found->secondsRead;
        if (track.bitRate <= 0)
            track.bitRate = std::floor(static_cast<double>(found->bytes) * 8 / found->secondsRead);
    }
}

void MovieReader::markChapterTracks() {
    for (const MovieTrack& movie : m_tracks) {
        for (MovieTrack& other : m_tracks) {
            if (movie.chapterOf == 0 || other.track.trackID != movie.chapterOf)
                continue;
            other.track.isChapterTrack = m_facts.hasChapters = true;
            // A chapter track of images is not a video.
            other.track.isAttachedPicture = other.track.mediaType == QLatin1String("vide");
        }
    }
}

void MovieReader::summarize() {
    double longest = 0;
    bool hasAudio = false;
    for (const MovieTrack& movie : m_tracks) {
        const AVAssetTrack& track = movie.track;
        longest = std::max(longest, track.durationSeconds);
        if (track.mediaType == QLatin1String("soun") && !hasAudio) {
            hasAudio = true;
            m_facts.audioBitRate = track.bitRate;
            m_facts.audioSampleRate = track.sampleRate;
            m_facts.audioChannels = track.channels;
        }
        if (track.mediaType == QLatin1String("vide") && !track.isAttachedPicture &&
            m_facts.pixelSize.isEmpty())
            m_facts.pixelSize = track.naturalSize;
        m_facts.tracks.push_back(track);
    }
    if (m_facts.durationSeconds <= 0)
        m_facts.durationSeconds = longest;
    m_facts.metadata = std::move(m_sink.itunes);
    m_facts.metadata += std::move(m_sink.userData);
    m_facts.metadata += std::move(m_sink.keyed);
}

} // namespace

Result<MediaFacts> readIsobmff(FileReader& reader) {
    MediaFacts facts;
    MovieReader movie(reader, facts);
    if (!movie.read())
        return failure(ErrorCode::InvalidData, kReadMovieHeader, reader.path(), kNotAMovieFile);
    return facts;
}

} // namespace clipheave::platform
