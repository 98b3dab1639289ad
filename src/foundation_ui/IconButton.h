#pragma once

#include "foundation_ui/PlainButton.h"

namespace Tessaline {

/// A button that shows a symbol only. Checkable ones show that they are on by the tone of a selected row.
class IconButton final : public PlainButton
{
    Q_OBJECT
public:
    static constexpr int kSide = 24; // as wide and high as it wants to be
    static constexpr double kSymbolSize = 13;

    /// `help` is the tool tip and the accessible name.
    IconButton(const Theme &theme, const QString &symbol, const QString &help, QWidget *parent = nullptr);

    void setSymbol(const QString &symbol);
    void setSymbolSize(double size);   // device-independent pixels
    void setColorRole(ColorRole role); // of the symbol, SecondaryText at first
    /// Draws the symbol only while the pointer is over the button or the focus is on it; it stays there for clicks and
    /// by name.
    void setIsQuiet(bool isQuiet);
    void setSide(int width, int height); // fixes the size

    QSize sizeHint() const override { return m_size; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_symbol;
    QSize m_size{kSide, kSide};
    double m_symbolSize = kSymbolSize;
    bool m_isQuiet = false;
    ColorRole m_role = ColorRole::SecondaryText;
};

} // namespace Tessaline
