// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/command_tables.h"

#include "video/video_titles.h"

#include <algorithm>
#include <array>
#include <iterator>

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

constexpr MenuEntry subMenu(const char* title, std::span<const MenuEntry> entries) {
    return {title, nullptr, nullptr, entries.data(), static_cast<int>(entries.size())};
}

/// Returns an entry for each title that starts a video job; all have the one command.
template <class Value, std::size_t count>
consteval auto entriesOf(const video::Title<Value> (&titles)[count], const char* command) {
    std::array<MenuEntry, count> entries{};
    for (std::size_t i = 0; i < count; ++i)
        entries[i] = {titles[i].title, command, nullptr};
    return entries;
}

template <std::size_t first, std::size_t second>
consteval auto joined(const std::array<MenuEntry, first>& head, const MenuEntry (&tail)[second]) {
    std::array<MenuEntry, first + second> entries{};
    std::copy(std::begin(tail), std::end(tail),
              std::copy(head.begin(), head.end(), entries.begin()));
    return entries;
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
constexpr auto kConvert =
    joined(entriesOf(video::kConversions, "ConvertSelectedMediaFileFormatAction"),
           {kSeparator, {"Convert to GIF", "ConvertSelectedMediaFileToGIFAction", nullptr}});
constexpr auto kCompress = entriesOf(video::kQualities, "CompressSelectedMediaFileAction");
constexpr auto kRotate = [] {
    auto entries = entriesOf(video::kRotations, "RotateVideoMediaFileAction");
    entries.front().shortcut = "Ctrl+R";
    entries.back().shortcut = "Ctrl+L";
    return entries;
}();
constexpr auto kSpeedUp = entriesOf(video::kSpeedUps, "SpeedSelectedMediaFileFormatAction");
constexpr auto kSlowDown = entriesOf(video::kSlowDowns, "SlowdownSelectedMediaFileFormatAction");
constexpr auto kExtractImages =
    entriesOf(video::kIntervals, "ExtractImagesSelectedMediaFileAction");
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
constexpr auto kExtract = [] {
    std::array<MenuEntry, kExtractImages.size() + 2> entries{
        {{"Extract Audio", "ExtractSelectedMediaFileAction", "Ctrl+U"}, kSeparator}};
    std::copy(kExtractImages.begin(), kExtractImages.end(), entries.begin() + 2);
    return entries;
}();
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
constexpr MenuEntry kTemplate[] = {
    {"Export Template", "ExportTemplateDataToPlist", nullptr},
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
    {"editTemplateMenu", nullptr, kTemplate},
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
