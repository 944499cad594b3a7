// SPDX-License-Identifier: GPL-3.0-or-later
// The date and reload writers of audio files, and what an encoding keeps, on files of another
// program.
#include "media/media_import.h"
#include "metadata/video_metadata.h"
#include "platform/foundation/file_manager.h"
#include "platform/media/export/av_asset_export_session.h"
#include "tests/testkit/media.h"
#include "tests/testkit/open_run.h"

#include <QJsonArray>

#include <cmath>
#include <initializer_list>

namespace {

using namespace clipheave;
using namespace clipheave::metadata;

const QDateTime kSourceDate(QDate(2003, 4, 5), QTime(6, 7, 8));
const char* const kAudioKinds[] = {"mp3", "flac", "m4a", "wav"};

class AudioDates : public testing::Test {
protected:
    void SetUp() override { SKIP_WITHOUT("ffmpeg"); }
    static media::ItemPointer read(const QString& path) {
        media::MediaImport import;
        import.importMediaItemsThreader({path});
        EXPECT_EQ(import.localPhotoItemArray().size(), 1u) << path;
        return import.localPhotoItemArray().empty() ? std::make_shared<const media::IKImageItem>()
                                                    : import.localPhotoItemArray().front();
    }
    /// Two seconds with title, artist, album and comment.
    jobs::WriteRequest audioFile(const QString& name, const QByteArray& options = {},
                                 const QStringList& more = {}) {
        const QString path = m_dir.path(name);
        testkit::ffmpeg(
            "-f lavfi -i sine=duration=2 " + options +
                " -metadata title=Own -metadata artist=A -metadata album=Old -metadata comment=C",
            QStringList(more) << path);
        EXPECT_TRUE(platform::NSFileManager::defaultManager().setAttributes(path, kSourceDate,
                                                                            kSourceDate));
        jobs::WriteRequest request;
        request.item = read(path);
        request.settings.storagelocation = m_dir.path("out");
        request.audioPane = media::ShowAudioViewWithItem(*request.item, request.item->fileArist);
        return request;
    }
    /// The writer's output as the import reads it.
    media::ItemPointer written(const jobs::WriteRequest& request,
                               const std::function<void(AudioMetadata&)>& command) {
        const auto outcomes = testkit::outcomesOf([&](jobs::Run& run) {
            AudioMetadata writer(run);
            command(writer);
        });
        for (const jobs::WriteOutcome& outcome : outcomes)
            EXPECT_EQ(outcome.status, jobs::WriteStatus::Completed) << outcome.text();
        m_output = m_dir.path(u"out/"_s + request.item->fileName);
        return read(m_output);
    }
    void expectDates(const QDateTime& date) const {
        const auto stored =
            platform::NSFileManager::defaultManager().attributesOfItemAtPath(m_output);
        ASSERT_TRUE(stored);
        EXPECT_EQ(stored->NSFileModificationDate, date);
        EXPECT_EQ(stored->NSFileCreationDate, date);
    }
    testkit::TempDir m_dir;
    QString m_output;
};

TEST_F(AudioDates, TheDateWritersDateTheFileAndTheRecordingAlone) {
    for (const char* kind : kAudioKinds) {
        SCOPED_TRACE(kind);
        const jobs::WriteRequest request = audioFile(u"a."_s + QLatin1String(kind));
        const bool isMp3 = request.item->fileName.endsWith(u"mp3");
        const bool isFlac = request.item->fileName.endsWith(u"flac");
        const auto dated = [&](const QString& date) {
            return written(request, [&](AudioMetadata& writer) {
                isMp3    ? writer.SetMp3MetadateItem_withDateStr(request, date)
                : isFlac ? writer.SetFlaCAuidoExifItem_withDateStr(request, date)
                         : writer.SetAuidoExifDateItem_withDateStr(request, date);
            });
        };
        for (const char* date : {"2020:01:31 10:11:12", "2020-01-31 10:11:12"}) {
            const auto item = dated(QLatin1String(date));
            EXPECT_EQ(item->shootDateStr, QLatin1String(date));
            EXPECT_EQ(item->fileTitle, u"Own");
            EXPECT_EQ(item->fileArist, u"A");
            EXPECT_EQ(item->fileAblumName, u"Old");
            // A FLAC file keeps the dates of its source.
            expectDates(isFlac ? kSourceDate : QDateTime(QDate(2020, 1, 31), QTime(10, 11, 12)));
        }
        EXPECT_EQ(dated(u"some day"_s)->shootDateStr, u"some day");
        expectDates(kSourceDate);
        dated(request.audioPane->shown.oldCreateDateStr);
        expectDates(kSourceDate);
    }
}

TEST_F(AudioDates, TheReloadWritersTakeTextsAndDatesFromTheirList) {
    AudioDictionary exif;
    for (const auto& [key, text] : std::initializer_list<std::pair<const char*, const char*>>{
             {"Title", "R\xC3\xA9"},
             {"Album", "Al"},
             {"Comments", ""},
             {"Track Number", "7"},
             {"Publisher", "P"},
             {"Record Date", "1999:12:31 23:59:58"},
             {"Created Date", "2019:05:06 07:08:09"}})
        exif.insert(QLatin1String(key), QString::fromUtf8(text));
    for (const char* kind : kAudioKinds) {
        SCOPED_TRACE(kind);
        jobs::WriteRequest request = audioFile(u"a."_s + QLatin1String(kind));
        request.audioPane->texts.titlelab = u"typed, not reloaded"_s;
        request.audioPane->texts.createdDatelab = u"2011:01:01 00:00:00"_s;
        const bool isMp3 = request.item->fileName.endsWith(u"mp3");
        const bool isFlac = request.item->fileName.endsWith(u"flac");
        const auto reloaded = [&] {
            return written(request, [&](AudioMetadata& writer) {
                isMp3    ? writer.ReloadMp3MetadateItem_withExif(request, exif)
                : isFlac ? writer.ReloadChangedFlaCAuidoExifItem_withExif(request, exif)
                         : writer.ReloadChangedAuidoExifDateItem_withExif(request, exif);
            });
        };
        const QString created = u"Created Date"_s;
        exif.insert(created, u"2019:05:06 07:08:09"_s);
        const auto item = reloaded();
        EXPECT_EQ(item->fileTitle, QString::fromUtf8("R\xC3\xA9"));
        EXPECT_EQ(item->fileAblumName, u"Al");
        EXPECT_EQ(item->shootDateStr, u"1999:12:31 23:59:58");
        EXPECT_EQ(item->fileComments, u"") << "the empty text of the list";
        EXPECT_EQ(item->fileArist, QString::fromLatin1(isMp3 ? "" : "A"))
            << "an MP3 file holds the list alone";
        EXPECT_EQ(item->fileAlbumArist, QString::fromLatin1(isMp3 || isFlac ? "" : "7"));
        const bool showsPublisher = isMp3 || request.item->fileName.endsWith(u"m4a");
        EXPECT_EQ(item->filePublisher, QString::fromLatin1(showsPublisher ? "P" : ""))
            << "nobody asks a WAV or FLAC file for it";
        expectDates(isFlac ? kSourceDate : QDateTime(QDate(2019, 5, 6), QTime(7, 8, 9)));
        exif.remove(created);
        reloaded();
        expectDates(kSourceDate);
    }
}

/// Title, start and end of every chapter, in whole hundredths of a second.
QStringList chaptersOf(const QString& path) {
    QStringList chapters;
    for (const auto chapter : testkit::ffprobe(path)[u"chapters"].toArray()) {
        const QJsonObject object = chapter.toObject();
        const auto hundredths = [&](const char* key) {
            return std::lround(object[QLatin1String(key)].toString().toDouble() * 100);
        };
        chapters << u"%1 %2-%3"_s.arg(object[u"tags"].toObject()[u"title"].toString())
                        .arg(hundredths("start_time"))
                        .arg(hundredths("end_time"));
    }
    return chapters;
}

TEST_F(AudioDates, ChaptersOutliveAnEncodingAndTheTagsAfterIt) {
    const QString list =
        m_dir.write("chapters", ";FFMETADATA1\n"
                                "[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1200\ntitle=One\n"
                                "[CHAPTER]\nTIMEBASE=1/1000\nSTART=1200\nEND=2000\n"
                                "title=Zwei \xC3\xA9\n");
    const QStringList expected{u"One 0-120"_s, QString::fromUtf8("Zwei \xC3\xA9 120-200")};
    const char* const kFiles[][3] = {{"a.opus", "opus", "libopus"},
                                     {"a.wma", "asf", "wmav2"},
                                     {"lossless.ogg", "matroska", "flac"}, // whatever the name says
                                     {"copied.aac", "matroska", "aac"},
                                     {"a.m4a", "ipod", "aac"}};
    for (const auto& [name, format, codec] : kFiles) {
        SCOPED_TRACE(name);
        jobs::WriteRequest request = audioFile(
            QLatin1String(name),
            QByteArray("-f ffmetadata -i % -map_chapters 1 -c:a ") + codec + " -f " + format,
            {list});
        request.audioPane->texts.titlelab = u"Typed"_s;
        const auto item = written(
            request, [&](AudioMetadata& writer) { writer.SaveChangedAuidoExifDateItem(request); });
        EXPECT_EQ(item->fileTitle, u"Typed");
        EXPECT_EQ(chaptersOf(m_output).size(), 2);
        for (qsizetype i = 0; i < 2; ++i)
            EXPECT_EQ(chaptersOf(m_output).value(i).section(u'-', 0, 0),
                      expected[i].section(u'-', 0, 0));
        EXPECT_EQ(chaptersOf(m_output), chaptersOf(request.item->filePath));
        const auto cleared = written(
            request, [&](AudioMetadata& writer) { writer.RemoveAuidoExifDateItem(request); });
        EXPECT_EQ(cleared->fileTitle, u"");
        EXPECT_EQ(chaptersOf(m_output).size(), 2) << "part of the audio, no item";
    }
}

} // namespace
