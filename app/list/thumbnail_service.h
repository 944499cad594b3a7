// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/thumbnail_maker.h"

#include <QCache>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QPixmap>
#include <QSet>
#include <QThreadPool>
#include <QTimer>

#include <deque>
#include <functional>

namespace clipheave::app {

struct ThumbnailRequest {
    media::ItemPointer item;
    ThumbnailShape shape;
};

/// Images for rows and tiles, made by a few background threads for what is visible only. Main
/// thread only.
class ThumbnailService : public QObject {
    Q_OBJECT
public:
    explicit ThumbnailService(ThumbnailCache cache = ThumbnailCache(), QObject* parent = nullptr);
    /// Waits for what is being made; what is only asked for, or not stored yet, is dropped.
    ~ThumbnailService() override;
    /// Returns the one that all lists share; it lives as long as the application object.
    [[nodiscard]] static ThumbnailService& shared();

    /// Returns the image when it has been made; null when it is not or cannot be.
    [[nodiscard]] QPixmap image(const media::IKImageItem& item, const ThumbnailShape& shape);
    /// Asks for what `viewer` shows now, in the order in which it should come. It replaces what the
    /// viewer asked for before: of that, what is not begun is dropped. Images that are made
    /// already, or could not be made, are not made again before the file changes.
    void request(const QObject* viewer, const QList<ThumbnailRequest>& wanted);
    void cancel(const QObject* viewer);

    /// Returns how many images were made or tried since the start; for tests and measurements.
    [[nodiscard]] int madeCount() const { return m_made; }
    [[nodiscard]] bool isIdle() const;

Q_SIGNALS:
    /// More images can be had from image().
    void imagesReady();

private:
    struct Job {
        QString key;
        ThumbnailSource source;
        ThumbnailShape shape;
        const QObject* viewer;
    };
    [[nodiscard]] static QString keyOf(const media::IKImageItem& item, const ThumbnailShape& shape);
    void startWorkers();
    void work();
    void startStoring();
    void storeWhileIdle();
    void storeLater(const std::function<void()>& store);
    void take(const QString& key, const QImage& image);

    ThumbnailCache m_cache;
    QCache<QString, QPixmap> m_images; ///< a null image could not be made
    int m_made = 0;

    mutable QMutex m_mutex; ///< guards what follows
    std::deque<Job> m_waiting;
    QSet<QString> m_running;
    /// Storing takes half as long as decoding: it waits until nothing has been made for a while.
    std::deque<std::function<void()>> m_unstored;
    int m_workers = 0;
    bool m_isStoring = false;

    QTimer m_rest;
    QThreadPool m_pool;
};

} // namespace clipheave::app
