#include "tests/documents/EditorAreaFixture.h"

/// What the editor area decides apart from loading: edits, saves, modes, sizes, failures.
namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class EditorAreaTest : public EditorAreaFixture
{
protected:
    void postSaveFailure(const FileURL &url, const QString &message)
    {
        m_events.post(AppEvents::kDocumentSaveFailed,
                      {{AppEvents::kUrl, QVariant::fromValue(url)}, {AppEvents::kMessage, message}});
    }
};

} // namespace

// Edits

TEST_F(EditorAreaTest, AnEditIsTakenAtOnceAndToldToTheOtherEditors)
{
    m_area->appear();
    open(m_a);
    QSignalSpy edited(m_area.get(), &EditorArea::textEdited);
    const QObject editor;
    ChunkedText text = m_area->text(m_a);
    const TextChange change = text.replace(0, 4, u"words");

    m_area->setText(m_a, text, change, &editor);

    EXPECT_EQ(shown(m_a), u"words of a"_s);
    ASSERT_EQ(edited.count(), 1);
    EXPECT_EQ(edited.at(0).at(0).value<FileURL>(), m_a);
    EXPECT_EQ(edited.at(0).at(1).value<TextChange>(), (TextChange{0, 4, 5}));
    EXPECT_EQ(edited.at(0).at(2).value<const QObject *>(), &editor);
}

TEST_F(EditorAreaTest, AnEditIsSavedAfterTheDelay)
{
    DocumentStore store(m_events, m_disk, std::chrono::milliseconds(20));
    EditorArea area(
        {m_workspace, m_preferences, store, m_events, m_disk, [](const FileURL &) { return std::nullopt; }});

    area.setText(m_a, ChunkedText(u"typed"), {0, 0, 5}, nullptr);

    EXPECT_TRUE(eventually([&] { return m_disk.text(m_a) == u"typed"_s; }));
}

TEST_F(EditorAreaTest, AWriteOfAnEqualTextIsSavedToo)
{
    m_area->appear();
    open(m_a);

    m_area->setText(m_a, m_area->text(m_a), {0, 0, 0}, nullptr);
    ASSERT_TRUE(finishes(m_store.flushAll()));

    EXPECT_EQ(m_disk.textsWritten(m_a), QList<QString>{u"text of a"_s});
}

TEST_F(EditorAreaTest, AnUnknownTextReadsAsEmpty)
{
    EXPECT_FALSE(m_area->hasText(m_a));
    EXPECT_TRUE(m_area->text(m_a).isEmpty());
}

// Saves

TEST_F(EditorAreaTest, SwitchingFilesSavesTheLeftOneWithoutWaitingForTheDelayAndKeepsItsText)
{
    m_area->appear();
    open(m_a);
    type(m_a, u", edited"_s);

    m_workspace.openFile(m_b);

    EXPECT_TRUE(eventually([&] { return m_disk.text(m_a) == u"text of a, edited"_s; }));
    EXPECT_EQ(shown(m_a), u"text of a, edited"_s);
}

TEST_F(EditorAreaTest, ClosingTheActiveFileSavesIt)
{
    m_area->appear();
    open(m_a);
    type(m_a, u"!"_s);

    m_workspace.closeFile(m_a);

    EXPECT_TRUE(eventually([&] { return m_disk.text(m_a) == u"text of a!"_s; }));
}

TEST_F(EditorAreaTest, LeavingTheForegroundSavesEverything)
{
    m_area->appear();
    open(m_a);
    type(m_a, u"!"_s);
    type(m_b, u"?"_s);

    m_area->applicationDeactivated();

    EXPECT_TRUE(eventually([&] { return m_disk.text(m_a) == u"text of a!"_s && m_disk.text(m_b) == u"?"_s; }));
}

TEST_F(EditorAreaTest, GoingAwaySavesEverything)
{
    m_area->appear();
    open(m_a);
    type(m_a, u"!"_s);

    m_area->disappear();

    EXPECT_TRUE(eventually([&] { return m_disk.text(m_a) == u"text of a!"_s; }));
}

// View modes

TEST_F(EditorAreaTest, AMarkdownFileHasThreeModesAndShowsTheStoredOne)
{
    m_preferences.setViewMode(ViewMode::Split);
    m_area->appear();
    open(m_a);

    EXPECT_EQ(m_area->activeDocumentType(), DocumentType::Markdown);
    EXPECT_EQ(m_area->availableViewModes(),
              (QList<ViewMode>{ViewMode::Editor, ViewMode::RawMarkdown, ViewMode::Split}));
    EXPECT_EQ(m_area->viewMode(), ViewMode::Split);
}

TEST_F(EditorAreaTest, APlainTextFileShowsPlainTextAndThePreferenceKeepsSplit)
{
    m_preferences.setViewMode(ViewMode::Split);
    m_area->appear();
    open(m_plain);

    EXPECT_EQ(m_area->availableViewModes(), QList<ViewMode>{ViewMode::PlainText});
    EXPECT_EQ(m_area->viewMode(), ViewMode::PlainText);
    EXPECT_EQ(m_stored.string(u"editorViewModeV2"_s), u"split"_s);

    open(m_a);
    EXPECT_EQ(m_area->viewMode(), ViewMode::Split);
}

TEST_F(EditorAreaTest, AFileWithoutATypeIsShownAsPlainText)
{
    m_files.write(u"image.bin"_s, QByteArray("\0\1", 2));
    m_disk.setText(m_files.url(u"image.bin"_s), u"text"_s);
    m_area->appear();

    m_workspace.setActiveFileURL(m_files.url(u"image.bin"_s));

    EXPECT_EQ(m_area->activeDocumentType(), std::nullopt);
    EXPECT_EQ(m_area->availableViewModes(), QList<ViewMode>{ViewMode::PlainText});
    EXPECT_EQ(m_area->viewMode(), ViewMode::PlainText);
}

TEST_F(EditorAreaTest, TheModeOfAPlainTextFileIsStoredAsItIsWhenItIsChosen)
{
    m_area->appear();
    open(m_plain);

    m_area->setViewMode(ViewMode::PlainText);

    EXPECT_EQ(m_stored.string(u"editorViewModeV2"_s), u"plainText"_s);
    open(m_a);
    EXPECT_EQ(m_area->viewMode(), ViewMode::Editor); // not available: the first that is
}

TEST_F(EditorAreaTest, AChangeOfTheModeIsTold)
{
    m_area->appear();
    open(m_a);
    QSignalSpy presented(m_area.get(), &EditorArea::presentationChanged);

    m_area->setViewMode(ViewMode::RawMarkdown);

    EXPECT_EQ(presented.count(), 1);
    EXPECT_EQ(m_area->viewMode(), ViewMode::RawMarkdown);
}

TEST_F(EditorAreaTest, TheTypeIsDecidedOncePerActivation)
{
    m_files.write(u"notes"_s, "text");
    const FileURL notes = m_files.url(u"notes"_s);
    m_disk.setText(notes, u"text"_s);
    m_area->appear();
    m_workspace.setActiveFileURL(notes);
    ASSERT_EQ(m_area->activeDocumentType(), DocumentType::PlainText);

    m_files.write(u"notes"_s, QByteArray("\0", 1));
    EXPECT_EQ(m_area->activeDocumentType(), DocumentType::PlainText);

    m_workspace.setActiveFileURL(m_a);
    m_workspace.setActiveFileURL(notes);
    EXPECT_EQ(m_area->activeDocumentType(), std::nullopt);
}

// Project

TEST_F(EditorAreaTest, TheProjectIsThatOfTheEntryAndOtherwiseThatOfThePath)
{
    const ProjectReference outer{FileURL(u"/docs"_s)};
    const ProjectReference other{FileURL(u"/elsewhere"_s)};
    EXPECT_EQ(m_area->activeProject(), std::nullopt);

    m_workspace.setProjects({outer, other});
    m_workspace.setActiveFileURL(m_a); // no entry
    EXPECT_EQ(m_area->activeProject(), outer);

    m_workspace.setOpenFiles({{m_a, other}});
    EXPECT_EQ(m_area->activeProject(), other);

    m_workspace.setOpenFiles({{m_a, std::nullopt}});
    EXPECT_EQ(m_area->activeProject(), outer);

    m_workspace.setProjects({});
    EXPECT_EQ(m_area->activeProject(), std::nullopt);
}

// Text size

TEST_F(EditorAreaTest, TheZoomEventsChangeTheSizeByOneStepWithinItsBounds)
{
    m_area->appear();
    m_events.post(AppEvents::kZoomInFont);
    EXPECT_EQ(m_preferences.editorFontSize(), 18.0);

    m_stored.set(u"editorFontSize"_s, 40.0);
    m_events.post(AppEvents::kZoomInFont);
    EXPECT_EQ(m_preferences.editorFontSize(), 40.0);

    m_stored.set(u"editorFontSize"_s, 10.0);
    m_events.post(AppEvents::kZoomOutFont);
    EXPECT_EQ(m_preferences.editorFontSize(), 10.0);
}

TEST_F(EditorAreaTest, ASizeOutsideTheBoundsStaysUntilItIsMovedBackStepByStep)
{
    m_area->appear();
    m_stored.set(u"editorFontSize"_s, 42.0);

    m_events.post(AppEvents::kZoomInFont);
    EXPECT_EQ(m_preferences.editorFontSize(), 42.0);
    m_events.post(AppEvents::kZoomOutFont);
    EXPECT_EQ(m_preferences.editorFontSize(), 41.0);
}

TEST_F(EditorAreaTest, EventsGoUnheardBeforeItAppearsAfterItHasGoneAndWithoutIt)
{
    m_answer = m_files.url(u"new.md"_s);
    const auto postAll = [this] {
        m_events.post(AppEvents::kZoomInFont);
        m_events.post(AppEvents::kCreateNewDocument);
        postSaveFailure(m_a, u"No."_s);
    };

    postAll();
    m_area->appear();
    m_area->disappear();
    postAll();
    EXPECT_EQ(m_area->saveErrorMessage(), std::nullopt);
    m_area.reset();
    postAll();

    EXPECT_EQ(m_preferences.editorFontSize(), 17.0);
    EXPECT_TRUE(m_askedIn.isEmpty());
}

// Failed saves

TEST_F(EditorAreaTest, AFailedSaveRaisesTheAlertAndLosesNothing)
{
    m_area->appear();
    open(m_a);
    QSignalSpy changed(m_area.get(), &EditorArea::saveErrorMessageChanged);
    m_disk.failWrites(m_a, {FailureKind::NoSpace, u"There is no space left on the disk."_s});

    type(m_a, u"!"_s);
    m_area->applicationDeactivated();
    ASSERT_TRUE(eventually([&] { return changed.count() == 1; }));

    EXPECT_EQ(m_area->saveErrorMessage(), u"a.md: There is no space left on the disk."_s);
    EXPECT_EQ(m_area->state(), EditorAreaState::Ready);
    EXPECT_EQ(shown(m_a), u"text of a!"_s);
    m_area->dismissSaveError();
    EXPECT_EQ(m_area->saveErrorMessage(), std::nullopt);
    EXPECT_EQ(changed.count(), 2);

    m_disk.allowWrites(m_a);
    ASSERT_TRUE(finishes(m_store.flushAll()));
    EXPECT_EQ(m_disk.text(m_a), u"text of a!"_s);
}

TEST_F(EditorAreaTest, OfTwoFailuresBeforeTheAlertIsDismissedTheLaterIsShown)
{
    m_area->appear();

    postSaveFailure(m_a, u"First."_s);
    postSaveFailure(m_b, u"Second."_s);

    EXPECT_EQ(m_area->saveErrorMessage(), u"b.md: Second."_s);
    m_area->dismissSaveError();
    EXPECT_EQ(m_area->saveErrorMessage(), std::nullopt);
}

TEST_F(EditorAreaTest, AFailureWithAMissingOrMistypedValueRaisesNoAlert)
{
    m_area->appear();

    m_events.post(AppEvents::kDocumentSaveFailed);
    m_events.post(AppEvents::kDocumentSaveFailed, {{AppEvents::kUrl, QVariant::fromValue(m_a)}});
    m_events.post(AppEvents::kDocumentSaveFailed, {{AppEvents::kMessage, u"No."_s}});
    m_events.post(AppEvents::kDocumentSaveFailed, {{AppEvents::kUrl, m_a.path()}, {AppEvents::kMessage, u"No."_s}});
    m_events.post(AppEvents::kDocumentSaveFailed,
                  {{AppEvents::kUrl, QVariant::fromValue(m_a)}, {AppEvents::kMessage, 7}});

    EXPECT_EQ(m_area->saveErrorMessage(), std::nullopt);
}

} // namespace Tessaline
