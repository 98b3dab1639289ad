#pragma once

#include "foundation/FileURL.h"

#include <QCoro/QCoroTask>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <functional>
#include <optional>
#include <stop_token>
#include <variant>

namespace Tessaline {

class DocumentStore;
class EditorArea;
class EventCenter;
class LocalAIService;
class Workspace;

/// The result that is shown beside the tools.
namespace ActivePopover {
struct None {
    friend bool operator==(const None &, const None &) = default;
};
struct Rephrase {
    QString original;    // as it was selected
    QString replacement; // what the model wrote, or why it wrote nothing
    friend bool operator==(const Rephrase &, const Rephrase &) = default;
};
struct Summary {
    QString content;
    friend bool operator==(const Summary &, const Summary &) = default;
};
using Value = std::variant<None, Rephrase, Summary>;
} // namespace ActivePopover

struct SelectionToolsParts {
    Workspace &workspace; // for the active file
    EditorArea &area;     // has its text
    DocumentStore &documents;
    LocalAIService &ai;
    EventCenter &events;
    std::function<void(const QString &)> copyToClipboard;
};

/// The assistant's tools for a selection: rephrase it, summarise it, explain it. The first two ask beside the chat and
/// show a card, the third asks in the chat. Main thread only; all parts outlive this object.
class SelectionTools final : public QObject
{
    Q_OBJECT
public:
    enum class Tool { Rephrase, Summarize, Explain };

    /// What the button of a tool shows.
    struct ButtonState {
        QString label;
        QString help; // says why, where the tool cannot be used
        bool isLoading = false;
        bool isEnabled = false;
        friend bool operator==(const ButtonState &, const ButtonState &) = default;
    };

    explicit SelectionTools(SelectionToolsParts parts, QObject *parent = nullptr);
    ~SelectionTools() override; // results that are still to come are dropped

    ButtonState button(Tool tool) const;
    void use(Tool tool); // does nothing without a selection or without an active file

    const ActivePopover::Value &activePopover() const { return m_activePopover; }
    void closePopover();
    void copyResult();

    /// Puts the rephrased text in the place of the selected one, which is looked for in the document as it is now, and
    /// saves. If it is not there once, or there are two, only the card closes.
    void acceptRephrase();

    const QString &selectedText() const { return m_selectedText; }
    const QString &selectedSourceText() const { return m_selectedSourceText; }

Q_SIGNALS:
    /// A button or the card has changed.
    void changed();

private:
    void takeSelection(const QVariantMap &info);
    QCoro::Task<> rephrase(QString selected, QString content);
    QCoro::Task<> summarize(QString selected, QString content);
    QCoro::Task<> explain(QString selected, QString content);
    QCoro::Task<QString> answerBeside(QString prompt, QString content, QString failed);
    QCoro::Task<> replace(FileURL url, QString sought, QString replacement);
    void setPopover(ActivePopover::Value popover);

    SelectionToolsParts m_parts;
    QString m_selectedText;
    QString m_selectedSourceText;
    QString m_rephraseSourceText; // of the rephrase that was started last
    ActivePopover::Value m_activePopover;
    bool m_isRephrasing = false;
    bool m_isSummarizing = false;
    std::stop_source m_life;
};

} // namespace Tessaline
