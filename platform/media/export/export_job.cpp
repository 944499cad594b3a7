// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/export/export_job.h"

#include "platform/foundation/atomic_file.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/unchanged_files.h"
#include "platform/isobmff/messages.h"
#include "platform/media/export/export_queue.h"
#include "platform/media/export/quicktime_codecs.h"
#include "platform/media/messages.h"

#include <QFileInfo>

#include <algorithm>
#include <thread>

namespace clipheave::platform {

namespace {

ExportContainer exportContainer(OutputContainer container) {
    switch (container) {
    case OutputContainer::QuickTimeMovie:
        return ExportContainer::QuickTimeMovie;
    case OutputContainer::M4A:
        return ExportContainer::M4A;
    case OutputContainer::M4V:
    case OutputContainer::Mp4:
        break;
    }
    return ExportContainer::Mp4;
}

bool isIsoMedia(Container container) {
    return container == Container::QuickTime || container == Container::Mp4;
}

/// Returns an equal share of the cores for each export that runs.
ExportResources fairShare() {
    const auto cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    return {std::max(1, cores / ExportQueue::shared().concurrency())};
}

/// Drops the item that says how many samples players skip: it is true of the source's packets
/// alone. For transcoded audio the edit list says it.
QList<AVMetadataItem> withoutGaplessItem(QList<AVMetadataItem> items) {
    items.removeIf([](const AVMetadataItem& item) {
        return item.effectiveIdentifier().endsWith(QLatin1String("iTunSMPB"));
    });
    return items;
}

Result<PassthroughOutcome> withNotes(Result<PassthroughOutcome> outcome, const Notes& notes) {
    if (outcome)
        outcome->notes = notes + outcome->notes;
    return outcome;
}

QStringList sourcesOf(const ExportPlan& plan) {
    QStringList paths;
    const auto add = [&paths](const auto& track) {
        if (track)
            for (const ExportSegment& segment : track->segments)
                paths.append(segment.path);
    };
    add(plan.video);
    add(plan.audio);
    paths.removeDuplicates();
    return paths;
}

constexpr qint64 kSmallFile = 4 << 20;
/// Share of the encoding in an export; writing the metadata is the rest.
constexpr double kEncodingShare = 0.98;

} // namespace

bool AVAssetExportSession::State::startWaiting() {
    const std::lock_guard lock(mutex);
    if (status != AVAssetExportSessionStatus::Unknown)
        return false;
    status =
        cancelled ? AVAssetExportSessionStatus::Cancelled : AVAssetExportSessionStatus::Waiting;
    return true;
}

bool AVAssetExportSession::State::startExporting() {
    const std::lock_guard lock(mutex);
    if (status != AVAssetExportSessionStatus::Waiting)
        return false;
    status = AVAssetExportSessionStatus::Exporting;
    return true;
}

void AVAssetExportSession::State::finish(const Result<PassthroughOutcome>& outcome) {
    const std::lock_guard lock(mutex);
    if (outcome) {
        status = AVAssetExportSessionStatus::Completed;
        notes = outcome->notes;
        progress = 1;
        return;
    }
    error = outcome.error();
    status = error.code == ErrorCode::Cancelled ? AVAssetExportSessionStatus::Cancelled
                                                : AVAssetExportSessionStatus::Failed;
}

void AVAssetExportSession::State::cancel() {
    cancelled = true;
    const std::lock_guard lock(mutex);
    if (status == AVAssetExportSessionStatus::Waiting)
        status = AVAssetExportSessionStatus::Cancelled;
}

Result<void> AVAssetExportSession::State::validated() const {
    const auto refused = [&](ErrorCode code, const Message& why) {
        return failure(code, {}, sourcePath, why);
    };
    if (order && !isExportPreset(order->presetName))
        return refused(ErrorCode::InvalidArgument, Message(kUnknownPreset, {order->presetName}));
    if (order && outputFileType.isEmpty())
        return refused(ErrorCode::InvalidArgument,
                       Message(kNoTypeForName, {lastPathComponent(outputPath)}));
    if (order && !outputContainerOf(outputFileType))
        return refused(ErrorCode::InvalidArgument, Message(kUnknownOutputType, {outputFileType}));
    if (outputPath.isEmpty())
        return refused(ErrorCode::InvalidArgument, kNoOutputPath);
    if (NSFileManager::defaultManager().isSameFile(sourcePath, outputPath))
        return refused(ErrorCode::InvalidArgument, kOutputIsSource);
    return {};
}

bool AVAssetExportSession::State::report(double done) {
    progress = done;
    return !cancelled && !place->isGone();
}

Result<PassthroughOutcome> AVAssetExportSession::State::run() {
    place.emplace(outputPath);
    // A writer handles links itself; where a taken name must fail, a link counts as one.
    if (!writer && ifExists == NSFileManager::IfExists::Replace)
        place->removeLink();
    auto outcome = runJob();
    if (!outcome && !cancelled)
        if (const auto blamed = place->blame(); !blamed)
            return tl::unexpected(blamed.error());
    return outcome;
}

Result<PassthroughOutcome> AVAssetExportSession::State::runJob() {
    const auto reports = [this](double done) { return report(done); };
    if (writer) {
        const auto written = writer(reports);
        return written ? Result<PassthroughOutcome>(PassthroughOutcome{*written})
                       : tl::unexpected(written.error());
    }
    if (!order) {
        const auto copied =
            NSFileManager::defaultManager().copyItem(sourcePath, outputPath, ifExists, reports);
        return copied ? Result<PassthroughOutcome>({}) : tl::unexpected(copied.error());
    }
    PassthroughRequest request;
    request.source = sourcePath;
    request.target = outputPath;
    request.container = outputContainerOf(outputFileType).value_or(request.container);
    request.metadata = metadata;
    request.fields = fields;
    request.removesMetadata = removes;
    request.moovFirst = order->moovFirst;
    request.progress = reports;
    return runOrder(std::move(request));
}

bool AVAssetExportSession::State::copiesWholeFile() const {
    return order->asset && !order->timeRange &&
           order->presetName == QStringView(AVAssetExportPresetPassthrough);
}

bool AVAssetExportSession::State::isSmallRewrite() const {
    if (order && !(copiesWholeFile() && isIsoMedia(order->asset->file()->facts().container)))
        return false;
    return QFileInfo(sourcePath).size() <= kSmallFile;
}

Result<PassthroughOutcome> AVAssetExportSession::State::runOrder(PassthroughRequest request) {
    if (!copiesWholeFile())
        return runPlan(std::move(request));
    if (isIsoMedia(order->asset->file()->facts().container))
        return withNotes(writePassthrough(request), notesOnCodecs(request.container));
    const PassthroughRequest asked = request;
    // Packets take about as much space in one container as in another, unless much is left out.
    const std::uint64_t bytes = order->asset->file()->attributes().NSFileSize;
    const EngineWork work{
        0.5, request.container == OutputContainer::M4A ? 0 : bytes / 2, {sourcePath}};
    return runThroughEngine(std::move(request), *order->asset, work,
                            [&](MediaEngine& engine, const QString& target) {
                                return copyIntoMp4(engine, asked, target);
                            });
}

/// Deliberate: such a video is converted all the same and a note warns the user: cameras, too,
/// write PCM into MP4 files, and many players take it. A save has no note: the streams stay as they
/// were.
Notes AVAssetExportSession::State::notesOnCodecs(OutputContainer container) const {
    if (!leavesOut || container == OutputContainer::QuickTimeMovie ||
        order->asset->file()->facts().container != Container::QuickTime)
        return {};
    const QStringList codecs = codecsOfQuickTimeAlone(order->asset->tracks());
    if (codecs.isEmpty())
        return {};
    return {Message(kCodecsNotForMp4, {codecs.join(QStringLiteral(", "))})};
}

/// Encodes, cuts or joins: the engine makes the streams, then the metadata is written.
Result<PassthroughOutcome> AVAssetExportSession::State::runPlan(PassthroughRequest request) {
    order->container = exportContainer(request.container);
    const auto planned = planExport(*order);
    if (!planned)
        return tl::unexpected(planned.error());
    const auto original = order->asset ? Result<AVURLAsset>(*order->asset)
                                       : AVURLAsset::assetWithPath(planned->plan.headerDatesOf);
    if (!original)
        return tl::unexpected(original.error());
    request.source = original->path();
    if (!request.metadata)
        request.metadata = withoutGaplessItem(original->metadata());
    if (isIsoMedia(original->file()->facts().container))
        request.xmpPacketOf = original->path();
    ExportPlan plan = planned->plan;
    plan.moovFirst = false; // where the header goes is settled when the metadata is written
    const auto run = [&](MediaEngine& engine, const QString& target) {
        return engine.runExport(plan, target, fairShare(),
                                [this](double done) { return report(kEncodingShare * done); });
    };
    return withNotes(
        runThroughEngine(std::move(request), *original, {kEncodingShare, 0, sourcesOf(plan)}, run),
        planned->notes);
}

Result<PassthroughOutcome> AVAssetExportSession::State::runThroughEngine(PassthroughRequest request,
                                                                         const AVURLAsset& original,
                                                                         EngineWork work,
                                                                         const Maker& maker) {
    const auto engine = mediaEngine();
    if (!engine)
        return tl::unexpected(engine.error());
    if (const auto usable = place->check(work.leastBytes); !usable)
        return tl::unexpected(usable.error());
    // Only for its name, which is unique, hidden, and removed after a crash.
    const auto temporary = AtomicFile::create(request.target);
    if (!temporary)
        return tl::unexpected(temporary.error());
    place->watch(temporary->temporaryPath());
    // The user does not know the temporary file.
    const auto failed = [&, target = request.target](Error error) {
        if (error.path == temporary->temporaryPath())
            error.path = target;
        return tl::unexpected(std::move(error));
    };
    const UnchangedFiles sources(work.sources);
    const auto made = maker(**engine, temporary->temporaryPath());
    if (!made)
        return failed(made.error());
    if (const auto unchanged = sources.check(); !unchanged)
        return tl::unexpected(unchanged.error());
    // What the engine added (encoder names) is not metadata of the source.
    if (!request.metadata)
        request.metadata = original.metadata();
    request.attributesOf = original.path();
    request.source = temporary->temporaryPath();
    request.progress = [this, share = work.share](double done) {
        return report(share + done * (1 - share));
    };
    auto outcome = writePassthrough(request);
    if (!outcome)
        return failed(outcome.error());
    outcome->notes = *made + outcome->notes;
    return outcome;
}

/// Remuxes into the family of MP4. M4A takes another way: it holds audio alone, in three codecs.
Result<Notes> AVAssetExportSession::State::copyIntoMp4(MediaEngine& engine,
                                                       const PassthroughRequest& request,
                                                       const QString& target) {
    const auto reports = [this](double done) { return report(done / 2); };
    if (request.container == OutputContainer::M4A)
        return engine.audioToM4a(request.source, target, reports);
    const RemuxTarget kind = request.container == OutputContainer::QuickTimeMovie
                                 ? RemuxTarget::QuickTimeMovie
                                 : RemuxTarget::Mp4;
    return engine.remux(request.source, target, kind,
                        leavesOut ? UnheldStreams::LeaveOut : UnheldStreams::Refuse, reports);
}

} // namespace clipheave::platform
