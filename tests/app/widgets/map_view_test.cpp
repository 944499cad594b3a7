// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme.h"
#include "app/widgets/map_coast.h"
#include "app/widgets/map_view.h"
#include "tests/testkit/testkit.h"

#include <QAbstractButton>
#include <QImage>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <utility>

namespace clipheave::app {
namespace {

class MapViewTest : public testing::Test {
protected:
    void SetUp() override {
        Theme::instance().apply(Appearance::Dark);
        m_map.resize(480, 320);
        m_map.show();
    }

    [[nodiscard]] QColor colourAt(double latitude, double longitude) {
        const QImage image = m_map.grab().toImage();
        return image.pixelColor(m_map.pixelOf({latitude, longitude}).toPoint());
    }

    void wheel(const QPointF& at, int delta) {
        QWheelEvent event(at, m_map.mapToGlobal(at), {}, {0, delta}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&m_map, &event);
    }

    MapView m_map;
};

TEST_F(MapViewTest, PixelsAndPositionsAreEachOthersInverse) {
    for (const auto& [latitude, longitude] :
         {std::pair(63.4043, -19.0571), {-41.3, 174.8}, {0.0, 0.0}, {78.2, 15.6}}) {
        m_map.setCentre(latitude, longitude, 2, 3);
        EXPECT_NEAR(m_map.pixelOf({latitude, longitude}).x(), 240, 0.01);
        for (const QPointF pixel : {QPointF(0, 0), QPointF(479, 10), QPointF(123.5, 300)}) {
            const QPointF back = m_map.pixelOf(m_map.positionAt(pixel));
            EXPECT_NEAR(back.x(), pixel.x(), 1e-3);
            EXPECT_NEAR(back.y(), pixel.y(), 1e-3);
        }
    }
    // Mercator: a degree of latitude at 60 north is twice as long as one of longitude.
    m_map.setCentre(60, 10, 0.2, 0.2);
    const QPointF east = m_map.pixelOf({60, 10.05}) - m_map.pixelOf({60, 10});
    const QPointF north = m_map.pixelOf({60, 10}) - m_map.pixelOf({60.05, 10});
    EXPECT_NEAR(north.y() / east.x(), 2, 0.01);
}

TEST_F(MapViewTest, FirstSpanIsWhollyShownAlsoAfterResizing) {
    m_map.setCentre(63.4043, -19.0571);
    for (const QSize size : {QSize(480, 320), QSize(240, 124), QSize(300, 600)}) {
        m_map.resize(size);
        const GeoSpan span = m_map.span();
        EXPECT_GE(span.latitude, 0.1254);
        EXPECT_GE(span.longitude, 0.2339);
        EXPECT_TRUE(std::abs(span.latitude - 0.1255) < 0.001 ||
                    std::abs(span.longitude - 0.234) < 0.001);
        EXPECT_NEAR(m_map.centre().latitude, 63.4043, 1e-6);
    }
    EXPECT_EQ(m_map.positionText(), u"63.4043 N  19.0571 W");
    m_map.setCentre(-33.8568, 151.2153);
    EXPECT_EQ(m_map.positionText(), u"33.8568 S  151.2153 E");
    m_map.setCentre(std::nan(""), 0);
    EXPECT_EQ(m_map.positionText(), u"33.8568 S  151.2153 E");
    m_map.clearPosition();
    EXPECT_EQ(m_map.positionText(), u"No position");
    EXPECT_GT(m_map.span().longitude, 170);
}

TEST_F(MapViewTest, ZoomKeepsThePlaceUnderThePointer) {
    m_map.setCentre(48, 10, 4, 6);
    const QPointF pointer(100, 250);
    const GeoPoint before = m_map.positionAt(pointer);
    const double wide = m_map.span().longitude;
    wheel(pointer, 120);
    EXPECT_NEAR(m_map.span().longitude, wide / std::numbers::sqrt2, 1e-6);
    wheel(pointer, 360);
    QTest::mouseDClick(&m_map, Qt::LeftButton, {}, pointer.toPoint());
    EXPECT_NEAR(m_map.positionAt(pointer).latitude, before.latitude, 1e-9);
    EXPECT_NEAR(m_map.positionAt(pointer).longitude, before.longitude, 1e-9);
    for (int i = 0; i < 60; ++i)
        wheel(pointer, 240);
    EXPECT_NEAR(m_map.span().longitude, 0.004, 1e-6);
    for (int i = 0; i < 60; ++i)
        wheel(pointer, -240);
    EXPECT_NEAR(m_map.span().longitude, 360, 1e-6);
    m_map.setCentre(48, 10, 4, 6);
    m_map.setZoomEnabled(false);
    wheel(pointer, 240);
    EXPECT_NEAR(m_map.span().longitude, wide, 1e-9);
}

TEST_F(MapViewTest, KeysButtonsAndDragMoveTheMap) {
    m_map.setCentre(10, 20, 4, 6);
    const double wide = m_map.span().longitude;
    QTest::keyClick(&m_map, Qt::Key_Plus);
    EXPECT_NEAR(m_map.span().longitude, wide / 1.6, 1e-9);
    QTest::keyClick(&m_map, Qt::Key_Minus);
    EXPECT_NEAR(m_map.span().longitude, wide, 1e-9);
    QTest::keyClick(&m_map, Qt::Key_Right);
    EXPECT_NEAR(m_map.centre().longitude, 20 + wide / 4, 1e-9);
    QTest::keyClick(&m_map, Qt::Key_Left);
    QTest::keyClick(&m_map, Qt::Key_Up);
    EXPECT_GT(m_map.centre().latitude, 10.5);
    QTest::keyClick(&m_map, Qt::Key_Down);
    EXPECT_NEAR(m_map.centre().latitude, 10, 1e-9);
    const auto buttons = m_map.findChildren<QAbstractButton*>();
    ASSERT_EQ(buttons.size(), 2);
    QTest::mouseClick(buttons.at(0), Qt::LeftButton);
    EXPECT_NEAR(m_map.span().longitude, wide / 1.6, 1e-9);
    QTest::mouseClick(buttons.at(1), Qt::LeftButton);

    const GeoPoint held = m_map.positionAt({200, 100});
    QTest::mousePress(&m_map, Qt::LeftButton, {}, {200, 100});
    QTest::mouseMove(&m_map, {260, 150});
    QTest::mouseRelease(&m_map, Qt::LeftButton, {}, {260, 150});
    EXPECT_NEAR(m_map.positionAt({260, 150}).longitude, held.longitude, 1e-9);
    EXPECT_NEAR(m_map.positionAt({260, 150}).latitude, held.latitude, 1e-9);
}

TEST_F(MapViewTest, AClickPicksAPositionADragDoesNot) {
    m_map.setCentre(63, -19, 1, 2);
    QSignalSpy picked(&m_map, &MapView::positionPicked);
    const GeoPoint expected = m_map.positionAt({60, 70});
    QTest::mouseClick(&m_map, Qt::LeftButton, {}, {60, 70});
    EXPECT_EQ(picked.count(), 0);
    m_map.setPickingEnabled(true);
    QTest::mouseClick(&m_map, Qt::LeftButton, {}, {60, 70});
    ASSERT_EQ(picked.count(), 1);
    EXPECT_NEAR(picked.at(0).at(0).toDouble(), expected.latitude, 1e-9);
    EXPECT_NEAR(picked.at(0).at(1).toDouble(), expected.longitude, 1e-9);
    QTest::mousePress(&m_map, Qt::LeftButton, {}, {60, 70});
    QTest::mouseMove(&m_map, {90, 70});
    QTest::mouseRelease(&m_map, Qt::LeftButton, {}, {90, 70});
    EXPECT_EQ(picked.count(), 1);
}

TEST_F(MapViewTest, TheDateLineIsNoBorder) {
    m_map.setCentre(-17, 179.9, 4, 6);
    const double middle = m_map.pixelOf({-17, 179.9}).x();
    EXPECT_NEAR(m_map.pixelOf({-17, -179.9}).x() - middle, 0.2 * 480 / m_map.span().longitude,
                0.01);
    EXPECT_LT(m_map.positionAt({middle + 100, 100}).longitude, -178);
    const double before = m_map.centre().longitude;
    QTest::keyClick(&m_map, Qt::Key_Right);
    EXPECT_LT(m_map.centre().longitude, 0);
    QTest::keyClick(&m_map, Qt::Key_Left);
    EXPECT_NEAR(m_map.centre().longitude, before, 1e-9);
    // Chukotka lies on both sides of it and is one area of land.
    m_map.setCentre(67, 180, 12, 30);
    const QColor land = Theme::instance().color(Token::mapLand);
    EXPECT_EQ(colourAt(67.2, 178.2), land);
    EXPECT_EQ(colourAt(66.3, -173.4), land);
    EXPECT_EQ(colourAt(68.4, 179.7), land);
}

TEST_F(MapViewTest, LandAndSeaAreWhereTheyAre) {
    const QColor land = Theme::instance().color(Token::mapLand);
    const QColor sea = Theme::instance().color(Token::mapSea);
    struct Place {
        double latitude, longitude;
        bool land;
    };
    // Inland and open sea, away from coasts, borders and round degrees.
    for (const Place& place :
         {Place{48.137, 11.573, true}, Place{41.337, -99.237, true}, Place{-25.337, 133.337, true},
          Place{64.737, -18.337, true}, Place{-77.337, 12.237, true}, Place{-1.337, -61.337, true},
          Place{47.337, -29.337, false}, Place{1.337, -130.337, false},
          Place{41.737, 51.137, false}, Place{35.337, 18.337, false}})
        for (const double span : {40.0, 8.0, 1.0, 0.1}) {
            m_map.setCentre(place.latitude + span / 9, place.longitude + span / 11, span, span);
            EXPECT_EQ(colourAt(place.latitude, place.longitude), place.land ? land : sea)
                << place.latitude << ' ' << place.longitude << " span " << span;
        }
}

TEST_F(MapViewTest, PinsStandOnTheirPosition) {
    m_map.setCentre(47.3, -29.3, 2, 3);
    const QPoint head = m_map.pixelOf({47.3, -29.3}).toPoint() - QPoint(0, 12);
    const QColor pin = Theme::instance().color(Token::bad);
    EXPECT_NE(m_map.grab().toImage().pixelColor(head), pin);
    m_map.addAnnotation(47.3, -29.3);
    EXPECT_EQ(m_map.annotations(), (QList<GeoPoint>{{47.3, -29.3}}));
    EXPECT_EQ(m_map.grab().toImage().pixelColor(head), pin);
    m_map.removeAllAnnotations();
    EXPECT_NE(m_map.grab().toImage().pixelColor(head), pin);
}

TEST(CoastMap, CuttingKeepsTheAreaInsideTheView) {
    CoastLine square;
    // A ring of many points around the view's middle, far wider than the view.
    for (int i = 0; i <= 4000; ++i) {
        const double angle = i % 4000 * 2 * std::numbers::pi / 4000;
        square.points.push_back({static_cast<float>(0.5 + 0.2 * std::cos(angle)),
                                 static_cast<float>(0.5 + 0.2 * std::sin(angle))});
    }
    square.box = {0.3F, 0.3F, 0.7F, 0.7F};
    for (std::size_t i = 0; i < 4000; i += kCoastRunLength) {
        CoastLine::Box box{1, 1, 0, 0};
        for (std::size_t k = i; k <= std::min<std::size_t>(i + kCoastRunLength, 4000); ++k)
            box = {std::min(box.left, square.points[k].x), std::min(box.top, square.points[k].y),
                   std::max(box.right, square.points[k].x),
                   std::max(box.bottom, square.points[k].y)};
        square.runs.push_back(box);
    }
    // The ring's right end at x = 0.7 crosses a view of 100 px at 10000 px per world.
    const MapFrame frame{{0.695, 0.495}, 10000, {0, 0, 100, 100}};
    const CoastShape shape = coastShape(square, frame);
    EXPECT_LT(shape.area.size(), 120);
    EXPECT_TRUE(QRectF(-10, -10, 120, 120).contains(shape.area.boundingRect()));
    EXPECT_TRUE(shape.area.containsPoint({10, 50}, Qt::OddEvenFill));
    EXPECT_FALSE(shape.area.containsPoint({60, 50}, Qt::OddEvenFill));
    EXPECT_FALSE(shape.strokes.isEmpty());
    const MapFrame inside{{0.5, 0.5}, 100000, {0, 0, 100, 100}};
    EXPECT_TRUE(coastShape(square, inside).area.containsPoint({50, 50}, Qt::OddEvenFill));
    EXPECT_TRUE(coastShape(square, inside).strokes.isEmpty());
    const MapFrame away{{0.1, 0.1}, 1000, {0, 0, 100, 100}};
    EXPECT_TRUE(coastShape(square, away).area.isEmpty());
}

TEST(CoastMap, DamagedDataIsNoMap) {
    EXPECT_EQ(CoastMap::instance().levelCount(), 3U);
    EXPECT_EQ(CoastMap::fromBytes({}).levelCount(), 0U);
    EXPECT_EQ(CoastMap::fromBytes(QByteArrayLiteral("nonsense")).levelCount(), 0U);
    const QByteArray good =
        QByteArrayLiteral("COAST1\x01\x01\x00\x04\x00\x00\x02\x00\x00\x02\x01\x00");
    EXPECT_EQ(CoastMap::fromBytes(qCompress(good)).levelCount(), 1U);
    for (qsizetype length = 0; length < good.size(); ++length)
        EXPECT_EQ(CoastMap::fromBytes(qCompress(good.left(length))).levelCount(), 0U) << length;
    QByteArray kind = good;
    kind[8] = 5;
    EXPECT_EQ(CoastMap::fromBytes(qCompress(kind)).levelCount(), 0U);
    const QByteArray huge = QByteArrayLiteral("COAST1\x01\x01\x00\xFF\xFF\xFF\x7F");
    EXPECT_EQ(CoastMap::fromBytes(qCompress(huge)).levelCount(), 0U);
}

TEST(CoastMap, AFrameHoldsLittleOfTheData) {
    // What a frame costs is its points; the finest level has 213,000.
    const CoastMap& map = CoastMap::instance();
    for (const double span : {60.0, 12.0, 2.0, 0.2}) {
        const double scale = 720 * 360 / (2 * span);
        const MapFrame frame{
            mercatorOf(64.5, 10) - QPointF(360, 240) / scale, scale, {0, 0, 720, 480}};
        qsizetype points = 0;
        for (const CoastLine& line : map.level(map.levelFor(scale))) {
            const CoastShape shape = coastShape(line, frame);
            points += shape.area.size() + shape.strokes.elementCount();
        }
        EXPECT_LT(points, 20'000) << "span " << span;
    }
}

} // namespace
} // namespace clipheave::app
