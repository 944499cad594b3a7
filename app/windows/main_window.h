// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QMainWindow>
#include <QStringList>

class QAbstractItemView;
class QMenu;
class QSettings;
class QSplitter;
class QStackedWidget;

namespace clipheave::app {

class ActivityBar;
class ActivityModel;
class ActivityPanel;
class DetailPane;
class ListHead;
class MediaListModel;
class MediaTableView;
class PhotoGrid;
class PhotoPane;
class Segment;
class StorageChip;
struct MenuEntry;
class TitleBar;

/// The single window: tools on top, list and detail pane in the middle, activity at the bottom. It
/// shows and emits signals; the controller carries out the commands.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    /// `settings` keep the layout from start to start and outlive the window.
    MainWindow(MediaListModel& model, ActivityModel& activity, QSettings& settings);
    ~MainWindow() override;

    [[nodiscard]] DetailPane* detailPane() const { return m_detailPane; }
    [[nodiscard]] PhotoPane* photoPane() const { return m_photoPane; }
    [[nodiscard]] MediaTableView* table() const { return m_table; }
    [[nodiscard]] PhotoGrid* photoGrid() const { return m_grid; }
    [[nodiscard]] ActivityPanel* activityPanel() const { return m_activityPanel; }

    /// Whether the layout is stored. Off for a window that is only painted into a file: its size is
    /// not the user's choice.
    void setKeepsLayout(bool keeps) { m_keepsLayout = keeps; }

    // Selection, in rows of the view that is shown
    [[nodiscard]] int currentRow() const;
    [[nodiscard]] QList<int> selectedRows() const; ///< ascending
    void selectRow(int row);                       ///< -1: none

    // Views
    void showEmptyState();
    void showMediaList(); ///< the list area in place of the placeholders
    Q_INVOKABLE void showComputer();
    Q_INVOKABLE void showList();
    Q_INVOKABLE void showPhotos();
    void showPhotosOfList(); ///< the rows selected in the table are selected in the grid, too
    /// Shows the photo pane beside the grid, or gives the grid all the width.
    void setEditsPhotos(bool edits);
    /// Returns whether the photo pane is shown, and with it the fields that it shares.
    [[nodiscard]] bool editsPhotos() const;
    [[nodiscard]] bool showsPhotos() const;
    Q_INVOKABLE void toggleDetailPane();
    Q_INVOKABLE void toggleActivity();
    Q_INVOKABLE void toggleFullScreen();
    // Edit menu: on the field that has the focus, else on the list
    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();
    Q_INVOKABLE void cut();
    Q_INVOKABLE void copy();
    Q_INVOKABLE void paste();
    Q_INVOKABLE void selectAll();
    Q_INVOKABLE void deselect();

    // Texts
    void setListSummary(const QString& summary, bool sorted);
    void setTotals(const QString& totals);
    void setStorageLocation(const QString& folder);
    void showStatus(const QString& text);

    // Images of the custom buttons
    void setTitleButtonImages(bool recentSystem);
    void setTitleButtonPressed(bool pressed);
    void setButtonImage(QObject* button, const char* image); ///< null: leaves it
    void setButtonHovered(QObject* button, bool hovered);
    void popUpMenu(const QString& name, QObject* button);
    [[nodiscard]] QMenu* menu(const QString& name) const;
    void setJobProgressVisible(bool visible);
    void setCameraProgressVisible(bool visible);

    /// The paths that were dropped last on a drop area or artwork well.
    [[nodiscard]] QStringList droppedPaths(QObject* view) const;

Q_SIGNALS:
    void selectionChanged();
    void columnClicked(int column);
    void pathsDropped(const QStringList& paths);
    void photosDropped(const QStringList& paths); ///< onto the photo grid, or photos anywhere
    void removeRequested();
    void addRequested();
    /// `title`: the fixed title of the menu entry; one command may have several entries.
    void commandRequested(const QString& command, const QString& title);
    void systemCloseRequested();
    void storageFolderRequested();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void makeTitleBar(QWidget* body);
    void makeSplitter(MediaListModel& model, QWidget* body);
    QWidget* makeToolBar();
    QWidget* makeListTools();
    QWidget* makePhotoTools();
    QWidget* makeLeftSide(MediaListModel& model);
    void makeMenus();
    void fillMenu(QMenu& menu, const MenuEntry* entries, int count, bool withShortcuts);
    void connectViews();
    void makeBandKeys();
    /// F6: the first stop of the next band (tools, list, pane, activity) takes the focus.
    void moveToBand(bool forward);
    [[nodiscard]] static QWidget* firstStop(QWidget* band);
    void restoreLayout();
    void saveLayout() const;
    [[nodiscard]] Qt::Edges edgesAt(QPoint position) const;
    bool editFocusedField(const char* operation);
    [[nodiscard]] QAbstractItemView* currentView() const;
    void showRightSide();

    QSettings& m_settings;
    TitleBar* m_titleBar = nullptr;
    QWidget* m_toolBar = nullptr;
    QStackedWidget* m_toolSets = nullptr;
    QSplitter* m_splitter = nullptr;
    Segment* m_sourceSegment = nullptr;
    StorageChip* m_storageChip = nullptr;
    ListHead* m_listHead = nullptr;
    QStackedWidget* m_leftStack = nullptr; ///< leftTipView | leftphotoScrView
    QStackedWidget* m_listStack = nullptr; ///< dragtableView | localImageBrowserView
    MediaTableView* m_table = nullptr;
    PhotoGrid* m_grid = nullptr;
    QStackedWidget* m_rightStack = nullptr; ///< detail pane | photo pane
    DetailPane* m_detailPane = nullptr;
    PhotoPane* m_photoPane = nullptr;
    bool m_editsPhotos = false; ///< while the grid is shown
    ActivityBar* m_activityBar = nullptr;
    ActivityPanel* m_activityPanel = nullptr;
    QList<QMenu*> m_menus;
    bool m_recentSystem = true;
    bool m_keepsLayout = true;
};

} // namespace clipheave::app
