#include "panels/ContextCardSheet.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/TextButton.h"
#include "panels/SessionContext.h"
#include "panels/ShownPart.h"

#include <QtGui/QPainter>
#include <QtGui/QShortcut>
#include <QtGui/QTextDocument>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kWidth = 420;
constexpr int kContentHeight = 180;
constexpr int kMargin = 20;
constexpr int kSpacing = 14;
constexpr int kCaptionSpacing = 4;
constexpr double kFieldRadius = 6;
constexpr int kContentMargin = 6;
constexpr qsizetype kMostEdited = 1'000'000; // UTF-16 units; of a longer text the beginning can be read
constexpr int kTextInset = 4;                // as the text below has

} // namespace

ContextCardSheet::ContextCardSheet(SessionContext &context, const Theme &theme, QWidget *parent)
    : QDialog(parent), m_context(context), m_theme(theme), m_title(new QLineEdit), m_subtitle(new QLineEdit),
      m_content(new QPlainTextEdit), m_save(new TextButton(theme, u"Save"_s, TextButton::Kind::Prominent))
{
    const QString heading = context.isNewItem() ? u"Add Custom Session Context"_s : u"Edit Session Context"_s;
    setWindowTitle(heading);
    setModal(true);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    column->setSpacing(kSpacing);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addWidget(new Label(theme, ColorRole::Heading, Fonts::interface(15, QFont::DemiBold), heading));

    const auto addField = [&](const QString &caption, QWidget *field) {
        field->setAccessibleName(caption);
        field->setFixedWidth(kWidth);
        field->setFont(Fonts::interface(Fonts::kInterfaceSize));
        auto *group = new QVBoxLayout;
        group->setSpacing(kCaptionSpacing);
        group->addWidget(new Label(theme, ColorRole::SecondaryText, Fonts::interface(Fonts::kSmallSize), caption));
        group->addWidget(field);
        column->addLayout(group);
    };
    const SessionContext::Card card = context.card();
    m_givenContent = card.content;
    for (QLineEdit *line : {m_title, m_subtitle})
        line->setTextMargins(kTextInset, 0, kTextInset, 0);
    m_title->setPlaceholderText(u"e.g. Hamlet"_s);
    m_title->setText(card.title);
    addField(u"Title"_s, m_title);
    m_subtitle->setPlaceholderText(u"e.g. Play by Corin Halvard"_s);
    m_subtitle->setText(card.subtitle);
    addField(u"Subtitle"_s, m_subtitle);
    m_content->setTabChangesFocus(true);
    m_content->setFixedHeight(kContentHeight);
    m_content->setFrameShape(QFrame::NoFrame); // the sheet draws one like those of the fields
    m_content->viewport()->setAutoFillBackground(false);
    m_content->document()->setDocumentMargin(kContentMargin);
    m_content->setReadOnly(card.content.size() > kMostEdited);
    m_content->setPlainText(shownPart(card.content, kMostEdited)); // after what counts as a change of the document
    m_content->installEventFilter(this);
    addField(u"Description"_s, m_content);

    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    if (!context.isNewItem()) {
        auto *remove = new TextButton(theme, u"Remove"_s, TextButton::Kind::Destructive);
        connect(remove, &QAbstractButton::clicked, &context, &SessionContext::removeItem);
        buttons->addWidget(remove);
    }
    buttons->addStretch();
    auto *cancel = new TextButton(theme, u"Cancel"_s, TextButton::Kind::Bordered);
    connect(cancel, &QAbstractButton::clicked, &context, &SessionContext::cancelCard);
    buttons->addWidget(cancel);
    connect(m_save, &QAbstractButton::clicked, &context, &SessionContext::saveCard);
    buttons->addWidget(m_save);
    column->addLayout(buttons);

    connect(m_title, &QLineEdit::textChanged, this, &ContextCardSheet::store);
    connect(m_subtitle, &QLineEdit::textChanged, this, &ContextCardSheet::store);
    connect(m_content, &QPlainTextEdit::textChanged, this, &ContextCardSheet::store);
    connect(m_title, &QLineEdit::returnPressed, &context, &SessionContext::saveCard);
    connect(m_subtitle, &QLineEdit::returnPressed, &context, &SessionContext::saveCard);
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Return), this), &QShortcut::activated, &context,
            &SessionContext::saveCard);
    connect(this, &QDialog::rejected, &context, &SessionContext::cancelCard);
    m_save->setEnabled(context.canSaveCard());
}

/// What is in the field for the content. The field has line breaks of its own, so as long as nobody changed anything in
/// it the text is the one that it was given.
QString ContextCardSheet::content() const
{
    if (!m_content->document()->isModified())
        return m_givenContent;
    QString text = m_content->document()->toRawText(); // the plain text has no protected spaces
    return text.replace(QChar::ParagraphSeparator, u'\n').replace(QChar::LineSeparator, u'\n');
}

void ContextCardSheet::store()
{
    m_context.setCard({m_title->text(), m_subtitle->text(), content()});
    m_save->setEnabled(m_context.canSaveCard());
}

bool ContextCardSheet::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        update(); // the frame shows it
    return QDialog::eventFilter(watched, event);
}

void ContextCardSheet::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), m_theme.color(ColorRole::RightColumn));
    const double line = m_content->hasFocus() ? 2 : 1;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(m_theme.color(ColorRole::Field));
    painter.setPen(QPen(m_theme.color(m_content->hasFocus() ? ColorRole::FocusRing : ColorRole::BubbleBorder), line));
    painter.drawRoundedRect(QRectF(m_content->geometry()).adjusted(line / 2, line / 2, -line / 2, -line / 2),
                            kFieldRadius, kFieldRadius);
}

} // namespace Tessaline
