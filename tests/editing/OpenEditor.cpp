#include "tests/editing/OpenEditor.h"

#include "foundation/AppEvents.h"

#include <QtGui/QInputMethodEvent>
#include <QtGui/QWheelEvent>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>

#include <utility>

namespace Tessaline {

using namespace Qt::StringLiterals;

OpenEditor::OpenEditor(const QString &text) : OpenEditor(ChunkedText(text)) {}

OpenEditor::OpenEditor(const ChunkedText &text)
{
    editor.resize(kWidth, kHeight);
    editor.setFontSize(14);
    editor.setDocument(FileURL(u"/tmp/document.md"_s), text);
    editor.show();
    editor.activateWindow();
    view().setFocus();
    (void)QTest::qWaitForWindowActive(&editor);
    settle();

    events.observe(AppEvents::kEditorTextSelectionChanged, &editor,
                   [this](const QVariantMap &userInfo) { m_selectionEvents.append(userInfo); });
    QObject::connect(&editor, &DocumentEditor::edited, &editor,
                     [this](const ChunkedText &edited) { editedTexts.append(edited); });
}

void OpenEditor::setText(const QString &text)
{
    editor.setDocument(FileURL(u"/tmp/document.md"_s), ChunkedText(text));
}

void OpenEditor::open(const QString &path, const QString &text)
{
    editor.setDocument(FileURL(path), ChunkedText(text));
}

void OpenEditor::press(Qt::Key key, Qt::KeyboardModifiers modifiers, int times)
{
    for (int i = 0; i < times; ++i)
        QTest::keyClick(&view(), key, modifiers);
}

void OpenEditor::type(const QString &text)
{
    for (const QChar c : text)
        QTest::sendKeyEvent(QTest::Click, &view(), Qt::Key_unknown, QString(c), Qt::NoModifier);
}

void OpenEditor::compose(const QString &preedit)
{
    QInputMethodEvent event(preedit, {});
    QApplication::sendEvent(&view(), &event);
}

void OpenEditor::commit(const QString &text, int replaceFrom, int replaceLength)
{
    QInputMethodEvent event;
    event.setCommitString(text, replaceFrom, replaceLength);
    QApplication::sendEvent(&view(), &event);
}

void OpenEditor::click(QPoint point, Qt::KeyboardModifiers modifiers)
{
    // Clicks of two tests must not look like a double click.
    QTest::mouseClick(view().viewport(), Qt::LeftButton, modifiers, point,
                      QApplication::doubleClickInterval() < 1000 ? -1 : 0);
}

void OpenEditor::doubleClick(QPoint point)
{
    QTest::mouseClick(view().viewport(), Qt::LeftButton, {}, point);
    QTest::mouseDClick(view().viewport(), Qt::LeftButton, {}, point);
}

void OpenEditor::tripleClick(QPoint point)
{
    const int interval = QApplication::doubleClickInterval();
    QApplication::setDoubleClickInterval(60'000); // the third click comes in time on a busy machine, too
    doubleClick(point);
    QTest::mouseClick(view().viewport(), Qt::LeftButton, {}, point);
    QApplication::setDoubleClickInterval(interval);
}

void OpenEditor::drag(QPoint from, QPoint to)
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

void OpenEditor::wheel(int angle, Qt::KeyboardModifiers modifiers)
{
    const QPoint point = view().viewport()->rect().center();
    QWheelEvent event(point, view().viewport()->mapToGlobal(point), QPoint(), QPoint(0, angle), Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(view().viewport(), &event);
}

QPoint OpenEditor::pointAt(qsizetype position)
{
    const QRect caret = view().caretRectInViewport(position);
    return {caret.left(), caret.center().y()};
}

bool OpenEditor::isInView(qsizetype position)
{
    const QRect caret = view().caretRectInViewport(position);
    return caret.top() >= 0 && caret.bottom() < view().viewport()->height();
}

void OpenEditor::settle()
{
    QApplication::processEvents();
}

QList<QVariantMap> OpenEditor::takeSelectionEvents()
{
    return std::exchange(m_selectionEvents, {});
}

} // namespace Tessaline
