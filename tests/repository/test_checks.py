#!/usr/bin/python3
"""The repository keeps its own rules, and each check finds what it is there to find."""

import os
import unittest

import checks

TABLE = """
set(TESSALINE_ALLOWED_foundation    "")
set(TESSALINE_ALLOWED_documents     foundation)
set(TESSALINE_ALLOWED_editing       foundation)
set(TESSALINE_ALLOWED_NetworkImage  foundation)
set(TESSALINE_ALLOWED_editing_ui    foundation editing)
set(TESSALINE_ALLOWED_shell         foundation)
"""
SAMPLE = {
    checks.MODULE_TABLE: TABLE,
    "src/foundation/CMakeLists.txt": "tessaline_module(foundation\n SOURCES A.cpp\n LINKS Qt6::Core)",
    "src/documents/CMakeLists.txt": "tessaline_module(documents SOURCES Tree.cpp LINKS Tessaline::foundation)",
    "src/NetworkImage/CMakeLists.txt": "tessaline_module(NetworkImage SOURCES Image.cpp LINKS Tessaline::foundation)",
    "src/editing/CMakeLists.txt": "tessaline_module(editing SOURCES Find.cpp LINKS Tessaline::foundation)\n"
                                  "tessaline_module(editing_ui SOURCES Bar.cpp # a bar\n LINKS Tessaline::editing)",
    "src/shell/CMakeLists.txt": "tessaline_module(shell SOURCES Switch.cpp)\nadd_executable(tessaline main.cpp)",
    "src/foundation/A.h": "",
    "src/documents/Tree.h": "",
    "src/documents/Value.h": "",
    "src/editing/Find.h": "",
    "src/editing/Bar.h": "#include <QtWidgets/QWidget>",
    "src/shell/Window.h": "",
}


def with_file(path, text):
    return {**SAMPLE, path: text}


class Repository(unittest.TestCase):
    """Looks at the real files."""

    @classmethod
    def setUpClass(cls):
        cls.files = checks.repository_files(os.environ["TESSALINE_SOURCE"])

    def expect_none(self, findings):
        self.assertEqual(findings, [], "\n" + "\n".join(findings))

    def test_the_files_are_really_read(self):
        for path in ("CMakeLists.txt", "src/foundation/FileURL.h", "tests/repository/checks.py"):
            self.assertTrue(path in self.files, path)


class IncludeLevels(Repository):
    def test_no_library_includes_what_it_may_not_use(self):
        self.expect_none(checks.include_levels(self.files))

    def test_the_table_names_every_library(self):
        self.assertLessEqual({"foundation", "documents", "editing", "documents_ui", "editing_ui"},
                             set(checks.allowed_links(self.files[checks.MODULE_TABLE])))

    def test_a_clean_sample_gives_no_finding(self):
        sample = with_file("src/editing/Bar.cpp", '#include "editing/Bar.h"\n#include "editing/Find.h"\n#include <QtGui/QColor>')
        self.assertEqual(checks.include_levels(sample), [])

    def test_a_library_that_reaches_sideways_is_found(self):
        self.assertEqual(len(checks.include_levels(with_file("src/documents/Tree.cpp", '#include "editing/Find.h"'))), 1)

    def test_a_library_that_reaches_up_is_found(self):
        self.assertEqual(len(checks.include_levels(with_file("src/foundation/A.cpp", '#include "documents/Value.h"'))), 1)
        self.assertEqual(len(checks.include_levels(with_file("src/editing/Bar.cpp", '#include "shell/Window.h"'))), 1)

    def test_logic_that_includes_the_widgets_of_its_own_folder_is_found(self):
        self.assertEqual(len(checks.include_levels(with_file("src/editing/Find.cpp", '#include "editing/Bar.h"'))), 1)

    def test_logic_that_includes_a_header_of_widgets_is_found(self):
        for header in ("QtWidgets/QWidget", "QtGui/QFont", "QtSvg/QSvgRenderer"):
            self.assertEqual(len(checks.include_levels(with_file("src/documents/Tree.cpp", f"#include <{header}>"))), 1)

    def test_a_header_that_no_library_lists_counts_as_logic(self):
        self.assertEqual(len(checks.include_levels(with_file("src/documents/Value.h", "#include <QtGui/QColor>"))), 1)

    def test_only_the_image_loader_may_decode_pictures(self):
        self.assertEqual(checks.include_levels(with_file("src/NetworkImage/Image.cpp", "#include <QtGui/QImage>")), [])
        self.assertEqual(len(checks.include_levels(with_file("src/NetworkImage/Image.cpp", "#include <QtWidgets/QLabel>"))), 1)

    def test_a_toolkit_header_without_its_module_is_found(self):
        self.assertEqual(len(checks.include_levels(with_file("src/documents/Tree.cpp", "#include <QWidget>"))), 1)

    def test_the_program_itself_may_use_everything(self):
        includes = '#include "editing/Bar.h"\n#include "documents/Tree.h"\n#include <QtWidgets/QApplication>'
        self.assertEqual(checks.include_levels(with_file("src/shell/main.cpp", includes)), [])
        self.assertEqual(len(checks.include_levels(with_file("src/shell/Switch.cpp", includes))), 3)

    def test_the_probe_stays_without_widgets(self):
        self.assertEqual(checks.include_levels(with_file("tools/probe/main.cpp", '#include "documents/Tree.h"')), [])
        self.assertEqual(len(checks.include_levels(with_file("tools/probe/main.cpp", '#include "editing/Bar.h"'))), 1)
        self.assertEqual(checks.include_levels(with_file("tools/gallery/main.cpp", '#include "editing/Bar.h"')), [])

    def test_a_library_that_is_not_in_the_table_is_found(self):
        sample = {**SAMPLE, "src/new/CMakeLists.txt": "tessaline_module(new SOURCES N.cpp)", "src/new/N.cpp": ""}
        self.assertEqual(len(checks.include_levels(sample)), 1)


class Wording(Repository):
    def test_nothing_points_out_of_the_checkout(self):
        self.expect_none(checks.outside_pointers(self.files))

    def test_each_kind_of_pointer_is_found(self):
        # Put together here, so that this file holds none itself.
        for text in ("see Par" + "t 2.1", "as the spe" + "c says", "a specificatio" + "n", "house-" + "style", "../" + "shared/x",
                     "fixes issu" + "e 7", "closes #" + "12", "/wor" + "k/main", "TO" + "DO later", "architecture" + ".md"):
            self.assertEqual(len(checks.outside_pointers({"a.txt": text})), 1, text)

    def test_ordinary_words_are_left_alone(self):
        for text in ("a specific part of it", "Part of the text", "respect", "&#8212;", "#define X 1", "#123456", "issues",
                     "# 1 heading", "url(#a1b)"):
            self.assertEqual(checks.outside_pointers({"a.txt": text}), [], text)

    def test_names_of_files_are_looked_at_too(self):
        self.assertEqual(len(checks.outside_pointers({"docs/spe" + "c.md": ""})), 1)


class Colours(Repository):
    def test_every_colour_stands_in_the_one_table(self):
        self.expect_none(checks.colour_literals(self.files))

    def test_each_way_to_write_a_colour_is_found(self):
        for code in ("QColor(1, 2, 3)", "QColor c(0, 0, 0, 31);", 'QColor("#abc")', 'u"#C29947"_s', "QColor{255, 0, 0}", "Qt::white",
                     "QColor(Qt::black)", "qRgb(1, 2, 3)", 'setStyleSheet("color: rgb(1, 2, 3)")', "QColor::fromRgb(9, 9, 9)"):
            self.assertEqual(len(checks.colour_literals({"src/shell/A.cpp": code})), 1, code)

    def test_what_is_no_colour_is_left_alone(self):
        for code in ("QColor color = theme.color(role);", "Qt::transparent", "QColor c;", "#include <x>", "// was QColor(1, 2, 3)",
                     "#define abc", "QColor shade(const QColor &base);", "Qt::WhiteSpaceMode",
                     "QColor(Qt::transparent)", "QColor::fromRgbF(red, green, blue)"):
            self.assertEqual(checks.colour_literals({"src/shell/A.cpp": code}), [], code)

    def test_the_table_itself_may_hold_colours(self):
        self.assertEqual(checks.colour_literals({checks.COLOUR_TABLE: "QColor(1, 2, 3)"}), [])


class Sizes(Repository):
    def test_no_file_is_too_long(self):
        self.expect_none(checks.file_sizes(self.files))

    def test_every_long_file_on_the_list_has_its_reason(self):
        for path, reason in checks.LONG_FILES.items():
            self.assertGreater(len(reason), 20, path)

    def test_a_long_file_is_found(self):
        self.assertEqual(len(checks.file_sizes({"src/a.cpp": "x\n" * 601}, {})), 1)
        self.assertEqual(len(checks.file_sizes({"scripts/a": "#!/bin/sh\n" + "x\n" * 600}, {})), 1)
        self.assertEqual(checks.file_sizes({"src/a.cpp": "x\n" * 600}, {}), [])

    def test_the_list_of_long_files_does_not_outlive_its_files(self):
        self.assertEqual(len(checks.file_sizes({"src/a.cpp": "x\n"}, {"src/a.cpp": "a table"})), 1)
        self.assertEqual(len(checks.file_sizes({}, {"src/a.cpp": "a table"})), 1)


del Repository  # the base has no findings of its own to report

if __name__ == "__main__":
    unittest.main()
