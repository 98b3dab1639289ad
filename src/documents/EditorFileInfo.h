#pragma once

#include "documents/ProjectReference.h"

#include <QtWidgets/QWidget>

namespace Tessaline {

class Label;
class Tag;
class Theme;

/// The name of the file on display and, in a small tag, of its project. The tool tip is the path inside the project,
/// else the full path.
class EditorFileInfo final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSpacing = 8;

    explicit EditorFileInfo(const Theme &theme, QWidget *parent = nullptr);

    void setFile(const FileURL &url, const std::optional<ProjectReference> &project);
    void setShowsProject(bool shows);

    /// The width it would have with room for everything.
    int idealWidth(bool withProject) const;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void layOut();

    Label *m_name;
    Tag *m_project;
    bool m_hasProject = false;
    bool m_showsProject = true;
};

} // namespace Tessaline
