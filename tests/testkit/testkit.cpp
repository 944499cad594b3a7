// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/testkit/testkit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <filesystem>
#include <thread>

namespace testkit {

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_dir.path().toStdString(), ignored);
}

QString TempDir::write(const QString& name, const QByteArray& bytes) const {
    QString target = path(name);
    QDir().mkpath(QFileInfo(target).path());
    QFile file(target);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << target;
    EXPECT_EQ(file.write(bytes), bytes.size());
    return target;
}

QByteArray TempDir::read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList TempDir::files(const char* folder) const {
    return QDir(path(folder)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

Surroundings::Surroundings() {
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", "UTC");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME",
                             "XDG_RUNTIME_DIR"}) {
        const QString folder = m_dir.path(QString::fromLatin1(name).toLower());
        QDir().mkdir(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv(name, QFile::encodeName(folder));
    }
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// Such runs are long, side by side, and often on a machine with other work.
constexpr int kPatienceMs = 15 * 60'000;
#else
constexpr int kPatienceMs = 2 * 60'000;
#endif

namespace {

RunResult runHere(const QString& program, const QStringList& arguments, const QByteArray& input) {
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForStarted())
        return {-1, {}, process.errorString().toUtf8()};
    process.write(input);
    process.closeWriteChannel();
    const bool ended = process.waitForFinished(kPatienceMs);
    return {ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

RunResult run(const QString& program, const QStringList& arguments, const QByteArray& input) {
    // On a thread of its own: a child of QProcess shares the memory of the thread that starts it
    // until it runs the program, and ThreadSanitizer sees no lock of that thread any more
    // afterwards.
    RunResult result;
    std::thread([&] { result = runHere(program, arguments, input); }).join();
    return result;
}

bool hasProgram(const QString& program) {
    return !QStandardPaths::findExecutable(program).isEmpty();
}

QStringList words(const QByteArray& options, QStringList more) {
    QStringList result = QString::fromUtf8(options).split(u' ', Qt::SkipEmptyParts);
    for (QString& word : result)
        if (word == u"%")
            word = more.takeFirst();
    return result + more;
}

QStringList namesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

QByteArray be(quint64 value, int bytes) {
    QByteArray out(bytes, '\0');
    for (int i = bytes; i-- > 0; value >>= 8)
        out[i] = static_cast<char>(value & 0xFF);
    return out;
}

QByteArray le(quint64 value, int bytes) {
    QByteArray out = be(value, bytes);
    std::reverse(out.begin(), out.end());
    return out;
}

QByteArray box(const char* type, const QByteArray& payload) {
    return be(static_cast<quint64>(payload.size()) + 8, 4) + QByteArray(type, 4) + payload;
}

QByteArray fullBox(const char* type, const QByteArray& payload) {
    return box(type, QByteArray(4, '\0') + payload);
}

QByteArray movie(const char* title) {
    const QByteArray data = box("data", be(1, 4) + be(0, 4) + title);
    const QByteArray hdlr = fullBox("hdlr", be(0, 4) + "mdirappl" + QByteArray(9, '\0'));
    const QByteArray udta = box("udta", fullBox("meta", hdlr + box("ilst", box("\xA9nam", data))));
    const QByteArray mvhd =
        fullBox("mvhd", be(0, 8) + be(1000, 4) + be(61'500, 4) + QByteArray(80, '\0'));
    return box("ftyp", "M4V " + be(1, 4) + "M4V ") + box("moov", mvhd + udta) + box("mdat", "x");
}

QStringList textsOf(const clipheave::platform::Notes& notes) {
    QStringList texts;
    for (const clipheave::platform::Message& note : notes)
        texts.append(note.text());
    return texts;
}

QString corpus() {
    return qEnvironmentVariable("CLIPHEAVE_CORPUS");
}

} // namespace testkit
