#include "shell/ShortcutsDialog.h"

#include "foundation_ui/Label.h"

#include <QtGui/QAction>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

TEST(ShortcutGroups, ListWhatHasAKeyMenuByMenuAndThenTheWindow)
{
    QWidget window;
    QMenuBar menus;
    QMenu *file = menus.addMenu(u"&File"_s);
    file->addAction(u"&New…"_s)->setShortcut(Qt::CTRL | Qt::Key_N);
    file->addSeparator();
    file->addAction(u"Without a key"_s);
    file->addAction(u"&Redo"_s)
        ->setShortcuts({QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y)});
    menus.addMenu(u"&Empty"_s);
    auto *next = new QAction(u"Find Next"_s, &window);
    next->setShortcut(Qt::Key_F3);
    window.addAction(next);

    const QList<ShortcutGroup> groups = shortcutGroups(menus, window);

    const QList<ShortcutGroup> expected{
        {u"File"_s, {{u"New"_s, u"Ctrl+N"_s}, {u"Redo"_s, u"Ctrl+Shift+Z or Ctrl+Y"_s}}},
        {u"Window"_s, {{u"Find Next"_s, u"F3"_s}}}};
    EXPECT_TRUE(groups == expected);
}

TEST(ShortcutsDialog, ShowsEveryTitleAndKey)
{
    const Theme theme;
    const QList<ShortcutGroup> groups{{u"File"_s, {{u"New"_s, u"Ctrl+N"_s}, {u"Quit"_s, u"Ctrl+Q"_s}}},
                                      {u"Window"_s, {{u"Find Next"_s, u"F3"_s}}}};

    const ShortcutsDialog dialog(theme, groups);

    QStringList shown;
    for (const Label *label : dialog.findChildren<Label *>())
        shown.append(label->text());
    for (const QString &text :
         {u"File"_s, u"New"_s, u"Ctrl+N"_s, u"Quit"_s, u"Ctrl+Q"_s, u"Window"_s, u"Find Next"_s, u"F3"_s})
        EXPECT_TRUE(shown.contains(text)) << text.toStdString();
}

} // namespace
} // namespace Tessaline
