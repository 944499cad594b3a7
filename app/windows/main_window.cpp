// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/main_window.h"

#include "app/activity/activity_bar.h"
#include "app/activity/activity_model.h"
#include "app/activity/activity_panel.h"
#include "app/list/media_list_model.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "app/panes/artwork_well.h"
#include "app/panes/detail_pane.h"
#include "app/panes/photo_pane.h"
#include "app/panes/shared_fields.h"
#include "app/widgets/image_button.h"
#include "app/widgets/parts.h"
#include "app/widgets/title_bar.h"
#include "app/windows/drop_tip.h"
#include "app/windows/list_head.h"

#include <QApplication>
#include <QCloseEvent>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSplitter>
#include <QStackedWidget>
#include <QWindow>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kResizeBorder = 5; // px

QItemSelectionModel* selectionOf(QAbstractItemView* view) {
    return view->selectionModel();
}

} // namespace

MainWindow::~MainWindow() {
    if (m_keepsLayout)
        saveLayout();
}

bool MainWindow::showsPhotos() const {
    return m_listStack->currentIndex() == 1;
}

QAbstractItemView* MainWindow::currentView() const {
    return showsPhotos() ? static_cast<QAbstractItemView*>(m_grid)
                         : static_cast<QAbstractItemView*>(m_table);
}

int MainWindow::currentRow() const {
    const auto* selection = selectionOf(currentView());
    return selection->hasSelection() ? selection->currentIndex().row() : -1;
}

QList<int> MainWindow::selectedRows() const {
    QList<int> rows;
    // By ranges: everything selected is one of them, where every cell would be an index.
    for (const QItemSelectionRange& range : selectionOf(currentView())->selection())
        for (int row = range.top(); range.left() == 0 && row <= range.bottom(); ++row)
            rows.append(row);
    std::sort(rows.begin(), rows.end());
    return rows;
}

void MainWindow::selectRow(int row) {
    QAbstractItemView* view = currentView();
    view->clearSelection();
    if (row >= 0)
        view->setCurrentIndex(view->model()->index(row, 0));
}

void MainWindow::showEmptyState() {
    m_leftStack->setCurrentIndex(0);
    m_detailPane->showNothing();
    m_photoPane->showNothing();
}

void MainWindow::showMediaList() {
    m_leftStack->setCurrentIndex(1);
}

void MainWindow::showComputer() {
    m_sourceSegment->setCurrentIndex(0);
}

void MainWindow::showList() {
    m_listHead->views()->setCurrentIndex(0);
    m_listStack->setCurrentIndex(0);
    m_toolSets->setCurrentIndex(0);
    m_rightStack->show();
    showRightSide();
    Q_EMIT selectionChanged();
}

void MainWindow::showPhotos() {
    m_listHead->views()->setCurrentIndex(1);
    m_listStack->setCurrentIndex(1);
    m_toolSets->setCurrentIndex(1);
    m_leftStack->setCurrentIndex(1);
    m_rightStack->setVisible(m_editsPhotos);
    showRightSide();
    Q_EMIT selectionChanged();
}

void MainWindow::showPhotosOfList() {
    const QItemSelection selection = selectionOf(m_table)->selection();
    const QModelIndex current = selectionOf(m_table)->currentIndex();
    showPhotos();
    selectionOf(m_grid)->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    selectionOf(m_grid)->select(selection,
                                QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void MainWindow::setEditsPhotos(bool edits) {
    m_editsPhotos = edits;
    if (showsPhotos())
        m_rightStack->setVisible(edits);
    findChild<ImageButton*>(QStringLiteral("localeditexifBtn"))->setChecked(edits);
    showRightSide();
}

bool MainWindow::editsPhotos() const {
    return m_editsPhotos && showsPhotos();
}

/// The pane that belongs to the view on the left, with the fields that both have.
void MainWindow::showRightSide() {
    m_rightStack->setCurrentWidget(editsPhotos() ? static_cast<QWidget*>(m_photoPane)
                                                 : m_detailPane);
    m_detailPane->sharedFields().moveTo(editsPhotos() ? SharedFields::Place::Photo
                                                      : SharedFields::Place::Audio);
}

void MainWindow::toggleDetailPane() {
    if (!showsPhotos())
        return m_rightStack->setVisible(m_rightStack->isHidden());
    Q_EMIT commandRequested(m_editsPhotos ? QStringLiteral("HideEditViewAction")
                                          : QStringLiteral("StartEditViewAction"),
                            {});
}

void MainWindow::toggleActivity() {
    m_activityPanel->toggle();
}

void MainWindow::toggleFullScreen() {
    setWindowState(windowState() ^ Qt::WindowFullScreen);
}

bool MainWindow::editFocusedField(const char* operation) {
    auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    return field && QMetaObject::invokeMethod(field, operation);
}

void MainWindow::undo() {
    editFocusedField("undo");
}
void MainWindow::redo() {
    editFocusedField("redo");
}
void MainWindow::cut() {
    editFocusedField("cut");
}
void MainWindow::copy() {
    editFocusedField("copy");
}

void MainWindow::paste() {
    if (editFocusedField("paste"))
        return;
    if (auto* well = qobject_cast<ArtworkWell*>(QApplication::focusWidget()))
        Q_EMIT well->pasteRequested();
}

void MainWindow::selectAll() {
    if (!editFocusedField("selectAll"))
        currentView()->selectAll();
}

void MainWindow::deselect() {
    currentView()->clearSelection();
}

void MainWindow::setListSummary(const QString& summary, bool sorted) {
    m_listHead->setSummary(summary, sorted);
}

void MainWindow::setTotals(const QString& totals) {
    m_activityBar->setListSummary(totals);
}

void MainWindow::setStorageLocation(const QString& folder) {
    m_storageChip->setPath(folder);
}

void MainWindow::showStatus(const QString& text) {
    m_activityBar->showMessage(text);
}

void MainWindow::setTitleButtonImages(bool recentSystem) {
    m_titleBar->closeButton()->setImage(recentSystem ? QStringLiteral("Close_Nom.png")
                                                     : QStringLiteral("titlebarred.png"));
    m_titleBar->minimiseButton()->setImage(recentSystem ? QStringLiteral("Min_Nom.png")
                                                        : QStringLiteral("titlebaryellow.png"));
    m_titleBar->resizeButton()->setImage(recentSystem ? QStringLiteral("Resize_Nom.png")
                                                      : QStringLiteral("titlebargreen.png"));
    m_recentSystem = recentSystem;
}

void MainWindow::setTitleButtonPressed(bool pressed) {
    if (pressed)
        m_titleBar->closeButton()->setImage(m_recentSystem ? QStringLiteral("Close_Down.png")
                                                           : QStringLiteral("titlebarreddown.png"));
    else
        setTitleButtonImages(m_recentSystem);
}

void MainWindow::setButtonImage(QObject* button, const char* image) {
    auto* imageButton = qobject_cast<ImageButton*>(button);
    if (imageButton && image && imageButton->kind() == ButtonKind::Tool)
        imageButton->setImage(QLatin1String(image));
}

void MainWindow::setButtonHovered(QObject* button, bool hovered) {
    Q_UNUSED(hovered)
    if (auto* widget = qobject_cast<QWidget*>(button))
        widget->update();
}

void MainWindow::setJobProgressVisible(bool visible) {
    m_activityBar->setBusyVisible(visible);
}

void MainWindow::setCameraProgressVisible(bool visible) {
    m_activityBar->setBusyVisible(visible);
}

QStringList MainWindow::droppedPaths(QObject* view) const {
    if (const auto* well = qobject_cast<const ArtworkWell*>(view))
        return {well->droppedPath()};
    if (const auto* tip = qobject_cast<const DropTip*>(view))
        return tip->droppedPaths();
    return {};
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    Q_EMIT systemCloseRequested();
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowTitleChange && m_titleBar)
        m_titleBar->setName(windowTitle());
}

/// Esc that nobody below has taken.
void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && editsPhotos())
        Q_EMIT commandRequested(QStringLiteral("HideEditViewAction"), {});
    else
        QMainWindow::keyPressEvent(event);
}

Qt::Edges MainWindow::edgesAt(QPoint position) const {
    Qt::Edges edges;
    if (isMaximized() || isFullScreen())
        return edges;
    edges.setFlag(Qt::LeftEdge, position.x() < kResizeBorder);
    edges.setFlag(Qt::RightEdge, position.x() >= width() - kResizeBorder);
    edges.setFlag(Qt::TopEdge, position.y() < kResizeBorder);
    edges.setFlag(Qt::BottomEdge, position.y() >= height() - kResizeBorder);
    return edges;
}

void MainWindow::mousePressEvent(QMouseEvent* event) {
    const Qt::Edges edges = edgesAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && edges && windowHandle())
        windowHandle()->startSystemResize(edges);
    else
        QMainWindow::mousePressEvent(event);
}

void MainWindow::mouseMoveEvent(QMouseEvent* event) {
    const Qt::Edges edges = edgesAt(event->position().toPoint());
    const bool leftRight = edges & (Qt::LeftEdge | Qt::RightEdge);
    const bool topBottom = edges & (Qt::TopEdge | Qt::BottomEdge);
    const bool falling =
        edges == (Qt::LeftEdge | Qt::TopEdge) || edges == (Qt::RightEdge | Qt::BottomEdge);
    if (leftRight && topBottom)
        setCursor(falling ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor);
    else if (leftRight)
        setCursor(Qt::SizeHorCursor);
    else if (topBottom)
        setCursor(Qt::SizeVerCursor);
    else
        unsetCursor();
}

} // namespace clipheave::app
