#include "documents/EditorFileInfo.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/PlainToolTip.h"
#include "foundation_ui/Tag.h"

#include <algorithm>

namespace Tessaline {

namespace {

constexpr int kLeastTagWidth = 48; // what the name leaves to a long project name

} // namespace

EditorFileInfo::EditorFileInfo(const Theme &theme, QWidget *parent)
    : QWidget(parent),
      m_name(new Label(theme, ColorRole::Text, Fonts::interface(Fonts::kInterfaceSize, QFont::Medium), {}, this)),
      m_project(new Tag(theme, this))
{
    m_name->setElideMode(Qt::ElideMiddle);
    m_project->hide();
}

void EditorFileInfo::setFile(const FileURL &url, const std::optional<ProjectReference> &project)
{
    m_name->setText(url.lastPathComponent());
    m_hasProject = project.has_value();
    m_project->setText(project ? project->rootURL.lastPathComponent() : QString());
    setToolTip(plainToolTip(project ? project->relativePath(url).value_or(url.path()) : url.path()));
    updateGeometry();
    layOut();
}

void EditorFileInfo::setShowsProject(bool shows)
{
    m_showsProject = shows;
    updateGeometry();
    layOut();
}

int EditorFileInfo::idealWidth(bool withProject) const
{
    const int project = m_hasProject && withProject ? kSpacing + m_project->sizeHint().width() : 0;
    return m_name->sizeHint().width() + project;
}

QSize EditorFileInfo::sizeHint() const
{
    return QSize(idealWidth(m_showsProject), std::max(m_name->sizeHint().height(), m_project->sizeHint().height()));
}

QSize EditorFileInfo::minimumSizeHint() const
{
    return QSize(m_name->minimumSizeHint().width(), sizeHint().height());
}

void EditorFileInfo::layOut()
{
    const bool showsTag = m_hasProject && m_showsProject;
    m_project->setVisible(showsTag);
    const QSize tag = m_project->sizeHint();
    const int leftToTag = showsTag ? kSpacing + std::min(tag.width(), kLeastTagWidth) : 0;
    const int nameWidth = std::clamp(m_name->sizeHint().width(), 0, std::max(0, width() - leftToTag));
    m_name->setGeometry(0, 0, nameWidth, height());
    if (showsTag) {
        const int start = nameWidth + kSpacing;
        m_project->setGeometry(start, (height() - tag.height()) / 2,
                               std::max(0, std::min(tag.width(), width() - start)), tag.height());
    }
}

void EditorFileInfo::resizeEvent(QResizeEvent *)
{
    layOut();
}

} // namespace Tessaline
