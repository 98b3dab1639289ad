#include "shell/ShortcutsDialog.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"

#include <QtGui/QAction>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kColumnWidth = 280;
constexpr int kRowHeight = 24;

QString withoutMarks(QString title)
{
    title.remove(u'&');
    return title.endsWith(u'…') ? title.chopped(1) : title;
}

ShortcutGroup groupOf(const QString &title, const QList<QAction *> &actions)
{
    ShortcutGroup group{title, {}};
    for (const QAction *action : actions) {
        QStringList keys;
        for (const QKeySequence &shortcut : action->shortcuts())
            keys.append(shortcut.toString(QKeySequence::NativeText));
        if (!keys.isEmpty())
            group.rows.append({withoutMarks(action->text()), keys.join(ShortcutsDialog::tr(" or "))});
    }
    return group;
}

} // namespace

QList<ShortcutGroup> shortcutGroups(const QMenuBar &menus, const QWidget &window)
{
    QList<ShortcutGroup> groups;
    for (const QAction *entry : menus.actions())
        groups.append(groupOf(withoutMarks(entry->text()), entry->menu()->actions()));
    groups.append(groupOf(ShortcutsDialog::tr("Window"), window.actions()));
    groups.removeIf([](const ShortcutGroup &group) { return group.rows.isEmpty(); });
    return groups;
}

ShortcutsDialog::ShortcutsDialog(const Theme &theme, const QList<ShortcutGroup> &groups, QWidget *parent)
    : QDialog(parent), m_theme(theme)
{
    setWindowTitle(tr("Keyboard Shortcuts"));
    auto *columns = new QHBoxLayout(this);
    columns->setContentsMargins(24, 20, 24, 24);
    columns->setSpacing(40);
    columns->setSizeConstraint(QLayout::SetFixedSize);

    // The groups flow down the first column until it holds half of the rows.
    qsizetype all = 0;
    for (const ShortcutGroup &group : groups)
        all += group.rows.size() + 1;
    QVBoxLayout *column = nullptr;
    qsizetype placed = 0;
    for (const ShortcutGroup &group : groups) {
        if (!column || (placed * 2 >= all && columns->count() == 1)) {
            column = new QVBoxLayout;
            column->setSpacing(0);
            columns->addLayout(column);
        }
        addGroup(group, column);
        placed += group.rows.size() + 1;
    }
    for (int index = 0; index < columns->count(); ++index)
        static_cast<QVBoxLayout *>(columns->itemAt(index)->layout())->addStretch();
}

void ShortcutsDialog::addGroup(const ShortcutGroup &group, QVBoxLayout *column)
{
    if (column->count() > 0)
        column->addSpacing(16);
    auto *title =
        new Label(m_theme, ColorRole::SecondaryText, Fonts::interface(Fonts::kSmallSize, QFont::DemiBold), group.title);
    title->setFixedHeight(kRowHeight);
    column->addWidget(title);
    for (const ShortcutGroup::Row &row : group.rows) {
        auto *line = new QWidget;
        line->setFixedSize(kColumnWidth, kRowHeight);
        auto *cells = new QHBoxLayout(line);
        cells->setContentsMargins(0, 0, 0, 0);
        cells->addWidget(new Label(m_theme, ColorRole::Text, Fonts::interface(Fonts::kInterfaceSize), row.title), 1);
        cells->addWidget(
            new Label(m_theme, ColorRole::SecondaryText, Fonts::interface(Fonts::kInterfaceSize), row.keys));
        column->addWidget(line);
    }
}

} // namespace Tessaline
