// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/thumbnail_service.h"

#include <QAbstractItemView>
#include <QTimer>

#include <functional>

namespace clipheave::app {

class MediaListModel;

/// What a view of the media list asks of the thumbnail service: images for what is visible, once
/// the view has come to rest. A part of its view.
class VisibleThumbnails : public QObject {
public:
    /// Returns what is visible now, in the order in which it should come.
    using Wanted = std::function<QList<ThumbnailRequest>(const MediaListModel& model)>;

    VisibleThumbnails(QAbstractItemView& view, Wanted wanted);
    ~VisibleThumbnails() override;

    /// Sets the model that the view shows; may be null.
    void setModel(MediaListModel* model);
    /// Sets the service, which outlives the view or is forgotten when it goes.
    void setService(ThumbnailService* service);
    [[nodiscard]] ThumbnailService* service() const { return m_service; }
    /// The view shows another part of the list.
    void moved() { m_rest.start(); }

private:
    void request();

    QAbstractItemView& m_view;
    Wanted m_wanted;
    MediaListModel* m_model = nullptr;
    ThumbnailService* m_service = nullptr;
    QTimer m_rest;
};

} // namespace clipheave::app
