#pragma once

#include "foundation_ui/Theme.h"

#include <QtCore/QList>
#include <QtWidgets/QWidget>

namespace Tessaline {

class Segment;

/// A row of segments of which one is selected. Left and Right move the selection, Home and End go to its ends; Tab
/// enters it at the selected segment. Each segment is a button of its own to assistive technology, named by its label,
/// or by its help text while labels are hidden.
class SegmentedControl final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kHeight = 28;
    static constexpr int kSpacing = 4; // between segments
    static constexpr int kPadding = 3; // between the frame and the segments
    static constexpr double kFrameRadius = 8;
    static constexpr double kSegmentRadius = 6;

    struct Item {
        QString symbol;
        QString label;
        QString help;
        friend bool operator==(const Item &, const Item &) = default;
    };

    explicit SegmentedControl(const Theme &theme, QWidget *parent = nullptr);

    /// Replaces the segments; the first is selected. Equal items change nothing.
    void setItems(const QList<Item> &items);
    const QList<Item> &items() const { return m_items; }

    void setShowsLabels(bool shows);
    bool showsLabels() const { return m_showsLabels; }

    int selectedIndex() const { return m_selected; } // -1 only while there are no items
    void setSelectedIndex(int index);                // sends no signal

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    /// The width it would have with or without labels.
    int widthFor(bool withLabels) const;

Q_SIGNALS:
    /// The person chose another segment.
    void selected(int index);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    friend class Segment;
    void choose(int index, Qt::FocusReason focus);
    void layOut();

    const Theme &m_theme;
    QList<Item> m_items;
    QList<Segment *> m_segments;
    int m_selected = -1;
    bool m_showsLabels = true;
};

} // namespace Tessaline
