#pragma once

#include <QtCore/QList>
#include <QtWidgets/QDialog>

class QMenuBar;
class QVBoxLayout;

namespace Tessaline {

class Theme;

/// The keys of one menu.
struct ShortcutGroup {
    struct Row {
        QString title;
        QString keys; // as the platform writes them; two ways to do the same are joined by "or"
        friend bool operator==(const Row &, const Row &) = default;
    };
    QString title;
    QList<Row> rows;
    friend bool operator==(const ShortcutGroup &, const ShortcutGroup &) = default;
};

/// What has a key in the menus, menu by menu, and then under "Window" the actions of `window` itself.
QList<ShortcutGroup> shortcutGroups(const QMenuBar &menus, const QWidget &window);

/// The list of all keys.
class ShortcutsDialog final : public QDialog
{
    Q_OBJECT
public:
    /// `theme` must outlive the dialog.
    ShortcutsDialog(const Theme &theme, const QList<ShortcutGroup> &groups, QWidget *parent = nullptr);

private:
    void addGroup(const ShortcutGroup &group, QVBoxLayout *column);

    const Theme &m_theme;
};

} // namespace Tessaline
