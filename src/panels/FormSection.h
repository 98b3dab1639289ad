#pragma once

#include <QtWidgets/QWidget>

class QVBoxLayout;

namespace Tessaline {

class Theme;

/// A section of a form: rows on a card, with hairlines between them.
class FormSection final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSidePadding = 12; // between the card's edges and its rows
    static constexpr int kRowPadding = 9;   // above and below a row

    /// `theme` must outlive the section.
    explicit FormSection(const Theme &theme, QWidget *parent = nullptr);

    /// Adds a row that takes the whole width. The section owns it.
    void addRow(QWidget *row);
    /// Adds a row with a label on its left and `control` on its right, which is named by the label.
    void addRow(const QString &label, QWidget *control);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    QVBoxLayout *m_rows;
};

} // namespace Tessaline
