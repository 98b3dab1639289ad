#include "shell/EditCommands.h"

#include "editing/EditableText.h"
#include "editing/PlainTextDelegate.h"
#include "editing/SourceTextLook.h"
#include "editing/TextView.h"
#include "foundation_ui/Theme.h"
#include "tests/support/Waiting.h"

#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTextEdit>
#include <QtWidgets/QVBoxLayout>

#include <gtest/gtest.h>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

/// A window with one of each widget that can have the focus.
class EditCommandsOf : public ::testing::Test
{
protected:
    EditCommandsOf()
    {
        auto *column = new QVBoxLayout(&m_window);
        m_menus = new QMenuBar;
        m_button = new QPushButton(u"button"_s);
        m_field = new QLineEdit;
        m_source = new TextView(m_text, m_look, m_delegate, m_theme);
        for (QWidget *widget : {static_cast<QWidget *>(m_menus), static_cast<QWidget *>(m_button),
                                static_cast<QWidget *>(m_field), static_cast<QWidget *>(m_source)})
            column->addWidget(widget);
        m_window.show();
        m_window.activateWindow();
        EXPECT_TRUE(eventually([this] { return m_window.isActiveWindow(); }));
    }

    EditState shown() const
    {
        return {.canUndo = m_commands.undo->isEnabled(),
                .canRedo = m_commands.redo->isEnabled(),
                .canCut = m_commands.cut->isEnabled(),
                .canCopy = m_commands.copy->isEnabled(),
                .canPaste = m_commands.paste->isEnabled(),
                .canSelectAll = m_commands.selectAll->isEnabled()};
    }

    Theme m_theme;
    EditableText m_text;
    SourceTextLook m_look{m_text.text()};
    PlainTextDelegate m_delegate{m_text};
    QWidget m_window;
    QMenuBar *m_menus;
    QPushButton *m_button;
    QLineEdit *m_field;
    TextView *m_source;
    EditCommands m_commands;
};

TEST_F(EditCommandsOf, NothingIsOfferedWhereThereIsNoText)
{
    m_button->setFocus();
    EXPECT_EQ(shown(), EditState{});
}

TEST_F(EditCommandsOf, AnEmptyFieldCanOnlyTakeText)
{
    m_field->setFocus();
    EXPECT_EQ(shown(), EditState{.canPaste = true});
}

TEST_F(EditCommandsOf, AFieldOffersWhatItsTextAllows)
{
    m_field->setFocus();
    QTest::keyClicks(m_field, u"tide"_s);
    EXPECT_EQ(shown(), (EditState{.canUndo = true, .canPaste = true, .canSelectAll = true}));

    m_commands.selectAll->trigger();
    EXPECT_EQ(m_field->selectedText(), u"tide"_s);
    EXPECT_EQ(shown(),
              (EditState{.canUndo = true, .canCut = true, .canCopy = true, .canPaste = true, .canSelectAll = true}));

    m_commands.cut->trigger();
    EXPECT_EQ(m_field->text(), QString());
    m_commands.paste->trigger();
    EXPECT_EQ(m_field->text(), u"tide"_s);
    m_commands.undo->trigger();
    EXPECT_EQ(m_field->text(), QString());
    EXPECT_TRUE(shown().canRedo);
    m_commands.redo->trigger();
    EXPECT_EQ(m_field->text(), u"tide"_s);
}

TEST_F(EditCommandsOf, AReadOnlyFieldOffersCopyingOnly)
{
    m_field->setText(u"tide"_s);
    m_field->setReadOnly(true);
    m_field->setFocus();
    m_field->selectAll();
    EXPECT_EQ(shown(), (EditState{.canCopy = true, .canSelectAll = true}));
}

TEST_F(EditCommandsOf, TheSourceEditorOffersWhatItsTextAllows)
{
    m_source->setFocus();
    EXPECT_EQ(shown(), EditState{.canPaste = true});

    m_text.insert(u"ebb", EditKind::Typing);
    EXPECT_EQ(shown(), (EditState{.canUndo = true, .canPaste = true, .canSelectAll = true}));

    m_commands.selectAll->trigger();
    m_commands.copy->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"ebb"_s);
    m_commands.cut->trigger();
    EXPECT_TRUE(m_text.text().isEmpty());
    m_commands.undo->trigger();
    EXPECT_EQ(m_text.text().toString(), u"ebb"_s);
    EXPECT_TRUE(shown().canRedo);
    m_commands.redo->trigger();
    EXPECT_TRUE(m_text.text().isEmpty());
}

TEST_F(EditCommandsOf, ANewDocumentInTheSourceEditorHasNothingToUndo)
{
    m_source->setFocus();
    m_text.insert(u"ebb", EditKind::Typing);
    m_text.reset(ChunkedText(u"another"));
    EXPECT_FALSE(shown().canUndo);
    EXPECT_TRUE(shown().canSelectAll);
}

TEST_F(EditCommandsOf, OpeningAMenuLeavesTheCommandsWithTheText)
{
    m_field->setText(u"tide"_s);
    m_field->setFocus();
    m_menus->addMenu(u"Menu"_s);
    m_menus->setFocus(Qt::MenuBarFocusReason);

    m_commands.selectAll->trigger();

    EXPECT_EQ(m_field->selectedText(), u"tide"_s);
}

TEST_F(EditCommandsOf, AFieldThatIsNoMoreIsForgotten)
{
    m_field->setFocus();
    delete m_field;
    m_commands.paste->trigger();
    EXPECT_EQ(shown(), editState(QApplication::focusWidget()));
}

TEST_F(EditCommandsOf, AnOpenMenuShowsWhetherTheClipboardHasText)
{
    m_field->setFocus();
    QGuiApplication::clipboard()->clear();
    m_commands.refreshWithClipboard();
    EXPECT_FALSE(m_commands.paste->isEnabled());

    QGuiApplication::clipboard()->setText(u"tide"_s);
    m_commands.refreshWithClipboard();
    EXPECT_TRUE(m_commands.paste->isEnabled());
}

TEST_F(EditCommandsOf, ADisabledWidgetOffersNothing)
{
    m_field->setText(u"tide"_s);
    m_field->setEnabled(false);
    EXPECT_EQ(editState(m_field), EditState{});
    EXPECT_EQ(editState(nullptr), EditState{});
}

TEST_F(EditCommandsOf, ATextAreaOfTheToolkitOffersWhatItsTextAllows)
{
    QTextEdit area(u"tide"_s);
    EXPECT_EQ(editState(&area), (EditState{.canPaste = true, .canSelectAll = true}));
    area.selectAll();
    EXPECT_EQ(editState(&area), (EditState{.canCut = true, .canCopy = true, .canPaste = true, .canSelectAll = true}));
}

} // namespace
} // namespace Tessaline
