#pragma once

#include <QtWidgets/QWidget>

class QAbstractButton;
class QComboBox;

namespace Tessaline {

class AISettings;
class Label;
class Theme;

/// The settings of the assistant: which model, what that is, and the button that restarts the server with it. It draws
/// what AISettings decides.
class AISettingsView final : public QWidget
{
    Q_OBJECT
public:
    static constexpr QSize kSize{520, 390}; // higher only where the faces are

    /// Both must outlive the view.
    AISettingsView(const Theme &theme, AISettings &settings, QWidget *parent = nullptr);

private:
    QWidget *makeDetail();
    void showSelection();

    const Theme &m_theme;
    AISettings &m_settings;
    QComboBox *m_picker;
    Label *m_name;
    Label *m_size;
    Label *m_summary;
    QWidget *m_warning; // with its symbol
    Label *m_warningText;
    QAbstractButton *m_apply;
};

} // namespace Tessaline
