#include "shell/ContentView.h"

#include "tests/shell/OpenWindow.h"

#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QDragEnterEvent>
#include <QtGui/QDropEvent>
#include <QtWidgets/QAbstractScrollArea>

namespace Tessaline {
namespace {

using namespace Qt::StringLiterals;

class Drop : public OpenWindow
{
protected:
    /// Answers whether the drop was taken.
    bool drop(const QMimeData &dragged)
    {
        QDragEnterEvent enter(QPoint(600, 300), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton,
                              Qt::NoModifier);
        QCoreApplication::sendEvent(&m_window.content(), &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent event(QPointF(600, 300), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        QCoreApplication::sendEvent(&m_window.content(), &event);
        EXPECT_TRUE(!event.isAccepted() || event.dropAction() == Qt::CopyAction);
        return event.isAccepted();
    }
    bool dropUrls(const QList<QUrl> &urls)
    {
        QMimeData dragged;
        dragged.setUrls(urls);
        return drop(dragged);
    }
    QUrl url(const QString &name) const { return QUrl::fromLocalFile(m_files.url(name).path()); }
    QStringList openFiles() const
    {
        QStringList names;
        for (const OpenFileReference &file : m_workspace.openFiles())
            names.append(file.url.lastPathComponent());
        return names;
    }
};

TEST_F(Drop, OpensTheFile)
{
    open();
    EXPECT_TRUE(dropUrls({url(u"a.md"_s)}));
    EXPECT_EQ(m_workspace.activeFileURL(), m_files.url(u"a.md"_s));
}

TEST_F(Drop, OfThreeFilesOpensTheFirstOnly)
{
    m_files.write(u"b.md"_s, "");
    m_files.write(u"c.md"_s, "");
    open();
    EXPECT_TRUE(dropUrls({url(u"b.md"_s), url(u"a.md"_s), url(u"c.md"_s)}));
    EXPECT_EQ(openFiles(), QStringList{u"b.md"_s});
}

TEST_F(Drop, OfTheSameFileTwiceKeepsOneEntryInItsPlace)
{
    m_files.write(u"b.md"_s, "");
    open();
    for (const QString &name : {u"a.md"_s, u"b.md"_s, u"a.md"_s})
        dropUrls({url(name)});
    EXPECT_EQ(openFiles(), (QStringList{u"a.md"_s, u"b.md"_s}));
    EXPECT_EQ(m_workspace.activeFileURL(), m_files.url(u"a.md"_s));
}

TEST_F(Drop, OfABinaryFileDoesNothing)
{
    m_files.write(u"picture.bin"_s, QByteArray("\0\1\2", 3));
    open();
    dropUrls({url(u"picture.bin"_s)});
    EXPECT_EQ(openFiles(), QStringList());
    EXPECT_EQ(m_workspace.activeFileURL(), std::nullopt);
}

TEST_F(Drop, OnTheTextOpensTheFileToo)
{
    m_files.write(u"b.md"_s, "");
    open();
    openFile(u"a.md"_s);
    auto *area = qobject_cast<QAbstractScrollArea *>(m_window.content().editorArea().currentEditor()->textView());
    ASSERT_TRUE(area);
    QMimeData dragged;
    dragged.setUrls({url(u"b.md"_s)});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);

    // The toolkit goes up from the text until somebody takes it, and drops it there.
    QCoreApplication::sendEvent(area->viewport(), &enter);

    EXPECT_TRUE(enter.isAccepted());
    EXPECT_TRUE(drop(dragged));
    EXPECT_EQ(openFiles(), (QStringList{u"a.md"_s, u"b.md"_s}));
}

TEST_F(Drop, OfWhatIsNoFileIsRefused)
{
    open();
    QMimeData text;
    text.setText(u"a.md"_s);
    EXPECT_FALSE(drop(text));
    EXPECT_FALSE(dropUrls({QUrl(u"https://example.org/a.md"_s)}));
    EXPECT_EQ(openFiles(), QStringList());
}

} // namespace
} // namespace Tessaline
