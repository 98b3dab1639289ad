#pragma once

#include "foundation_ui/Theme.h"

#include <QtGui/QPalette>
#include <QtWidgets/QProxyStyle>

namespace Tessaline {

/// The toolkit's own widgets in the look of the application: menus, scroll bars, tool tips, line edits, combo boxes,
/// dialogs and their buttons.
class TessalineStyle final : public QProxyStyle
{
    Q_OBJECT
public:
    static constexpr int kScrollBarExtent = 12;

    /// `theme` must outlive the style.
    explicit TessalineStyle(const Theme &theme);

    void polish(QWidget *widget) override;
    using QProxyStyle::polish;

    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returnData) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                           const QWidget *widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl subControl,
                         const QWidget *widget) const override;
    QIcon standardIcon(StandardPixmap icon, const QStyleOption *option, const QWidget *widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override;

private:
    void drawMenuItem(const QStyleOption *option, QPainter *painter) const;
    void drawMenuBarItem(const QStyleOption *option, QPainter *painter) const;
    void drawScrollBar(const QStyleOptionComplex *option, QPainter *painter) const;
    void drawButtonBevel(const QStyleOption *option, QPainter *painter) const;
    void drawComboBox(const QStyleOptionComplex *option, QPainter *painter) const;

    const Theme &m_theme;
};

/// The colours of `appearance` for everything that asks the toolkit's palette.
QPalette applicationPalette(Appearance appearance);

/// Gives the application its style, palette and interface face, and keeps the palette in step with `theme`, which must
/// outlive the application. Call it once, before the first widget.
void dressApplication(const Theme &theme);

} // namespace Tessaline
