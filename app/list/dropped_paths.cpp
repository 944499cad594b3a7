// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/dropped_paths.h"

#include "app/theme/theme.h"
#include "media/media_kind.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"

#include <QAbstractScrollArea>
#include <QDropEvent>
#include <QMimeData>
#include <QPainter>

namespace clipheave::app {

namespace {

constexpr int kOutlineWidth = 2;
constexpr double kOutlineRadius = 6;
constexpr int kPillHeight = 32;
constexpr double kVeil = 0.08;

/// The path of a "file:" address; null for any other. QUrl would lose bytes that are not UTF-8.
QString pathOfAddress(QByteArray address) {
    if (!address.startsWith("file:"))
        return {};
    address = address.mid(5);
    if (address.startsWith("//")) { // a host stands before the path
        const qsizetype slash = address.indexOf('/', 2);
        if (slash < 0)
            return {};
        const QByteArray host = address.mid(2, slash - 2);
        if (!host.isEmpty() && host != "localhost")
            return {};
        address = address.mid(slash);
    }
    const QByteArray bytes = QByteArray::fromPercentEncoding(address);
    return bytes.startsWith('/') && !bytes.contains('\0') ? platform::pathFromNative(bytes)
                                                          : QString();
}

} // namespace

QStringList droppedPaths(const QMimeData* data) {
    QStringList paths;
    if (data == nullptr)
        return paths;
    for (const QByteArray& line : data->data(QStringLiteral("text/uri-list")).split('\n'))
        if (QString path = pathOfAddress(line.trimmed()); !path.isEmpty()) {
            if (path.size() > 1 && path.endsWith(u'/'))
                path.chop(1);
            paths.append(path);
        }
    return paths;
}

bool takesDrop(const QStringList& paths) {
    if (paths.isEmpty())
        return false;
    bool isFolder = false;
    return media::MediaKind::isAudio(paths.front()) || media::MediaKind::isVideo(paths.front()) ||
           (platform::NSFileManager::defaultManager().fileExistsAtPath(paths.front(), isFolder) &&
            isFolder);
}

bool takesPhotoDrop(const QStringList& paths) {
    return !paths.isEmpty() && media::MediaKind::isPhoto(paths.front());
}

DropOutline::DropOutline(QAbstractScrollArea* view, bool photosToo)
    : QWidget(view), m_view(view), m_photosToo(photosToo) {
    setObjectName(QStringLiteral("dropOutline"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    hide();
    view->viewport()->setAcceptDrops(true);
    view->viewport()->installEventFilter(this);
}

void DropOutline::enter(QDropEvent& event) {
    m_paths = event.source() == m_view ? QStringList() : droppedPaths(event.mimeData());
    if (!takesDrop(m_paths) && !(m_photosToo && takesPhotoDrop(m_paths))) {
        m_paths.clear();
        event.ignore();
        return;
    }
    event.setDropAction(Qt::CopyAction);
    event.accept();
    setGeometry(m_view->rect());
    raise();
    show();
}

void DropOutline::end() {
    m_paths.clear();
    hide();
}

bool DropOutline::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::DragEnter:
        enter(*static_cast<QDropEvent*>(event));
        return true;
    case QEvent::DragMove: {
        auto& move = *static_cast<QDropEvent*>(event);
        move.setDropAction(Qt::CopyAction);
        move.setAccepted(!m_paths.isEmpty());
        return true;
    }
    case QEvent::DragLeave:
        end();
        return true;
    case QEvent::Drop: {
        auto& drop = *static_cast<QDropEvent*>(event);
        const QStringList paths = m_paths;
        end();
        drop.setDropAction(Qt::CopyAction);
        drop.setAccepted(!paths.isEmpty());
        if (!paths.isEmpty())
            Q_EMIT pathsDropped(paths);
        return true;
    }
    default:
        return QWidget::eventFilter(watched, event);
    }
}

void DropOutline::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::instance();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(3, 3, -3, -3);
    painter.setPen(QPen(theme.color(Token::accent), kOutlineWidth));
    painter.setBrush(theme.color(Token::accent, kVeil));
    painter.drawRoundedRect(frame, kOutlineRadius, kOutlineRadius);

    const QString text = m_paths.size() == 1
                             ? tr("Add 1 item")
                             : tr("Add %1 items").arg(QString::number(m_paths.size()));
    painter.setFont(theme.font(FontRole::BodyStrong));
    const int width = painter.fontMetrics().horizontalAdvance(text) + kPillHeight;
    QRectF pill(0, 0, width, kPillHeight);
    pill.moveCenter(frame.center());
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.color(Token::accent));
    painter.drawRoundedRect(pill, kOutlineRadius, kOutlineRadius);
    painter.setPen(theme.color(Token::onAccent));
    painter.drawText(pill, Qt::AlignCenter, text);
}

} // namespace clipheave::app
