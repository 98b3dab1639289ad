#include "foundation_ui/Fonts.h"

#include <QtGui/QFontDatabase>
#include <QtGui/QGuiApplication>

#include <algorithm>
#include <cmath>

namespace Tessaline::Fonts {

namespace {

using namespace Qt::StringLiterals;

// What can be drawn. A size that comes from a stored preference may be anything.
constexpr double kSmallestSize = 1;
constexpr double kLargestSize = 1000;

/// Whether `family` is a face that somebody chose, as opposed to the platform's stand-in for "no setting".
bool isChosen(const QString &family)
{
    static const QStringList kGeneric{u""_s,     u"sans"_s,      u"sans serif"_s, u"sans-serif"_s, u"serif"_s,
                                      u"mono"_s, u"monospace"_s, u"fixed"_s,      u"system"_s,     u"helvetica"_s};
    return !kGeneric.contains(family.toLower());
}

QStringList withDesktopFace(QFontDatabase::SystemFont desktopFont, qsizetype place, QStringList families)
{
    // An offscreen or minimal platform knows no desktop, and reports the first face it finds as if it were a setting.
    const QString platform = QGuiApplication::platformName();
    if (platform == "offscreen"_L1 || platform == "minimal"_L1)
        return families;
    const QString family = QFontDatabase::systemFont(desktopFont).family();
    if (isChosen(family) && !families.contains(family))
        families.insert(place, family);
    return families;
}

const QStringList &interfaceFamilies()
{
    static const QStringList families =
        withDesktopFace(QFontDatabase::GeneralFont, 0, {u"Inter"_s, u"Noto Sans"_s, u"DejaVu Sans"_s});
    return families;
}

const QStringList &codeFamilies()
{
    static const QStringList families =
        withDesktopFace(QFontDatabase::FixedFont, 1, {u"JetBrains Mono"_s, u"DejaVu Sans Mono"_s});
    return families;
}

QFont makeFont(const QStringList &families, double size, QFont::StyleHint hint)
{
    QFont font(families);
    font.setStyleHint(hint);
    font.setPixelSize(static_cast<int>(std::lround(std::clamp(size, kSmallestSize, kLargestSize))));
    return font;
}

} // namespace

QFont interface(double size, QFont::Weight weight)
{
    QFont font = makeFont(interfaceFamilies(), size, QFont::SansSerif);
    font.setWeight(weight);
    return font;
}

QFont body(double size)
{
    static const QStringList families{u"Georgia"_s,    u"Gelasio"_s,      u"Source Serif 4"_s, u"Charis SIL"_s,
                                      u"Noto Serif"_s, u"DejaVu Serif"_s, u"DejaVu Sans"_s,    u"Noto Color Emoji"_s};
    return makeFont(families, size, QFont::Serif);
}

QFont code(double size)
{
    QFont font = makeFont(codeFamilies(), size, QFont::Monospace);
    font.setFixedPitch(true);
    return font;
}

} // namespace Tessaline::Fonts
