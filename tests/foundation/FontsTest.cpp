#include "foundation_ui/Fonts.h"

#include <QtCore/QStringList>
#include <QtGui/QFontMetricsF>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

TEST(Fonts, TheInterfaceFallsBackFromInterToFacesThatAreEverywhere)
{
    const QFont font = Fonts::interface(Fonts::kInterfaceSize, QFont::DemiBold);

    EXPECT_EQ(font.families(), (QStringList{u"Inter"_s, u"Noto Sans"_s, u"DejaVu Sans"_s}));
    EXPECT_EQ(font.pixelSize(), 13);
    EXPECT_EQ(font.weight(), QFont::DemiBold);
}

TEST(Fonts, TheBodyIsABookFace)
{
    const QStringList families = Fonts::body(17).families();

    EXPECT_EQ(families.first(6), (QStringList{u"Georgia"_s, u"Gelasio"_s, u"Source Serif 4"_s, u"Charis SIL"_s,
                                              u"Noto Serif"_s, u"DejaVu Serif"_s}));
}

TEST(Fonts, CodeHasOneWidth)
{
    const QFontMetricsF metrics(Fonts::code(17));

    EXPECT_DOUBLE_EQ(metrics.horizontalAdvance(u"iiii"_s), metrics.horizontalAdvance(u"WWWW"_s));
    EXPECT_EQ(Fonts::code(17).families().first(), u"JetBrains Mono"_s);
}

TEST(Fonts, AFractionOfAPixelIsRounded)
{
    EXPECT_EQ(Fonts::code(17.5).pixelSize(), 18);
    EXPECT_EQ(Fonts::code(17.4).pixelSize(), 17);
}

TEST(Fonts, ASizeThatCannotBeDrawnIsTheNearestThatCan)
{
    for (const double size : {0.0, -5.0, 0.3, -1e300})
        EXPECT_EQ(Fonts::body(size).pixelSize(), 1) << size;
    for (const double size : {1001.0, 1e300})
        EXPECT_EQ(Fonts::code(size).pixelSize(), 1000) << size;
}

} // namespace Tessaline
