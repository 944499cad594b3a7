// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/write_source_end.h"

#include "platform/foundation/messages.h"
#include "platform/isobmff/write/write_moov.h"
#include "platform/media/model/messages.h"

#include <QString>

#include <algorithm>
#include <cstdint>
#include <optional>

// Source: ISO/IEC 14496-12 sections 8.6.1.2 (stts), 8.7.3 (stsz), 8.7.4 (stsc), 8.7.5 (stco, co64).
namespace clipheave::platform {
namespace {

/// The sample tables of one track. A sample without a size of its own counts as empty.
class SampleTables {
public:
    explicit SampleTables(ByteView trak) {
        m_media = findPayload(trak, {fourCc("mdia"), fourCc("mdhd")});
        const ByteView stbl = findPayload(trak, {fourCc("mdia"), fourCc("minf"), fourCc("stbl")});
        m_times = findPayload(stbl, {fourCc("stts")});
        m_runs = findPayload(stbl, {fourCc("stsc")});
        m_sizes = findPayload(stbl, {fourCc("stsz")});
        m_chunks = findPayload(stbl, {fourCc("stco")});
        m_isWide = m_chunks.empty();
        if (m_isWide)
            m_chunks = findPayload(stbl, {fourCc("co64")});
        // In old QuickTime audio 1 stands for a frame, whatever it takes.
        m_constant = m_sizes.be32(4).value_or(0);
        m_samples = m_sizes.be32(8).value_or(0);
        if (m_constant == 0)
            m_samples = std::min(m_samples, (std::max<std::uint64_t>(m_sizes.size(), 12) - 12) / 4);
    }

    [[nodiscard]] bool lastChunkIsBeyond(std::uint64_t end) const {
        return chunkCount() > 0 && chunkOffset(chunkCount() - 1) >= end;
    }
    /// The number of the first sample, from 0, that does not end before `end`.
    [[nodiscard]] std::optional<std::uint64_t> firstBeyond(std::uint64_t end) const;
    [[nodiscard]] double secondsUpTo(std::uint64_t sample) const;
    [[nodiscard]] double seconds() const { return secondsUpTo(m_samples); }

private:
    [[nodiscard]] std::uint64_t chunkCount() const {
        const std::uint64_t width = m_isWide ? 8 : 4;
        return std::min<std::uint64_t>(m_chunks.be32(4).value_or(0),
                                       m_chunks.sub(8).size() / width);
    }
    [[nodiscard]] std::uint64_t chunkOffset(std::uint64_t chunk) const {
        return m_isWide ? m_chunks.be64(8 + chunk * 8).value_or(0)
                        : m_chunks.be32(8 + chunk * 4).value_or(0);
    }
    /// Of `count` samples from `first` on that stand at `offset`; `count` when none is.
    [[nodiscard]] std::uint64_t beyondInChunk(std::uint64_t first, std::uint64_t count,
                                              std::uint64_t offset, std::uint64_t end) const;

    ByteView m_media, m_times, m_runs, m_sizes, m_chunks;
    bool m_isWide = false;
    std::uint64_t m_constant = 0, m_samples = 0;
};

std::uint64_t SampleTables::beyondInChunk(std::uint64_t first, std::uint64_t count,
                                          std::uint64_t offset, std::uint64_t end) const {
    if (offset > end)
        return 0;
    if (m_constant > 0)
        return m_constant == 1 ? count : std::min(count, (end - offset) / m_constant);
    for (std::uint64_t i = 0; i < count; ++i) {
        offset += m_sizes.be32(12 + (first + i) * 4).value_or(0);
        if (offset > end)
            return i;
    }
    return count;
}

std::optional<std::uint64_t> SampleTables::firstBeyond(std::uint64_t end) const {
    constexpr std::uint64_t kRun = 12; // first chunk from 1, samples in each, description
    std::uint64_t sample = 0, run = 8;
    for (std::uint64_t chunk = 0; chunk < chunkCount() && sample < m_samples; ++chunk) {
        while (m_runs.be32(run + kRun) && *m_runs.be32(run + kRun) <= chunk + 1)
            run += kRun;
        const std::uint64_t count =
            std::min<std::uint64_t>(m_runs.be32(run + 4).value_or(0), m_samples - sample);
        const std::uint64_t beyond = beyondInChunk(sample, count, chunkOffset(chunk), end);
        sample += beyond;
        if (beyond < count)
            return sample;
    }
    return std::nullopt;
}

double SampleTables::secondsUpTo(std::uint64_t sample) const {
    const bool isLong = m_media.u8(0) == 1;
    const std::uint32_t timescale = m_media.be32(isLong ? 20 : 12).value_or(0);
    double ticks = 0;
    for (std::uint64_t at = 8; sample > 0 && m_times.has(at, 8); at += 8) {
        const std::uint64_t count = std::min<std::uint64_t>(*m_times.be32(at), sample);
        ticks += static_cast<double>(count) * *m_times.be32(at + 4);
        sample -= count;
    }
    return timescale > 0 ? ticks / timescale : 0;
}

struct MovieEnd {
    double read = 0, announced = 0; ///< seconds
    bool isMissed = false;
};

MovieEnd movieEnd(const SourceFile& source, bool isSuspect) {
    MovieEnd end;
    const std::uint64_t size = source.reader.size();
    BoxWalker walker(source.moov);
    while (const auto box = walker.next()) {
        const ByteView trak = walker.payload(*box);
        if (box->type != fourCc("trak") || sampleHome(trak) != SampleHome::ThisFile)
            continue;
        const SampleTables tables(trak);
        if (!isSuspect && !tables.lastChunkIsBeyond(size))
            continue;
        const auto missed = tables.firstBeyond(size);
        if (!missed)
            continue;
        const double read = tables.secondsUpTo(*missed);
        end.read = end.isMissed ? std::min(end.read, read) : read;
        end.announced = std::max(end.announced, tables.seconds());
        end.isMissed = true;
    }
    return end;
}

bool isFragment(std::uint32_t type) {
    return type == fourCc("mdat") || type == fourCc("moof");
}

} // namespace

Notes noteOnMissingSamples(const SourceFile& source) {
    const Box& last = source.boxes.back();
    const MovieEnd end = movieEnd(source, last.cut || last.toEnd);
    const QString read = QString::number(end.read, 'f', 1);
    const QString announced = QString::number(end.announced, 'f', 1);
    if (end.isMissed && read != announced)
        return {Message(kEndsBeforeDuration, {read, announced})};
    const bool hasFragments = !findPayload(source.moov, {fourCc("mvex")}).empty();
    if (end.isMissed || (last.cut && hasFragments && isFragment(last.type)))
        return {kEndsBeforeAnnouncedBytes};
    return {};
}

} // namespace clipheave::platform
