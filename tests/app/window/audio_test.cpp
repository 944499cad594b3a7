// SPDX-License-Identifier: GPL-3.0-or-later
// An album in the window: its pane, edits, an image dropped in, save and removal.
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/list/media_list_model.h"
#include "app/panes/artwork_well.h"
#include "app/panes/detail_pane.h"
#include "app/widgets/image_button.h"
#include "app/windows/main_window.h"
#include "media/media_import.h"
#include "tests/app/window/started_controller.h"
#include "tests/testkit/media.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QImage>
#include <QLineEdit>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

namespace {

using namespace clipheave;
using namespace clipheave::app;

class AlbumTest : public testing::Test {
protected:
    void SetUp() override {
        SKIP_WITHOUT("ffmpeg");
        controller = startedController(dir);
        ASSERT_NE(controller, nullptr);
        importAlbum();
    }

    /// One track in four formats, in this order.
    void importAlbum() {
        for (const char* name : {"1.mp3", "2.flac", "3.m4a", "4.wav"}) {
            const QString path = dir.path(QLatin1String(name));
            testkit::ffmpeg(
                QByteArray("-f lavfi -i sine=duration=0.5 -metadata artist=Vale -metadata "
                           "album=Tide -metadata comment=Old -metadata title=Track") +
                    name[0],
                {path});
            paths.append(path);
            sources.append(testkit::TempDir::read(path));
        }
        QSignalSpy done(controller.get(), &AppDelegate::importFinished);
        controller->importPaths(paths);
        ASSERT_TRUE(done.wait(10'000));
        ASSERT_EQ(controller->mediaController()->content().size(), 4u);
    }
    template <class T> T* child(const char* name) {
        return controller->mainWindow()->findChild<T*>(QLatin1String(name));
    }
    QString shown(const char* field) { return child<QLineEdit>(field)->text(); }
    void type(const char* field, const QString& text) {
        auto* edit = child<QLineEdit>(field);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, text);
    }
    bool drop(ArtworkWell* well, const QString& path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(well, &enter);
        QDropEvent end(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(well, &end);
        return enter.isAccepted() && end.isAccepted();
    }
    QString imageFile(const char* name, QSize size) {
        QImage image(size, QImage::Format_RGB32);
        image.fill(QColor(200, 40, 30)); // by its own numbers, to be told from any other
        EXPECT_TRUE(image.save(dir.path(QLatin1String(name))));
        return dir.path(QLatin1String(name));
    }
    const ActivityJob& runToEnd(const std::function<void()>& command) {
        QDir(dir.path(QStringLiteral("out"))).removeRecursively();
        QSignalSpy done(controller.get(), &AppDelegate::saveFinished);
        command();
        EXPECT_TRUE(done.wait(30'000));
        for (qsizetype i = 0; i < paths.size(); ++i)
            EXPECT_EQ(testkit::TempDir::read(paths[i]), sources[i]) << "the source of a job";
        return controller->activity()->jobs().front();
    }
    QStringList filesOut() const {
        return QDir(dir.path(QStringLiteral("out")))
            .entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    /// An output as the import reads it.
    media::IKImageItem written(const QString& name) const {
        media::MediaImport import;
        import.importMediaItemsThreader({dir.path(QStringLiteral("out/")) + name});
        EXPECT_EQ(import.localPhotoItemArray().size(), 1u) << name.toStdString();
        return import.localPhotoItemArray().empty() ? media::IKImageItem()
                                                    : *import.localPhotoItemArray().front();
    }
    QByteArray ffprobe(const QString& name, const char* entries) const {
        return testkit::ffprobe(QByteArray("-of default=nw=1:nk=1 -show_entries ") + entries,
                                dir.path(u"out/"_qs + name));
    }

    testkit::TempDir dir;
    std::unique_ptr<AppDelegate> controller;
    QStringList paths;
    QByteArrayList sources;
};

TEST_F(AlbumTest, TextsAndADroppedImageGoIntoEveryFormat) {
    const QString cover = imageFile("cover.png", QSize(40, 30));
    for (int row = 0; row < 4; ++row) {
        const QString name = paths[row].section(u'/', -1);
        SCOPED_TRACE(name.toStdString());
        controller->mainWindow()->selectRow(row);
        EXPECT_EQ(shown("titlelab"), QStringLiteral("Track%1").arg(row + 1));
        EXPECT_EQ(shown("artistlab"), u"Vale");
        EXPECT_EQ(shown("abulmlab"), u"Tide");
        // The other program hides it in a frame of its own in MP3 files.
        EXPECT_EQ(shown("commentslab"), QString::fromLatin1(row == 0 ? "" : "Old"));
        auto* well = child<ArtworkWell>("audioArtImageView");
        EXPECT_TRUE(well->artwork().isNull());
        EXPECT_FALSE(drop(well, paths[row])) << "no picture";
        ASSERT_TRUE(drop(well, cover));
        EXPECT_EQ(well->artwork().size(), QSize(40, 30));
        type("titlelab", QStringLiteral("Typed Title"));
        type("commentslab", QStringLiteral("Typed Comment"));
        const ActivityJob& job = runToEnd([this] {
            QTest::mouseClick(child<ImageButton>("SaveMediaChangesBtn"), Qt::LeftButton);
        });
        EXPECT_EQ(job.state, JobState::Done);
        EXPECT_EQ(filesOut(), QStringList{name});
        const media::IKImageItem item = written(name);
        EXPECT_EQ(item.fileTitle, u"Typed Title");
        EXPECT_EQ(item.fileComments, u"Typed Comment");
        EXPECT_EQ(item.fileAblumName, u"Tide") << "nobody touched it";
        EXPECT_EQ(item.fileImage.size(), QSize(40, 30));
        const QByteArray probed = ffprobe(name, "format_tags=title,comment:stream=width,height");
        EXPECT_TRUE(probed.contains("Typed Title")) << probed.toStdString();
        EXPECT_TRUE(probed.contains("Typed Comment")) << probed.toStdString();
        // The image of an MP3 file names no type, and the other program wants one.
        EXPECT_EQ(probed.contains("40\n30"), row != 0) << probed.toStdString();
    }
}

TEST_F(AlbumTest, AImageForTheWholeSelectionGoesIntoAllOfIt) {
    controller->mainWindow()->selectRow(1);
    controller->mainWindow()->selectAll();
    ASSERT_TRUE(drop(child<ArtworkWell>("audioArtImageView"), imageFile("c.png", QSize(16, 24))));
    type("abulmlab", QStringLiteral("Both"));
    runToEnd([this] { controller->SaveMeidaFileChangesAction(); });
    EXPECT_EQ(filesOut().size(), 4);
    for (const QString& name : filesOut()) {
        EXPECT_EQ(written(name).fileImage.size(), QSize(16, 24)) << name.toStdString();
        EXPECT_EQ(written(name).fileAblumName, u"Both") << name.toStdString();
    }
}

TEST_F(AlbumTest, RemovalTakesTheTagsOfTheSelectionOrOfAll) {
    const auto expectBare = [this](const QStringList& names) {
        EXPECT_EQ(filesOut(), names);
        for (const QString& name : names) {
            SCOPED_TRACE(name.toStdString());
            const media::IKImageItem item = written(name);
            for (const QString& text :
                 {item.fileTitle, item.fileArist, item.fileAblumName, item.fileComments})
                EXPECT_EQ(text, u"");
            EXPECT_FALSE(ffprobe(name, "format_tags").contains("Vale"));
            EXPECT_GT(item.fileduration, 0.4) << "the sound stays";
        }
    };
    controller->mainWindow()->selectRow(1);
    EXPECT_EQ(runToEnd([this] {
                  controller->performCommand(QStringLiteral("RemoveSelectedMediaFileAction"));
              }).succeeded(),
              1);
    expectBare({QStringLiteral("2.flac")});
    controller->mainWindow()->selectRow(0);
    EXPECT_EQ(runToEnd([this] {
                  controller->performCommand(QStringLiteral("RemoveAllMediaFileAction"));
              }).succeeded(),
              4);
    expectBare({QStringLiteral("1.mp3"), QStringLiteral("2.flac"), QStringLiteral("3.m4a"),
                QStringLiteral("4.wav")});
}

} // namespace
