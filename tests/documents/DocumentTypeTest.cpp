#include "documents/DocumentType.h"

#include "tests/support/TemporaryFiles.h"
#include "tests/support/WithoutPrivileges.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype kCheckedBytes = 8192;
const std::optional<DocumentType> kMarkdown = DocumentType::Markdown;
const std::optional<DocumentType> kPlainText = DocumentType::PlainText;

std::optional<DocumentType> typeOfFile(const QString &name, const QByteArray &bytes)
{
    const TemporaryFiles files{{name, bytes}};
    return documentType(files.url(name));
}

std::optional<DocumentType> typeOfMissingFile(const QString &name)
{
    return documentType(FileURL(u"/no such folder/"_s + name));
}

} // namespace

void PrintTo(const std::optional<DocumentType> &type, std::ostream *out)
{
    *out << (type ? rawValue(*type).toStdString() : "no type");
}

TEST(DocumentType, HasARawValue)
{
    EXPECT_EQ(rawValue(DocumentType::Markdown), u"markdown"_s);
    EXPECT_EQ(rawValue(DocumentType::PlainText), u"plainText"_s);
}

TEST(DocumentType, MarkdownExtensionsCountInAnyCase)
{
    for (const QString &name :
         {u"a.md"_s, u"a.MD"_s, u"a.mD"_s, u"a.markdown"_s, u"a.Markdown"_s, u"a.MARKDOWN"_s, u"a.b.md"_s})
        EXPECT_EQ(typeOfMissingFile(name), kMarkdown) << name.toStdString();
}

TEST(DocumentType, LettersThatLowerToAsciiCount)
{
    EXPECT_EQ(typeOfMissingFile(u"a.mar\u212Adown"_s), kMarkdown); // the Kelvin sign's small letter is k
}

TEST(DocumentType, KnownTextTypesNeedNoLookAtTheContent)
{
    for (const QString &name :
         {u"a.txt"_s,  u"a.TXT"_s, u"a.text"_s, u"a.log"_s, u"a.csv"_s, u"a.tsv"_s, u"a.json"_s, u"a.xml"_s,
          u"a.html"_s, u"a.htm"_s, u"a.css"_s,  u"a.js"_s,  u"a.c"_s,   u"a.h"_s,   u"a.cpp"_s,  u"a.swift"_s,
          u"a.py"_s,   u"a.rb"_s,  u"a.sh"_s,   u"a.tex"_s, u"a.rst"_s, u"a.org"_s, u"a.yaml"_s, u"a.yml"_s,
          u"a.toml"_s, u"a.ini"_s, u"a.srt"_s,  u"a.rtf"_s, u"a.svg"_s, u"a.c++"_s}) {
        EXPECT_EQ(typeOfMissingFile(name), kPlainText) << name.toStdString();
    }
    EXPECT_EQ(typeOfFile(u"a.txt"_s, QByteArray("\0\xff", 2)), kPlainText);
}

TEST(DocumentType, KnownBinaryTypesAreJudgedByTheirContent)
{
    for (const QString &name : {u"a.png"_s, u"a.pdf"_s, u"a.zip"_s, u"a.docx"_s}) {
        EXPECT_EQ(typeOfFile(name, "text after all"), kPlainText) << name.toStdString();
        EXPECT_EQ(typeOfFile(name, QByteArray("\x89PNG\r\n\x1a\n\0", 9)), std::nullopt) << name.toStdString();
        EXPECT_EQ(typeOfMissingFile(name), std::nullopt) << name.toStdString();
    }
}

TEST(DocumentType, ExtensionsOfATextTypeAndABinaryTypeAreJudgedByTheirContent)
{
    EXPECT_EQ(typeOfFile(u"a.ts"_s, "const a: string = 'b';"), kPlainText);
    EXPECT_EQ(typeOfFile(u"a.ts"_s, QByteArray("G@\0\x10\0", 5)), std::nullopt); // a film
}

TEST(DocumentType, AnUnknownExtensionWithAsciiTextIsPlainText)
{
    EXPECT_EQ(typeOfFile(u"a.unknown"_s, "only ASCII\n"), kPlainText);
}

TEST(DocumentType, AFileWithoutAnExtensionIsJudgedByItsContent)
{
    EXPECT_EQ(typeOfFile(u"README"_s, "read me"), kPlainText);
    EXPECT_EQ(typeOfFile(u"program"_s, QByteArray("\x7f"
                                                  "ELF\0",
                                                  5)),
              std::nullopt);
    EXPECT_EQ(typeOfFile(u".md"_s, QByteArray("\0", 1)), std::nullopt)
        << "a name that is all dot and letters has no extension";
    EXPECT_EQ(typeOfFile(u"md"_s, QByteArray("\0", 1)), std::nullopt);
    EXPECT_EQ(typeOfFile(u"a."_s, "text"), kPlainText);
}

TEST(DocumentType, ADotInAFoldersNameIsNoExtension)
{
    EXPECT_EQ(typeOfFile(u"folder.md/data"_s, QByteArray("\0", 1)), std::nullopt);
}

TEST(DocumentType, OneZeroByteAmongTheFirst8192IsNoText)
{
    for (const qsizetype position : {qsizetype(0), qsizetype(100), kCheckedBytes - 1}) {
        QByteArray bytes(kCheckedBytes + 100, 'a');
        bytes[position] = '\0';
        EXPECT_EQ(typeOfFile(u"a.unknown"_s, bytes), std::nullopt) << position;
    }
}

TEST(DocumentType, AZeroByteAfterTheFirst8192DoesNotCount)
{
    QByteArray bytes(kCheckedBytes + 100, 'a');
    bytes[kCheckedBytes] = '\0';

    EXPECT_EQ(typeOfFile(u"a.unknown"_s, bytes), kPlainText);
}

TEST(DocumentType, InvalidUtf8IsNoText)
{
    for (const QByteArray &bytes : {QByteArray("caf\xe9"),
                                    QByteArray("\xff\xfe"
                                               "a"),
                                    QByteArray("\xc0\xaf"), QByteArray("\xed\xa0\x80"), QByteArray("\xf5\x80\x80\x80"),
                                    QByteArray("cut \xe2\x82")})
        EXPECT_EQ(typeOfFile(u"a.unknown"_s, bytes), std::nullopt) << bytes.toHex().constData();
}

TEST(DocumentType, Utf8OfEveryLengthIsText)
{
    EXPECT_EQ(typeOfFile(u"a.unknown"_s, "\xEF\xBB\xBF"
                                         "a é € 𝄞 \xEF\xBF\xBF"),
              kPlainText);
}

TEST(DocumentType, ACharacterCutByTheLimitIsNoText)
{
    const QByteArray euro = "\xe2\x82\xac";
    for (const qsizetype inside : {1, 2})
        EXPECT_EQ(typeOfFile(u"a.unknown"_s, QByteArray(kCheckedBytes - inside, 'a') + euro), std::nullopt) << inside;
    EXPECT_EQ(typeOfFile(u"a.unknown"_s, QByteArray(kCheckedBytes - 3, 'a') + euro + "more"), kPlainText);
    EXPECT_EQ(typeOfFile(u"a.unknown"_s, QByteArray(kCheckedBytes, 'a') + euro), kPlainText);
}

TEST(DocumentType, InvalidBytesAfterTheFirst8192DoNotCount)
{
    EXPECT_EQ(typeOfFile(u"a.unknown"_s, QByteArray(kCheckedBytes, 'a') + "\xff"), kPlainText);
}

TEST(DocumentType, AnEmptyFileIsText)
{
    EXPECT_EQ(typeOfFile(u"empty"_s, ""), kPlainText);
    EXPECT_EQ(typeOfFile(u"empty.unknown"_s, ""), kPlainText);
}

TEST(DocumentType, WhatIsNotThereHasNoType)
{
    EXPECT_EQ(typeOfMissingFile(u"a.unknown"_s), std::nullopt);
    EXPECT_EQ(documentType(FileURL()), std::nullopt);
}

TEST(DocumentType, AFolderHasNoType)
{
    const TemporaryFiles files;
    files.makeFolder(u"folder"_s);

    EXPECT_EQ(documentType(files.url(u"folder"_s)), std::nullopt);
    EXPECT_EQ(documentType(FileURL(u"/"_s)), std::nullopt);
}

TEST(DocumentType, PipesSocketsAndDevicesHaveNoTypeAndAreNotWaitedFor)
{
    const TemporaryFiles files;
    const QByteArray pipe = files.url(u"pipe"_s).path().toUtf8();
    ASSERT_EQ(mkfifo(pipe.constData(), 0600), 0);

    EXPECT_EQ(documentType(files.url(u"pipe"_s)), std::nullopt);
    EXPECT_FALSE(looksLikeText(AT_FDCWD, pipe.constData()));
    EXPECT_EQ(documentType(FileURL(u"/dev/null"_s)), std::nullopt);
    EXPECT_FALSE(looksLikeText(AT_FDCWD, "/dev/zero"));
}

TEST(DocumentType, AFileThatIsMadeUpAsItIsReadIsJudgedByWhatItGives)
{
    EXPECT_EQ(documentType(FileURL(u"/proc/version"_s)), kPlainText);        // its size reads as 0
    EXPECT_EQ(documentType(FileURL(u"/proc/self/cmdline"_s)), std::nullopt); // the arguments end in zeros
}

TEST(DocumentType, APathWithAZeroIsNotTheFileBeforeTheZero)
{
    const TemporaryFiles files{{u"a"_s, "text"}};

    EXPECT_EQ(documentType(FileURL(files.url(u"a"_s).path() + QChar(0) + u"b"_s)), std::nullopt);
}

TEST(DocumentType, ALinkIsJudgedByItsTarget)
{
    const TemporaryFiles files{{u"text"_s, "text"}, {u"data"_s, QByteArray("\0", 1)}};
    const QByteArray folder = files.folder().path().toUtf8();
    ASSERT_EQ(symlink("text", (folder + "/to text").constData()), 0);
    ASSERT_EQ(symlink("data", (folder + "/to data").constData()), 0);
    ASSERT_EQ(symlink("to itself", (folder + "/to itself").constData()), 0);

    EXPECT_EQ(documentType(files.url(u"to text"_s)), kPlainText);
    EXPECT_EQ(documentType(files.url(u"to data"_s)), std::nullopt);
    EXPECT_EQ(documentType(files.url(u"to itself"_s)), std::nullopt);
}

TEST(DocumentType, AFileThatCannotBeReadHasNoType)
{
    const TemporaryFiles files{{u"secret"_s, "text"}, {u"open"_s, "text"}};
    letEverybodyIn(files.folder().path().toUtf8().constData());
    ASSERT_EQ(chmod(files.url(u"secret"_s).path().toUtf8().constData(), 0), 0);
    ASSERT_EQ(chmod(files.url(u"open"_s).path().toUtf8().constData(), 0644), 0);

    const int result = runWithoutPrivileges([&files] {
        const bool secretHasNone = !documentType(files.url(u"secret"_s));
        const bool openHasOne = documentType(files.url(u"open"_s)).has_value();
        return (secretHasNone ? 1 : 0) | (openHasOne ? 2 : 0);
    });

    EXPECT_EQ(result, 3);
}

TEST(DocumentType, NamesOfAnyCharactersWork)
{
    for (const QString &name :
         {u"line\nbreak"_s, u"\"quotes\" 'and'"_s, u"emoji 📝"_s, u"\u202Emirrored\u202C"_s, u"back\\slash"_s, u" "_s})
        EXPECT_EQ(typeOfFile(name, "text"), kPlainText) << name.toStdString();
}

TEST(DocumentType, AnExtensionSettlesNothingIfItIsEmptyOrLong)
{
    EXPECT_EQ(documentTypeOfExtension(u""), std::nullopt);
    EXPECT_EQ(documentTypeOfExtension(u"mdmdmdmdmdmdmdmdmdmdmdmdmdmdmdmdmdmdmd"), std::nullopt);
    EXPECT_EQ(documentTypeOfExtension(u"m"), kPlainText);
    EXPECT_EQ(documentTypeOfExtension(u"zsh"), kPlainText); // the table's last
    EXPECT_EQ(documentTypeOfExtension(u"zzz"), std::nullopt);
}

} // namespace Tessaline
