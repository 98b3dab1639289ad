#include "foundation_ui/LinkQuestion.h"

#include <QtGui/QTextOption>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kWidth = 440;
constexpr int kFewestRows = 2;
constexpr int kMostRows = 8; // the field scrolls beyond

bool isHiding(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_NotAssigned:
    case QChar::Other_PrivateUse:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    case QChar::Separator_Space:
        return character != U' ';
    default:
        return false;
    }
}

} // namespace

QString LinkQuestion::shown(const QString &target)
{
    QString shown;
    shown.reserve(target.size());
    for (const char32_t character : target.toUcs4()) {
        if (isHiding(character))
            shown.append(u"‹U+%1›"_s.arg(static_cast<uint>(character), 4, 16, QChar(u'0')).toUpper());
        else
            shown.append(QStringView(QChar::fromUcs4(character)));
    }
    return shown;
}

LinkQuestion::LinkQuestion(const QString &target, QWidget *parent) : QDialog(parent)
{
    setWindowTitle(tr("Open Link"));
    auto *const text = new QLabel(tr("This link leads out of the document. Open it?"), this);

    auto *const field = new QPlainTextEdit(shown(target), this);
    field->setReadOnly(true);
    field->setTabChangesFocus(true);
    field->setAccessibleName(tr("Target"));
    field->setWordWrapMode(QTextOption::WrapAnywhere);
    field->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    const QFontMetrics metrics(field->font());
    const int rows = 1 + metrics.horizontalAdvance(shown(target).left(kWidth)) / kWidth;
    const double edges = 2 * (field->document()->documentMargin() + field->frameWidth());
    field->setFixedHeight(std::clamp(rows, kFewestRows, kMostRows) * metrics.lineSpacing() + static_cast<int>(edges));
    field->setMinimumWidth(kWidth);

    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Open)->setAutoDefault(false);
    buttons->button(QDialogButtonBox::Cancel)->setDefault(true);
    buttons->button(QDialogButtonBox::Cancel)->setFocus();
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *const layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(text);
    layout->addWidget(field);
    layout->addWidget(buttons);
}

} // namespace Tessaline
