#include "foundation_ui/FocusRing.h"
#include "foundation_ui/ProgressIndicator.h"
#include "MarkdownUI/MarkdownView.h"
#include "panels/ChatBubbleView.h"
#include "panels/ChatSenderPill.h"
#include "panels/QuotedText.h"
#include "panels/SendButton.h"
#include "panels/SuggestionCard.h"
#include "tests/panels/PanelsViewsFixture.h"

#include <QtCore/QVariantAnimation>
#include <QtGui/QAccessible>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>
#include <QtGui/QWheelEvent>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTextEdit>

#include <algorithm>
#include <utility>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QString block(const QString &original, const QString &replacement)
{
    return u"<<<<<<< SEARCH\n%1\n=======\n%2\n>>>>>>> REPLACE\n"_s.arg(original, replacement);
}

class ChatViewsTest : public PanelsViewsFixture
{
protected:
    void setMessages(const QList<ChatMessage> &messages) { m_ai->setChatMessages(messages); }
    QList<SuggestionCard *> cards() const { return visible<SuggestionCard>(list()); }
    int end() const { return list().verticalScrollBar()->maximum(); }
    bool isAtEnd() const { return list().verticalScrollBar()->value() == end(); }
    bool isMoving() const
    {
        const auto *animation = list().findChild<QVariantAnimation *>(QString(), Qt::FindDirectChildrenOnly);
        return animation->state() == QAbstractAnimation::Running;
    }
    static QString name(QWidget *widget)
    {
        return widget ? QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name) : QString();
    }
};

} // namespace

TEST_F(ChatViewsTest, WithoutMessagesTheListInvitesToTalk)
{
    show();
    EXPECT_EQ(texts(list()), (QStringList{u"Consult Tessaline"_s, u"Talk to your document."_s}));
    EXPECT_FALSE(hasButton(input(), u"Clear Chat"_s));
    setMessages({message(u"user"_s, u"Hello"_s)});
    EXPECT_EQ(texts(list()), QStringList());
    EXPECT_EQ(button(input(), u"Clear Chat"_s)->toolTip(), u"Clear Chat History"_s);
    click(button(input(), u"Clear Chat"_s));
    EXPECT_TRUE(list().bubbles().isEmpty());
    EXPECT_EQ(texts(list()).size(), 2);
    EXPECT_EQ(list().accessibleName(), u"Chat Messages"_s);
    EXPECT_EQ(field().accessibleName(), u"Chat Input"_s);
    EXPECT_GE(m_column->minimumWidth(), 320);
    EXPECT_GE(m_column->chat().minimumHeight(), 250);
}

TEST_F(ChatViewsTest, OfflineTheFieldIsDisabledUntilTheServerIsStartedAgain)
{
    show();
    EXPECT_FALSE(field().isEnabled());
    EXPECT_EQ(field().placeholderText(), u"Tessaline is offline..."_s);
    click(button(input(), u"Retry Local AI"_s));
    EXPECT_EQ(field().placeholderText(), u"Initializing Tessaline..."_s);
    EXPECT_FALSE(hasButton(input(), u"Retry Local AI"_s));
}

TEST_F(ChatViewsTest, AButtonOfTheInputThatGoesByItsOwnPressLeavesTheFocusToTheField)
{
    serve("{}");
    m_ai->stopServer();
    show();
    QAbstractButton *const retry = button(input(), u"Retry Local AI"_s);
    retry->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_FALSE(retry->isVisible());
    EXPECT_TRUE(eventually([this] { return field().hasFocus(); })) << "as soon as it can be used";

    setMessages({message(u"user"_s, u"Hello"_s)});
    button(input(), u"Clear Chat"_s)->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_TRUE(m_ai->chatMessages().isEmpty());
    EXPECT_TRUE(field().hasFocus());
}

TEST_F(ChatViewsTest, AQuestionIsSentByReturnAndTheFocusComesBackWithTheFieldAfterTheAnswer)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"steps":[
        {"event":{"context":{"context_window_tokens":8192,"estimated_input_tokens":2345,"active_document_chars":15,
                             "attached_context_count":1,"workspace_context_count":3,"history_message_count":0}}},
        {"token":"It is "},{"token":"**one**."},{"done":true}]}]}})");
    show();
    auto &send = *input().findChild<SendButton *>();
    EXPECT_EQ(send.size(), QSize(22, 22));
    EXPECT_EQ(field().placeholderText(), u"Discuss with Tessaline..."_s);
    field().setFocus();
    QTest::keyClicks(&field(), u"   "_s);
    press(Qt::Key_Return);
    EXPECT_EQ(field().text(), u"   "_s);
    EXPECT_FALSE(send.isEnabled());
    QTest::keyClicks(&field(), u"What is it?"_s);
    EXPECT_TRUE(send.isEnabled());
    EXPECT_EQ(name(&send), u"Send"_s);

    press(Qt::Key_Return);
    EXPECT_EQ(field().text(), QString());
    EXPECT_FALSE(field().isEnabled());
    EXPECT_FALSE(send.isEnabled());
    EXPECT_TRUE(texts(input()).contains(u"Preparing context…"_s));
    ASSERT_TRUE(eventually([this] { return field().isEnabled(); }));

    EXPECT_TRUE(field().hasFocus());
    const QList<ChatBubbleView *> bubbles = list().bubbles();
    ASSERT_EQ(bubbles.size(), 2);
    EXPECT_EQ(bubbles[0]->accessibleName(), u"You"_s);
    EXPECT_EQ(bubbles[0]->accessibleDescription(), u"What is it?"_s);
    EXPECT_EQ(bubbles[1]->accessibleName(), u"Tessaline"_s);
    EXPECT_EQ(bubbles[1]->accessibleDescription(), u"It is **one**."_s);
    EXPECT_TRUE(texts(input()).contains(u"Using document + 4 sources · ~2.3K tokens"_s))
        << m_ai->contextStatus().toStdString();
}

TEST_F(ChatViewsTest, AQuestionOfManyPagesIsPastedWhole)
{
    serve("{}");
    show();
    const QString question = u"Words of a line.\n"_s.repeated(5000) + u"And?"_s;
    QGuiApplication::clipboard()->setText(question);
    field().setFocus();
    field().paste();
    EXPECT_EQ(m_panels->composer.chatInput(), question);
}

TEST_F(ChatViewsTest, AnAnswerThatEndsScrollsToItsEndOnceThoughThePersonReadsFurtherUp)
{
    serve(R"({"replies":{"/v1/chat/completions":[{"steps":[{"token":"Yes."},{"hang":true}]}]}})");
    show();
    QList<ChatMessage> messages;
    for (int i = 0; i < 20; ++i)
        messages.append(message(i % 2 ? u"assistant"_s : u"user"_s, u"Words that fill a line or two. "_s.repeated(8)));
    setMessages(messages);
    m_panels->composer.setChatInput(u"And?"_s);
    m_panels->composer.send(std::nullopt, std::nullopt);
    ASSERT_TRUE(eventually([this] { return m_ai->chatMessages().constLast().content == u"Yes."; }));
    ASSERT_TRUE(eventually([this] { return !isMoving(); }));
    list().verticalScrollBar()->setValue(0);
    m_ai->replaceMessageContent(m_ai->chatMessages().constLast().id, u"Yes. And more.\n\n"_s.repeated(20));
    EXPECT_EQ(list().verticalScrollBar()->value(), 0);
    m_panels->composer.stop();
    ASSERT_TRUE(eventually([this] { return !m_ai->isGenerating() && !isMoving(); }));
    EXPECT_TRUE(isAtEnd());
    list().verticalScrollBar()->setValue(0);
    ASSERT_TRUE(eventually([this] { return !m_panels->composer.isPreparingContext(); }));
    EXPECT_EQ(list().verticalScrollBar()->value(), 0);
}

TEST_F(ChatViewsTest, APictureInAnAnswerIsLoadedAndTakesItsRoom)
{
    show();
    setMessages({message(u"assistant"_s, u"![Chart](https://example.org/chart.png)"_s)});
    const QList<ChatBubbleView *> bubbles = list().bubbles();
    ASSERT_EQ(bubbles.size(), 1);
    EXPECT_TRUE(eventually([&] { return bubbles[0]->height() > 300; }));
    EXPECT_EQ(m_images.asked(), QList<QUrl>{QUrl(u"https://example.org/chart.png"_s)});
}

TEST_F(ChatViewsTest, ALongAnswerIsReadByKeysAndSoIsTheConversationFromTheField)
{
    serve("{}");
    show();
    setMessages({message(u"user"_s, u"Why?"_s), message(u"assistant"_s, u"Because.\n\n"_s.repeated(200))});
    ASSERT_TRUE(eventually([this] { return isAtEnd(); }));
    visible<MarkdownUI::MarkdownView>(list()).constFirst()->setFocus();
    press(Qt::Key_Home);
    EXPECT_EQ(list().verticalScrollBar()->value(), 0);
    press(Qt::Key_PageDown);
    const int page = list().verticalScrollBar()->value();
    EXPECT_GT(page, 100);
    press(Qt::Key_Up);
    EXPECT_LT(list().verticalScrollBar()->value(), page);
    EXPECT_GT(list().verticalScrollBar()->value(), 0);
    press(Qt::Key_End);
    EXPECT_TRUE(isAtEnd());

    field().setFocus();
    press(Qt::Key_PageUp);
    EXPECT_FALSE(isAtEnd());
    press(Qt::Key_PageDown);
    EXPECT_TRUE(isAtEnd());
    EXPECT_TRUE(field().hasFocus());
}

TEST_F(ChatViewsTest, OtherPartsOfAMessageTakeTheirPlacesThoughItsSizeStays)
{
    show();
    ChatMessage answer = message(u"assistant"_s, block(u"One."_s, u"1."_s));
    setMessages({answer});
    ASSERT_EQ(cards().size(), 1);
    const QRect place = cards()[0]->geometry();
    m_ai->replaceMessageContent(answer.id, block(u"Two."_s, u"2."_s));
    ASSERT_EQ(cards().size(), 1);
    EXPECT_EQ(cards()[0]->suggestion().originalText, u"Two."_s);
    EXPECT_EQ(cards()[0]->geometry(), place);
}

TEST_F(ChatViewsTest, AGrowingAnswerWaitsThenShowsRawTextThenACard)
{
    show();
    ChatMessage answer = message(u"assistant"_s, QString());
    setMessages({answer});
    EXPECT_EQ(texts(list()), QStringList{u"Writing..."_s});
    EXPECT_EQ(list().bubbles()[0]->accessibleDescription(), u"Writing..."_s);
    const QString whole = u"See:\n"_s + block(u"Two."_s, u"2."_s) + block(u"gone"_s, QString());
    qsizetype withoutCards = 0;
    for (qsizetype length = 1; length <= whole.size(); length += 3) {
        m_ai->replaceMessageContent(answer.id, whole.left(length));
        if (cards().isEmpty())
            withoutCards = length;
    }
    m_ai->replaceMessageContent(answer.id, whole);
    ASSERT_EQ(cards().size(), 2);
    EXPECT_GT(withoutCards, whole.indexOf(u"======="_s));
    EXPECT_EQ(cards()[0]->suggestion().originalText, u"Two."_s);
    EXPECT_EQ(cards()[1]->height(), cards()[1]->heightForWidth(cards()[1]->width()));
    EXPECT_EQ(list().bubbles()[0]->accessibleDescription(), u"See:"_s);
    // The cards alone, one of them without any text.
    m_ai->replaceMessageContent(answer.id, block(QString(), QString()));
    EXPECT_EQ(list().bubbles()[0]->accessibleDescription(), QString());
    ASSERT_EQ(cards().size(), 1);
    EXPECT_GT(cards()[0]->height(), 40);
    EXPECT_EQ(texts(list()), QStringList{u"Proposed Change"_s});
    setMessages({});
    EXPECT_TRUE(list().bubbles().isEmpty());
}

TEST_F(ChatViewsTest, OneEditIsAcceptedByClickOneRejectedByKeyAndOneThatIsNotFoundStaysPending)
{
    open();
    show();
    setMessages(
        {message(u"assistant"_s, block(u"Two."_s, u"2."_s) + block(u"One."_s, u"1."_s) + block(u"Nowhere"_s, u"x"_s))});
    ASSERT_EQ(cards().size(), 3);
    click(button(*cards()[2], u"Accept"_s));
    button(*cards()[1], u"Reject"_s)->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    EXPECT_TRUE(texts(*cards()[1]).contains(u"✕ Rejected"_s));
    EXPECT_FALSE(hasButton(*cards()[1], u"Accept"_s));
    EXPECT_EQ(cards()[1]->accessibleDescription(), u"rejected"_s);
    ASSERT_TRUE(QApplication::focusWidget()) << "the focus went with its button";
    EXPECT_TRUE(m_column->isAncestorOf(QApplication::focusWidget()));

    click(button(*cards()[0], u"Accept"_s));
    ASSERT_TRUE(eventually([this] { return texts(*cards()[0]).contains(u"✓ Accepted"_s); }));
    EXPECT_EQ(onDisk(), "One. 2. Three.");
    EXPECT_EQ(cards()[0]->accessibleDescription(), u"accepted"_s);
    EXPECT_EQ(cards()[2]->accessibleDescription(), u"pending"_s);
    EXPECT_TRUE(hasButton(*cards()[2], u"Reject"_s));
}

TEST_F(ChatViewsTest, AfterAPressByKeyTheFocusGoesOnToWhatStandsBehindTheCard)
{
    serve("{}");
    open();
    show();
    setMessages({message(u"assistant"_s, block(u"One."_s, u"1."_s) + block(u"Two."_s, u"2."_s)),
                 message(u"user"_s, u"Thanks."_s)});
    m_column->setFocus();
    for (const QString &press : {u"Reject"_s, u"Accept"_s}) {
        const qsizetype card = press == u"Reject"_s ? 0 : 1;
        QAbstractButton *const pressed = button(*cards()[card], press);
        pressed->setFocus(Qt::TabFocusReason);
        QTest::keyClick(pressed, Qt::Key_Space);
        ASSERT_TRUE(eventually([pressed] { return !pressed->isVisible(); }));
        EXPECT_EQ(name(QApplication::focusWidget()), card == 0 ? u"Removed Text"_s : u"Message"_s);
        EXPECT_TRUE(card == 1 || cards()[1]->isAncestorOf(QApplication::focusWidget()));
    }
}

TEST_F(ChatViewsTest, QuestionsAndProposedChangesAreShownWholeAtAnyWidth)
{
    show();
    setMessages({message(u"user"_s, u"https://example.org/"_s + u"a"_s.repeated(300) + u"\u00A0end"_s),
                 message(u"assistant"_s, block(u"Two columns are enough for most days:"_s,
                                               u"A line of some words that may need another line.\n"_s.repeated(12)))});
    for (int width = 340; width < 420; width += 7) {
        m_column->resize(width, 700);
        QCoreApplication::processEvents();
        for (const auto *text : visible<QuotedText>(list())) {
            EXPECT_FALSE(text->verticalScrollBar()->isVisible());
            EXPECT_EQ(text->verticalScrollBar()->maximum(), 0) << text->toPlainText().toStdString() << " at " << width;
        }
    }
    EXPECT_EQ(visible<QuotedText>(list()).size(), 3);
}

TEST_F(ChatViewsTest, OfATextAsLongAsADocumentTheBeginningIsShownAndHowMuchMoreThereIs)
{
    show();
    const QString line = u"A line of a long document with some words.\n"_s;
    const QString head = line.repeated(QuotedText::kMostShown / line.size() + 1).first(QuotedText::kMostShown - 1);
    const QString content = head + u"🌊"_s + line.repeated(1000); // which would be cut in two
    setMessages({message(u"user"_s, content)});
    const auto *text = list().findChild<QuotedText *>();
    ASSERT_TRUE(text);
    EXPECT_EQ(text->quotedText(), content);
    const QString shown = text->toPlainText();
    const qsizetype end = shown.lastIndexOf(u'\n');
    EXPECT_EQ(shown.first(end), head);
    EXPECT_EQ(shown.sliced(end + 1), u"… (%1 more characters)"_s.arg(content.size() - end));
    EXPECT_EQ(text->verticalScrollBar()->maximum(), 0);
    setMessages({message(u"user"_s, head + u"."_s)});
    EXPECT_EQ(list().findChild<QuotedText *>()->toPlainText(), head + u"."_s);
}

TEST_F(ChatViewsTest, ATextThatTakesTheFocusByKeyShowsIt)
{
    show();
    setMessages({message(u"user"_s, u"Why?"_s), message(u"assistant"_s, u"So.\n"_s + block(u"a"_s, u"b"_s))});
    const auto bubbles = list().bubbles();
    const auto edge = [](QWidget *bubble) { // of the bubble, half way down
        const QImage image = bubble->grab().toImage();
        return image.pixelColor(1, ChatSenderPill::kHeight + 24);
    };
    const auto question = bubbles[0]->findChild<QuotedText *>();
    const auto answer = bubbles[1]->findChild<MarkdownUI::MarkdownView *>();
    for (const auto &[bubble, text] : {std::pair<QWidget *, QWidget *>(bubbles[0], question), {bubbles[1], answer}}) {
        const QColor plain = edge(bubble);
        text->setFocus(Qt::MouseFocusReason);
        EXPECT_EQ(edge(bubble), plain);
        text->clearFocus();
        text->setFocus(Qt::TabFocusReason);
        ASSERT_TRUE(text->hasFocus());
        EXPECT_NE(edge(bubble), plain) << text->accessibleName().toStdString();
        text->clearFocus();
        EXPECT_EQ(edge(bubble), plain);
    }

    QuotedText *removed = bubbles[1]->findChild<QuotedText *>();
    removed->setFocus(Qt::TabFocusReason);
    const auto rings = visible<FocusRing>(*m_column);
    ASSERT_EQ(rings.size(), 1);
    EXPECT_EQ(rings[0]->widget(), removed);
    removed->clearFocus();
    EXPECT_TRUE(visible<FocusRing>(*m_column).isEmpty());
}

TEST_F(ChatViewsTest, AUsersBlocksAreShownAsTheyAreTyped)
{
    show();
    setMessages({message(u"user"_s, block(u"a"_s, u"b"_s))});
    EXPECT_TRUE(cards().isEmpty());
    EXPECT_EQ(list().findChild<QTextEdit *>()->toPlainText(), block(u"a"_s, u"b"_s));
}

TEST_F(ChatViewsTest, OfAThousandMessagesOnlyThoseNearTheViewportHaveAView)
{
    show();
    QList<ChatMessage> messages;
    for (int i = 0; i < 1000; ++i)
        messages.append(message(i % 2 ? u"assistant"_s : u"user"_s, u"Line %1.\n\n"_s.arg(i).repeated(12)));
    setMessages(messages);
    EXPECT_TRUE(eventually([this] { return isAtEnd(); }));
    EXPECT_EQ(list().bubbles().constLast()->message(), messages.constLast());
    EXPECT_LT(list().bubbles().size(), 40);
    list().verticalScrollBar()->setValue(0);
    EXPECT_EQ(list().bubbles().constFirst()->message(), messages.constFirst());
    EXPECT_LT(list().bubbles().size(), 80);
    EXPECT_EQ(list().bubbles().constFirst()->y(), ChatMessagesList::kPadding);
    EXPECT_EQ(list().bubbles()[1]->y() - list().bubbles()[0]->geometry().bottom() - 1, ChatMessagesList::kSpacing);

    m_column->resize(520, 700);
    m_ai->replaceMessageContent(messages.constLast().id, u"Grown."_s.repeated(50));
    EXPECT_EQ(list().verticalScrollBar()->value(), 0) << "no scrolling while an answer grows";
    messages.append(message(u"user"_s, u"More"_s));
    setMessages(messages);
    EXPECT_TRUE(eventually([this] { return isAtEnd(); }));
    setMessages(messages.first(1));
    EXPECT_EQ(list().bubbles().size(), 1);
}

TEST_F(ChatViewsTest, MessagesAreAsWideAsTheFieldWithABarAndWithout)
{
    show();
    setMessages({message(u"user"_s, u"Why?"_s)});
    ASSERT_TRUE(eventually([this] { return !list().verticalScrollBar()->isVisible(); }));
    const int width = list().width() - 2 * ChatMessagesList::kPadding;
    EXPECT_EQ(list().bubbles().constFirst()->width(), width);
    setMessages({message(u"user"_s, u"Why?\n"_s.repeated(100))});
    ASSERT_TRUE(eventually([this] { return list().verticalScrollBar()->isVisible(); }));
    EXPECT_EQ(list().bubbles().constFirst()->width(), width);
    EXPECT_LE(list().bubbles().constFirst()->geometry().right(), list().viewport()->width());
}

TEST_F(ChatViewsTest, AWheelOverAMessageScrollsTheList)
{
    show();
    QList<ChatMessage> messages;
    for (int i = 0; i < 20; ++i)
        messages.append(message(i % 2 ? u"assistant"_s : u"user"_s, u"Words that fill a line or two. "_s.repeated(8)));
    setMessages(messages);
    ASSERT_TRUE(eventually([this] { return isAtEnd(); }));
    for (const char *kind : {"Tessaline::QuotedText", "MarkdownUI::MarkdownView"}) {
        const int before = list().verticalScrollBar()->value();
        QAbstractScrollArea *text = nullptr;
        for (auto *area : visible<QAbstractScrollArea>(list()))
            if (area->inherits(kind))
                text = area;
        ASSERT_TRUE(text);
        const QPointF centre = text->viewport()->rect().center();
        QWheelEvent event(centre, text->viewport()->mapToGlobal(centre), QPoint(), QPoint(0, 120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(text->viewport(), &event);
        EXPECT_FALSE(event.isAccepted()) << kind; // so that the toolkit hands a real one on
        QApplication::sendEvent(text->parentWidget(), &event);
        EXPECT_LT(list().verticalScrollBar()->value(), before) << kind;
    }
}

TEST_F(ChatViewsTest, TabWalksDownTheColumnAndBringsWhatItReachesIntoView)
{
    serve("{}");
    show();
    m_ai->setSuggestedContexts({u"Faust"_s});
    m_ai->setAttachedContexts({{u"Hamlet"_s, u"Play"_s, u"text"_s, std::nullopt}});
    setMessages({message(u"user"_s, u"Why?\n"_s.repeated(25)), message(u"assistant"_s, block(u"Two."_s, u"2."_s))});
    QStringList names;
    const auto *add = button(*m_column, u"Add Session Context"_s);
    button(*m_column, u"Add Session Context"_s)->setFocus(Qt::TabFocusReason);
    for (int i = 0; i < 20 && (i == 0 || QApplication::focusWidget() != add); ++i) {
        names.append(name(QApplication::focusWidget()));
        press(Qt::Key_Tab);
    }
    EXPECT_EQ(names, (QStringList{u"Add Session Context"_s, u"Faust"_s, u"Hamlet"_s, u"Message"_s, u"Removed Text"_s,
                                  u"Added Text"_s, u"Accept"_s, u"Reject"_s, u"Chat Input"_s, u"Clear Chat"_s}));

    list().verticalScrollBar()->setValue(0);
    QAbstractButton *reject = button(list(), u"Reject"_s);
    reject->setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(list().viewport()->rect().contains(QRect(reject->mapTo(list().viewport(), QPoint()), reject->size())));
}

TEST_F(ChatViewsTest, AssistiveTechnologyReadsTheMessagesAsAListInTheirOrder)
{
    show();
    QList<ChatMessage> messages;
    for (int i = 0; i < 60; ++i)
        messages.append(message(i % 2 ? u"assistant"_s : u"user"_s, u"Line %1.\n\n"_s.arg(i).repeated(3)));
    messages.append(message(u"assistant"_s, block(u"One."_s, u"1."_s)));
    messages.append(message(u"assistant"_s, QString()));
    setMessages(messages);
    ASSERT_TRUE(eventually([this] { return isAtEnd(); }));
    const auto *card = QAccessible::queryAccessibleInterface(cards().value(0));
    ASSERT_TRUE(card);
    EXPECT_EQ(card->role(), QAccessible::Grouping);
    EXPECT_EQ(card->text(QAccessible::Name), u"Proposed Change"_s);
    EXPECT_EQ(card->text(QAccessible::Description), u"pending"_s);
    const auto *progress = QAccessible::queryAccessibleInterface(list().findChild<ProgressIndicator *>());
    ASSERT_TRUE(progress);
    EXPECT_EQ(progress->role(), QAccessible::ProgressBar);
    EXPECT_EQ(progress->text(QAccessible::Name), u"Writing..."_s);

    // What is further up gets its views after what is below.
    for (int value = end(); value > end() / 2; value -= list().viewport()->height() / 2)
        list().verticalScrollBar()->setValue(value);
    const auto *items = QAccessible::queryAccessibleInterface(list().viewport());
    EXPECT_EQ(items->role(), QAccessible::List);
    QStringList read;
    for (int i = 0; i < items->childCount(); ++i) {
        const QAccessibleInterface *item = items->child(i);
        if (item->role() == QAccessible::ListItem && !item->state().invisible)
            read.append(item->text(QAccessible::Name) + u": "_s + item->text(QAccessible::Description));
    }
    QStringList expected;
    for (const ChatBubbleView *bubble : list().bubbles())
        expected.append(
            (bubble->message().isFromUser() ? u"You: "_s : u"Tessaline: "_s) +
            (bubble->message().isFromUser() ? bubble->message().content : bubble->message().content.trimmed()));
    EXPECT_GT(expected.size(), 3);
    EXPECT_EQ(read, expected);
}

TEST_F(ChatViewsTest, TheLineUnderTheFieldIsAStatusWhoseNameIsItsText)
{
    show();
    m_ai->setContextStatus(u"Preparing context…"_s);
    const auto labels = visible<QLabel>(input());
    const auto found = std::find_if(labels.begin(), labels.end(),
                                    [](const QLabel *label) { return label->text() == u"Preparing context…"_s; });
    ASSERT_NE(found, labels.end());
    const auto *status = QAccessible::queryAccessibleInterface(*found);
    EXPECT_EQ(status->role(), QAccessible::StatusBar);
    EXPECT_EQ(status->text(QAccessible::Name), u"Preparing context…"_s);
}

TEST_F(ChatViewsTest, TheToolTipOfTheStatusShowsMarkupAsItStandsAndBreaksWhatIsLong)
{
    show();
    m_ai->setContextStatus(u"AI error: <img src='file:///a.png'> & "_s + u"much "_s.repeated(1000));
    QString tip;
    for (const QLabel *label : visible<QLabel>(input()))
        if (label->text() == m_ai->contextStatus())
            tip = label->toolTip();
    EXPECT_TRUE(tip.startsWith(u"<qt>AI error: &lt;img src='file:///a.png'&gt; &amp; much much "_s))
        << tip.toStdString();
    EXPECT_LT(tip.size(), 1200);
    m_ai->setContextStatus(QString());
    for (const QLabel *label : input().findChildren<QLabel *>())
        EXPECT_EQ(label->toolTip(), QString());
}

TEST_F(ChatViewsTest, AnAnswerCastsASoftShadowIntoTheListAndAQuestionNone)
{
    show();
    for (const auto &[role, isShaded] : {std::pair{u"user"_s, false}, std::pair{u"assistant"_s, true}}) {
        setMessages({message(role, u"Words."_s)});
        ChatBubbleView *bubble = list().bubbles().value(0);
        ASSERT_TRUE(bubble);
        QImage around(bubble->width(), bubble->height() + 4, QImage::Format_ARGB32_Premultiplied);
        around.fill(Qt::transparent);
        QPainter painter(&around);
        bubble->drawShadow(painter);
        painter.end();
        EXPECT_EQ(around.pixelColor(bubble->width() / 2, bubble->height()).alpha() > 0, isShaded);
        EXPECT_EQ(around.pixelColor(bubble->width() / 2, bubble->height() - 4).alpha(), 0) << "only outside";
    }
}

} // namespace Tessaline
