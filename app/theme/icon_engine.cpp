// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/icon_engine.h"

#include "app/theme/icon_size.h"
#include "app/theme/theme_resources.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>

namespace clipheave::app {
namespace {

/// Up to this many logical px an icon is drawn with the thicker strokes of carets.
constexpr int kSmallIcon = 12;
/// No icon is drawn larger; keeps a wild request from allocating much.
constexpr int kLargestSide = 2048;

QByteArray svgOf(const QString& path) {
    static QHash<QString, QByteArray> texts;
    auto found = texts.constFind(path);
    if (found != texts.constEnd())
        return *found;
    QFile file(path);
    return *texts.insert(path, file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
}

Token tokenFor(Token normal, QIcon::Mode mode) {
    if (mode == QIcon::Disabled)
        return Token::text3;
    return mode == QIcon::Selected ? Token::onAccent : normal;
}

QPixmap drawIcon(const QString& path, const QSize& pixels, const QColor& color, double ratio) {
    const QSize size = pixels.boundedTo({kLargestSide, kLargestSide});
    if (path.isEmpty() || size.isEmpty())
        return {};
    const QString key = QStringLiteral("icon %1 %2 %3x%4 %5")
                            .arg(path)
                            .arg(color.rgba(), 8, 16, QLatin1Char('0'))
                            .arg(size.width())
                            .arg(size.height())
                            .arg(ratio);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    QByteArray svg = svgOf(path);
    svg.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    if (std::lround(std::min(size.width(), size.height()) / ratio) <= kSmallIcon)
        svg.replace("stroke-width=\"1.75\"", "stroke-width=\"2.2\"");
    QSvgRenderer renderer(svg);
    if (!renderer.isValid())
        return {};
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    pixmap = QPixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setOpacity(color.alphaF());
    renderer.render(&painter, QRectF(QPointF(), size));
    painter.end();
    pixmap.setDevicePixelRatio(ratio);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

} // namespace

IconEngine::IconEngine(QString path, Token token) : m_path(std::move(path)), m_token(token) {
}

void IconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) {
    const double ratio = painter->device()->devicePixelRatioF();
    painter->drawPixmap(rect, draw((QSizeF(rect.size()) * ratio).toSize(), mode, ratio));
}

QPixmap IconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) {
    return draw(size, mode, 1);
}

QPixmap IconEngine::scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal scale) {
    return draw(devicePixelsOf(size, scale), mode, scale);
}

QPixmap IconEngine::draw(const QSize& pixels, QIcon::Mode mode, qreal ratio) const {
    return drawIcon(m_path, pixels, Theme::instance().color(tokenFor(m_token, mode)), ratio);
}

QIconEngine* IconEngine::clone() const {
    return new IconEngine(*this);
}

QString themeImagePath(const QString& name) {
    initThemeResources();
    for (const QString& path : {QStringLiteral(":/icons/") + name + QStringLiteral(".svg"),
                                QStringLiteral(":/pictures/") + name})
        if (!name.isEmpty() && QFile::exists(path))
            return path;
    return {};
}

QIcon themeIcon(const QString& name, Token token) {
    const QString path = themeImagePath(name);
    return path.isEmpty() ? QIcon() : QIcon(new IconEngine(path, token));
}

QPixmap themePixmap(const QString& name, int side, const QColor& color, double devicePixelRatio) {
    const int pixels = static_cast<int>(std::lround(side * devicePixelRatio));
    return drawIcon(themeImagePath(name), {pixels, pixels}, color, devicePixelRatio);
}

} // namespace clipheave::app
