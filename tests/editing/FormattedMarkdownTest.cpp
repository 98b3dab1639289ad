#include "editing/FormattedMarkdown.h"

#include "editing/MarkdownRendering.h"
#include "editing/MarkdownWriting.h"
#include "foundation/BackgroundPool.h"
#include "tests/editing/AttributedTextPrinter.h"
#include "tests/editing/GeneratedMarkdown.h"
#include "tests/support/Printers.h"
#include "tests/support/Waiting.h"

#include <QtCore/QCoreApplication>

#include <gtest/gtest.h>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// A formatted text with its Markdown, and what an owner of the document hears.
class FormattedMarkdownOf : public ::testing::Test
{
protected:
    FormattedMarkdownOf()
    {
        QObject::connect(&m_markdown, &FormattedMarkdown::edited, &m_markdown,
                         [this](const ChunkedText &markdown, const TextChange &change) {
                             m_owner.replace(change.location, change.removed,
                                             markdown.sliced(change.location, change.inserted));
                             ++m_edits;
                         });
    }

    void open(const QString &markdown)
    {
        m_owner = ChunkedText(markdown);
        m_markdown.open(m_owner);
    }

    AttributedText shown() const { return m_text.document().sliced({0, m_text.document().size()}); }
    QString written() const { return m_owner.toString(); }

    void editElsewhere(qsizetype location, qsizetype removed, QStringView text)
    {
        const TextChange change = m_owner.replace(location, removed, text);
        m_markdown.followEdit(m_owner, change);
    }

    static bool isBeingPrepared() { return backgroundPool().activeThreadCount() > 0; }

    EditableText m_text;
    FormattedMarkdown m_markdown{m_text};
    ChunkedText m_owner; // follows the reported changes alone
    int m_edits = 0;
};

} // namespace

TEST_F(FormattedMarkdownOf, OpeningShowsTheMarkdownAndWritesNothing)
{
    const QString markdown = u"* a\r\n* b\n\n\n# x\n```js\ncode\n```\n"_s;

    open(markdown);

    EXPECT_EQ(shown(), renderMarkdown(markdown));
    EXPECT_EQ(m_markdown.markdown().toString(), markdown);
    EXPECT_EQ(m_edits, 0);
}

TEST_F(FormattedMarkdownOf, TheFirstEditWritesTheWholeDocumentInItsNormalForm)
{
    open(u"* a\r\n* b\n\n\ntext"_s);

    m_text.replace({shown().size(), 0}, u"!", EditKind::Typing);

    EXPECT_EQ(written(), u"- a\n- b\n\ntext!"_s);
    EXPECT_EQ(m_edits, 1);
}

TEST_F(FormattedMarkdownOf, UndoRestoresTheMarkdownOfTheStepBefore)
{
    open(u"# One\n\ntext"_s);
    m_text.replace({3, 0}, u"s", EditKind::Typing);
    const QString first = written();
    m_text.replace({0, 1}, u"", EditKind::Other);

    m_text.undo();

    EXPECT_EQ(written(), first);
    m_text.undo();
    EXPECT_EQ(written(), u"# One\n\ntext"_s);
}

TEST_F(FormattedMarkdownOf, ATypedLetterIsReportedAsALetter)
{
    open(u"# One\n\nsome **bold** text"_s);
    TextChange reported;
    QObject::connect(&m_markdown, &FormattedMarkdown::edited, &m_text,
                     [&reported](const ChunkedText &, const TextChange &change) { reported = change; });

    m_text.replace({5, 0}, u"x", EditKind::Typing);

    EXPECT_EQ(written(), u"# One\n\nsxome **bold** text"_s);
    EXPECT_EQ(reported, (TextChange{8, 0, 1}));
}

TEST_F(FormattedMarkdownOf, AnEditFromElsewhereMovesOnlyWhatDiffers)
{
    open(u"one\n\ntwo\n\nthree"_s);
    m_text.select({8, 13}); // "three"
    TextChange seen;
    QObject::connect(&m_text, &EditableText::changed, &m_text, [&seen](const TextChange &change) { seen = change; });
    ChunkedText markdown = m_owner;
    const TextChange change = markdown.replace(5, 3, u"**two**");

    m_markdown.followEdit(markdown, change);

    EXPECT_EQ(shown(), renderMarkdown(markdown.toString()));
    EXPECT_EQ(seen, (TextChange{4, 3, 3}));
    EXPECT_EQ(m_text.selectedText(), u"three"_s);
    EXPECT_EQ(m_edits, 0);
}

TEST_F(FormattedMarkdownOf, AFenceThatIsOpenedTakesEverythingBehindIt)
{
    open(u"one\n\ntwo\n\nthree\n\nfour"_s);
    ChunkedText markdown = m_owner;
    const TextChange change = markdown.replace(5, 0, u"```\n");

    m_markdown.followEdit(markdown, change);

    EXPECT_EQ(shown(), renderMarkdown(markdown.toString()));
}

TEST_F(FormattedMarkdownOf, ALargeDocumentIsReadInPartsAsIfInOne)
{
    GeneratedMarkdown random(5);
    QString markdown = random.document(30'000);
    markdown.insert(markdown.size() / 2, QString(700'000, u'\n')); // whole parts of nothing
    markdown.prepend(QString(300'000, u'\n'));

    open(markdown);

    ASSERT_GT(markdown.size(), 1'000'000);
    EXPECT_EQ(shown(), renderMarkdown(m_owner.toString()));
    for (const qsizetype place : {markdown.size() - 40, markdown.size() / 2, qsizetype(310'000), qsizetype(10)}) {
        ChunkedText changed = m_markdown.markdown();
        const TextChange change = changed.replace(changed.size() <= place ? 0 : place, 0, u"\n\nnew\n\n");
        m_markdown.followEdit(changed, change);
        EXPECT_EQ(shown(), renderMarkdown(changed.toString())) << place;
    }
}

TEST_F(FormattedMarkdownOf, TheNormalFormOfALargeDocumentIsMadeAheadAndWritesNothing)
{
    GeneratedMarkdown random(6);
    open(random.document(12'000));
    const ChunkedText markdown = m_owner;
    ASSERT_GE(markdown.size(), FormattedMarkdown::kLeastPrepared);
    ASSERT_FALSE(m_markdown.isPrepared());

    ASSERT_TRUE(eventually([this] { return m_markdown.isPrepared(); }));

    EXPECT_EQ(m_edits, 0);
    EXPECT_EQ(m_markdown.markdown(), markdown);
    m_text.replace({m_text.document().size() / 2, 0}, u"x", EditKind::Typing);
    EXPECT_EQ(written(), ChunkedText(serializeMarkdown(shown())).toString());
    m_text.undo();
    EXPECT_EQ(written(), ChunkedText(serializeMarkdown(renderMarkdown(markdown.toString()))).toString());
}

TEST_F(FormattedMarkdownOf, AnEditBeforeTheNormalFormIsMadeWritesTheSame)
{
    GeneratedMarkdown random(6);
    open(random.document(12'000));

    m_text.replace({m_text.document().size() / 2, 0}, u"x", EditKind::Typing);

    EXPECT_EQ(written(), ChunkedText(serializeMarkdown(shown())).toString());
}

TEST_F(FormattedMarkdownOf, AnEditWhileTheNormalFormIsMadeWritesTheSame)
{
    GeneratedMarkdown random(6);
    open(random.document(12'000));
    ASSERT_TRUE(eventually([this] { return isBeingPrepared() || m_markdown.isPrepared(); }));

    m_text.replace({m_text.document().size() / 2, 0}, u"x", EditKind::Typing);
    m_text.replace({0, 0}, u"y", EditKind::Typing);

    EXPECT_EQ(written(), ChunkedText(serializeMarkdown(shown())).toString());
    EXPECT_TRUE(backgroundPool().waitForDone());
    QCoreApplication::processEvents();
    m_text.replace({1, 0}, u"z", EditKind::Typing);
    EXPECT_EQ(written(), ChunkedText(serializeMarkdown(shown())).toString());
}

TEST_F(FormattedMarkdownOf, AnEditFromElsewhereOutdatesTheNormalForm)
{
    GeneratedMarkdown random(6);
    open(random.document(12'000));
    ASSERT_TRUE(eventually([this] { return m_markdown.isPrepared(); }));

    editElsewhere(0, 0, u"new\n\n");

    EXPECT_FALSE(m_markdown.isPrepared());
    m_text.replace({m_text.document().size(), 0}, u"x", EditKind::Typing);
    EXPECT_EQ(written(), ChunkedText(serializeMarkdown(shown())).toString());
    EXPECT_TRUE(written().startsWith(u"new\n\n"));
}

TEST_F(FormattedMarkdownOf, AnotherDocumentWhileTheNormalFormIsMadeForgetsIt)
{
    GeneratedMarkdown random(6);
    open(random.document(12'000));
    ASSERT_TRUE(eventually([this] { return m_markdown.isPrepared(); }));
    open(random.document(11'000));
    ASSERT_FALSE(m_markdown.isPrepared());

    open(u"* small"_s);
    QCoreApplication::processEvents();
    m_text.replace({m_text.document().size(), 0}, u"!", EditKind::Typing);

    EXPECT_EQ(written(), u"- small!"_s);
}

TEST_F(FormattedMarkdownOf, MayGoWhileTheNormalFormIsMade)
{
    GeneratedMarkdown random(6);
    const ChunkedText markdown(random.document(12'000));
    EditableText text;
    auto formatted = std::make_unique<FormattedMarkdown>(text);
    formatted->open(markdown);
    ASSERT_TRUE(eventually([&formatted] { return isBeingPrepared() || formatted->isPrepared(); }));

    formatted.reset();

    EXPECT_TRUE(backgroundPool().waitForDone());
    QCoreApplication::processEvents();
}

/// What of the shown text has changed, all in all.
class ShownChanges
{
public:
    explicit ShownChanges(EditableText &text)
    {
        QObject::connect(&text, &EditableText::changed, &m_guard,
                         [this](const TextChange &change) { m_changes.append(change); });
    }
    const QList<TextChange> &list() const { return m_changes; }

private:
    QObject m_guard;
    QList<TextChange> m_changes;
};

TEST_F(FormattedMarkdownOf, AChangedLineOfCodeIsExchangedAlone)
{
    open(u"text\n\n```js\none\ntwo\nthree\n```\n\nend"_s);
    const ShownChanges changes(m_text);

    editElsewhere(17, 0, u"x"); // in "two"

    EXPECT_EQ(changes.list(), (QList<TextChange>{{10, 0, 1}}));
    EXPECT_EQ(shown(), renderMarkdown(m_owner.toString()));
}

TEST_F(FormattedMarkdownOf, WhatStandsBehindCodeMayGo)
{
    for (const QString &rest : {u""_s, u"\n\n"_s, u"```"_s, u"\n```js\n"_s}) {
        open(u"```\none\n```\n\nend"_s);

        editElsewhere(12, 4, rest);

        EXPECT_EQ(shown(), renderMarkdown(m_owner.toString())) << rest.toStdString();
        editElsewhere(m_owner.size(), 0, u"\n\nx");
        editElsewhere(5, 0, u"y");
        EXPECT_EQ(shown(), renderMarkdown(m_owner.toString())) << rest.toStdString();
    }
}

TEST_F(FormattedMarkdownOf, LinesOfCodeComeAndGo)
{
    const QString markdown = u"text\n\n```\none\ntwo\nthree\n```\n\nend"_s; // "one" at 10, "```" at 24
    for (const auto &[location, removed, inserted] : {std::tuple<qsizetype, qsizetype, QString>{10, 0, u"zero\n"_s},
                                                      {14, 4, u""_s},
                                                      {15, 1, u"\n\n\n"_s},
                                                      {14, 3, u"a\u2029b\u2028c"_s},
                                                      {10, 14, u""_s}, // all of them
                                                      {13, 1, u""_s},
                                                      {14, 3, u"``"_s},
                                                      {14, 3, u"```"_s},
                                                      {14, 0, u"x\n  ```y\n"_s},
                                                      {13, 5, u"\r"_s},
                                                      {9, 1, u""_s},    // the first joins the opening line
                                                      {23, 1, u""_s},   // the last joins the closing one
                                                      {24, 1, u""_s},   // there is none any more
                                                      {6, 1, u""_s},    // nor an opening one
                                                      {8, 5, u"`\n"_s}, // another opening line
                                                      {6, 22, u"x"_s}}) {
        open(markdown);
        editElsewhere(location, removed, inserted);
        EXPECT_EQ(shown(), renderMarkdown(m_owner.toString())) << location;
        // What the paragraphs are known to be read from still holds.
        editElsewhere(m_owner.size() - 1, 0, u"x");
        editElsewhere(std::min<qsizetype>(14, m_owner.size()), 0, u"y");
        EXPECT_EQ(shown(), renderMarkdown(m_owner.toString())) << location;
    }
}

/// The place itself, or the one behind a surrogate pair that it would part: no change in a document parts one.
qsizetype wholePair(const ChunkedText &text, qsizetype at)
{
    return at < text.size() && text.at(at).isLowSurrogate() ? at + 1 : at;
}

/// Both directions on generated documents: the incremental forms equal the plain ones.
class GeneratedFormattedEdits : public ::testing::TestWithParam<int>
{};

TEST_P(GeneratedFormattedEdits, FollowingTheMarkdownEqualsReadingAllOfIt)
{
    GeneratedMarkdown random(static_cast<unsigned>(GetParam()));
    EditableText text;
    FormattedMarkdown formatted(text);
    ChunkedText markdown{random.document(random.below(60))};
    formatted.open(markdown);
    ASSERT_EQ(text.document().sliced({0, text.document().size()}), renderMarkdown(markdown.toString()));
    for (int edit = 0; edit < 40; ++edit) {
        const qsizetype location = wholePair(markdown, random.below(markdown.size() + 1));
        const qsizetype reach = location + random.below(edit % 5 == 0 ? 200 : 4);
        const qsizetype removed = wholePair(markdown, std::min(reach, markdown.size())) - location;
        const QString piece = edit % 4 == 0 ? random.document(random.below(6)) : random.noise(random.below(3));
        const ChunkedText before = markdown;
        const TextChange change = markdown.replace(location, removed, piece);
        formatted.followEdit(markdown, change);
        ASSERT_EQ(text.document().sliced({0, text.document().size()}), renderMarkdown(markdown.toString()))
            << "edit " << edit << " at " << location << " of\n"
            << before.toString().toStdString();
        ASSERT_EQ(formatted.markdown(), markdown);
    }
}

TEST_P(GeneratedFormattedEdits, FollowingInsideOfCodeEqualsReadingAllOfIt)
{
    GeneratedMarkdown random(static_cast<unsigned>(GetParam()));
    const auto lines = [&random] {
        QString code;
        for (qsizetype i = random.below(12); i > 0; --i)
            code += random.inlineNoise(random.below(3)).remove(u"```"_s) + (random.oneIn(60) ? u"\r\n"_s : u"\n"_s);
        return code;
    };
    EditableText text;
    FormattedMarkdown formatted(text);
    ChunkedText markdown{random.document(random.below(3))};
    for (int block = 0; block < 3; ++block)
        markdown.replace(markdown.size(), 0,
                         u"\n\n```js\n"_s + lines() + (block == 2 && random.oneIn(2) ? QString() : u"```\n"_s));
    formatted.open(markdown);
    for (int edit = 0; edit < 60; ++edit) {
        const qsizetype location = wholePair(markdown, random.below(markdown.size() + 1));
        const qsizetype reach = location + random.below(edit % 5 == 0 ? 30 : 3);
        const qsizetype removed = wholePair(markdown, std::min(reach, markdown.size())) - location;
        const QString piece = edit % 9 == 0 ? u"```\n"_s : edit % 3 == 0 ? lines() : random.inlineNoise(1);
        const QString before = markdown.toString();
        const TextChange change = markdown.replace(location, removed, piece);
        formatted.followEdit(markdown, change);
        ASSERT_EQ(text.document().sliced({0, text.document().size()}), renderMarkdown(markdown.toString()))
            << "edit " << edit << " at " << location << " of\n"
            << before.toStdString();
    }
    // What the paragraphs are known to be read from is still right.
    text.replace({0, 0}, u"x", EditKind::Typing);
    ASSERT_EQ(formatted.markdown(),
              ChunkedText(serializeMarkdown(text.document().sliced({0, text.document().size()}))));
}

TEST_P(GeneratedFormattedEdits, WritingWhatAnEditTouchedEqualsWritingAllOfIt)
{
    GeneratedMarkdown random(static_cast<unsigned>(GetParam()));
    EditableText text;
    FormattedMarkdown formatted(text);
    ChunkedText owner{random.document(random.below(40))};
    formatted.open(owner);
    bool isWritten = false;
    QObject::connect(&formatted, &FormattedMarkdown::edited, &text,
                     [&](const ChunkedText &whole, const TextChange &change) {
                         owner.replace(change.location, change.removed, whole.sliced(change.location, change.inserted));
                         isWritten = true;
                     });
    for (int edit = 0; edit < 60; ++edit) {
        const qsizetype size = text.document().size();
        const qsizetype location = wholePair(text.text(), random.below(size + 1));
        const TextRange range{location, std::min(random.below(edit % 5 == 0 ? 60 : 3), size - location)};
        if (edit % 7 == 6)
            text.undo();
        else if (edit % 3 == 0)
            text.replace(range, random.attributedText(random.below(5)), TextSelection{location, location});
        else
            text.replace(range, random.noise(random.below(3)), EditKind::Typing);
        if (isWritten) {
            // Through a ChunkedText, which takes no half of a surrogate pair that a generated attribute may hold.
            ASSERT_EQ(owner, ChunkedText(serializeMarkdown(text.document().sliced({0, text.document().size()}))))
                << "edit " << edit;
            ASSERT_EQ(formatted.markdown(), owner);
        }
        if (edit % 20 == 19) {
            // The Markdown changes elsewhere and is shown anew.
            const TextChange change =
                owner.replace(wholePair(owner, random.below(owner.size() + 1)), 0, u"new **text**\n\n");
            formatted.followEdit(owner, change);
            ASSERT_EQ(text.document().sliced({0, text.document().size()}), renderMarkdown(owner.toString()));
            isWritten = false;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(FormattedMarkdown, GeneratedFormattedEdits, ::testing::Range(1, 60));

} // namespace Tessaline
