// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/log_view.h"

#include "app/theme/theme.h"
#include "platform/foundation/paths.h"

#include <QScrollBar>
#include <QTextBlockFormat>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr double kLineHeight = 19; // px

} // namespace

LogView::LogView(QWidget* parent) : QTextEdit(parent) {
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setFrameShape(NoFrame);
    setAcceptRichText(false);
    setLineWrapMode(NoWrap);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    document()->setMaximumBlockCount(static_cast<int>(ActivityModel::kMostLogLines));
    document()->setDocumentMargin(0);
    restyle();
    connect(&Theme::instance(), &Theme::changed, this, [this] {
        restyle();
        m_source = -1; // written anew in the new colours at the next refresh
        clear();
    });
}

void LogView::restyle() {
    const Theme& theme = Theme::instance();
    setFont(theme.font(FontRole::Log));
    // Its own sheet: the window's gives every text an outline, which a pane must not have.
    setStyleSheet(QStringLiteral("QTextEdit { background: %1; border: 0; padding: 7px 16px; "
                                 "min-height: 0; }")
                      .arg(theme.color(Token::bg1).name()));
}

void LogView::showLines(const std::deque<ActivityLogLine>& lines, qint64 total, int source) {
    if (source != m_source) {
        m_source = source;
        m_written = total - static_cast<qint64>(lines.size());
        clear();
    }
    const qint64 missing = std::min(total - m_written, static_cast<qint64>(lines.size()));
    if (missing <= 0)
        return;
    QScrollBar* bar = verticalScrollBar();
    const bool follow = bar->value() >= bar->maximum();
    const int position = bar->value();
    for (auto line = lines.end() - static_cast<std::ptrdiff_t>(missing); line != lines.end();
         ++line)
        write(*line);
    m_written = total;
    bar->setValue(follow ? bar->maximum() : position);
}

void LogView::write(const ActivityLogLine& line) {
    const Theme& theme = Theme::instance();
    QTextCharFormat time, text;
    time.setForeground(theme.color(Token::text3));
    text.setForeground(theme.color(line.isError ? Token::bad : Token::text2));
    QTextBlockFormat block;
    block.setLineHeight(kLineHeight * theme.fontScale(), QTextBlockFormat::FixedHeight);
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    if (!document()->isEmpty())
        cursor.insertBlock(block);
    else
        cursor.setBlockFormat(block);
    cursor.insertText(line.time.toString(QStringLiteral("HH:mm:ss")) + QLatin1String("  "), time);
    // One line of the log is one line here, whatever it holds.
    QString shown = line.text;
    shown.replace(QLatin1Char('\n'), QLatin1Char(' '));
    cursor.insertText(shown, text);
    if (!line.path.isEmpty() && !line.text.contains(line.path))
        cursor.insertText(QLatin1String("  ") + platform::displayPath(line.path), time);
}

} // namespace clipheave::app
