#pragma once

#include "editing/EditableText.h"
#include "editing/NormalForm.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <chrono>
#include <limits>

namespace Tessaline {

/// Keeps a formatted text and its Markdown in step. The Markdown is the document; the formatted text is read from it
/// and is written back after each edit of the person.
///
/// Reading changes no Markdown. The first edit writes the whole document in its normal form; from then on an edit
/// writes what it touched, as `serializeMarkdown` would write all of it. A change of the Markdown from elsewhere is
/// read again only around the place where it was made, with the outcome that `renderMarkdown` of the whole would have.
///
/// So that the first edit of a large document need not wait, its normal form is made ahead on a worker thread as soon
/// as the Markdown has rested for a moment. Main thread only.
class FormattedMarkdown final : public QObject
{
    Q_OBJECT
public:
    static constexpr qsizetype kLeastPrepared = 64 * 1024; // units of a Markdown whose normal form is made ahead
    // How long the Markdown must have rested before. Source: chosen here; the first screen is painted by then, and a
    // pause between two words is shorter.
    static constexpr std::chrono::milliseconds kRestOfOpening{150};
    static constexpr std::chrono::milliseconds kRestOfTyping{1000};

    /// Follows the edits of `text`, which must outlive this object and which nobody else may reset.
    explicit FormattedMarkdown(EditableText &text, QObject *parent = nullptr);
    ~FormattedMarkdown() override; // stops the preparation

    /// The Markdown that the text stands for: as it was given, or as it was written after the last edit.
    const ChunkedText &markdown() const { return m_markdown; }

    /// Another document: the history begins anew, the selection keeps its numbers, clamped.
    void open(const ChunkedText &markdown);
    /// The same document changed elsewhere, as a whole or by `change`. One step of undo of the formatted text.
    void replaceFromOutside(const ChunkedText &markdown);
    void followEdit(const ChunkedText &markdown, const TextChange &change);

    /// Whether the next edit finds the normal form made, and writes no more than what it touches.
    bool isPrepared() const { return m_isNormal || m_normalForm; }

Q_SIGNALS:
    /// The person edited the text: `markdown` is the whole after `change`.
    void edited(const Tessaline::ChunkedText &markdown, const Tessaline::TextChange &change);

private:
    struct Sum {
        qsizetype paragraphs = 0;
        qsizetype shown = 0;
        qsizetype source = 0;
        Sum &operator+=(const Sum &other);
        Sum &operator-=(const Sum &other);
    };
    /// A paragraph of the formatted text: how many units it shows, with its line break, and how many units of the
    /// Markdown it was read from, with the blank lines behind it. The first of the paragraphs that were read from one
    /// construct has the source of all of them.
    struct Paragraph {
        quint32 shown = 0;
        quint32 source = 0;
        Sum sum() const { return {1, static_cast<qsizetype>(shown), static_cast<qsizetype>(source)}; }
    };
    using Paragraphs = SummedList<Paragraph, Sum>;

    struct Reading;
    Reading read(const ChunkedText &markdown, qsizetype start, const TextChange &change,
                 qsizetype most = std::numeric_limits<qsizetype>::max()) const;
    Paragraphs::Place constructAt(Paragraphs::Place place) const;
    Paragraphs::Place constructBefore(Paragraphs::Place place) const;
    bool isConstructStart(qsizetype source) const;
    static void endText(Reading &reading);
    bool followEditOfCode(const ChunkedText &markdown, const TextChange &change);
    void exchangeShown(qsizetype start, const AttributedText &old, const AttributedText &fresh);
    void followOwnChange(const TextChange &change);
    void markdownIsForeign(std::chrono::milliseconds rest);
    QCoro::Task<> prepare();
    TextChange takeNormalForm();
    TextChange takeWritten(const MarkdownChange &written);
    TextRange shownRange(qsizetype paragraph) const;
    ParagraphRecord recordOf(qsizetype paragraph) const;

    EditableText &m_text;
    ChunkedText m_markdown;
    Paragraphs m_paragraphs; // cover the whole text; no entry for the empty line behind a last line break
    MarkdownPieces m_pieces; // of the Markdown, while it is in its normal form
    bool m_isNormal = false; // the Markdown is what the pieces wrote; otherwise the sources of the paragraphs hold
    bool m_hasCarriageReturn = false;         // somewhere in the Markdown, or it had one not long ago
    bool m_isReading = false;                 // the text is being changed to follow the Markdown
    TextChange m_written;                     // what the last edit changed in the Markdown
    std::shared_ptr<NormalForm> m_normalForm; // of the Markdown as it is, if it was made ahead; else null
    std::stop_source m_preparation;
    QTimer m_rest; // runs from a change of the Markdown until its normal form is made
};

} // namespace Tessaline
