// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/surroundings.h"
#include "app/grab.h"
#include "app/quit_signals.h"
#include "app/theme/theme.h"
#include "app/windows/window_settings.h"
#include "app/words/words.h"
#include "platform/foundation/paths.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QSettings>

#include <algorithm>
#include <clocale>
#include <cstdio>

namespace {

using namespace clipheave;

QString tr(const char* text) {
    return QCoreApplication::translate("main", text);
}

void addOptions(QCommandLineParser& parser) {
    parser.setApplicationDescription(tr("Batch work on videos, audio files and photos"));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption(
        {QStringLiteral("grab"), tr("Paint a view into a file and end."), tr("FILE.png")});
    parser.addOption({QStringLiteral("view"),
                      tr("With --grab: %1.").arg(app::grabViewNames().join(u", ")), tr("NAME"),
                      QStringLiteral("video")});
    parser.addOption({QStringLiteral("theme"), tr("system, dark or light."), tr("NAME")});
    parser.addOption({QStringLiteral("size"), tr("With --grab: window size."), tr("WxH"),
                      QStringLiteral("1440x900")});
    parser.addOption({QStringLiteral("config"), tr("Preferences file of this run."), tr("FILE")});
    parser.addPositionalArgument(QStringLiteral("PATH"), tr("Files and folders to add."),
                                 tr("[PATH…]"));
}

/// The appearance of this name; for another name the one that the user chose last.
app::Appearance appearanceOf(const QString& name, const QSettings& settings) {
    if (name == u"light")
        return app::Appearance::Light;
    if (name == u"dark")
        return app::Appearance::Dark;
    if (name == u"system")
        return app::Appearance::System;
    const int stored = settings.value(QStringLiteral("appearance")).toInt();
    return static_cast<app::Appearance>(std::clamp(stored, 0, 2));
}

/// Prints a line of the activity log on standard error.
void printLine(const app::ActivityLogLine& line) {
    const QString text =
        line.path.isEmpty() ? line.text : line.path + QStringLiteral(": ") + line.text;
    std::fprintf(stderr, "%s\n", platform::nativePath(text).constData());
}

/// Painting a view into a file, the help and the version need no screen.
void useNoScreenWhereNoneIsNeeded(int argc, char** argv) {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (qEnvironmentVariableIsSet(variable))
            return;
    for (int i = 1; i < argc; ++i)
        for (const char* option : {"--grab", "--help", "--version", "-h", "-v"})
            if (QByteArrayView(argv[i]).startsWith(option))
                qputenv("QT_QPA_PLATFORM", "offscreen");
}

} // namespace

int main(int argc, char** argv) {
    app::installWords();
    useNoScreenWhereNoneIsNeeded(argc, argv);
    // Local times are computed thousands of times; without this each checks the zone file.
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", ":/etc/localtime");
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C"); // the player asks for it
    QApplication::setApplicationName(QStringLiteral("clipheave"));
    QApplication::setApplicationVersion(QStringLiteral(CLIPHEAVE_VERSION));
    QCommandLineParser parser;
    addOptions(parser);
    parser.process(application);
    const auto settings =
        std::make_shared<QSettings>(app::windowSettingsFile(), QSettings::IniFormat);
    app::Theme::instance().apply(appearanceOf(parser.value(QStringLiteral("theme")), *settings));
    auto defaults =
        std::make_unique<platform::NSUserDefaults>(parser.value(QStringLiteral("config")));
    app::AppDelegate controller(app::desktopSurroundings(std::move(defaults), settings));
    QObject::connect(controller.activity(), &app::ActivityModel::logAdded, controller.activity(),
                     [&] { printLine(controller.activity()->log().back()); });
    controller.awakeFromNib();
    controller.applicationDidFinishLaunching();
    if (parser.isSet(QStringLiteral("grab")))
        return app::grabView(
            controller, {parser.value(QStringLiteral("grab")), parser.value(QStringLiteral("view")),
                         parser.value(QStringLiteral("size")), parser.positionalArguments(),
                         parser.isSet(QStringLiteral("config"))});
    app::quitOnSignals();
    controller.importPaths(parser.positionalArguments());
    return QApplication::exec();
}
