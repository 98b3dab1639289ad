#include "editing/FindBar.h"

#include "editing/DocumentEditor.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/IconButton.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/TextButton.h"
#include "foundation_ui/Theme.h"

#include <QtCore/QLocale>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLineEdit>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kSideMargin = 16;
constexpr int kFieldWidth = 280;

QLineEdit *makeField(const QString &name)
{
    auto *const field = new QLineEdit;
    field->setPlaceholderText(name);
    field->setAccessibleName(name);
    field->setFixedWidth(kFieldWidth);
    field->setFont(Fonts::interface(Fonts::kInterfaceSize));
    return field;
}

QHBoxLayout *makeRow(QWidget *row)
{
    auto *const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    return layout;
}

} // namespace

FindBar::FindBar(const Theme &theme, QWidget *parent)
    : QWidget(parent), m_theme(theme), m_findField(makeField(tr("Find"))),
      m_replaceField(makeField(tr("Replace with"))), m_replaceRow(new QWidget),
      m_count(new Label(theme, ColorRole::SecondaryText, Fonts::interface(Fonts::kSmallSize))),
      m_matchCase(new IconButton(theme, u"textformat"_s, tr("Match Case"))),
      m_wholeWords(new IconButton(theme, u"textformat.word"_s, tr("Whole Words")))
{
    setAccessibleName(tr("Find and Replace"));
    auto *const findRow = new QWidget;
    QHBoxLayout *const find = makeRow(findRow);
    auto *const previous = new IconButton(theme, u"chevron.up"_s, tr("Previous Occurrence (Shift+F3)"));
    auto *const next = new IconButton(theme, u"chevron.down"_s, tr("Next Occurrence (F3)"));
    auto *const closeButton = new IconButton(theme, u"xmark"_s, tr("Close (Esc)"));
    m_matchCase->setCheckable(true);
    m_wholeWords->setCheckable(true);
    find->addWidget(m_findField);
    find->addWidget(previous);
    find->addWidget(next);
    find->addWidget(m_matchCase);
    find->addWidget(m_wholeWords);
    find->addWidget(m_count, 1);
    find->addWidget(closeButton);

    QHBoxLayout *const replace = makeRow(m_replaceRow);
    auto *const replaceButton = new TextButton(theme, tr("Replace"), TextButton::Kind::Bordered);
    auto *const replaceAllButton = new TextButton(theme, tr("Replace All"), TextButton::Kind::Bordered);
    replace->addWidget(m_replaceField);
    replace->addWidget(replaceButton);
    replace->addWidget(replaceAllButton);
    replace->addStretch(1);

    auto *const rows = new QVBoxLayout(this);
    rows->setContentsMargins(kSideMargin, 8, kSideMargin, 8);
    rows->setSpacing(8);
    rows->addWidget(findRow);
    rows->addWidget(m_replaceRow);
    hide();

    m_findField->installEventFilter(this);
    m_replaceField->installEventFilter(this);
    connect(m_findField, &QLineEdit::textEdited, this, &FindBar::updateQuery);
    connect(m_matchCase, &IconButton::toggled, this, &FindBar::updateQuery);
    connect(m_wholeWords, &IconButton::toggled, this, &FindBar::updateQuery);
    connect(next, &IconButton::clicked, this, &FindBar::findNext);
    connect(previous, &IconButton::clicked, this, &FindBar::findPrevious);
    connect(closeButton, &IconButton::clicked, this, &FindBar::close);
    connect(replaceButton, &TextButton::clicked, this, [this] { m_session.replaceCurrent(m_replaceField->text()); });
    connect(replaceAllButton, &TextButton::clicked, this, [this] { m_session.replaceAll(m_replaceField->text()); });
    connect(&m_session, &FindSession::changed, this, &FindBar::showCount);
    connect(&m_session, &FindSession::replacedAll, this, [this](qsizetype count) {
        m_notice = tr("%1 replaced").arg(QLocale().toString(static_cast<qlonglong>(count)));
        showCount();
    });
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

FindBar::~FindBar()
{
    // An editor that is still there outlives the session only if it is let go.
    if (!m_target)
        return;
    m_session.setTarget(nullptr);
}

void FindBar::setTarget(DocumentEditor *editor)
{
    if (editor == m_target)
        return;
    if (m_target)
        disconnect(m_target, nullptr, this, nullptr);
    m_target = editor;
    m_session.setTarget(editor);
    if (!editor) {
        close();
        return;
    }
    connect(editor, &DocumentEditor::shownTextChanged, this, [this] {
        m_notice.clear();
        m_session.targetChanged();
    });
    connect(editor, &DocumentEditor::shownSelectionChanged, this, [this] {
        if (m_target->textView()->hasFocus()) // else it was found here
            m_session.originMoved();
        if (isVisible())
            showCount();
    });
    // The session must not hold on to an editor that is about to go.
    connect(editor, &QObject::destroyed, this, [this] {
        m_session.forgetTarget();
        hide();
    });
}

void FindBar::open(bool withReplace)
{
    if (!m_target)
        return;
    const TextRange selection = m_target->selection();
    constexpr qsizetype kLongestQuery = 1024; // a longer selection is not what somebody means to look for
    if (!selection.isEmpty() && selection.length <= kLongestQuery) {
        const QString text = m_target->shownText().sliced(selection.location, selection.length);
        if (!text.contains(u'\n') && !text.contains(u'\r') && !text.contains(QChar(QChar::ParagraphSeparator)))
            m_findField->setText(text);
    }
    m_replaceRow->setVisible(withReplace);
    show();
    m_findField->setFocus(Qt::ShortcutFocusReason);
    m_findField->selectAll();
    m_session.originMoved();
    m_session.setActive(true);
    setQuery(FindSession::Follow::Nothing);
}

void FindBar::openFind()
{
    open(m_replaceRow->isVisibleTo(this) && isVisible());
}

void FindBar::openReplace()
{
    open(true);
}

void FindBar::setQuery(FindSession::Follow follow)
{
    m_notice.clear();
    m_session.setQuery({m_findField->text(), m_matchCase->isChecked() ? SearchCase::Exact : SearchCase::Ignored,
                        m_wholeWords->isChecked() ? SearchWords::Whole : SearchWords::Any},
                       follow);
}

void FindBar::updateQuery()
{
    setQuery(FindSession::Follow::SelectFirst);
}

void FindBar::findNext()
{
    m_notice.clear();
    m_session.findNext();
}

void FindBar::findPrevious()
{
    m_notice.clear();
    m_session.findPrevious();
}

void FindBar::close()
{
    m_session.setActive(false);
    const bool hadFocus = isAncestorOf(QApplication::focusWidget()) && isVisible();
    hide();
    if (hadFocus && m_target)
        m_target->textView()->setFocus(Qt::OtherFocusReason);
}

void FindBar::showCount()
{
    if (!m_notice.isEmpty()) {
        m_count->setText(m_notice);
        return;
    }
    if (m_session.isSearching())
        return; // the old count stays until there is a new one
    if (m_session.query().text.isEmpty()) {
        m_count->setText(QString());
        return;
    }
    const QString total =
        QLocale().toString(static_cast<qlonglong>(m_session.count())) + (m_session.isComplete() ? QString() : u"+"_s);
    if (m_session.count() == 0)
        m_count->setText(tr("Not found"));
    else if (const std::optional<qsizetype> index = m_session.currentIndex())
        m_count->setText(tr("%1 of %2").arg(QLocale().toString(static_cast<qlonglong>(*index + 1)), total));
    else
        m_count->setText(tr("%1 found").arg(total));
}

bool FindBar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            if (watched == m_replaceField)
                m_session.replaceCurrent(m_replaceField->text());
            else if (key->modifiers() & Qt::ShiftModifier)
                findPrevious();
            else
                findNext();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void FindBar::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

void FindBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), m_theme.color(ColorRole::EditorBackground));
    painter.fillRect(0, height() - 1, width(), 1, m_theme.color(ColorRole::Hairline));
}

} // namespace Tessaline
