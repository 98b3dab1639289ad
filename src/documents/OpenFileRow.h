#pragma once

#include "documents/OpenFileReference.h"
#include "foundation_ui/PlainButton.h"

namespace Tessaline {

class IconButton;

/// A row of the open files: symbol, name, the project's name below it, and a button that closes the file.
class OpenFileRow final : public PlainButton
{
    Q_OBJECT
public:
    explicit OpenFileRow(const Theme &theme, QWidget *parent = nullptr);

    void setFile(const OpenFileReference &file);
    const FileURL &url() const { return m_file.url; }
    void setIsActive(bool isActive);

    QAccessible::Role accessibleRole() const override { return QAccessible::ListItem; }
    bool isShownSelected() const override { return m_isActive; }

Q_SIGNALS:
    void closeRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;

private:
    void takeCloseState();

    OpenFileReference m_file;
    QString m_name;
    QString m_symbol;
    IconButton *m_close;
    bool m_isActive = false;
};

} // namespace Tessaline
