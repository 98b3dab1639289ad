#include "panels/SessionContext.h"

#include "tests/panels/PanelsFixture.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

ContextItem item(const QString &name, const std::optional<QString> &subtitle = std::nullopt,
                 const QString &content = u"text"_s, const std::optional<QString> &digest = std::nullopt)
{
    return {name, subtitle, content, digest};
}

class SessionContextTest : public PanelsFixture
{
protected:
    SessionContext &context()
    {
        if (!m_context)
            m_context = std::make_unique<SessionContext>(*m_ai, m_events);
        return *m_context;
    }

    void submit(const QString &topic)
    {
        context().setShowingAddContextPopover(true);
        context().setConceptInput(topic);
        context().submitConcept();
    }

    bool waitsForExpansion()
    {
        return eventually([this] { return !context().isExpandingConcept(); });
    }

    QStringList names() const
    {
        QStringList names;
        for (const ContextItem &attached : m_ai->attachedContexts())
            names.append(attached.name);
        return names;
    }

    std::unique_ptr<SessionContext> m_context;
};

QByteArray conceptScript(const QByteArray &answer)
{
    return R"s({"replies":{"/v1/expand-concept":[{"body":")s" + QByteArray(answer).replace('"', "\\\"") + R"s("}]}})s";
}

} // namespace

// Concepts

TEST_F(SessionContextTest, AConceptOfOneReadingBecomesACardAndThePopoverCloses)
{
    serve(conceptScript(
        R"({"status":"success","card":{"title":"Hamlet","subtitle":"Play","content":"To be"},"options":null})"));
    m_ai->switchActiveFile(m_document);
    submit(u" hamlet\n"_s);
    EXPECT_TRUE(context().isExpandingConcept());
    ASSERT_TRUE(waitsForExpansion());
    EXPECT_EQ(m_ai->attachedContexts(), (QList<ContextItem>{item(u"Hamlet"_s, u"Play"_s, u"To be"_s)}));
    EXPECT_FALSE(context().isShowingAddContextPopover());
    EXPECT_EQ(context().conceptInput(), QString());
    m_ai->loadSession(m_document);
    EXPECT_EQ(names(), QStringList{u"Hamlet"_s});
}

TEST_F(SessionContextTest, AConceptOfSeveralReadingsLeavesThePopoverOpenToChoose)
{
    serve(conceptScript(R"s({"status":"ambiguous","options":[{"title":"Mercury","subtitle":"Planet","content":"a"},)s"
                        R"s({"title":"Mercury (element)","subtitle":"Metal","content":"b"}]})s"));
    submit(u"Mercury"_s);
    ASSERT_TRUE(waitsForExpansion());
    ASSERT_EQ(context().ambiguousOptions().size(), 2);
    EXPECT_TRUE(context().isShowingAddContextPopover());
    EXPECT_TRUE(names().isEmpty());

    context().chooseConcept(context().ambiguousOptions()[1]);
    EXPECT_EQ(m_ai->attachedContexts(), (QList<ContextItem>{item(u"Mercury (element)"_s, u"Metal"_s, u"b"_s)}));
    EXPECT_TRUE(context().ambiguousOptions().isEmpty());
    EXPECT_FALSE(context().isShowingAddContextPopover());
}

TEST_F(SessionContextTest, AnyOtherAnswerGivesAPlaceholder)
{
    for (const char *answer : {R"({"status":"unknown"})", R"({"status":"success"})", R"({"status":"ambiguous"})"}) {
        serve(conceptScript(answer));
        m_context.reset();
        submit(u"Hamlet"_s);
        ASSERT_TRUE(waitsForExpansion());
        EXPECT_EQ(m_ai->attachedContexts(),
                  (QList<ContextItem>{item(u"Hamlet"_s, u"Concept"_s, u"Reference card for Hamlet"_s)}));
    }
}

TEST_F(SessionContextTest, AServerThatIsDownStillGivesACardAndTheChipIsGone)
{
    m_ai->setSuggestedContexts({u"Hamlet "_s, u"Faust"_s, u"HAMLET "_s});
    context().chooseSuggestion(u"Hamlet "_s);
    EXPECT_TRUE(context().isShowingAddContextPopover());
    EXPECT_TRUE(context().isExpandingConcept());
    EXPECT_EQ(m_ai->suggestedContexts(), QStringList{u"Faust"_s});
    ASSERT_TRUE(waitsForExpansion());
    EXPECT_EQ(m_ai->attachedContexts(),
              (QList<ContextItem>{item(u"Hamlet"_s, u"Concept"_s, u"Reference card for Hamlet"_s)}));
    EXPECT_FALSE(context().isShowingAddContextPopover());
}

TEST_F(SessionContextTest, ABlankTopicDoesNothing)
{
    submit(u" \n"_s);
    EXPECT_FALSE(context().isExpandingConcept());
    EXPECT_TRUE(context().isShowingAddContextPopover());
}

TEST_F(SessionContextTest, TheTopicThatIsBeingLookedUpIsNotAskedForAgain)
{
    serve(R"({"replies":{"/v1/expand-concept":[{"status":500}]}})");
    submit(u"Faust"_s);
    submit(u" Faust "_s);
    EXPECT_TRUE(context().isExpandingConcept());
    ASSERT_TRUE(waitsForExpansion());

    submit(u"Hamlet"_s);
    ASSERT_TRUE(waitsForExpansion());
    EXPECT_EQ(m_server->requests("/v1/expand-concept").size(), 2);
    EXPECT_EQ(names(), (QStringList{u"Faust"_s, u"Hamlet"_s}));
}

TEST_F(SessionContextTest, ALinkInAnAnswerOpensThePopoverAnalysingAtOnce)
{
    context();
    m_events.post(AppEvents::kAddContextConceptTriggered, {{AppEvents::kConcept, 5}});
    EXPECT_FALSE(context().isShowingAddContextPopover());
    m_events.post(AppEvents::kAddContextConceptTriggered, {{AppEvents::kConcept, u"Hamlet"_s}});
    EXPECT_TRUE(context().isShowingAddContextPopover());
    EXPECT_EQ(context().conceptInput(), u"Hamlet"_s);
    EXPECT_TRUE(context().isExpandingConcept());
    ASSERT_TRUE(waitsForExpansion());
}

TEST_F(SessionContextTest, ChipsAreWhatIsNotAttachedYet)
{
    m_ai->setSuggestedContexts({u" Faust"_s, u"faust"_s, u"Hamlet, act two"_s});
    m_ai->setAttachedContexts({item(u"Hamlet"_s)});
    EXPECT_EQ(context().visibleSuggestions(), QStringList{u" Faust"_s});
}

// Duplicates

TEST_F(SessionContextTest, ALikelyDuplicateIsAskedAboutByItsNameAndKind)
{
    m_ai->setAttachedContexts({item(u"Hamlet (play)"_s, u"Play"_s), item(u"notes.md"_s)});
    context().attachContextItem(item(u"hamlet"_s));
    ASSERT_TRUE(context().isShowingDuplicateAlert());
    EXPECT_EQ(context().duplicateMessage(),
              u"A similar item 'Hamlet (play)' (Play) is already attached. Do you still want to add 'hamlet'?"_s);
    context().attachContextItem(item(u"notes"_s)); // takes the place of the first
    EXPECT_EQ(context().duplicateMessage(),
              u"A similar item 'notes.md' (Local File) is already attached. Do you still want to add 'notes'?"_s);
    context().cancelPending();
    EXPECT_FALSE(context().isShowingDuplicateAlert());
    EXPECT_EQ(names().size(), 2);
}

TEST_F(SessionContextTest, AddAnywayAddsAndSaves)
{
    m_ai->switchActiveFile(m_document);
    context().attachContextItem(item(u"Hamlet"_s));
    context().attachContextItem(item(u"Hamlet"_s));
    ASSERT_TRUE(context().isShowingDuplicateAlert());
    context().addAnyway();
    EXPECT_FALSE(context().isShowingDuplicateAlert());
    m_ai->loadSession(m_document);
    EXPECT_EQ(names(), (QStringList{u"Hamlet"_s, u"Hamlet"_s}));
}

TEST_F(SessionContextTest, TheQuestionIsAskedInGeneralOnceTheSimilarItemIsGone)
{
    m_ai->setAttachedContexts({item(u"Hamlet"_s)});
    context().attachContextItem(item(u"Hamlet"_s));
    m_ai->setAttachedContexts({});
    EXPECT_EQ(context().duplicateMessage(),
              u"A similar context item is already attached. Do you still want to add it?"_s);
}

TEST_F(SessionContextTest, WithoutAnActiveFileAnItemStaysInMemory)
{
    context().attachContextItem(item(u"Hamlet"_s));
    EXPECT_EQ(names(), QStringList{u"Hamlet"_s});
    EXPECT_FALSE(m_files.exists(u"data/sessions"_s));
}

// Files

TEST_F(SessionContextTest, AFileIsAttachedWithItsTextAndItsDigest)
{
    serve(R"({"replies":{"/v1/digest-file":[{"body":"{\"digest\":\"In short.\"}"}]}})");
    m_files.write(u"notes.txt"_s, "Long text.");
    context().setShowingAddContextPopover(true);
    context().attachFiles({m_files.url(u"notes.txt"_s)}, AttachmentSource::Panel);
    EXPECT_FALSE(context().isShowingAddContextPopover());
    ASSERT_TRUE(eventually([this] { return !names().isEmpty(); }));
    EXPECT_EQ(m_ai->attachedContexts()[0], item(u"notes.txt"_s, std::nullopt, u"Long text."_s, u"In short."_s));
}

TEST_F(SessionContextTest, WithoutADigestAFileIsAttachedAllTheSame)
{
    m_files.write(u"notes.txt"_s, "Long text.");
    context().attachFiles({m_files.url(u"notes.txt"_s)}, AttachmentSource::Drop);
    ASSERT_TRUE(eventually([this] { return !names().isEmpty(); }));
    EXPECT_EQ(m_ai->attachedContexts()[0], item(u"notes.txt"_s, std::nullopt, u"Long text."_s));
}

TEST_F(SessionContextTest, AFileThatIsNoTextIsNotAttachedAndALineSaysSo)
{
    m_files.write(u"image.png"_s, "\x89PNG\xFF");
    m_files.write(u"good.txt"_s, "good");
    context().attachFiles({m_files.url(u"image.png"_s), m_files.url(u"good.txt"_s)}, AttachmentSource::Panel);
    context().attachFiles({m_files.url(u"image.png"_s)}, AttachmentSource::Drop);
    ASSERT_TRUE(eventually([this] { return !names().isEmpty(); }));
    m_context.reset();
    EXPECT_EQ(names(), QStringList{u"good.txt"_s});
    const QString lines = console();
    const QString path = m_files.url(u"image.png"_s).path();
    EXPECT_TRUE(lines.contains(u"Failed to read context file "_s + path + u": "_s)) << lines.toStdString();
}

// Cards

TEST_F(SessionContextTest, ANewCardIsTrimmedAndNeedsATitle)
{
    context().addCustomContext();
    EXPECT_TRUE(context().isNewItem());
    context().setCard({u" \n"_s, u"s"_s, u"c"_s});
    EXPECT_FALSE(context().canSaveCard());
    context().saveCard();
    EXPECT_TRUE(context().editingItem());

    context().setCard({u" Hamlet "_s, u" "_s, u"\nTo be\n"_s});
    context().saveCard();
    EXPECT_FALSE(context().editingItem());
    EXPECT_EQ(m_ai->attachedContexts(), (QList<ContextItem>{item(u"Hamlet"_s, std::nullopt, u"To be"_s)}));
}

TEST_F(SessionContextTest, AnEditedCardLosesItsDigestAndRaisesNoQuestion)
{
    m_ai->setAttachedContexts({item(u"a"_s), item(u"b"_s, u"s"_s, u"c"_s, u"digest"_s)});
    context().editItem(m_ai->attachedContexts()[1]);
    EXPECT_EQ(context().card(), (SessionContext::Card{u"b"_s, u"s"_s, u"c"_s}));
    context().setCard({u"a"_s, u"t"_s, u"d"_s});
    context().saveCard();
    EXPECT_FALSE(context().isShowingDuplicateAlert());
    EXPECT_EQ(m_ai->attachedContexts(), (QList<ContextItem>{item(u"a"_s), item(u"a"_s, u"t"_s, u"d"_s)}));
}

TEST_F(SessionContextTest, OfTwoItemsOfOneNameTheFirstIsEdited)
{
    m_ai->setAttachedContexts({item(u"a"_s, u"1"_s), item(u"a"_s, u"2"_s)});
    context().editItem(m_ai->attachedContexts()[1]);
    context().setCard({u"a"_s, u"3"_s, u"c"_s});
    context().saveCard();
    EXPECT_EQ(m_ai->attachedContexts(), (QList<ContextItem>{item(u"a"_s, u"3"_s, u"c"_s), item(u"a"_s, u"2"_s)}));
}

TEST_F(SessionContextTest, AnItemThatWentMeanwhileIsNotMadeAnew)
{
    m_ai->setAttachedContexts({item(u"a"_s)});
    context().editItem(m_ai->attachedContexts()[0]);
    m_ai->setAttachedContexts({});
    context().saveCard();
    EXPECT_TRUE(names().isEmpty());
    EXPECT_FALSE(context().editingItem());
}

TEST_F(SessionContextTest, RemoveTakesEveryEqualItemAndCancelNone)
{
    m_ai->setAttachedContexts({item(u"a"_s), item(u"b"_s), item(u"a"_s), item(u"a"_s, u"other"_s)});
    context().editItem(m_ai->attachedContexts()[0]);
    context().cancelCard();
    EXPECT_EQ(names().size(), 4);
    context().editItem(m_ai->attachedContexts()[0]);
    EXPECT_FALSE(context().isNewItem());
    context().removeItem();
    EXPECT_EQ(m_ai->attachedContexts(), (QList<ContextItem>{item(u"b"_s), item(u"a"_s, u"other"_s)}));
}

} // namespace Tessaline
