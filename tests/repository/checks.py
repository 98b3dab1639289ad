"""Rules about the repository's own files. Each check takes {path: text} and gives its findings, "path:line: what is wrong".

Paths are relative to the top of the checkout. The checks do no I/O, so that test_checks.py can feed them good and bad
samples; `repository_files` reads the real ones.
"""

import re
import shutil
import subprocess
from pathlib import Path

# --- the files -----------------------------------------------------------------------------------------------------

SKIPPED_FOLDERS = {".git", "build", ".cache", "__pycache__"}


def tracked_paths(top):
    """What git tracks; without git, or in an unpacked archive, everything but generated folders."""
    top = Path(top)
    listing = subprocess.run(["git", "-C", str(top), "-c", f"safe.directory={top}", "ls-files", "-z"],
                             capture_output=True) if (top / ".git").exists() and shutil.which("git") else None
    if listing and listing.returncode == 0:
        return [name for name in listing.stdout.decode().split("\0") if name and (top / name).is_file()]
    return [str(path.relative_to(top)) for path in top.rglob("*")
            if path.is_file() and not SKIPPED_FOLDERS & set(path.relative_to(top).parts)]


def repository_files(top):
    """{path: text} of every text file of the checkout. A file with a zero byte or of no valid UTF-8 is not text."""
    files = {}
    for name in sorted(tracked_paths(top)):
        data = (Path(top) / name).read_bytes()
        if b"\0" in data:
            continue
        try:
            files[name] = data.decode("utf-8")
        except UnicodeDecodeError:
            continue
    return files


def numbered(text):
    return enumerate(text.split("\n"), start=1)


def is_cpp(path):
    return path.endswith((".h", ".cpp"))


def is_test_data(path):
    """Inputs of tests and the fuzzers' corpora: they stand for what users have, not for what we write."""
    parts = path.split("/")
    return parts[0] in ("tests", "fuzz") and ("data" in parts or "corpus" in parts)


# --- levels of the libraries ----------------------------------------------------------------------------------------

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^">]+)[">]')
QT_MODULE = re.compile(r"(Qt[A-Z]\w*)/")
GUI_MODULES = {"QtGui", "QtWidgets", "QtSvg", "QtSvgWidgets", "QtOpenGL", "QtPrintSupport"}
MODULE_TABLE = "cmake/TessalineModule.cmake"


def allowed_links(table):
    """{module: the modules it may use} from the table in cmake/TessalineModule.cmake."""
    found = re.findall(r'(?m)^set\(TESSALINE_ALLOWED_(\w+)\s+(?:""|([^)]*))\)', table)
    return {name: set(names.split()) for name, names in found}


def module_sources(cmake):
    """{module: the stems of its sources} from the calls of tessaline_module in one CMakeLists.txt."""
    cmake = re.sub(r"#.*", "", cmake)
    modules = {}
    for name, arguments in re.findall(r"tessaline_module\(\s*(\w+)([^)]*)\)", cmake):
        sources = re.search(r"\bSOURCES\b(.*?)(?=\bLINKS\b|$)", arguments, re.DOTALL)
        modules[name] = {source.rsplit(".", 1)[0] for source in sources.group(1).split()} if sources else set()
    return modules


def module_of(path, files):
    """The library that a file under src/ belongs to: the one that lists it or its twin; a header that none lists has no
    code of its own and counts as the folder's logic. None for the executable, which stands above all libraries."""
    folder, _, name = path.removeprefix("src/").partition("/")
    stem = name.rsplit(".", 1)[0]
    cmake = files.get(f"src/{folder}/CMakeLists.txt", "")
    modules = module_sources(cmake)
    for module, stems in modules.items():
        if stem in stems:
            return module
    executables = re.findall(r"\badd_executable\(\s*\w+([^)]*)\)", cmake)
    return folder if folder in modules and name not in " ".join(executables).split() else None


def include_levels(files):
    """No library includes a header of one that it may not use, and none without widgets includes a header of widgets."""
    allowed = allowed_links(files[MODULE_TABLE])
    findings = []
    if not allowed:
        findings.append(f"{MODULE_TABLE}:1: the table of the levels cannot be read")
    for path, text in files.items():
        probe = path.startswith("tools/probe/") and is_cpp(path)
        if not (path.startswith("src/") and is_cpp(path)) and not probe:
            continue
        module = None if probe else module_of(path, files)
        if module is not None and module not in allowed:
            findings.append(f"{path}:1: {module} is not in the table of {MODULE_TABLE}")
            continue
        without_widgets = probe or (module is not None and not module.endswith("_ui"))
        for number, line in numbered(text):
            match = INCLUDE.match(line)
            if not match:
                continue
            bracket, header = match.groups()
            if bracket == "<":
                qt = QT_MODULE.match(header)
                if re.match(r"Q(?!Coro)", header) and "/" not in header:
                    findings.append(f"{path}:{number}: write the Qt module too, as in <QtCore/{header}>")
                elif qt and without_widgets and qt.group(1) in GUI_MODULES:
                    if not (module == "NetworkImage" and qt.group(1) == "QtGui"):
                        owner = module or "the probe"
                        findings.append(f"{path}:{number}: {owner} is without widgets and must not include <{header}>")
                continue
            if f"src/{header}" not in files:
                continue  # a generated header, or one of the folder's own tools
            target = module_of(f"src/{header}", files)
            if probe:
                if target is None or target.endswith("_ui"):
                    findings.append(f'{path}:{number}: the probe is without widgets and must not include "{header}"')
            elif module is not None and target != module and target not in allowed[module]:
                findings.append(f'{path}:{number}: {module} must not use {target or "the executable"} ("{header}")')
    return findings


# --- words ----------------------------------------------------------------------------------------------------------

# The project explains itself: nothing in it points to papers that stand elsewhere, or to numbers of a tracker. The patterns
# are written so that they do not find themselves.
OUTSIDE_POINTERS = [
    (re.compile(r"\bParts? \d+(\.\d+)?\b"), "a numbered part of another document"),
    (re.compile(r"\b[Ss]pecificatio[n]"), "a document of requirements"),
    (re.compile(r"\b[Tt]he [s]pec\b|\b[s]pec\.md\b|\bper [s]pec\b"), "a document of requirements"),
    (re.compile(r"\bhouse-[s]tyle\b|\barchitecture\.[m]d\b|\bprobe\.[m]d\b"), "a document outside of the checkout"),
    (re.compile(r"\.\./[s]hared\b|/work/[a-z]"), "a folder outside of the checkout"),
    (re.compile(r"\b[Ii]ssue #?\d+\b|(?<![\w&#])#\d{1,4}\b(?![\w.-])|\bGH-\d+\b"), "a number of an issue"),
    (re.compile(r"\b(?:TOD[O]|FIXM[E]|XX[X])\b"), "an unfinished thought"),
]


def outside_pointers(files):
    findings = []
    for path, text in files.items():
        if is_test_data(path):
            continue
        for number, line in [(0, path)] + list(numbered(text)):
            for pattern, what in OUTSIDE_POINTERS:
                match = pattern.search(line)
                if match:
                    findings.append(f"{path}:{number}: “{match.group()}” is {what}")
    return findings


# --- colours --------------------------------------------------------------------------------------------------------

COLOUR_TABLE = "src/foundation_ui/Theme.cpp"
COLOUR_LITERALS = [
    re.compile(r"\bQColor\s*(?:\w+\s*)?[({]\s*(?:\d|0x|u?\"|Qt::(?!transparent)|QStringLiteral|QLatin1)"),
    re.compile(r"\bQColor::from\w+\s*\(\s*(?:[.\d]|u?\")"),
    re.compile(r"\bqRgba?\s*\(\s*\d|\bQRgba?64\b|\bqRgba64\s*\("),
    re.compile(r"#(?:[0-9a-fA-F]{8}|[0-9a-fA-F]{6}|[0-9a-fA-F]{3})\b(?=[^\n]*\")"),
    re.compile(r"\brgba?\s*\(\s*\d"),
    re.compile(r"\bQt::(?:black|white|(?:dark|light)?[Gg]ray|(?:dark)?(?:[Rr]ed|[Gg]reen|[Bb]lue|[Cc]yan|[Mm]agenta|[Yy]ellow))\b"),
]


def colour_literals(files):
    """Colours are roles of one table; a view that names a colour of its own does not follow the appearance."""
    findings = []
    for path, text in files.items():
        if not path.startswith("src/") or not is_cpp(path) or path == COLOUR_TABLE:
            continue
        for number, line in numbered(text):
            code = line.split("//", 1)[0]
            for pattern in COLOUR_LITERALS:
                match = pattern.search(code)
                if match:
                    findings.append(f"{path}:{number}: “{match.group()}” belongs into {COLOUR_TABLE}")
                    break
    return findings


# --- sizes ----------------------------------------------------------------------------------------------------------

LONGEST = 600
# {path: why it may be longer}
LONG_FILES = {
}
SIZED = (".h", ".cpp", ".py", ".cmake", ".sh", "CMakeLists.txt")


def file_sizes(files, long_files=None):
    long_files = LONG_FILES if long_files is None else long_files
    findings = []
    for path, text in files.items():
        script = text.startswith("#!")
        if is_test_data(path) or not (path.endswith(SIZED) or script):
            continue
        lines = text.count("\n")
        if lines > LONGEST and path not in long_files:
            findings.append(f"{path}:{lines}: longer than {LONGEST} lines; look for a second reason to change, and split by it")
        elif lines <= LONGEST and path in long_files:
            findings.append(f"{path}:{lines}: is short enough now; take it off the list of long files")
    for path in long_files:
        if path not in files:
            findings.append(f"{path}:0: is on the list of long files and does not exist")
    return findings
