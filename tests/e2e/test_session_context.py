#!/usr/bin/python3
"""What is attached to the session of a document: concepts, files and cards, and the alert about duplicates."""

from assistant import CONCEPT, DIGEST, AssistantTest, answer, body, card  # first: it finds the package below
from e2e import main
from desktop import FileDrop, asked_again, wait_until

HAMLET = card("Hamlet", "Play by Corin Halvard", "A prince who hesitates.")
ITEM = {"name": "Hamlet", "subtitle": "Play by Corin Halvard", "content": "A prince who hesitates."}


def stub(concept):
    """The item for a concept that nobody could expand."""
    return {"name": concept, "subtitle": "Concept", "content": f"Reference card for {concept}"}


class SessionContext(AssistantTest):
    def setUp(self):
        super().setUp()
        self.path = self.write("a.md", b"# A\n\nText.\n")
        self.open_files(self.path)

    # --- the column

    @asked_again
    def rows(self):
        """The attached items as they are shown."""
        lists = self.application.find_all("panel", "Attached Context")
        return [row.name for row in lists[0].find_all("push button")] if lists else []

    @asked_again
    def chips(self):
        """The suggested topics as they are shown."""
        lists = self.application.find_all("panel", "Suggestions")
        return [chip.name.strip() for chip in lists[0].find_all("push button")] if lists else []

    def expect_rows(self, *names):
        try:
            wait_until(lambda: self.rows() == list(names), "these items are shown", 20, interval=0.05)
        except AssertionError:
            self.assertEqual(self.rows(), list(names))

    def open_popover(self):
        self.choose("Add Session Context", "push button")
        field = self.find("Topic or Concept", "text")
        wait_until(lambda: field.has_state("focused"), "the topic can be typed", 10)
        return field

    def type_topic(self, topic):
        field = self.open_popover()
        self.screen.type(topic)
        wait_until(lambda: field.text == topic, "the topic is typed", 10)
        self.screen.press("Return")

    def expect_no_popover(self):
        self.expect_gone("Topic or Concept", "text", 20)

    def answer_alert(self, button):
        """Answers the alert about a duplicate; returns what it says."""
        alert = self.find("Likely Duplicate Detected", "alert message", 20)
        said = [label.name for label in alert.find_all("label")]
        alert.find("push button", button).click()
        self.expect_gone("Likely Duplicate Detected", "alert message", 20)
        return said

    def drop_on_column(self, *paths):
        x, y, width, height = self.find("No Session Context", "label").area
        drop = FileDrop(self.screen, paths)
        try:
            self.assertTrue(drop.let_go(x + width // 2, y + height // 2))
        finally:
            drop.close()

    # --- tests

    def test_a_concept_is_attached_with_one_reading_with_several_and_with_none(self):
        options = [card("Mercury (planet)", "Astronomy", "The first planet."), card("Mercury (metal)", "Chemistry", "Liquid.")]
        self.replies(concept=[body({"status": "success", "card": HAMLET}),
                              body({"status": "ambiguous", "options": options}),
                              body({"status": "puzzled"}),
                              {"status": 500}])
        self.start_ready()
        self.find("No Session Context", "label")

        self.type_topic("prince")
        self.expect_rows("Hamlet")
        self.expect_no_popover()

        self.type_topic("mercury")
        self.find("Multiple interpretations found. Which one did you mean?", "label", 20)
        self.find("Mercury (planet)", "push button")
        self.choose("Mercury (metal)", "push button")
        self.expect_rows("Hamlet", "Mercury (metal)")
        self.expect_no_popover()

        self.open_popover()
        self.screen.type("ebb")
        self.choose("Add to Context", "push button")
        self.expect_rows("Hamlet", "Mercury (metal)", "ebb")
        self.type_topic("flow")
        self.expect_rows("Hamlet", "Mercury (metal)", "ebb", "flow")
        self.expect_no_popover()

        self.expect_kept_items(self.path, ITEM, {"name": "Mercury (metal)", "subtitle": "Chemistry", "content": "Liquid."},
                               stub("ebb"), stub("flow"))
        self.assertEqual([self.request(CONCEPT, number) for number in (1, 2, 3, 4)],
                         [{"concept": topic} for topic in ("prince", "mercury", "ebb", "flow")])
        self.end_quietly()

    def test_the_popover_shows_that_a_concept_is_under_way_and_escape_gives_the_keyboard_back(self):
        self.replies(concept=body({"status": "success", "card": HAMLET}) | self.gate("concept"))
        self.start_ready()
        area = self.put_caret_at_end()
        self.open_popover()
        self.screen.press("Escape")
        self.expect_no_popover()
        wait_until(lambda: area.has_state("focused"), "the editor has the keyboard again", 10)

        self.type_topic("prince")
        self.find("Analyzing concept...", "label")
        self.assertFalse(self.is_there("Add to Context"))
        self.open_gate("concept")

        self.expect_rows("Hamlet")
        self.end_quietly()

    def test_a_suggested_topic_becomes_an_item_and_is_suggested_no_more(self):
        self.replies(suggestions=body({"suggestions": [" Hamlet ", "Ophelia", "hamlet", ""]}),
                     concept=body({"status": "success", "card": card("Ophelia", "Character", "A daughter.")}))
        self.start_ready()
        wait_until(lambda: self.chips() == ["Hamlet", "Ophelia"], "these topics are suggested", 20)

        self.choose("Ophelia", "push button")

        self.expect_rows("Ophelia")
        wait_until(lambda: self.chips() == ["Hamlet"], "one is left", 10)
        self.end_quietly()

    def test_files_are_attached_by_the_panel_and_by_a_drop(self):
        dropped, bad = self.write("dropped.txt", "Tide täbles".encode()), self.write("bad.txt", b"\xff\xfe")
        chosen = self.write("chosen.md", b"# Harbour\r\n")
        self.replies(digest=[body({"digest": "About tides."}), {"status": 500}])
        self.start_ready()

        self.drop_on_column(bad, dropped)
        self.expect_rows("dropped.txt")
        self.open_popover()
        self.choose("Attach Reference File...", "push button")
        self.choose_in_panel("Attach Reference File", chosen)
        self.expect_rows("dropped.txt", "chosen.md")

        self.expect_kept_items(self.path, {"name": "dropped.txt", "content": "Tide täbles", "digest": "About tides."},
                               {"name": "chosen.md", "content": "# Harbour\r\n"})
        self.assertEqual(self.request(DIGEST, 1), {"filename": "dropped.txt", "content": "Tide täbles"})
        self.assertEqual(self.request(DIGEST, 2), {"filename": "chosen.md", "content": "# Harbour\r\n"})
        self.wait_for_output(f"Failed to read dropped context file {bad}: ")
        self.assertEqual(self.application.quit(), 0)
        self.assertEqual(dropped.read_text(), "Tide täbles")

    def test_a_card_is_written_changed_and_removed_by_keys(self):
        self.start_ready()
        self.open_popover()
        self.choose("Add Custom Context...", "push button")
        sheet = self.find("Add Custom Session Context", "dialog", 20)
        save = sheet.find("push button", "Save")
        self.assertFalse(save.has_state("enabled"))
        self.assertFalse(sheet.find_all("push button", "Remove"))
        self.fill("Title", " Tide ")
        self.fill("Subtitle", "Sea")
        self.fill("Description", "Comes\nand goes.")
        save.click()
        self.expect_rows("Tide")
        self.expect_kept_items(self.path, {"name": "Tide", "subtitle": "Sea", "content": "Comes\nand goes."})

        self.choose("Tide", "push button")
        self.find("Edit Session Context", "dialog", 20)
        self.fill("Title", "Ebb")
        self.fill("Subtitle", "")
        self.screen.press("Ctrl+Return")
        self.expect_rows("Ebb")
        self.expect_kept_items(self.path, {"name": "Ebb", "content": "Comes\nand goes."})

        self.choose("Ebb", "push button")
        self.find("Edit Session Context", "dialog", 20).find("push button", "Remove").click()
        self.find("No Session Context", "label", 20)
        self.expect_kept_items(self.path)
        self.end_quietly()

    def fill(self, name, text):
        field = self.find(name, "text")
        field.click()
        wait_until(lambda: field.has_state("focused"), f"{name} has the keyboard", 10)
        self.screen.press("Ctrl+a")
        self.screen.press("BackSpace")
        self.screen.type(text)
        wait_until(lambda: field.text == text, f"{name} is typed", 10)

    def test_a_likely_duplicate_is_attached_only_after_a_yes(self):
        self.replies(concept=[body({"status": "success", "card": HAMLET}), {"status": 404}])
        self.start_ready()
        self.type_topic("Hamlet")
        self.expect_rows("Hamlet")

        self.type_topic("hamlet (play)")
        said = self.answer_alert("Cancel")
        self.assertIn("A similar item 'Hamlet' (Play by Corin Halvard) is already attached. "
                      "Do you still want to add 'hamlet (play)'?", said)
        self.assertEqual(self.rows(), ["Hamlet"])

        self.type_topic("ham")
        said = self.answer_alert("Add Anyway")
        self.assertIn("A similar item 'Hamlet' (Play by Corin Halvard) is already attached. "
                      "Do you still want to add 'ham'?", said)
        self.expect_rows("Hamlet", "ham")
        self.expect_kept_items(self.path, ITEM, stub("ham"))
        self.end_quietly()

    def test_a_link_of_an_answer_attaches_its_concept_and_opens_nothing(self):
        self.replies(chat=answer("See [the play](tessaline://add-context?concept=Hamlet)."),
                     concept=body({"status": "success", "card": HAMLET}))
        self.start_ready()
        self.ask("Who?")
        self.expect_messages(("You", "Who?"), ("Tessaline", "See [the play](tessaline://add-context?concept=Hamlet)."))
        self.input()
        link = self.find("the play", "link", 20)
        self.assertFalse(self.requests(CONCEPT))

        link.click()

        self.expect_rows("Hamlet")
        self.assertEqual(self.request(CONCEPT), {"concept": "Hamlet"})
        self.assertEqual(len(self.application.windows()), 1)
        self.end_quietly()

    def test_items_are_kept_and_sent_with_the_question(self):
        self.replies(concept=body({"status": "success", "card": HAMLET}), chat=answer("Yes."))
        self.start_ready()
        self.type_topic("prince")
        self.expect_rows("Hamlet")
        self.end_quietly()

        for file in self.record.iterdir():
            file.unlink()
        self.start_ready()
        self.expect_rows("Hamlet")
        self.ask("Is it?")

        self.assertEqual(self.request("/v1/chat/completions")["context_items"], [ITEM])
        self.application.quit()


if __name__ == "__main__":
    main()
