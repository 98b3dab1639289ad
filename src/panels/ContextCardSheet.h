#pragma once

#include <QtCore/QString>
#include <QtWidgets/QDialog>

class QLineEdit;
class QPlainTextEdit;

namespace Tessaline {

class SessionContext;
class TextButton;
class Theme;

/// The sheet in which the fields of a card are written. It is made when the form has an item to edit, and closing it in
/// any other way than by its buttons is "Cancel". A content of more than a million characters cannot be changed in it.
class ContextCardSheet final : public QDialog
{
    Q_OBJECT
public:
    /// Both outlive the sheet.
    ContextCardSheet(SessionContext &context, const Theme &theme, QWidget *parent);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void store();
    QString content() const;

    SessionContext &m_context;
    const Theme &m_theme;
    QLineEdit *m_title;
    QLineEdit *m_subtitle;
    QPlainTextEdit *m_content;
    QString m_givenContent;
    TextButton *m_save;
};

} // namespace Tessaline
