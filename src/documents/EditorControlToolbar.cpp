#include "documents/EditorControlToolbar.h"

#include "documents/EditorFileInfo.h"
#include "documents/FontSizeAdjuster.h"
#include "documents/ThemePicker.h"
#include "documents/ViewModeSelector.h"

#include <algorithm>

namespace Tessaline {

EditorControlToolbar::EditorControlToolbar(AppPreferences &preferences, const Theme &theme, QWidget *parent)
    : QWidget(parent), m_info(new EditorFileInfo(theme, this)),
      m_fontSize(new FontSizeAdjuster(preferences, theme, this)), m_viewMode(new ViewModeSelector(theme, this)),
      m_theme(new ThemePicker(preferences, theme, this))
{
    setFixedHeight(2 * kVerticalPadding + SegmentedControl::kHeight);
    connect(m_viewMode, &ViewModeSelector::chosen, this, &EditorControlToolbar::viewModeChosen);
}

void EditorControlToolbar::setFile(const FileURL &url, const std::optional<ProjectReference> &project)
{
    m_info->setFile(url, project);
    layOut();
}

void EditorControlToolbar::setViewModes(const QList<ViewMode> &available, ViewMode current)
{
    m_viewMode->setModes(available, current);
    layOut();
}

int EditorControlToolbar::infoWidth(const Version &version) const
{
    return std::clamp(m_info->idealWidth(version.showsDetails), version.minimumInfoWidth, version.maximumInfoWidth);
}

int EditorControlToolbar::widthOf(const Version &version) const
{
    const int controls = m_fontSize->width() + m_viewMode->control().widthFor(version.showsDetails) +
                         m_theme->control().widthFor(version.showsDetails);
    return 2 * kSidePadding + infoWidth(version) + kMinimumGap + controls + 4 * version.spacing;
}

QSize EditorControlToolbar::sizeHint() const
{
    return QSize(widthOf(kWide), height());
}

QSize EditorControlToolbar::minimumSizeHint() const
{
    return QSize(widthOf(kCompact) - infoWidth(kCompact) + kCompact.minimumInfoWidth, height());
}

void EditorControlToolbar::layOut()
{
    m_isCompact = width() < widthOf(kWide);
    const Version &version = m_isCompact ? kCompact : kWide;
    m_info->setShowsProject(version.showsDetails);
    m_viewMode->control().setShowsLabels(version.showsDetails);
    m_theme->control().setShowsLabels(version.showsDetails);

    // From the right: the controls at their full width. What is left, but for the gap, is the name's.
    int right = width() - kSidePadding;
    const auto place = [&](QWidget *control, int controlWidth, int controlHeight) {
        right -= controlWidth;
        control->setGeometry(right, (height() - controlHeight) / 2, controlWidth, controlHeight);
        right -= version.spacing;
    };
    place(m_theme, m_theme->control().widthFor(version.showsDetails), SegmentedControl::kHeight);
    place(m_viewMode, m_viewMode->control().widthFor(version.showsDetails), SegmentedControl::kHeight);
    place(m_fontSize, m_fontSize->width(), m_fontSize->height());

    const int room = right - kMinimumGap - version.spacing - kSidePadding;
    m_info->setGeometry(kSidePadding, kVerticalPadding, std::clamp(infoWidth(version), 0, std::max(room, 0)),
                        SegmentedControl::kHeight);
}

void EditorControlToolbar::resizeEvent(QResizeEvent *)
{
    layOut();
}

} // namespace Tessaline
