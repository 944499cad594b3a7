// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/av_asset_export_session.h"

#include "platform/foundation/paths.h"
#include "platform/media/export_queue.h"
#include "platform/media/isobmff/isobmff_writer.h"
#include "platform/media/model/media_engine.h"
#include "platform/media/output_place.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

namespace clipheave::platform {
namespace {

const QString kExportOperation = QStringLiteral("export");

std::optional<OutputContainer> outputContainer(const QString& type) {
    if (type == QStringView(AVFileTypeQuickTimeMovie))
        return OutputContainer::QuickTimeMovie;
    if (type == QStringView(AVFileTypeAppleM4V))
        return OutputContainer::M4V;
    if (type == QStringView(AVFileTypeAppleM4A))
        return OutputContainer::M4A;
    if (type == QStringView(AVFileTypeMPEG4))
        return OutputContainer::Mp4;
    return std::nullopt;
}

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

/// Each of the exports that run gets as many cores as the others.
ExportResources fairShare() {
    const auto cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    return {std::max(1, cores / ExportQueue::shared().concurrency())};
}

/// The text that tells players how many samples to skip is true of the source's packets alone; the
/// edit list of what was written anew says it there.
QList<AVMetadataItem> withoutGaplessItem(QList<AVMetadataItem> items) {
    items.removeIf([](const AVMetadataItem& item) {
        return item.effectiveIdentifier().endsWith(QLatin1String("iTunSMPB"));
    });
    return items;
}

/// Of an export through a file in between: the encoding, then the metadata.
constexpr double kEncodingShare = 0.98;

} // namespace

struct AVAssetExportSession::State {
    // Set before the start, by one thread; read by the job alone from then on.
    QString sourcePath;
    std::optional<ExportOrder> order; ///< none: the file is copied as it is, or `writer` writes it
    Writer writer;
    NSFileManager::IfExists ifExists = NSFileManager::IfExists::Replace; ///< of such a copy
    QString outputPath, outputFileType;
    std::optional<QList<AVMetadataItem>> metadata;
    bool removes = false, leavesOut = false;

    std::optional<OutputPlace> place; ///< the job's alone
    std::atomic<double> progress = 0;
    std::atomic<bool> cancelled = false;

    std::mutex mutex; ///< guards what follows
    AVAssetExportSessionStatus status = AVAssetExportSessionStatus::Unknown;
    Error error;
    QStringList notes;

    [[nodiscard]] bool startWaiting();
    [[nodiscard]] bool startExporting();
    void finish(const Result<PassthroughOutcome>& outcome);
    void cancel();

    [[nodiscard]] Result<void> validated() const;
    [[nodiscard]] Result<PassthroughOutcome> run();
    [[nodiscard]] Result<PassthroughOutcome> runJob();
    /// Makes a file of this family at `target`; answers what is worth telling.
    using Maker = std::function<Result<QStringList>(MediaEngine& engine, const QString& target)>;
    struct EngineWork {
        double share = 0;             ///< of the whole progress
        std::uint64_t leastBytes = 0; ///< of its file, as far as that is known
    };
    /// `maker` writes beside the target first; that file goes when the target is written.
    [[nodiscard]] Result<PassthroughOutcome> runThroughEngine(PassthroughRequest request,
                                                              const AVURLAsset& original,
                                                              EngineWork work, const Maker& maker);
    [[nodiscard]] Result<PassthroughOutcome> runOrder(PassthroughRequest request);
    [[nodiscard]] Result<PassthroughOutcome> runPlan(PassthroughRequest request);
    [[nodiscard]] Result<QStringList>
    copyIntoMp4(MediaEngine& engine, const PassthroughRequest& request, const QString& target);
    [[nodiscard]] bool report(double done);
};

namespace {

/// Sessions that wait or run, for cancelAllExports().
class LiveSessions {
public:
    static LiveSessions& shared() {
        static LiveSessions sessions;
        return sessions;
    }
    void add(const std::shared_ptr<AVAssetExportSession::State>& state) {
        const std::lock_guard lock(m_mutex);
        m_states.push_back(state);
    }
    void remove(const std::shared_ptr<AVAssetExportSession::State>& state) {
        const std::lock_guard lock(m_mutex);
        std::erase(m_states, state);
    }
    [[nodiscard]] std::vector<std::shared_ptr<AVAssetExportSession::State>> all() {
        const std::lock_guard lock(m_mutex);
        return m_states;
    }

private:
    std::mutex m_mutex;
    std::vector<std::shared_ptr<AVAssetExportSession::State>> m_states;
};

/// The list of sessions outlives the queue, whose jobs use it to their end.
ExportQueue& exportQueue() {
    LiveSessions::shared();
    return ExportQueue::shared();
}

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
    const auto refused = [&](ErrorCode code, const QString& why) {
        return failure(code, kExportOperation, sourcePath, why);
    };
    if (order && !isExportPreset(order->presetName))
        return refused(ErrorCode::InvalidArgument,
                       QStringLiteral("unknown preset \"%1\"").arg(order->presetName));
    if (order && outputFileType.isEmpty())
        return refused(ErrorCode::InvalidArgument,
                       QStringLiteral("no file type for an output named \"%1\"")
                           .arg(lastPathComponent(outputPath)));
    if (order && !outputContainer(outputFileType))
        return refused(ErrorCode::InvalidArgument,
                       QStringLiteral("unknown output type \"%1\"").arg(outputFileType));
    if (outputPath.isEmpty())
        return refused(ErrorCode::InvalidArgument, QStringLiteral("no output path"));
    if (NSFileManager::defaultManager().isSameFile(sourcePath, outputPath))
        return refused(ErrorCode::InvalidArgument,
                       QStringLiteral("the output is the source itself"));
    return {};
}

bool AVAssetExportSession::State::report(double done) {
    progress = done;
    return !cancelled && !place->isGone();
}

Result<PassthroughOutcome> AVAssetExportSession::State::run() {
    place.emplace(outputPath);
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
    request.container = outputContainer(outputFileType).value_or(request.container);
    request.metadata = metadata;
    request.removesMetadata = removes;
    request.moovFirst = order->moovFirst;
    request.progress = reports;
    return runOrder(std::move(request));
}

Result<PassthroughOutcome> AVAssetExportSession::State::runOrder(PassthroughRequest request) {
    const bool wholeFile = order->asset && !order->timeRange &&
                           order->presetName == QStringView(AVAssetExportPresetPassthrough);
    if (!wholeFile)
        return runPlan(std::move(request));
    if (isIsoMedia(order->asset->file()->facts().container))
        return writePassthrough(request);
    const PassthroughRequest asked = request;
    // Packets take about as much room in one container as in another, unless much is left out.
    const std::uint64_t bytes = order->asset->file()->attributes().NSFileSize;
    const EngineWork work{0.5, request.container == OutputContainer::M4A ? 0 : bytes / 2};
    return runThroughEngine(std::move(request), *order->asset, work,
                            [&](MediaEngine& engine, const QString& target) {
                                return copyIntoMp4(engine, asked, target);
                            });
}

/// What is encoded, cut or put together: the engine makes the streams, the metadata follows.
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
    auto outcome = runThroughEngine(
        std::move(request), *original, {kEncodingShare},
        [&](MediaEngine& engine, const QString& target) {
            return engine.runExport(plan, target, fairShare(),
                                    [this](double done) { return report(kEncodingShare * done); });
        });
    if (outcome)
        outcome->notes = planned->notes + outcome->notes;
    return outcome;
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
    // Only for its name, which is unique, hidden, and cleared away after a crash.
    const auto temporary = AtomicFile::create(request.target);
    if (!temporary)
        return tl::unexpected(temporary.error());
    place->watch(temporary->temporaryPath());
    // Nobody but us knows the file in between.
    const auto failed = [&, target = request.target](Error error) {
        if (error.path == temporary->temporaryPath())
            error.path = target;
        return tl::unexpected(std::move(error));
    };
    const auto made = maker(**engine, temporary->temporaryPath());
    if (!made)
        return failed(made.error());
    // What the engine wrote by itself (encoder names) is no metadata of the source.
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

/// M4A holds sound alone, and of three codecs.
Result<QStringList> AVAssetExportSession::State::copyIntoMp4(MediaEngine& engine,
                                                             const PassthroughRequest& request,
                                                             const QString& target) {
    const auto reports = [this](double done) { return report(done / 2); };
    if (request.container == OutputContainer::M4A)
        return engine.soundToM4a(request.source, target, reports);
    const RemuxTarget kind = request.container == OutputContainer::QuickTimeMovie
                                 ? RemuxTarget::QuickTimeMovie
                                 : RemuxTarget::Mp4;
    return engine.remux(request.source, target, kind,
                        leavesOut ? UnheldStreams::LeaveOut : UnheldStreams::Refuse, reports);
}

AVAssetExportSession::AVAssetExportSession(AVURLAsset asset, QString presetName)
    : m_state(std::make_shared<State>()) {
    m_state->sourcePath = asset.path();
    m_state->order.emplace().asset = std::move(asset);
    m_state->order->presetName = std::move(presetName);
}

AVAssetExportSession::AVAssetExportSession(AVMutableComposition composition, QString presetName)
    : m_state(std::make_shared<State>()) {
    for (const auto& track : composition.tracks())
        for (const auto& segment : track.segments())
            if (m_state->sourcePath.isEmpty())
                m_state->sourcePath = segment.path;
    m_state->order.emplace().composition = std::move(composition);
    m_state->order->presetName = std::move(presetName);
}

std::shared_ptr<AVAssetExportSession>
AVAssetExportSession::unchangedCopy(const QString& source, const QString& target,
                                    NSFileManager::IfExists ifExists) {
    std::shared_ptr<AVAssetExportSession> session(new AVAssetExportSession);
    session->m_state->sourcePath = source;
    session->m_state->outputPath = target;
    session->m_state->ifExists = ifExists;
    return session;
}

std::shared_ptr<AVAssetExportSession>
AVAssetExportSession::rewriting(const QString& source, const QString& target, Writer writer) {
    std::shared_ptr<AVAssetExportSession> session(new AVAssetExportSession);
    session->m_state->sourcePath = source;
    session->m_state->outputPath = target;
    session->m_state->writer = std::move(writer);
    return session;
}

AVAssetExportSession::AVAssetExportSession() : m_state(std::make_shared<State>()) {
}

AVAssetExportSession::~AVAssetExportSession() = default;

void AVAssetExportSession::setOutputPath(const QString& path) {
    m_state->outputPath = path;
}
void AVAssetExportSession::setOutputFileType(const QString& type) {
    m_state->outputFileType = type;
}
void AVAssetExportSession::setMetadata(const std::optional<QList<AVMetadataItem>>& items) {
    m_state->metadata = items;
}
void AVAssetExportSession::setRemovesMetadata(bool removes) {
    m_state->removes = removes;
}
void AVAssetExportSession::setLeavesOutUnheldTracks(bool leavesOut) {
    m_state->leavesOut = leavesOut;
}
void AVAssetExportSession::setShouldOptimizeForNetworkUse(bool optimize) {
    if (m_state->order)
        m_state->order->moovFirst = optimize;
}
void AVAssetExportSession::setTimeRange(CMTimeRange range) {
    if (m_state->order)
        m_state->order->timeRange = range;
}
void AVAssetExportSession::setVideoComposition(AVMutableVideoComposition composition) {
    if (m_state->order)
        m_state->order->videoComposition = std::move(composition);
}
void AVAssetExportSession::setAudioMix(AVMutableAudioMix mix) {
    if (m_state->order)
        m_state->order->audioMix = std::move(mix);
}

void AVAssetExportSession::exportAsynchronouslyWithCompletionHandler(
    std::function<void()> completionHandler) {
    if (!m_state->startWaiting())
        return; // one session is one export
    if (const auto valid = m_state->validated(); !valid && !m_state->cancelled)
        m_state->finish(tl::unexpected(valid.error()));
    LiveSessions::shared().add(m_state);
    exportQueue().add([state = m_state, handler = std::move(completionHandler)] {
        if (state->startExporting())
            state->finish(state->run());
        if (handler)
            handler();
        LiveSessions::shared().remove(state);
    });
}

void AVAssetExportSession::cancelExport() {
    m_state->cancel();
}

AVAssetExportSessionStatus AVAssetExportSession::status() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->status;
}

double AVAssetExportSession::progress() const {
    return m_state->progress;
}

Error AVAssetExportSession::error() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->error;
}

QStringList AVAssetExportSession::notes() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->notes;
}

void AVAssetExportSession::setMaximumConcurrentExports(int count) {
    exportQueue().setMaximum(count);
}

void AVAssetExportSession::waitForAllExports() {
    exportQueue().waitForAll();
}

void AVAssetExportSession::cancelAllExports() {
    for (const auto& state : LiveSessions::shared().all())
        state->cancel();
}

} // namespace clipheave::platform
