// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/messages.h"
#include "media/fields.h"
#include "metadata/messages.h"

#include "platform/foundation/file_manager.h"
#include "tests/metadata/write_fixture.h"

#include <QFile>
#include <QFileInfo>

namespace {

using namespace clipheave;
using jobs::WriteOutcome;
using jobs::WriteStatus;
using metadata::VideoMetadata;
using metadata::WriteFixture;

class Writers : public WriteFixture {
protected:
    jobs::WriteRequest request(const QString& path) const {
        jobs::WriteRequest made = WriteFixture::request(path);
        made.pane = media::ShowVideoViewWithItem(*made.item);
        return made;
    }
    static QString valueOf(const QString& path, const char* identifier) {
        const auto asset = platform::AVURLAsset::assetWithPath(path);
        for (const auto& item : asset ? asset->metadata() : QList<platform::AVMetadataItem>())
            if (item.effectiveIdentifier() == QLatin1String(identifier))
                return item.stringValue();
        return {};
    }
    static QDateTime modified(const QString& path) {
        const auto found = platform::NSFileManager::defaultManager().attributesOfItemAtPath(path);
        return found ? found->NSFileModificationDate : QDateTime();
    }
};

TEST_F(Writers, TheDateWriterSetsTheItemAndBothFileDates) {
    const QString source = m_dir.write("a.mp4", testkit::movie("t"));
    const QString output = m_dir.path("out/a.mp4");
    const auto write = [&](const QString& to, const char* date) {
        return run([&](VideoMetadata& writer) {
            writer.SetVideoFileWithFilePath_WithExifPath_withDateStr(source, to,
                                                                     QString::fromUtf8(date));
        });
    };
    ASSERT_EQ(write(output, "2020:01:31 10:00:00").front().status, jobs::WriteStatus::Completed);
    EXPECT_EQ(valueOf(output, "uiso/date"), u"2020:01:31 10:00:00");
    EXPECT_EQ(valueOf(output, "itsk/%A9nam"), u"t");
    EXPECT_EQ(modified(output), QDateTime(QDate(2020, 1, 31), QTime(10, 0)));
    EXPECT_EQ(testkit::TempDir::read(output).mid(8, 4), "qt  ");
    ASSERT_EQ(write(output, "someday").front().status, jobs::WriteStatus::Completed);
    EXPECT_EQ(modified(output), modified(source));
    EXPECT_EQ(write(source, "2020:01:31 10:00:00").front().outputs,
              QStringList{m_dir.path("a 2.mp4")});
}

TEST_F(Writers, TheCreatedDateOfThePaneDatesSavesAndRemovals) {
    auto edited = request(m_dir.write("a.mp4", testkit::movie("t")));
    edited.pane.texts.mediaCreatedDate = u"2019:02:03 04:05:06"_s;
    auto plain = request(m_dir.write("b.MXF", "not really"));
    auto junk = request(m_dir.write("c.mp4", "nothing of the kind"));
    junk.pane = edited.pane;
    const auto outcomes = run([&](VideoMetadata& writer) {
        for (const auto& one : {edited, plain, junk})
            writer.SaveMeidaFileChangesAction(one);
    });
    ASSERT_EQ(outcomes.size(), 3u);
    const QDateTime asked(QDate(2019, 2, 3), QTime(4, 5, 6));
    EXPECT_EQ(modified(outcomes[0].outputs.front()), asked);
    EXPECT_EQ(outcomes[1].status, jobs::WriteStatus::Completed);
    EXPECT_EQ(testkit::TempDir::read(outcomes[1].outputs.front()), "not really");
    EXPECT_EQ(modified(outcomes[1].outputs.front()), modified(plain.item->filePath));
    // What cannot be rewritten is there all the same, dated as asked, and says so.
    EXPECT_EQ(outcomes[2].status, jobs::WriteStatus::Failed);
    EXPECT_TRUE(outcomes[2].notes.contains(platform::Message(jobs::kCopiedUnchanged)));
    EXPECT_EQ(testkit::TempDir::read(outcomes[2].outputs.front()), "nothing of the kind");
    EXPECT_EQ(modified(outcomes[2].outputs.front()), asked);
    const auto removed = run([&](VideoMetadata& writer) {
        edited.item = media::changedCopy(*edited.item, [](auto& item) { item.fileTitle = u"t"_s; });
        writer.RemoveMediaFileAction(edited);
    });
    EXPECT_EQ(valueOf(removed.front().outputs.front(), "itsk/%A9nam"), QString());
    EXPECT_EQ(modified(removed.front().outputs.front()), asked);
}

TEST_F(Writers, TextsOfEveryKindAndLengthReadBack) {
    QString planes;
    for (char32_t plane = 0; plane <= 16; ++plane) {
        const char32_t character = plane << 16 | 0x4E42;
        planes += QString::fromUcs4(&character, 1);
    }
    for (const QString& title :
         {planes, QString(500000, QChar(0x00E9)), u"a\nb\t\"c\"\\"_s, u" "_s}) {
        auto made = request(m_dir.write("a.mov", testkit::movie("t")));
        media::typeIntoField(made.pane, *media::videoField(u"title"_s), title);
        media::typeIntoField(made.pane, *media::videoField(u"keywords"_s), title);
        const auto outcome = saved(made);
        ASSERT_EQ(outcome.status, jobs::WriteStatus::Completed);
        EXPECT_TRUE(valueOf(outcome.outputs.front(), "itsk/%A9nam") == title);
        EXPECT_TRUE(valueOf(outcome.outputs.front(), "mdta/com.apple.quicktime.keywords") == title);
    }
}

TEST_F(Writers, TitlesBecomeNamesOnlyInsideAndOnlyWhereNothingIs) {
    const auto titled = [&](const char* name, const char* title) {
        auto made = request(m_dir.write(name, name));
        made.item = media::changedCopy(
            *made.item, [title](auto& item) { item.fileTitle = QString::fromUtf8(title); });
        return made;
    };
    const QString old = m_dir.write("out/There.mp4", "old");
    const QString link = m_dir.path("out/Link.mp4");
    ASSERT_TRUE(QFile::link(old, link));
    const auto outcomes = run([&](VideoMetadata& writer) {
        for (const auto& one :
             {titled("1.mp4", "Same"), titled("2.mp4", "Same"), titled("3.mp4", "../escaped"),
              titled("4.mp4", "no/folder"), titled("5.mp4", "There"), titled("6.mp4", ""),
              titled("7.mov", "Dots.."), titled("8.mp4", "Link")})
            writer.CopyvideoTitletoFileNameAction(one);
    });
    ASSERT_EQ(outcomes.size(), 8u);
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    for (const std::size_t failed : {1u, 2u, 3u, 4u, 7u}) {
        EXPECT_EQ(outcomes[failed].status, jobs::WriteStatus::Failed) << failed;
        EXPECT_FALSE(outcomes[failed].text().isEmpty());
    }
    EXPECT_EQ(outcomes[3].failure->detail,
              platform::Message(metadata::kTitleNamesFolder, {m_dir.path("out/no")}));
    EXPECT_EQ(filesOut(), (QStringList{u".mp4"_s, u"Dots...mov"_s, u"Link.mp4"_s, u"Same.mp4"_s,
                                       u"There.mp4"_s}));
    EXPECT_EQ(testkit::TempDir::read(m_dir.path("out/There.mp4")), "old");
    EXPECT_EQ(testkit::TempDir::read(m_dir.path("out/Same.mp4")), "1.mp4");
    EXPECT_EQ(modified(m_dir.path("out/Same.mp4")), modified(m_dir.path("1.mp4")));
    EXPECT_FALSE(QFile::exists(m_dir.path("escaped.mp4")));
}

TEST_F(Writers, OutputsSpareEverySourceOfTheListAndStopWhenCancelled) {
    const QString other = m_dir.write("out/a.mp4", "another source of the list");
    const auto made = request(m_dir.write("a.mp4", testkit::movie("t")));
    const auto outcome = testkit::outcomesOf([&](jobs::Run& run) {
                             run.paths().protect({other});
                             VideoMetadata(run).CopyvideofilenametoTitleAction(made);
                         }).front();
    EXPECT_EQ(outcome.outputs, QStringList{m_dir.path("out/a 2.mp4")});
    EXPECT_EQ(valueOf(outcome.outputs.front(), "itsk/%A9nam"), u"a");
    EXPECT_EQ(testkit::TempDir::read(other), "another source of the list");
    const auto cancelled = testkit::outcomesOf([&](jobs::Run& run) {
        run.cancel();
        for (int i = 0; i < 20; ++i)
            VideoMetadata(run).SaveMeidaFileChangesAction(made);
    });
    for (const auto& one : cancelled)
        EXPECT_EQ(one.status, jobs::WriteStatus::Cancelled);
    EXPECT_EQ(cancelled.size(), 20u);
    EXPECT_EQ(filesOut().size(), 2);
}

} // namespace
