#pragma once

#include <QtWidgets/QWidget>

namespace Tessaline {

class Theme;

/// A line of one pixel between two rows or two columns.
class Hairline final : public QWidget
{
    Q_OBJECT
public:
    Hairline(const Theme &theme, Qt::Orientation orientation, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
};

} // namespace Tessaline
