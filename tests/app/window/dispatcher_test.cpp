// SPDX-License-Identifier: GPL-3.0-or-later
// The tables of commands against what there is: every button, menu entry, shortcut and object name
// that names a command must reach one.
#include "app/widgets/button_look.h"
#include "app/widgets/image_button.h"
#include "app/windows/command_tables.h"
#include "app/windows/gps_sheet.h"
#include "app/windows/preferences_window.h"
#include "app/windows/rename_window.h"
#include "tests/app/window/window_fixture.h"

#include <QApplication>
#include <QKeySequence>
#include <QMap>
#include <QMenu>
#include <QSet>
#include <QTimer>

#include <vector>

namespace {

using namespace clipheave;
using namespace clipheave::app;

/// The words of a text separated by spaces.
QSet<QByteArray> setOf(const QByteArray& words) {
    const QList<QByteArray> list = words.split(' ');
    return {list.begin(), list.end()};
}

/// Commands of the tables whose tools are still to come ("not available yet"). It only shrinks: a
/// command that exists meanwhile must leave it.
const QSet<QByteArray> kStillToCome =
    setOf("AddVideoEffectsMediaFileAction "
          "BatchWriteXMPFileToVideoAction CanelXMPMetadataToPhotosAction "
          "ChangeToImportiOSDevicePhoto "
          "ClickCopyCreatedDateToCameraDateAction ClickCopyCreatedDateToModifyDateAction "
          "ClickCopyExifDateToCreateDateAction ClickCopyFileNameToCommentsAction "
          "ClickCopyModiyDateToCreateDateAction ClickCopyVideoCreatedDateToCameraDateAction "
          "ClickCopyVideoExifDateToCreateDateAction ClickCreatedDateChangedSaveAction "
          "ClickDateChangedSaveAction ClickSetVideoDateFromFileNameAction "
          "ClickShowAddWaterMarktoVideoFileAction ClickShowImageWaterMarktoVideoFileAction "
          "DeletePhotoAction "
          "DownloadImportEditePhotoAction DownloadPhotoAction "
          "EditvideofileDateInfoAction ExportAllArtWokrmetadataAction "
          "ExportSelectedArtWokrmetadataAction ExportSelectedItemAllmetadataAction "
          "ExportSelectedItemSelectedmetadataAction "
          "OpenDeviceAction "
          "OpenPhototoAddWaterMarkAction ReloadMetaDataPlistAction "
          "WriteXMPMetadataToPhotosAction "
          "removeCaptionMediaFileFormatAction");

/// Buttons of the dispatcher that stand in no window yet; it only shrinks as well.
const QSet<QByteArray> kButtonsToCome = setOf(
    "CancelXmpBtn addImgWaterMarkBtn changeMutiPhotoDateBtn changePhotoDateBtn deletePhotoBtn "
    "downloadPhotoBtn importEditPhotoBtn opendeviceBtn "
    "removeExifBtn starteditBtn viewExifBtn writeXmpBtn");

bool exists(const QByteArray& command) {
    const QByteArray method = command + "()";
    return AppDelegate::staticMetaObject.indexOfMethod(method) >= 0 ||
           MainWindow::staticMetaObject.indexOfMethod(method) >= 0;
}

void collect(std::span<const MenuEntry> entries, std::vector<MenuEntry>& all) {
    for (const MenuEntry& entry : entries) {
        if (entry.command)
            all.push_back(entry);
        collect({entry.submenu, static_cast<std::size_t>(entry.submenuCount)}, all);
    }
}

std::vector<MenuEntry> entriesOf(std::span<const MenuTable> menus) {
    std::vector<MenuEntry> all;
    for (const MenuTable& menu : menus)
        collect(menu.entries, all);
    return all;
}

class DispatcherTest : public WindowFixture {
protected:
    /// Buttons outside the main window are named after the command that they run.
    QSet<QByteArray> commandsOfWindowButtons() {
        QSet<QByteArray> commands;
        for (const QWidget* owner : {static_cast<QWidget*>(controller->preferencesWindow()),
                                     static_cast<QWidget*>(controller->renameWindow()),
                                     static_cast<QWidget*>(controller->gpsSheet())})
            for (const Button* button : owner->findChildren<Button*>())
                if (!button->objectName().isEmpty() && button->objectName().at(0).isUpper())
                    commands.insert(button->objectName().toLatin1());
        return commands;
    }
    QSet<QByteArray> commandsOfTables() {
        QSet<QByteArray> commands;
        for (const DispatchRow& row : dispatchRows())
            if (row.kind == DispatchKind::Command)
                commands.insert(row.target);
        for (const auto& menus : {popUpMenus(), menuBarMenus()})
            for (const MenuEntry& entry : entriesOf(menus))
                commands.insert(entry.command);
        return commands;
    }
    /// What the press of a button of this name brought about: the first entry of the menu that
    /// opened, the command that is not available yet, the alert or the window that came up.
    QString press(const char* name) {
        ImageButton button(ButtonKind::Tool, {}, {}, window());
        button.setObjectName(QLatin1String(name));
        const std::size_t lines = controller->activity()->log().size();
        controller->MybuttonMouseDownHandle(&button);
        if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
            menu->close();
            return menu->actions().constFirst()->text();
        }
        if (controller->activity()->log().size() > lines)
            return controller->activity()->log().back().text;
        if (!desktop->alerts.isEmpty())
            return desktop->alerts.takeFirst();
        const bool renames = controller->renameWindow()->isVisible();
        controller->renameWindow()->hide();
        return renames ? controller->renameWindow()->objectName() : QString();
    }
};

TEST_F(DispatcherTest, EveryNamedCommandExistsOrIsStillToCome) {
    const QSet<QByteArray> named = commandsOfTables();
    for (const QByteArray& command : named)
        EXPECT_NE(exists(command), kStillToCome.contains(command))
            << command.constData() << (exists(command) ? ": no longer to come" : ": misspelt");
    for (const QByteArray& command : kStillToCome)
        EXPECT_TRUE(named.contains(command)) << command.constData() << ": in no table";
    const QSet<QByteArray> buttons = commandsOfWindowButtons();
    EXPECT_GE(buttons.size(), 7);
    for (const QByteArray& command : buttons)
        EXPECT_TRUE(exists(command)) << command.constData();
}

TEST_F(DispatcherTest, EveryNamedButtonIsInTheTableOrHasASlotOfItsOwn) {
    const QSet<QString> own{u"closeBtn"_s, u"minimiseBtn"_s,     u"resizeBtn"_s,
                            u"datesBtn"_s, u"addMediaFileBtn"_s, u"removeMediaFileBtn"_s};
    QSet<QByteArray> rows;
    for (const DispatchRow& row : dispatchRows()) {
        EXPECT_FALSE(rows.contains(row.button))
            << row.button << ": the second row is never reached";
        rows.insert(row.button);
        EXPECT_NE(window()->findChild<ImageButton*>(QLatin1String(row.button)) != nullptr,
                  kButtonsToCome.contains(row.button))
            << row.button;
    }
    for (const ImageButton* button : window()->findChildren<ImageButton*>()) {
        const QString name = button->objectName();
        EXPECT_TRUE(name.isEmpty() || own.contains(name) || rows.contains(name.toLatin1()))
            << name << ": nothing happens on a press";
    }
}

TEST_F(DispatcherTest, EveryButtonReachesItsOwnMenuOrCommand) {
    const QMap<QByteArray, const char*> reached{
        {"opendeviceBtn", "OpenDeviceAction: not available yet"},
        {"deletePhotoBtn", "DeletePhotoAction: not available yet"},
        {"downloadPhotoBtn", "DownloadPhotoAction: not available yet"},
        {"importEditPhotoBtn", "DownloadImportEditePhotoAction: not available yet"},
        {"viewExifBtn", "Edit GPS…"},
        {"removeExifBtn", "EXIF"},
        {"importPhotobtn", "Files or Folders…"},
        {"remoMetaDataLocalBtn", "EXIF"},
        {"extractMetaBtn", "Export Metadata"},
        {"convertAndCompressBtn", "Add Date on Photos"},
        {"SaveMediaChangesBtn", "No Item has been selected"},
        {"editMetaDataLocalBtn", "Edit GPS…"},
        {"importandExportBtn", "Export TIFF"},
        {"cameraphotoBtn", "ChangeToImportiOSDevicePhoto: not available yet"},
        {"localphotoBtn", ""},
        {"editBackBtn", ""},
        {"editTemplateBtn", "No Item has been selected"},
        {"editApplyBtn", "No Item has been selected"},
        {"starteditBtn", "No Item has been selected"},
        {"localeditexifBtn", "No Item has been selected"},
        {"changePhotoDateBtn", "Change Camera Date"},
        {"changeMutiPhotoDateBtn", "Change Camera Date"},
        {"writeXmpBtn", "BatchWriteXMPFileToVideoAction: not available yet"},
        {"CancelXmpBtn", "CanelXMPMetadataToPhotosAction: not available yet"},
        {"videoRenameBtn", "renameWindow"},
        {"videoCompressBtn", "High video quality"},
        {"videoConvertBtn", "Convert to MP4"},
        {"videoWaterMarkBtn", "Text Watermark…"},
        {"videoExtractBtn", "Extract Audio"},
        {"videoEditBtn", "Rotate"},
        {"addImgWaterMarkBtn", "OpenPhototoAddWaterMarkAction: not available yet"},
    };
    EXPECT_EQ(static_cast<std::size_t>(reached.size()), dispatchRows().size());
    for (const auto& [button, effect] : reached.toStdMap())
        EXPECT_EQ(press(button), QString::fromUtf8(effect)) << button.constData();
    EXPECT_EQ(press("strangerBtn"), QString());
}

/// The entries of a menu and of those below it ask for their command under their fixed title.
void expectEntriesAsk(const QMenu& menu, std::span<const MenuEntry> entries, QSignalSpy& asked) {
    ASSERT_EQ(static_cast<std::size_t>(menu.actions().size()), entries.size()) << menu.objectName();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const MenuEntry& entry = entries[i];
        QAction* action = menu.actions().at(static_cast<qsizetype>(i));
        EXPECT_EQ(action->isSeparator(), entry.title == nullptr);
        if (entry.submenu)
            expectEntriesAsk(*action->menu(),
                             {entry.submenu, static_cast<std::size_t>(entry.submenuCount)}, asked);
        if (!entry.command)
            continue;
        action->trigger();
        ASSERT_EQ(asked.count(), 1) << entry.title;
        EXPECT_EQ(asked.takeFirst(),
                  (QVariantList{QString::fromUtf8(entry.command), QString::fromUtf8(entry.title)}));
        EXPECT_EQ(action->shortcut(), QKeySequence(QLatin1String(entry.shortcut)));
    }
}

TEST_F(DispatcherTest, EveryMenuEntryAsksForItsCommandUnderItsTitle) {
    QObject::disconnect(window(), &MainWindow::commandRequested, controller.get(), nullptr);
    QSignalSpy asked(window(), &MainWindow::commandRequested);
    for (const MenuTable& table : popUpMenus())
        expectEntriesAsk(*window()->menu(QLatin1String(table.name)), table.entries, asked);
    for (const MenuTable& table : menuBarMenus())
        expectEntriesAsk(*window()->findChild<QMenu*>(QLatin1String(table.name)), table.entries,
                         asked);
}

TEST(CommandTables, AShortcutIsReadableAndMeansOneCommand) {
    QMap<QKeySequence, QByteArray> commands;
    for (const MenuEntry& entry : entriesOf(menuBarMenus())) {
        if (!entry.shortcut)
            continue;
        const QKeySequence key{QLatin1String(entry.shortcut)};
        EXPECT_FALSE(key.isEmpty() || key[0].key() == Qt::Key_unknown) << entry.shortcut;
        EXPECT_FALSE(commands.contains(key)) << entry.shortcut << " is taken";
        commands[key] = entry.command;
    }
    // Pop-up menus only show the key of the menu bar's entry.
    for (const MenuEntry& entry : entriesOf(popUpMenus())) {
        const QKeySequence key{QLatin1String(entry.shortcut)};
        EXPECT_TRUE(key.isEmpty() || commands.value(key) == entry.command) << entry.shortcut;
    }
}

/// Whether the application ends when the close button is pressed and the alert returns `button`.
bool endsOn(int button, FakeDesktop& desktop, ImageButton* close) {
    constexpr int kWentOn = 7;
    desktop.alertAnswer = button;
    QTimer::singleShot(0, close, [close] {
        QTest::mousePress(close, Qt::LeftButton);
        QTimer::singleShot(0, close, [] { QCoreApplication::exit(kWentOn); });
    });
    return QApplication::exec() != kWentOn;
}

TEST_F(DispatcherTest, TheCloseButtonEndsTheApplicationOnExitAlone) {
    auto* close = window()->findChild<ImageButton*>(u"closeBtn"_s);
    EXPECT_FALSE(endsOn(1, *desktop, close)) << "Cancel";
    EXPECT_FALSE(endsOn(-1, *desktop, close)) << "no button";
    EXPECT_TRUE(endsOn(0, *desktop, close)) << "Exit";
    EXPECT_EQ(desktop->alerts, QStringList(3, u"Are you sure you want to Exit ?"_s));
}

} // namespace
