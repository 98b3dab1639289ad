#include "panels/SessionContextView.h"

#include "panels/AddContextPopover.h"
#include "panels/ContextCardSheet.h"
#include "panels/ContextRow.h"
#include "panels/OptionButton.h"
#include "panels/Popover.h"
#include "tests/panels/PanelsViewsFixture.h"

#include <QtCore/QFile>
#include <QtCore/QMimeData>
#include <QtGui/QAccessible>
#include <QtGui/QDropEvent>
#include <QtGui/QWheelEvent>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>

#include <functional>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

ContextItem item(const QString &name, const std::optional<QString> &subtitle = std::nullopt,
                 const QString &content = u"text"_s)
{
    return {name, subtitle, content, std::nullopt};
}

class SessionContextViewTest : public PanelsViewsFixture
{
protected:
    SessionContextView &view() const { return m_column->context(); }
    QAbstractButton &add() const { return *button(view(), u"Add Session Context"_s); }
    QStringList rows() const
    {
        QStringList names;
        for (const ContextRow *row : visible<ContextRow>(view()))
            names.append(row->accessibleName());
        return names;
    }
    template <class Window>
    Window *window() const
    {
        Window *found = nullptr;
        for (Window *each : m_column->findChildren<Window *>())
            if (each->isVisible())
                found = each;
        return found;
    }
    Popover *popover() const { return window<Popover>(); }
    ContextCardSheet *sheet() const { return window<ContextCardSheet>(); }
    QMessageBox *alert() const { return window<QMessageBox>(); }
    bool isColumnActive() const
    {
        return eventually([this] { return m_column->isActiveWindow() && !QApplication::activePopupWidget(); });
    }
};

} // namespace

TEST_F(SessionContextViewTest, ItShowsAPlaceholderThenChipsAndRowsAsTheyComeAndGo)
{
    show();
    EXPECT_EQ(texts(view()), (QStringList{u"Session Context"_s, u"No Session Context"_s,
                                          u"Add reference files or custom topics to build your session context."_s}));
    EXPECT_EQ(add().size(), QSize(24, 24));
    EXPECT_EQ(add().toolTip(), u"Add Session Context"_s);
    m_ai->setSuggestedContexts({u"Faust"_s, u"Hamlet"_s});
    EXPECT_TRUE(texts(view()).contains(u"Suggestions:"_s));
    EXPECT_EQ(visible<SuggestionChip>(view()).size(), 2);
    m_ai->setAttachedContexts({item(u"Hamlet"_s, u"Play"_s), item(u"a\nb.md"_s)});
    EXPECT_EQ(rows(), (QStringList{u"Hamlet"_s, u"a b.md"_s}));
    EXPECT_EQ(visible<SuggestionChip>(view()).size(), 1);
    EXPECT_EQ(visible<ContextRow>(view())[0]->accessibleDescription(), u"Play"_s);
    EXPECT_FALSE(texts(view()).contains(u"No Session Context"_s));
    m_ai->setAttachedContexts({});
    m_ai->setSuggestedContexts({});
    EXPECT_FALSE(texts(view()).contains(u"Suggestions:"_s));
    EXPECT_TRUE(texts(view()).contains(u"No Session Context"_s));
}

TEST_F(SessionContextViewTest, ATopicWithAnAmpersandIsNoShortcut)
{
    show();
    m_ai->setSuggestedContexts({u"R&D budget"_s});
    ASSERT_EQ(visible<SuggestionChip>(view()).size(), 1);
    const SuggestionChip &chip = *visible<SuggestionChip>(view())[0];
    EXPECT_EQ(chip.accessibleName(), u"R&D budget"_s);
    EXPECT_TRUE(chip.shortcut().isEmpty());
    const ConceptOption option(dressingTheme(), u"R&D"_s, u"A department"_s);
    EXPECT_EQ(option.accessibleName(), u"R&D"_s);
    EXPECT_TRUE(option.shortcut().isEmpty());
}

TEST_F(SessionContextViewTest, ASuggestionWithMarkupIsShownAsItStands)
{
    show();
    m_ai->setSuggestedContexts({u"<b>Bold</b>"_s});
    const SuggestionChip *chip = visible<SuggestionChip>(view()).constFirst();
    EXPECT_EQ(chip->accessibleName(), u"<b>Bold</b>"_s);
    EXPECT_EQ(chip->toolTip(), u"<qt>&lt;b&gt;Bold&lt;/b&gt;</qt>"_s);
}

TEST_F(SessionContextViewTest, ThePopoverOpensByKeyTakesATopicAndGivesTheFocusBack)
{
    show();
    add().setFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    ASSERT_TRUE(popover());
    EXPECT_EQ(popover()->width(), 280);
    auto *topic = popover()->findChild<QLineEdit *>();
    EXPECT_EQ(topic->placeholderText(), u"Enter topic or concept (e.g. Hamlet)"_s);
    EXPECT_EQ(popover()->focusWidget(), topic);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(popover())->parent()->object(), popover()->parentWidget());
    for (const QString &text : {u"Add to Context"_s, u"Attach Reference File..."_s, u"Add Custom Context..."_s})
        EXPECT_TRUE(hasButton(*popover(), text)) << text.toStdString();
    press(Qt::Key_Escape);
    EXPECT_FALSE(popover());
    ASSERT_TRUE(isColumnActive());
    EXPECT_TRUE(add().hasFocus());

    click(&add());
    QTest::keyClicks(popover()->findChild<QLineEdit *>(), u"Faust"_s);
    press(Qt::Key_Return);
    EXPECT_TRUE(texts(*popover()).contains(u"Analyzing concept..."_s));
    EXPECT_FALSE(hasButton(*popover(), u"Add to Context"_s));
    ASSERT_TRUE(eventually([this] { return rows() == QStringList{u"Faust"_s}; }));
    EXPECT_FALSE(popover());
}

TEST_F(SessionContextViewTest, ReturnTwiceAsksForATopicOnceAndForAnotherTopicAgain)
{
    const FileURL gate = m_files.url(u"gate"_s);
    serve(QStringLiteral(R"({"replies":{"/v1/expand-concept":[{"until":"%1","status":500}]}})")
              .arg(gate.path())
              .toUtf8());
    show();
    m_ai->setSuggestedContexts({u"Faust"_s});
    visible<SuggestionChip>(view())[0]->click();
    press(Qt::Key_Return);
    press(Qt::Key_Return);
    QTest::keyClicks(popover()->findChild<QLineEdit *>(), u" II"_s);
    press(Qt::Key_Return);
    press(Qt::Key_Return);
    QFile open(gate.path());
    ASSERT_TRUE(open.open(QIODevice::WriteOnly));
    open.close();
    ASSERT_TRUE(eventually([this] { return alert() || rows().size() > 1; })) << "both have come";
    EXPECT_EQ(m_server->requests("/v1/expand-concept").size(), 2);
}

TEST_F(SessionContextViewTest, OfSeveralReadingsOneIsChosenInThePopover)
{
    serve(R"s({"replies":{"/v1/expand-concept":[{"body":"{\"status\":\"ambiguous\",\"options\":[)s"
          R"s({\"title\":\"Mercury\",\"subtitle\":\"Planet\",\"content\":\"a\"},)s"
          R"s({\"title\":\"Mercury & co\",\"subtitle\":\"Firm\",\"content\":\"b\"}]}"}]}})s");
    show();
    m_ai->setSuggestedContexts({u"Mercury"_s});
    visible<SuggestionChip>(view())[0]->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    ASSERT_TRUE(popover());
    ASSERT_TRUE(eventually([this] { return hasButton(*popover(), u"Mercury & co"_s); }));
    EXPECT_TRUE(texts(*popover()).contains(u"Multiple interpretations found. Which one did you mean?"_s));
    click(button(*popover(), u"Mercury & co"_s));
    EXPECT_FALSE(popover());
    EXPECT_EQ(rows(), QStringList{u"Mercury & co"_s});
    ASSERT_TRUE(isColumnActive());
    EXPECT_TRUE(add().hasFocus()) << "the chip is gone";
}

TEST_F(SessionContextViewTest, ALinkOfAnAnswerOpensThePopoverAtOnce)
{
    show();
    m_column->openLink(QUrl(u"tessaline://add-context?concept=Hamlet"_s));
    ASSERT_TRUE(popover());
    EXPECT_EQ(popover()->findChild<QLineEdit *>()->text(), u"Hamlet"_s);
    EXPECT_TRUE(texts(*popover()).contains(u"Analyzing concept..."_s));
    ASSERT_TRUE(eventually([this] { return !popover(); }));
}

TEST_F(SessionContextViewTest, ARowIsEditedInTheSheetByKeysAndKeepsTheFocus)
{
    show();
    m_ai->setAttachedContexts({item(u"Faust"_s), item(u"Hamlet"_s, u"Play"_s, u"To be,\r\nor not"_s)});
    visible<ContextRow>(view())[1]->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(m_column->findChildren<ContextCardSheet *>().size(), 1);
    EXPECT_EQ(sheet()->windowTitle(), u"Edit Session Context"_s);
    EXPECT_TRUE(hasButton(*sheet(), u"Remove"_s));
    const QList<QLineEdit *> fields = sheet()->findChildren<QLineEdit *>();
    ASSERT_EQ(fields.size(), 2);
    EXPECT_EQ(fields[0]->text(), u"Hamlet"_s);
    EXPECT_EQ(fields[1]->text(), u"Play"_s);
    EXPECT_EQ(sheet()->findChild<QPlainTextEdit *>()->toPlainText(), u"To be,\nor not"_s);
    fields[0]->clear();
    EXPECT_FALSE(button(*sheet(), u"Save"_s)->isEnabled());
    QTest::keyClicks(fields[0], u"Macbeth"_s);
    QTest::keyClick(fields[0], Qt::Key_Return);
    EXPECT_FALSE(sheet());
    EXPECT_EQ(rows(), (QStringList{u"Faust"_s, u"Macbeth"_s}));
    ASSERT_TRUE(isColumnActive());
    EXPECT_TRUE(visible<ContextRow>(view())[1]->hasFocus());

    press(Qt::Key_Return);
    click(button(*sheet(), u"Remove"_s));
    EXPECT_FALSE(sheet());
    EXPECT_EQ(rows(), QStringList{u"Faust"_s});
    ASSERT_TRUE(isColumnActive());
    EXPECT_TRUE(visible<ContextRow>(view())[0]->hasFocus());
}

TEST_F(SessionContextViewTest, WhatIsNotChangedInTheSheetStaysAsItWas)
{
    show();
    const QString content = u"To be,\r\nor\u00A0not"_s;
    m_ai->setAttachedContexts({item(u"Hamlet"_s, u"Play"_s, content)});
    const auto edit = [this](const std::function<void(QLineEdit &, QPlainTextEdit &)> &change) {
        visible<ContextRow>(view()).constLast()->click();
        change(*sheet()->findChildren<QLineEdit *>().constFirst(), *sheet()->findChild<QPlainTextEdit *>());
        click(button(*sheet(), u"Save"_s));
        return m_ai->attachedContexts().constFirst();
    };

    const ContextItem renamed = edit([](QLineEdit &title, QPlainTextEdit &) { QTest::keyClicks(&title, u"!"_s); });
    EXPECT_EQ(renamed.name, u"Hamlet!"_s);
    EXPECT_EQ(renamed.content, content);

    const ContextItem undone = edit([](QLineEdit &, QPlainTextEdit &text) {
        QTest::keyClicks(&text, u"x"_s);
        text.undo();
    });
    EXPECT_EQ(undone.content, content);

    const ContextItem changed = edit([](QLineEdit &, QPlainTextEdit &text) {
        QTest::keyClicks(&text, u"x"_s);
        QTest::keyClick(&text, Qt::Key_Return, Qt::ShiftModifier);
    });
    EXPECT_EQ(changed.content, u"x\nTo be,\nor\u00A0not"_s) << "a protected space is no line break";
}

TEST_F(SessionContextViewTest, OfAHugeFileTheSheetShowsTheBeginningAndKeepsAll)
{
    show();
    const QString content = u"A line of a long file.\n"_s.repeated(50'000) + u"end"_s;
    m_ai->setAttachedContexts({item(u"huge.txt"_s, std::nullopt, content)});
    visible<ContextRow>(view()).constFirst()->click();
    auto *text = sheet()->findChild<QPlainTextEdit *>();
    EXPECT_TRUE(text->isReadOnly());
    const QString shown = text->toPlainText();
    EXPECT_EQ(shown.first(1'000'000), content.first(1'000'000));
    EXPECT_EQ(shown.sliced(1'000'000), u"\n… (%1 more characters)"_s.arg(content.size() - 1'000'000));
    QTest::keyClicks(sheet()->findChildren<QLineEdit *>().constFirst(), u"!"_s);
    click(button(*sheet(), u"Save"_s));
    EXPECT_EQ(m_ai->attachedContexts().constFirst().name, u"huge.txt!"_s);
    EXPECT_EQ(m_ai->attachedContexts().constFirst().content, content);
}

TEST_F(SessionContextViewTest, APopoverIsOpaqueWhereverItIsSeen)
{
    show();
    click(&add());
    ASSERT_TRUE(popover());
    QImage drawn(popover()->size(), QImage::Format_ARGB32_Premultiplied);
    drawn.fill(Qt::transparent);
    popover()->render(&drawn, QPoint(), QRegion(), QWidget::DrawChildren);
    const QRegion seen = popover()->mask();
    ASSERT_FALSE(seen.isEmpty());
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x)
            EXPECT_TRUE(!seen.contains(QPoint(x, y)) || drawn.pixelColor(x, y).alpha() == 255) << x << ", " << y;
}

TEST_F(SessionContextViewTest, WhatTakesTheFocusComesIntoViewWhereverTheFocusCameFrom)
{
    show();
    QStringList topics;
    QList<ContextItem> items;
    for (int i = 0; i < 20; ++i) {
        topics.append(u"A topic of some words %1"_s.arg(i));
        items.append(item(u"Item %1"_s.arg(i)));
    }
    m_ai->setSuggestedContexts(topics);
    m_ai->setAttachedContexts(items);
    const auto isInView = [](const QWidget *widget) {
        return widget->visibleRegion().boundingRect() == widget->rect();
    };
    ContextRow *row = visible<ContextRow>(view()).constLast();
    SuggestionChip *chip = visible<SuggestionChip>(view()).constLast();
    for (QWidget *each : {static_cast<QWidget *>(row), static_cast<QWidget *>(chip)}) {
        EXPECT_TRUE(eventually([&] { return !isInView(each); }));
        each->setFocus(Qt::BacktabFocusReason);
        EXPECT_TRUE(eventually([&] { return isInView(each); })) << each->accessibleName().toStdString();
    }

    row->setFocus(Qt::BacktabFocusReason); // and the one after an item that is renamed
    m_ai->setAttachedContexts(items.first(19) + QList{item(u"Renamed"_s)});
    EXPECT_TRUE(eventually([&] { return isInView(visible<ContextRow>(view()).constLast()); }));
}

TEST_F(SessionContextViewTest, RowsStayWhileOthersAreAttachedBehindThem)
{
    show();
    m_ai->setAttachedContexts({item(u"Faust"_s), item(u"Hamlet"_s)});
    const QList<ContextRow *> before = visible<ContextRow>(view());
    before[1]->setFocus(Qt::TabFocusReason);
    m_ai->setAttachedContexts({item(u"Faust"_s), item(u"Hamlet"_s), item(u"Othello"_s)});
    EXPECT_EQ(rows(), (QStringList{u"Faust"_s, u"Hamlet"_s, u"Othello"_s}));
    EXPECT_EQ(visible<ContextRow>(view()).first(2), before);
    EXPECT_TRUE(before[1]->hasFocus());

    m_ai->setAttachedContexts({item(u"Faust"_s), item(u"Othello"_s)});
    EXPECT_EQ(rows(), (QStringList{u"Faust"_s, u"Othello"_s}));
    EXPECT_TRUE(visible<ContextRow>(view())[1]->hasFocus());
}

TEST_F(SessionContextViewTest, AWheelOverTheSuggestionsScrollsThemSideways)
{
    show();
    QStringList topics;
    for (int i = 0; i < 20; ++i)
        topics.append(u"A topic of some words %1"_s.arg(i));
    m_ai->setSuggestedContexts(topics);
    SuggestionChip *chip = visible<SuggestionChip>(view()).constFirst();
    const SuggestionChip *last = visible<SuggestionChip>(view()).constLast();
    ASSERT_TRUE(eventually([last] { return last->visibleRegion().isEmpty(); })) << "laid out";
    const int before = chip->mapTo(&view(), QPoint()).x();
    const QPointF centre = chip->rect().center();
    QWheelEvent down(centre, chip->mapToGlobal(centre), QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                     Qt::NoScrollPhase, false);
    QApplication::sendEvent(chip->parentWidget()->parentWidget(), &down);
    EXPECT_LT(chip->mapTo(&view(), QPoint()).x(), before);
}

TEST_F(SessionContextViewTest, ManyReadingsScrollInThePopoverAndTheOtherWaysStayInReach)
{
    QStringList options;
    for (int i = 0; i < 40; ++i)
        options.append(uR"({"title":"Reading %1","subtitle":"","content":"c"})"_s.arg(i));
    QByteArray reply = uR"({"status":"ambiguous","options":[%1]})"_s.arg(options.join(u',')).toUtf8();
    reply.replace("\"", "\\\"");
    serve(R"({"replies":{"/v1/expand-concept":[{"body":")" + reply + R"("}]}})");
    show();
    click(&add());
    QTest::keyClicks(popover()->findChild<QLineEdit *>(), u"Hamlet"_s);
    press(Qt::Key_Return);
    ASSERT_TRUE(eventually([this] { return popover() && visible<ConceptOption>(*popover()).size() == 40; }));
    EXPECT_TRUE(eventually([this] { return popover()->height() < 600 && popover()->height() > 300; }));
    ConceptOption *last = visible<ConceptOption>(*popover()).constLast();
    last->setFocus(Qt::BacktabFocusReason);
    EXPECT_TRUE(eventually([last] { return last->visibleRegion().boundingRect() == last->rect(); }));
    click(last);
    EXPECT_EQ(rows(), QStringList{u"Reading 39"_s});
}

TEST_F(SessionContextViewTest, ANewCardIsWrittenOrGivenUp)
{
    show();
    for (const bool isSaved : {false, true}) {
        click(&add());
        click(button(*popover(), u"Add Custom Context..."_s));
        EXPECT_FALSE(popover());
        ASSERT_TRUE(sheet());
        EXPECT_EQ(sheet()->windowTitle(), u"Add Custom Session Context"_s);
        EXPECT_FALSE(hasButton(*sheet(), u"Remove"_s));
        const QList<QLineEdit *> fields = sheet()->findChildren<QLineEdit *>();
        EXPECT_EQ(fields[0]->placeholderText(), u"e.g. Hamlet"_s);
        EXPECT_EQ(fields[1]->placeholderText(), u"e.g. Play by Corin Halvard"_s);
        EXPECT_FALSE(button(*sheet(), u"Save"_s)->isEnabled());
        QTest::keyClicks(fields[0], u"Faust"_s);
        if (isSaved)
            click(button(*sheet(), u"Save"_s));
        else
            QTest::keyClick(sheet(), Qt::Key_Escape);
        EXPECT_FALSE(sheet());
        EXPECT_FALSE(m_panels->context.editingItem());
        ASSERT_TRUE(isColumnActive());
    }
    EXPECT_EQ(rows(), QStringList{u"Faust"_s});
}

TEST_F(SessionContextViewTest, ALikelyDuplicateIsAddedOnlyByItsButton)
{
    show();
    m_ai->setAttachedContexts({item(u"<b>Hamlet</b>"_s)});
    const auto attachAgain = [this] {
        m_panels->context.attachContextItem(item(u"<b>hamlet</b>"_s));
        ASSERT_TRUE(alert());
        EXPECT_EQ(alert()->text(), u"Likely Duplicate Detected"_s);
        EXPECT_EQ(alert()->informativeText(), u"A similar item '<b>Hamlet</b>' (Local File) is already attached. Do "
                                              "you still want to add '<b>hamlet</b>'?"_s);
    };
    attachAgain();
    QTest::keyClick(alert(), Qt::Key_Escape);
    EXPECT_FALSE(alert());
    EXPECT_FALSE(m_panels->context.isShowingDuplicateAlert());
    attachAgain();
    alert()->close();
    EXPECT_FALSE(m_panels->context.isShowingDuplicateAlert());
    attachAgain();
    click(button(*alert(), u"Cancel"_s));
    EXPECT_EQ(rows().size(), 1);
    attachAgain();
    click(button(*alert(), u"Add Anyway"_s));
    EXPECT_FALSE(alert());
    EXPECT_EQ(rows().size(), 2);
}

TEST_F(SessionContextViewTest, TheAlertAboutANameWithoutEndStaysOnTheScreen)
{
    show();
    m_ai->setAttachedContexts({item(u"Faust "_s + u"and so on "_s.repeated(2000))});
    m_panels->context.attachContextItem(item(u"Faust"_s));
    ASSERT_TRUE(alert());
    EXPECT_TRUE(alert()->informativeText().startsWith(u"A similar item 'Faust and so on and"_s));
    EXPECT_LT(alert()->informativeText().size(), 1100);
    alert()->reject();
    EXPECT_EQ(rows().size(), 1);
}

TEST_F(SessionContextViewTest, FilesAreAttachedByThePanelAndByADrop)
{
    m_files.write(u"b.txt"_s, "bbb");
    show();
    m_chosenFiles = {m_document};
    click(&add());
    click(button(*popover(), u"Attach Reference File..."_s));
    EXPECT_FALSE(popover());
    ASSERT_TRUE(eventually([this] { return rows() == QStringList{u"a.md"_s}; }));

    QMimeData dragged;
    dragged.setUrls({QUrl::fromLocalFile(m_files.url(u"b.txt"_s).path()), QUrl(u"https://example.org/x"_s)});
    QDragEnterEvent enter(QPoint(20, 150), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(20, 150), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view(), &drop);
    EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
    ASSERT_TRUE(eventually([this] { return rows() == QStringList({u"a.md"_s, u"b.txt"_s}); }));
}

TEST_F(SessionContextViewTest, TheColumnGoesWithEverythingOpen)
{
    show();
    m_ai->setAttachedContexts({item(u"Hamlet"_s)});
    m_panels->context.attachContextItem(item(u"Hamlet"_s));
    m_panels->context.editItem(item(u"Hamlet"_s));
    m_panels->context.setShowingAddContextPopover(true);
    ASSERT_TRUE(alert() && sheet() && popover());
    m_column.reset();
    m_ai->setAttachedContexts({}); // reaches nobody
}

} // namespace Tessaline
