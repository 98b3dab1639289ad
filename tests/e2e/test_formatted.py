#!/usr/bin/python3
"""Writing without the syntax: what is typed into the formatted editor is Markdown on the disk."""

from e2e import MARKDOWN, EndToEndTest, main  # first: it finds the package of the next line

from desktop import wait_until

FORMATTED, SPLIT = "editor", "split"

# Every construct once, in the form in which it is written; no paragraph is longer than a row.
EVERY_CONSTRUCT = """\
# Every construct

plain **bold** *italic* ***both*** `code` [link](https://example.org)

a hard break  
goes on

> a quote

- one
3. three
4. four
- [ ] open
- [x] done

```js
let a = 1;

a * 2
```

| Day | Height |
| --- | --- |
| Monday | 4.12 |

---

![A harbour](harbour.png)

###### the end"""

# The same in other spellings.
OTHER_SPELLINGS = """\
# Every construct


plain **bold** *italic* ***both*** `code`
  [link](https://example.org)

a hard break  
goes on
> a quote
+ one
03. three

+4. four
* [ ] open

* [X] done
  ```js
let a = 1;

a * 2
```` end
 Day|Height
:---|---:
 Monday|4.12|
***
![A harbour](harbour.png)
###### the end

""".replace("\n", "\r\n")


class FormattedTest(EndToEndTest):
    def formatted(self):
        return self.find("Document", "text")

    def put_caret_at_formatted_end(self):
        area = self.formatted()
        area.click()
        wait_until(lambda: area.has_state("focused"), "the formatted editor has the keyboard", 5)
        self.screen.press("Ctrl+End")

    def expect_formatted(self, text):
        try:
            wait_until(lambda: self.formatted().text == text, "the formatted text is shown", 5)
        except AssertionError:
            self.assertEqual(self.formatted().text, text)

    def open_formatted(self, data, mode=FORMATTED):
        """Starts with a file of this text; the caret is put into the formatted editor."""
        path = self.write("a.md", data.encode())
        self.open_files(path, editorViewModeV2=mode)
        self.start()
        self.put_caret_at_formatted_end()
        return path

    def offset_of(self, words):
        """Where these words begin in the formatted text, in UTF-16 units."""
        text = self.formatted().text
        return len(text[:text.index(words)].encode("utf-16-le")) // 2

    def area_of(self, offset):
        """Where a character of the formatted text stands on the screen; it is brought into view by the wheel."""
        pane_x, pane_y, pane_width, pane_height = self.formatted().area
        while True:
            area = self.formatted().character_area(offset)
            is_above, is_below = area[1] < pane_y, area[1] + area[3] > pane_y + pane_height
            if not is_above and not is_below:
                return area
            self.screen.click(pane_x + pane_width // 2, pane_y + pane_height // 2, button=4 if is_above else 5)
            wait_until(lambda: self.formatted().character_area(offset) != area, "the wheel has scrolled", 5)

    def click_before(self, words):
        """Puts the caret in front of these words, with the mouse."""
        x, y, _, height = self.area_of(self.offset_of(words))
        self.screen.click(x + 1, y + height // 2)

    def click_behind(self, words):
        x, y, width, height = self.area_of(self.offset_of(words) + len(words) - 1)
        self.screen.click(x + width - 1, y + height // 2)

    def click_box(self, words):
        """Clicks the check box of the task with these words, which stands before them with a tab."""
        x, y, width, height = self.area_of(self.offset_of(words) - 2)
        self.screen.click(x + width // 2, y + height // 2)

    def select(self, words):
        """Selects these words, by mouse and keys."""
        self.click_before(words)
        for _ in words:
            self.screen.press("Shift+Right")


class Formatted(FormattedTest):
    def test_a_markdown_file_opens_without_its_syntax_unless_another_mode_is_stored(self):
        path = self.write("a.md", b"# Title\n\nSome **bold** words\n")
        self.profile.store(lastOpenFileURLs=[str(path)], lastActiveFileURL=str(path))
        self.start()

        text = self.formatted().text

        self.assertIn("Title", text)
        self.assertIn("Some bold words", text)
        self.assertNotIn("#", text)
        self.assertNotIn("*", text)
        self.end()
        self.assertEqual(path.read_bytes(), b"# Title\n\nSome **bold** words\n")

    def test_typed_words_and_format_commands_are_markdown_on_the_disk(self):
        path = self.write("a.md", b"plain")
        self.open_files(path, editorViewModeV2=FORMATTED)
        self.start()
        self.put_caret_at_formatted_end()

        self.screen.type(" words")
        self.expect_on_disk(path, b"plain words")
        self.screen.press("Ctrl+a")
        self.choose("Bold", "push button")

        self.expect_on_disk(path, b"**plain words**")
        self.expect_formatted("plain words")
        self.end()

    def test_both_panes_of_the_split_show_one_text(self):
        path = self.write("a.md", b"one")
        self.open_files(path, editorViewModeV2=SPLIT)
        self.start()

        self.put_caret_at_end()
        self.screen.type(" two")
        self.expect_formatted("one two")
        self.put_caret_at_formatted_end()
        self.screen.type(" three")
        self.expect_text("one two three")

        self.expect_on_disk(path, b"one two three")
        self.end()

    def test_a_key_in_the_formatted_editor_just_before_the_end_is_on_the_disk(self):
        path = self.write("a.md", b"")
        self.open_files(path, editorViewModeV2=FORMATTED)
        self.start()
        self.put_caret_at_formatted_end()

        self.screen.type("k")
        self.pause(0.02)
        self.end()

        self.assertEqual(path.read_bytes(), b"k")

    def test_a_change_of_mode_keeps_every_character(self):
        path = self.write("a.md", b"# A\n\n- [x] done\n")
        self.open_files(path, editorViewModeV2=MARKDOWN)
        self.start()
        self.put_caret_at_end()
        self.screen.type("end")

        for mode in ("Editor", "Split", "Markdown"):
            self.choose_segment(mode)
        self.expect_text("# A\n\n- [x] done\nend")

        self.end()
        self.assertEqual(path.read_bytes(), b"# A\n\n- [x] done\nend")


class FormattedEditing(FormattedTest):
    """Whole runs of editing, by real keys, clicks and buttons. After each step the bytes on the disk are compared, or in
    the split view, which shows them at once, the source."""

    def setUp(self):
        super().setUp()
        self.steps = []  # the bytes after each step

    def step(self, *changes):
        """Each change, (old words, new words), was made; the file now holds just that."""
        text = self.steps[-1].decode()
        for old, new in changes:
            self.assertEqual(text.count(old), 1, old)
            text = text.replace(old, new)
        self.steps.append(text.encode())
        self.expect_written(self.steps[-1])

    def expect_written(self, data):
        if self.mode == SPLIT:
            self.expect_text(data.decode())
        else:
            self.expect_on_disk(self.path, data, 3)

    def begin(self, data, mode=FORMATTED):
        self.mode = mode
        self.path = self.open_formatted(data, mode)
        self.steps = [EVERY_CONSTRUCT.encode()]

    def undo_all(self):
        """Ctrl+Z takes the steps back one by one, byte for byte."""
        for data in reversed(self.steps[:-1]):
            self.screen.press("Ctrl+z")
            self.expect_written(data)

    def edit_every_construct(self):
        press, typed = self.screen.press, self.screen.type

        self.click_behind("Every construct")
        typed("!")
        self.step(("# Every construct", "# Every construct!"))

        self.click_behind("a quote")
        typed(" more")
        self.step(("> a quote", "> a quote more"))

        self.click_behind("one")
        press("Return")
        self.step(("- one", "- one\n- "))
        typed("two")
        self.step(("- \n", "- two\n"))
        press("Return")
        self.step(("- two", "- two\n- "))
        self.choose("Bullet List", "push button")  # ends the list
        self.step(("- two\n- \n", "- two\n\n\n\n"))
        typed("free")
        self.step(("- two\n\n\n\n", "- two\n\nfree\n\n"))

        self.click_behind("four")
        press("Return")
        self.step(("4. four", "4. four\n5. "))
        typed("five")
        self.step(("5. ", "5. five"))

        self.click_box("open")
        self.step(("- [ ] open", "- [x] open"))
        self.click_box("done")
        self.step(("- [x] done", "- [ ] done"))

        self.select("plain")
        press("Ctrl+b")
        self.step(("plain **bold**", "**plain** **bold**"))
        self.choose("Italic", "push button")
        self.step(("**plain**", "***plain***"))

        self.click_behind("let a = 1;")
        typed(" // *")
        self.step(("let a = 1;", "let a = 1; // *"))

        self.click_behind("Monday")
        typed(" | x")
        self.step(("| Monday |", "| Monday \\| x |"))
        self.click_behind("4.12")
        press("Tab")
        self.step(("4.12 |", "4.12 |  |"))

        press("Ctrl+End")
        self.choose("Heading 1", "push button")
        self.step(("###### the end", "# the end"))
        press("Return")
        self.step()  # an empty last line is not written
        self.choose("Insert Table", "push button")
        self.step(("# the end", "# the end\n\n| Header 1 | Header 2 |\n| --- | --- |\n| Cell 1 | Cell 2 |"))
        self.click_behind("Cell 1")
        press("BackSpace")
        self.step(("| Cell 1 |", "| Cell  |"))
        self.choose("Insert Image", "push button")
        self.step(("| Cell  |", "| Cell ![Image](url) |"))

    def test_every_construct_is_edited_by_keys_mouse_and_toolbar_and_undone_byte_for_byte(self):
        self.begin(EVERY_CONSTRUCT)

        self.edit_every_construct()

        self.undo_all()
        self.end()
        self.assertEqual(self.path.read_bytes(), EVERY_CONSTRUCT.encode())

    def test_every_construct_in_other_spellings_is_written_in_one_by_the_first_edit(self):
        self.begin(OTHER_SPELLINGS)
        self.assertEqual(self.path.read_bytes(), OTHER_SPELLINGS.encode())  # looking at it writes nothing

        self.screen.type("!")

        self.step(("###### the end", "###### the end!"))
        self.screen.press("Ctrl+z")
        self.expect_on_disk(self.path, EVERY_CONSTRUCT.encode(), 3)
        self.end()

    def test_every_construct_is_edited_in_the_split_view_and_undone_byte_for_byte(self):
        self.begin(EVERY_CONSTRUCT, SPLIT)

        self.edit_every_construct()
        self.expect_on_disk(self.path, self.steps[-1], 3)

        self.undo_all()
        self.end()
        self.assertEqual(self.path.read_bytes(), EVERY_CONSTRUCT.encode())

    def test_edits_in_alternating_panes_meet_in_one_text(self):
        self.begin(EVERY_CONSTRUCT, SPLIT)

        self.click_behind("Every construct")
        self.screen.type("!")
        self.step(("# Every construct", "# Every construct!"))
        self.put_caret_at_end()
        self.screen.type(" of")
        self.step(("###### the end", "###### the end of"))
        self.click_behind("the end of")
        self.screen.type(" all")
        self.step(("###### the end of", "###### the end of all"))
        self.put_caret_at_end()
        self.screen.press("Return")
        self.screen.press("Return")
        self.screen.type("- x")
        self.step(("the end of all", "the end of all\n\n- x"))
        self.click_behind("x")
        self.screen.press("Return")
        self.screen.type("y")
        self.step(("- x", "- x\n- y"))

        self.end()
        self.assertEqual(self.path.read_bytes(), self.steps[-1])

    def drag_between(self, from_area, to_area):
        """Drags what is selected at the one character before the other one."""
        x, y, _, height = from_area
        to_x, to_y, _, to_height = to_area
        self.screen.drag(x + 4, y + height // 2, to_x - x - 3, to_y + to_height // 2 - y - height // 2)

    def test_words_dragged_from_one_pane_into_the_other_are_moved(self):
        self.begin("one two\n\nthree", SPLIT)
        self.steps = [b"one two\n\nthree"]
        source = self.text_area()
        x, y, _, height = source.character_area(0)
        self.screen.click(x + 1, y + height // 2)
        for _ in "one ":
            self.screen.press("Shift+Right")

        self.drag_between(source.character_area(1), self.formatted().character_area(8))

        self.step(("one two\n\nthree", "two\n\none three"))
        self.end()

    def test_words_dragged_into_their_own_place_in_the_other_pane_are_not_lost(self):
        self.begin("one two\n\nthree", SPLIT)
        self.steps = [b"one two\n\nthree"]
        source = self.text_area()
        x, y, _, height = source.character_area(0)
        self.screen.click(x + 1, y + height // 2)
        for _ in "one two":
            self.screen.press("Shift+Right")

        self.drag_between(source.character_area(1), self.formatted().character_area(4))

        self.step(("one two\n\nthree", "one one twotwo\n\nthree"))
        self.end()

    def test_a_change_of_mode_while_typing_loses_no_key(self):
        self.begin(EVERY_CONSTRUCT)
        self.screen.type("1")
        for number, mode in enumerate(("Markdown", "Editor", "Split", "Editor"), 2):
            self.choose_segment(mode)
            if mode == "Editor":
                self.put_caret_at_formatted_end()
            else:
                self.put_caret_at_end()
            self.screen.type(str(number))

        self.step(("the end", "the end12345"))
        self.end()


if __name__ == "__main__":
    main()
