#include "documents/ViewModeSelector.h"

#include <QtWidgets/QHBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

ViewModeSelector::ViewModeSelector(const Theme &theme, QWidget *parent)
    : QWidget(parent), m_control(new SegmentedControl(theme, this))
{
    setAccessibleName(u"View Mode"_s);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_control);
    connect(m_control, &SegmentedControl::selected, this, [this](int index) { Q_EMIT chosen(m_modes.at(index)); });
}

void ViewModeSelector::setModes(const QList<ViewMode> &available, ViewMode current)
{
    m_modes = available;
    QList<SegmentedControl::Item> items;
    for (const ViewMode mode : available)
        items.append({symbol(mode), label(mode), helpText(mode)});
    m_control->setItems(items);
    m_control->setSelectedIndex(static_cast<int>(available.indexOf(current)));
}

} // namespace Tessaline
