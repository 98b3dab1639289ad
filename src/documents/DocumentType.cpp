#include "documents/DocumentType.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <span>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaline {

namespace {

constexpr size_t kCheckedBytes = 8192;

// Extensions of types that are text by their definition: plain text, markup, structured data, subtitles and lists,
// program sources. Left out on purpose, for the content to decide: what a binary type uses too ("ts" and "mts" are
// video, "key" presentations, "pot" and "dot" office templates, "plist" and "strings" have a binary form, "reg" and
// "rc" come in UTF-16), and what says nothing ("dat", "out", "conf", "lock").
constexpr auto kTextExtensions = std::to_array<std::u16string_view>({
    u"ada",       u"adb",     u"adoc",    u"ads",    u"ahk",   u"applescript", u"as",       u"asciidoc", u"asm",
    u"asp",       u"aspx",    u"ass",     u"atom",   u"awk",   u"bas",         u"bash",     u"bat",      u"bib",
    u"bst",       u"bzl",     u"c",       u"c++",    u"cbl",   u"cc",          u"cjs",      u"clj",      u"cljc",
    u"cljs",      u"cls",     u"cmake",   u"cmd",    u"cob",   u"coffee",      u"command",  u"cp",       u"cpp",
    u"cr",        u"cs",      u"csh",     u"cson",   u"css",   u"csv",         u"csx",      u"cu",       u"cue",
    u"cuh",       u"cxx",     u"d",       u"dart",   u"diff",  u"dita",        u"ditamap",  u"dtd",      u"dtx",
    u"edn",       u"el",      u"elm",     u"erb",    u"erl",   u"ex",          u"exs",      u"f",        u"f03",
    u"f08",       u"f77",     u"f90",     u"f95",    u"fish",  u"for",         u"fountain", u"frag",     u"fs",
    u"fsi",       u"fsx",     u"geojson", u"glsl",   u"go",    u"gpx",         u"gql",      u"gradle",   u"graphql",
    u"groovy",    u"gv",      u"h",       u"h++",    u"haml",  u"handlebars",  u"hbs",      u"hcl",      u"hh",
    u"hlsl",      u"hpp",     u"hrl",     u"hs",     u"htm",   u"html",        u"hxx",      u"ics",      u"ini",
    u"inl",       u"ipp",     u"java",    u"jl",     u"js",    u"json",        u"json5",    u"jsonc",    u"jsonl",
    u"jsp",       u"jsx",     u"kml",     u"ksh",    u"kt",    u"kts",         u"l",        u"latex",    u"ldif",
    u"less",      u"lex",     u"lhs",     u"lisp",   u"log",   u"lrc",         u"lsp",      u"ltx",      u"lua",
    u"m",         u"m3u",     u"m3u8",    u"mak",    u"mdown", u"mdtext",      u"mdtxt",    u"mdwn",     u"mdx",
    u"mediawiki", u"metal",   u"mjs",     u"mk",     u"mkd",   u"mkdn",        u"ml",       u"mli",      u"mm",
    u"mustache",  u"ndjson",  u"nim",     u"ninja",  u"nix",   u"opml",        u"org",      u"pas",      u"patch",
    u"perl",      u"php",     u"phtml",   u"pl",     u"pm",    u"po",          u"pod",      u"pp",       u"properties",
    u"proto",     u"ps1",     u"psm1",    u"pug",    u"py",    u"pyi",         u"pyw",      u"pyx",      u"qmd",
    u"qml",       u"r",       u"rake",    u"rb",     u"rest",  u"rkt",         u"rmd",      u"rng",      u"rs",
    u"rss",       u"rst",     u"rtf",     u"s",      u"sass",  u"scala",       u"scm",      u"scss",     u"sed",
    u"sgml",      u"sh",      u"shtml",   u"sql",    u"srt",   u"ssa",         u"sty",      u"styl",     u"sv",
    u"svelte",    u"svg",     u"swift",   u"tab",    u"tcl",   u"tcsh",        u"tex",      u"texi",     u"texinfo",
    u"text",      u"textile", u"tf",      u"tfvars", u"toml",  u"tsv",         u"tsx",      u"txt",      u"v",
    u"vala",      u"vb",      u"vbs",     u"vcard",  u"vcf",   u"vert",        u"vhdl",     u"vim",      u"vtt",
    u"vue",       u"wat",     u"wgsl",    u"wiki",   u"wsdl",  u"xht",         u"xhtml",    u"xlf",      u"xliff",
    u"xml",       u"xsd",     u"xsl",     u"xslt",   u"y",     u"yaml",        u"yml",      u"yy",       u"zig",
    u"zsh",
});
static_assert(std::ranges::is_sorted(kTextExtensions));

constexpr qsizetype kLongestExtension = 16; // units; no extension that is looked for has as many

/// Reads until `bytes` is full or the file ends; the count of the bytes read, or -1. `size` is the file's size as the
/// system gives it: to have read that much saves asking once more for the end. It is 0 for files that are made up as
/// they are read.
ssize_t readStart(int file, off_t size, std::span<char> bytes)
{
    size_t count = 0;
    while (count < bytes.size()) {
        const ssize_t got = read(file, bytes.data() + count, bytes.size() - count);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -1;
        count += static_cast<size_t>(got);
        if (got == 0 || static_cast<off_t>(count) == size)
            break;
    }
    return static_cast<ssize_t>(count);
}

bool isText(QByteArrayView bytes)
{
    return !std::memchr(bytes.data(), 0, static_cast<size_t>(bytes.size())) && bytes.isValidUtf8();
}

} // namespace

QString rawValue(DocumentType type)
{
    return type == DocumentType::Markdown ? QStringLiteral("markdown") : QStringLiteral("plainText");
}

std::optional<DocumentType> documentTypeOfExtension(QStringView extension)
{
    if (extension.isEmpty() || extension.size() > kLongestExtension)
        return std::nullopt;
    const bool isAscii = std::ranges::all_of(extension, [](QChar unit) { return unit < u'\x80'; });
    std::array<char16_t, kLongestExtension> buffer;
    QString lowered;
    std::u16string_view known;
    if (isAscii) { // FAST PATH: equals toLower, without a string of its own; a scan comes here for every file
        std::ranges::transform(extension, buffer.begin(), [](QChar unit) {
            return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit.unicode() | 0x20) : unit.unicode();
        });
        known = std::u16string_view(buffer.data(), static_cast<size_t>(extension.size()));
    } else { // the Kelvin sign, for one, is a capital K
        lowered = extension.toString().toLower();
        known = std::u16string_view(reinterpret_cast<const char16_t *>(lowered.utf16()),
                                    static_cast<size_t>(lowered.size()));
    }

    if (known == u"md" || known == u"markdown")
        return DocumentType::Markdown;
    if (std::ranges::binary_search(kTextExtensions, known))
        return DocumentType::PlainText;
    return std::nullopt;
}

bool looksLikeText(int folder, const char *name)
{
    // Without O_NONBLOCK, opening a pipe would wait for a writer.
    const int file = openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0)
        return false;
    struct stat status = {};
    std::array<char, kCheckedBytes> bytes;
    ssize_t count = -1;
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode))
        count = readStart(file, status.st_size, bytes);
    close(file);
    return count >= 0 && isText(QByteArrayView(bytes.data(), count));
}

std::optional<DocumentType> documentType(const FileURL &url)
{
    if (const std::optional<DocumentType> type = documentTypeOfExtension(url.pathExtension()))
        return type;

    const QByteArray path = QFile::encodeName(url.path());
    struct stat status = {};
    // Asked before the file is opened: to open a device can already set something going.
    const bool isOrdinary = !path.contains('\0') && stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode);
    return isOrdinary && looksLikeText(AT_FDCWD, path.constData()) ? std::optional(DocumentType::PlainText)
                                                                   : std::nullopt;
}

} // namespace Tessaline
