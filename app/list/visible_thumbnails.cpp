// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/visible_thumbnails.h"

#include "app/list/media_list_model.h"

#include <utility>

namespace clipheave::app {

namespace {

/// What scrolls past quickly is not worth a thumbnail.
constexpr int kRequestDelay = 40; // ms

} // namespace

VisibleThumbnails::VisibleThumbnails(QAbstractItemView& view, Wanted wanted)
    : m_view(view), m_wanted(std::move(wanted)) {
    m_rest.setSingleShot(true);
    m_rest.setInterval(kRequestDelay);
    connect(&m_rest, &QTimer::timeout, this, &VisibleThumbnails::request);
    setService(&ThumbnailService::shared());
}

VisibleThumbnails::~VisibleThumbnails() {
    if (m_service != nullptr)
        m_service->cancel(this);
}

void VisibleThumbnails::setModel(MediaListModel* model) {
    if (m_model != nullptr)
        m_model->disconnect(this);
    m_model = model;
    if (model == nullptr)
        return;
    const auto askLater = [this] {
        if (!m_rest.isActive())
            m_rest.start();
    };
    connect(model, &QAbstractItemModel::rowsInserted, this, askLater);
    connect(model, &QAbstractItemModel::rowsRemoved, this, askLater);
    connect(model, &QAbstractItemModel::dataChanged, this, askLater);
    askLater();
}

void VisibleThumbnails::setService(ThumbnailService* service) {
    if (m_service != nullptr) {
        m_service->cancel(this);
        m_service->disconnect(this);
    }
    m_service = service;
    connect(service, &QObject::destroyed, this, [this] { m_service = nullptr; });
    connect(service, &ThumbnailService::imagesReady, this, [this] { m_view.viewport()->update(); });
}

void VisibleThumbnails::request() {
    if (m_model != nullptr && m_service != nullptr && m_view.isVisible())
        m_service->request(this, m_wanted(*m_model));
}

} // namespace clipheave::app
