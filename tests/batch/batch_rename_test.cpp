// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch_rename.h"
#include "batch/rename_journal.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_moves.h"
#include "platform/foundation/file_system.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/utc.h"
#include "tests/testkit/open_run.h"
#include "tests/testkit/testkit.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <csignal>
#include <map>
#include <random>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace clipheave;
using batch::RenameMove;
using jobs::WriteOutcome;
using jobs::WriteStatus;
using platform::identityOfItem;
using platform::NSFileManager;
using testing::ElementsAre;
using testkit::TempDir;

using Outcomes = std::vector<WriteOutcome>;
using Taker = std::function<void(const WriteOutcome& outcome)>;

/// What a rename or its undoing gives; `took` sees each outcome at once.
platform::Result<Outcomes> outcomesOf(const std::function<platform::Result<void>(jobs::Run&)>& work,
                                      const Taker& took) {
    platform::Result<void> result;
    const Outcomes outcomes =
        testkit::outcomesOf([&](jobs::Run& run) { result = work(run); }, {took, {}, {}});
    return result ? platform::Result<Outcomes>(outcomes) : tl::unexpected(result.error());
}
platform::Result<Outcomes> renamed(const std::vector<RenameMove>& plan, const Taker& took = {}) {
    return outcomesOf([&](jobs::Run& run) { return batch::runRename(plan, run); }, took);
}
platform::Result<Outcomes> takenBack(const Taker& took = {}) {
    return outcomesOf([](jobs::Run& run) { return batch::undoLastRename(run); }, took);
}
bool isMoved(const WriteOutcome& outcome) {
    return outcome.status == WriteStatus::Completed;
}

constexpr uid_t kNobody = 65534;

/// {name: inode} of a folder; hidden leftovers of killed copies do not count.
using Inodes = std::map<std::string, ino_t>;
Inodes inodesIn(const QString& folder) {
    Inodes inodes;
    const auto entries = NSFileManager::defaultManager().contentsOfDirectoryAtPath(folder);
    for (const auto& entry : entries.value())
        if (!entry.name.startsWith(".clipheave-"_L1))
            inodes[platform::nativePath(entry.name).toStdString()] =
                identityOfItem(platform::appendingPathComponent(folder, entry.name)).inode;
    return inodes;
}

std::vector<ino_t> sortedInodes(const Inodes& inodes) {
    std::vector<ino_t> sorted;
    for (const auto& [name, inode] : inodes)
        sorted.push_back(inode);
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

class BatchRename : public testing::Test {
protected:
    BatchRename() { qputenv("XDG_STATE_HOME", m_dir.path("state").toUtf8()); }
    ~BatchRename() override { qunsetenv("XDG_STATE_HOME"); }

    [[nodiscard]] QString at(const QString& name) const { return m_dir.path(u"media/"_s + name); }
    [[nodiscard]] QString media() const { return m_dir.path("media"); }
    QString write(const QString& name, const QByteArray& bytes = "x") {
        return m_dir.write(u"media/"_s + name, bytes);
    }
    [[nodiscard]] RenameMove move(const char* from, const char* to) const {
        RenameMove move;
        move.source = at(QString::fromUtf8(from));
        move.target = at(QString::fromUtf8(to));
        return move;
    }
    std::vector<WriteOutcome> run(const std::vector<RenameMove>& plan) {
        return renamed(plan).value();
    }
    std::vector<std::string> messagesOf(const std::vector<WriteOutcome>& outcomes) {
        std::vector<std::string> messages;
        messages.reserve(outcomes.size());
        for (const WriteOutcome& outcome : outcomes)
            messages.push_back((QString(QLatin1Char(isMoved(outcome) ? '+' : '-')) + outcome.text())
                                   .toStdString());
        return messages;
    }

    TempDir m_dir;
};

TEST_F(BatchRename, EveryFileEndsUnderOneName) {
    for (const char* name : {"a", "b", "folder/inside", "target"})
        write(QLatin1String(name), name);
    ASSERT_EQ(::symlink("nowhere", at(u"link"_s).toUtf8().constData()), 0);
    const Inodes before = inodesIn(media());
    RenameMove taken = move("b", "a");
    taken.retryTarget = m_dir.path("store/b 1");
    taken.storageFolder = m_dir.path("store/");
    RenameMove stays = move("target", "x");
    stays.stays = true;
    stays.note = batch::RenameNote::NameExists;
    const auto outcomes = run({move("a", "A"), taken, move("link", "folder"),
                               move("link", "link 2"), move("gone", "x"), move("target", "no/such"),
                               stays, move("b", "b 2"), move("A", "folder")});
    // "a" is free by then, so the retry name is not needed; "b" is gone when it is listed again.
    EXPECT_THAT(messagesOf(outcomes),
                ElementsAre("+", "+", "-name exists", "+", "-file missing", "-no such folder",
                            "-name exists", "-file missing", "-name exists"));
    EXPECT_TRUE(outcomes[2].outputs.isEmpty());
    EXPECT_EQ(TempDir::read(at(u"a"_s)), "b");
    EXPECT_EQ(sortedInodes(inodesIn(media())), sortedInodes(before));
    EXPECT_TRUE(identityOfItem(at(u"link 2"_s)).isKnown());
    ASSERT_TRUE(batch::canUndoRename());
    EXPECT_THAT(messagesOf(takenBack().value()), ElementsAre("+", "+", "+"));
    EXPECT_EQ(inodesIn(media()), before);
    EXPECT_FALSE(batch::canUndoRename());
    EXPECT_EQ(takenBack().error().code, platform::ErrorCode::NotFound);
}

TEST_F(BatchRename, ANameThatIsTakenMeanwhileIsEvadedOnce) {
    write(u"a"_s);
    write(u"b"_s);
    write(u"taken"_s, "other");
    RenameMove first = move("a", "taken");
    first.retryTarget = m_dir.path("store/taken 1");
    first.storageFolder = m_dir.path("store/");
    RenameMove second = move("b", "taken");
    second.retryTarget = first.retryTarget;
    second.storageFolder = first.storageFolder;
    const Inodes before = inodesIn(media());
    const auto outcomes = run({first, second});
    EXPECT_THAT(messagesOf(outcomes), ElementsAre("+name exists", "-name exists"));
    EXPECT_EQ(outcomes[0].outputs, QStringList{first.retryTarget});
    EXPECT_EQ(TempDir::read(at(u"taken"_s)), "other");
    EXPECT_THAT(messagesOf(takenBack().value()), ElementsAre("+"));
    EXPECT_EQ(inodesIn(media()), before);
}

TEST_F(BatchRename, AFileThatIsSavedAgainMeanwhileCanBeTakenBack) {
    write(u"a"_s);
    write(u"b"_s);
    std::size_t index = 0;
    const Taker saveOther = [&](const WriteOutcome&) {
        if (++index == 1) {
            write(u"b new"_s, "saved");
            ::rename(at(u"b new"_s).toUtf8().constData(), at(u"b"_s).toUtf8().constData());
        }
    };
    ASSERT_TRUE(renamed({move("a", "a1"), move("b", "b1")}, saveOther));
    EXPECT_THAT(messagesOf(takenBack().value()), ElementsAre("+", "+"));
    EXPECT_EQ(TempDir::read(at(u"b"_s)), "saved");
}

TEST_F(BatchRename, AnyNameGoesThereAndBack) {
    const std::vector<QByteArray> names = {"caf\xC3\xA9", "cafe\xCC\x81", "\xF0\x9F\x8E\xAC",
                                           "\xFF\xFE %20\n\x7F", QByteArray(255, 'n')};
    std::vector<RenameMove> plan;
    for (const QByteArray& name : names) {
        RenameMove move;
        move.source = write(QString::number(plan.size()));
        move.target = at(platform::pathFromNative(name));
        plan.push_back(move);
    }
    RenameMove tooLong = move("0", "x");
    tooLong.source = write(u"long"_s);
    tooLong.target = at(QString(256, u'n'));
    plan.push_back(tooLong);
    const Inodes before = inodesIn(media());
    const auto outcomes = run(plan);
    const Inodes after = inodesIn(media());
    for (const QByteArray& name : names)
        EXPECT_EQ(after.count(name.toStdString()), 1u) << name.toPercentEncoding();
    EXPECT_FALSE(isMoved(outcomes.back()));
    EXPECT_EQ(takenBack().value().size(), names.size());
    EXPECT_EQ(inodesIn(media()), before);
}

TEST_F(BatchRename, UndoRefusesWhatIsNotItsOwn) {
    for (const char* name : {"a", "b", "c", "d"})
        write(QLatin1String(name), name);
    run({move("a", "a1"), move("b", "b1"), move("c", "c1"), move("d", "d1")});
    write(u"a"_s, "new");
    QFile::remove(at(u"b1"_s));
    write(u"c2"_s, "another");
    QFile::remove(at(u"c1"_s));
    ASSERT_TRUE(QFile::rename(at(u"c2"_s), at(u"c1"_s)));
    EXPECT_THAT(messagesOf(takenBack().value()),
                ElementsAre("+", "-another file", "-file gone", "-old name taken"));
    EXPECT_EQ(TempDir::read(at(u"a"_s)), "new");
    EXPECT_EQ(TempDir::read(at(u"a1"_s)), "a");
    // What was in the way may go: the job waits for that once.
    QFile::remove(at(u"a"_s));
    EXPECT_EQ(takenBack().value().size(), 3u);
    EXPECT_EQ(TempDir::read(at(u"a"_s)), "a");
    EXPECT_FALSE(batch::canUndoRename());
}

TEST_F(BatchRename, JobsAreTakenBackOneByOneAndNeverMixed) {
    write(u"0"_s);
    for (int i = 0; i < 24; ++i)
        run({move(QByteArray::number(i).constData(), QByteArray::number(i + 1).constData())});
    {
        // A job that runs elsewhere is not taken for the last one.
        batch::JournalMove next;
        next.source = at(u"24"_s);
        next.target = at(u"25"_s);
        const auto running = batch::RenameJournal::create({next});
        ASSERT_TRUE(running);
        EXPECT_EQ(takenBack().error().code, platform::ErrorCode::NotSupported);
    }
    EXPECT_TRUE(takenBack().value().empty()); // it had moved nothing
    m_dir.write("state/clipheave/9999999999-1-x.renames", "no journal");
    int undone = 0;
    while (takenBack())
        ++undone;
    EXPECT_EQ(undone, 19); // the last twenty jobs, one of which was the empty one
    EXPECT_EQ(inodesIn(media()).count("5"), 1u);
}

TEST_F(BatchRename, AJournalThatCannotBeWrittenStopsTheJob) {
    write(u"a"_s);
    m_dir.write("state", "no folder");
    EXPECT_FALSE(renamed({move("a", "b")}));
    EXPECT_TRUE(QFile::exists(at(u"a"_s)));
}

TEST_F(BatchRename, AReadOnlyFolderKeepsItsNames) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs to become another user";
    write(u"a"_s);
    ASSERT_EQ(::chmod(m_dir.path().toUtf8().constData(), 0777), 0);
    ASSERT_EQ(::seteuid(kNobody), 0);
    const auto outcomes = renamed({move("a", "b")});
    ASSERT_EQ(::seteuid(0), 0);
    ASSERT_TRUE(outcomes);
    EXPECT_THAT(messagesOf(*outcomes), ElementsAre("-Permission denied"));
    EXPECT_FALSE(batch::canUndoRename());
}

/// Jobs in a child process that is killed at any moment.
class KilledRename : public BatchRename {
protected:
    /// Runs `work` in a child and kills it; true when that was before its end. The delay begins
    /// with the first file that `work` reports, or at once.
    enum class From { FirstFile, Start };
    static bool killAfter(std::chrono::microseconds delay, From from,
                          const std::function<void(const Taker&)>& work) {
        int ends[2];
        if (::pipe(ends) != 0)
            return false;
        const pid_t child = ::fork();
        if (child == 0) {
            const Taker progress = [&](const WriteOutcome&) {
                if (const int end = std::exchange(ends[1], -1); end >= 0)
                    ::close(end);
            };
            work(progress);
            ::_exit(0);
        }
        ::close(ends[1]);
        char byte = 0;
        if (from == From::FirstFile && ::read(ends[0], &byte, 1) != 0) // until the child closes it
            ADD_FAILURE();
        ::close(ends[0]);
        ::usleep(static_cast<useconds_t>(delay.count()));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFSIGNALED(status);
    }
    std::chrono::microseconds anyMoment(double longest) {
        return std::chrono::microseconds(
            static_cast<int>(std::uniform_real_distribution(0.0, longest)(m_random)));
    }
    static double microseconds(const std::function<void()>& work) {
        QElapsedTimer timer;
        timer.start();
        work();
        return static_cast<double>(timer.nsecsElapsed()) / 1000;
    }
    static void undoAll() {
        while (const auto undone = takenBack())
            for (const WriteOutcome& outcome : *undone)
                ASSERT_TRUE(isMoved(outcome)) << outcome.text();
    }
    std::vector<RenameMove> planOf(int count) {
        std::vector<RenameMove> plan;
        for (int i = 0; i < count; ++i) {
            write(QString::number(i), QByteArray::number(i));
            // Every third takes the name that the one before it has just left.
            plan.push_back(move(QByteArray::number(i).constData(),
                                i % 3 == 1 ? QByteArray::number(i - 1).constData()
                                           : ("n" + QByteArray::number(i)).constData()));
        }
        return plan;
    }

    std::mt19937 m_random{20261};
};

TEST_F(KilledRename, TenThousandFilesComeBack) {
    const auto plan = planOf(10'000);
    const Inodes before = inodesIn(media());
    const double renaming = microseconds([&] { EXPECT_TRUE(renamed(plan)); });
    EXPECT_EQ(inodesIn(media()).count("n9999"), 1u);
    EXPECT_EQ(inodesIn(media()).count("9999"), 0u);
    EXPECT_EQ(sortedInodes(inodesIn(media())), sortedInodes(before));
    const double undoing = microseconds([] { EXPECT_EQ(takenBack().value().size(), 10'000u); });
    EXPECT_EQ(inodesIn(media()), before);
    int killedMidway = 0;
    for (int round = 0; round < 6; ++round) {
        const From from = round % 3 == 0 ? From::Start : From::FirstFile;
        const bool killed = killAfter(anyMoment(renaming / 3), from,
                                      [&](const auto& progress) { (void)renamed(plan, progress); });
        killedMidway += killed && inodesIn(media()) != before;
        for (const From undoFrom : {From::Start, From::FirstFile})
            killAfter(anyMoment(undoing / 3), undoFrom,
                      [](const auto& progress) { (void)takenBack(progress); });
        ASSERT_EQ(sortedInodes(inodesIn(media())), sortedInodes(before));
        undoAll();
        ASSERT_EQ(inodesIn(media()), before) << "round " << round;
    }
    EXPECT_GT(killedMidway, 0);
}

/// Moves to another file system, which memory is for most temporary folders.
class RenameAcross : public KilledRename {
protected:
    void SetUp() override {
        QDir().mkpath(media());
        if (!m_far.isValid() ||
            identityOfItem(m_far.path()).device == identityOfItem(media()).device)
            GTEST_SKIP() << "one file system only";
        ::chmod(m_far.path().toUtf8().constData(), 0777);
    }
    [[nodiscard]] QString far(const QString& name) const { return m_far.filePath(name); }
    RenameMove moveFar(const QString& name) {
        RenameMove move;
        move.source = at(name);
        move.target = far(name);
        return move;
    }

    /// A file "a" that was changed nine days after it was created.
    QString writeDated(const QByteArray& bytes) {
        const QString file = write(u"a"_s, bytes);
        EXPECT_TRUE(m_manager.setAttributes(file, m_created, m_created.addDays(9)));
        return file;
    }

    const NSFileManager& m_manager = NSFileManager::defaultManager();
    const QDateTime m_created{QDate(2011, 2, 3), QTime(4, 5, 6), platform::kUtc};
    QTemporaryDir m_far{u"/dev/shm/rename-XXXXXX"_s};
};

TEST_F(RenameAcross, BytesDatesAndLinksTravel) {
    const QString file = writeDated(QByteArray(300'000, 'v'));
    ASSERT_EQ(::symlink("a", at(u"link"_s).toUtf8().constData()), 0);
    write(u"folder/x"_s);
    write(u"b"_s);
    QFile taken(far(u"b"_s));
    ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
    EXPECT_THAT(messagesOf(run(
                    {moveFar(u"a"_s), moveFar(u"link"_s), moveFar(u"folder"_s), moveFar(u"b"_s)})),
                ElementsAre("+", "+", "-neither file nor link", "-name exists"));
    EXPECT_EQ(inodesIn(media()).size(), 2u);
    EXPECT_EQ(TempDir::read(far(u"a"_s)), QByteArray(300'000, 'v'));
    const auto attributes = m_manager.attributesOfItemAtPath(far(u"a"_s)).value();
    EXPECT_EQ(attributes.NSFileModificationDate, m_created.addDays(9));
    EXPECT_EQ(attributes.NSFileCreationDate, m_created);
    EXPECT_EQ(QFile::symLinkTarget(far(u"link"_s)), far(u"a"_s));
    EXPECT_THAT(messagesOf(takenBack().value()), ElementsAre("+", "+"));
    EXPECT_EQ(m_manager.attributesOfItemAtPath(file).value().NSFileCreationDate, m_created);
    EXPECT_EQ(inodesIn(media()).size(), 4u);
    EXPECT_EQ(inodesIn(m_far.path()).size(), 1u);
}

TEST_F(RenameAcross, DatesCrossWhenTheOriginalStays) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs to become another user";
    const QString file = writeDated("bytes");
    ASSERT_EQ(::chmod(m_dir.path().toUtf8().constData(), 0777), 0);
    ASSERT_EQ(::seteuid(kNobody), 0);
    const auto outcomes = renamed({moveFar(u"a"_s)});
    ASSERT_EQ(::seteuid(0), 0);
    ASSERT_TRUE(outcomes);
    EXPECT_THAT(messagesOf(*outcomes), ElementsAre("+original stays: Permission denied"));
    const auto attributes = m_manager.attributesOfItemAtPath(far(u"a"_s)).value();
    EXPECT_EQ(attributes.NSFileModificationDate, m_created);
    EXPECT_EQ(attributes.NSFileCreationDate, m_created.addDays(9));
    EXPECT_THAT(messagesOf(takenBack().value()), ElementsAre("+"));
    EXPECT_TRUE(inodesIn(m_far.path()).empty());
    EXPECT_EQ(TempDir::read(file), "bytes");
}

TEST_F(RenameAcross, AKilledCopyLosesNothing) {
    std::vector<RenameMove> plan;
    for (int i = 0; i < 60; ++i) {
        write(QString::number(i), QByteArray::number(i).repeated(3000));
        plan.push_back(moveFar(QString::number(i)));
    }
    const auto namesNow = [&] {
        std::vector<std::string> names;
        for (const auto& [name, inode] : inodesIn(media()))
            names.push_back(name);
        return names;
    };
    const auto before = namesNow();
    const double renaming = microseconds([&] { EXPECT_TRUE(renamed(plan)); });
    const double undoing = microseconds([] { EXPECT_EQ(takenBack().value().size(), 60u); });
    for (int round = 0; round < 12; ++round) {
        killAfter(anyMoment(renaming), From::Start,
                  [&](const auto& progress) { (void)renamed(plan, progress); });
        killAfter(anyMoment(undoing), From::Start,
                  [](const auto& progress) { (void)takenBack(progress); });
        undoAll();
        ASSERT_EQ(namesNow(), before);
        ASSERT_TRUE(inodesIn(m_far.path()).empty());
        for (int i = 0; i < 60; ++i)
            ASSERT_EQ(TempDir::read(at(QString::number(i))), QByteArray::number(i).repeated(3000));
    }
}

} // namespace
