// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/artwork_well.h"

#include "app/theme/theme.h"
#include "media/media_kind.h"
#include "platform/foundation/notification_center.h"

#include <QBuffer>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QImageReader>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QUrl>

namespace clipheave::app {

namespace {

/// The one local picture file of a drag or of the clipboard; empty when it is anything else.
QString picturePathOf(const QMimeData* data) {
    const QList<QUrl> urls = data ? data->urls() : QList<QUrl>();
    if (urls.size() != 1 || !urls.first().isLocalFile())
        return {};
    const QString path = urls.first().toLocalFile();
    return media::MediaKind::isPhoto(path) ? path : QString();
}

/// Decodes no larger than it is shown: a cover may have thousands of pixels a side.
QPixmap decodedPicture(const platform::EncodedPicture& picture, QSize most) {
    QBuffer buffer;
    buffer.setData(picture.bytes());
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isValid())
        reader.setScaledSize(size.scaled(most, Qt::KeepAspectRatioByExpanding).boundedTo(size));
    return QPixmap::fromImage(reader.read());
}

} // namespace

ArtworkWell::ArtworkWell(int side, QWidget* parent) : QWidget(parent) {
    setFixedSize(side, side);
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setAccessibleName(tr("Artwork"));
    setToolTip(tr("Drop or paste a picture, or click to choose one"));
}

void ArtworkWell::setPicture(const platform::EncodedPicture& picture) {
    m_picture = picture;
    m_pixmap = picture.isNull() ? QPixmap() : decodedPicture(picture, size() * devicePixelRatioF());
    setAccessibleDescription(
        m_pixmap.isNull()
            ? tr("No artwork")
            : tr("%1 by %2 pixels").arg(picture.size().width()).arg(picture.size().height()));
    update();
}

void ArtworkWell::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const Theme& theme = Theme::instance();
    QPainterPath frame;
    frame.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
    painter.fillPath(frame, theme.color(m_pixmap.isNull() ? Token::bg3 : Token::well));
    if (m_pixmap.isNull()) {
        const int side = width() / 4;
        painter.drawPixmap(QPoint((width() - side) / 2, (height() - side) / 2),
                           themePixmap(QStringLiteral("artworkimage"), side,
                                       theme.color(Token::text3), devicePixelRatioF()));
    } else {
        painter.setClipPath(frame);
        const QSizeF fitted = QSizeF(m_pixmap.size()).scaled(size(), Qt::KeepAspectRatio);
        painter.drawPixmap(
            QRectF(QPointF((width() - fitted.width()) / 2, (height() - fitted.height()) / 2),
                   fitted),
            m_pixmap, QRectF(m_pixmap.rect()));
        painter.setClipping(false);
    }
    const bool strong = m_dragging || hasFocus();
    painter.setPen(QPen(theme.color(strong ? Token::accent : Token::line2), strong ? 2 : 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(frame);
}

void ArtworkWell::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        Q_EMIT openRequested();
}

void ArtworkWell::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Paste))
        paste();
    else if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return)
        Q_EMIT openRequested();
    else
        QWidget::keyPressEvent(event);
}

void ArtworkWell::paste() {
    take(QGuiApplication::clipboard()->mimeData());
}

bool ArtworkWell::take(const QMimeData* data) {
    const QString path = picturePathOf(data);
    if (path.isEmpty())
        return false;
    m_droppedPath = path;
    platform::NSNotificationCenter::defaultCenter().postNotificationName_object(
        QStringLiteral("NSDragOperationImageViewNote"), this);
    return true;
}

void ArtworkWell::dragEnterEvent(QDragEnterEvent* event) {
    m_dragging = !picturePathOf(event->mimeData()).isEmpty();
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(m_dragging);
    update();
}

void ArtworkWell::dragLeaveEvent(QDragLeaveEvent*) {
    m_dragging = false;
    update();
}

void ArtworkWell::dropEvent(QDropEvent* event) {
    m_dragging = false;
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(take(event->mimeData()));
    update();
}

} // namespace clipheave::app
