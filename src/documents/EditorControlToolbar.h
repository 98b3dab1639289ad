#pragma once

#include "documents/AppTheme.h"
#include "documents/ProjectReference.h"
#include "documents/ViewMode.h"

#include <QtWidgets/QWidget>

namespace Tessaline {

class AppPreferences;
class EditorFileInfo;
class FontSizeAdjuster;
class Theme;
class ThemePicker;
class ViewModeSelector;

/// The row of controls above the document: the file's name and project, the text size, the view mode, the appearance.
/// Where the wide version does not fit it leaves out the project and the labels.
class EditorControlToolbar final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSidePadding = 16;
    static constexpr int kVerticalPadding = 8;
    static constexpr int kMinimumGap = 8; // of the flexible space after the file's name

    /// The numbers of the two versions.
    struct Version {
        int spacing;
        bool showsDetails; // the project and the labels
        int minimumInfoWidth;
        int maximumInfoWidth;
    };
    static constexpr Version kWide{12, true, 120, 220};
    static constexpr Version kCompact{10, false, 80, 180};

    /// Both must outlive the toolbar.
    EditorControlToolbar(AppPreferences &preferences, const Theme &theme, QWidget *parent = nullptr);

    void setFile(const FileURL &url, const std::optional<ProjectReference> &project);
    void setViewModes(const QList<ViewMode> &available, ViewMode current);

    bool isCompact() const { return m_isCompact; }
    /// The width from which on the wide version is shown, for the file on display.
    int wideWidth() const { return widthOf(kWide); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void viewModeChosen(Tessaline::ViewMode mode);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    int infoWidth(const Version &version) const;
    int widthOf(const Version &version) const;
    void layOut();

    EditorFileInfo *m_info;
    FontSizeAdjuster *m_fontSize;
    ViewModeSelector *m_viewMode;
    ThemePicker *m_theme;
    bool m_isCompact = false;
};

} // namespace Tessaline
