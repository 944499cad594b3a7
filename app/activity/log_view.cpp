// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/log_view.h"

#include "app/theme/theme.h"
#include "platform/foundation/paths.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>
#include <cmath>
#include <utility>

namespace clipheave::app {

namespace {

constexpr double kLogRow = 19; // px at the usual font size
constexpr int kLogPadding = 16;
constexpr int kTimeGap = 10;

int logRowHeight() {
    return static_cast<int>(std::lround(kLogRow * Theme::instance().fontScale()));
}

class LogDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const Theme& theme = Theme::instance();
        painter->save();
        if (option.state.testFlag(QStyle::State_Selected))
            painter->fillRect(option.rect, theme.color(Token::sel));
        painter->setFont(theme.font(FontRole::Log));
        QRect place = option.rect.adjusted(kLogPadding, 0, -kLogPadding, 0);
        write(*painter, place, Token::text3, index.data(LogLines::TimeRole).toString());
        write(*painter, place, index.data(LogLines::ErrorRole).toBool() ? Token::bad : Token::text2,
              index.data().toString());
        write(*painter, place, Token::text3, index.data(LogLines::PathRole).toString());
        painter->restore();
    }

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override {
        return {100, logRowHeight()};
    }

private:
    /// Draws at the left of `place` and takes it off.
    static void write(QPainter& painter, QRect& place, Token token, const QString& text) {
        if (text.isEmpty() || place.width() <= 0)
            return;
        const QFontMetrics metrics = painter.fontMetrics();
        const QString shown = metrics.elidedText(text, Qt::ElideRight, place.width());
        painter.setPen(Theme::instance().color(token));
        painter.drawText(place, static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine), shown);
        place.setLeft(place.left() + metrics.horizontalAdvance(shown) + kTimeGap);
    }
};

} // namespace

LogLines::LogLines(Source source, QObject* parent)
    : QAbstractListModel(parent), m_source(std::move(source)) {
}

int LogLines::available() const {
    const auto* lines = m_source();
    return lines ? static_cast<int>(lines->size()) : 0;
}

void LogLines::refresh(qint64 total, int id) {
    const int now = available();
    const auto added = static_cast<int>(std::clamp<qint64>(total - m_total, 0, now));
    const int gone = m_rows + added - now; // the oldest had to make room
    if (id != m_id || total < m_total || gone < 0 || gone > m_rows) {
        beginResetModel();
        m_rows = now;
        m_id = id;
        m_total = total;
        endResetModel();
        return;
    }
    if (gone > 0) {
        beginRemoveRows({}, 0, gone - 1);
        m_rows -= gone;
        endRemoveRows();
    }
    if (added > 0) {
        beginInsertRows({}, m_rows, m_rows + added - 1);
        m_rows += added;
        endInsertRows();
    }
    m_total = total;
}

int LogLines::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_rows;
}

QVariant LogLines::data(const QModelIndex& index, int role) const {
    const auto* lines = m_source();
    if (!lines || !index.isValid() || static_cast<std::size_t>(index.row()) >= lines->size())
        return {};
    const ActivityLogLine& line = (*lines)[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole: {
        QString text = line.text; // one line of the log is one line here, whatever it holds
        return text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    }
    case Qt::ToolTipRole:
        return line.path.isEmpty()
                   ? line.text
                   : line.text + QLatin1Char('\n') + platform::displayPath(line.path);
    case TimeRole:
        return line.time.toString(QStringLiteral("HH:mm:ss"));
    case PathRole:
        return line.text.contains(line.path) ? QString() : platform::displayPath(line.path);
    case ErrorRole:
        return line.isError;
    default:
        return {};
    }
}

LogView::LogView(LogLines::Source source, QWidget* parent)
    : QListView(parent), m_lines(new LogLines(std::move(source), this)) {
    setModel(m_lines);
    setItemDelegate(new LogDelegate(this));
    setUniformItemSizes(true);
    setFrameShape(NoFrame);
    setSelectionMode(ExtendedSelection);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setViewportMargins(0, 6, 0, 4);
}

void LogView::refresh(qint64 total, int id) {
    const bool follow = verticalScrollBar()->value() >= verticalScrollBar()->maximum();
    m_lines->refresh(total, id);
    if (follow)
        scrollToBottom();
}

QString LogView::textOf(const QModelIndexList& rows) const {
    QModelIndexList sorted = rows;
    std::sort(sorted.begin(), sorted.end());
    QStringList lines;
    for (const QModelIndex& row : std::as_const(sorted)) {
        QStringList parts{row.data(LogLines::TimeRole).toString(), row.data().toString(),
                          row.data(LogLines::PathRole).toString()};
        parts.removeAll(QString());
        lines += parts.join(QLatin1String("  "));
    }
    return lines.join(QLatin1Char('\n'));
}

void LogView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy))
        Q_EMIT copyRequested(textOf(selectedIndexes()));
    else
        QListView::keyPressEvent(event);
}

} // namespace clipheave::app
