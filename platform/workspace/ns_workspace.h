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
    /// without waiting), or, for very many, the folder that contains all of them. When no file
    /// browser replies, opens their folder; without a desktop, logs the paths.
    void selectFiles(const QStringList& paths);
    /// Opens web pages and "mailto:" drafts through the desktop's handler; false when there is
    /// none.
    bool openURL(const QUrl& url);
    /// Returns "mailto:ADDRESS?SUBJECT=…&BODY=…", each value percent-escaped in UTF-8.
    [[nodiscard]] static QUrl mailDraft(const QString& address, const QString& subject,
                                        const QString& body);
};

/// Returns the user's videos folder (XDG user dirs); "<home>/Videos" when none is set.
[[nodiscard]] QString videosFolder();
[[nodiscard]] QString loginName();

} // namespace clipheave::platform
