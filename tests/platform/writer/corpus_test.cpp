// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/writer/writer_kit.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>

using namespace testkit;
using namespace writertest;

namespace {

constexpr qint64 kBudget = 150'000; ///< milliseconds

QStringList corpusFiles() {
    QStringList files;
    QDirIterator all(corpus(),
                     {QStringLiteral("*.m*"), QStringLiteral("*.M*"), QStringLiteral("*.3g*"),
                      QStringLiteral("*.f4v"), QStringLiteral("*.insv")},
                     QDir::Files, QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QString path = all.next();
        auto reader = FileReader::open(path);
        const ByteView head = reader ? reader->viewUpTo(4, 4) : ByteView();
        for (const char* type : {"ftyp", "moov", "mdat", "wide", "free", "skip", "pnot"})
            if (head.startsWith(type))
                files << path;
    }
    files.sort();
    return files;
}

bool holdsTitle(const QString& path, const QString& title) {
    return shown(readItems(path), {QStringLiteral("itsk/%A9nam")}) == title;
}

TEST(Corpus, EveryFileIsWrittenWholeOrNotAtAll) {
    if (corpus().isEmpty())
        GTEST_SKIP() << "CLIPHEAVE_CORPUS is not set";
    const TempDir dir;
    const QString title = QStringLiteral("Title of the test"),
                  target = dir.path(QStringLiteral("t.mp4"));
    QElapsedTimer clock;
    clock.start();
    int written = 0, refused = 0;
    for (const QString& source : corpusFiles()) {
        if (clock.elapsed() > kBudget)
            break;
        SCOPED_TRACE(source.toStdString());

        const QByteArray before = TempDir::read(source);
        const QByteArray hash = mediaHash(source);
        // Files that others have cut short point at bytes that are not there.
        const bool broken = source.contains(QStringLiteral("/broken/")) ||
                            !before.contains("moov") || !before.contains("mdat") ||
                            chunkHeads(before).contains(QByteArray());
        const bool quickTime = before.mid(8, 2) == "qt" || before.mid(4, 4) != "ftyp";
        Items merged{newItem("itsk/%A9nam", title)};
        for (const AVMetadataItem& item : readItems(source))
            if (item.identifier != QStringLiteral("itsk/%A9nam"))
                merged << item;
        const QList<std::optional<Items>> lists{std::nullopt, merged, Items()};
        for (qsizetype i = 0; i < lists.size(); ++i) {
            QFile::remove(target);
            const auto outcome =
                write(source, target, lists[i],
                      quickTime && i == 1 ? OutputContainer::QuickTimeMovie : OutputContainer::M4V,
                      i == 2);
            EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(),
                      outcome ? 1 : 0);
            if (!outcome) {
                ++refused;
                EXPECT_TRUE(broken) << outcome.error().text().toStdString();
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
            EXPECT_TRUE(broken || i != 1 || readItems(target).size() == merged.size())
                << readItems(target).size() << " of " << merged.size();
        }
    }
    EXPECT_GT(written, 200);
    RecordProperty("written", written);
    RecordProperty("refused", refused);
}

} // namespace
