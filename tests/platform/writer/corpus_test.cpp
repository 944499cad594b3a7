// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/other_identifiers.h"
#include "tests/platform/writer/writer_kit.h"
#include "tests/testkit/corpus_files.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>

using namespace testkit;
using namespace writertest;

namespace {

constexpr qint64 kBudget = 150'000; ///< milliseconds

QStringList isoFiles() {
    QStringList files;
    for (const QString& path :
         corpusFiles({QString()}, {u"*.m*"_s, u"*.M*"_s, u"*.3g*"_s, u"*.f4v"_s, u"*.insv"_s})) {
        auto reader = FileReader::open(path);
        const ByteView head = reader ? reader->viewUpTo(4, 4) : ByteView();
        for (const char* type : {"ftyp", "moov", "mdat", "wide", "free", "skip", "pnot"})
            if (head.startsWith(type))
                files << path;
    }
    return files;
}

bool holdsTitle(const QString& path, const QString& title) {
    return shown(readItems(path), {u"itsk/%A9nam"_s}) == title;
}

/// A new title takes the place of these.
bool isOlderTitle(const AVMetadataItem& item) {
    const auto& others = clipheave::media::kOtherTitles;
    return std::any_of(others.begin(), others.end(),
                       [&](const char* other) { return item.identifier == QLatin1String(other); });
}

TEST(Corpus, EveryFileIsWrittenWholeOrNotAtAll) {
    SKIP_WITHOUT_CORPUS();
    const TempDir dir;
    const QString title = u"Title of the test"_s, target = dir.path("t.mp4");
    QElapsedTimer clock;
    clock.start();
    int written = 0, refused = 0;
    for (const QString& source : isoFiles()) {
        if (clock.elapsed() > kBudget)
            break;
        SCOPED_TRACE(source.toStdString());

        const QByteArray before = TempDir::read(source);
        const QByteArray hash = mediaHash(source);
        // Files that others have cut short point at bytes that are not there.
        const bool broken = source.contains(u"/broken/"_s) || !before.contains("moov") ||
                            !before.contains("mdat") || chunkHeads(before).contains(QByteArray());
        const bool quickTime = before.mid(8, 2) == "qt" || before.mid(4, 4) != "ftyp";
        Items merged{newItem("itsk/%A9nam", title)};
        for (const AVMetadataItem& item : readItems(source))
            if (item.identifier != u"itsk/%A9nam"_s)
                merged << item;
        const qsizetype kept =
            merged.size() - std::count_if(merged.begin(), merged.end(), isOlderTitle);
        const QList<std::optional<Items>> lists{std::nullopt, merged, Items()};
        for (qsizetype i = 0; i < lists.size(); ++i) {
            QFile::remove(target);
            const auto outcome =
                write(source, target, lists[i],
                      quickTime && i == 1 ? OutputContainer::QuickTimeMovie : OutputContainer::M4V,
                      i == 2);
            EXPECT_EQ(dir.files().size(), outcome ? 1 : 0);
            if (!outcome) {
                ++refused;
                EXPECT_TRUE(broken) << outcome.error().text();
                continue;
            }
            ++written;
            const QByteArray after = TempDir::read(target);
            EXPECT_TRUE(broken || chunkHeads(after) == chunkHeads(before));
            // A removal takes out padding: chunks that point at other boxes than the media's move.
            EXPECT_TRUE(!before.contains("mdat") || (broken && i == 2) ||
                        mediaHash(target) == hash);
            EXPECT_TRUE(broken || before.contains("moof") || before.contains("iloc") || i == 2 ||
                        keptBoxes(after) == keptBoxes(before));
            EXPECT_TRUE(broken || i != 1 || holdsTitle(target, title));
            EXPECT_TRUE(broken || i != 1 || readItems(target).size() == kept)
                << readItems(target).size() << " of " << kept;
        }
    }
    EXPECT_GT(written, 200);
    RecordProperty("written", written);
    RecordProperty("refused", refused);
}

} // namespace
