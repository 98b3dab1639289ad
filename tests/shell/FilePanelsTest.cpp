#include "shell/FilePanels.h"

#include "tests/support/TemporaryFiles.h"

#include <QtCore/QSignalBlocker>
#include <QtCore/QTimer>
#include <QtGui/QFileSystemModel>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>

#include <gtest/gtest.h>

#include <functional>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// The panels, and a person who answers them.
class FilePanelsTest : public ::testing::Test
{
protected:
    FilePanelsTest() { m_panels.setWindow(&m_window); }

    /// What is done with the next panel once it is open. It is closed afterwards, whatever was done.
    void answerBy(const std::function<void(QFileDialog &)> &action)
    {
        QTimer::singleShot(0, &m_window, [this, action] {
            auto *panel = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            ASSERT_NE(panel, nullptr);
            m_wasOpen = true;
            action(*panel);
            if (panel->isVisible())
                panel->reject();
        });
    }

    /// Types a name and presses Return.
    static void answer(QFileDialog &panel, const QString &name)
    {
        auto *field = panel.findChild<QLineEdit *>();
        field->setText(name);
        QTest::keyClick(field, Qt::Key_Return);
    }

    const TemporaryFiles m_files{{u"notes/taken.md"_s, "taken"}};
    const FileURL m_folder = m_files.url(u"notes"_s);
    QWidget m_window;
    FilePanels m_panels;
    bool m_wasOpen = false;
};

} // namespace

TEST_F(FilePanelsTest, ANewDocumentIsProposedInTheFolderAsUntitled)
{
    answerBy([this](QFileDialog &panel) {
        EXPECT_EQ(panel.windowTitle(), u"New Document"_s);
        EXPECT_EQ(panel.acceptMode(), QFileDialog::AcceptSave);
        EXPECT_EQ(panel.directory().path(), m_folder.path());
        EXPECT_EQ(panel.findChild<QLineEdit *>()->text(), u"Untitled.md"_s);
        EXPECT_EQ(panel.nameFilters().first(2),
                  (QStringList{u"Markdown (*.md *.markdown)"_s, u"Plain text (*.txt *.text)"_s}));
        EXPECT_FALSE(panel.testOption(QFileDialog::ReadOnly)) << "folders can be made";
    });

    EXPECT_EQ(m_panels.askForNewDocument(m_folder), std::nullopt);
    EXPECT_TRUE(m_wasOpen);
}

TEST_F(FilePanelsTest, TheAnswerIsThePathAndNothingIsMadeYet)
{
    answerBy([](QFileDialog &panel) { answer(panel, u"fresh.md"_s); });

    EXPECT_EQ(m_panels.askForNewDocument(m_folder), m_files.url(u"notes/fresh.md"_s));
    EXPECT_FALSE(m_files.exists(u"notes/fresh.md"_s));
}

TEST_F(FilePanelsTest, ATypedPathCountsThoughAFolderOnTheWayIsStillSelected)
{
    answerBy([this](QFileDialog &panel) {
        auto *list = panel.findChild<QListView *>(u"listView"_s);
        const auto *model = panel.findChild<QFileSystemModel *>();
        auto *field = panel.findChild<QLineEdit *>();
        field->setText(m_files.url(u"notes/fresh.md"_s).path());
        {
            const QSignalBlocker unnoticed(list->selectionModel());
            list->selectionModel()->select(model->index(m_folder.path()),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
        ASSERT_EQ(panel.selectedFiles(), QStringList{m_folder.path()}) << "the panel takes the selection first";
        QTest::keyClick(field, Qt::Key_Return);
    });

    EXPECT_EQ(m_panels.askForNewDocument(m_folder), m_files.url(u"notes/fresh.md"_s));
}

TEST_F(FilePanelsTest, ANameWithoutAnExtensionIsMarkdown)
{
    answerBy([](QFileDialog &panel) { answer(panel, u"fresh"_s); });

    EXPECT_EQ(m_panels.askForNewDocument(m_folder), m_files.url(u"notes/fresh.md"_s));
}

TEST_F(FilePanelsTest, ANameWithoutAnExtensionGetsThatOfTheChosenKind)
{
    answerBy([](QFileDialog &panel) {
        panel.selectNameFilter(u"Plain text (*.txt *.text)"_s);
        Q_EMIT panel.filterSelected(panel.selectedNameFilter()); // as the choice by a person does
        answer(panel, u"fresh"_s);
    });
    EXPECT_EQ(m_panels.askForNewDocument(m_folder), m_files.url(u"notes/fresh.txt"_s));

    answerBy([](QFileDialog &panel) {
        panel.selectNameFilter(u"All files (*)"_s);
        Q_EMIT panel.filterSelected(panel.selectedNameFilter());
        answer(panel, u"fresh"_s);
    });
    EXPECT_EQ(m_panels.askForNewDocument(m_folder), m_files.url(u"notes/fresh"_s));
}

TEST_F(FilePanelsTest, OneFolderIsAskedForAndNoFile)
{
    answerBy([](QFileDialog &panel) {
        EXPECT_EQ(panel.windowTitle(), u"Add Project Folder"_s);
        EXPECT_EQ(panel.acceptMode(), QFileDialog::AcceptOpen);
        EXPECT_EQ(panel.fileMode(), QFileDialog::Directory) << "one, and a folder";
        EXPECT_TRUE(panel.testOption(QFileDialog::ShowDirsOnly));
    });

    EXPECT_EQ(m_panels.askForProjectFolder(), std::nullopt);
    EXPECT_TRUE(m_wasOpen);
}

TEST_F(FilePanelsTest, TheAnswerIsTheFolder)
{
    answerBy([this](QFileDialog &panel) { answer(panel, m_folder.path()); });

    EXPECT_EQ(m_panels.askForProjectFolder(), m_folder);
}

} // namespace Tessaline
