#include "Services/AISettings.h"

#include "documents/AppPreferences.h"
#include "Services/LocalAIService.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

AISettings::AISettings(LocalAIService &service, AppPreferences &preferences, quint64 physicalMemoryBytes,
                       QObject *parent)
    : QObject(parent), m_service(service), m_preferences(preferences), m_physicalMemoryBytes(physicalMemoryBytes)
{
    connect(&preferences, &AppPreferences::aiModelSelectionChanged, this, &AISettings::selectionChanged);
    connect(&preferences, &AppPreferences::aiModelSelectionChanged, this, &AISettings::canApplyChanged);
    connect(&service, &LocalAIService::activeModelChanged, this, &AISettings::canApplyChanged);
    connect(&service, &LocalAIService::isGeneratingChanged, this, &AISettings::canApplyChanged);
}

QList<AISettings::Choice> AISettings::choices() const
{
    QList<Choice> choices{
        {kAutomaticModelSelection, tr("Automatic — %1").arg(recommendedModel(m_physicalMemoryBytes).displayName)}};
    for (const AIModelOption &model : approvedModels())
        choices.append({model.id, u"%1 — %2"_s.arg(model.displayName, model.downloadSize)});
    return choices;
}

qsizetype AISettings::selectedChoice() const
{
    const QString selection = m_preferences.aiModelSelection();
    const QList<Choice> all = choices();
    for (qsizetype index = 0; index < all.size(); ++index)
        if (all[index].value == selection)
            return index;
    return -1;
}

void AISettings::select(const QString &value)
{
    m_preferences.setAiModelSelection(value);
}

AISettings::Detail AISettings::detail() const
{
    const AIModelOption &model = selectedModel();
    const bool hasMemory = static_cast<quint64>(model.minimumMemoryGB) <= m_physicalMemoryBytes >> 30;
    return {model.displayName,
            tr("%1 · %2 token context").arg(model.parameterLabel, QString::number(model.contextTokens)), model.summary,
            hasMemory ? QString()
                      : tr("This model expects at least %1 GB of memory.").arg(QString::number(model.minimumMemoryGB))};
}

QString AISettings::memory() const
{
    return tr("%1 GB memory").arg(QString::number(m_physicalMemoryBytes >> 30));
}

bool AISettings::canApply() const
{
    return !m_service.isGenerating() && m_service.activeModel().id != selectedModel().id;
}

void AISettings::apply()
{
    if (!canApply())
        return;
    m_service.cancelGeneration();
    m_service.stopServer();
    m_service.startServer();
}

const AIModelOption &AISettings::selectedModel() const
{
    return resolveActiveModel(m_preferences.aiModelSelection(), m_physicalMemoryBytes);
}

} // namespace Tessaline
