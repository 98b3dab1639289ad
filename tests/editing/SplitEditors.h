#pragma once

#include "editing/MarkdownEditor.h"
#include "editing/TextView.h"
#include "editing/WYSIWYGEditor.h"
#include "foundation/EventCenter.h"
#include "foundation_ui/Theme.h"

namespace Tessaline {

/// The source and the formatted editor of one document side by side, in step as the middle column keeps them.
class SplitEditors
{
public:
    explicit SplitEditors(const QString &markdown);

    DocumentEditor &editor(bool isFormatted);
    TextView &view(bool isFormatted) { return *static_cast<TextView *>(editor(isFormatted).textView()); }
    QString markdown() const { return m_owner.toString(); }
    AttributedText formatted();

    Theme theme;
    EventCenter events;
    QWidget window;
    MarkdownEditor *source;
    WYSIWYGEditor *wysiwyg;
    int sourceEdits = 0; // reported by each
    int formattedEdits = 0;

private:
    void connectEditor(DocumentEditor *from, DocumentEditor *to, int &count);

    ChunkedText m_owner;
};

} // namespace Tessaline
