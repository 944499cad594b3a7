// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/menu_images.h"

#include <QHash>

namespace clipheave::app {

namespace {

struct MenuImage {
    const char *entry, *image;
};

constexpr MenuImage kMenuImages[] = {
    {"Convert", "convert"},
    {"Compress", "compress"},
    {"Rotate", "rotate"},
    {"Speed Up", "speed"},
    {"Slow Down", "clock"},
    {"Extract Images", "image"},
    {"Remove", "tag-off"},
    {"Property List", "plist"},
    {"Appearance", "tint"},
    {"ClickImportPhotosAction", "add-files"},
    {"OpenComputerFoldertoImportAction", "image"},
    {"ChangeToImportiOSDevicePhoto", "camera"},
    {"WriteXMPMetadataToPhotosAction", "plist"},
    {"SaveMeidaFileChangesAction", "save"},
    {"revealCurrentItem", "reveal"},
    {"openStorageFolder", "folder-open"},
    {"ShowPreferenceSetting", "settings"},
    {"CloseTheMainWindow", "exit"},
    {"undo", "undo"},
    {"revertEdits", "undo"},
    {"undoRename", "undo"},
    {"ShowRenameWindowAction", "rename"},
    {"RemoveMediaFileAction", "remove"},
    {"ExportSelectedItemAllmetadataAction", "export"},
    {"ExportSelectedItemSelectedmetadataAction", "export"},
    {"ExportSelectedArtWokrmetadataAction", "image"},
    {"ExportAllArtWokrmetadataAction", "image"},
    {"ReloadMetaDataPlistAction", "plist"},
    {"CopyvideofilenametoTitleAction", "text"},
    {"CopyvideoTitletoFileNameAction", "text"},
    {"RemoveSelectedMediaFileAction", "tag-off"},
    {"RemoveAllMediaFileAction", "tag-off"},
    {"EditvideofileDateInfoAction", "dates"},
    {"ChangeDateExifFromPhoto", "dates"},
    {"ClickSetVideoDateFromFileNameAction", "calendar"},
    {"ConvertSelectedMediaFileToGIFAction", "gif"},
    {"MergeSelectedMediaFileFormatAction", "merge"},
    {"removeSoundFromMediaFileFormatAction", "sound-off"},
    {"removeCaptionMediaFileFormatAction", "caption-off"},
    {"AddVideoEffectsMediaFileAction", "tint"},
    {"ClickShowAddWaterMarktoVideoFileAction", "text"},
    {"ClickShowImageWaterMarktoVideoFileAction", "image"},
    {"ExtractSelectedMediaFileAction", "music"},
    {"EditeGPSExifDataPhoto", "pin"},
    {"AddGPSExifDataPhoto", "pin-add"},
    {"ShowMapAction", "map"},
    {"ChangeGPSExifDataPhoto", "pin-off"},
    {"StartEditViewAction", "pencil"},
    {"ClickApplyChangeAction", "check"},
    {"HideEditViewAction", "chevron-left"},
    {"AddDateOnPhotoAction", "stamp"},
    {"OpenDeviceAction", "plug"},
    {"DownloadPhotoAction", "download"},
    {"DownloadImportEditePhotoAction", "download-edit"},
    {"DeletePhotoAction", "trash"},
    {"showList", "list"},
    {"showPhotos", "grid"},
    {"toggleActivity", "activity"},
    {"toggleFullScreen", "fullscreen"},
    {"openCurrentItem", "play"},
    {"chooseArtwork", "image"},
    {"CLICkProductGuide", "help"},
    {"CLICkSupport", "mail"},
    {"ClickAbout", "info"},
};

} // namespace

QString menuImage(const QString& command, const QString& title) {
    static const QHash<QString, QString> images = [] {
        QHash<QString, QString> all;
        for (const MenuImage& row : kMenuImages)
            all.insert(QLatin1String(row.entry), QLatin1String(row.image));
        return all;
    }();
    return images.value(command.isEmpty() ? title : command);
}

} // namespace clipheave::app
