#include "foundation/Preferences.h"

#include "tests/support/SmallDisk.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>

#include <gtest/gtest.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

class PreferencesTest : public ::testing::Test
{
protected:
    FileURL file() const { return m_files.url(u"config/preferences.json"_s); }
    QByteArray stored() const { return m_files.read(u"config/preferences.json"_s); }
    QJsonObject storedObject() const { return QJsonDocument::fromJson(stored()).object(); }
    void store(const QByteArray &bytes) const { m_files.write(u"config/preferences.json"_s, bytes); }

    const TemporaryFiles m_files;
};

} // namespace

TEST_F(PreferencesTest, AreEmptyWithoutAFile)
{
    const Preferences preferences(file());

    EXPECT_EQ(preferences.string(u"key"_s), std::nullopt);
    EXPECT_EQ(preferences.stringList(u"key"_s), std::nullopt);
    EXPECT_EQ(preferences.number(u"key"_s), std::nullopt);
    EXPECT_FALSE(m_files.exists(u"config"_s)); // nothing is made before there is something to store
}

TEST_F(PreferencesTest, AreFoundAgainByTheNextProcess)
{
    {
        Preferences preferences(file());
        preferences.set(u"theme"_s, u"Dark"_s);
        preferences.set(u"files"_s, QStringList{u"/a b.md"_s, u"/ü😀\n.md"_s});
        preferences.set(u"size"_s, 17.5);
    }

    const Preferences preferences(file());

    EXPECT_EQ(preferences.string(u"theme"_s), u"Dark"_s);
    EXPECT_EQ(preferences.stringList(u"files"_s), (QStringList{u"/a b.md"_s, u"/ü😀\n.md"_s}));
    EXPECT_EQ(preferences.number(u"size"_s), 17.5);
}

TEST_F(PreferencesTest, AnEmptyListAndAnEmptyTextAreValues)
{
    {
        Preferences preferences(file());
        preferences.set(u"files"_s, QStringList());
        preferences.set(u"text"_s, QString());
        EXPECT_EQ(preferences.stringList(u"files"_s), QStringList());
        EXPECT_EQ(preferences.stringList(u"other"_s), std::nullopt);
    }

    const Preferences preferences(file());

    EXPECT_EQ(preferences.stringList(u"files"_s), QStringList());
    EXPECT_EQ(preferences.string(u"text"_s), QString());
}

TEST_F(PreferencesTest, AValueOfAWrongTypeCountsAsAbsent)
{
    store(R"({"string": 7, "list": "one", "mixed": ["one", 2], "number": "17", "null": null, "object": {"a": 1},
              "bool": true})");
    const Preferences preferences(file());

    EXPECT_EQ(preferences.string(u"string"_s), std::nullopt);
    EXPECT_EQ(preferences.stringList(u"list"_s), std::nullopt);
    EXPECT_EQ(preferences.stringList(u"mixed"_s), std::nullopt);
    EXPECT_EQ(preferences.number(u"number"_s), std::nullopt);
    EXPECT_EQ(preferences.number(u"bool"_s), std::nullopt);
    for (const QString &key : {u"null"_s, u"object"_s}) {
        EXPECT_EQ(preferences.string(key), std::nullopt);
        EXPECT_EQ(preferences.stringList(key), std::nullopt);
        EXPECT_EQ(preferences.number(key), std::nullopt);
    }
}

TEST_F(PreferencesTest, UnknownKeysStayInTheFile)
{
    store(R"({"fromLater": {"nested": [1, 2.5, null]}, "big": 9007199254740993, "theme": "Dark"})");
    {
        Preferences preferences(file());
        preferences.set(u"theme"_s, u"Light"_s);
    }

    const QJsonObject object = storedObject();
    EXPECT_EQ(object.value(u"fromLater"_s), QJsonDocument::fromJson(R"({"nested": [1, 2.5, null]})").object());
    EXPECT_EQ(object.value(u"big"_s).toInteger(), 9007199254740993);
    EXPECT_EQ(object.value(u"theme"_s).toString(), u"Light"_s);
}

TEST_F(PreferencesTest, ARemovedValueIsAbsentAndLeavesTheFile)
{
    store(R"({"active": "/a.md", "theme": "Dark"})");
    {
        Preferences preferences(file());
        preferences.remove(u"active"_s);
        EXPECT_EQ(preferences.string(u"active"_s), std::nullopt);
    }

    EXPECT_EQ(storedObject().keys(), QStringList{u"theme"_s});
}

TEST_F(PreferencesTest, RemovingWhatIsNotThereWritesNothing)
{
    {
        Preferences preferences(file());
        preferences.remove(u"active"_s);
    }

    EXPECT_FALSE(m_files.exists(u"config"_s));
}

TEST_F(PreferencesTest, TellOfARealChangeOnlyAndWhenItCanBeRead)
{
    Preferences preferences(file());
    QList<std::optional<QString>> seen;
    QObject::connect(&preferences, &Preferences::valueChanged, &preferences,
                     [&](const QString &key) { seen.append(preferences.string(key)); });

    preferences.set(u"theme"_s, u"Dark"_s);
    preferences.set(u"theme"_s, u"Dark"_s);
    preferences.set(u"theme"_s, u"Light"_s);
    preferences.remove(u"theme"_s);

    EXPECT_EQ(seen, (QList<std::optional<QString>>{u"Dark"_s, u"Light"_s, std::nullopt}));
}

TEST_F(PreferencesTest, AFileThatIsNoJsonCountsAsEmptyAndIsSetAside)
{
    for (const QByteArray &damaged :
         {QByteArray("not JSON"), QByteArray(R"({"theme": "Da)"), QByteArray(R"(["a list"])"),
          QByteArray("\xFF\xFE\0\1", 4), QByteArray(R"("text")")}) {
        store(damaged);
        {
            Preferences preferences(file());
            EXPECT_EQ(preferences.string(u"theme"_s), std::nullopt);
            preferences.set(u"theme"_s, u"Dark"_s);
        }
        EXPECT_EQ(m_files.read(u"config/preferences.json.damaged"_s), damaged);
        EXPECT_EQ(storedObject().value(u"theme"_s).toString(), u"Dark"_s);
    }
}

TEST_F(PreferencesTest, AnEmptyFileIsNoDamage)
{
    store("\n");
    const Preferences preferences(file());

    EXPECT_FALSE(m_files.exists(u"config/preferences.json.damaged"_s));
    EXPECT_TRUE(m_files.exists(u"config/preferences.json"_s));
}

TEST_F(PreferencesTest, AFolderInThePlaceOfTheFileLeavesThemUsable)
{
    m_files.makeFolder(u"config/preferences.json"_s);
    Preferences preferences(file());

    ::testing::internal::CaptureStdout();
    preferences.set(u"theme"_s, u"Dark"_s);
    preferences.waitForWrites();
    const std::string log = ::testing::internal::GetCapturedStdout();

    EXPECT_EQ(preferences.string(u"theme"_s), u"Dark"_s);
    EXPECT_EQ(log, "Failed to store the preferences in " + file().path().toStdString() +
                       ": There is a folder of that name.\n");
}

TEST_F(PreferencesTest, AFolderThatCannotBeMadeLeavesThemUsable)
{
    m_files.write(u"config"_s, "a file where the folder should be");
    Preferences preferences(file());

    ::testing::internal::CaptureStdout();
    preferences.set(u"theme"_s, u"Dark"_s);
    preferences.waitForWrites();
    ::testing::internal::GetCapturedStdout();

    EXPECT_EQ(preferences.string(u"theme"_s), u"Dark"_s);
    EXPECT_EQ(m_files.read(u"config"_s), "a file where the folder should be");
}

TEST_F(PreferencesTest, ADiskThatCanOnlyBeReadKeepsWhatItHas)
{
    SmallDisk disk;
    if (!disk.isMounted())
        GTEST_SKIP() << "Mounting is refused here; AFolderInThePlaceOfTheFile... is a failed write too.";
    disk.write(u"preferences.json"_s, R"({"theme": "Dark"})");
    disk.makeReadOnly();

    ::testing::internal::CaptureStdout();
    Preferences preferences(disk.url(u"preferences.json"_s));
    preferences.set(u"theme"_s, u"Light"_s);
    preferences.waitForWrites();
    ::testing::internal::GetCapturedStdout();

    EXPECT_EQ(preferences.string(u"theme"_s), u"Light"_s);
    EXPECT_EQ(disk.read(u"preferences.json"_s), R"({"theme": "Dark"})");
}

TEST_F(PreferencesTest, TheNewestOfManyChangesIsStored)
{
    Preferences preferences(file());
    for (int i = 0; i <= 5000; ++i)
        preferences.set(u"size"_s, double(i));
    preferences.waitForWrites();

    EXPECT_EQ(storedObject().value(u"size"_s).toDouble(), 5000.0);
}

TEST_F(PreferencesTest, ChangesAreStoredSoonWithoutBeingAskedFor)
{
    Preferences preferences(file());
    preferences.set(u"theme"_s, u"Dark"_s);

    EXPECT_TRUE(eventually([&] { return storedObject().value(u"theme"_s).toString() == u"Dark"_s; }));
}

TEST_F(PreferencesTest, ALinkToTheFileStaysALink)
{
    m_files.write(u"dotfiles/tessaline.json"_s, "{}");
    m_files.makeFolder(u"config"_s);
    ASSERT_TRUE(QFile::link(m_files.url(u"dotfiles/tessaline.json"_s).path(), file().path()));
    {
        Preferences preferences(file());
        preferences.set(u"theme"_s, u"Dark"_s);
    }

    EXPECT_TRUE(QFileInfo(file().path()).isSymLink());
    EXPECT_TRUE(m_files.read(u"dotfiles/tessaline.json"_s).contains("Dark"));
}

} // namespace Tessaline
