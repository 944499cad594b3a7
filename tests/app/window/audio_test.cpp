// SPDX-License-Identifier: GPL-3.0-or-later
// An album in the window: its pane, edits, an image dropped in, save and removal.
#include "app/panes/artwork_well.h"
#include "app/widgets/image_button.h"
#include "media/media_import.h"
#include "tests/app/drops.h"
#include "tests/app/window/window_fixture.h"
#include "tests/testkit/media.h"

#include <QDir>
#include <QImage>

namespace {

using namespace clipheave;
using namespace clipheave::app;

class AlbumTest : public WindowFixture {
protected:
    void SetUp() override {
        SKIP_WITHOUT("ffmpeg");
        WindowFixture::SetUp();
        // One track in four formats, in this order.
        for (const char* name : {"1.mp3", "2.flac", "3.m4a", "4.wav"}) {
            const QString path = dir.path(name);
            testkit::ffmpeg(
                QByteArray("-f lavfi -i sine=duration=0.5 -metadata artist=Vale -metadata "
                           "album=Tide -metadata comment=Old -metadata title=Track") +
                    name[0],
                {path});
            paths.append(path);
            sources.append(testkit::TempDir::read(path));
        }
        import(paths);
        ASSERT_EQ(controller->mediaController()->content().size(), 4u);
    }

    QString shown(const char* field) { return child<QLineEdit>(field)->text(); }
    QString imageFile(const char* name, QSize size) {
        QImage image(size, QImage::Format_RGB32);
        image.fill(QColor(200, 40, 30)); // a colour that no other image has
        EXPECT_TRUE(image.save(dir.path(name)));
        return dir.path(name);
    }
    const ActivityJob& runToEnd(const std::function<void()>& command) {
        QDir(dir.path("out")).removeRecursively();
        const ActivityJob& job = saved(command);
        for (qsizetype i = 0; i < paths.size(); ++i)
            EXPECT_EQ(testkit::TempDir::read(paths[i]), sources[i]) << "the source of a job";
        return job;
    }
    /// An output as the import reads it.
    media::IKImageItem written(const QString& name) const {
        media::MediaImport import;
        import.importMediaItemsThreader({dir.path("out/") + name});
        EXPECT_EQ(import.localPhotoItemArray().size(), 1u) << name;
        return import.localPhotoItemArray().empty() ? media::IKImageItem()
                                                    : *import.localPhotoItemArray().front();
    }
    QByteArray ffprobe(const QString& name, const char* entries) const {
        return testkit::ffprobe(QByteArray("-of default=nw=1:nk=1 -show_entries ") + entries,
                                dir.path(u"out/"_s + name));
    }

    QStringList paths;
    QByteArrayList sources;
};

TEST_F(AlbumTest, TextsAndADroppedImageGoIntoEveryFormat) {
    const QString cover = imageFile("cover.png", QSize(40, 30));
    for (int row = 0; row < 4; ++row) {
        const QString name = paths[row].section(u'/', -1);
        SCOPED_TRACE(name.toStdString());
        window()->selectRow(row);
        EXPECT_EQ(shown("titlelab"), u"Track%1"_s.arg(row + 1));
        EXPECT_EQ(shown("artistlab"), u"Vale");
        EXPECT_EQ(shown("abulmlab"), u"Tide");
        // The other program hides it in a frame of its own in MP3 files.
        EXPECT_EQ(shown("commentslab"), QString::fromLatin1(row == 0 ? "" : "Old"));
        auto* well = child<ArtworkWell>("audioArtImageView");
        EXPECT_TRUE(well->artwork().isNull());
        EXPECT_FALSE(dropFiles(well, {paths[row]})) << "no image";
        ASSERT_TRUE(dropFiles(well, {cover}));
        EXPECT_EQ(well->artwork().size(), QSize(40, 30));
        type("titlelab", u"Typed Title"_s);
        type("commentslab", u"Typed Comment"_s);
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
        EXPECT_TRUE(probed.contains("Typed Title")) << probed;
        EXPECT_TRUE(probed.contains("Typed Comment")) << probed;
        // The image of an MP3 file names no type, and the other program wants one.
        EXPECT_EQ(probed.contains("40\n30"), row != 0) << probed;
    }
}

TEST_F(AlbumTest, AImageForTheWholeSelectionGoesIntoAllOfIt) {
    window()->selectRow(1);
    window()->selectAll();
    ASSERT_TRUE(dropFiles(child<ArtworkWell>("audioArtImageView"), {imageFile("c.png", {16, 24})}));
    type("abulmlab", u"Both"_s);
    runToEnd([this] { controller->SaveMeidaFileChangesAction(); });
    EXPECT_EQ(filesOut().size(), 4);
    for (const QString& name : filesOut()) {
        EXPECT_EQ(written(name).fileImage.size(), QSize(16, 24)) << name;
        EXPECT_EQ(written(name).fileAblumName, u"Both") << name;
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
            EXPECT_GT(item.fileduration, 0.4) << "the audio stays";
        }
    };
    window()->selectRow(1);
    const auto succeeded = [this](const QString& command) {
        return runToEnd([&] { controller->performCommand(command); }).succeeded();
    };
    EXPECT_EQ(succeeded(u"RemoveSelectedMediaFileAction"_s), 1);
    expectBare({u"2.flac"_s});
    window()->selectRow(0);
    EXPECT_EQ(succeeded(u"RemoveAllMediaFileAction"_s), 4);
    expectBare({u"1.mp3"_s, u"2.flac"_s, u"3.m4a"_s, u"4.wav"_s});
}

} // namespace
