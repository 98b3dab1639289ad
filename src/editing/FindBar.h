#pragma once

#include "editing/FindSession.h"

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

class QLineEdit;

namespace Tessaline {

class DocumentEditor;
class IconButton;
class Label;
class Theme;

/// The bar for find and replace, placed under the toolbars and hidden until it is asked for. Return and F3 find the
/// next occurrence, with Shift the one before; Esc closes it and gives the focus back to the editor.
class FindBar final : public QWidget
{
    Q_OBJECT
public:
    /// `theme` must outlive the bar.
    explicit FindBar(const Theme &theme, QWidget *parent = nullptr);
    ~FindBar() override;

    /// The editor that is searched; null for none, which also closes the bar. Not owned.
    void setTarget(DocumentEditor *editor);

    /// Show the bar with the selection (if it is within one line) as the text to find, with or without the row for
    /// replacing.
    void openFind();
    void openReplace();
    /// Work also while the bar is closed, with the last text that was searched for.
    void findNext();
    void findPrevious();
    void close();

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void open(bool withReplace);
    void setQuery(FindSession::Follow follow);
    void updateQuery();
    void showCount();

    const Theme &m_theme;
    FindSession m_session;
    QPointer<DocumentEditor> m_target;
    QString m_notice; // what was just done; shown in place of the count until something else happens
    QLineEdit *m_findField;
    QLineEdit *m_replaceField;
    QWidget *m_replaceRow;
    Label *m_count;
    IconButton *m_matchCase;
    IconButton *m_wholeWords;
};

} // namespace Tessaline
