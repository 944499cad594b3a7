// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/rename_journal.h"

#include "batch/messages.h"
#include "platform/foundation/atomic_file.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/state_folder.h"
#include "platform/foundation/temporaries.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace clipheave::batch {
namespace {

using platform::ErrorCode;
using platform::failure;
using platform::FileDescriptor;
using platform::FileIdentity;
using platform::nativePath;
using platform::Result;
using platform::stateFolder;

constexpr char kFormatLine[] = "clipheave-renames 1\n";
constexpr char kJournalEnding[] = ".renames";
constexpr qsizetype kNumberDigits = 10;
constexpr off_t kLargestJournal = off_t{1} << 30;
constexpr char kHexDigits[] = "0123456789ABCDEF";

/// "0000000012-4711-9f3a51c2.renames": the jobs in their order.
QString journalName(quint64 number) {
    return QStringLiteral("%1-%2-%3")
               .arg(number, kNumberDigits, 10, QLatin1Char('0'))
               .arg(::getpid())
               .arg(QRandomGenerator::global()->generate(), 8, 16, QLatin1Char('0')) +
           QLatin1String(kJournalEnding);
}

/// Names of the journals, oldest first.
QStringList journalNames() {
    QStringList names;
    const auto entries =
        platform::NSFileManager::defaultManager().contentsOfDirectoryAtPath(stateFolder());
    if (!entries)
        return names;
    for (const platform::DirectoryEntry& entry : *entries)
        if (!entry.isDirectory && entry.name.endsWith(QLatin1String(kJournalEnding)) &&
            entry.name.indexOf(u'-') == kNumberDigits)
            names.append(entry.name);
    names.sort();
    return names;
}

quint64 nextNumber(const QStringList& names) {
    return names.isEmpty() ? 1 : names.constLast().first(kNumberDigits).toULongLong() + 1;
}

QByteArray escapedName(const QString& path) {
    const QByteArray bytes = nativePath(path);
    QByteArray escaped;
    escaped.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > 0x20 && byte != 0x7F && c != '%')
            escaped += c;
        else
            escaped.append('%').append(kHexDigits[byte >> 4]).append(kHexDigits[byte & 0xF]);
    }
    return escaped;
}

QString nameFromEscaped(const QByteArray& word) {
    return platform::pathFromNative(QByteArray::fromPercentEncoding(word));
}

QByteArray wordsOf(const FileIdentity& file) {
    return QByteArray::number(file.device) + ' ' + QByteArray::number(file.inode) + ' ' +
           QByteArray::number(file.bornSeconds) + ' ' + QByteArray::number(file.bornNanoseconds);
}

/// Four words from `at` on.
FileIdentity identityFromWords(const QByteArrayList& words, qsizetype at) {
    FileIdentity file;
    file.device = words[at].toULongLong();
    file.inode = words[at + 1].toULongLong();
    file.bornSeconds = words[at + 2].toLongLong();
    file.bornNanoseconds = words[at + 3].toUInt();
    return file;
}

QByteArray planText(const std::vector<JournalMove>& moves) {
    QByteArray text = kFormatLine;
    for (const JournalMove& move : moves)
        text += "move " + wordsOf(move.original) + ' ' + escapedName(move.source) + ' ' +
                escapedName(move.target) + '\n';
    return text;
}

/// False when someone else holds the lock; where there are no locks the file is as good as locked.
bool lockJournal(int fd) {
    return ::flock(fd, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

/// Keeps the last jobs, and those that are still running.
void removeOldJournals(QStringList names) {
    while (static_cast<std::size_t>(names.size()) >= RenameJournal::kKeptJobs) {
        const QByteArray path =
            nativePath(platform::appendingPathComponent(stateFolder(), names.takeFirst()));
        const FileDescriptor fd(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
        if (fd && lockJournal(fd.get()))
            ::unlink(path.constData());
    }
}

} // namespace

Result<RenameJournal> RenameJournal::create(std::vector<JournalMove> moves) {
    if (const Result<void> made = platform::createStateFolder(); !made)
        return tl::unexpected(made.error());
    platform::removeStaleTemporaries(stateFolder());
    for (JournalMove& move : moves)
        move.original = platform::identityOfItem(move.source);
    const QStringList names = journalNames();
    RenameJournal journal;
    journal.m_path =
        platform::appendingPathComponent(stateFolder(), journalName(nextNumber(names)));
    auto file = platform::AtomicFile::create(journal.m_path);
    if (!file)
        return tl::unexpected(file.error());
    // Locked before it gets its name, so that no process mistakes it for an ended job.
    // The lock belongs to what the two descriptors share.
    journal.m_fd.reset(::fcntl(file->fd(), F_DUPFD_CLOEXEC, 0));
    file->setPermissions(0600);
    if (!journal.m_fd || !lockJournal(file->fd()))
        return platform::systemFailure(kCreateJournal, journal.m_path, errno);
    if (const Result<void> written = file->write(planText(moves)); !written)
        return tl::unexpected(written.error());
    if (const Result<void> there = file->commit(platform::NSFileManager::IfExists::Fail); !there)
        return tl::unexpected(there.error());
    if (::fcntl(journal.m_fd.get(), F_SETFL, O_APPEND) != 0)
        return platform::systemFailure(kOpenJournal, journal.m_path, errno);
    removeOldJournals(names);
    journal.m_moves = std::move(moves);
    return journal;
}

Result<RenameJournal> RenameJournal::openLast() {
    QStringList names = journalNames();
    while (!names.isEmpty()) {
        Result<RenameJournal> journal =
            open(platform::appendingPathComponent(stateFolder(), names.takeLast()));
        // One that has just been dropped, or that is not one, is passed over for the one before.
        if (journal || (journal.error().code != ErrorCode::NotFound &&
                        journal.error().code != ErrorCode::InvalidData))
            return journal;
        platform::ignoreFailure(journal.error(), "the job before it is the last one then");
    }
    return failure(ErrorCode::NotFound, kUndoRename, {}, kNothingToUndo);
}

Result<RenameJournal> RenameJournal::open(const QString& path) {
    const platform::Message operation = kOpenJournal;
    RenameJournal journal;
    journal.m_path = path;
    journal.m_fd.reset(::open(nativePath(path).constData(),
                              O_RDWR | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!journal.m_fd)
        return platform::systemFailure(operation, path, errno);
    if (!lockJournal(journal.m_fd.get()))
        return failure(ErrorCode::NotSupported, kUndoRename, {}, kRenameRunning);
    struct stat status {};
    if (::fstat(journal.m_fd.get(), &status) != 0 || status.st_nlink == 0)
        return failure(ErrorCode::NotFound, operation, path);
    if (!journal.read())
        return failure(ErrorCode::InvalidData, operation, path);
    return journal;
}

bool RenameJournal::anyLeft() {
    return !journalNames().isEmpty();
}

bool RenameJournal::read() {
    struct stat status {};
    if (::fstat(m_fd.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > kLargestJournal)
        return false;
    QByteArray text(static_cast<qsizetype>(status.st_size), Qt::Uninitialized);
    qsizetype have = 0;
    while (have < text.size()) {
        const ssize_t got =
            ::pread(m_fd.get(), text.data() + have, static_cast<std::size_t>(text.size() - have),
                    static_cast<off_t>(have));
        if (got <= 0)
            return false;
        have += got;
    }
    if (!text.startsWith(kFormatLine))
        return false;
    // What a crash left of a line would join the next one.
    const qsizetype whole = text.lastIndexOf('\n') + 1;
    if (whole < text.size() && ::ftruncate(m_fd.get(), static_cast<off_t>(whole)) != 0)
        return false;
    for (auto start = static_cast<qsizetype>(qstrlen(kFormatLine)); start < whole;) {
        const qsizetype end = text.indexOf('\n', start);
        take(text.sliced(start, end - start));
        start = end + 1;
    }
    return true;
}

/// A line that makes no sense is skipped: what the disk holds decides in the end.
void RenameJournal::take(const QByteArray& line) {
    const QByteArrayList words = line.split(' ');
    if (words[0] == "move" && words.size() == 7) {
        m_moves.push_back({nameFromEscaped(words[5]),
                           nameFromEscaped(words[6]),
                           identityFromWords(words, 1),
                           {},
                           {},
                           false});
        return;
    }
    bool isNumber = false;
    const qulonglong index = words.size() > 1 ? words[1].toULongLong(&isNumber) : 0;
    if (!isNumber || index >= m_moves.size())
        return;
    JournalMove& move = m_moves[index];
    if (words[0] == "target" && words.size() == 7) {
        move.original = identityFromWords(words, 2);
        move.target = nameFromEscaped(words[6]);
    } else if (words[0] == "copy" && words.size() == 6) {
        move.copy = identityFromWords(words, 2);
    } else if (words[0] == "back" && words.size() == 6) {
        move.putBack = identityFromWords(words, 2);
    } else if (words[0] == "stays") {
        move.failed = true;
    } else if (words[0] == "end") {
        std::for_each(m_moves.begin() + static_cast<std::ptrdiff_t>(index), m_moves.end(),
                      [](JournalMove& unreached) { unreached.failed = true; });
    }
}

Result<void> RenameJournal::append(const QByteArray& line, bool durable) {
    const platform::Message operation = kWriteJournal;
    struct stat status {};
    if (::fstat(m_fd.get(), &status) != 0)
        return platform::systemFailure(operation, m_path, errno);
    const ssize_t done =
        ::write(m_fd.get(), line.constData(), static_cast<std::size_t>(line.size()));
    if (done == line.size() && (!durable || ::fdatasync(m_fd.get()) == 0))
        return {};
    const int error = done >= 0 && done < line.size() ? ENOSPC : errno;
    // The move will not be made; half a line would spoil the next one.
    if (::ftruncate(m_fd.get(), status.st_size) != 0)
        platform::log(platform::LogLevel::Warning,
                      platform::Message(kJournalEndsInHalfALine).text(), m_path);
    return platform::systemFailure(operation, m_path, error);
}

Result<void> RenameJournal::noteTarget(std::size_t index, const QString& target,
                                       const FileIdentity& original) {
    m_moves[index].target = target;
    m_moves[index].original = original;
    return append("target " + QByteArray::number(static_cast<qulonglong>(index)) + ' ' +
                      wordsOf(original) + ' ' + escapedName(target) + '\n',
                  true);
}

Result<void> RenameJournal::noteCopy(std::size_t index, const FileIdentity& copy) {
    return append("copy " + QByteArray::number(static_cast<qulonglong>(index)) + ' ' +
                      wordsOf(copy) + '\n',
                  true);
}

Result<void> RenameJournal::notePutBack(std::size_t index, const FileIdentity& copy) {
    return append("back " + QByteArray::number(static_cast<qulonglong>(index)) + ' ' +
                      wordsOf(copy) + '\n',
                  true);
}

void RenameJournal::noteStays(std::size_t index) {
    platform::ignoreFailure(
        append("stays " + QByteArray::number(static_cast<qulonglong>(index)) + '\n', false),
        "an undo will find the file under its old name");
}

void RenameJournal::noteEnd(std::size_t index) {
    if (index < m_moves.size())
        platform::ignoreFailure(
            append("end " + QByteArray::number(static_cast<qulonglong>(index)) + '\n', false),
            "an undo will find the files under their old names");
}

void RenameJournal::drop() {
    if (::unlink(nativePath(m_path).constData()) != 0)
        platform::log(platform::LogLevel::Warning, platform::Message(kJournalNotRemoved).text(),
                      m_path);
}

} // namespace clipheave::batch
