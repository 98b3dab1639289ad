#pragma once

#include <QtWidgets/QWidget>

namespace Tessaline {

class Theme;

/// A few calm words in the middle of a place that has nothing to show: what is missing, and why.
class EmptyState final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kTextWidth = 240; // device-independent pixels

    /// `theme` must outlive the widget.
    EmptyState(const Theme &theme, const QString &title, const QString &text, QWidget *parent = nullptr);
};

} // namespace Tessaline
