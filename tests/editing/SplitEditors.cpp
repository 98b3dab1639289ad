#include "tests/editing/SplitEditors.h"

#include "tests/editing/Printers.h"

#include <gtest/gtest.h>
#include <QtTest/QTest>
#include <QtWidgets/QHBoxLayout>

namespace Tessaline {

using namespace Qt::StringLiterals;

SplitEditors::SplitEditors(const QString &markdown)
    : source(new MarkdownEditor(theme, events, &window)), wysiwyg(new WYSIWYGEditor(
                                                              theme, events, [](const QUrl &) {}, &window)),
      m_owner(markdown)
{
    auto *const row = new QHBoxLayout(&window);
    for (const bool isFormatted : {false, true}) {
        editor(isFormatted).setDocument(FileURL(u"/tmp/document.md"_s), m_owner);
        row->addWidget(&editor(isFormatted));
    }
    connectEditor(source, wysiwyg, sourceEdits);
    connectEditor(wysiwyg, source, formattedEdits);
    window.resize(1200, 500);
    window.show();
    window.activateWindow();
    (void)QTest::qWaitForWindowActive(&window);
    QApplication::processEvents();
}

void SplitEditors::connectEditor(DocumentEditor *from, DocumentEditor *to, int &count)
{
    QObject::connect(
        from, &DocumentEditor::edited, to, [this, to, &count](const ChunkedText &whole, const TextChange &change) {
            m_owner.replace(change.location, change.removed, whole.sliced(change.location, change.inserted));
            EXPECT_EQ(m_owner.toString(), whole.toString());
            ++count;
            to->followEdit(m_owner, change);
        });
}

DocumentEditor &SplitEditors::editor(bool isFormatted)
{
    return isFormatted ? static_cast<DocumentEditor &>(*wysiwyg) : *source;
}

AttributedText SplitEditors::formatted()
{
    const AttributedDocument &document = view(true).document().document();
    return document.sliced({0, document.size()});
}

} // namespace Tessaline
