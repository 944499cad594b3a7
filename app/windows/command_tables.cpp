// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/command_tables.h"

namespace clipheave::app {

namespace {

constexpr auto kCommand = DispatchKind::Command;
constexpr auto kMenu = DispatchKind::Menu;

constexpr DispatchRow kDispatchRows[] = {
    {"opendeviceBtn", "opendevice.png", nullptr, kCommand, "OpenDeviceAction"},
    {"deletePhotoBtn", "delete.png", nullptr, kCommand, "DeletePhotoAction"},
    {"downloadPhotoBtn", "downloadphoto.png", nullptr, kCommand, "DownloadPhotoAction"},
    {"importEditPhotoBtn", "importphototoedit.png", nullptr, kCommand,
     "DownloadImportEditePhotoAction"},
    {"viewExifBtn", "editphotometa.png", nullptr, kMenu, "editExifMenu"},
    {"removeExifBtn", "deletemetadata.png", nullptr, kMenu, "removeExifMenu"},
    {"importPhotobtn", nullptr, nullptr, kMenu, "importPhotoMenu"},
    {"remoMetaDataLocalBtn", nullptr, nullptr, kMenu, "removeExifMenu"},
    {"extractMetaBtn", nullptr, nullptr, kMenu, "extractMetaMenu"},
    {"convertAndCompressBtn", nullptr, nullptr, kMenu, "convertAndCompressMenu"},
    {"SaveMediaChangesBtn", "extractmetadown.png", "extractmetanom.png", kCommand,
     "SaveMeidaFileChangesAction"},
    {"editMetaDataLocalBtn", nullptr, nullptr, kMenu, "editExifMenu"},
    {"importandExportBtn", nullptr, nullptr, kMenu, "importandExportMenu"},
    {"cameraphotoBtn", "cameraphotodown.png", nullptr, kCommand, "ChangeToImportiOSDevicePhoto"},
    {"localphotoBtn", "localphotodown.png", nullptr, kCommand, "ChangeToImportComputerPhoto"},
    {"editBackBtn", "backdown.png", nullptr, kCommand, "HideEditViewAction"},
    {"editTemplateBtn", "templatedown.png", nullptr, kCommand, "ExportTemplateDataToPlist"},
    {"editApplyBtn", "applydown.png", nullptr, kCommand, "ClickApplyChangeAction"},
    {"starteditBtn", "editdown.png", "editnom.png", kCommand, "StartEditViewAction"},
    {"localeditexifBtn", "editexifnom.png", nullptr, kCommand, "StartEditViewAction"},
    {"changePhotoDateBtn", "savechanges.png", nullptr, kMenu, "changePhotoDateMenu"},
    {"changeMutiPhotoDateBtn", "savechanges.png", nullptr, kMenu, "changeMutiPhotoDateMenu"},
    {"writeXmpBtn", nullptr, nullptr, kCommand, "BatchWriteXMPFileToVideoAction"},
    {"CancelXmpBtn", nullptr, nullptr, kCommand, "CanelXMPMetadataToPhotosAction"},
    {"videoRenameBtn", "renamebtn.png", nullptr, kCommand, "ShowRenameWindowAction"},
    {"videoCompressBtn", "compressbtn.png", nullptr, kMenu, "videoCompressMenu"},
    {"videoConvertBtn", "convertbtn.png", nullptr, kMenu, "VideoConvertMenu"},
    {"videoWaterMarkBtn", "watermarkbtn.png", nullptr, kMenu, "videoWaterMarkMenu"},
    {"videoExtractBtn", "extractbtn.png", nullptr, kMenu, "videoExtractMenu"},
    {"videoEditBtn", "editbtn.png", nullptr, kMenu, "videoEditMenu"},
    {"addImgWaterMarkBtn", nullptr, nullptr, kCommand, "OpenPhototoAddWaterMarkAction"},
};

constexpr MenuEntry kSeparator{nullptr, nullptr, nullptr};

template <int Count>
constexpr MenuEntry subMenu(const char* title, const MenuEntry (&entries)[Count]) {
    return {title, nullptr, nullptr, entries, Count};
}

constexpr MenuEntry kImport[] = {
    {"Files or Folders…", "ClickImportPhotosAction", "Ctrl+O"},
    {"Photos…", "OpenComputerFoldertoImportAction", "Ctrl+Shift+O"},
    {"From a Device…", "ChangeToImportiOSDevicePhoto", "Ctrl+3"},
    {"XMP Sidecars…", "WriteXMPMetadataToPhotosAction", "Ctrl+I"},
};
constexpr MenuEntry kMetadata[] = {
    {"Export Metadata", "ExportSelectedItemAllmetadataAction", "Ctrl+Shift+E"},
    {"Export Chosen Fields…", "ExportSelectedItemSelectedmetadataAction", nullptr},
    {"Extract Artwork of Selected", "ExportSelectedArtWokrmetadataAction", nullptr},
    {"Extract Artwork of All", "ExportAllArtWokrmetadataAction", nullptr},
    {"Reload Metadata…", "ReloadMetaDataPlistAction", "Ctrl+Shift+L"},
    kSeparator,
    {"Copy File Name to Title", "CopyvideofilenametoTitleAction", nullptr},
    {"Copy Title to File Name", "CopyvideoTitletoFileNameAction", nullptr},
    kSeparator,
    {"Remove Metadata of Selected", "RemoveSelectedMediaFileAction", "Ctrl+Shift+Del"},
    {"Remove Metadata of All", "RemoveAllMediaFileAction", nullptr},
};
constexpr MenuEntry kConvert[] = {
    {"Convert to MP4", "ConvertSelectedMediaFileFormatAction", nullptr},
    {"Convert to MOV", "ConvertSelectedMediaFileFormatAction", nullptr},
    {"Convert to M4V", "ConvertSelectedMediaFileFormatAction", nullptr},
    kSeparator,
    {"Convert to GIF", "ConvertSelectedMediaFileToGIFAction", nullptr},
};
constexpr MenuEntry kCompress[] = {
    {"High video quality", "CompressSelectedMediaFileAction", nullptr},
    {"Medium video quality", "CompressSelectedMediaFileAction", nullptr},
    {"Low video quality", "CompressSelectedMediaFileAction", nullptr},
};
constexpr MenuEntry kRotate[] = {
    {"right (clockwise) by 90 degrees", "RotateVideoMediaFileAction", "Ctrl+R"},
    {"right (clockwise) by 180 degrees", "RotateVideoMediaFileAction", nullptr},
    {"right (clockwise) by 270 degrees", "RotateVideoMediaFileAction", "Ctrl+L"},
};
constexpr MenuEntry kSpeedUp[] = {
    {"0.2X", "SpeedSelectedMediaFileFormatAction", nullptr},
    {"0.5X", "SpeedSelectedMediaFileFormatAction", nullptr},
    {"1X", "SpeedSelectedMediaFileFormatAction", nullptr},
    {"2X", "SpeedSelectedMediaFileFormatAction", nullptr},
    {"4X", "SpeedSelectedMediaFileFormatAction", nullptr},
    {"8X", "SpeedSelectedMediaFileFormatAction", nullptr},
};
constexpr MenuEntry kSlowDown[] = {
    {"0.2X", "SlowdownSelectedMediaFileFormatAction", nullptr},
    {"0.5X", "SlowdownSelectedMediaFileFormatAction", nullptr},
    {"1X", "SlowdownSelectedMediaFileFormatAction", nullptr},
};
constexpr MenuEntry kEditVideo[] = {
    subMenu("Rotate", kRotate),
    subMenu("Speed Up", kSpeedUp),
    subMenu("Slow Down", kSlowDown),
    kSeparator,
    {"Merge", "MergeSelectedMediaFileFormatAction", "Ctrl+M"},
    kSeparator,
    {"Remove Sound", "removeSoundFromMediaFileFormatAction", nullptr},
    {"Remove Captions", "removeCaptionMediaFileFormatAction", nullptr},
    {"Black and White", "AddVideoEffectsMediaFileAction", nullptr},
};
constexpr MenuEntry kWatermark[] = {
    {"Text Watermark…", "ClickShowAddWaterMarktoVideoFileAction", "Ctrl+T"},
    {"Image Watermark…", "ClickShowImageWaterMarktoVideoFileAction", "Ctrl+Shift+T"},
};
constexpr MenuEntry kExtract[] = {
    {"Extract Audio", "ExtractSelectedMediaFileAction", "Ctrl+U"},
    kSeparator,
    {"5 pics per second", "ExtractImagesSelectedMediaFileAction", nullptr},
    {"1 pic per second", "ExtractImagesSelectedMediaFileAction", nullptr},
    {"1 pic every 5 seconds", "ExtractImagesSelectedMediaFileAction", nullptr},
    {"1 pic every 10 seconds", "ExtractImagesSelectedMediaFileAction", nullptr},
    {"1 pic every 30 seconds", "ExtractImagesSelectedMediaFileAction", nullptr},
};
constexpr MenuEntry kEditExif[] = {
    {"Edit GPS…", "EditeGPSExifDataPhoto", "Ctrl+G"},
    {"Add GPS…", "AddGPSExifDataPhoto", nullptr},
    {"Show on Map", "ShowMapAction", "Ctrl+Shift+M"},
    kSeparator,
    {"Change Dates…", "ChangeDateExifFromPhoto", nullptr},
    kSeparator,
    {"Copy File Name to Comments", "ClickCopyFileNameToCommentsAction", nullptr},
    {"Copy Created Date to Camera Date", "ClickCopyCreatedDateToCameraDateAction", nullptr},
    {"Copy Camera Date to Created Date", "ClickCopyExifDateToCreateDateAction", nullptr},
};
constexpr MenuEntry kRemoveExif[] = {
    {"EXIF", "RemoveExifDataFromPhoto", nullptr},
    {"GPS", "RemoveGPSDataFromPhoto", nullptr},
    {"IPTC", "RemoveIPTCDataFromPhoto", nullptr},
    {"EXIF and GPS", "DeleteExifAndGPSData", nullptr},
    {"All Metadata", "DeleteAllPhotoMetadataData", nullptr},
    kSeparator,
    {"Change GPS and Remove EXIF…", "ChangeGPSExifDataPhoto", nullptr},
};
constexpr MenuEntry kPropertyList[] = {
    {"Export TIFF", "ExportTiffInfoToPlist", nullptr},
    {"Export EXIF", "ExportExifInfoToPlist", nullptr},
    {"Export EXIF and TIFF", "ExportExifandTiffInfoToPlist", nullptr},
    {"Export EXIF and GPS", "ExportExifandGPSInfoToPlist", nullptr},
    {"Export Template", "ExportTemplateDataToPlist", nullptr},
    {"Export All Metadata", "ExportAllMetadataInfoToPlist", nullptr},
    {"Export Each Photo", "WriteSelectedItemsExifDataToPlist", nullptr},
    kSeparator,
    {"Import Property List…", "ImportPlistToPhotos", nullptr},
    {"Import Template…", "ImportTemplateToPhotos", nullptr},
};
constexpr MenuEntry kStamp[] = {
    {"Add Date on Photos", "AddDateOnPhotoAction", nullptr},
    kSeparator,
    {"Stamp Settings…", "ShowPreferenceSetting", nullptr},
};
constexpr MenuEntry kChangeDate[] = {
    {"Change Camera Date", "ClickDateChangedSaveAction", nullptr},
    {"Change File Dates", "ClickCreatedDateChangedSaveAction", nullptr},
};

constexpr MenuEntry kFile[] = {
    {"Add Files or Folders…", "ClickImportPhotosAction", "Ctrl+O"},
    {"Add Photos…", "OpenComputerFoldertoImportAction", "Ctrl+Shift+O"},
    {"Add from Device…", "ChangeToImportiOSDevicePhoto", "Ctrl+3"},
    {"Import XMP Sidecars…", "WriteXMPMetadataToPhotosAction", "Ctrl+I"},
    kSeparator,
    {"Save Changes", "SaveMeidaFileChangesAction", "Ctrl+S"},
    kSeparator,
    {"Show in File Manager", "revealCurrentItem", "Ctrl+E"},
    {"Open Storage Folder", "openStorageFolder", "Ctrl+Shift+F"},
    kSeparator,
    {"Preferences…", "ShowPreferenceSetting", "Ctrl+,"},
    {"Exit", "CloseTheMainWindow", "Ctrl+Q"},
};
constexpr MenuEntry kEdit[] = {
    {"Undo", "undo", "Ctrl+Z"},
    {"Redo", "redo", "Ctrl+Shift+Z"},
    kSeparator,
    {"Cut", "cut", "Ctrl+X"},
    {"Copy", "copy", "Ctrl+C"},
    {"Paste", "paste", "Ctrl+V"},
    kSeparator,
    {"Select All", "selectAll", "Ctrl+A"},
    {"Deselect", "deselect", "Ctrl+Shift+A"},
    kSeparator,
    {"Rename…", "ShowRenameWindowAction", "F2"},
    {"Undo Rename", "undoRename", nullptr},
    {"Remove from List", "RemoveMediaFileAction", "Del"},
};
constexpr MenuEntry kDates[] = {
    {"Change Dates…", "EditvideofileDateInfoAction", "Ctrl+D"},
    {"Set Video Date from File Name", "ClickSetVideoDateFromFileNameAction", "Ctrl+Shift+D"},
    kSeparator,
    {"Copy Created Date to Modified Date", "ClickCopyCreatedDateToModifyDateAction", nullptr},
    {"Copy Modified Date to Created Date", "ClickCopyModiyDateToCreateDateAction", nullptr},
    {"Copy Video Record Date to Created Date", "ClickCopyVideoExifDateToCreateDateAction", nullptr},
    {"Copy Video Created Date to Record Date", "ClickCopyVideoCreatedDateToCameraDateAction",
     nullptr},
};
constexpr MenuEntry kExtractImages[] = {
    {"5 pics per second", "ExtractImagesSelectedMediaFileAction", nullptr},
    {"1 pic per second", "ExtractImagesSelectedMediaFileAction", nullptr},
    {"1 pic every 5 seconds", "ExtractImagesSelectedMediaFileAction", nullptr},
    {"1 pic every 10 seconds", "ExtractImagesSelectedMediaFileAction", nullptr},
    {"1 pic every 30 seconds", "ExtractImagesSelectedMediaFileAction", nullptr},
};
constexpr MenuEntry kVideo[] = {
    subMenu("Convert", kConvert),
    subMenu("Compress", kCompress),
    subMenu("Rotate", kRotate),
    subMenu("Speed Up", kSpeedUp),
    subMenu("Slow Down", kSlowDown),
    {"Merge", "MergeSelectedMediaFileFormatAction", "Ctrl+M"},
    kSeparator,
    {"Text Watermark…", "ClickShowAddWaterMarktoVideoFileAction", "Ctrl+T"},
    {"Image Watermark…", "ClickShowImageWaterMarktoVideoFileAction", "Ctrl+Shift+T"},
    kSeparator,
    {"Extract Audio", "ExtractSelectedMediaFileAction", "Ctrl+U"},
    subMenu("Extract Images", kExtractImages),
    kSeparator,
    {"Remove Sound", "removeSoundFromMediaFileFormatAction", nullptr},
    {"Remove Captions", "removeCaptionMediaFileFormatAction", nullptr},
    {"Black and White", "AddVideoEffectsMediaFileAction", nullptr},
};
constexpr MenuEntry kPhoto[] = {
    {"Edit", "StartEditViewAction", "Ctrl+Return"},
    {"Apply", "ClickApplyChangeAction", "Ctrl+Shift+Return"},
    {"Back", "HideEditViewAction", nullptr},
    kSeparator,
    {"Edit GPS…", "EditeGPSExifDataPhoto", "Ctrl+G"},
    {"Add GPS…", "AddGPSExifDataPhoto", nullptr},
    {"Show on Map", "ShowMapAction", "Ctrl+Shift+M"},
    kSeparator,
    {"Change Dates…", "ChangeDateExifFromPhoto", nullptr},
    subMenu("Remove", kRemoveExif),
    subMenu("Property List", kPropertyList),
    kSeparator,
    {"Add Date on Photos", "AddDateOnPhotoAction", nullptr},
};
constexpr MenuEntry kDevice[] = {
    {"Show Device Window", "ChangeToImportiOSDevicePhoto", nullptr},
    {"Open Device", "OpenDeviceAction", nullptr},
    kSeparator,
    {"Download", "DownloadPhotoAction", nullptr},
    {"Download and Edit", "DownloadImportEditePhotoAction", nullptr},
    {"Delete", "DeletePhotoAction", nullptr},
};
constexpr MenuEntry kAppearance[] = {
    {"Follow System", "appearanceSystem", nullptr},
    {"Dark", "appearanceDark", nullptr},
    {"Light", "appearanceLight", nullptr},
};
constexpr MenuEntry kView[] = {
    {"List", "showList", "Ctrl+1"},
    {"Photos", "showPhotos", "Ctrl+2"},
    {"Import Order", "restoreImportOrder", nullptr},
    kSeparator,
    {"Detail Pane", "toggleDetailPane", "Ctrl+\\"},
    {"Activity", "toggleActivity", "Ctrl+J"},
    kSeparator,
    subMenu("Appearance", kAppearance),
    {"Full Screen", "toggleFullScreen", "F11"},
};
constexpr MenuEntry kDetailMore[] = {
    {"Copy Path", "copyCurrentPath", nullptr},
    {"Open with Default Application", "openCurrentItem", nullptr},
    kSeparator,
    {"Choose Artwork…", "chooseArtwork", nullptr},
    {"Paste Artwork", "pasteArtwork", nullptr},
    kSeparator,
    {"Undo Edits", "revertEdits", nullptr},
};
constexpr MenuEntry kHelp[] = {
    {"Product Guide", "CLICkProductGuide", "F1"},
    {"Send Feedback…", "CLICkSupport", nullptr},
    {"About ClipHeave", "ClickAbout", nullptr},
};

constexpr MenuTable kPopUps[] = {
    {"importPhotoMenu", nullptr, kImport},
    {"extractMetaMenu", nullptr, kMetadata},
    {"VideoConvertMenu", nullptr, kConvert},
    {"videoCompressMenu", nullptr, kCompress},
    {"videoEditMenu", nullptr, kEditVideo},
    {"videoWaterMarkMenu", nullptr, kWatermark},
    {"videoExtractMenu", nullptr, kExtract},
    {"editExifMenu", nullptr, kEditExif},
    {"removeExifMenu", nullptr, kRemoveExif},
    {"importandExportMenu", nullptr, kPropertyList},
    {"convertAndCompressMenu", nullptr, kStamp},
    {"changePhotoDateMenu", nullptr, kChangeDate},
    {"changeMutiPhotoDateMenu", nullptr, kChangeDate},
    {"datesMenu", nullptr, kDates},
    {"detailMoreMenu", nullptr, kDetailMore},
};

constexpr MenuTable kMenuBar[] = {
    {"fileMenu", "&File", kFile},
    {"editMenu", "&Edit", kEdit},
    {"metadataMenu", "&Metadata", kMetadata},
    {"datesBarMenu", "&Dates", kDates},
    {"videoMenu", "&Video", kVideo},
    {"photoMenu", "&Photo", kPhoto},
    {"deviceMenu", "Dev&ice", kDevice},
    {"viewMenu", "Vie&w", kView},
    {"helpMenu", "&Help", kHelp},
};

} // namespace

std::span<const DispatchRow> dispatchRows() {
    return kDispatchRows;
}
std::span<const MenuTable> popUpMenus() {
    return kPopUps;
}
std::span<const MenuTable> menuBarMenus() {
    return kMenuBar;
}

} // namespace clipheave::app
