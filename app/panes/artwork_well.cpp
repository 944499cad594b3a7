// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/artwork_well.h"

#include "app/theme/theme.h"
#include "media/media_kind.h"
#include "platform/foundation/notification_center.h"
#include "platform/foundation/paths.h"
#include "platform/image/artwork_decoding.h"
#include "platform/image/messages.h"

#include <QApplication>
#include <QBuffer>
#include <QDragEnterEvent>
#include <QImageReader>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QThreadPool>
#include <QUrl>

namespace clipheave::app {

namespace {

/// The one local image file of a drag or of the clipboard; empty when it is anything else.
QString imagePathOf(const QMimeData* data) {
    const QList<QUrl> urls = data ? data->urls() : QList<QUrl>();
    if (urls.size() != 1 || !urls.first().isLocalFile())
        return {};
    // By its bytes: a name need not be UTF-8.
    const QString path = platform::pathFromNative(
        QByteArray::fromPercentEncoding(urls.first().path(QUrl::FullyEncoded).toLatin1()));
    return media::MediaKind::isPhoto(path) ? path : QString();
}

/// Above this many pixels an image is decoded on another thread, so that walking through a list
/// of albums never waits for their covers.
constexpr int kDecodedAtOnce = 256 * 256;

/// Decodes no larger than it is shown: a cover may have thousands of pixels a side.
QImage decodedImage(const platform::EncodedImage& artwork, QSize most) {
    if (artwork.format() == u"heif") { // not known to the reader below
        const auto image = platform::decodedArtwork(artwork.bytes(), platform::kReadImage);
        const QSize size = image ? image->size() : QSize();
        return image ? image->scaled(size.scaled(most, Qt::KeepAspectRatio).boundedTo(size),
                                     Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                     : QImage();
    }
    QBuffer buffer;
    buffer.setData(artwork.bytes());
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isValid())
        reader.setScaledSize(
            size.scaled(most, Qt::KeepAspectRatio).boundedTo(size).expandedTo({1, 1}));
    return reader.read();
}

} // namespace

ArtworkWell::ArtworkWell(int side, QWidget* parent) : QWidget(parent) {
    setFixedSize(side, side);
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setAccessibleName(tr("Artwork"));
    setToolTip(tr("Drop or paste an image, or click to choose one"));
}

void ArtworkWell::setImage(const platform::EncodedImage& artwork) {
    ++m_decoding;
    m_image = artwork;
    if (artwork.isNull())
        return takeDecoded({});
    const QSize pixels = artwork.size();
    if (qint64{pixels.width()} * pixels.height() <= kDecodedAtOnce)
        return takeDecoded(decodedImage(artwork, size() * devicePixelRatioF()));
    takeDecoded({});
    decode();
}

void ArtworkWell::decode() {
    QThreadPool::globalInstance()->start([well = QPointer(this), artwork = m_image,
                                          call = m_decoding, most = size() * devicePixelRatioF()] {
        const QImage image = decodedImage(artwork, most);
        // The pointer is read on the widget's own thread only.
        QMetaObject::invokeMethod(qApp, [well, image, call] {
            if (well && well->m_decoding == call)
                well->takeDecoded(image);
        });
    });
}

void ArtworkWell::takeDecoded(const QImage& image) {
    m_pixmap = QPixmap::fromImage(image);
    const QSize pixels = m_image.size();
    setAccessibleDescription(m_image.isNull()
                                 ? tr("No artwork")
                                 : tr("%1 by %2 pixels").arg(pixels.width()).arg(pixels.height()));
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
        Q_EMIT pasteRequested();
    else if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return)
        Q_EMIT openRequested();
    else
        QWidget::keyPressEvent(event);
}

bool ArtworkWell::take(const QMimeData* data) {
    const QString path = imagePathOf(data);
    if (path.isEmpty())
        return false;
    m_droppedPath = path;
    platform::NSNotificationCenter::defaultCenter().postNotificationName_object(
        QStringLiteral("NSDragOperationImageViewNote"), this);
    return true;
}

void ArtworkWell::dragEnterEvent(QDragEnterEvent* event) {
    m_dragging = !imagePathOf(event->mimeData()).isEmpty();
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
