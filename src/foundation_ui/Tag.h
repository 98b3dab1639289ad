#pragma once

#include "foundation_ui/Theme.h"

#include <QtWidgets/QLabel>

namespace Tessaline {

/// A short word in a small capsule in the accent, the name of a project for example. It ends in "…" when there is no
/// room.
class Tag final : public QLabel
{
    Q_OBJECT
public:
    static constexpr double kFontSize = 12;
    static constexpr double kRadius = 4;
    static constexpr double kGroundOpacity = 0.15; // of the accent

    /// `theme` must outlive the tag.
    explicit Tag(const Theme &theme, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
};

} // namespace Tessaline
