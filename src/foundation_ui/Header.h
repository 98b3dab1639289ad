#pragma once

#include <QtWidgets/QWidget>

namespace Tessaline {

class Theme;

/// The title of a part of a view, as it is written, and whatever stands behind it in its row.
class Header final : public QWidget
{
    Q_OBJECT
public:
    static constexpr double kTitleSize = 15;

    /// `theme` must outlive the header, which owns `trailing`; null for none.
    Header(const Theme &theme, const QString &title, QWidget *trailing, QWidget *parent = nullptr);
};

} // namespace Tessaline
