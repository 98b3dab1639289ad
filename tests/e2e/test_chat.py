#!/usr/bin/python3
"""Talking about a document: what is asked, how the answer comes, and what becomes of the edits that it proposes."""

from assistant import CHAT, STATS, AssistantTest, answer, body, edit  # first: it finds the package below
from e2e import MARKDOWN, main
from desktop import wait_until

DOCUMENT = "\ufeff# Tides\r\n\r\nThe mark is 4.12 m.\r\n\r\nLow water “comes” late.\r\n\r\nHigh water.\r\n".encode()
TYPED = "More."

PROSE = "Almost. Name the **datum** first, and say *why*: täglich 🌊.\n\n| Day | Height |\n| --- | --- |\n| Monday | 4.12 |\n\n"
CODE = "```python\nk = 0.18\n```\n\n"
FOUND = edit("the mark is 4.12 m.", "Above chart datum the mark is 4.12 m.")
REFUSED = edit("High water.", "Flood.")
MISSING = edit("Nobody wrote this.", "Nobody reads this.")
SHOWN = "Almost. Name the datum first, and say why: täglich 🌊.\nDay\tHeight\nMonday\t4.12\nk = 0.18"


class Chat(AssistantTest):
    screen_size = (1440, 1300)  # a whole answer with its cards

    def open_notes(self):
        """A project with the document in front."""
        self.path = self.write("notes/tides.md", DOCUMENT)
        self.write("notes/readme.md", b"About a/b.\n")
        self.write("notes/more/datum.txt", b"The datum of the chart.\n")
        self.write("notes/beside.md", b"Nothing of it.\n")
        self.open_files(self.path, projects=[self.profile.home / "notes"])

    def expect_request(self, expected, number=1):
        """This is the whole request, key by key and in this order."""
        found = self.request(CHAT, number)
        self.assertEqual(list(found), list(expected))
        for key, value in expected.items():
            self.assertEqual(found[key], value, key)

    def expect_answer(self, text):
        try:
            wait_until(lambda: self.answer_text() == text, "the answer is shown", 20, interval=0.05)
        except AssertionError:
            self.assertEqual(self.answer_text(), text)

    def press_card(self, number, button):
        self.cards()[number].find("push button", button).click()

    def test_a_question_its_answer_in_pieces_and_three_edits(self):
        self.open_notes()
        half = len(FOUND) // 2
        self.replies(
            suggestions=body({"suggestions": []}),
            chat=[answer({"event": {"context": STATS}}, PROSE, CODE, FOUND[:half], self.pause_at("half"), FOUND[half:], "\n\n" + REFUSED,
                         "\n" + MISSING, self.pause_at("end"), cutEvery=7, pause=1),
                  answer("Yes.")])
        self.start_ready()
        self.find("Consult Tessaline", "label")
        self.assertFalse(self.is_there("Clear Chat"))
        self.put_caret_at_end()
        self.screen.type(TYPED)  # and not saved yet
        self.ask("  Is the datum clear? ")

        # What was asked.
        document = (DOCUMENT + TYPED.encode()).decode()
        self.expect_request({
            "prompt": "Is the datum clear?",
            "file_content": document,
            "workspace_context_items": [
                {"name": "readme.md", "subtitle": "Project · notes", "content": "About a/b.\n"},
                {"name": "more/datum.txt", "subtitle": "Project · notes", "content": "The datum of the chart.\n"}],
            "temperature": 0.7,
            "top_p": 0.9})
        head, content = self.requests(CHAT)[0]
        self.assertEqual(head.splitlines()[0], f"POST {CHAT} HTTP/1.1")
        self.assertIn("\r\ncontent-type: application/json\r\n", head.lower() + "\r\n")
        self.assertIn(rb"About a\/b.\n", content)
        self.assertTrue(content.endswith(b',"temperature":0.7,"top_p":0.9}'))
        self.assertEqual(self.path.read_bytes(), document.encode())
        self.expect_kept_messages(self.path, ("user", "Is the datum clear?"))

        # Half of an edit is text as it stands; the rest of the column follows the answer.
        self.expect_status("Using document + 4 sources · ~2.3K tokens")
        wait_until(lambda: "<<<<<<< SEARCH" in (self.answer_text() or ""), "half an edit is shown", 20)
        self.assertFalse(self.cards())
        self.assertFalse(self.find("Chat Input", "text").has_state("enabled"))
        self.assertFalse(self.find("Stop", "push button").has_state("enabled"))
        self.open_gate("half")
        self.expect_card_states("pending", "pending", "pending")
        self.expect_answer(SHOWN)
        self.find("Copy Code", "push button")
        self.assertTrue(self.find("Stop", "push button"))

        # One edit is accepted while the answer still runs, one is rejected, one fails.
        edited = document.replace("The mark is 4.12 m.", "Above chart datum the mark is 4.12 m.")
        self.press_card(0, "Accept")
        self.expect_card_states("accepted", "pending", "pending")
        self.find("✓ Accepted", "label")
        self.expect_on_disk(self.path, edited.encode())
        self.open_gate("end")
        self.input()
        self.press_card(1, "Reject")
        self.expect_card_states("accepted", "rejected", "pending")
        self.find("✕ Rejected", "label")
        self.press_card(2, "Accept")
        failed = "Could not find robust match for original text block in document."
        self.wait_for_output(failed)
        self.expect_card_states("accepted", "rejected", "pending")
        self.assertEqual(self.path.read_bytes(), edited.encode())
        whole = PROSE + CODE + FOUND + "\n\n" + REFUSED + "\n" + MISSING
        self.expect_messages(("You", "Is the datum clear?"), ("Tessaline", (PROSE + CODE).strip()))
        self.expect_kept_messages(self.path, ("user", "Is the datum clear?"), ("assistant", whole))

        # The next question tells what was said before.
        self.ask("Sure?")
        self.expect_request({
            "prompt": "Sure?",
            "file_content": edited,
            "workspace_context_items": [{"name": "readme.md", "subtitle": "Project · notes", "content": "About a/b.\n"}],
            "history": [{"role": "user", "content": "Is the datum clear?"}, {"role": "assistant", "content": whole}],
            "temperature": 0.7,
            "top_p": 0.9}, 2)
        self.expect_messages(("You", "Is the datum clear?"), ("Tessaline", (PROSE + CODE).strip()), ("You", "Sure?"),
                             ("Tessaline", "Yes."))
        self.input()
        self.end_quietly(failed)
        self.assertEqual(self.path.read_bytes(), edited.encode())

    def formatted(self):
        return self.find("Document", "text")

    def test_an_accepted_edit_is_one_step_to_undo_in_the_open_editor(self):
        path = self.write("a.md", b"one two three\n")
        for mode, show in ((MARKDOWN, self.text_area), ("split", self.text_area), ("editor", self.formatted)):
            with self.subTest(mode):
                path.write_bytes(b"one two three\n")
                self.open_files(path, editorViewModeV2=mode)
                self.replies(chat=answer("Better: " + edit("two", "2\n\nand")))
                self.start_ready()
                editor = show()
                editor.click()
                wait_until(lambda: editor.has_state("focused"), "the editor has the keyboard", 10)
                self.screen.press("Ctrl+End")
                self.screen.type("four")
                self.ask("How?")
                self.find("Accept", "push button", 20)
                before = path.read_bytes()  # the question has saved it
                editor.click()
                self.screen.press("Ctrl+End")
                self.screen.type("five")  # and the acceptance saves this

                self.cards()[-1].find("push button", "Accept").click()

                after = before.replace(b"two", b"2\n\nand") + b"five"
                self.expect_on_disk(path, after, 5)
                self.expect_card_states("accepted")
                wait_until(lambda: "and three" in editor.text, "the edit is shown", 10)
                editor.click()
                self.screen.press("Ctrl+z")
                self.expect_on_disk(path, before + b"five", 5)
                self.screen.press("Ctrl+Shift+z")
                self.expect_on_disk(path, after, 5)
                self.choose("Clear Chat", "push button")
                self.end_quietly()
                self.application.output_file.unlink()
                self.starts = 0

    def test_a_restart_finds_the_conversation_and_its_edits_pending_again(self):
        path = self.write("a.md", b"one two\n")
        self.open_files(path)
        self.replies(chat=answer("Here.\n\n" + edit("two", "2")))
        self.start_ready()
        self.ask("How?")
        self.find("Accept", "push button", 20)
        self.press_card(0, "Accept")
        self.expect_card_states("accepted")

        self.end_quietly()
        self.start_ready()

        self.expect_messages(("You", "How?"), ("Tessaline", "Here."))
        self.expect_card_states("pending")
        self.press_card(0, "Accept")
        failed = "Could not find robust match for original text block in document."
        self.wait_for_output(failed)
        self.expect_card_states("pending")
        self.end_quietly(failed)
        self.assertEqual(path.read_bytes(), b"one 2\n")

    def test_clearing_empties_the_conversation_on_the_disk_too(self):
        path = self.write("a.md", b"one\n")
        self.open_files(path)
        self.replies(chat=answer("Yes."))
        self.start_ready()
        self.ask("Is it?")
        self.expect_messages(("You", "Is it?"), ("Tessaline", "Yes."))
        self.input()

        self.choose("Clear Chat", "push button")

        self.find("Consult Tessaline", "label")
        self.assertFalse(self.is_there("Clear Chat"))
        self.expect_kept_messages(path)
        self.assertEqual(self.kept(path, "chat_history.json"), [])
        self.end_quietly()

    def test_another_document_in_front_during_an_answer_keeps_its_own_conversation(self):
        one, two = self.write("one.md", b"1\n"), self.write("two.md", b"2\n")
        self.open_files(one, two)
        self.replies(chat=[answer("First half", self.pause_at("end"), " and the second."), answer("Of two.")])
        self.start_ready()
        self.ask("Which?")
        self.expect_messages(("You", "Which?"), ("Tessaline", "First half"))

        self.find("Open Files").find(None, "two.md").click()
        self.expect_text("2\n")
        self.expect_messages()
        self.find("Consult Tessaline", "label")
        self.open_gate("end")
        self.ask("And this?")
        self.expect_messages(("You", "And this?"), ("Tessaline", "Of two."))
        self.input()
        self.assertNotIn("history", self.request(CHAT, 2))
        self.assertEqual(self.request(CHAT, 2)["file_content"], "2\n")

        self.find("Open Files").find(None, "one.md").click()
        self.expect_messages(("You", "Which?"), ("Tessaline", "First half"))
        self.expect_kept_messages(one, ("user", "Which?"), ("assistant", "First half"))
        self.expect_kept_messages(two, ("user", "And this?"), ("assistant", "Of two."))
        self.end_quietly()

    def test_a_question_that_is_only_blanks_is_not_sent(self):
        self.open_files(self.write("a.md", b"1\n"))
        self.replies(chat=answer("Yes."))
        self.start_ready()
        self.ask("   ")
        self.assertFalse(self.find("Send", "push button").has_state("enabled"))
        self.assertEqual(self.input().text, "   ")
        self.screen.type("x?")
        wait_until(lambda: self.find("Send", "push button").has_state("enabled"), "it can be sent", 10)

        self.choose("Send", "push button")

        self.expect_messages(("You", "x?"), ("Tessaline", "Yes."))
        self.assertEqual(len(self.requests(CHAT)), 1)
        self.end_quietly()

    def test_what_goes_wrong_is_said_in_the_answer(self):
        path = self.write("a.md", b"1\n")
        self.open_files(path)
        self.replies(chat=[{"status": 503}, answer({"event": {"error": "Out of memory"}}),
                           {"steps": [{"token": "Half"}, self.pause_at("cut"), {"close": True}], "transfer": "chunked"}])
        self.start_ready()
        self.ask("1?")
        self.expect_messages(("You", "1?"), ("Tessaline", "Server error: Status code 503"))
        self.ask("2?")
        self.expect_status("AI error: Out of memory")
        wait_until(lambda: self.messages()[-1] == ("Tessaline", "Out of memory"), "the error is the answer", 20)
        self.ask("3?")
        wait_until(lambda: self.messages()[-1] == ("Tessaline", "Half"), "half an answer is shown", 20)
        self.open_gate("cut")

        wait_until(lambda: self.messages()[-1][1].startswith("Connection failed: "), "the connection is lost", 20)
        self.assertTrue(self.messages()[-1][1].endswith("\nMake sure the local server is built and running."))
        self.input()
        self.end_quietly()


if __name__ == "__main__":
    main()
