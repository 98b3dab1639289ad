#include "panels/SessionContextView.h"

#include "foundation_ui/AccessibleRole.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "panels/AddContextButton.h"
#include "panels/AddContextPopover.h"
#include "panels/ContextCardSheet.h"
#include "panels/ContextRow.h"
#include "panels/Popover.h"
#include "panels/ScrolledContent.h"
#include "panels/SessionContext.h"
#include "panels/ShownPart.h"

#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QDragEnterEvent>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kSidePadding = 16;
constexpr int kListPadding = 12;
constexpr int kRowSpacing = 8;
constexpr int kChipSpacing = 8;
constexpr qsizetype kMostOfMessage = 1000; // UTF-16 units of an alert, so that its buttons stay on the screen
constexpr int kPlaceholderWidth = 240;

QList<FileURL> localFiles(const QMimeData &dragged)
{
    QList<FileURL> files;
    for (const QUrl &url : dragged.urls())
        if (url.isLocalFile())
            files.append(FileURL(url.toLocalFile()));
    return files;
}

/// Whether the focus of the window is inside, also while another window is the active one.
bool holdsFocus(const QWidget &widget)
{
    const QWidget *focus = widget.window()->focusWidget();
    return focus && (focus == &widget || widget.isAncestorOf(focus));
}

/// The place in the layout of the widget with the focus; -1 for none.
int focusedIndex(const QLayout &layout)
{
    for (int i = 0; i < layout.count(); ++i)
        if (const QWidget *widget = layout.itemAt(i)->widget(); widget && holdsFocus(*widget))
            return i;
    return -1;
}

/// Takes the widgets from a place on out of a layout; they may be the reason for the call, so they go a moment later.
void clear(QLayout &layout, int from = 0)
{
    while (QLayoutItem *item = layout.takeAt(from)) {
        if (QWidget *widget = item->widget()) {
            widget->hide();
            widget->deleteLater();
        }
        delete item;
    }
}

} // namespace

SessionContextView::SessionContextView(SessionContextViewParts parts, QWidget *parent)
    : QWidget(parent), m_context(parts.context), m_theme(parts.theme), m_askForFiles(std::move(parts.askForFiles)),
      m_add(new AddContextButton(m_theme)), m_suggestionsRow(makeSuggestionsRow()), m_placeholder(makePlaceholder()),
      m_list(nullptr)
{
    auto *items = new QWidget;
    setAccessibleRole(*items, QAccessible::Grouping);
    items->setAccessibleName(u"Attached Context"_s);
    m_rows = new QVBoxLayout(items);
    m_rows->setContentsMargins(kListPadding, kListPadding, kListPadding, kListPadding);
    m_rows->setSpacing(kRowSpacing);
    m_rows->setAlignment(Qt::AlignTop);
    m_list = new ScrolledContent(items, ScrolledContent::Direction::Down);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeTitleRow(parts.trailing, parts.titleRowHeight));
    column->addWidget(m_suggestionsRow);
    column->addWidget(m_placeholder, 1);
    column->addWidget(m_list, 1);
    setAcceptDrops(true);

    connect(m_add, &QAbstractButton::clicked, &m_context, [this] { m_context.setShowingAddContextPopover(true); });
    connect(&m_context, &SessionContext::changed, this, &SessionContextView::update);
    update();
}

QWidget *SessionContextView::makeTitleRow(QWidget *trailing, int height)
{
    auto *row = new QWidget;
    row->setFixedHeight(height);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(kSidePadding, 0, trailing ? 8 : kSidePadding, 0);
    layout->addWidget(new Label(m_theme, ColorRole::Heading, Fonts::interface(Fonts::kInterfaceSize, QFont::DemiBold),
                                u"Session Context"_s),
                      1);
    layout->addWidget(m_add);
    if (trailing)
        layout->addWidget(trailing);
    return row;
}

QWidget *SessionContextView::makeSuggestionsRow()
{
    auto *row = new QWidget;
    setAccessibleRole(*row, QAccessible::Grouping);
    row->setAccessibleName(u"Suggestions"_s);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(kSidePadding, 0, 0, 8);
    layout->setSpacing(kChipSpacing);
    layout->addWidget(new Label(m_theme, ColorRole::SecondaryText, Fonts::interface(12), u"Suggestions:"_s), 0,
                      Qt::AlignVCenter);
    auto *line = new QWidget;
    m_chips = new QHBoxLayout(line);
    m_chips->setContentsMargins(2, 2, kSidePadding, 2); // room for the focus ring
    m_chips->setSpacing(kChipSpacing);
    auto *area = new ScrolledContent(line, ScrolledContent::Direction::Sideways);
    area->setFixedHeight(SuggestionChip(m_theme, u"x"_s).sizeHint().height() + 4);
    layout->addWidget(area, 1);
    return row;
}

QWidget *SessionContextView::makePlaceholder()
{
    auto *place = new QWidget;
    auto *column = new QVBoxLayout(place);
    column->setContentsMargins(kSidePadding, 8, kSidePadding, 8);
    column->setSpacing(6);
    const auto addLine = [&](ColorRole role, const QFont &font, const QString &words) {
        auto *label = new Label(m_theme, role, font, words);
        label->setAlignment(Qt::AlignHCenter);
        label->setWordWrap(true);
        label->setFixedWidth(kPlaceholderWidth);
        column->addWidget(label, 0, Qt::AlignHCenter);
    };
    column->addStretch(2);
    addLine(ColorRole::SecondaryText, Fonts::interface(Fonts::kInterfaceSize, QFont::DemiBold),
            u"No Session Context"_s);
    addLine(ColorRole::TertiaryText, Fonts::interface(12),
            u"Add reference files or custom topics to build your session context."_s);
    column->addStretch(3);
    return place;
}

void SessionContextView::update()
{
    updateSuggestions();
    updateItems();
    updatePopover();
    updateSheet();
    updateDuplicateAlert();
}

void SessionContextView::updateSuggestions()
{
    const QStringList suggestions = m_context.visibleSuggestions();
    m_suggestionsRow->setVisible(!suggestions.isEmpty());
    if (suggestions == m_shownSuggestions)
        return;
    m_shownSuggestions = suggestions;
    const bool hadFocus = holdsFocus(*m_suggestionsRow);
    clear(*m_chips);
    for (const QString &suggestion : suggestions) {
        auto *chip = new SuggestionChip(m_theme, suggestion);
        connect(chip, &QAbstractButton::clicked, &m_context,
                [this, suggestion] { m_context.chooseSuggestion(suggestion); });
        m_chips->addWidget(chip);
        chip->show(); // at once: the layout would wait
    }
    m_chips->addStretch();
    if (hadFocus)
        m_add->setFocus(Qt::OtherFocusReason); // the chip is gone
}

void SessionContextView::updateItems()
{
    const QList<ContextItem> items = m_context.attachedContexts();
    m_placeholder->setVisible(items.isEmpty());
    m_list->setVisible(!items.isEmpty());
    if (items == m_shownItems)
        return;
    // Rows in front of the first that is another one stay: a folder's files, dropped at once, come one by one.
    const auto other =
        std::mismatch(m_shownItems.cbegin(), m_shownItems.cend(), items.cbegin(), items.cend()).second - items.cbegin();
    m_shownItems = items;
    const int focused = focusedIndex(*m_rows);
    clear(*m_rows, static_cast<int>(other));
    for (const ContextItem &item : items.sliced(other)) {
        auto *row = new ContextRow(m_theme, item);
        connect(row, &QAbstractButton::clicked, &m_context, [this, item] { m_context.editItem(item); });
        m_rows->addWidget(row);
        row->show(); // the same, to be able to take the focus
    }
    if (focused < other)
        return; // nothing had it, or what has it stays
    QWidget *heir = items.isEmpty() ? static_cast<QWidget *>(m_add)
                                    : m_rows->itemAt(std::min(focused, m_rows->count() - 1))->widget();
    heir->setFocus(Qt::OtherFocusReason);
}

void SessionContextView::updatePopover()
{
    if (m_context.isShowingAddContextPopover() == !m_popover.isNull())
        return;
    if (m_popover) {
        m_popover->disconnect(&m_context);
        m_popover->close();
        m_popover->deleteLater(); // this may be in answer to one of its buttons
        m_popover = nullptr;
        return;
    }
    auto *content = new AddContextPopover(m_context, m_theme);
    connect(content, &AddContextPopover::filesWanted, this, [this] {
        m_context.setShowingAddContextPopover(false);
        m_context.attachFiles(m_askForFiles(), AttachmentSource::Panel);
    });
    m_popover = new Popover(m_theme, u"Add Session Context"_s, window());
    m_popover->setContent(content);
    connect(m_popover, &Popover::closed, &m_context, [this] { m_context.setShowingAddContextPopover(false); });
    m_popover->showAt(*m_add);
    content->focusField();
}

void SessionContextView::updateSheet()
{
    if (m_context.editingItem().has_value() == !m_sheet.isNull())
        return;
    if (m_sheet) {
        m_sheet->disconnect(&m_context);
        m_sheet->close();
        m_sheet->deleteLater();
        m_sheet = nullptr;
        return;
    }
    m_sheet = new ContextCardSheet(m_context, m_theme, window());
    m_sheet->open();
}

void SessionContextView::updateDuplicateAlert()
{
    if (!m_context.isShowingDuplicateAlert()) {
        if (m_alert)
            m_alert->close();
        return;
    }
    if (m_alert) {
        m_alert->setInformativeText(shownPart(m_context.duplicateMessage(), kMostOfMessage)); // of a later item
        return;
    }
    const QString title = u"Likely Duplicate Detected"_s;
    m_alert = new QMessageBox(window());
    m_alert->setAttribute(Qt::WA_DeleteOnClose);
    m_alert->setWindowTitle(title);
    m_alert->setTextFormat(Qt::PlainText);
    m_alert->setText(title);
    m_alert->setInformativeText(shownPart(m_context.duplicateMessage(), kMostOfMessage));
    if (auto *heading = m_alert->findChild<QLabel *>(u"qt_msgbox_label"_s))
        heading->setFont(Fonts::interface(Fonts::kInterfaceSize, QFont::DemiBold));
    // Made with the text; its own format would take a name for markup.
    if (auto *body = m_alert->findChild<QLabel *>(u"qt_msgbox_informativelabel"_s))
        body->setTextFormat(Qt::PlainText);
    QPushButton *addAnyway = m_alert->addButton(u"Add Anyway"_s, QMessageBox::AcceptRole);
    QPushButton *cancel = m_alert->addButton(u"Cancel"_s, QMessageBox::RejectRole);
    m_alert->setDefaultButton(addAnyway);
    m_alert->setEscapeButton(cancel);
    // However it is closed: the window's own button presses none of these.
    connect(m_alert, &QDialog::finished, &m_context, [this, alert = m_alert.data(), addAnyway] {
        m_alert = nullptr; // it goes by itself
        if (alert->clickedButton() == addAnyway)
            m_context.addAnyway();
        else
            m_context.cancelPending();
    });
    m_alert->open();
}

void SessionContextView::dragEnterEvent(QDragEnterEvent *event)
{
    if (!localFiles(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void SessionContextView::dropEvent(QDropEvent *event)
{
    event->setDropAction(Qt::CopyAction); // a file manager that moves would remove what was attached
    event->accept();
    m_context.attachFiles(localFiles(*event->mimeData()), AttachmentSource::Drop);
}

} // namespace Tessaline
