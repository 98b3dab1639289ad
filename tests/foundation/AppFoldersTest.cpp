#include "foundation/AppFolders.h"

#include "tests/support/TemporaryFiles.h"

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

/// Sets a variable of the environment for as long as this lives; a null value unsets it.
class Variable
{
public:
    Variable(const char *name, const QByteArray &value)
        : m_name(name), m_before(qgetenv(name)), m_wasSet(qEnvironmentVariableIsSet(name))
    {
        if (value.isNull())
            qunsetenv(m_name);
        else
            qputenv(m_name, value);
    }
    ~Variable()
    {
        if (m_wasSet)
            qputenv(m_name, m_before);
        else
            qunsetenv(m_name);
    }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

private:
    const char *m_name;
    QByteArray m_before;
    bool m_wasSet;
};

} // namespace

TEST(AppFolders, LieInTheFoldersThatTheEnvironmentNames)
{
    const TemporaryFiles files;
    const Variable config("XDG_CONFIG_HOME", files.url(u"config"_s).path().toUtf8());
    const Variable data("XDG_DATA_HOME", files.url(u"data"_s).path().toUtf8());
    const Variable cache("XDG_CACHE_HOME", files.url(u"cache"_s).path().toUtf8());

    const AppFolders folders = AppFolders::ofUser(u"com.orlenth.tessaline"_s);

    EXPECT_EQ(folders.configuration, files.url(u"config/com.orlenth.tessaline"_s));
    EXPECT_EQ(folders.data, files.url(u"data/com.orlenth.tessaline"_s));
    EXPECT_EQ(folders.cache, files.url(u"cache/com.orlenth.tessaline"_s));
    EXPECT_FALSE(files.exists(u"config"_s)); // nothing is made
}

TEST(AppFolders, LieInTheHomeWhereTheEnvironmentNamesNone)
{
    const TemporaryFiles files;
    const Variable home("HOME", files.folder().path().toUtf8());
    const Variable config("XDG_CONFIG_HOME", QByteArray());
    const Variable data("XDG_DATA_HOME", QByteArray());
    const Variable cache("XDG_CACHE_HOME", QByteArray());

    const AppFolders folders = AppFolders::ofUser(u"com.orlenth.tessaline"_s);

    EXPECT_EQ(folders.configuration, files.url(u".config/com.orlenth.tessaline"_s));
    EXPECT_EQ(folders.data, files.url(u".local/share/com.orlenth.tessaline"_s));
    EXPECT_EQ(folders.cache, files.url(u".cache/com.orlenth.tessaline"_s));
}

TEST(AppFolders, ARelativeFolderInTheEnvironmentIsIgnored)
{
    const TemporaryFiles files;
    const Variable home("HOME", files.folder().path().toUtf8());
    const Variable config("XDG_CONFIG_HOME", "relative/config");

    EXPECT_EQ(AppFolders::ofUser(u"com.orlenth.tessaline"_s).configuration,
              files.url(u".config/com.orlenth.tessaline"_s));
}

} // namespace Tessaline
