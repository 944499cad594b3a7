// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPixmap>
#include <QPointF>
#include <QWidget>

#include <optional>

class QAbstractButton;

namespace clipheave::app {

/// Degrees: latitude -90 to 90 north, longitude -180 to 180 east.
struct GeoPoint {
    double latitude = 0;
    double longitude = 0;
    friend bool operator==(const GeoPoint&, const GeoPoint&) = default;
};

/// Degrees of latitude and longitude.
struct GeoSpan {
    double latitude = 0;
    double longitude = 0;
};

/// A map of land and sea from the built-in coast lines (no tiles, no network). Mercator, because it
/// keeps shapes at every latitude; it ends at 85 degrees north and south. Wheel, buttons, double
/// click and + - zoom, drag and arrows move.
class MapView : public QWidget {
    Q_OBJECT
public:
    /// The span of a position when it is first shown.
    static constexpr GeoSpan kFirstSpan{0.1255, 0.234};

    explicit MapView(QWidget* parent = nullptr);

    /// Shows at least the span around the centre, and the position text. Values out of range are
    /// brought into it (longitudes wrap); values that are not finite are ignored.
    void setCentre(double latitude, double longitude, double spanLatitude = kFirstSpan.latitude,
                   double spanLongitude = kFirstSpan.longitude);
    /// Shows the whole world and "No position".
    void clearPosition();
    [[nodiscard]] bool hasPosition() const { return m_hasPosition; }
    [[nodiscard]] GeoPoint centre() const;
    /// Returns the span that the widget shows now.
    [[nodiscard]] GeoSpan span() const;

    /// Puts the position text and the one pin there; what is shown stays. Values as above.
    void movePin(double latitude, double longitude);
    void addAnnotation(double latitude, double longitude);
    void removeAllAnnotations();
    [[nodiscard]] QList<GeoPoint> annotations() const { return m_annotations; }

    /// When on, a click emits positionPicked().
    void setPickingEnabled(bool enabled);
    /// When off, wheel, keys and buttons leave the span alone.
    void setZoomEnabled(bool enabled);
    /// `factor` > 1 zooms in; `anchor` (widget px) keeps its place.
    void zoomBy(double factor, const QPointF& anchor);
    void zoomBy(double factor);

    /// Return the widget px of a position (of the copy nearest to the centre), and the reverse.
    [[nodiscard]] QPointF pixelOf(const GeoPoint& point) const;
    [[nodiscard]] GeoPoint positionAt(const QPointF& pixel) const;
    /// Returns "63.4043 N  19.0571 W" for the position that was set, or "No position".
    [[nodiscard]] QString positionText() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void positionPicked(double latitude, double longitude);
    /// Centre or span changed, by the user or by a call.
    void regionChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    [[nodiscard]] QPointF worldAt(const QPointF& pixel) const;
    [[nodiscard]] double leastScale() const;
    [[nodiscard]] double mostScale() const;
    void fitRequest();
    void moveTo(const QPointF& world, double scale);
    void panBy(const QPointF& pixels);
    void placeZoomButtons();
    void updateCursor();
    void renderBase();
    void paintPins(QPainter& painter) const;
    void paintOverlay(QPainter& painter) const;

    QPointF m_world{0.5, 0.5};        ///< centre in map units
    double m_scale = 256;             ///< px of the whole world's width
    std::optional<GeoSpan> m_request; ///< until the user moves the map: fitted again on resize
    GeoPoint m_position;
    bool m_hasPosition = false;
    QList<GeoPoint> m_annotations;
    QPixmap m_base; ///< land, sea and graticule of the current region; null when out of date
    QAbstractButton* m_zoomIn;
    QAbstractButton* m_zoomOut;
    bool m_picking = false, m_zoomEnabled = true, m_dragging = false, m_dragged = false;
    bool m_focusRing = false;
    QPointF m_pressed, m_last;
};

} // namespace clipheave::app
