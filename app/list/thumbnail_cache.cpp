// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/thumbnail_cache.h"

#include "platform/foundation/paths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <cstdio>

namespace clipheave::app {

namespace {

const QString kAddressKey = QStringLiteral("Thumb::URI");
const QString kTimeKey = QStringLiteral("Thumb::MTime");
/// A thumbnail of 256 pixels is a fraction of this.
constexpr qint64 kLargestThumbnailFile = 4 << 20;

/// Measured with 256 x 192 pixels of a photo: 3 ms and 67 kB, instead of 11 ms and 55 kB, which is
/// as long as decoding the photo takes.
constexpr int kLightPacking = 80;

QString folderOfSide(int side) {
    return side <= ThumbnailCache::kNormalSide ? QStringLiteral("normal") : QStringLiteral("large");
}

/// The standard asks for folders and files that only the user can read.
bool makePrivateFolder(const QString& folder) {
    if (QDir(folder).exists())
        return true;
    return QDir().mkpath(folder) &&
           QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

} // namespace

ThumbnailCache::ThumbnailCache(QString folder) : m_folder(std::move(folder)) {
}

QString ThumbnailCache::defaultFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/thumbnails");
}

QByteArray ThumbnailCache::fileAddress(const QString& path) {
    return "file://" + platform::nativePath(path).toPercentEncoding("!$&'()*+,-./:=@_~");
}

bool ThumbnailCache::takes(const QString& path) const {
    return path.startsWith(u'/') && !path.startsWith(m_folder + u'/');
}

QString ThumbnailCache::fileFor(const QString& path, int side) const {
    const QByteArray name =
        QCryptographicHash::hash(fileAddress(path), QCryptographicHash::Md5).toHex();
    return m_folder + u'/' + folderOfSide(side) + u'/' + QLatin1String(name) +
           QStringLiteral(".png");
}

QImage ThumbnailCache::find(const QString& path, std::int64_t modified, int side) const {
    if (!takes(path))
        return {};
    QFile file(fileFor(path, side));
    if (!file.open(QIODevice::ReadOnly) || file.size() > kLargestThumbnailFile)
        return {};
    QImageReader reader(&file, "png");
    const QSize size = reader.size();
    // Whoever wrote it need not have kept to the standard.
    if (size.isEmpty() || size.width() > kLargeSide * 4 || size.height() > kLargeSide * 4)
        return {};
    QImage image = reader.read();
    // From the image: the reader would split such keys at their colons.
    if (image.text(kTimeKey).toLongLong() != modified ||
        image.text(kAddressKey).toUtf8() != fileAddress(path))
        return {};
    return image;
}

void ThumbnailCache::store(const QString& path, std::int64_t modified, int side,
                           const QImage& image) const {
    const QString target = fileFor(path, side);
    const QString folder = QFileInfo(target).path();
    if (!takes(path) || image.isNull() || !makePrivateFolder(m_folder) ||
        !makePrivateFolder(folder))
        return;
    QTemporaryFile file(folder + QStringLiteral("/clipheave-XXXXXX.png"));
    if (!file.open()) // readable for the user alone
        return;
    QImage described = image;
    described.setText(kAddressKey, QString::fromLatin1(fileAddress(path)));
    described.setText(kTimeKey, QString::number(modified));
    described.setText(QStringLiteral("Software"), QStringLiteral("ClipHeave"));
    if (!described.save(&file, "png", kLightPacking) || !file.flush())
        return;
    // Deliberate: not made durable. A thumbnail lost in a power cut is made again.
    if (std::rename(QFile::encodeName(file.fileName()).constData(),
                    QFile::encodeName(target).constData()) == 0)
        file.setAutoRemove(false);
}

} // namespace clipheave::app
