#include "editing/WYSIWYGEditor.h"

#include "tests/editing/OpenFormattedEditor.h"
#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// A question about a link, as a person finds it on the screen.
class Question
{
public:
    explicit Question(const OpenFormattedEditor &open) : m_dialog(open.editor.findChild<QDialog *>()) {}

    bool isThere() const { return m_dialog && m_dialog->isVisible(); }
    QString target() const { return m_dialog->findChild<QPlainTextEdit *>()->toPlainText(); }
    void press(const QString &button)
    {
        for (QPushButton *const candidate : m_dialog->findChildren<QPushButton *>()) {
            if (candidate->text().remove(u'&') == button)
                QTest::mouseClick(candidate, Qt::LeftButton);
        }
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    void pressKey(Qt::Key key)
    {
        QTest::keyClick(m_dialog, key);
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QDialog *dialog() const { return m_dialog; }

private:
    QPointer<QDialog> m_dialog;
};

void followLink(OpenFormattedEditor &open)
{
    open.click(open.rectOf(open.positionOf(u"here"_s) + 1).center(), Qt::ControlModifier);
}

QString linkTo(const QString &target)
{
    return u"go [here](%1) now"_s.arg(target);
}

class LinksThatOpenAtOnce : public testing::TestWithParam<const char16_t *>
{};

struct Target {
    const char *name;
    QString written;
    QString asked;  // what the question shows
    QString opened; // what is opened when it is answered
};

void PrintTo(const Target &target, std::ostream *out)
{
    *out << target.name;
}

class LinksThatAsk : public testing::TestWithParam<Target>
{};

} // namespace

TEST(WYSIWYGEditorLinks, APlainClickMovesTheCaretAndOpensNothing)
{
    OpenFormattedEditor open(linkTo(u"https://example.com"_s));

    open.click(open.pointAt(5));
    open.doubleClick(open.pointAt(5));

    EXPECT_EQ(open.view().document().selectedText(), u"here"_s);
    EXPECT_TRUE(open.takeOpenedLinks().isEmpty());
    EXPECT_FALSE(Question(open).isThere());
}

TEST(WYSIWYGEditorLinks, CtrlAndAClickBesideALinkMovesTheCaret)
{
    OpenFormattedEditor open(linkTo(u"https://example.com"_s));

    open.click(open.pointAt(1), Qt::ControlModifier);
    EXPECT_EQ(open.selection().caret, 1);
    open.click(open.pointAt(open.shown().size()) + QPoint(200, 0), Qt::ControlModifier);
    EXPECT_EQ(open.selection().caret, open.shown().size());
    open.click({300, 400}, Qt::ControlModifier);

    EXPECT_TRUE(open.takeOpenedLinks().isEmpty());
}

TEST(WYSIWYGEditorLinks, CtrlAndAClickLeaveTheCaretAndTheMarkdown)
{
    OpenFormattedEditor open(linkTo(u"https://example.com"_s));
    open.putCaret(1);

    followLink(open);

    EXPECT_EQ(open.takeOpenedLinks(), QStringList{u"https://example.com"_s});
    EXPECT_EQ(open.selection(), (TextSelection{1, 1}));
    EXPECT_EQ(open.editCount(), 0);
}

TEST(WYSIWYGEditorLinks, TheWholeTextOfALinkOpensItAndNothingBesideIt)
{
    OpenFormattedEditor open(u"a[bcd](https://example.com)e"_s);

    for (qsizetype i = 0; i < 5; ++i) {
        open.click(open.rectOf(i).center(), Qt::ControlModifier);
        EXPECT_EQ(open.takeOpenedLinks().size(), i > 0 && i < 4 ? 1 : 0) << i;
    }
}

TEST(WYSIWYGEditorLinks, ALinkAtTheEndIsNotHitBehindIt)
{
    OpenFormattedEditor open(u"[bcd](https://example.com)"_s);

    open.click(open.pointAt(3) + QPoint(60, 0), Qt::ControlModifier);

    EXPECT_TRUE(open.takeOpenedLinks().isEmpty());
}

TEST_P(LinksThatOpenAtOnce, AreHandedOnAsTheyStand)
{
    const QString target = QString::fromUtf16(GetParam());
    OpenFormattedEditor open(linkTo(target));

    followLink(open);

    EXPECT_EQ(open.takeOpenedLinks(), QStringList{QUrl(target).toString()});
    EXPECT_FALSE(Question(open).isThere());
}

INSTANTIATE_TEST_SUITE_P(WYSIWYGEditor, LinksThatOpenAtOnce,
                         testing::Values(u"https://example.com/a?b=c#d", u"http://example.com",
                                         u"mailto:someone@example.com", u"HTTPS://EXAMPLE.COM/A"));

TEST_P(LinksThatAsk, ShowTheWholeTargetFirst)
{
    OpenFormattedEditor open(linkTo(GetParam().written));

    followLink(open);

    EXPECT_TRUE(open.takeOpenedLinks().isEmpty());
    Question question(open);
    ASSERT_TRUE(question.isThere());
    EXPECT_EQ(question.target(), GetParam().asked);
    question.press(u"Open"_s);
    EXPECT_EQ(open.takeOpenedLinks(), QStringList{GetParam().opened});
    EXPECT_EQ(question.dialog(), nullptr);
    EXPECT_EQ(open.editCount(), 0);
}

TEST_P(LinksThatAsk, OpenNothingWhenTheQuestionIsDeclined)
{
    OpenFormattedEditor open(linkTo(GetParam().written));

    followLink(open);
    Question(open).press(u"Cancel"_s);
    EXPECT_FALSE(Question(open).isThere());
    followLink(open);
    Question(open).pressKey(Qt::Key_Escape);
    EXPECT_FALSE(Question(open).isThere());
    followLink(open);
    Question(open).pressKey(Qt::Key_Return); // declining is what a hasty Return does

    EXPECT_FALSE(Question(open).isThere());
    EXPECT_TRUE(open.takeOpenedLinks().isEmpty());
    EXPECT_TRUE(open.view().hasFocus());
}

INSTANTIATE_TEST_SUITE_P(
    WYSIWYGEditor, LinksThatAsk,
    testing::Values(
        Target{"AScript", u"javascript:alert(1"_s, u"javascript:alert(1"_s, u"javascript:alert(1"_s},
        Target{"AFile", u"file:///etc/passwd"_s, u"/etc/passwd"_s, u"file:///etc/passwd"_s},
        Target{"AnotherProgram", u"ssh://host/"_s, u"ssh://host/"_s, u"ssh://host/"_s},
        Target{"ThisProgram", u"tessaline://add-context?concept=x"_s, u"tessaline://add-context?concept=x"_s,
               u"tessaline://add-context?concept=x"_s},
        Target{"ANeighbour", u"other.md"_s, u"/tmp/folder/other.md"_s, u"file:///tmp/folder/other.md"_s},
        Target{"AFileAbove", u"../a/b.md"_s, u"/tmp/a/b.md"_s, u"file:///tmp/a/b.md"_s},
        Target{"AnAbsolutePath", u"/etc/hosts"_s, u"/etc/hosts"_s, u"file:///etc/hosts"_s},
        Target{"APathWithSpaces", u"my file.md"_s, u"/tmp/folder/my file.md"_s, u"file:///tmp/folder/my file.md"_s},
        Target{"AnEncodedPath", u"my%20file.md"_s, u"/tmp/folder/my file.md"_s, u"file:///tmp/folder/my file.md"_s},
        Target{"APathWithoutAScheme", u"www.example.com"_s, u"/tmp/folder/www.example.com"_s,
               u"file:///tmp/folder/www.example.com"_s},
        Target{"AHost", u"//host/share"_s, u"//host/share"_s, u"file://host/share"_s}),
    [](const testing::TestParamInfo<Target> &target) { return std::string(target.param.name); });

TEST(WYSIWYGEditorLinks, AVeryLongTargetIsShownWholeInAWindowOfOrdinarySize)
{
    const QString target = u"data:text/html,"_s + u"a"_s.repeated(20000) + u"z"_s;
    OpenFormattedEditor open(linkTo(target));

    followLink(open);
    open.settle();

    Question question(open);
    ASSERT_TRUE(question.isThere());
    EXPECT_EQ(question.target(), target);
    EXPECT_LE(question.dialog()->width(), 800);
    EXPECT_LE(question.dialog()->height(), 500);
}

TEST(WYSIWYGEditorLinks, SignsThatWouldHideATargetAreShownByTheirNumbers)
{
    OpenFormattedEditor open(linkTo(u"file:///tmp/\u202Efdp.sh\u200B"_s));

    followLink(open);

    EXPECT_EQ(Question(open).target(), u"/tmp/‹U+202E›fdp.sh‹U+200B›"_s);
}

TEST(WYSIWYGEditorLinks, ATargetIsNeverTakenForMarkup)
{
    OpenFormattedEditor open(linkTo(u"x:<b>bold</b><img src=y>"_s));

    followLink(open);

    EXPECT_EQ(Question(open).target(), u"x:<b>bold</b><img src=y>"_s);
}

TEST(WYSIWYGEditorLinks, AnEmptyTargetLeadsNowhere)
{
    OpenFormattedEditor open(linkTo(u""_s));

    followLink(open);

    EXPECT_TRUE(open.takeOpenedLinks().isEmpty());
    EXPECT_FALSE(Question(open).isThere());
}

TEST(WYSIWYGEditorLinks, AQuestionGoesWithItsEditor)
{
    auto open = std::make_unique<OpenFormattedEditor>(linkTo(u"other.md"_s));
    followLink(*open);
    const QPointer<QDialog> dialog = Question(*open).dialog();
    ASSERT_TRUE(dialog);

    open.reset();

    EXPECT_FALSE(dialog);
}

} // namespace Tessaline
