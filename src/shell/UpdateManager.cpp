#include "shell/UpdateManager.h"

#include "foundation/ConsoleLine.h"

#include <QtCore/QStringList>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

bool runsUnderTestHost(const QProcessEnvironment &environment)
{
    const QStringList names = environment.keys();
    return std::any_of(names.begin(), names.end(), [](const QString &name) { return name.startsWith("XCTest"_L1); });
}

bool isConfigured(const QVariant &publicEDKey)
{
    return publicEDKey.metaType() == QMetaType::fromType<QString>() && !publicEDKey.toString().trimmed().isEmpty();
}

} // namespace

UpdateEnvironment UpdateEnvironment::ofProcess()
{
    UpdateEnvironment real;
    real.environment = QProcessEnvironment::systemEnvironment();
    real.publicEDKey = QString::fromLatin1(TESSALINE_SPARKLE_PUBLIC_ED_KEY); // empty unless the build was given one
    real.log = printConsoleLine;
    return real;
}

UpdateManager::UpdateManager(const UpdateEnvironment &environment)
{
    if (runsUnderTestHost(environment.environment))
        return;
    if (!isConfigured(environment.publicEDKey)) {
        environment.log(u"Sparkle is disabled: set TESSALINE_SPARKLE_PUBLIC_ED_KEY when building the release."_s);
        return;
    }
    if (!environment.startUpdater)
        return;
    m_updaterController = environment.startUpdater();
    if (m_updaterController)
        m_updaterController->setAutomaticallyChecksForUpdates(true);
}

UpdateManager::~UpdateManager() = default;

void UpdateManager::checkForUpdates()
{
    if (m_updaterController)
        m_updaterController->checkForUpdates();
}

} // namespace Tessaline
