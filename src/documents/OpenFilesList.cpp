#include "documents/OpenFilesList.h"

#include "documents/OpenFileRow.h"
#include "documents/Workspace.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/TabOrder.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QAccessibleWidget>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kRowInset = 8;
constexpr int kTextLeft = 20;
constexpr int kEmptyHeight = 28;

QAccessibleInterface *makeAccessible(const QString &className, QObject *object)
{
    if (className == QLatin1StringView(OpenFilesList::staticMetaObject.className()))
        return new QAccessibleWidget(static_cast<QWidget *>(object), QAccessible::List);
    return nullptr;
}

} // namespace

OpenFilesList::OpenFilesList(Workspace &workspace, const Theme &theme, QWidget *parent)
    : QWidget(parent), m_workspace(workspace), m_theme(theme),
      m_noFiles(
          new Label(theme, ColorRole::SecondaryText, Fonts::interface(Fonts::kInterfaceSize), u"No Open Files"_s, this))
{
    [[maybe_unused]] static const bool kKnown = (QAccessible::installFactory(makeAccessible), true);
    setAccessibleName(u"Open Files"_s);
    connect(&workspace, &Workspace::openFilesChanged, this, &OpenFilesList::takeFiles);
    connect(&workspace, &Workspace::activeFileURLChanged, this, &OpenFilesList::takeActiveFile);
    takeFiles();
}

void OpenFilesList::takeFiles()
{
    const QList<OpenFileReference> &files = m_workspace.openFiles();
    // The rows are kept and given other files: a row may be the one whose button asked for this.
    while (m_rows.size() > files.size()) {
        OpenFileRow *row = m_rows.takeLast();
        if (row->hasFocus() && !m_rows.isEmpty())
            m_rows.constLast()->setFocus(Qt::TabFocusReason);
        row->hide();
        row->deleteLater();
    }
    while (m_rows.size() < files.size())
        m_rows.append(makeRow());
    for (qsizetype index = 0; index < files.size(); ++index)
        m_rows.at(index)->setFile(files.at(index));

    m_noFiles->setVisible(files.isEmpty());
    updateGeometry();
    layOut();
    Q_EMIT heightChanged();
    takeActiveFile();
}

OpenFileRow *OpenFilesList::makeRow()
{
    auto *row = new OpenFileRow(m_theme, this);
    placeInTabOrder(m_rows.isEmpty() ? static_cast<QWidget *>(this) : m_rows.constLast(), row);
    connect(row, &QAbstractButton::clicked, this, [this, row] {
        m_workspace.setActiveFileURL(row->url());
        Q_EMIT documentChosen();
    });
    connect(row, &OpenFileRow::closeRequested, this, [this, row] { m_workspace.closeFile(FileURL(row->url())); });
    row->installEventFilter(this);
    row->show();
    return row;
}

void OpenFilesList::takeActiveFile()
{
    const std::optional<FileURL> &active = m_workspace.activeFileURL();
    OpenFileRow *entrance = nullptr; // where Tab enters the list
    for (OpenFileRow *row : std::as_const(m_rows)) {
        const bool isActive = active == row->url();
        row->setIsActive(isActive);
        row->setFocusPolicy(Qt::NoFocus);
        if (isActive && !entrance)
            entrance = row;
    }
    if (entrance)
        Q_EMIT rowNeeded(entrance);
    else if (!m_rows.isEmpty())
        entrance = m_rows.constFirst();
    if (entrance)
        entrance->setFocusPolicy(Qt::TabFocus);
}

QSize OpenFilesList::sizeHint() const
{
    return QSize(0, m_rows.isEmpty() ? kEmptyHeight : kRowHeight * static_cast<int>(m_rows.size()));
}

void OpenFilesList::layOut()
{
    m_noFiles->setGeometry(kTextLeft, 0, std::max(0, width() - kTextLeft - kRowInset), kEmptyHeight);
    for (qsizetype index = 0; index < m_rows.size(); ++index)
        m_rows.at(index)->setGeometry(kRowInset, static_cast<int>(index) * kRowHeight, width() - 2 * kRowInset,
                                      kRowHeight);
}

void OpenFilesList::resizeEvent(QResizeEvent *)
{
    layOut();
}

bool OpenFilesList::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const qsizetype row = m_rows.indexOf(static_cast<OpenFileRow *>(watched));
    if (row < 0)
        return false;
    const qsizetype last = m_rows.size() - 1;
    const auto goTo = [this](qsizetype target) {
        m_rows.at(target)->setFocus(Qt::TabFocusReason);
        Q_EMIT rowNeeded(m_rows.at(target));
        return true;
    };
    switch (static_cast<QKeyEvent *>(event)->key()) {
    case Qt::Key_Up:
        return goTo(std::max<qsizetype>(row - 1, 0));
    case Qt::Key_Down:
        return goTo(std::min(row + 1, last));
    case Qt::Key_Home:
        return goTo(0);
    case Qt::Key_End:
        return goTo(last);
    case Qt::Key_Delete:
        m_workspace.closeFile(FileURL(m_rows.at(row)->url()));
        return true;
    default:
        return false;
    }
}

} // namespace Tessaline
