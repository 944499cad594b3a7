// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/open_panel.h"

#include "app/activity/activity_parts.h"
#include "app/theme/theme.h"
#include "app/widgets/parts.h"
#include "media/media_kind.h"

#include <QAbstractItemView>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSplitter>
#include <QToolButton>
#include <QTreeView>

#include <utility>

namespace clipheave::app {

namespace {

constexpr int kSideBar = 136; // px
constexpr char16_t kLastFolderKey[] = u"openPanel/folder";

QString lastFolder(const QSettings& settings) {
    const QString folder = settings.value(QString::fromUtf16(kLastFolderKey)).toString();
    return !folder.isEmpty() && QFileInfo(folder).isDir() ? folder : QDir::homePath();
}

class PanelIcons : public QFileIconProvider {
public:
    [[nodiscard]] QIcon icon(IconType type) const override {
        return themeIcon(type == File ? QStringLiteral("film") : QStringLiteral("folder"),
                         Token::text2);
    }
    [[nodiscard]] QIcon icon(const QFileInfo& info) const override {
        if (info.isDir())
            return themeIcon(QStringLiteral("folder"), Token::text2);
        if (media::MediaKind::isVideo(info.fileName()))
            return themeIcon(QStringLiteral("film"), Token::kVideo);
        if (media::MediaKind::isAudio(info.fileName()))
            return themeIcon(QStringLiteral("music"), Token::kAudio);
        if (media::MediaKind::isPhoto(info.fileName()))
            return themeIcon(QStringLiteral("image"), Token::kPhoto);
        return themeIcon(QStringLiteral("text"), Token::text3);
    }
};

QFileIconProvider& panelIcons() {
    static PanelIcons icons;
    return icons;
}

/// The library's own chooser: the desktop's have no mode that takes files and folders together.
class PanelDialog : public QFileDialog {
public:
    PanelDialog(QWidget* parent, const QString& message, OpenPanel::Mode mode,
                const QString& folder)
        : QFileDialog(parent), m_mode(mode) {
        setObjectName(QStringLiteral("openPanel"));
        setAttribute(Qt::WA_DeleteOnClose);
        setOption(DontUseNativeDialog);
        setFileMode(mode == OpenPanel::OneFile ? ExistingFile : ExistingFiles);
        setViewMode(Detail);
        setWindowTitle(tr("Open"));
        setAccessibleDescription(message);
        setDirectory(folder);
        resize(760, 480);
        insertMessage(message);
        m_view = findChild<QTreeView*>(QStringLiteral("treeView"));
        dress();
        if (mode == OpenPanel::FilesAndFolders)
            takeFolders();
    }

    [[nodiscard]] QStringList chosenPaths() const {
        return m_paths.isEmpty() ? selectedFiles() : m_paths;
    }

    void accept() override {
        if (!isVisible())
            return; // Return in the name field comes by two ways
        m_paths = m_mode == OpenPanel::FilesAndFolders ? typedPath() : QStringList();
        if (m_paths.isEmpty() && m_mode == OpenPanel::FilesAndFolders)
            m_paths = selectedPaths();
        if (m_paths.isEmpty())
            QFileDialog::accept(); // files alone, typed names, a folder to enter
        else
            // Past the file dialog, which would enter the first folder.
            QDialog::done(Accepted); // NOLINT(bugprone-parent-virtual-call)
    }

private:
    /// Moves everything one row down and puts the message on top.
    void insertMessage(const QString& message) {
        auto* grid = qobject_cast<QGridLayout*>(layout());
        if (!grid)
            return;
        struct Placed {
            QLayoutItem* item;
            int row, column, rows, columns;
        };
        QList<Placed> items;
        while (grid->count() > 0) {
            Placed placed{};
            grid->getItemPosition(0, &placed.row, &placed.column, &placed.rows, &placed.columns);
            placed.item = grid->takeAt(0);
            items += placed;
        }
        auto* label = new ToneLabel(FontRole::BodyStrong, Token::text1, this);
        label->setObjectName(QStringLiteral("openPanelMessage"));
        label->setText(message);
        label->setFixedHeight(28);
        grid->addWidget(label, 0, 0, 1, 3);
        for (const Placed& placed : std::as_const(items))
            grid->addItem(placed.item, placed.row + 1, placed.column, placed.rows, placed.columns);
        grid->setContentsMargins(16, 12, 16, 16);
    }

    /// The window's images in place of the library's, and nothing that does not help to choose.
    void dress() {
        setIconProvider(&panelIcons());
        static constexpr struct {
            const char *button, *image;
        } kImages[] = {{"backButton", "chevron-left"},
                       {"forwardButton", "chevron-right"},
                       {"toParentButton", "chevron-up"},
                       {"listModeButton", "grid"},
                       {"detailModeButton", "list"}};
        for (const auto& [name, image] : kImages)
            if (auto* button = findChild<QToolButton*>(QLatin1String(name)))
                button->setIcon(themeIcon(QLatin1String(image)));
        for (const char* name : {"newFolderButton", "fileTypeLabel", "fileTypeCombo"})
            if (auto* widget = findChild<QWidget*>(QLatin1String(name)))
                widget->hide();
        if (auto* box = findChild<QDialogButtonBox*>())
            if (QPushButton* button = box->button(QDialogButtonBox::Open))
                button->setProperty("kind", QStringLiteral("primary"));
        if (auto* splitter = findChild<QSplitter*>(QStringLiteral("splitter")))
            splitter->setSizes({kSideBar, width() - kSideBar});
        if (!m_view)
            return;
        m_view->setStyleSheet(QStringLiteral("QTreeView::item { min-height: 26px; }"));
        m_view->header()->setStretchLastSection(false);
        static constexpr int kWidths[] = {260, 84, 96, 168};
        for (int column = 0; column < 4; ++column)
            m_view->header()->resizeSection(column, kWidths[column]);
        m_view->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    }

    void takeFolders() {
        if (!m_view || !m_view->selectionModel())
            return;
        // After the dialog's own slots, which switch the button off when only folders are selected.
        connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
                &PanelDialog::refreshButton);
        if (auto* name = findChild<QLineEdit*>(QStringLiteral("fileNameEdit")))
            connect(name, &QLineEdit::textChanged, this, &PanelDialog::refreshButton);
    }

    void refreshButton() {
        auto* box = findChild<QDialogButtonBox*>();
        QPushButton* button = box ? box->button(QDialogButtonBox::Open) : nullptr;
        if (button && !selectedPaths().isEmpty())
            button->setEnabled(true);
    }

    /// A whole path in the name field. The list's selection follows what is typed, late and not
    /// always to the end: the text is what the user means.
    [[nodiscard]] QStringList typedPath() const {
        const auto* name = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        const QString text = name ? name->text() : QString();
        return text.startsWith(u'/') && QFileInfo::exists(text) ? QStringList{QDir::cleanPath(text)}
                                                                : QStringList();
    }

    /// What is selected in the list, files and folders alike. Empty when names were typed: the user
    /// means those then.
    [[nodiscard]] QStringList selectedPaths() const {
        QStringList paths;
        if (!m_view || !m_view->selectionModel())
            return paths;
        for (const QModelIndex& index : m_view->selectionModel()->selectedRows())
            paths += index.data(QFileSystemModel::FilePathRole).toString();
        return paths;
    }

    OpenPanel::Mode m_mode;
    QTreeView* m_view = nullptr;
    QStringList m_paths;
};

} // namespace

void OpenPanel::open(QWidget* parent, const QString& message, Mode mode, QSettings& settings,
                     std::function<void(const QStringList&)> chosen) {
    auto* panel = new PanelDialog(parent, message, mode, lastFolder(settings));
    QPointer<Scrim> scrim = parent ? new Scrim(parent->window()) : nullptr;
    QObject::connect(panel, &QDialog::finished, panel,
                     [panel, scrim, &settings, chosen = std::move(chosen)](int result) {
                         delete scrim;
                         const QStringList paths = panel->chosenPaths();
                         if (result != QDialog::Accepted || paths.isEmpty())
                             return;
                         settings.setValue(QString::fromUtf16(kLastFolderKey),
                                           panel->directory().absolutePath());
                         chosen(paths);
                     });
    panel->open();
}

} // namespace clipheave::app
