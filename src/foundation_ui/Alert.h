#pragma once

#include <QtWidgets/QWidget>

namespace Tessaline {

class Theme;

/// A short notice inside a view: a title, perhaps a description, and below them whatever belongs to it.
class Alert final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSpacing = 6;
    static constexpr int kSidePadding = 4;
    static constexpr int kVerticalPadding = 8;

    /// `theme` must outlive the alert, which owns `content`. An empty description takes no room.
    Alert(const Theme &theme, const QString &title, const QString &description, QWidget *content,
          QWidget *parent = nullptr);
};

} // namespace Tessaline
