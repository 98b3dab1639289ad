#pragma once

#include "Services/AIModelOption.h"

#include <QtCore/QObject>

namespace Tessaline {

class AppPreferences;
class LocalAIService;

/// What the settings of the assistant show and do, without the view. Choosing a model changes the stored preference at
/// once; the server follows with `apply`, or at its next start. Main thread only.
class AISettings final : public QObject
{
    Q_OBJECT
public:
    /// An entry of the picker.
    struct Choice {
        QString value; // as it is stored
        QString title;
        friend bool operator==(const Choice &, const Choice &) = default;
    };

    /// What is said about a model.
    struct Detail {
        QString displayName;
        QString size; // parameters and context window
        QString summary;
        QString warning; // empty if this machine has the memory that the model asks for
        friend bool operator==(const Detail &, const Detail &) = default;
    };

    /// `service` and `preferences` must outlive this object.
    AISettings(LocalAIService &service, AppPreferences &preferences, quint64 physicalMemoryBytes,
               QObject *parent = nullptr);

    QList<Choice> choices() const; // the automatic one first
    /// The place of the stored selection among `choices`; -1 if it is none of them, which works like the automatic one.
    qsizetype selectedChoice() const;
    void select(const QString &value);

    Detail detail() const;  // of the model that the selection means
    QString memory() const; // of this machine, in whole GiB, rounded down

    /// Whether there is something to apply: the selection means another model than the server was started with, and
    /// nothing is being generated.
    bool canApply() const;
    /// Restarts the server with the selection: stops what is being generated, then the server (which blocks until it
    /// has gone), then starts it. Nothing if it cannot be applied.
    void apply();

Q_SIGNALS:
    void selectionChanged(); // and with it the detail
    void canApplyChanged();  // it may have changed

private:
    const AIModelOption &selectedModel() const;

    LocalAIService &m_service;
    AppPreferences &m_preferences;
    quint64 m_physicalMemoryBytes;
};

} // namespace Tessaline
