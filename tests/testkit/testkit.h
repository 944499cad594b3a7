// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <ostream>

// u"text"_s and "text"_L1 for every test.
using Qt::StringLiterals::operator""_s;
using Qt::StringLiterals::operator""_L1;

QT_BEGIN_NAMESPACE
/// Readable failure messages.
inline std::ostream& operator<<(std::ostream& out, const QString& text) {
    return out << text.toStdString();
}
inline std::ostream& operator<<(std::ostream& out, const QByteArray& bytes) {
    return out << bytes.toStdString();
}
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text << '"';
}
inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
    *out << bytes.toPercentEncoding(" ");
}
QT_END_NAMESPACE

namespace testkit {

/// A folder of its own for each test, gone afterwards.
class TempDir {
public:
    TempDir() {} // not "= default": clang 14 then refuses const members of this type
    /// Names that are not UTF-8 are beyond QTemporaryDir's own removal.
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    [[nodiscard]] QString path(const QString& name = {}) const {
        return name.isEmpty() ? m_dir.path() : m_dir.path() + u'/' + name;
    }
    [[nodiscard]] QString path(const char* name) const { return path(QString::fromUtf8(name)); }
    /// Writes a file, folders included, and returns its path.
    QString write(const QString& name, const QByteArray& bytes) const;
    QString write(const char* name, const QByteArray& bytes) const {
        return write(QString::fromUtf8(name), bytes);
    }
    [[nodiscard]] static QByteArray read(const QString& path);
    /// Names of the files in it or in a folder of it, sorted, hidden ones too.
    [[nodiscard]] QStringList files(const char* folder = "") const;

private:
    QTemporaryDir m_dir;
};

/// Fixed surroundings, also when a test is started by hand: UTC, no screen, and settings, caches
/// and state of this process alone, gone with it. Tests run side by side, and the developer's own
/// files are not theirs to read. Before the application object.
class Surroundings {
public:
    Surroundings();

private:
    TempDir m_dir;
};

/// Another local time zone while it lives.
class ZoneGuard {
public:
    explicit ZoneGuard(const char* zone) : m_before(qgetenv("TZ")) { set(zone); }
    ~ZoneGuard() { set(m_before); }
    ZoneGuard(const ZoneGuard&) = delete;
    ZoneGuard& operator=(const ZoneGuard&) = delete;

private:
    static void set(const QByteArray& zone) {
        qputenv("TZ", zone);
        ::tzset();
    }
    QByteArray m_before;
};

struct RunResult {
    int exitCode = -1; ///< -1 when it could not be started or was killed
    QByteArray out, err;
};
/// Runs a program to its end (two minutes at most, fifteen under a sanitizer).
[[nodiscard]] RunResult run(const QString& program, const QStringList& arguments,
                            const QByteArray& input = {});
[[nodiscard]] bool hasProgram(const QString& program);
/// Returns `options` split at spaces, each word "%" replaced by the next of `more`, whose rest
/// comes last and which may hold spaces.
[[nodiscard]] QStringList words(const QByteArray& options, QStringList more = {});

/// Names of everything in a folder, sorted, hidden ones too.
[[nodiscard]] QStringList namesIn(const QString& folder);

/// One big-endian number of `bytes` bytes.
[[nodiscard]] QByteArray be(quint64 value, int bytes);
[[nodiscard]] QByteArray le(quint64 value, int bytes);
/// An ISO base media box: size, type (Latin-1, so "\xA9nam" works), payload.
[[nodiscard]] QByteArray box(const char* type, const QByteArray& payload);
/// The same with version 0 and flags 0 first.
[[nodiscard]] QByteArray fullBox(const char* type, const QByteArray& payload);

/// An M4V of 61.5 s by its header, with a title and a payload of one byte.
[[nodiscard]] QByteArray movie(const char* title);

/// Each note as a front words it.
[[nodiscard]] QStringList textsOf(const clipheave::platform::Notes& notes);

/// The folder of real files, empty when CLIPHEAVE_CORPUS is not set.
[[nodiscard]] QString corpus();

} // namespace testkit
