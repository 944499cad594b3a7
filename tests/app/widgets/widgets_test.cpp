// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme.h"
#include "app/widgets/alert_box.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/fact_label.h"
#include "app/widgets/image_button.h"
#include "app/widgets/parts.h"
#include "app/widgets/title_bar.h"
#include "platform/foundation/notification_center.h"
#include "tests/testkit/testkit.h"

#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

#include <utility>

namespace clipheave::app {
namespace {

using platform::NSNotificationCenter;
using testing::ElementsAre;
using testing::IsEmpty;

/// Collects what is posted, as "Name object".
class Posts {
public:
    Posts() {
        for (const char* name : {"MybuttonMouseDown", "MyClosebuttonMouseDown",
                                 "PRbuttonMouseEntered", "PRbuttonMouseExited"}) {
            const QString text = QLatin1String(name);
            NSNotificationCenter::defaultCenter().addObserver_name(
                this, text, [this, text](QObject* object) {
                    m_posts.append(text + u' ' + object->objectName());
                });
        }
    }
    ~Posts() { NSNotificationCenter::defaultCenter().removeObserver(this); }
    Posts(const Posts&) = delete;
    Posts& operator=(const Posts&) = delete;

    [[nodiscard]] QStringList take() { return std::exchange(m_posts, {}); }

private:
    QStringList m_posts;
};

class WidgetsTest : public testing::Test {
protected:
    void SetUp() override { Theme::instance().apply(Appearance::Dark); }
};

TEST_F(WidgetsTest, ImageButtonPostsOnceForMouseAndKeys) {
    ImageButton button(ButtonKind::Tool, u"Convert"_s, u"convertbtn.png"_s);
    button.setObjectName(u"videoConvertBtn"_s);
    button.show();
    Posts posts;
    QSignalSpy clicked(&button, &QAbstractButton::clicked);
    const QString down = u"MybuttonMouseDown videoConvertBtn"_s;
    QTest::mousePress(&button, Qt::LeftButton);
    EXPECT_THAT(posts.take(), ElementsAre(down)); // at once, before the release
    EXPECT_EQ(clicked.count(), 0);
    QTest::mouseRelease(&button, Qt::LeftButton);
    EXPECT_EQ(clicked.count(), 1);
    QTest::mouseClick(&button, Qt::RightButton);
    EXPECT_THAT(posts.take(), IsEmpty());
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        QTest::keyClick(&button, key);
        EXPECT_THAT(posts.take(), ElementsAre(down)) << key;
    }
    EXPECT_EQ(clicked.count(), 4);
    EXPECT_FALSE(button.isDown());
    QTest::keyClick(&button, Qt::Key_A);
    QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, {}, true);
    QApplication::sendEvent(&button, &repeat);
    button.setEnabled(false);
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::keyClick(&button, Qt::Key_Space);
    EXPECT_THAT(posts.take(), IsEmpty());
}

TEST_F(WidgetsTest, ImageButtonPostsThePointersMovesAndSurvivesItsHandler) {
    auto* button = new ImageButton(ButtonKind::Icon, u"Add"_s, u"add"_s);
    button->setObjectName(u"b"_s);
    Posts posts;
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QApplication::sendEvent(button, &enter);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(button, &leave);
    EXPECT_THAT(posts.take(), ElementsAre(u"PRbuttonMouseEntered b"_s, u"PRbuttonMouseExited b"_s));
    QPointer<ImageButton> alive(button);
    const int tag = 0;
    NSNotificationCenter::defaultCenter().addObserver_name(&tag, u"MybuttonMouseDown"_s,
                                                           [](QObject* object) { delete object; });
    button->activate();
    NSNotificationCenter::defaultCenter().removeObserver(&tag);
    EXPECT_EQ(alive, nullptr);
}

TEST_F(WidgetsTest, ImageButtonIsLiftedWhenAMenuTookTheRelease) {
    ImageButton button(ButtonKind::Tool, u"Edit"_s, u"editbtn.png"_s);
    button.setOpensMenu(true);
    button.show();
    QMouseEvent press(QEvent::MouseButtonPress, {5, 5}, button.mapToGlobal(QPointF(5, 5)),
                      Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&button, &press);
    EXPECT_TRUE(button.isDown());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !button.isDown(); }, 2000));
    EXPECT_EQ(button.menuPosition(), button.mapToGlobal(QPoint(0, button.height() + 4)));
    QAccessibleInterface* access = QAccessible::queryAccessibleInterface(&button);
    ASSERT_NE(access, nullptr);
    EXPECT_EQ(access->text(QAccessible::Name), u"Edit");
    EXPECT_TRUE(access->state().hasPopup);
    Posts posts;
    access->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(posts.take().size(), 1);
}

TEST_F(WidgetsTest, ButtonsAreAsHighAsDesigned) {
    for (const auto& [kind, height] : {std::pair(ButtonKind::Tool, 48),
                                       {ButtonKind::Plain, 32},
                                       {ButtonKind::Small, 28},
                                       {ButtonKind::Primary, 32},
                                       {ButtonKind::Segment, 30},
                                       {ButtonKind::SmallSegment, 24},
                                       {ButtonKind::Icon, 28},
                                       {ButtonKind::WindowClose, 36}})
        EXPECT_EQ(ImageButton(kind, u"Text"_s, u"add"_s).sizeHint().height(), height)
            << static_cast<int>(kind);
}

TEST_F(WidgetsTest, FactLabelKeepsItsWholeText) {
    FactLabel label(u"Modified Date: "_s);
    EXPECT_EQ(label.text(), u"Modified Date: ");
    const QString size = u"File Size: "_s;
    label.setFact(size, u"1.94 GB"_s);
    EXPECT_EQ(label.text(), u"File Size: 1.94 GB");
    EXPECT_EQ(label.toolTip(), u"1.94 GB");
    label.setFact(size, {});
    EXPECT_EQ(label.text(), u"File Size: ");
    EXPECT_TRUE(label.toolTip().isEmpty());
    const QString path = u"/a: b/<b>long</b>"_s + QString(200, u'x');
    label.setFact(u"Location: "_s, path);
    label.resize(120, 20);
    label.grab();
    EXPECT_EQ(label.text(), u"Location: "_s + path);
    EXPECT_EQ(label.toolTip(), path);
}

TEST_F(WidgetsTest, EditFieldMarksChangesAndSignalsTheFirstOnly) {
    QWidget window;
    auto* column = new QVBoxLayout(&window);
    auto* field = new EditField;
    auto* row = new FieldRow(u"Title"_s, field);
    auto* other = new EditField;
    column->addWidget(row);
    column->addWidget(other);
    window.show();
    window.activateWindow();
    field->setFocus();
    QSignalSpy begun(field, &EditField::editingBegun);
    QSignalSpy marks(field, &EditField::changeMarkChanged);
    QString atBegin;
    QObject::connect(field, &EditField::editingBegun, [&] { atBegin = field->text(); });

    field->setShownText(u"old"_s);
    EXPECT_EQ(begun.count(), 0);
    EXPECT_FALSE(field->isChanged());
    QTest::keyClick(field, Qt::Key_Right); // moving about is no edit
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(begun.count(), 0);
    QTest::keyClicks(field, u"new"_s);
    EXPECT_EQ(begun.count(), 1);
    EXPECT_EQ(atBegin, u"old"); // emitted before the text changed
    EXPECT_TRUE(field->isChanged());
    EXPECT_EQ(field->property("changed").toBool(), true);
    field->setText(u"old"_s);
    EXPECT_FALSE(field->isChanged());
    EXPECT_EQ(marks.count(), 2);

    QFocusEvent popup(QEvent::FocusIn, Qt::PopupFocusReason);
    QApplication::sendEvent(field, &popup);
    QTest::keyClick(field, Qt::Key_Backspace);
    EXPECT_EQ(begun.count(), 1);
    QFocusEvent focus(QEvent::FocusIn, Qt::TabFocusReason);
    QApplication::sendEvent(field, &focus);
    QTest::keyClick(field, Qt::Key_Backspace);
    EXPECT_EQ(begun.count(), 2);
    field->setReadOnly(true);
    QApplication::sendEvent(field, &focus);
    QTest::keyClicks(field, u"x"_s);
    EXPECT_EQ(begun.count(), 2);
}

TEST_F(WidgetsTest, FieldRowDrawsTheMarkOfItsCurrentField) {
    auto* first = new EditField;
    auto* second = new EditField;
    FieldRow row(u"Artist"_s, first);
    row.resize(300, 28);
    const auto hasMark = [&] {
        const QImage image = row.grab().toImage();
        return image.pixelColor(3, 14) == Theme::instance().color(Token::accent);
    };
    EXPECT_FALSE(hasMark());
    first->setText(u"x"_s);
    EXPECT_TRUE(hasMark());
    row.setField(second);
    EXPECT_FALSE(hasMark());
    EXPECT_EQ(second->accessibleName(), u"Artist");
    EXPECT_EQ(row.label()->buddy(), second);
    first->setText(u"y"_s);
    EXPECT_FALSE(hasMark());
    row.setField(nullptr);
    delete second;
    row.setField(first);
    EXPECT_TRUE(hasMark());
}

TEST_F(WidgetsTest, AlertsKeepTheirTextsAndDefaults) {
    const QString exit = u"Are you sure you want to Exit ?"_s;
    AlertBox ask(nullptr, exit, {}, {u" Exit "_s, u"Cancel"_s});
    EXPECT_EQ(ask.message(), exit);
    EXPECT_THAT(ask.buttonTexts(), ElementsAre(u" Exit "_s, u"Cancel"_s));
    EXPECT_EQ(ask.defaultIndex(), 0);
    EXPECT_EQ(ask.escapeIndex(), 1);
    const auto* button = ask.findChild<Button*>(u"alertButton0"_s);
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->text(), u" Exit ");
    EXPECT_TRUE(button->isDefault());

    AlertBox grave(nullptr, u"Are you sure you want to delete the selected photo ?"_s, {},
                   {u" Delete "_s, u"Cancel"_s});
    EXPECT_EQ(grave.defaultIndex(), 1);
    EXPECT_EQ(grave.findChild<Button*>(u"alertButton0"_s)->kind(), ButtonKind::Danger);
    AlertBox note(nullptr, u"Vaule Error"_s, u"Each value cannot be empty."_s, {u" Ok "_s});
    EXPECT_EQ(note.escapeIndex(), 0);
}

TEST_F(WidgetsTest, AlertsReturnTheButtonPressed) {
    const auto resultOf = [](Qt::Key key) {
        QTimer::singleShot(50, [key] {
            if (QWidget* alert = QApplication::activeModalWidget())
                QTest::keyClick(alert, key);
        });
        return AlertBox::run(nullptr, u"m"_s, {}, {u" Exit "_s, u"Cancel"_s});
    };
    EXPECT_EQ(resultOf(Qt::Key_Return), 0);
    EXPECT_EQ(resultOf(Qt::Key_Escape), 1);
}

TEST_F(WidgetsTest, TitleBarButtonsActOrPost) {
    QWidget window;
    auto* column = new QVBoxLayout(&window);
    column->setContentsMargins(0, 0, 0, 0);
    auto* bar = new TitleBar;
    bar->setName(u"ClipHeave"_s);
    column->addWidget(bar);
    column->addStretch();
    window.resize(900, 300);
    window.show();
    Posts posts;
    bar->closeButton()->setObjectName(u"close"_s);
    QTest::mouseClick(bar->closeButton(), Qt::LeftButton);
    EXPECT_THAT(posts.take(), ElementsAre(u"MyClosebuttonMouseDown close"_s));
    EXPECT_TRUE(window.isVisible());
    QTest::mouseClick(bar->resizeButton(), Qt::LeftButton);
    EXPECT_TRUE(window.isMaximized());
    QTest::mouseDClick(bar, Qt::LeftButton, {}, {500, 18});
    EXPECT_FALSE(window.isMaximized());
    EXPECT_EQ(bar->closeButton()->image(), u"Close_Nom.png");
    EXPECT_EQ(bar->closeButton()->geometry().right(), bar->width() - 1);
    QTest::mouseClick(bar->minimiseButton(), Qt::LeftButton);
    EXPECT_TRUE(window.isMinimized());
}

TEST_F(WidgetsTest, SegmentHasOneChoice) {
    Segment segment;
    segment.addPart(u"List"_s);
    segment.addPart(u"Photos"_s);
    segment.show();
    QSignalSpy changed(&segment, &Segment::currentChanged);
    EXPECT_EQ(segment.currentIndex(), 0);
    QTest::mouseClick(segment.part(1), Qt::LeftButton);
    EXPECT_EQ(segment.currentIndex(), 1);
    EXPECT_FALSE(segment.part(0)->isChecked());
    QTest::mouseClick(segment.part(1), Qt::LeftButton); // pressing the chosen part keeps it
    EXPECT_TRUE(segment.part(1)->isChecked());
    EXPECT_EQ(changed.count(), 1);
    segment.setSwitchesItself(false);
    QTest::mouseClick(segment.part(0), Qt::LeftButton);
    EXPECT_EQ(segment.currentIndex(), 1);
    EXPECT_FALSE(segment.part(0)->isChecked());
    segment.setCurrentIndex(0);
    EXPECT_TRUE(segment.part(0)->isChecked());
    EXPECT_EQ(changed.count(), 1);
}

TEST_F(WidgetsTest, ScrimCoversTheWindowBelowItsTitle) {
    QWidget window;
    window.resize(400, 300);
    Scrim scrim(&window);
    EXPECT_EQ(scrim.geometry(), QRect(0, 36, 400, 264));
    window.show();
    window.resize(500, 320);
    EXPECT_EQ(scrim.geometry(), QRect(0, 36, 500, 284));
}

} // namespace
} // namespace clipheave::app
