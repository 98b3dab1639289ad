#include "documents/EditorControlToolbar.h"

#include "documents/EditorFileInfo.h"
#include "documents/FontSizeAdjuster.h"
#include "documents/ThemePicker.h"
#include "documents/ViewModeSelector.h"
#include "tests/documents/ToolbarFixture.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class EditorControlToolbarTest : public ToolbarFixture
{
protected:
    template <class Part>
    Part *part() const
    {
        return m_toolbar.findChild<Part *>();
    }

    void setWidth(int width) { m_toolbar.resize(width, m_toolbar.height()); }
};

} // namespace

TEST_F(EditorControlToolbarTest, WideShowsTheProjectAndTheLabels)
{
    setWidth(m_toolbar.wideWidth());

    EXPECT_FALSE(m_toolbar.isCompact());
    EXPECT_TRUE(m_toolbar.findChild<Tag *>()->isVisible());
    EXPECT_NE(buttonNamed(m_toolbar, u"Markdown"_s), nullptr);
    EXPECT_NE(buttonNamed(m_toolbar, u"Dark"_s), nullptr);
}

TEST_F(EditorControlToolbarTest, ANarrowWindowHidesTheLabelsAndTheProjectButNoControl)
{
    setWidth(m_toolbar.wideWidth() - 1);

    EXPECT_TRUE(m_toolbar.isCompact());
    EXPECT_FALSE(m_toolbar.findChild<Tag *>()->isVisible());
    EXPECT_TRUE(showsText(m_toolbar, u"tides.md"_s));
    for (const QString &name :
         {u"Decrease Font Size (Cmd -)"_s, u"Increase Font Size (Cmd +)"_s,
          u"Edit the document directly without Markdown syntax"_s, u"Edit the Markdown source"_s,
          u"Show source and formatted editor side by side"_s, u"System Theme"_s, u"Light Theme"_s, u"Dark Theme"_s})
        EXPECT_NE(buttonNamed(m_toolbar, name), nullptr) << name.toStdString();
}

TEST_F(EditorControlToolbarTest, BecomesWideAgain)
{
    setWidth(500);
    ASSERT_TRUE(m_toolbar.isCompact());

    setWidth(1000);

    EXPECT_FALSE(m_toolbar.isCompact());
    EXPECT_TRUE(m_toolbar.findChild<Tag *>()->isVisible());
}

TEST_F(EditorControlToolbarTest, StandsFromLeftToRightWithItsPaddingAndSpacing)
{
    for (const int width : {1000, 520}) {
        setWidth(width);
        const int spacing = m_toolbar.isCompact() ? 10 : 12;
        const QRect info = part<EditorFileInfo>()->geometry();
        const QRect size = part<FontSizeAdjuster>()->geometry();
        const QRect mode = part<ViewModeSelector>()->geometry();
        const QRect theme = part<ThemePicker>()->geometry();

        EXPECT_EQ(info.left(), 16);
        EXPECT_EQ(theme.right() + 1, width - 16);
        EXPECT_EQ(mode.right() + 1 + spacing, theme.left());
        EXPECT_EQ(size.right() + 1 + spacing, mode.left());
        EXPECT_GE(size.left() - info.right() - 1, 2 * spacing + 8); // a gap of 8 between two spacings
        EXPECT_EQ(mode.top(), 8);
        EXPECT_EQ(m_toolbar.height() - mode.bottom() - 1, 8);
    }
}

TEST_F(EditorControlToolbarTest, TheFileInfoKeepsWithinItsWidths)
{
    EXPECT_EQ(EditorControlToolbar::kWide.minimumInfoWidth, 120);
    EXPECT_EQ(EditorControlToolbar::kWide.maximumInfoWidth, 220);
    EXPECT_EQ(EditorControlToolbar::kCompact.minimumInfoWidth, 80);
    EXPECT_EQ(EditorControlToolbar::kCompact.maximumInfoWidth, 180);

    m_toolbar.setFile(FileURL(u"/a.md"_s), std::nullopt);
    EXPECT_EQ(part<EditorFileInfo>()->width(), 120);
    m_toolbar.setFile(FileURL(u"/%1.md"_s.arg(QString(300, u'x'))), ProjectReference{m_root});
    setWidth(1400);
    EXPECT_EQ(part<EditorFileInfo>()->width(), 220);
    setWidth(700);
    EXPECT_EQ(part<EditorFileInfo>()->width(), 180);
    setWidth(m_toolbar.minimumSizeHint().width());
    EXPECT_EQ(part<EditorFileInfo>()->width(), 80);
}

TEST_F(EditorControlToolbarTest, FitsTheNarrowestColumn)
{
    EXPECT_LE(m_toolbar.minimumSizeHint().width(), 520);
}

TEST_F(EditorControlToolbarTest, TheToolTipIsThePathInsideTheProject)
{
    EXPECT_EQ(part<EditorFileInfo>()->toolTip(), u"chapters/tides.md"_s);
}

TEST_F(EditorControlToolbarTest, TheToolTipIsTheFullPathWithoutAProject)
{
    m_toolbar.setFile(m_url, std::nullopt);
    EXPECT_EQ(part<EditorFileInfo>()->toolTip(), m_url.path());
    EXPECT_FALSE(m_toolbar.findChild<Tag *>()->isVisible());

    m_toolbar.setFile(m_url, ProjectReference{FileURL(u"/elsewhere"_s)}); // it does not contain the file
    EXPECT_EQ(part<EditorFileInfo>()->toolTip(), m_url.path());
}

TEST_F(EditorControlToolbarTest, TheTagShowsTheNameOfTheProjectsFolder)
{
    EXPECT_EQ(m_toolbar.findChild<Tag *>()->text(), u"field-notes"_s);
}

TEST_F(EditorControlToolbarTest, APlainTextFileShowsTheOneSegmentPlainTextSelected)
{
    m_toolbar.setViewModes(availableViewModes(DocumentType::PlainText), ViewMode::PlainText);

    const auto segments = part<ViewModeSelector>()->findChildren<PlainButton *>();
    ASSERT_EQ(segments.size(), 1);
    EXPECT_TRUE(segments.first()->isChecked());
    EXPECT_EQ(accessibleText(segments.first(), QAccessible::Name), u"Plain Text"_s);
    EXPECT_EQ(accessibleText(segments.first(), QAccessible::Value), u"Selected"_s);
    EXPECT_EQ(segments.first()->toolTip(), u"Edit the plain-text document"_s);
}

TEST_F(EditorControlToolbarTest, AMarkdownFileShowsItsThreeModesInOrder)
{
    QStringList labels;
    for (const SegmentedControl::Item &item : part<ViewModeSelector>()->control().items())
        labels.append(item.label);

    EXPECT_EQ(labels, (QStringList{u"Editor"_s, u"Markdown"_s, u"Split"_s}));
}

TEST_F(EditorControlToolbarTest, AClickOnASegmentAsksForTheMode)
{
    QList<ViewMode> chosen;
    QObject::connect(&m_toolbar, &EditorControlToolbar::viewModeChosen, &m_toolbar,
                     [&chosen](ViewMode mode) { chosen.append(mode); });

    click(u"Split"_s);

    EXPECT_EQ(chosen, QList{ViewMode::Split});
}

TEST_F(EditorControlToolbarTest, AClickOnAThemeStoresIt)
{
    click(u"Dark"_s);

    EXPECT_EQ(m_stored.string(PreferenceKeys::kAppTheme), u"Dark"_s);
    EXPECT_TRUE(buttonNamed(m_toolbar, u"Dark"_s)->isChecked());
}

TEST_F(EditorControlToolbarTest, AThemeStoredElsewhereIsShownAtOnce)
{
    m_preferences.setAppTheme(AppTheme::Light);

    EXPECT_TRUE(buttonNamed(m_toolbar, u"Light"_s)->isChecked());
    EXPECT_FALSE(buttonNamed(m_toolbar, u"System"_s)->isChecked());
}

TEST_F(EditorControlToolbarTest, ThemesHaveTheirLabelAndTheWordThemeAsHelp)
{
    EXPECT_EQ(buttonNamed(m_toolbar, u"System"_s)->toolTip(), u"System Theme"_s);
    EXPECT_EQ(buttonNamed(m_toolbar, u"Light"_s)->toolTip(), u"Light Theme"_s);
    EXPECT_EQ(buttonNamed(m_toolbar, u"Dark"_s)->toolTip(), u"Dark Theme"_s);
}

TEST_F(EditorControlToolbarTest, TabWalksFromLeftToRight)
{
    m_toolbar.setViewModes(availableViewModes(DocumentType::PlainText), ViewMode::PlainText);
    buttonNamed(m_toolbar, u"Decrease Font Size (Cmd -)"_s)->setFocus(Qt::TabFocusReason);

    QStringList names;
    for (int step = 0; step < 3; ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        names.append(accessibleText(QApplication::focusWidget(), QAccessible::Name));
    }

    EXPECT_EQ(names, (QStringList{u"Increase Font Size (Cmd +)"_s, u"Plain Text"_s, u"System"_s}));
}

} // namespace Tessaline
