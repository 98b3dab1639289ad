#pragma once

#include "editing/FormattedEditing.h"
#include "editing/FormattedMarkdown.h"
#include "editing/FormattedTextLook.h"
#include "editing/TextViewEditor.h"

#include <QtCore/QUrl>

#include <functional>

namespace Tessaline {

/// Opens what a link leads to, outside of the application.
using OpenLink = std::function<void(const QUrl &)>;

/// The formatted editor: shows a Markdown document without its syntax and writes every edit back as Markdown. Opening
/// and viewing write nothing. Check boxes toggle by a click, links open with Ctrl held down.
class WYSIWYGEditor final : public TextViewEditor, private TextViewDelegate
{
    Q_OBJECT
public:
    /// `theme` and `events` must outlive the editor.
    WYSIWYGEditor(const Theme &theme, EventCenter &events, OpenLink openLink, QWidget *parent = nullptr);
    ~WYSIWYGEditor() override;

    void setDocument(const std::optional<FileURL> &url, const ChunkedText &markdown) override;
    void followEdit(const ChunkedText &markdown, const TextChange &change) override;
    void setFontSize(double points) override;
    /// Markers and the text that stands for an image are no content: what touches them stays as it is.
    void replaceRanges(const QList<TextRange> &ranges, const QString &replacement) override;

    /// The distance between the edges of a view of this width and the text, which never gets wider than 720 points.
    static QSizeF insetFor(double width);

protected:
    QVariantMap describeSelection(const TextRange &selection) const override;
    void applyFormat(const QString &type) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // TextViewDelegate
    std::unique_ptr<QMimeData> makeTransfer(const TextRange &range) override;
    bool insertTransfer(const QMimeData &transfer, const TextRange &range) override;
    bool canInsert(const QMimeData &transfer) const override;
    bool handleReturn() override;
    bool handleClick(QPoint point, Qt::KeyboardModifiers modifiers) override;
    Qt::CursorShape cursorAt(QPoint point, Qt::KeyboardModifiers modifiers) override;

    /// The box of the task at a point of the viewport; absent where none is near enough.
    std::optional<qsizetype> taskAt(QPoint point);
    std::optional<qsizetype> taskInRow(QPoint point);
    std::optional<QString> linkAt(QPoint point);
    bool isNear(QPoint point, qsizetype index, QMargins margins);
    void openLink(const QString &destination);

    OpenLink m_openLink;
    FormattedMarkdown m_markdown;
    FormattedEditing m_editing;
    FormattedTextLook m_look;
    std::optional<FileURL> m_lastOpenedURL;
};

} // namespace Tessaline
