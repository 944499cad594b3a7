// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/thumbnail_service.h"

#include <QCoreApplication>
#include <QMutexLocker>
#include <QPointer>
#include <QThread>

#include <algorithm>
#include <cstddef>

namespace clipheave::app {

namespace {

/// In KiB: some 400 tiles, or ten thousands of rows.
constexpr int kMemoryLimit = 96 << 10;
constexpr int kMostWorkers = 3;
constexpr int kRest = 300; // milliseconds
/// Of about 256 KiB each.
constexpr std::size_t kMostUnstored = 64;

int costOf(const QPixmap& image) {
    return 1 + image.width() * image.height() * image.depth() / 8 / 1024;
}

} // namespace

ThumbnailService::ThumbnailService(ThumbnailCache cache, QObject* parent)
    : QObject(parent), m_cache(std::move(cache)), m_images(kMemoryLimit) {
    m_pool.setMaxThreadCount(std::clamp(QThread::idealThreadCount(), 1, kMostWorkers));
    m_pool.setThreadPriority(QThread::LowPriority);
    m_rest.setSingleShot(true);
    m_rest.setInterval(kRest);
    connect(&m_rest, &QTimer::timeout, this, [this] { startStoring(); });
}

ThumbnailService::~ThumbnailService() {
    {
        const QMutexLocker lock(&m_mutex);
        m_waiting.clear();
        m_unstored.clear();
    }
    m_pool.waitForDone();
}

ThumbnailService& ThumbnailService::shared() {
    static QPointer<ThumbnailService> service;
    if (service.isNull())
        service = new ThumbnailService(ThumbnailCache(), QCoreApplication::instance());
    return *service;
}

QString ThumbnailService::keyOf(const media::IKImageItem& item, const ThumbnailShape& shape) {
    return QStringLiteral("%1x%2%3:%4:%5:%6")
        .arg(shape.size.width())
        .arg(shape.size.height())
        .arg(shape.mode == ThumbnailShape::Fill ? QStringLiteral("fill") : QStringLiteral("fit"))
        .arg(item.fileImage.byteCount())
        .arg(item.modificationDate.isValid() ? item.modificationDate.toMSecsSinceEpoch() : 0)
        .arg(item.filePath);
}

QPixmap ThumbnailService::image(const media::IKImageItem& item, const ThumbnailShape& shape) {
    const QPixmap* image = m_images.object(keyOf(item, shape));
    return image != nullptr ? *image : QPixmap();
}

void ThumbnailService::request(const QObject* viewer, const QList<ThumbnailRequest>& wanted) {
    const QMutexLocker lock(&m_mutex);
    std::erase_if(m_waiting, [viewer](const Job& job) { return job.viewer == viewer; });
    for (const auto& [item, shape] : wanted) {
        QString key = keyOf(*item, shape);
        if (!m_images.contains(key) && !m_running.contains(key))
            m_waiting.push_back({std::move(key), ThumbnailSource::of(*item), shape, viewer});
    }
    startWorkers();
}

void ThumbnailService::cancel(const QObject* viewer) {
    const QMutexLocker lock(&m_mutex);
    std::erase_if(m_waiting, [viewer](const Job& job) { return job.viewer == viewer; });
}

bool ThumbnailService::isIdle() const {
    const QMutexLocker lock(&m_mutex);
    return m_waiting.empty() && m_running.isEmpty() && m_unstored.empty() && !m_isStoring;
}

void ThumbnailService::startWorkers() {
    const auto wanted = std::min(static_cast<int>(m_waiting.size()), m_pool.maxThreadCount());
    for (; m_workers < wanted; ++m_workers)
        m_pool.start([this] { work(); });
}

void ThumbnailService::startStoring() {
    const QMutexLocker lock(&m_mutex);
    if (m_isStoring || m_unstored.empty())
        return;
    m_isStoring = true;
    m_pool.start([this] { storeWhileIdle(); });
}

void ThumbnailService::work() {
    for (;;) {
        Job job;
        {
            const QMutexLocker lock(&m_mutex);
            if (m_waiting.empty()) {
                --m_workers;
                return;
            }
            job = std::move(m_waiting.front());
            m_waiting.pop_front();
            if (m_running.contains(job.key))
                continue; // two viewers asked for it
            m_running.insert(job.key);
        }
        const MadeThumbnail made = makeThumbnail(job.source, job.shape, m_cache);
        QMetaObject::invokeMethod(
            this, [this, key = job.key, image = made.image] { take(key, image); },
            Qt::QueuedConnection);
        if (made.store)
            storeLater(made.store);
    }
}

void ThumbnailService::storeWhileIdle() {
    for (;;) {
        std::function<void()> store;
        {
            const QMutexLocker lock(&m_mutex);
            m_isStoring = m_waiting.empty() && m_running.isEmpty() && !m_unstored.empty();
            if (!m_isStoring) {
                if (!m_unstored.empty())
                    QMetaObject::invokeMethod(
                        this, [this] { m_rest.start(); }, Qt::QueuedConnection);
                return;
            }
            store = std::move(m_unstored.front());
            m_unstored.pop_front();
        }
        store();
    }
}

void ThumbnailService::storeLater(const std::function<void()>& store) {
    {
        const QMutexLocker lock(&m_mutex);
        if (m_unstored.size() < kMostUnstored) {
            m_unstored.push_back(store);
            return;
        }
    }
    store();
}

void ThumbnailService::take(const QString& key, const QImage& image) {
    auto pixmap = std::make_unique<QPixmap>(QPixmap::fromImage(image));
    const int cost = costOf(*pixmap);
    m_images.insert(key, pixmap.release(), cost);
    ++m_made;
    {
        const QMutexLocker lock(&m_mutex);
        m_running.remove(key);
    }
    m_rest.start();
    Q_EMIT imagesReady();
}

} // namespace clipheave::app
