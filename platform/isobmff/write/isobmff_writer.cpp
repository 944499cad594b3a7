// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/write/isobmff_writer.h"

#include "platform/foundation/atomic_file.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/messages.h"
#include "platform/foundation/unchanged_files.h"
#include "platform/isobmff/messages.h"
#include "platform/isobmff/write/render_items.h"
#include "platform/isobmff/write/write_layout.h"
#include "platform/isobmff/write/write_metadata.h"
#include "platform/isobmff/write/write_moov.h"
#include "platform/isobmff/write/write_patch.h"
#include "platform/isobmff/write/write_removal.h"
#include "platform/isobmff/write/write_source_end.h"
#include "platform/isobmff/write/write_source_metadata.h"

#include <QtEndian>

#include <algorithm>

namespace clipheave::platform {
namespace {

/// Reports the progress of a copy and stops it on request.
struct CopyProgress {
    const std::function<bool(double)>& report;
    std::uint64_t total = 0;

    [[nodiscard]] bool goOn(std::uint64_t done) const {
        return !report ||
               report(total == 0
                          ? 1.0
                          : std::min(1.0, static_cast<double>(done) / static_cast<double>(total)));
    }
};

struct PlannedTarget {
    QByteArray ftyp, moov;
    QByteArray appendix; ///< whole boxes behind everything else
    TargetLayout layout;
};

/// The header's size decides where the payload goes, and where it goes decides the header's size:
/// whether the tracks are rewritten, and with offsets of which width. Each happens once.
/// `everyOffset`: is looked up even where nothing moves, which fails for samples outside the runs.
Result<PlannedTarget> planTarget(const std::vector<SourceRun>& runs, MovieHeaderBuilder& builder,
                                 const QByteArray& ftyp, bool moovFirst, bool everyOffset) {
    PlannedTarget target{ftyp, {}, {}, {}};
    auto moov = builder.build({});
    if (everyOffset)
        builder.rewriteTracks();
    constexpr int kMaxRounds = 6;
    for (int round = 0; moov && round < kMaxRounds; ++round) {
        const auto size = static_cast<std::uint64_t>(moov->size());
        moov = {};
        target.layout = planLayout(runs, static_cast<std::uint64_t>(ftyp.size()), size, moovFirst);
        moov = builder.build(target.layout.map);
        if (!moov && moov.error().code == ErrorCode::LimitExceeded && !builder.isWide()) {
            builder.widen();
            moov = builder.build(target.layout.map);
        }
        if (moov && static_cast<std::uint64_t>(moov->size()) == size) {
            target.moov = std::move(*moov);
            return target;
        }
        builder.rewriteTracks();
    }
    if (!moov)
        return tl::unexpected(moov.error());
    return failure(ErrorCode::InvalidData, kLayOutFile);
}

/// Brings the runs of the source into the target.
class RunWriter {
public:
    RunWriter(SourceFile& source, AtomicFile& target, const OffsetMap& map,
              const CopyProgress& progress)
        : m_source(source), m_target(target), m_map(map), m_progress(progress) {}

    [[nodiscard]] Result<void> write(const SourceRun& run);

private:
    [[nodiscard]] Result<void> copy(std::uint64_t begin, std::uint64_t end);
    /// The box with moved offsets; empty when it stays as it is.
    [[nodiscard]] Result<QByteArray> patched(const Box& box);

    SourceFile& m_source;
    AtomicFile& m_target;
    const OffsetMap& m_map;
    const CopyProgress& m_progress;
};

Result<void> RunWriter::write(const SourceRun& run) {
    std::uint64_t begin = run.begin;
    const auto first =
        std::lower_bound(m_source.boxes.begin(), m_source.boxes.end(), run.begin,
                         [](const Box& box, std::uint64_t at) { return box.offset < at; });
    for (auto box = first;
         !m_map.isIdentity() && box != m_source.boxes.end() && box->offset < run.end; ++box) {
        if (!holdsOffsets(box->type) || box->cut)
            continue;
        const auto bytes = patched(*box);
        if (!bytes)
            return tl::unexpected(bytes.error());
        if (bytes->isEmpty())
            continue;
        auto done = copy(begin, box->offset);
        if (done)
            done = m_target.write(*bytes);
        if (!done)
            return done;
        begin = box->end();
    }
    return copy(begin, run.end);
}

Result<QByteArray> RunWriter::patched(const Box& box) {
    if (box.size > kMaxPatchedBox)
        return failure(ErrorCode::LimitExceeded, kMoveFileOffsets, m_source.reader.path(),
                       Message(kBoxTooLarge, {fourCcText(box.type)}));
    auto bytes = m_source.reader.read(box.offset, box.size);
    if (!bytes)
        return bytes;
    const auto changed = box.type == fourCc("sidx") ? patchSegmentIndex(*bytes, box.end(), m_map)
                                                    : patchBox(*bytes, m_map);
    if (!changed)
        return tl::unexpected(changed.error());
    return *changed ? bytes : Result<QByteArray>(QByteArray());
}

Result<void> RunWriter::copy(std::uint64_t begin, std::uint64_t end) {
    if (begin == end)
        return {};
    // Whole blocks can be shared by the file system: go to the next block border first.
    std::uint64_t start = begin;
    if (begin % kCloneBlock == m_target.position() % kCloneBlock && begin % kCloneBlock != 0) {
        start = std::min(end, begin - begin % kCloneBlock + kCloneBlock);
        const auto head = m_source.reader.read(begin, start - begin);
        if (!head)
            return tl::unexpected(head.error());
        auto written = m_target.write(*head);
        if (!written)
            return written;
    }
    const std::uint64_t before = m_target.position();
    if (!m_progress.goOn(before))
        return failure(ErrorCode::Cancelled, kCopyFile);
    return m_target.copyFrom(m_source.reader.fd(), start, end - start,
                             [&](std::uint64_t done) { return m_progress.goOn(before + done); });
}

QByteArray paddingBox(std::uint64_t size) {
    QByteArray box = renderBox(fourCc("free"), {});
    box.resize(static_cast<qsizetype>(size), '\0');
    qToBigEndian(static_cast<quint32>(size), box.data());
    return box;
}

Result<void> writeTarget(const PassthroughRequest& request, SourceFile& source,
                         const std::vector<SourceRun>& runs, const PlannedTarget& plan,
                         const UnchangedFiles& unchanged, bool strips) {
    auto target = AtomicFile::create(request.target, plan.layout.size);
    if (!target)
        return tl::unexpected(target.error());
    const CopyProgress progress{request.progress, plan.layout.size};
    RunWriter writer(source, *target, plan.layout.map, progress);
    for (const TargetPart& part : plan.layout.parts) {
        Result<void> done;
        switch (part.kind) {
        case TargetPart::Kind::Ftyp:
            done = target->write(plan.ftyp);
            break;
        case TargetPart::Kind::Moov:
            done = target->write(plan.moov);
            break;
        case TargetPart::Kind::Padding:
            done = target->write(paddingBox(part.size));
            break;
        case TargetPart::Kind::Run:
            done = writer.write(runs.at(part.run));
            break;
        }
        if (!done)
            return done;
    }
    if (auto done = target->write(plan.appendix); !done)
        return done;
    const auto appended = static_cast<std::uint64_t>(plan.appendix.size());
    if (target->position() != plan.layout.size + appended)
        return failure(ErrorCode::Io, kWriteMovieFile, request.target);
    if (!progress.goOn(plan.layout.size))
        return failure(ErrorCode::Cancelled, kCopyFile, request.target);
    const auto attributes =
        FileReader::open(request.attributesOf.isEmpty() ? request.source : request.attributesOf);
    const FileReader& original = attributes ? *attributes : source.reader;
    target->copyExtendedAttributes(original.fd(), strips ? AtomicFile::Attributes::OfSystem
                                                         : AtomicFile::Attributes::All);
    target->takePermissionsOf(FileReference::ofDescriptor(original.fd()));
    if (auto same = unchanged.check(); !same)
        return same;
    return target->commit();
}

QByteArray xmpPacketOf(const QString& path) {
    if (path.isEmpty())
        return {};
    auto original = openSourceFile(path);
    return original ? readXmpPacket(*original) : QByteArray();
}

/// The runs of the source that the target gets, and where.
struct Placement {
    std::vector<SourceRun> runs;
    PlannedTarget target;
};

Result<Placement> placeAll(const PassthroughRequest& request, SourceFile& source,
                           const std::optional<MovieMetadata>& metadata, Keep keep) {
    MovieHeaderBuilder builder(source.moov, metadata);
    if (auto checked = builder.check(); !checked)
        return tl::unexpected(checked.error());
    Placement placement{keptRuns(source, keep), {}};
    auto target =
        planTarget(placement.runs, builder, renderFileType(request.container, source.ftyp),
                   request.moovFirst, keep == Keep::WhatPlays);
    if (!target)
        return tl::unexpected(target.error());
    placement.target = std::move(*target);
    return placement;
}

/// A removal keeps no box that playing does not need, unless samples stand in one.
Result<Placement> placeFor(const PassthroughRequest& request, SourceFile& source,
                           const std::optional<MovieMetadata>& metadata, bool strips) {
    if (!strips)
        return placeAll(request, source, metadata, Keep::All);
    if (auto placement = placeAll(request, source, metadata, Keep::WhatPlays))
        return placement;
    return placeAll(request, source, metadata, Keep::AllButDescriptions);
}

Result<PassthroughOutcome> rewrite(const PassthroughRequest& request) {
    auto source = openSourceFile(request.source);
    if (!source)
        return tl::unexpected(source.error());
    const UnchangedFiles unchanged(source->reader);
    PassthroughOutcome outcome;
    std::optional<MovieMetadata> metadata;
    bool strips = false;
    if (request.metadata) {
        auto rendered = renderMetadataList(request, readSourceUserData(source->moov));
        if (!rendered)
            return tl::unexpected(rendered.error());
        outcome.notes = rendered->notes;
        strips = rendered->stripped;
        metadata = std::move(rendered->boxes);
    }
    if (strips)
        source->moov = withoutForeignMetadata(source->moov);
    QStringList timed = timedMetadataFormats(source->moov);
    if (std::any_of(source->boxes.begin(), source->boxes.end(),
                    [](const Box& box) { return box.type == fourCc("emsg"); }))
        timed << QStringLiteral("emsg"); // events of a stream: indexes count their bytes
    if (request.removesMetadata && !timed.isEmpty())
        outcome.notes << Message(kTimedMetadataKept, {timed.join(QLatin1String(", "))});
    auto placement = placeFor(request, *source, metadata, strips);
    if (!placement)
        return tl::unexpected(placement.error());
    placement->target.appendix = xmpPacketOf(request.xmpPacketOf);
    const auto done =
        writeTarget(request, *source, placement->runs, placement->target, unchanged, strips);
    if (!done)
        return tl::unexpected(done.error());
    outcome.notes << noteOnMissingSamples(*source);
    return outcome;
}

} // namespace

Result<PassthroughOutcome> writePassthrough(const PassthroughRequest& request) {
    if (NSFileManager::defaultManager().isSameFile(request.source, request.target))
        return failure(ErrorCode::InvalidArgument, kWriteMovieFile, request.target,
                       kOutputIsSource);
    auto outcome = rewrite(request);
    if (!outcome && outcome.error().path.isEmpty())
        outcome.error().path = request.source;
    return outcome;
}

} // namespace clipheave::platform
