#include "editing/WYSIWYGEditor.h"

#include "editing/BlockStyle.h"
#include "editing/FormattedTransfer.h"
#include "editing/TextBoundaries.h"
#include "editing/TextTransfer.h"
#include "editing/TextView.h"
#include "foundation/AppEvents.h"
#include "foundation_ui/LinkQuestion.h"
#include "foundation_ui/Theme.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr double kWidestText = 720;
constexpr double kInset = 48;
constexpr double kNarrowInset = 28;
constexpr double kNarrowWidth = 560; // below it the narrow inset is taken
constexpr double kInsetHeight = 36;
constexpr QMargins kBoxMargins{5, 3, 5, 3}; // a check box is hit that far around its sign

/// Links that open without a question.
bool isOrdinary(const QUrl &url)
{
    const QString scheme = url.scheme().toLower();
    return scheme == u"http" || scheme == u"https" || scheme == u"mailto";
}

} // namespace

WYSIWYGEditor::WYSIWYGEditor(const Theme &theme, EventCenter &events, OpenLink openLink, QWidget *parent)
    : TextViewEditor(theme, events, parent), m_openLink(std::move(openLink)), m_markdown(editable()),
      m_editing(editable()), m_look(editable().document(), theme)
{
    makeView(m_look, *this, tr("Document"));
    connect(&m_markdown, &FormattedMarkdown::edited, this, &DocumentEditor::edited);
    // Colours are part of what is laid out.
    connect(&theme, &Theme::changed, this, [this] { view().lookChanged(); });
}

WYSIWYGEditor::~WYSIWYGEditor()
{
    deleteView();
}

void WYSIWYGEditor::setDocument(const std::optional<FileURL> &url, const ChunkedText &markdown)
{
    const bool isSameDocument = url == m_lastOpenedURL;
    if (isSameDocument && m_markdown.markdown() == markdown)
        return;
    if (isSameDocument && url) {
        const TextSelection selection = editable().selection();
        editable().select(selection); // ends what is being typed: the change is a step of its own
        m_markdown.replaceFromOutside(markdown);
        editable().select(selection); // its numbers stay, not its text
    } else {
        m_markdown.open(markdown);
    }
    m_lastOpenedURL = url;
}

void WYSIWYGEditor::followEdit(const ChunkedText &markdown, const TextChange &change)
{
    m_markdown.followEdit(markdown, change);
}

void WYSIWYGEditor::setFontSize(double points)
{
    if (points == m_look.fontSize())
        return;
    m_look.setFontSize(points);
    view().lookChanged();
}

void WYSIWYGEditor::replaceRanges(const QList<TextRange> &ranges, const QString &replacement)
{
    QList<TextRange> content = ranges;
    content.removeIf([this](const TextRange &range) { return !m_editing.isContent(range); });
    if (!content.isEmpty())
        TextViewEditor::replaceRanges(content, replacement);
}

QSizeF WYSIWYGEditor::insetFor(double width)
{
    if (width > kWidestText + 2 * kInset)
        return {(width - kWidestText) / 2, kInsetHeight};
    return {width < kNarrowWidth ? kNarrowInset : kInset, kInsetHeight};
}

void WYSIWYGEditor::resizeEvent(QResizeEvent *event)
{
    TextViewEditor::resizeEvent(event);
    view().setTextInset(insetFor(width()));
}

QVariantMap WYSIWYGEditor::describeSelection(const TextRange &selection) const
{
    return {{AppEvents::kText, m_editing.plainText(selection)},
            {AppEvents::kSourceText, m_editing.sourceText(selection)},
            {AppEvents::kIsRendered, true}};
}

void WYSIWYGEditor::applyFormat(const QString &type)
{
    if (m_editing.applyFormat(type))
        view().ensureCaretVisible();
}

bool WYSIWYGEditor::handleReturn()
{
    return m_editing.continueList();
}

std::unique_ptr<QMimeData> WYSIWYGEditor::makeTransfer(const TextRange &range)
{
    return std::make_unique<FormattedTransfer>(editable().document(), range);
}

bool WYSIWYGEditor::canInsert(const QMimeData &transfer) const
{
    return hasPlainText(transfer) || FormattedTransfer::attributedText(transfer).has_value();
}

bool WYSIWYGEditor::insertTransfer(const QMimeData &transfer, const TextRange &range)
{
    // What is dropped takes over from the place where it falls, not from that of the caret.
    if (range != editable().selection().range())
        editable().select({range.location, range.end()});
    if (const std::optional<AttributedText> attributed = FormattedTransfer::attributedText(transfer)) {
        const qsizetype behind = range.location + attributed->size();
        editable().replace(range, *attributed, TextSelection{behind, behind});
        return true;
    }
    QString text = plainTextOf(transfer);
    text.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
    if (text.isEmpty())
        return false;
    editable().replace(range, text, EditKind::Other);
    return true;
}

bool WYSIWYGEditor::isNear(QPoint point, qsizetype index, QMargins margins)
{
    const qsizetype end = TextBoundaries::nextCharacter(editable().text(), index);
    const QRectF rect = view().rangeRect({index, end - index}).translated(-view().viewport()->pos());
    return rect.marginsAdded(margins).contains(point);
}

std::optional<qsizetype> WYSIWYGEditor::taskAt(QPoint point)
{
    // The row under the point comes first; the rectangle of a box reaches into the space between the rows, too.
    for (const int dy : {0, kBoxMargins.top(), -kBoxMargins.bottom()}) {
        const std::optional<qsizetype> box = taskInRow(point + QPoint(0, dy));
        if (box && isNear(point, *box, kBoxMargins))
            return box;
    }
    return std::nullopt;
}

std::optional<qsizetype> WYSIWYGEditor::taskInRow(QPoint point)
{
    const AttributedDocument &document = editable().document();
    const qsizetype caret = view().positionAt(point);
    const TextRange paragraph = TextBoundaries::paragraphAt(editable().text(), caret);
    // The caret stands before or behind the character under the point.
    for (const qsizetype index : {caret, caret - 1}) {
        if (index < paragraph.location || index >= paragraph.end())
            continue;
        const TextAttributes &attributes = document.attributesAt(index);
        if (attributes.generatedMarker && BlockStyle::read(attributes.blockStyle.view()).kind == BlockStyle::Kind::Task)
            return document.effectiveRange(index, &TextAttributes::generatedMarker, paragraph).location;
    }
    return std::nullopt;
}

std::optional<QString> WYSIWYGEditor::linkAt(QPoint point)
{
    const qsizetype caret = view().positionAt(point);
    for (const qsizetype index : {caret, caret - 1}) {
        if (index < 0 || index >= editable().document().size())
            continue;
        const SharedText destination = editable().document().attributesAt(index).linkDestination;
        if (destination.isPresent() && isNear(point, index, {}))
            return destination.toString();
    }
    return std::nullopt;
}

bool WYSIWYGEditor::handleClick(QPoint point, Qt::KeyboardModifiers modifiers)
{
    if (modifiers & Qt::ControlModifier) {
        if (const std::optional<QString> link = linkAt(point)) {
            openLink(*link);
            return true;
        }
    }
    const std::optional<qsizetype> box = taskAt(point);
    return box && m_editing.toggleTask(*box);
}

Qt::CursorShape WYSIWYGEditor::cursorAt(QPoint point, Qt::KeyboardModifiers modifiers)
{
    if ((modifiers & Qt::ControlModifier) && linkAt(point))
        return Qt::PointingHandCursor;
    return taskAt(point) ? Qt::ArrowCursor : Qt::IBeamCursor;
}

void WYSIWYGEditor::openLink(const QString &destination)
{
    QUrl url(destination);
    if (isOrdinary(url)) {
        m_openLink(url);
        return;
    }
    if (url.isRelative() && m_lastOpenedURL)
        url = QUrl::fromLocalFile(m_lastOpenedURL->path()).resolved(url);
    if (destination.isEmpty() || !url.isValid() || url.isRelative())
        return; // it leads nowhere
    auto *const question = new LinkQuestion(url.isLocalFile() ? url.toLocalFile() : destination, this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    connect(question, &QDialog::accepted, this, [this, url] { m_openLink(url); });
    question->open();
}

} // namespace Tessaline
