// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/media_import.h"

#include "media/media_kind.h"
#include "media/media_readers.h"
#include "media/messages.h"
#include "media/read_ahead.h"
#include "media/shared_texts.h"
#include "platform/foundation/error_text.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/temporaries.h"

#include <QSet>

#include <algorithm>
#include <thread>

namespace clipheave::media {

/// The kinds that an import takes.
enum class Wanted { VideosAndAudio, PhotosAndVideos, EveryKind };

namespace {

using namespace platform;

/// Deeper folders are skipped with a message; the kernel's own limit on path lengths is near.
constexpr int kDeepestFolder = 1000;

/// The reader of an audio file by its extension.
Result<MutableItemPointer> readAudioItem(const QString& path) {
    const QString extension = pathExtension(path);
    for (const char16_t* wav : {u"wav", u"flac", u"au"})
        if (extension.compare(QStringView(wav), Qt::CaseInsensitive) == 0)
            return readSomeWAVAudioFileWithFilePath(path);
    for (const char16_t* aiff : {u"aiff", u"aif"})
        if (extension.compare(QStringView(aiff), Qt::CaseInsensitive) == 0)
            return readSomeAiffAudioFileWithFilePath(path);
    return readSomeMp3AudioFileWithFilePath(path);
}

/// The photo browser knows a video by kind, name and path; the rest is read as for the list.
Result<MutableItemPointer> readBrowserItem(const QString& path) {
    if (MediaKind::isPhoto(path) || !MediaKind::isVideo(path))
        return readPhotoItem(path);
    auto item = readVideoItem(path, WalkTable::Video);
    if (item)
        (*item)->fileType = QStringLiteral("Movie");
    return item;
}

/// A video by its name whose kind the list does not take.
bool isVideoOfNoKind(const QString& path) {
    static constexpr QStringView kExtensions[] = {u"webm", u"ogv", u"mts",  u"m2v",
                                                  u"m1v",  u"mpv", u"dv",   u"3gpp",
                                                  u"wm",   u"ivf", u"gifv", u"nut"};
    const QString extension = pathExtension(path);
    return std::any_of(std::begin(kExtensions), std::end(kExtensions), [&](QStringView known) {
        return extension.compare(known, Qt::CaseInsensitive) == 0;
    });
}

Message reasonOfUnknown(const QString& path) {
    if (MediaKind::isPhoto(path))
        return kPhotoNotWanted;
    const QString extension = pathExtension(path);
    return extension.isEmpty() ? Message(kNotMedia) : Message(kUnknownKind, {extension});
}

/// What reads the file, or nothing when its kind is not wanted.
ReadAhead::Reader readerFor(const QString& path, Wanted wanted, bool inFolder) {
    if (wanted == Wanted::PhotosAndVideos)
        return MediaKind::isPhoto(path) || MediaKind::isVideo(path) ? &readBrowserItem : nullptr;
    if (wanted == Wanted::EveryKind && MediaKind::isPhoto(path) && !MediaKind::isVideo(path))
        return &readPhotoItem;
    if (MediaKind::isAudio(path)) // asked before video
        return &readAudioItem;
    if (!MediaKind::isVideo(path))
        return nullptr;
    if (inFolder)
        return [](const QString& video) { return readVideoItem(video, WalkTable::VideoInFolder); };
    return [](const QString& video) { return readVideoItem(video, WalkTable::Video); };
}

} // namespace

/// One run of the import: walks, hands files to the read-ahead, takes the results in order.
struct MediaImport::Pipeline {
    struct Identity {
        std::uint64_t device, inode;
        friend bool operator==(const Identity&, const Identity&) = default;
    };

    Pipeline(MediaImport& import_, Wanted wanted_)
        : import(import_), wanted(wanted_),
          ahead(import_.m_readAheadThreads,
                [this](const QString& path, auto result) { deliver(path, std::move(result)); }) {}

    [[nodiscard]] bool stopped() const { return import.m_stop && import.m_stop(); }

    void skip(const QString& path, const Error& error) { skip(path, textBeside(error, path)); }

    void skip(const QString& path, const Message& reason) {
        // The front names what was skipped; a warning besides would say it twice.
        log(LogLevel::Info, reason.text(), path);
        import.m_skipped.push_back({path, reason});
    }

    void deliver(const QString& path, std::optional<Result<MutableItemPointer>> result) {
        ItemPointer item;
        if (result && *result)
            item = handOver(**result);
        else if (result)
            skip(path, result->error());
        if (import.m_step)
            import.m_step(item);
    }

    ItemPointer handOver(const MutableItemPointer& item) {
        texts.shareTextsOf(*item);
        if (!item->problem.isEmpty())
            log(LogLevel::Warning, item->problem.text(), item->filePath);
        if (import.m_keepsItems)
            import.m_items.push_back(item);
        return item;
    }

    void addFile(const QString& path, bool inFolder) {
        const auto reader = readerFor(path, wanted, inFolder);
        if (!reader && (!inFolder || isVideoOfNoKind(path)))
            noteUnknown(path);
        if (!reader || !isRepeated(path))
            ahead.add(path, reader);
    }

    /// Returns whether an earlier path is the file or a folder that it is in.
    [[nodiscard]] bool isRepeated(const QString& path) const {
        QString place = earlier.isEmpty() ? QString() : canonicalPath(path);
        while (place.size() > 1 && !earlier.contains(place))
            place = deletingLastPathComponent(place);
        return earlier.contains(place);
    }

    /// A path of the call has been handled.
    void finishPath(const QString& path) {
        if (!import.m_takesFilesOnce)
            return;
        if (const QString place = canonicalPath(path); !place.isEmpty())
            earlier.insert(place);
    }

    void takePaths(const QStringList& paths) {
        for (const QString& path : paths) {
            if (stopped())
                break;
            bool isDirectory = false;
            if (NSFileManager::defaultManager().fileExistsAtPath(path, isDirectory) &&
                isDirectory) {
                walk(path);
                import.m_bImportLocalFolder = true;
                import.m_bImportLocalPath = deletingLastPathComponent(path);
            } else {
                import.m_bImportLocalFolder = false;
                addFile(path, false);
            }
            finishPath(path);
        }
        ahead.finish();
    }

    void noteUnknown(const QString& path) {
        const auto found = NSFileManager::defaultManager().attributesOfItemAtPath(path);
        if (found)
            import.m_unknown.push_back({path, reasonOfUnknown(path)});
        else
            skip(path, found.error());
    }

    void walk(const QString& folder) {
        const auto attributes = NSFileManager::defaultManager().attributesOfItemAtPath(folder);
        if (!attributes)
            return reportFolder(folder, attributes.error());
        const Identity identity{attributes->device, attributes->inode};
        if (std::find(ancestors.begin(), ancestors.end(), identity) != ancestors.end())
            return reportFolder(folder, kFolderLoops);
        if (ancestors.size() >= kDeepestFolder)
            return reportFolder(folder, kFoldersTooDeep);
        const auto entries = NSFileManager::defaultManager().contentsOfDirectoryAtPath(folder);
        if (!entries)
            return reportFolder(folder, entries.error());
        ancestors.push_back(identity);
        for (const DirectoryEntry& entry : *entries) {
            if (stopped())
                break;
            if (isTemporaryName(entry.name))
                continue; // of an export that runs, or was killed
            const QString path = folder + u'/' + entry.name;
            if (entry.isDirectory)
                walk(path);
            else
                addFile(path, true);
        }
        ancestors.pop_back();
    }

    /// A folder's trouble is reported in its place among the files.
    template <class Reason> void reportFolder(const QString& folder, const Reason& reason) {
        ahead.finish();
        skip(folder, reason);
    }

    MediaImport& import;
    Wanted wanted;
    ReadAhead ahead;
    std::vector<Identity> ancestors;
    QSet<QString> earlier; ///< paths of the call, without links
    SharedTexts texts;
};

MediaImport::MediaImport(ImportStep step)
    : m_step(std::move(step)),
      m_readAheadThreads(std::max(0, static_cast<int>(std::thread::hardware_concurrency()) - 1)) {
}

void MediaImport::importMediaItemsThreader(const QStringList& paths) {
    Pipeline(*this, Wanted::VideosAndAudio).takePaths(paths);
}

void MediaImport::importEveryKind(const QStringList& paths) {
    Pipeline(*this, Wanted::EveryKind).takePaths(paths);
}

void MediaImport::ScanMediasItemWithinFolder(const QString& folder) {
    Pipeline pipeline(*this, Wanted::VideosAndAudio);
    pipeline.walk(folder);
    pipeline.ahead.finish();
}

void MediaImport::importPhotos(const QStringList& paths) {
    Pipeline pipeline(*this, Wanted::PhotosAndVideos);
    for (const QString& path : paths) {
        if (pipeline.stopped())
            break;
        bool isDirectory = false;
        if (NSFileManager::defaultManager().fileExistsAtPath(path, isDirectory) && isDirectory)
            pipeline.walk(path);
        else if (!pipeline.isRepeated(path))
            pipeline.ahead.add(path, &readBrowserItem);
        pipeline.finishPath(path);
    }
    pipeline.ahead.finish();
}

void MediaImport::addWithoutReading(const QStringList& paths) {
    for (const QString& path : paths) {
        auto item = std::make_shared<IKImageItem>();
        if (MediaKind::isAudio(path))
            item->fileType = QStringLiteral("Audio");
        else if (MediaKind::isVideo(path))
            item->fileType = QStringLiteral("Movie");
        if (!NSFileManager::defaultManager().fileExistsAtPath(path))
            return;
        item->fileName = lastPathComponent(path);
        item->filePath = path;
        m_items.push_back(item);
    }
}

} // namespace clipheave::media
