#pragma once

#include "editing/PlainTextDelegate.h"
#include "editing/SourceTextLook.h"
#include "editing/TextViewEditor.h"

namespace Tessaline {

/// The source editor: shows the characters of a document exactly, in one face of fixed width, without any colouring.
class MarkdownEditor final : public TextViewEditor
{
    Q_OBJECT
public:
    /// `theme` and `events` must outlive the editor.
    MarkdownEditor(const Theme &theme, EventCenter &events, QWidget *parent = nullptr);
    ~MarkdownEditor() override;

    void setDocument(const std::optional<FileURL> &url, const ChunkedText &text) override;
    void followEdit(const ChunkedText &text, const TextChange &change) override;
    void setFontSize(double points) override;

protected:
    QVariantMap describeSelection(const TextRange &selection) const override;
    void applyFormat(const QString &type) override;

private:
    SourceTextLook m_look;
    PlainTextDelegate m_delegate;
    std::optional<FileURL> m_lastOpenedURL;
    std::optional<double> m_lastFontSize;
    bool m_isSynchronizing = false; // the program itself replaces the text
};

} // namespace Tessaline
