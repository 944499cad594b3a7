// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/paths.h"
#include "platform/index/md_item.h"

#include <QHash>
#include <QMimeDatabase>
#include <QReadWriteLock>

#include <algorithm>

namespace clipheave::platform {

namespace {

/// The type of a container, and its English name for systems whose database does not know it.
struct ContainerKind {
    const char* type;
    const char* text;
};

ContainerKind kindOfContainer(Container container) {
    switch (container) {
    case Container::QuickTime:
        return {"video/quicktime", "QuickTime video"};
    case Container::Mp4:
        return {"video/mp4", "MPEG-4 video"};
    case Container::MpegAudio:
        return {"audio/mpeg", "MP3 audio"};
    case Container::Flac:
        return {"audio/flac", "FLAC audio"};
    case Container::Wave:
        return {"audio/x-wav", "WAV audio"};
    case Container::Aiff:
        return {"audio/x-aiff", "AIFF audio"};
    case Container::Caf:
        return {"audio/x-caf", "CAF audio"};
    case Container::Au:
        return {"audio/basic", "AU audio"};
    case Container::Unknown:
    case Container::Tagged:
    case Container::Other:
        break;
    }
    return {"", ""};
}

bool isMediaType(const QString& type) {
    return type.startsWith(QLatin1String("audio/")) || type.startsWith(QLatin1String("video/"));
}

/// Of several types of one name: the container's own, else audio or image as the bytes say.
/// ".ts" is also a translator's text, ".mp2" also MPEG video, ".ogg" also Ogg video.
QMimeType chooseType(const QList<QMimeType>& types, Container container) {
    if (types.size() == 1)
        return types.first();
    const QString own = QLatin1String(kindOfContainer(container).type);
    const QLatin1String wanted(container == Container::Other ? "video/" : "audio/");
    const auto first = [&types](auto matches) {
        const auto found = std::find_if(types.begin(), types.end(), matches);
        return found != types.end() ? *found : QMimeType();
    };
    QMimeType chosen = first([&](const QMimeType& type) { return type.name() == own; });
    if (!chosen.isValid())
        chosen = first([&](const QMimeType& type) { return type.name().startsWith(wanted); });
    if (!chosen.isValid())
        chosen = first([](const QMimeType& type) { return isMediaType(type.name()); });
    if (!chosen.isValid() && !types.isEmpty())
        chosen = types.first();
    return chosen;
}

/// Cameras give ".mod" to MPEG program streams; the database knows tracker music alone by it.
QString knownExtension(const QString& extension, Container container) {
    const bool isCamera = extension == u"mod" && container == Container::Other;
    return isCamera ? QStringLiteral("mpg") : extension;
}

QString lookUpKind(const QString& extension, Container container) {
    const QMimeDatabase database;
    QMimeType type;
    if (!extension.isEmpty())
        type =
            chooseType(database.mimeTypesForFileName(QStringLiteral("x.") + extension), container);
    const ContainerKind kind = kindOfContainer(container);
    if (!type.isValid() && *kind.type != '\0')
        type = database.mimeTypeForName(QLatin1String(kind.type));
    const QString comment = type.isValid() ? type.comment() : QString();
    return comment.isEmpty() ? QString::fromLatin1(kind.text) : comment;
}

} // namespace

QString kindTextForFile(const QString& path, Container container) {
    static QReadWriteLock lock;
    static QHash<QPair<QString, int>, QString> known; // under `lock`
    // Extensions come from file names, so anybody can make any number of them.
    static constexpr qsizetype kMostKnown = 1000;
    const QPair<QString, int> key(pathExtension(path).toLower(), static_cast<int>(container));
    {
        const QReadLocker reading(&lock);
        if (const auto found = known.constFind(key); found != known.constEnd())
            return *found;
    }
    QString text = lookUpKind(knownExtension(key.first, container), container);
    const QWriteLocker writing(&lock);
    if (known.size() < kMostKnown)
        known.insert(key, text);
    return text;
}

} // namespace clipheave::platform
