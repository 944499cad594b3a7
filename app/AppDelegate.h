// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"
#include "media/media_kind.h"

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

namespace clipheave::media {
struct ChangeFlags;
struct Preferences;
} // namespace clipheave::media

namespace clipheave::jobs {
struct RunOrder;
struct RunSettings;
struct WriteRequest;
} // namespace clipheave::jobs

namespace clipheave::metadata {
class VideoMetadata;
} // namespace clipheave::metadata

namespace clipheave::photo {
class PhotoEdits;
class PhotoLists;
struct PaneTexts;
struct PhotoRequest;
struct PlaceTexts;
} // namespace clipheave::photo

namespace clipheave::video {
class VideoJobs;
struct VideoJobRequest;
} // namespace clipheave::video

namespace clipheave::app {

class ActivityModel;
class GpsSheet;
class Importer;
class ItemList;
class JobBoard;
class LogFeed;
class MainWindow;
class MapWindow;
class MediaListModel;
class PhotoDatesWindow;
class PreferencesWindow;
class RenameJobs;
class RenameWindow;
struct CommandState;
struct GpsState;
struct ImportState;
struct PaneState;
struct PreferencesState;
struct RenameState;
struct Surroundings;

/// The one controller: owns the windows, the media list and the preference values, and carries
/// every command as one of its operations. Only the main thread calls it, except where a line says
/// otherwise.
class AppDelegate : public QObject, public media::MediaKind {
    Q_OBJECT
public:
    explicit AppDelegate(Surroundings surroundings, QObject* parent = nullptr);
    ~AppDelegate() override;
    /// The controller, for class-level code of app/ alone.
    static AppDelegate* shared();

    // Start and end
    void awakeFromNib();                              ///< builds and fills the interface
    Q_INVOKABLE void applicationDidFinishLaunching(); ///< applies the preferences, shows the window
    Q_INVOKABLE bool windowShouldClose();  ///< the system's close: ends at once, returns yes
    Q_INVOKABLE void CloseTheMainWindow(); ///< asks "Are you sure you want to Exit ?"
    /// Major, minor and fix number of the system; 10, 0, 0 when unknown. Null pointers are left
    /// alone.
    static void getSystemVersionMajor_minor_bugFix(unsigned* major, unsigned* minor,
                                                   unsigned* bugFix);

    // Notifications
    void MyClosebuttonMouseDownHandle(QObject* button);
    void MybuttonMouseDownHandle(QObject* button); ///< the dispatcher
    void PRbuttonMouseEnteredHandle(QObject* button);
    void PRbuttonMouseExitedHandle(QObject* button);
    void PRDragOperationImageNoteHandle(QObject* view);
    void PRDragOperationMediaNoteHandle(QObject* view);
    void NSDragOperationMediaNoteHandle(QObject* view); ///< calls PRDragOperationMediaNoteHandle
    void NSDragOperationImageViewNoteHandle(QObject* view);

    // Preferences, about, feedback
    Q_INVOKABLE void ShowPreferenceSetting();
    Q_INVOKABLE void CancelPreferenceSetting();
    Q_INVOKABLE void ResetPreferenceSetting(); ///< the save button
    Q_INVOKABLE void ChangeStoreLocation();
    Q_INVOKABLE void ClickAbout();
    Q_INVOKABLE void CLICkSupport();
    Q_INVOKABLE void CLICkProductGuide(); ///< does nothing
    Q_INVOKABLE void startProgreess();
    Q_INVOKABLE void
    endProgress(); ///< Deliberate: hides the indicator and starts its animation again
    /// The font panel, "Lucida Grande" at 14 points chosen in it.
    Q_INVOKABLE void ShowFontPanelAction();
    void changeFont(const QFont& font); ///< the font panel chose another
    Q_INVOKABLE void appearanceSystem();
    Q_INVOKABLE void appearanceDark();
    Q_INVOKABLE void appearanceLight();

    // Import
    Q_INVOKABLE void AddMediaFileAction();
    Q_INVOKABLE void ClickImportPhotosAction();
    Q_INVOKABLE void OpenComputerFoldertoImportAction();
    void importPaths(const QStringList& paths); ///< starts the import worker
    void importPhotoPaths(const QStringList& paths);
    void LoadImportedMediasonMainThread();

    // List and panes
    void tableViewSelectionDidChange();
    void tableView_didClickTableColumn(int column);
    Q_INVOKABLE void restoreImportOrder();
    Q_INVOKABLE void RemoveMediaFileAction();
    Q_INVOKABLE void RemoveAllMediaFileAction();
    Q_INVOKABLE void RemoveSelectedMediaFileAction();
    /// Editing begins in the field of this name: sets the flag of its group; always returns yes.
    bool control_textShouldBeginEditing(const QString& field);
    void ShowVideoViewWithItem(const media::ItemPointer& item);
    void ShowAudioViewWithItem(const media::ItemPointer& item);
    Q_INVOKABLE void ChangeToImportComputerPhoto();
    Q_INVOKABLE void revealCurrentItem();
    Q_INVOKABLE void openCurrentItem(); ///< in the desktop's usual program
    Q_INVOKABLE void copyCurrentPath();
    Q_INVOKABLE void chooseArtwork();
    Q_INVOKABLE void pasteArtwork();
    Q_INVOKABLE void revertEdits(); ///< shows the item again, unsaved edits are dropped
    Q_INVOKABLE void openStorageFolder();

    // Writers
    Q_INVOKABLE void SaveMeidaFileChangesAction();
    Q_INVOKABLE void CopyvideoTitletoFileNameAction();
    Q_INVOKABLE void CopyvideofilenametoTitleAction();

    // Rename
    Q_INVOKABLE void ShowRenameWindowAction(); ///< always opens for a custom text
    Q_INVOKABLE void ClickRenamewithCustomtextAction();
    Q_INVOKABLE void ClickRenamewithMetadataAction();
    Q_INVOKABLE void KeepExistingFileNameAction();
    Q_INVOKABLE void InsertPhotoTagsFileNameAction();
    Q_INVOKABLE void CloseRenameWindowAction();
    Q_INVOKABLE void SaveChangesRenameWindowAction(); ///< the rename itself, on a new thread
    Q_INVOKABLE void undoRename(); ///< the files of the last rename get their old names back
    /// The job, on a thread of its own; one after the other.
    void ReNameLocalphotowithFileThreader(const std::function<void()>& rename);
    void RefreshRenamePhotoProcessToMainThread(const QString& progress); ///< "%d/%d"
    void RenamePhotoFinishedHanderToMainThread();

    // Video jobs. The title of the menu entry that starts one chooses what it does.
    Q_INVOKABLE void RotateVideoMediaFileAction();
    Q_INVOKABLE void MergeSelectedMediaFileFormatAction();
    Q_INVOKABLE void SpeedSelectedMediaFileFormatAction();
    Q_INVOKABLE void SlowdownSelectedMediaFileFormatAction();
    Q_INVOKABLE void CompressSelectedMediaFileAction();
    Q_INVOKABLE void ConvertSelectedMediaFileFormatAction();
    Q_INVOKABLE void ConvertSelectedMediaFileToGIFAction();
    Q_INVOKABLE void ExtractSelectedMediaFileAction();
    Q_INVOKABLE void ExtractImagesSelectedMediaFileAction();
    Q_INVOKABLE void removeSoundFromMediaFileFormatAction();
    // Their workers, each on a thread of its own.
    void RotateVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                          const video::VideoJobRequest& request);
    void MergeVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                         const video::VideoJobRequest& request);
    void SpeedUpVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                           const video::VideoJobRequest& request);
    void SlowDownVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                            const video::VideoJobRequest& request);
    void CompressVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                            const video::VideoJobRequest& request);
    void ConvertVideoMediaFileFileThreader(video::VideoJobs& jobs,
                                           const video::VideoJobRequest& request);
    void ConvertGIFMediaFileFileThreader(video::VideoJobs& jobs,
                                         const video::VideoJobRequest& request);
    void ExtractAudioMediaFileFileThreader(video::VideoJobs& jobs,
                                           const video::VideoJobRequest& request);
    void ExtractImagesMediaFileFileThreader(video::VideoJobs& jobs,
                                            const video::VideoJobRequest& request);
    void RemoveAudioMediaFileFileThreader(video::VideoJobs& jobs,
                                          const video::VideoJobRequest& request);
    /// A worker has started all its exports, which may still run: stops the busy indicator.
    void BatchVideosItemCompleteToMainThread();

    // Photos
    Q_INVOKABLE void AddDateOnPhotoAction(); ///< stamped copies, by the preferences
    // Property lists of the selection, one file each but for the last.
    Q_INVOKABLE void RemoveIPTCDataFromPhoto();
    Q_INVOKABLE void RemoveExifDataFromPhoto();
    Q_INVOKABLE void RemoveGPSDataFromPhoto();
    Q_INVOKABLE void DeleteExifAndGPSData();
    Q_INVOKABLE void DeleteAllPhotoMetadataData();
    Q_INVOKABLE void ExportTiffInfoToPlist();
    Q_INVOKABLE void ExportExifInfoToPlist();
    Q_INVOKABLE void ExportExifandTiffInfoToPlist();
    Q_INVOKABLE void ExportExifandGPSInfoToPlist();
    Q_INVOKABLE void ExportTemplateDataToPlist();
    Q_INVOKABLE void ExportAllMetadataInfoToPlist();
    Q_INVOKABLE void WriteSelectedItemsExifDataToPlist(); ///< a file for each photo
    Q_INVOKABLE void ImportPlistToPhotos();               ///< copies with what a list says
    Q_INVOKABLE void ImportTemplateToPhotos();
    // The photo pane
    Q_INVOKABLE void StartEditViewAction(); ///< for the selection; in the grid of photos
    Q_INVOKABLE void HideEditViewAction();  ///< what was typed stays until another photo is shown
    /// Copies of the selected photos with the changed sections of the pane.
    Q_INVOKABLE void ClickApplyChangeAction();
    Q_INVOKABLE void ChangeDateExifFromPhoto(); ///< shows the dates of the selected photo

    // Positions of photos. The sheet writes to what was selected when it was opened.
    Q_INVOKABLE void EditeGPSExifDataPhoto();  ///< opens it with the GPS data of the selected photo
    Q_INVOKABLE void AddGPSExifDataPhoto();    ///< opens it empty
    Q_INVOKABLE void ChangeGPSExifDataPhoto(); ///< opens it to write a position and drop EXIF
    Q_INVOKABLE void PreviewCurrentGPSInMap();
    Q_INVOKABLE void ClickSaveChangeGPSAction(); ///< the sheet's primary button
    Q_INVOKABLE void ShowMapAction();            ///< the position of the selected photo

    /// Logs that a command is not available yet.
    Q_INVOKABLE void notAvailableYet(const QString& command);
    /// Runs the command of this fixed name, or logs that it is not available yet. `title`: the
    /// fixed title of the menu entry, empty for a button.
    void performCommand(const QString& name, const QString& title = {});

    [[nodiscard]] MainWindow* mainWindow() const { return m_window.get(); }
    [[nodiscard]] PreferencesWindow* preferencesWindow() const { return m_preferencesWindow.get(); }
    [[nodiscard]] RenameWindow* renameWindow() const { return m_renameWindow.get(); }
    [[nodiscard]] GpsSheet* gpsSheet() const { return m_gpsSheet.get(); }
    [[nodiscard]] MapWindow* mapWindow() const { return m_mapWindow.get(); }
    [[nodiscard]] PhotoDatesWindow* photoDatesWindow() const { return m_photoDatesWindow.get(); }
    [[nodiscard]] ActivityModel* activity() const { return m_activity.get(); }
    [[nodiscard]] JobBoard* board() const { return m_board.get(); }
    [[nodiscard]] MediaListModel* mediaController() const { return m_mediaController.get(); }
    [[nodiscard]] const std::vector<media::ItemPointer>& localPhotoItemArray() const;
    [[nodiscard]] QString storagelocation() const;
    [[nodiscard]] const media::Preferences& preferences() const;
    [[nodiscard]] media::ChangeFlags changeFlags() const;
    /// Degrees, as the position fields held them when an edit began there last: latitude in x,
    /// longitude in y.
    [[nodiscard]] QPointF currentCoords() const;
    [[nodiscard]] bool isImporting() const;
    /// Whether the position sheet was opened to add, not to edit.
    [[nodiscard]] bool bAddGPS() const;

    Q_SIGNAL void importFinished();
    Q_SIGNAL void saveFinished();
    Q_SIGNAL void renameFinished(); ///< a rename or its undoing

private:
    void connectPanes();
    void connectPhotoPane();
    void connectPreferences();
    void connectRename();
    void connectGps();
    void applyPreferenceValues();
    /// Writes items as the operation says, in a job of this title; without items the alert.
    void writeItems(void (metadata::VideoMetadata::*writer)(const jobs::WriteRequest& request),
                    const QString& title, const std::vector<media::ItemPointer>& items);
    using VideoWorker = void (AppDelegate::*)(video::VideoJobs& jobs,
                                              const video::VideoJobRequest& request);
    void detachVideoWorker(VideoWorker worker, const QString& activity);
    /// Starts a job that writes outputs: a row in the activity panel, the outputs shown at the end.
    void startWriting(const QString& title, jobs::RunOrder order);
    void removeBlocks(void (photo::PhotoEdits::*remove)(const photo::PhotoRequest& request),
                      const QString& title);
    void exportLists(void (photo::PhotoLists::*write)(const photo::PhotoRequest& request),
                     const QString& title);
    void chooseListToImport(const QString& title);
    [[nodiscard]] jobs::RunSettings runSettings() const;
    [[nodiscard]] std::vector<media::ItemPointer> selectedItems() const;
    /// The photo of the selection that is shown: the current one, else the first; null when none is
    /// selected.
    [[nodiscard]] media::ItemPointer selectedPhoto() const;
    /// Changes the items of these paths, in the list and in the pane.
    void changeItems(const QStringList& paths, const media::ItemChange& change);
    void takeArtwork(const QString& path);
    /// Fills the photo pane from the selection.
    void refreshPhotoPane();
    void showPhoto(const media::ItemPointer& item);
    void startApply(const photo::PhotoRequest& request, const photo::PaneTexts& texts);
    /// Returns the item of the pane that is shown; null for none.
    [[nodiscard]] media::ItemPointer currentItem() const;
    void refreshSummary();
    void refreshRenameItems();
    void openGpsSheet(const media::ItemPointer& photo, const photo::PlaceTexts& place);
    void showNoGpsAlert(const QString& text);
    void showNoSelectionAlert();
    void showValueErrorAlert();

    std::unique_ptr<Surroundings> m_surroundings;
    std::unique_ptr<CommandState> m_command;
    std::unique_ptr<PreferencesState> m_preferences;
    std::unique_ptr<ImportState> m_import;
    std::unique_ptr<PaneState> m_pane;
    std::unique_ptr<RenameState> m_rename;
    std::unique_ptr<GpsState> m_gps;
    std::unique_ptr<ActivityModel> m_activity;
    std::unique_ptr<JobBoard> m_board; ///< what runs, and another try of it
    std::unique_ptr<LogFeed> m_log;
    std::unique_ptr<MediaListModel> m_mediaController;
    std::unique_ptr<ItemList> m_list;
    std::unique_ptr<Importer> m_importer;
    std::unique_ptr<RenameJobs> m_renameJobs;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<PreferencesWindow> m_preferencesWindow;
    std::unique_ptr<RenameWindow> m_renameWindow;
    std::unique_ptr<GpsSheet> m_gpsSheet;
    std::unique_ptr<MapWindow> m_mapWindow;
    std::unique_ptr<PhotoDatesWindow> m_photoDatesWindow;
};

} // namespace clipheave::app
