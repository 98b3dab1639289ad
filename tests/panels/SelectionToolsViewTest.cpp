#include "panels/SelectionToolsView.h"

#include "panels/AIToolbarButton.h"
#include "panels/Popover.h"
#include "panels/QuotedText.h"
#include "tests/panels/PanelsViewsFixture.h"

#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QScrollBar>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// The three tools in a bar of their own, and an editor that drops its selection when it is told to.
class SelectionToolsViewTest : public PanelsViewsFixture
{
protected:
    void showTools(const QByteArray &answer)
    {
        serve(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":")" + answer + R"("},{"done":true}]}]}})");
        show();
        open();
        m_bar = std::make_unique<QWidget>();
        m_tools = std::make_unique<SelectionToolsView>(m_panels->tools, dressingTheme(), m_bar.get());
        auto *row = new QHBoxLayout(m_bar.get());
        for (QWidget *each : m_tools->buttons())
            row->addWidget(each);
        m_bar->show();
        m_bar->activateWindow();
        ASSERT_TRUE(eventually([this] { return m_bar->isActiveWindow(); }));
        m_events.observe(AppEvents::kClearEditorTextSelection, m_bar.get(),
                         [this](const QVariantMap &) { m_events.post(AppEvents::kEditorTextSelectionChanged); });
    }
    void TearDown() override
    {
        m_tools.reset();
        m_bar.reset();
        PanelsViewsFixture::TearDown();
    }

    void select(const QString &text)
    {
        m_events.post(AppEvents::kEditorTextSelectionChanged, {{AppEvents::kText, text}});
    }
    Popover *popover() const
    {
        for (Popover *each : m_bar->findChildren<Popover *>())
            if (each->isVisible())
                return each;
        return nullptr;
    }
    /// Uses a tool for a selection and waits for its card.
    void use(const QString &tool, const QString &selection)
    {
        select(selection);
        click(button(*m_bar, tool));
        ASSERT_TRUE(eventually([this] { return popover() != nullptr; }));
        EXPECT_EQ(popover()->width(), 280);
    }
    QStringList quotes() const
    {
        QStringList quotes;
        for (const QuotedText *text : visible<QuotedText>(*popover()))
            quotes.append(text->toPlainText());
        return quotes;
    }

    std::unique_ptr<QWidget> m_bar;
    std::unique_ptr<SelectionToolsView> m_tools;
};

} // namespace

TEST_F(SelectionToolsViewTest, TheToolsSayWhatTheyNeedAndWhatTheyDo)
{
    showTools("2.");
    const auto tips = [this] {
        QStringList all;
        for (const QWidget *each : m_tools->buttons())
            all.append(each->toolTip());
        return all;
    };
    EXPECT_EQ(tips(), QStringList(3, u"Select text in the editor to use this tool"_s));
    EXPECT_FALSE(button(*m_bar, u"Rephrase"_s)->isEnabled());
    select(u"Two."_s);
    EXPECT_EQ(tips(), (QStringList{u"Rephrase selected text"_s, u"Summarize selected text"_s,
                                   u"Explain concepts in selected text"_s}));
    click(button(*m_bar, u"Rephrase"_s));
    EXPECT_FALSE(button(*m_bar, u"Rephrase"_s)->isEnabled());
    EXPECT_EQ(tips()[0], u"Generating response..."_s);
    ASSERT_TRUE(eventually([this] { return popover() != nullptr; }));
}

TEST_F(SelectionToolsViewTest, ARephraseIsCopiedTakenAndGivenUpFromItsCard)
{
    showTools("2.");
    use(u"Rephrase"_s, u"Two."_s);
    EXPECT_EQ(texts(*popover()), (QStringList{u"Proposed Rephrasing"_s, u"Original:"_s, u"Rephrased:"_s}));
    EXPECT_EQ(quotes(), (QStringList{u"Two."_s, u"2."_s}));
    click(button(*popover(), u"Copy"_s));
    EXPECT_EQ(m_clipboard, u"2."_s);
    click(button(*popover(), u"Accept"_s));
    EXPECT_FALSE(popover());
    ASSERT_TRUE(eventually([this] { return onDisk() == "One. 2. Three."; }));

    use(u"Rephrase"_s, u"One."_s);
    press(Qt::Key_Tab);
    press(Qt::Key_Escape);
    EXPECT_FALSE(popover());
    EXPECT_TRUE(std::holds_alternative<ActivePopover::None>(m_panels->tools.activePopover()));
    use(u"Rephrase"_s, u"One."_s);
    click(button(*popover(), u"Reject"_s));
    EXPECT_FALSE(popover());
    EXPECT_EQ(onDisk(), "One. 2. Three.");
}

TEST_F(SelectionToolsViewTest, AnEmptyRephraseCannotBeAccepted)
{
    showTools("");
    use(u"Rephrase"_s, u"Two."_s);
    EXPECT_EQ(quotes(), (QStringList{u"Two."_s, u""_s}));
    EXPECT_FALSE(button(*popover(), u"Accept"_s)->isEnabled());
    click(button(*popover(), u"Reject"_s));
    EXPECT_FALSE(popover());
}

TEST_F(SelectionToolsViewTest, ACardThatOpensWhileThePersonTypesLeavesTheKeysInTheDocument)
{
    showTools("2.");
    QLineEdit document(m_bar.get());
    document.show();
    document.setFocus();
    use(u"Rephrase"_s, u"Two."_s);
    ASSERT_TRUE(popover());
    QTest::keyClicks(popover(), u"so on"_s);
    press(Qt::Key_Backspace);
    EXPECT_EQ(document.text(), u"so o"_s);
    ASSERT_TRUE(popover());

    press(Qt::Key_Tab);
    ASSERT_TRUE(popover()->focusWidget());
    press(Qt::Key_X);
    EXPECT_EQ(document.text(), u"so o"_s);
    press(Qt::Key_Escape);
    EXPECT_FALSE(popover());
}

TEST_F(SelectionToolsViewTest, ACardTakesThePlaceOfAnother)
{
    showTools("It counts.");
    select(u"Two."_s);
    click(button(*m_bar, u"Rephrase"_s));
    select(u"Two."_s);
    click(button(*m_bar, u"Summarize"_s));
    ASSERT_TRUE(eventually([this] {
        return m_bar->findChildren<AIToolbarButton *>()[0]->toolTip() != u"Generating response..."_s &&
               m_bar->findChildren<AIToolbarButton *>()[1]->toolTip() != u"Generating response..."_s;
    }));
    ASSERT_TRUE(popover());
    use(u"Summarize"_s, u"One."_s);
    ASSERT_TRUE(
        eventually([this] { return popover() && texts(*popover()).contains(u"Document Selection Summary"_s); }));
    EXPECT_EQ(quotes(), QStringList{u"It counts."_s});
    const QScrollBar *bar = visible<QuotedText>(*popover()).constFirst()->verticalScrollBar();
    EXPECT_FALSE(bar->isVisible());
    EXPECT_EQ(bar->maximum(), 0);
    click(button(*popover(), u"Copy"_s));
    EXPECT_EQ(m_clipboard, u"It counts."_s);
    click(button(*popover(), u"Dismiss"_s));
    EXPECT_FALSE(popover());
}

TEST_F(SelectionToolsViewTest, ALongSummaryScrollsFromItsBeginning)
{
    showTools("It counts, and then it goes on to count. "_ba.repeated(60));
    use(u"Summarize"_s, u"Two."_s);
    ASSERT_TRUE(eventually([this] { return visible<QScrollBar>(*popover()).size() == 1; }));
    EXPECT_EQ(visible<QScrollBar>(*popover()).constFirst()->value(), 0);
    EXPECT_LT(popover()->height(), 300);
}

TEST_F(SelectionToolsViewTest, TheWindowMayGoBeforeItsTools)
{
    showTools("It counts.");
    use(u"Summarize"_s, u"Two."_s);
    m_bar.reset();
    m_tools.reset();
}

} // namespace Tessaline
