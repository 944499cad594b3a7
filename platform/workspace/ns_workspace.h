// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QString>
#include <QStringList>
#include <QUrl>

namespace clipheave::platform {

/// The desktop: file browser, mail program, web browser, the user's folders.
class NSWorkspace {
public:
    static NSWorkspace& sharedWorkspace();

    /// Shows the files selected in the file browser (org.freedesktop.FileManager1.ShowItems,
    /// without waiting), or, of very many, the folder that has them all; when no file browser
    /// replies, opens their folder; without a desktop the paths are logged. Never fails loudly.
    void selectFiles(const QStringList& paths);
    /// Web pages and "mailto:" drafts through the desktop's handler; false when there is none.
    bool openURL(const QUrl& url);
    /// "mailto:ADDRESS?SUBJECT=…&BODY=…", each value percent-escaped in UTF-8.
    [[nodiscard]] static QUrl mailDraft(const QString& address, const QString& subject,
                                        const QString& body);
};

/// The user's videos folder (XDG user dirs); "<home>/Videos" when none is set.
[[nodiscard]] QString videosFolder();
[[nodiscard]] QString loginName();

} // namespace clipheave::platform
