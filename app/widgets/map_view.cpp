// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/map_view.h"

#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "app/widgets/map_coast.h"

#include <QAbstractButton>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace clipheave::app {
namespace {

constexpr double kZoomStep = 1.6;
/// Wheel delta that doubles the scale: two notches.
constexpr double kWheelStep = 240;
/// Nothing narrower is shown: the data has nothing to say there.
constexpr double kNarrowestSpan = 0.004;
constexpr double kWorldLatitude = 20; ///< centre of the world view: most land lies north
constexpr double kDragDistance = 4;
constexpr double kKeyStep = 0.25; ///< of the view
constexpr int kZoomSide = 24;
constexpr int kZoomMargin = 8;

/// Half of the pair of buttons in the map's corner.
class MapZoomButton : public QAbstractButton {
public:
    MapZoomButton(const QString& name, const QString& image, QWidget* parent)
        : QAbstractButton(parent), m_image(image) {
        setAccessibleName(name);
        setToolTip(name);
        setFixedSize(kZoomSide, kZoomSide);
        setFocusPolicy(Qt::NoFocus);
        setAttribute(Qt::WA_Hover);
        setCursor(Qt::ArrowCursor);
        setAutoRepeat(true);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const Theme& theme = Theme::instance();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        if (underMouse() || isDown()) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(theme.color(isDown() ? Token::bg4 : Token::bg3));
            painter.drawRoundedRect(rect().adjusted(1, 1, -1, -1), 4, 4);
        }
        painter.drawPixmap(QRect(6, 6, 12, 12), themePixmap(m_image, 12, theme.color(Token::text1),
                                                            devicePixelRatioF()));
    }

private:
    QString m_image;
};

double wrapped(double longitude) {
    return longitude - 360 * std::floor((longitude + 180) / 360);
}

} // namespace

MapView::MapView(QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Map"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_zoomIn = new MapZoomButton(tr("Zoom in"), QStringLiteral("add"), this);
    m_zoomOut = new MapZoomButton(tr("Zoom out"), QStringLiteral("remove"), this);
    connect(m_zoomIn, &QAbstractButton::clicked, this, [this] { zoomBy(kZoomStep); });
    connect(m_zoomOut, &QAbstractButton::clicked, this, [this] { zoomBy(1 / kZoomStep); });
    connect(&Theme::instance(), &Theme::changed, this, [this] {
        m_base = {};
        update();
    });
    clearPosition();
    updateCursor();
}

void MapView::setCentre(double latitude, double longitude, double spanLatitude,
                        double spanLongitude) {
    if (!std::isfinite(latitude) || !std::isfinite(longitude) || !std::isfinite(spanLatitude) ||
        !std::isfinite(spanLongitude))
        return;
    m_position = {std::clamp(latitude, -90.0, 90.0), wrapped(longitude)};
    m_hasPosition = true;
    m_request =
        GeoSpan{std::clamp(spanLatitude, 0.0, 170.0), std::clamp(spanLongitude, 0.0, 360.0)};
    setAccessibleDescription(positionText());
    fitRequest();
}

void MapView::movePin(double latitude, double longitude) {
    if (!std::isfinite(latitude) || !std::isfinite(longitude))
        return;
    m_position = {std::clamp(latitude, -90.0, 90.0), wrapped(longitude)};
    m_hasPosition = true;
    m_request.reset();
    m_annotations = {m_position};
    setAccessibleDescription(positionText());
    update();
}

void MapView::clearPosition() {
    m_hasPosition = false;
    m_request = GeoSpan{0, 360};
    setAccessibleDescription(positionText());
    fitRequest();
}

void MapView::fitRequest() {
    if (!m_request)
        return;
    const double latitude = m_hasPosition ? m_position.latitude : kWorldLatitude;
    const QPointF centre = mercatorOf(latitude, m_hasPosition ? m_position.longitude : 0);
    const double half = m_request->latitude / 2;
    const double tall = mercatorOf(latitude - half, 0).y() - mercatorOf(latitude + half, 0).y();
    const double byWidth = width() * 360 / std::max(m_request->longitude, kNarrowestSpan);
    moveTo(centre, tall > 0 ? std::min(byWidth, height() / tall) : byWidth);
}

double MapView::leastScale() const {
    return std::max({width(), height(), 1});
}

double MapView::mostScale() const {
    return std::max(leastScale(), width() * 360 / kNarrowestSpan);
}

void MapView::moveTo(const QPointF& world, double scale) {
    m_scale = std::clamp(scale, leastScale(), mostScale());
    // The map ends at its upper and lower edge and wraps round at the sides.
    const double half = std::min(0.5, height() / 2.0 / m_scale);
    m_world = {world.x() - std::floor(world.x()), std::clamp(world.y(), half, 1 - half)};
    m_base = {};
    m_zoomIn->setEnabled(m_zoomEnabled && m_scale < mostScale());
    m_zoomOut->setEnabled(m_zoomEnabled && m_scale > leastScale());
    update();
    Q_EMIT regionChanged();
}

GeoPoint MapView::centre() const {
    return {latitudeOf(m_world.y()), longitudeOf(m_world.x())};
}

GeoSpan MapView::span() const {
    const double half = height() / 2.0 / m_scale;
    return {latitudeOf(m_world.y() - half) - latitudeOf(m_world.y() + half),
            width() * 360 / m_scale};
}

void MapView::addAnnotation(double latitude, double longitude) {
    if (!std::isfinite(latitude) || !std::isfinite(longitude))
        return;
    m_annotations.append({std::clamp(latitude, -90.0, 90.0), wrapped(longitude)});
    update();
}

void MapView::removeAllAnnotations() {
    m_annotations.clear();
    update();
}

void MapView::setPickingEnabled(bool enabled) {
    m_picking = enabled;
    updateCursor();
}

void MapView::setZoomEnabled(bool enabled) {
    m_zoomEnabled = enabled;
    m_zoomIn->setVisible(enabled);
    m_zoomOut->setVisible(enabled);
    update();
}

void MapView::zoomBy(double factor, const QPointF& anchor) {
    if (!m_zoomEnabled || !(factor > 0))
        return;
    const double scale = std::clamp(m_scale * factor, leastScale(), mostScale());
    const QPointF fixed = worldAt(anchor);
    m_request.reset();
    moveTo(fixed + (m_world - fixed) * (m_scale / scale), scale);
}

void MapView::zoomBy(double factor) {
    zoomBy(factor, QRectF(rect()).center());
}

QPointF MapView::worldAt(const QPointF& pixel) const {
    return m_world + (pixel - QRectF(rect()).center()) / m_scale;
}

QPointF MapView::pixelOf(const GeoPoint& point) const {
    const QPointF world = mercatorOf(point.latitude, point.longitude);
    double dx = world.x() - m_world.x();
    dx -= std::round(dx);
    return QRectF(rect()).center() + QPointF(dx, world.y() - m_world.y()) * m_scale;
}

GeoPoint MapView::positionAt(const QPointF& pixel) const {
    const QPointF world = worldAt(pixel);
    return {latitudeOf(std::clamp(world.y(), 0.0, 1.0)), wrapped(longitudeOf(world.x()))};
}

QString MapView::positionText() const {
    if (!m_hasPosition)
        return tr("No position");
    const auto part = [](double value, char positive, char negative) {
        return QString::number(std::abs(value), 'f', 4) + QLatin1Char(' ') +
               QLatin1Char(value < 0 ? negative : positive);
    };
    return part(m_position.latitude, 'N', 'S') + QLatin1String("  ") +
           part(m_position.longitude, 'E', 'W');
}

QSize MapView::sizeHint() const {
    return {240, 124};
}

QSize MapView::minimumSizeHint() const {
    return {96, 80};
}

void MapView::panBy(const QPointF& pixels) {
    m_request.reset();
    moveTo(m_world - pixels / m_scale, m_scale);
}

void MapView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeZoomButtons();
    if (m_request)
        fitRequest();
    else
        moveTo(m_world, m_scale);
}

void MapView::placeZoomButtons() {
    m_zoomIn->move(width() - kZoomMargin - kZoomSide - 1, kZoomMargin + 1);
    m_zoomOut->move(m_zoomIn->x(), m_zoomIn->y() + kZoomSide + 1);
}

void MapView::updateCursor() {
    setCursor(m_dragging && m_dragged ? Qt::ClosedHandCursor
              : m_picking             ? Qt::CrossCursor
                                      : Qt::OpenHandCursor);
}

void MapView::wheelEvent(QWheelEvent* event) {
    if (!m_zoomEnabled || event->angleDelta().y() == 0)
        return event->ignore();
    zoomBy(std::pow(2.0, event->angleDelta().y() / kWheelStep), event->position());
    event->accept();
}

void MapView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    m_dragging = true;
    m_dragged = false;
    m_pressed = m_last = event->position();
}

void MapView::mouseMoveEvent(QMouseEvent* event) {
    if (!m_dragging)
        return;
    const QPointF way = event->position() - m_pressed;
    if (!m_dragged && std::hypot(way.x(), way.y()) < kDragDistance)
        return;
    m_dragged = true;
    updateCursor();
    panBy(event->position() - m_last);
    m_last = event->position();
}

void MapView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !m_dragging)
        return;
    m_dragging = false;
    updateCursor();
    if (m_dragged || !m_picking)
        return;
    const GeoPoint point = positionAt(m_pressed);
    Q_EMIT positionPicked(point.latitude, point.longitude);
}

void MapView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        zoomBy(kZoomStep, event->position());
}

void MapView::keyPressEvent(QKeyEvent* event) {
    const QPointF step(width() * kKeyStep, height() * kKeyStep);
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        return zoomBy(kZoomStep);
    case Qt::Key_Minus:
        return zoomBy(1 / kZoomStep);
    case Qt::Key_Left:
        return panBy({step.x(), 0});
    case Qt::Key_Right:
        return panBy({-step.x(), 0});
    case Qt::Key_Up:
        return panBy({0, step.y()});
    case Qt::Key_Down:
        return panBy({0, -step.y()});
    default:
        QWidget::keyPressEvent(event);
    }
}

void MapView::focusInEvent(QFocusEvent* event) {
    m_focusRing = showsFocusRing(event->reason());
    QWidget::focusInEvent(event);
}

void MapView::focusOutEvent(QFocusEvent* event) {
    m_focusRing = false;
    QWidget::focusOutEvent(event);
}

} // namespace clipheave::app
