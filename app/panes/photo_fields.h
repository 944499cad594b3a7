// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/change_flags.h"
#include "photo/pane_texts.h"

#include <QtGlobal>

namespace clipheave::app {

/// A field of the photo pane: its text and the section that an edit in it changes.
struct PhotoField {
    const char* objectName;
    const char* label;
    QString& (*text)(photo::PaneTexts& texts);
    bool media::ChangeFlags::*section;
};

/// In the order of the pane. Deliberate: the sections are not the groups in which some of these
/// names stand for audio files, where keywords and description have none and the copyright belongs
/// to the camera's.
inline constexpr PhotoField kPhotoFields[] = {
    {"titlelab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Title"),
     [](photo::PaneTexts& texts) -> QString& { return texts.titlelab; },
     &media::ChangeFlags::basicInfoChange},
    {"artistlab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Artist"),
     [](photo::PaneTexts& texts) -> QString& { return texts.artistlab; },
     &media::ChangeFlags::basicInfoChange},
    {"keywordslab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Keywords"),
     [](photo::PaneTexts& texts) -> QString& { return texts.keywordslab; },
     &media::ChangeFlags::basicInfoChange},
    {"copyrightlab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Copyright"),
     [](photo::PaneTexts& texts) -> QString& { return texts.copyrightlab; },
     &media::ChangeFlags::basicInfoChange},
    {"imageDescrilab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Description"),
     [](photo::PaneTexts& texts) -> QString& { return texts.imageDescrilab; },
     &media::ChangeFlags::basicInfoChange},
    {"commentslab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Comments"),
     [](photo::PaneTexts& texts) -> QString& { return texts.commentslab; },
     &media::ChangeFlags::basicInfoChange},
    {"cameraMakelab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Make"),
     [](photo::PaneTexts& texts) -> QString& { return texts.cameraMakelab; },
     &media::ChangeFlags::cameraInfoChange},
    {"cameraModelab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Model"),
     [](photo::PaneTexts& texts) -> QString& { return texts.cameraModelab; },
     &media::ChangeFlags::cameraInfoChange},
    {"cameraDatelab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Date"),
     [](photo::PaneTexts& texts) -> QString& { return texts.cameraDatelab; },
     &media::ChangeFlags::cameraInfoChange},
    {"gpsLatilab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Latitude"),
     [](photo::PaneTexts& texts) -> QString& { return texts.place.latitudelab; },
     &media::ChangeFlags::gpsInfoChange},
    {"gpsLongtlab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Longitude"),
     [](photo::PaneTexts& texts) -> QString& { return texts.place.longtitudelab; },
     &media::ChangeFlags::gpsInfoChange},
    {"gpsAitlab", QT_TRANSLATE_NOOP("clipheave::app::PhotoPaneView", "Altitude"),
     [](photo::PaneTexts& texts) -> QString& { return texts.place.altitudelab; },
     &media::ChangeFlags::gpsInfoChange},
};

} // namespace clipheave::app
