// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/activity_bar.h"
#include "app/activity/activity_model.h"
#include "app/activity/activity_panel.h"
#include "app/list/media_list_model.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "app/panes/detail_pane.h"
#include "app/panes/photo_pane.h"
#include "app/widgets/image_button.h"
#include "app/widgets/parts.h"
#include "app/widgets/title_bar.h"
#include "app/windows/drop_tip.h"
#include "app/windows/list_head.h"
#include "app/windows/main_window.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QMenu>
#include <QSettings>
#include <QShortcut>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <array>

namespace clipheave::app {

namespace {

constexpr int kRightWidth = 600, kRightLeast = 520, kRightMost = 960, kLeftLeast = 480;

QVBoxLayout* tightColumn(QWidget* widget) {
    auto* layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return layout;
}

ImageButton* tool(const char* name, const QString& label, const char* image, bool menu) {
    auto* button = new ImageButton(ButtonKind::Tool, label, QLatin1String(image));
    button->setObjectName(QLatin1String(name));
    button->setOpensMenu(menu);
    return button;
}

} // namespace

MainWindow::MainWindow(MediaListModel& model, ActivityModel& activity, QSettings& settings)
    : m_settings(settings) {
    setObjectName(QStringLiteral("mainWindow"));
    setWindowFlag(Qt::FramelessWindowHint);
    setWindowTitle(QStringLiteral("ClipHeave"));
    setMinimumSize(1100, 680);
    setMouseTracking(true);
    auto* body = new QWidget(this);
    QVBoxLayout* column = tightColumn(body);
    makeTitleBar(body);
    column->addWidget(m_titleBar);
    m_toolBar = makeToolBar();
    column->addWidget(m_toolBar);
    makeSplitter(model, body);
    column->addWidget(m_splitter, 1);
    m_activityBar = new ActivityBar(activity, body);
    m_activityPanel = new ActivityPanel(activity, body);
    column->addWidget(m_activityBar);
    column->addWidget(m_activityPanel);
    setCentralWidget(body);
    makeMenus();
    connectViews();
    makeBandKeys();
    restoreLayout();
}

void MainWindow::makeTitleBar(QWidget* body) {
    m_titleBar = new TitleBar(body);
    m_titleBar->setName(windowTitle());
    m_titleBar->closeButton()->setObjectName(QStringLiteral("closeBtn"));
    m_titleBar->minimiseButton()->setObjectName(QStringLiteral("minimiseBtn"));
    m_titleBar->resizeButton()->setObjectName(QStringLiteral("resizeBtn"));
}

void MainWindow::makeSplitter(MediaListModel& model, QWidget* body) {
    m_splitter = new QSplitter(Qt::Horizontal, body);
    m_splitter->setHandleWidth(1);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(makeLeftSide(model));
    m_rightStack = new QStackedWidget(m_splitter);
    m_rightStack->setMinimumWidth(kRightLeast);
    m_rightStack->setMaximumWidth(kRightMost);
    m_detailPane = new DetailPane(m_rightStack);
    m_photoPane = new PhotoPane(m_detailPane->sharedFields(), m_rightStack);
    m_rightStack->addWidget(m_detailPane);
    m_rightStack->addWidget(m_photoPane);
    m_splitter->addWidget(m_rightStack);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 0);
    // A splitter puts what it gets below what it has; assistive technology reads from the bottom.
    m_splitter->widget(0)->lower();
}

QWidget* MainWindow::makeToolBar() {
    auto* bar = new ToolBand(this);
    m_sourceSegment = new Segment(Segment::Size::Normal, bar);
    m_sourceSegment->addPart(tr("Computer"), QStringLiteral("computer"),
                             QStringLiteral("localphotoBtn"));
    m_sourceSegment->addPart(tr("Device"), QStringLiteral("camera"),
                             QStringLiteral("cameraphotoBtn"));
    m_sourceSegment->setSwitchesItself(false);
    m_sourceSegment->setCurrentIndex(0);
    bar->add(m_sourceSegment);
    bar->addGap(8);
    auto* add = new ImageButton(ButtonKind::Primary, tr("Add"), QStringLiteral("add"), bar);
    add->setObjectName(QStringLiteral("importPhotobtn"));
    add->setOpensMenu(true);
    bar->add(add);
    bar->addSeparator();
    m_toolSets = new QStackedWidget(bar);
    m_toolSets->addWidget(makeListTools());
    m_toolSets->addWidget(makePhotoTools());
    bar->add(m_toolSets);
    bar->addStretch();
    m_storageChip = new StorageChip(bar);
    m_storageChip->setObjectName(QStringLiteral("storageChip"));
    bar->add(m_storageChip);
    return bar;
}

QWidget* MainWindow::makeListTools() {
    auto* band = new ToolBand(this);
    band->layout()->setContentsMargins(0, 0, 0, 0);
    band->add(tool("videoRenameBtn", tr("Rename"), "renamebtn.png", false));
    band->add(tool("datesBtn", tr("Dates"), "dates", true));
    band->add(tool("extractMetaBtn", tr("Metadata"), "tag", true));
    band->addSeparator();
    band->add(tool("videoConvertBtn", tr("Convert"), "convertbtn.png", true));
    band->add(tool("videoCompressBtn", tr("Compress"), "compressbtn.png", true));
    band->add(tool("videoEditBtn", tr("Edit"), "editbtn.png", true));
    band->add(tool("videoWaterMarkBtn", tr("Watermark"), "watermarkbtn.png", true));
    band->add(tool("videoExtractBtn", tr("Extract"), "extractbtn.png", true));
    band->addStretch();
    return band;
}

QWidget* MainWindow::makePhotoTools() {
    auto* band = new ToolBand(this);
    band->layout()->setContentsMargins(0, 0, 0, 0);
    auto* edit = tool("localeditexifBtn", tr("Edit"), "pencil", false);
    edit->setCheckable(true);
    // A click would switch it off again: the pane decides.
    connect(edit, &ImageButton::clicked, this, [this, edit] { edit->setChecked(m_editsPhotos); });
    band->add(edit);
    band->add(tool("editMetaDataLocalBtn", tr("Metadata"), "tag", true));
    band->add(tool("remoMetaDataLocalBtn", tr("Remove"), "tag-off", true));
    band->addSeparator();
    band->add(tool("importandExportBtn", tr("Property List"), "plist", true));
    band->add(tool("convertAndCompressBtn", tr("Date Stamp"), "stamp", true));
    band->addStretch();
    return band;
}

QWidget* MainWindow::makeLeftSide(MediaListModel& model) {
    auto* side = new QWidget(this);
    side->setMinimumWidth(kLeftLeast);
    QVBoxLayout* column = tightColumn(side);
    m_listHead = new ListHead(side);
    connect(m_listHead, &ListHead::addRequested, this, &MainWindow::addRequested);
    connect(m_listHead, &ListHead::removeRequested, this, &MainWindow::removeRequested);
    column->addWidget(m_listHead);
    m_leftStack = new QStackedWidget(side);
    auto* tip = new DropTip(m_leftStack);
    connect(tip, &DropTip::pathsDropped, this, &MainWindow::pathsDropped);
    connect(tip, &DropTip::photosDropped, this, &MainWindow::photosDropped);
    connect(tip, &DropTip::addRequested, this, &MainWindow::addRequested);
    connect(tip, &DropTip::deviceRequested, this, [this] {
        Q_EMIT commandRequested(QStringLiteral("ChangeToImportiOSDevicePhoto"), {});
    });
    m_leftStack->addWidget(tip);
    m_listStack = new QStackedWidget(m_leftStack);
    m_listStack->setObjectName(QStringLiteral("leftphotoScrView"));
    m_table = new MediaTableView(m_listStack);
    m_table->setModel(&model);
    m_grid = new PhotoGrid(m_listStack);
    m_grid->setModel(&model);
    m_listStack->addWidget(m_table);
    m_listStack->addWidget(m_grid);
    m_leftStack->addWidget(m_listStack);
    column->addWidget(m_leftStack, 1);
    return side;
}

void MainWindow::connectViews() {
    connect(m_listHead->views(), &Segment::currentChanged, this,
            [this](int index) { index == 0 ? showList() : showPhotos(); });
    connect(m_table, &MediaTableView::columnClicked, this, &MainWindow::columnClicked);
    connect(m_table, &MediaTableView::pathsDropped, this, &MainWindow::pathsDropped);
    connect(m_table, &MediaTableView::removeRequested, this, &MainWindow::removeRequested);
    connect(m_grid, &PhotoGrid::pathsDropped, this, &MainWindow::photosDropped);
    connect(m_detailPane, &DetailPane::moreRequested, this, [this](const QPoint& position) {
        menu(QStringLiteral("detailMoreMenu"))->popup(position);
    });
    connect(m_photoPane, &PhotoPane::templateMenuRequested, this, [this](const QPoint& position) {
        menu(QStringLiteral("editTemplateMenu"))->popup(position);
    });
    connect(m_grid, &PhotoGrid::removeRequested, this, &MainWindow::removeRequested);
    for (QAbstractItemView* view :
         {static_cast<QAbstractItemView*>(m_table), static_cast<QAbstractItemView*>(m_grid)})
        connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
                &MainWindow::selectionChanged);
    connect(m_activityBar, &ActivityBar::toggled, m_activityPanel, &ActivityPanel::toggle);
    connect(m_activityPanel, &ActivityPanel::openChanged, m_activityBar, &ActivityBar::setOpen);
    connect(m_storageChip, &StorageChip::clicked, this, &MainWindow::storageFolderRequested);
    connect(findChild<ImageButton*>(QStringLiteral("datesBtn")), &ImageButton::clicked, this,
            [this] {
                popUpMenu(QStringLiteral("datesMenu"),
                          findChild<ImageButton*>(QStringLiteral("datesBtn")));
            });
}

void MainWindow::makeBandKeys() {
    for (const bool forward : {true, false}) {
        auto* key = new QShortcut(
            forward ? QKeySequence(Qt::Key_F6) : QKeySequence(Qt::SHIFT | Qt::Key_F6), this);
        connect(key, &QShortcut::activated, this, [this, forward] { moveToBand(forward); });
    }
}

void MainWindow::moveToBand(bool forward) {
    QWidget* const leftBand =
        m_leftStack->currentIndex() == 0 ? m_leftStack->currentWidget() : currentView();
    const std::array<QWidget*, 4> bands{m_toolBar, leftBand, m_rightStack, m_activityBar};
    const auto holdsFocus = [](QWidget* band) {
        const QWidget* focus = QApplication::focusWidget();
        return focus && (band == focus || band->isAncestorOf(focus));
    };
    const int count = static_cast<int>(bands.size());
    int band = 0;
    while (band < count && !holdsFocus(bands[static_cast<std::size_t>(band)]))
        ++band;
    if (band == count) // the head of the list, the open activity panel: as if before the list
        band = 0;
    for (int i = 1; i <= count; ++i) {
        const int next = (band + (forward ? i : count - i)) % count;
        if (QWidget* target = firstStop(bands[static_cast<std::size_t>(next)]))
            return target->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    }
}

QWidget* MainWindow::firstStop(QWidget* band) {
    QWidget* widget = band;
    do {
        const bool inside = widget == band || band->isAncestorOf(widget);
        if (inside && widget->isVisible() && widget->isEnabled() &&
            (widget->focusPolicy() & Qt::TabFocus) != 0)
            return widget;
        widget = widget->nextInFocusChain();
    } while (widget != band);
    return nullptr;
}

void MainWindow::restoreLayout() {
    resize(m_settings.value(QStringLiteral("window/size"), QSize(1440, 900))
               .toSize()
               .expandedTo(minimumSize()));
    const int right = m_settings.value(QStringLiteral("window/rightWidth"), kRightWidth).toInt();
    m_splitter->setSizes({width() - right, right});
    QList<int> widths;
    for (const QVariant& width : m_settings.value(QStringLiteral("window/columnWidths")).toList())
        widths.append(width.toInt());
    m_table->setUserColumnWidths(widths);
}

void MainWindow::saveLayout() const {
    if (!isMaximized() && !isFullScreen())
        m_settings.setValue(QStringLiteral("window/size"), size());
    QVariantList widths;
    for (const int width : m_table->userColumnWidths())
        widths.append(width);
    m_settings.setValue(QStringLiteral("window/columnWidths"), widths);
    if (!m_rightStack->isHidden() && m_splitter->sizes().value(1) > 0)
        m_settings.setValue(QStringLiteral("window/rightWidth"), m_splitter->sizes().value(1));
}

} // namespace clipheave::app
