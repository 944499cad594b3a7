// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme.h"
#include "app/widgets/alert_box.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/fact_label.h"
#include "app/widgets/image_button.h"
#include "app/widgets/map_view.h"
#include "app/widgets/parts.h"
#include "app/widgets/title_bar.h"
#include "tests/testkit/testkit.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <memory>

namespace clipheave::app {
namespace {

QWidget* toolBand() {
    auto* band = new ToolBand;
    auto* source = new Segment;
    source->addPart(QStringLiteral("Computer"), QStringLiteral("localphotonom.png"));
    source->addPart(QStringLiteral("Device"), QStringLiteral("cameraphotonom.png"));
    band->add(source);
    band->addGap(4);
    auto* add = new ImageButton(ButtonKind::Primary, QStringLiteral("Add"), QStringLiteral("add"));
    add->setOpensMenu(true);
    band->add(add);
    band->addSeparator();
    for (const auto& [label, image] : {std::pair("Rename", "renamebtn.png"),
                                       {"Convert", "convertbtn.png"},
                                       {"Compress", "compressbtn.png"},
                                       {"Edit", "editbtn.png"},
                                       {"Watermark", "watermarkbtn.png"}}) {
        auto* tool = new ImageButton(ButtonKind::Tool, QLatin1String(label), QLatin1String(image));
        tool->setOpensMenu(qstrcmp(label, "Rename") != 0);
        tool->setEnabled(qstrcmp(label, "Compress") != 0);
        tool->setDown(qstrcmp(label, "Edit") == 0);
        band->add(tool);
    }
    band->addStretch();
    auto* chip = new StorageChip;
    chip->setPath(QStringLiteral("/home/user/Movies/com.Tarvolin.clipheave"));
    band->add(chip);
    return band;
}

QWidget* buttons() {
    auto* box = new QWidget;
    auto* row = new QHBoxLayout(box);
    for (const ButtonKind kind : {ButtonKind::Primary, ButtonKind::Plain, ButtonKind::Small,
                                  ButtonKind::Danger, ButtonKind::Flat}) {
        row->addWidget(new Button(kind, QStringLiteral("Save Changes"), QStringLiteral("save")));
        auto* off = new Button(kind, QStringLiteral("Off"));
        off->setEnabled(false);
        row->addWidget(off);
    }
    row->addWidget(new ImageButton(ButtonKind::Icon, QStringLiteral("Add"), QStringLiteral("add")));
    row->addWidget(new QPushButton(QStringLiteral("Plain Qt")));
    auto* primary = new QPushButton(QStringLiteral("Primary Qt"));
    primary->setProperty("kind", QStringLiteral("primary"));
    row->addWidget(primary);
    row->addStretch();
    return box;
}

QWidget* fields() {
    auto* box = new QWidget;
    auto* grid = new QGridLayout(box);
    grid->setVerticalSpacing(8);
    const auto put = [&](int row, int column, const char* label, auto prepare) {
        auto* field = new EditField;
        prepare(field);
        grid->addWidget(new FieldRow(QLatin1String(label), field), row, column);
    };
    put(0, 0, "Title",
        [](EditField* f) { f->setShownText(QStringLiteral("Reynisfjara at last light")); });
    put(0, 1, "Changed", [](EditField* f) { f->setText(QStringLiteral("Halla B.")); });
    put(1, 0, "Empty", [](EditField* f) { f->setPlaceholderText(QStringLiteral("YYYY:MM:DD")); });
    put(1, 1, "Latitude", [](EditField* f) {
        f->setShownText(QStringLiteral("63.4043"));
        f->setSuffix(QStringLiteral("N"));
    });
    put(2, 0, "Disabled", [](EditField* f) {
        f->setShownText(QStringLiteral("Minute"));
        f->setEnabled(false);
    });
    auto* popup = new QComboBox;
    popup->addItems({QStringLiteral("Minute"), QStringLiteral("Second"), QStringLiteral("Hour")});
    grid->addWidget(new FieldRow(QStringLiteral("Pop-up"), popup), 2, 1);
    grid->addWidget(new FieldRow(QStringLiteral("Number"), new QSpinBox), 3, 0);
    auto* facts = new QVBoxLayout;
    for (const char* value :
         {"1.94 GB", "", "/media/nomad/ring-road/day-03/reynisfjara-sunset-drone.mp4"}) {
        auto* fact = new FactLabel(QStringLiteral("File Size: "));
        fact->setFact(QStringLiteral("File Size: "), QLatin1String(value));
        facts->addWidget(fact);
    }
    grid->addLayout(facts, 0, 2, 4, 1);
    for (int i = 0; i < 3; ++i)
        grid->setColumnStretch(i, 1);
    return box;
}

QWidget* choices() {
    auto* box = new Card;
    auto* row = new QHBoxLayout(box);
    box->setChosen(true);
    auto* checked = new QCheckBox(QStringLiteral("Checked"));
    checked->setChecked(true);
    auto* chosen = new QRadioButton(QStringLiteral("Chosen"));
    chosen->setChecked(true);
    auto* off = new QCheckBox(QStringLiteral("Off"));
    off->setEnabled(false);
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setValue(37);
    auto* progress = new QProgressBar;
    progress->setTextVisible(false);
    progress->setValue(52);
    for (QWidget* widget : std::initializer_list<QWidget*>{
             checked, new QCheckBox(QStringLiteral("Not checked")), off, chosen,
             new QRadioButton(QStringLiteral("Other")), slider, progress,
             new Chip(Chip::Kind::Running, QStringLiteral("2 running")),
             new Chip(Chip::Kind::Bad, QStringLiteral("1 failed")),
             new Chip(Chip::Kind::Ok, QStringLiteral("14 done")),
             new Chip(Chip::Kind::Neutral, QStringLiteral("idle"))})
        row->addWidget(widget);
    return box;
}

QWidget* maps() {
    auto* box = new QWidget;
    auto* row = new QHBoxLayout(box);
    struct View {
        double latitude, longitude, spanLatitude, spanLongitude;
    };
    for (const View& view : {View{63.4043, -19.0571, 0.1255, 0.234}, View{64.9, -18, 5, 12},
                             View{-17.7, 179.9, 12, 12}, View{48.5, 8, 16, 22}}) {
        auto* map = new MapView;
        map->setCentre(view.latitude, view.longitude, view.spanLatitude, view.spanLongitude);
        map->addAnnotation(view.latitude, view.longitude);
        row->addWidget(map);
    }
    row->addWidget(new MapView);
    return box;
}

std::unique_ptr<QWidget> gallery() {
    auto window = std::make_unique<QWidget>();
    auto* column = new QVBoxLayout(window.get());
    column->setContentsMargins(0, 0, 0, 0);
    auto* bar = new TitleBar;
    bar->setName(QStringLiteral("ClipHeave"));
    for (const char* menu : {"File", "Edit", "Metadata", "Dates", "Video"})
        bar->menuBar()->addMenu(QLatin1String(menu))->addAction(QStringLiteral("Entry"));
    column->addWidget(bar);
    column->addWidget(toolBand());
    column->addWidget(buttons());
    auto* heading = new SectionHeading(QStringLiteral("Tags"));
    heading->setNote(QStringLiteral("2 changed"));
    column->addWidget(heading);
    column->addWidget(fields());
    column->addWidget(choices());
    auto* scroll = new QScrollBar(Qt::Horizontal);
    scroll->setMaximum(300);
    column->addWidget(scroll);
    column->addWidget(maps(), 1);
    window->resize(1440, 800);
    return window;
}

/// Images of all parts in both themes, for the eye: CLIPHEAVE_GALLERY names the folder.
TEST(Gallery, IsDrawnInBothThemes) {
    const QString folder = qEnvironmentVariable("CLIPHEAVE_GALLERY");
    if (folder.isEmpty())
        GTEST_SKIP() << "CLIPHEAVE_GALLERY is not set";
    for (const bool dark : {true, false}) {
        Theme::instance().apply(dark ? Appearance::Dark : Appearance::Light);
        const QString suffix = dark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png");
        const auto window = gallery();
        window->show();
        QApplication::processEvents();
        EXPECT_TRUE(window->grab().save(folder + QStringLiteral("/parts") + suffix));
        AlertBox alert(nullptr, QStringLiteral("No Item has been selected"),
                       QStringLiteral("Please select at least one item to process."),
                       {QStringLiteral(" Ok ")});
        alert.show();
        QApplication::processEvents();
        EXPECT_TRUE(alert.grab().save(folder + QStringLiteral("/alert") + suffix));
        AlertBox grave(nullptr,
                       QStringLiteral("Are you sure you want to delete the selected photo ?"), {},
                       {QStringLiteral(" Delete "), QStringLiteral("Cancel")});
        grave.show();
        QApplication::processEvents();
        EXPECT_TRUE(grave.grab().save(folder + QStringLiteral("/delete") + suffix));
        QComboBox box;
        box.addItems({QStringLiteral("Minute"), QStringLiteral("Second"), QStringLiteral("Hour")});
        box.resize(160, 28);
        box.show();
        box.showPopup();
        QApplication::processEvents();
        EXPECT_TRUE(box.view()->window()->grab().save(folder + QStringLiteral("/list") + suffix));
        box.hidePopup();
        QMenu menu;
        menu.addAction(themeIcon(QStringLiteral("rotate")), QStringLiteral("Rotate"));
        menu.addMenu(QStringLiteral("Speed Up"))->addAction(QStringLiteral("2X"));
        menu.addSeparator();
        menu.addAction(QStringLiteral("Select All"))
            ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_A));
        QAction* checked = menu.addAction(QStringLiteral("Checked"));
        checked->setCheckable(true);
        checked->setChecked(true);
        menu.addAction(QStringLiteral("Disabled"))->setEnabled(false);
        menu.setActiveAction(menu.actions().constFirst());
        menu.popup({0, 0});
        QApplication::processEvents();
        EXPECT_TRUE(menu.grab().save(folder + QStringLiteral("/menu") + suffix));
    }
    Theme::instance().apply(Appearance::Dark);
}

} // namespace
} // namespace clipheave::app
