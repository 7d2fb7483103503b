// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/BadgeIcon.h"
#include "ui/desktop/CrestIcon.h"

#include <QFile>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace bram;
using namespace Qt::StringLiterals;

namespace
{
const QColor red = QColor::fromRgb(BadgeIcon::systemRed);
const QColor green = QColor::fromRgb(BadgeIcon::systemGreen);

PointImage plain(QSizeF size, const QColor &colour = Qt::blue)
{
    return PointImage(size,
                      [&](QPainter &painter, int) { painter.fillRect(QRectF({}, size), colour); });
}

/// The pixel at a place in points.
QColor at(const PointImage &picture, int scale, qreal x, qreal y)
{
    return picture.image(scale).pixelColor(static_cast<int>(x * scale),
                                           static_cast<int>(y * scale));
}

/// The rectangle, in pixels, around what `picture` has and `without` has not.
QRect changed(const PointImage &picture, const PointImage &without, int scale)
{
    const QImage &a = picture.image(scale);
    const QImage &b = without.image(scale);
    QRect rect;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.pixel(x, y) != b.pixel(x, y)) {
                rect |= QRect(x, y, 1, 1);
            }
        }
    }
    return rect;
}

/// The width of the white text inside the disc, in points.
qreal textWidth(const PointImage &picture, int scale, const QRectF &disc)
{
    const QImage &image = picture.image(scale);
    int left = image.width();
    int right = 0;
    for (int y = qCeil(disc.top() * scale); y < qFloor(disc.bottom() * scale); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QPointF fromMiddle = QPointF(x + 0.5, y + 0.5) / scale - disc.center();
            const bool inside = std::hypot(fromMiddle.x(), fromMiddle.y()) < disc.width() / 2 - 1;
            if (inside && image.pixelColor(x, y).green() > 140) {
                left = std::min(left, x);
                right = std::max(right, x + 1);
            }
        }
    }
    return qreal(right - left) / scale;
}

class Scales : public testing::TestWithParam<int>
{
};
INSTANTIATE_TEST_SUITE_P(Pixels, Scales, testing::Values(1, 2, 3));
} // namespace

TEST_P(Scales, theBadgeStandsAtTheTopRightATenthOfItsDiameterFromTheEdges)
{
    const int scale = GetParam();
    const PointImage base = plain({22, 22});
    const PointImage badged = BadgeIcon::make(base, {.count = 5, .badgeDiameter = 12});
    EXPECT_EQ(badged.image(scale).size(), QSize(22, 22) * scale);
    // The square's corner lies 8.8 points from the left and from the bottom.
    const QRectF square(8.8, 22 - 8.8 - 12, 12, 12);
    EXPECT_EQ(changed(badged, base, scale),
              QRectF(square.topLeft() * scale, square.size() * scale).toAlignedRect());
    EXPECT_EQ(at(badged, scale, 1, 21), QColor(Qt::blue));
    // Red between the rim and the text; the rim is white over its 0.6 points, which only fill whole pixels
    // where there are enough of them.
    EXPECT_EQ(at(badged, scale, square.left() + 2.2, square.center().y()), red);
    EXPECT_EQ(at(badged, scale, square.right() - 2.2, square.center().y()), red);
    if (scale == 3) {
        EXPECT_EQ(at(badged, scale, square.center().x(), square.top() + 0.35), QColor(Qt::white));
        EXPECT_EQ(at(badged, scale, square.center().x(), square.top() + 0.9), red);
    }
}

TEST_P(Scales, theServiceDotStandsAtTheTopLeft)
{
    const int scale = GetParam();
    const PointImage base = plain({22, 22});
    const PointImage dotted
        = BadgeIcon::make(base, {.serviceRunning = true, .serviceIndicatorDiameter = 7.5});
    EXPECT_EQ(changed(dotted, base, scale),
              QRectF(0.9 * scale, 0.9 * scale, 7.5 * scale, 7.5 * scale).toAlignedRect());
    EXPECT_EQ(at(dotted, scale, 0.9 + 3.75, 0.9 + 3.75), green);
}

TEST(BadgeIcon, sizesThatAreNotGivenFollowTheShorterSide)
{
    const PointImage base = plain({60, 40});
    const QRectF badge(60 - 18 - 1.8, 1.8, 18, 18);
    EXPECT_EQ(changed(BadgeIcon::make(base, {.count = 1}), base, 1), badge.toAlignedRect());
    const qreal dot = 0.34 * 40;
    EXPECT_EQ(changed(BadgeIcon::make(base, {.serviceRunning = true}), base, 1),
              QRectF(0.12 * dot, 0.12 * dot, dot, dot).toAlignedRect());
}

TEST(BadgeIcon, countsBelowOneHaveNoBadgeAndOnlyThenIsItATemplate)
{
    const PointImage base = plain({22, 22});
    for (const qsizetype count : {0, -1, -100}) {
        const PointImage result = BadgeIcon::make(base, {.count = count});
        EXPECT_TRUE(changed(result, base, 2).isNull()) << count;
        EXPECT_TRUE(result.isTemplate());
        EXPECT_TRUE(result.icon().isMask());
    }
    EXPECT_FALSE(BadgeIcon::make(base, {.count = 1}).isTemplate());
    EXPECT_FALSE(BadgeIcon::make(base, {.serviceRunning = true}).isTemplate());

    EXPECT_EQ(BadgeIcon::badgeText(-3), u"0"_s);
    EXPECT_EQ(BadgeIcon::badgeText(1), u"1"_s);
    EXPECT_EQ(BadgeIcon::badgeText(99), u"99"_s);
    EXPECT_EQ(BadgeIcon::badgeText(100), u"99+"_s);
    EXPECT_EQ(BadgeIcon::make(base, {.count = 100}).image(3),
              BadgeIcon::make(base, {.count = 1000}).image(3));
}

TEST_P(Scales, theTextKeepsToTheMiddleOfTheBadge)
{
    const int scale = GetParam();
    const QRectF disc(8.8 + 0.6, 1.2 + 0.6, 10.8, 10.8);
    for (const qsizetype count : {1, 8, 42, 99, 100}) {
        const PointImage picture
            = BadgeIcon::make(plain({22, 22}), {.count = count, .badgeDiameter = 12});
        const qreal width = textWidth(picture, scale, disc);
        EXPECT_GT(width, 0.9) << count;
        EXPECT_LE(width, 0.7 * disc.width() + 1.0 / scale) << count;
    }
    // Wide enough to be read.
    const PointImage many = BadgeIcon::make(plain({22, 22}), {.count = 100, .badgeDiameter = 12});
    EXPECT_GE(textWidth(many, scale, disc), 0.55 * disc.width());
}

TEST(BadgeIcon, aSymbolThatTheThemeLacksBecomesADisc)
{
    const PointImage picture = BadgeIcon::make(u"no-such-symbol"_s, 20, {});
    EXPECT_EQ(picture.size(), QSizeF(20, 20));
    EXPECT_EQ(at(picture, 2, 10, 10).alpha(), 255);
    EXPECT_EQ(at(picture, 2, 0.5, 0.5).alpha(), 0);
}

TEST_P(Scales, everySizeOfTheCrestIsDrawnForItself)
{
    const int scale = GetParam();
    const QImage crest = crestBaseIcon().image(scale);
    EXPECT_EQ(crest.size(), QSize(22, 22) * scale);
    QFile file(u":/crest/MenuBarCrest-%1.argb"_s.arg(QString::number(22 * scale)));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray pixels = file.readAll();
    ASSERT_EQ(pixels.size(), crest.sizeInBytes());
    const QImage drawn(reinterpret_cast<const uchar *>(pixels.constData()), 22 * scale, 22 * scale,
                       QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(crest.convertToFormat(QImage::Format_ARGB32),
              drawn.convertToFormat(QImage::Format_ARGB32));
    // What a host gets for that size is that picture, not another one scaled.
    const QPixmap shown = crestBaseIcon().icon().pixmap(QSize(22, 22) * scale, 1.0);
    EXPECT_EQ(shown.toImage().convertToFormat(QImage::Format_ARGB32),
              drawn.convertToFormat(QImage::Format_ARGB32));
}

TEST(CrestIcon, theWashGraysTheCrestAndLeavesItsSurroundings)
{
    const QImage crest = crestBaseIcon().image(3);
    const QImage gray = grayCrestIcon().image(3);
    int coloured = 0;
    for (int y = 0; y < crest.height(); ++y) {
        for (int x = 0; x < crest.width(); ++x) {
            const QColor before = crest.pixelColor(x, y);
            const QColor after = gray.pixelColor(x, y);
            EXPECT_EQ(before.alpha(), after.alpha());
            if (before.alpha() == 255) {
                EXPECT_NEAR(after.blueF(), 0.55 * 0.72 + 0.28 * before.blueF(), 0.01);
                EXPECT_NEAR(after.redF(), 0.55 * 0.72 + 0.28 * before.redF(), 0.01);
                ++coloured;
            }
        }
    }
    EXPECT_GT(coloured, 66 * 66 / 2);
    EXPECT_FALSE(grayCrestIcon().isTemplate());
}

TEST(MenuBarIcon, isInColourOnlyWhileTheConnectionIsHealthyAndNeverATemplate)
{
    const QImage colour = crestBaseIcon().image(2);
    const QImage gray = grayCrestIcon().image(2);
    for (const IndicatorState state : {IndicatorState::Green, IndicatorState::Yellow,
                                       IndicatorState::Red, IndicatorState::Gray}) {
        const PointImage idle = menuBarIcon(state, 0);
        EXPECT_EQ(idle.image(2), state == IndicatorState::Green ? colour : gray);
        EXPECT_FALSE(idle.icon().isMask());
        const PointImage waiting = menuBarIcon(state, 5);
        EXPECT_EQ(at(waiting, 2, 8.8 + 2.2, 1.2 + 6), red);
        EXPECT_FALSE(waiting.icon().isMask());
        EXPECT_EQ(at(menuBarIcon(state, 5, Alarm::On), 2, 4.5, 4.5), red) << "at the other side";
    }
}

TEST(MenuBarIcon, keyChangesWithWhatIsShown)
{
    EXPECT_EQ(iconRenderKey(0, IndicatorState::Green, {}), u"menu-icon-0-0-none"_s);
    EXPECT_EQ(iconRenderKey(12, IndicatorState::Yellow, u"a-1"_s), u"menu-icon-12-1-a-1"_s);
    EXPECT_EQ(iconRenderKey(-1, IndicatorState::Red, {}), u"menu-icon--1-2-none"_s);
    EXPECT_EQ(iconRenderKey(100, IndicatorState::Gray, {}), u"menu-icon-100-3-none"_s);
    EXPECT_EQ(iconRenderKey(1, IndicatorState::Gray, {}, Alarm::On), u"menu-icon-1-3-none-alarm"_s);
}

TEST(CrestIcon, whereTheArtworkIsMissingTheNextPictureTakesItsPlace)
{
    const QTemporaryDir folder;
    EXPECT_EQ(crestBaseIcon(folder.path()).size(), QSizeF(22, 22));
    EXPECT_EQ(at(crestBaseIcon(folder.path()), 1, 11, 11).alpha(), 0);
    QImage icon(32, 32, QImage::Format_ARGB32);
    icon.fill(Qt::magenta);
    ASSERT_TRUE(icon.save(folder.filePath(u"AppIcon-32.png"_s)));
    EXPECT_EQ(at(crestBaseIcon(folder.path()), 1, 11, 11), QColor(Qt::magenta));
    // One file of three is not enough.
    QFile one(folder.filePath(u"MenuBarCrest-22.argb"_s));
    ASSERT_TRUE(one.open(QIODevice::WriteOnly));
    one.write(QByteArray(22 * 22 * 4, '\0'));
    one.close();
    EXPECT_EQ(at(crestBaseIcon(folder.path()), 1, 11, 11), QColor(Qt::magenta));
    EXPECT_FALSE(crestBaseIcon(folder.path()).isTemplate());

    for (const int width : {22, 32, 48, 64, 128, 256}) {
        EXPECT_EQ(applicationIcon().pixmap(QSize(width, width), 1.0).size(), QSize(width, width));
    }
}
