#include "tests/editing/OpenFormattedEditor.h"

#include "foundation/AppEvents.h"

#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtGui/QInputMethodEvent>
#include <QtGui/QWheelEvent>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>

#include <utility>

namespace Tessaline {

using namespace Qt::StringLiterals;

OpenFormattedEditor::OpenFormattedEditor(const QString &markdown)
{
    editor.resize(kWidth, kHeight);
    editor.setFontSize(17);
    setMarkdown(markdown);
    editor.show();
    editor.activateWindow();
    view().setFocus();
    (void)QTest::qWaitForWindowActive(&editor);
    settle();

    events.observe(AppEvents::kEditorTextSelectionChanged, &editor,
                   [this](const QVariantMap &userInfo) { m_selectionEvents.append(userInfo); });
    QObject::connect(
        &editor, &DocumentEditor::edited, &editor, [this](const ChunkedText &whole, const TextChange &change) {
            m_owner.replace(change.location, change.removed, whole.sliced(change.location, change.inserted));
            ++m_editCount;
            EXPECT_EQ(m_owner.toString(), whole.toString()) << "the change and the whole disagree";
        });
}

void OpenFormattedEditor::setMarkdown(const QString &markdown)
{
    open(u"/tmp/folder/document.md"_s, markdown);
}

void OpenFormattedEditor::open(const QString &path, const QString &markdown)
{
    m_owner = ChunkedText(markdown);
    editor.setDocument(FileURL(path), m_owner);
}

void OpenFormattedEditor::editElsewhere(qsizetype location, qsizetype removed, const QString &text)
{
    const TextChange change = m_owner.replace(location, removed, text);
    editor.followEdit(m_owner, change);
}

void OpenFormattedEditor::press(Qt::Key key, Qt::KeyboardModifiers modifiers, int times)
{
    for (int i = 0; i < times; ++i)
        QTest::keyClick(&view(), key, modifiers);
}

void OpenFormattedEditor::type(const QString &text)
{
    for (const QChar c : text)
        QTest::sendKeyEvent(QTest::Click, &view(), Qt::Key_unknown, QString(c), Qt::NoModifier);
}

void OpenFormattedEditor::compose(const QString &preedit)
{
    QInputMethodEvent event(preedit, {});
    QApplication::sendEvent(&view(), &event);
}

void OpenFormattedEditor::commit(const QString &text, int replaceFrom, int replaceLength)
{
    QInputMethodEvent event;
    event.setCommitString(text, replaceFrom, replaceLength);
    QApplication::sendEvent(&view(), &event);
}

void OpenFormattedEditor::click(QPoint point, Qt::KeyboardModifiers modifiers)
{
    QTest::mouseClick(view().viewport(), Qt::LeftButton, modifiers, point);
}

void OpenFormattedEditor::doubleClick(QPoint point)
{
    QTest::mouseClick(view().viewport(), Qt::LeftButton, {}, point);
    QTest::mouseDClick(view().viewport(), Qt::LeftButton, {}, point);
}

void OpenFormattedEditor::drag(QPoint from, QPoint to)
{
    QTest::mousePress(view().viewport(), Qt::LeftButton, {}, from);
    for (int i = 1; i <= 4; ++i) {
        const QPoint point = from + (to - from) * i / 4;
        QMouseEvent move(QEvent::MouseMove, point, view().viewport()->mapToGlobal(point), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(view().viewport(), &move);
    }
    QTest::mouseRelease(view().viewport(), Qt::LeftButton, {}, to);
}

void OpenFormattedEditor::wheel(int angle, Qt::KeyboardModifiers modifiers)
{
    const QPoint point = view().viewport()->rect().center();
    QWheelEvent event(point, view().viewport()->mapToGlobal(point), QPoint(), QPoint(0, angle), Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(view().viewport(), &event);
}

void OpenFormattedEditor::format(const QVariant &type)
{
    events.post(AppEvents::kInsertMarkdownFormat, {{AppEvents::kType, type}});
}

AttributedText OpenFormattedEditor::attributed()
{
    const AttributedDocument &document = view().document().document();
    return document.sliced({0, document.size()});
}

qsizetype OpenFormattedEditor::positionOf(const QString &words) const
{
    const qsizetype position = shown().indexOf(words);
    EXPECT_GE(position, 0) << "“" << words.toStdString() << "” is not shown in\n" << shown().toStdString();
    return position;
}

QPoint OpenFormattedEditor::pointAt(qsizetype position)
{
    const QRect caret = view().caretRectInViewport(position);
    return {caret.left(), caret.center().y()};
}

QRect OpenFormattedEditor::rectOf(qsizetype position)
{
    return view().rangeRect({position, 1}).translated(-view().viewport()->pos()).toAlignedRect();
}

void OpenFormattedEditor::settle()
{
    QApplication::processEvents();
}

QList<QVariantMap> OpenFormattedEditor::takeSelectionEvents()
{
    return std::exchange(m_selectionEvents, {});
}

QStringList OpenFormattedEditor::takeOpenedLinks()
{
    return std::exchange(m_openedLinks, {});
}

} // namespace Tessaline
