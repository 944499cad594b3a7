// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/audio_peaks.h"
#include "platform/engine/decode/frame_reader.h"
#include "platform/engine/decode/frame_source.h"
#include "platform/engine/decode/keyframe_grabber.h"
#include "platform/engine/export/audio_to_m4a.h"
#include "platform/engine/export/export_runner.h"
#include "platform/engine/export/remux.h"
#include "platform/engine/export/video_writer.h"
#include "platform/engine/io/ffmpeg.h"
#include "platform/engine/probe/probe.h"
#include "platform/engine/samples/sample_writer.h"
#include "platform/foundation/log.h"
#include "platform/media/model/media_engine.h"

#include <cstdarg>

namespace clipheave::platform {

namespace {

/// The libraries write to the terminal by themselves; what matters comes back as an Error.
void dropLibraryLog(void*, int, const char*, std::va_list) {
}

class FfmpegEngine final : public MediaEngine {
public:
    FfmpegEngine() { av_log_set_callback(&dropLibraryLog); }

    Result<MediaFacts> probe(FileReader& reader) override { return probeFile(reader); }
    Result<Notes> remux(const QString& source, const QString& target, RemuxTarget kind,
                        UnheldStreams unheld,
                        const std::function<bool(double)>& progress) override {
        return remuxFile(source, target, kind, unheld, progress);
    }
    Result<Notes> audioToM4a(const QString& source, const QString& target,
                             const std::function<bool(double)>& progress) override {
        return convertToM4a(source, target, progress);
    }
    Result<Notes> runExport(const ExportPlan& plan, const QString& target,
                            const ExportResources& resources,
                            const std::function<bool(double)>& progress) override {
        return runExportPlan(plan, target, resources, progress);
    }
    Result<std::unique_ptr<FrameSource>> openFrames(const QString& path,
                                                    std::optional<QSize> size) override {
        return openFrameSource(path, size);
    }
    Result<std::unique_ptr<FrameReader>>
    openFrameReader(const QString& path, int stream, const ExportResources& resources) override {
        return makeFrameReader(path, stream, resources);
    }
    Result<std::unique_ptr<VideoWriter>>
    openVideoWriter(const VideoWriterSettings& settings, const QString& target,
                    const ExportResources& resources) override {
        return makeVideoWriter(settings, target, resources);
    }
    Result<void> writeSample(const SampleMedia& sample, const QString& target) override {
        return writeSampleFile(sample, target);
    }
    Result<RawFrame> keyframeAt(const QString& path, double seconds, int largestSide) override {
        return grabKeyframe(path, seconds, largestSide);
    }
    Result<QByteArray> audioPeaks(const QString& path, int columns,
                                  const std::function<bool()>& goOn) override {
        return readAudioPeaks(path, columns, goOn);
    }
};

/// What is logged and worded in this copy of the foundation goes to the program's.
void useHost(const MediaEngineHost& host) {
    setWording(host.text);
    static const LogSubscription forward(LogLevel::Trace, host.log);
}

/// Which libraries run, for reports of faults: the versions at run time, not those of the build.
void logVersions() {
    const auto text = [](unsigned version) {
        return QStringLiteral("%1.%2.%3")
            .arg(AV_VERSION_MAJOR(version))
            .arg(AV_VERSION_MINOR(version))
            .arg(AV_VERSION_MICRO(version));
    };
    log(LogLevel::Trace, QStringLiteral("media engine: libavformat %1, libavcodec %2")
                             .arg(text(avformat_version()), text(avcodec_version())));
}

} // namespace

} // namespace clipheave::platform

extern "C" __attribute__((visibility("default"))) clipheave::platform::MediaEngine*
clipheaveMediaEngine(const clipheave::platform::MediaEngineHost& host, int& abi) {
    using namespace clipheave::platform;
    abi = kMediaEngineAbi;
    if (host.abi != kMediaEngineAbi)
        return nullptr;
    // Never destroyed: other threads may still be inside at the end of the program.
    static auto* const engine = [&host] {
        useHost(host);
        return new FfmpegEngine;
    }();
    logVersions();
    return engine;
}
