// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_panel.h"
#include "app/commands/pane_state.h"
#include "app/commands/surroundings.h"
#include "app/panes/detail_pane.h"
#include "app/panes/photo_fields.h"
#include "app/windows/main_window.h"
#include "media/fields.h"
#include "media/position_text.h"
#include "metadata/video_metadata.h"
#include "platform/foundation/text.h"

namespace clipheave::app {

namespace {

VideoPaneView::LocationCaption locationCaption(const media::PaneTexts& texts) {
    if (const auto fault = metadata::positionFault(texts))
        return {fault->text(), true};
    return {metadata::locationText(texts.mediaLatitude, texts.mediaLongtitude, texts.mediaAatitude),
            false};
}

/// Degrees of a position field; 0 when it holds none.
double degreesIn(const QString& typed, media::PositionPart part) {
    return platform::doubleValue(media::positionNumber(typed, part).value_or(QString()));
}

} // namespace

void AppDelegate::connectPanes() {
    DetailPane* pane = m_window->detailPane();
    pane->setLocationTextRule(&locationCaption);
    connect(pane, &DetailPane::fieldEditingBegan, this,
            [this](const QString& field) { control_textShouldBeginEditing(field); });
    connect(pane, &DetailPane::revealRequested, this, &AppDelegate::revealCurrentItem);
    connect(pane, &DetailPane::artworkRequested, this, &AppDelegate::chooseArtwork);
    connect(pane, &DetailPane::pasteRequested, this, &AppDelegate::pasteArtwork);
    connect(pane, &DetailPane::durationKnown, this, [this](double seconds) {
        if (!m_pane->shownItem || !m_pane->shownItem->fileduratStr.isEmpty())
            return;
        changeItems({m_pane->shownItem->filePath}, [seconds](media::IKImageItem& item) {
            item.fileduration = seconds;
            item.fileduratStr = getMediaDuration(static_cast<int>(seconds));
        });
    });
    ActivityPanel* panel = m_window->activityPanel();
    connect(panel, &ActivityPanel::revealRequested, this,
            [this](const QStringList& paths) { m_surroundings->workspace->selectFiles(paths); });
    connect(panel, &ActivityPanel::copyRequested, this,
            [this](const QString& text) { m_surroundings->pasteboard->setText(text); });
}

media::ChangeFlags AppDelegate::changeFlags() const {
    return m_window->editsPhotos() ? m_pane->photoFlags : m_pane->flags;
}

QPointF AppDelegate::currentCoords() const {
    return m_pane->currentCoords;
}

bool AppDelegate::control_textShouldBeginEditing(const QString& field) {
    if (m_window->editsPhotos()) {
        for (const PhotoField& row : kPhotoFields)
            if (field == QLatin1String(row.objectName))
                m_pane->photoFlags.*row.section = true;
        return true;
    }
    for (const media::VideoFormField& row : media::kVideoFormFields)
        if (field == QLatin1String(row.objectName) && row.group)
            m_pane->flags.*row.group = true;
    for (const media::AudioField& row : media::kAudioFields)
        if (field == QLatin1String(row.objectName) && row.group)
            m_pane->flags.*row.group = true;
    if (field == u"audioCreateDatelab")
        m_pane->flags.cameraInfoChange = true;
    // Deliberate: the altitude sets no flag.
    if (field == u"mediaLatitude" || field == u"mediaLongtitude") {
        m_pane->flags.gpsInfoChange = true;
        const media::VideoPane pane = m_window->detailPane()->videoPane();
        m_pane->currentCoords = {
            degreesIn(pane.texts.mediaLatitude, media::PositionPart::Latitude),
            degreesIn(pane.texts.mediaLongtitude, media::PositionPart::Longitude)};
    }
    return true;
}

} // namespace clipheave::app
