#include "editing/FormatToolbarView.h"

#include "editing/FormatButton.h"
#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"
#include "foundation_ui/Hairline.h"
#include "foundation_ui/ScrollEdgeButton.h"

#include <QtGui/QWheelEvent>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QScrollBar>

#include <array>

namespace Tessaline {

namespace {

constexpr int kSpacing = 8;
constexpr int kSideMargin = 16;
constexpr int kEdgeMargin = 6; // above and below
constexpr int kDividerHeight = 14;

struct Command {
    int group;
    FormatButton::Face face;
    const char16_t *type;
    const char16_t *content;
    const char *help;
};

using Face = FormatButton::Face;

constexpr std::array kCommands{
    Command{1, Face::Symbol, u"bold", u"bold", QT_TRANSLATE_NOOP("FormatToolbarView", "Bold")},
    Command{1, Face::Symbol, u"italic", u"italic", QT_TRANSLATE_NOOP("FormatToolbarView", "Italic")},
    Command{2, Face::Text, u"h1", u"H1", QT_TRANSLATE_NOOP("FormatToolbarView", "Heading 1")},
    Command{2, Face::Text, u"h2", u"H2", QT_TRANSLATE_NOOP("FormatToolbarView", "Heading 2")},
    Command{2, Face::Text, u"h3", u"H3", QT_TRANSLATE_NOOP("FormatToolbarView", "Heading 3")},
    Command{3, Face::Symbol, u"bullet", u"list.bullet", QT_TRANSLATE_NOOP("FormatToolbarView", "Bullet List")},
    Command{3, Face::Symbol, u"numbered", u"list.number", QT_TRANSLATE_NOOP("FormatToolbarView", "Numbered List")},
    Command{3, Face::Symbol, u"task", u"checklist", QT_TRANSLATE_NOOP("FormatToolbarView", "Task List")},
    Command{4, Face::Symbol, u"quote", u"text.quote", QT_TRANSLATE_NOOP("FormatToolbarView", "Blockquote")},
    Command{4, Face::Symbol, u"codeInline", u"chevron.left.forwardslash.chevron.right",
            QT_TRANSLATE_NOOP("FormatToolbarView", "Inline Code")},
    Command{4, Face::Symbol, u"codeBlock", u"curlybraces", QT_TRANSLATE_NOOP("FormatToolbarView", "Code Block")},
    Command{5, Face::Symbol, u"link", u"link", QT_TRANSLATE_NOOP("FormatToolbarView", "Insert Link")},
    Command{5, Face::Symbol, u"image", u"photo", QT_TRANSLATE_NOOP("FormatToolbarView", "Insert Image")},
    Command{5, Face::Symbol, u"table", u"tablecells", QT_TRANSLATE_NOOP("FormatToolbarView", "Insert Table")},
    Command{5, Face::Symbol, u"hr", u"minus", QT_TRANSLATE_NOOP("FormatToolbarView", "Horizontal Rule")},
};

} // namespace

FormatToolbarView::FormatToolbarView(const Theme &theme, EventCenter &events, QWidget *parent)
    : QScrollArea(parent), m_theme(theme), m_events(events), m_row(new QWidget), m_layout(new QHBoxLayout(m_row))
{
    setAccessibleName(tr("Format"));
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    viewport()->setAutoFillBackground(false);
    m_layout->setContentsMargins(kSideMargin, kEdgeMargin, kSideMargin, kEdgeMargin);
    m_layout->setSpacing(kSpacing);

    int group = kCommands.front().group;
    for (const Command &command : kCommands) {
        if (command.group != group)
            addDivider();
        group = command.group;
        addButton(new FormatButton(theme, QString::fromUtf16(command.type), command.face,
                                   QString::fromUtf16(command.content), tr(command.help)));
    }
    m_layout->addStretch(1);
    setWidget(m_row);
    m_row->setAutoFillBackground(false); // setting it had turned that on
    using Edge = ScrollEdgeButton::Edge;
    new ScrollEdgeButton(theme, ColorRole::EditorBackground, Edge::Left, tr("Show Earlier Format Commands"), *this);
    new ScrollEdgeButton(theme, ColorRole::EditorBackground, Edge::Right, tr("Show More Format Commands"), *this);
}

void FormatToolbarView::addDivider()
{
    auto *const divider = new Hairline(m_theme, Qt::Vertical);
    divider->setFixedHeight(kDividerHeight);
    m_layout->addWidget(divider);
}

void FormatToolbarView::addButton(FormatButton *button)
{
    m_layout->addWidget(button);
    button->installEventFilter(this);
    connect(button, &FormatButton::clicked, this, [this, button] { press(*button); });
}

void FormatToolbarView::addTool(QWidget *tool)
{
    if (!m_hasTools) {
        delete m_layout->takeAt(m_layout->count() - 1); // the stretch
        addDivider();
        m_hasTools = true;
    }
    m_layout->addWidget(tool);
    m_row->adjustSize();
}

void FormatToolbarView::press(const FormatButton &button)
{
    // Whoever walked into the row by keyboard comes back with the first command, by key or click.
    if (m_target && isAncestorOf(window()->focusWidget()))
        m_target->setFocus(Qt::OtherFocusReason);
    m_events.post(AppEvents::kInsertMarkdownFormat, {{AppEvents::kType, button.type()}});
}

bool FormatToolbarView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn) {
        // Not only in view, but clear of the signs that the row goes on.
        const QRect place = static_cast<QWidget *>(watched)->geometry();
        constexpr int kClear = kSideMargin + ScrollEdgeButton::kWidth;
        ensureVisible(place.right() + 1, 0, kClear, 0);
        ensureVisible(place.left(), 0, kClear, 0);
    }
    return QScrollArea::eventFilter(watched, event);
}

QSize FormatToolbarView::sizeHint() const
{
    return m_row->sizeHint();
}

QSize FormatToolbarView::minimumSizeHint() const
{
    return {0, m_row->sizeHint().height()};
}

void FormatToolbarView::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    m_row->resize(std::max(m_row->sizeHint().width(), viewport()->width()), viewport()->height());
}

void FormatToolbarView::wheelEvent(QWheelEvent *event)
{
    // The row has one direction, whichever way the wheel turns.
    const QPoint delta = event->pixelDelta().isNull() ? event->angleDelta() / 2 : event->pixelDelta();
    const int distance = delta.x() != 0 ? delta.x() : delta.y();
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - distance);
    event->accept();
}

} // namespace Tessaline
