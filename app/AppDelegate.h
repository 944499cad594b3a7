// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"
#include "media/media_kind.h"

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace clipheave::batch {
struct RenameBatch;
} // namespace clipheave::batch

namespace clipheave::media {
class MediaImport;
struct ChangeFlags;
struct Preferences;
} // namespace clipheave::media

namespace clipheave::jobs {
class Run;
struct RunSettings;
struct WriteRequest;
} // namespace clipheave::jobs

namespace clipheave::platform {
struct LogLine;
class LogSubscription;
} // namespace clipheave::platform

namespace clipheave::video {
class VideoJobs;
struct VideoJobRequest;
} // namespace clipheave::video

namespace clipheave::app {

enum class Appearance;
class ActivityModel;
struct BoardJob;
class JobBoard;
class MainWindow;
class MediaListModel;
class PreferencesWindow;
class RenameWindow;
struct ImportState;
struct ListState;
struct PaneState;
struct PreferencesState;
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
    /// Every export of a worker is on its way: the busy indicator rests. The exports may still run.
    void BatchVideosItemCompleteToMainThread();

    /// A command of a tool that is still to come: a line in the activity log.
    Q_INVOKABLE void notAvailableYet(const QString& command);
    /// Runs the command of this fixed name, or says that it is not available yet. `title`: the
    /// fixed title of the menu entry, empty for a button.
    void performCommand(const QString& name, const QString& title = {});

    [[nodiscard]] MainWindow* mainWindow() const { return m_window.get(); }
    [[nodiscard]] PreferencesWindow* preferencesWindow() const { return m_preferencesWindow.get(); }
    [[nodiscard]] RenameWindow* renameWindow() const { return m_renameWindow.get(); }
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

    /// What a writing command does.
    enum class JobKind { Save, RemoveMetadata, TitleToName, NameToTitle };

    Q_SIGNAL void importFinished();
    Q_SIGNAL void saveFinished();
    Q_SIGNAL void renameFinished(); ///< a rename or its undoing

private:
    void observeNotifications();
    void takeLogLines();
    void takeLogLine(const platform::LogLine& line);
    void connectWindow();
    void connectPanes();
    void connectPreferences();
    void retryImport(const QStringList& paths, bool photos);
    /// The items of these paths, in their order; a path that the list does not hold gives none.
    [[nodiscard]] std::vector<media::ItemPointer> itemsAt(const QStringList& paths);
    /// Puts changed copies in the place of the items of these paths, in the list and what it shows.
    /// Who holds an item keeps it as it was.
    void changeItems(const QStringList& paths, const media::ItemChange& change);
    /// Takes items off the list, which then stands in import order.
    void removeItems(const std::function<bool(const media::IKImageItem&)>& goes);
    void chooseAppearance(Appearance appearance);
    void storeStampChoices();
    void writeItems(JobKind kind, const std::vector<media::ItemPointer>& items);
    void startWrite(JobKind kind, const std::vector<media::ItemPointer>& items);
    [[nodiscard]] jobs::RunSettings runSettings() const;
    [[nodiscard]] std::vector<jobs::WriteRequest>
    writeRequests(const std::vector<media::ItemPointer>& items) const;
    void applyPreferenceValues();
    void runImport(const QStringList& paths, bool photos);
    void appendNewItem(int job, const media::ItemPointer& item);
    void finishImport(const media::MediaImport& import, int job);
    [[nodiscard]] std::vector<media::ItemPointer> selectedItems() const;
    struct WriteTally;
    /// Shows the outcomes of a job that writes outputs, and reveals these at its end.
    void reportWriting(BoardJob& job, bool tellsSizes = false);
    void endWriting(int job, const WriteTally& tally);
    [[nodiscard]] QStringList allPaths() const;
    using VideoWorker = void (AppDelegate::*)(video::VideoJobs& jobs,
                                              const video::VideoJobRequest& request);
    void detachVideoWorker(VideoWorker worker, const QString& activity);
    void connectRename();
    void refreshRenameItems();
    void startRename(const std::shared_ptr<batch::RenameBatch>& batch);
    void nothingToRename();
    void showRenameProgress(int job, std::size_t taken);
    void endRename(int job, const jobs::Run& run);
    void restoreItemNames(const QStringList& paths);
    void takeArtwork(const QString& path);
    void refreshSummary();
    void showNoSelectionAlert();

    std::unique_ptr<Surroundings> m_surroundings;
    std::unique_ptr<PreferencesState> m_preferences;
    std::unique_ptr<ImportState> m_import;
    std::unique_ptr<ListState> m_list;
    std::unique_ptr<PaneState> m_pane;
    unsigned m_macOsVer = 0;             ///< minor number of the system's version
    std::atomic<bool> m_stopping{false}; ///< read by workers
    bool m_useCustomName = true;         ///< the mode of the rename window
    int m_runningRenames = 0;
    QString m_commandTitle; ///< of the menu entry whose command runs
    std::unique_ptr<platform::LogSubscription> m_logLines;
    std::unique_ptr<ActivityModel> m_activity;
    std::unique_ptr<JobBoard> m_board; ///< what runs, and another try of it
    std::unique_ptr<MediaListModel> m_mediaController;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<PreferencesWindow> m_preferencesWindow;
    std::unique_ptr<RenameWindow> m_renameWindow;
};

} // namespace clipheave::app
