#pragma once

#include "foundation_ui/Theme.h"

#include <QtWidgets/QWidget>

namespace Tessaline {

/// A symbol that only shows something; the words beside it say the same to assistive technology.
class SymbolView final : public QWidget
{
    Q_OBJECT
public:
    /// `theme` must outlive the view. `size` is in device-independent pixels.
    SymbolView(const Theme &theme, ColorRole role, double size, QWidget *parent = nullptr);

    void setSymbol(const QString &symbol);
    void setColorRole(ColorRole role);
    void setSymbolSize(double size); // within the view, whose own size stays
    void setOpacity(double opacity); // 1 at first

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    ColorRole m_role;
    double m_size;
    double m_opacity = 1;
    QString m_symbol;
};

} // namespace Tessaline
