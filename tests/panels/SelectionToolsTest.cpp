#include "panels/SelectionTools.h"

#include "tests/panels/PanelsFixture.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using Tool = SelectionTools::Tool;
using ButtonState = SelectionTools::ButtonState;

const QByteArray kChat = "/v1/chat/completions";

/// A server that answers every question with these steps.
QByteArray answering(const QByteArray &steps)
{
    return R"({"replies":{"/v1/chat/completions":[{"steps":[)" + steps + R"(]}]}})";
}

class SelectionToolsTest : public PanelsFixture
{
protected:
    SelectionTools &tools()
    {
        if (!m_tools) {
            m_tools = std::make_unique<SelectionTools>(
                SelectionToolsParts{m_workspace, m_area, m_documents, *m_ai, m_events,
                                    [this](const QString &text) { m_clipboard.append(text); }});
            // The editor, which drops its selection when it is told to.
            m_events.observe(AppEvents::kClearEditorTextSelection, m_tools.get(),
                             [this](const QVariantMap &) { m_events.post(AppEvents::kEditorTextSelectionChanged); });
        }
        return *m_tools;
    }

    void select(const QString &text, const std::optional<QString> &source = std::nullopt)
    {
        tools();
        QVariantMap info{{AppEvents::kText, text}};
        if (source)
            info.insert(AppEvents::kSourceText, *source);
        m_events.post(AppEvents::kEditorTextSelectionChanged, info);
    }

    template <class Card>
    bool shows()
    {
        return eventually([this] { return std::holds_alternative<Card>(tools().activePopover()); });
    }

    bool isClosed() { return std::holds_alternative<ActivePopover::None>(tools().activePopover()); }
    QString text() const { return m_area.text(m_document).toString(); }
    QString prompt() const { return QJsonDocument::fromJson(body(kChat)).object().value(u"prompt"_s).toString(); }

    QStringList m_clipboard;
    std::unique_ptr<SelectionTools> m_tools;
};

} // namespace

TEST_F(SelectionToolsTest, WithoutASelectionTheButtonsAreDisabledAndSayWhy)
{
    for (const Tool tool : {Tool::Rephrase, Tool::Summarize, Tool::Explain}) {
        EXPECT_FALSE(tools().button(tool).isEnabled);
        EXPECT_EQ(tools().button(tool).help, u"Select text in the editor to use this tool"_s);
    }
}

TEST_F(SelectionToolsTest, WithASelectionTheButtonsSayWhatTheyDo)
{
    select(u"Two."_s);
    EXPECT_EQ(tools().button(Tool::Rephrase), (ButtonState{u"Rephrase"_s, u"Rephrase selected text"_s, false, true}));
    EXPECT_EQ(tools().button(Tool::Summarize),
              (ButtonState{u"Summarize"_s, u"Summarize selected text"_s, false, true}));
    EXPECT_EQ(tools().button(Tool::Explain),
              (ButtonState{u"Explain"_s, u"Explain concepts in selected text"_s, false, true}));
}

TEST_F(SelectionToolsTest, AnEventOfAnyOtherFormIsNoSelection)
{
    select(u"Two."_s, u"**Two.**"_s);
    EXPECT_EQ(tools().selectedSourceText(), u"**Two.**"_s);
    select(u"Two."_s);
    EXPECT_EQ(tools().selectedSourceText(), u"Two."_s);
    m_events.post(AppEvents::kEditorTextSelectionChanged, {{AppEvents::kText, 5}, {AppEvents::kSourceText, u"x"_s}});
    EXPECT_EQ(tools().selectedText(), QString());
    EXPECT_EQ(tools().selectedSourceText(), QString());
}

TEST_F(SelectionToolsTest, ARephraseAsksForTheShownTextAndPutsItInThePlaceOfTheSource)
{
    m_files.write(u"a.md"_s, "One. **Two** is here.");
    serve(answering(R"({"token":"Deu"},{"token":"x"},{"done":true})"));
    open();
    select(u"Two"_s, u"**Two**"_s);
    tools().use(Tool::Rephrase);
    EXPECT_EQ(tools().button(Tool::Rephrase).help, u"Generating response..."_s);
    EXPECT_EQ(tools().selectedText(), QString());
    ASSERT_TRUE(shows<ActivePopover::Rephrase>());

    EXPECT_EQ(prompt(), u"Rephrase this exact text selection from the active document. Return ONLY the new rephrased "
                        "version of the text, with absolutely no preamble, no explanations, no chat commentary, and no "
                        "SEARCH/REPLACE headers. Just output the clean rephrased text directly:\n\nTwo"_s);
    EXPECT_EQ(tools().activePopover(), ActivePopover::Value(ActivePopover::Rephrase{u"Two"_s, u"Deux"_s}));
    EXPECT_FALSE(tools().button(Tool::Rephrase).isLoading);
    tools().copyResult();
    EXPECT_EQ(m_clipboard, QStringList{u"Deux"_s});

    tools().acceptRephrase();
    EXPECT_TRUE(isClosed());
    ASSERT_TRUE(eventually([this] { return onDisk() == "One. Deux is here."; }));
    EXPECT_EQ(text(), u"One. Deux is here."_s);
    EXPECT_TRUE(m_ai->chatMessages().isEmpty());
}

TEST_F(SelectionToolsTest, AnAcceptedRephraseTakesTextThatIsNotSavedYet)
{
    serve(answering(R"({"token":"2."})"));
    open();
    type(u" Four."_s);
    select(u"Two."_s);
    tools().use(Tool::Rephrase);
    ASSERT_TRUE(shows<ActivePopover::Rephrase>());
    tools().acceptRephrase();
    ASSERT_TRUE(eventually([this] { return onDisk() == "One. 2. Three. Four."; }));
}

TEST_F(SelectionToolsTest, TextThatIsGoneOrStandsTwiceClosesTheCardAndChangesNothing)
{
    for (const QByteArray &document : {QByteArray("One. Three."), QByteArray("Two. Two.")}) {
        m_files.write(u"a.md"_s, document);
        serve(answering(R"({"token":"2."})"));
        m_tools.reset();
        open();
        m_area.loadFile(m_document, EditorArea::LoadPolicy::Force);
        ASSERT_TRUE(eventually([&] { return text() == QString::fromUtf8(document); }));
        select(u"Two."_s);
        tools().use(Tool::Rephrase);
        ASSERT_TRUE(shows<ActivePopover::Rephrase>());
        tools().acceptRephrase();
        EXPECT_TRUE(isClosed());
        m_tools.reset(); // whatever still runs is dropped
        EXPECT_EQ(text(), QString::fromUtf8(document));
        EXPECT_EQ(onDisk(), document);
    }
}

TEST_F(SelectionToolsTest, AFailureStandsInThePlaceOfTheResult)
{
    open();
    select(u"Two."_s);
    tools().use(Tool::Rephrase);
    ASSERT_TRUE(shows<ActivePopover::Rephrase>());
    const auto card = std::get<ActivePopover::Rephrase>(tools().activePopover());
    EXPECT_EQ(card.original, u"Two."_s);
    EXPECT_TRUE(card.replacement.startsWith(u"Error rephrasing: "_s)) << card.replacement.toStdString();

    select(u"Two."_s);
    tools().use(Tool::Summarize);
    EXPECT_TRUE(isClosed());
    ASSERT_TRUE(shows<ActivePopover::Summary>());
    EXPECT_TRUE(std::get<ActivePopover::Summary>(tools().activePopover()).content.startsWith(u"Error summarizing: "_s));
}

TEST_F(SelectionToolsTest, ASummaryIsShownCopiedAndDismissed)
{
    serve(answering(R"({"token":"In short."})"));
    open();
    select(u"Two."_s);
    tools().use(Tool::Summarize);
    ASSERT_TRUE(shows<ActivePopover::Summary>());
    EXPECT_EQ(prompt(),
              u"Provide a very concise summary and key insights of the following selected text block from the "
              "document, in 2-3 sentences max:\n\nTwo."_s);
    tools().copyResult();
    EXPECT_EQ(m_clipboard, QStringList{u"In short."_s});
    tools().closePopover();
    EXPECT_TRUE(isClosed());
}

TEST_F(SelectionToolsTest, AnExplanationIsATurnOfTheChatWithTheDocumentAndNoExcerpts)
{
    serve(answering(R"({"token":"Because."})"));
    open();
    m_ai->setAttachedContexts({{u"Hamlet"_s, std::nullopt, u"To be"_s, std::nullopt}});
    select(u"Two."_s);
    tools().use(Tool::Explain);
    ASSERT_TRUE(eventually([this] { return m_ai->chatMessages().value(1).content == u"Because."; }));
    const QString prompt =
        u"Explain the concepts and clarify the context within this selected text block from the document:\n\nTwo."_s;
    EXPECT_EQ(m_ai->chatMessages()[0].content, prompt);
    EXPECT_EQ(m_ai->chatMessages()[1].content, u"Because."_s);
    const QJsonObject request = QJsonDocument::fromJson(body(kChat)).object();
    EXPECT_EQ(request[u"file_content"_s], u"One. Two. Three."_s);
    EXPECT_FALSE(request.contains(u"workspace_context_items"_s));
    EXPECT_TRUE(request.contains(u"context_items"_s));
    EXPECT_TRUE(isClosed());
}

TEST_F(SelectionToolsTest, AnExplanationDuringAnAnswerOnlyDropsTheSelection)
{
    serve(answering(R"({"token":"a"},{"hang":true})"));
    open();
    select(u"Two."_s);
    tools().use(Tool::Explain);
    ASSERT_TRUE(eventually([this] { return m_ai->isGenerating(); }));
    select(u"Three."_s);
    tools().use(Tool::Explain);
    EXPECT_EQ(tools().selectedText(), QString());
    EXPECT_EQ(m_ai->chatMessages().size(), 2);
    m_ai->cancelGeneration();
}

TEST_F(SelectionToolsTest, WithoutAnActiveFileNothingHappens)
{
    select(u"Two."_s);
    m_workspace.setActiveFileURL(std::nullopt);
    for (const Tool tool : {Tool::Rephrase, Tool::Summarize, Tool::Explain})
        tools().use(tool);
    EXPECT_EQ(tools().selectedText(), u"Two."_s);
    EXPECT_FALSE(tools().button(Tool::Rephrase).isLoading);
}

} // namespace Tessaline
