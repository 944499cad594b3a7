// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/demo_library.h"

#include "cli/demo_tables.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"
#include "platform/image/sample_photo.h"
#include "platform/isobmff/write/isobmff_writer.h"
#include "platform/media/model/media_engine.h"

namespace clipheave::cli {

namespace {

using namespace platform;

QString text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

/// Returns the metadata items of a video. The value "cover" stands for a drawn image.
Result<QList<AVMetadataItem>> itemsOf(const DemoVideo& video) {
    QList<AVMetadataItem> items;
    for (const DemoItem& item : video.items) {
        if (!item.identifier)
            break;
        AVMetadataItem::Value value = text(item.value);
        if (qstrcmp(item.value, "cover") == 0) {
            auto image = drawSampleImage(QSize(300, 300), video.pattern, QStringLiteral("jpeg"));
            if (!image)
                return tl::unexpected(image.error());
            value = *image;
        }
        const QString identifier = text(item.identifier);
        const qsizetype slash = identifier.indexOf(u'/');
        items.append(AVMetadataItem::make(identifier.left(slash), identifier.mid(slash + 1),
                                          identifier, value));
    }
    return items;
}

SampleMedia sampleOf(const DemoVideo& video) {
    SampleMedia sample;
    sample.container = text(video.muxer);
    sample.videoCodec = text(video.videoCodec);
    sample.audioCodec = text(video.audioCodec);
    sample.size = QSize(video.width, video.height);
    sample.seconds = video.seconds;
    sample.frameRate = video.frameRate;
    sample.sampleRate = video.sampleRate;
    sample.channels = video.channels;
    sample.pattern = video.pattern;
    sample.rotation = video.rotation;
    return sample;
}

/// Encodes under a hidden name first; the metadata writer's copy of that gets the video's name.
Result<void> writeVideo(MediaEngine& engine, const DemoVideo& video, const QString& target) {
    const SampleMedia sample = sampleOf(video);
    if (video.items.front().identifier == nullptr)
        return engine.writeSample(sample, target);
    const QString plain =
        appendingPathComponent(deletingLastPathComponent(target),
                               QStringLiteral(".clipheave-demo-") + lastPathComponent(target));
    const auto items = itemsOf(video);
    if (!items)
        return tl::unexpected(items.error());
    if (auto made = engine.writeSample(sample, plain); !made)
        return made;
    PassthroughRequest request;
    request.source = plain;
    request.target = target;
    request.container = video.container;
    request.metadata = *items;
    request.moovFirst = true;
    const auto written = writePassthrough(request);
    ignoreFailure(NSFileManager::defaultManager().removeItemAtPath(plain),
                  "a hidden intermediate file");
    if (!written)
        return tl::unexpected(written.error());
    return {};
}

Result<void> writeAudio(MediaEngine& engine, const DemoAudio& audio, const QString& target) {
    SampleMedia sample;
    sample.container = text(audio.muxer);
    sample.audioCodec = text(audio.codec);
    sample.seconds = audio.seconds;
    sample.sampleRate = audio.sampleRate;
    sample.channels = audio.channels;
    sample.pattern = audio.pattern;
    for (const DemoTag& tag : audio.tags)
        if (tag.name)
            sample.tags.insert(text(tag.name), text(tag.value));
    return engine.writeSample(sample, target);
}

Result<void> setDates(const QString& path, const char* date) {
    const auto when = parseDateText(QString::fromLatin1(date));
    if (!when)
        return failure(ErrorCode::InvalidArgument, QStringLiteral("date the sample"), path);
    const auto stored = NSFileManager::defaultManager().setAttributes(path, *when, *when);
    if (!stored)
        return tl::unexpected(stored.error());
    return {};
}

} // namespace

Result<int> writeDemoLibrary(const QString& folder,
                             const std::function<void(const QString&)>& written) {
    const auto engine = mediaEngine();
    if (!engine)
        return tl::unexpected(engine.error());
    int count = 0;
    const auto add = [&](const char* name, const char* date, const auto& write) -> Result<void> {
        const QString target = appendingPathComponent(folder, text(name));
        auto made = NSFileManager::defaultManager().createDirectoryAtPath(
            deletingLastPathComponent(target));
        if (!made)
            return made;
        if (const auto done = write(target); !done)
            return tl::unexpected(done.error());
        ++count;
        written(target);
        return setDates(target, date);
    };
    for (const DemoVideo& video : demoVideos())
        if (const auto done =
                add(video.name, video.date,
                    [&](const QString& path) { return writeVideo(**engine, video, path); });
            !done)
            return tl::unexpected(done.error());
    for (const DemoAudio& audio : demoAudio())
        if (const auto done =
                add(audio.name, audio.date,
                    [&](const QString& path) { return writeAudio(**engine, audio, path); });
            !done)
            return tl::unexpected(done.error());
    for (const DemoPhoto& photo : demoPhotos())
        if (const auto done =
                add(photo.name, photo.date,
                    [&](const QString& path) { return writeSamplePhoto(photo.sample, path); });
            !done)
            return tl::unexpected(done.error());
    return count;
}

} // namespace clipheave::cli
