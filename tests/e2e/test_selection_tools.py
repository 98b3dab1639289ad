#!/usr/bin/python3
"""Rephrase, summarize and explain: the tools that work on selected text, from both editors."""

from assistant import CHAT, STATS, AssistantTest, answer  # first: it finds the package below
from e2e import MARKDOWN, main
from desktop import wait_until

REPHRASE = ("Rephrase this exact text selection from the active document. Return ONLY the new rephrased version of the text, "
            "with absolutely no preamble, no explanations, no chat commentary, and no SEARCH/REPLACE headers. Just output the "
            "clean rephrased text directly:\n\n")
SUMMARIZE = ("Provide a very concise summary and key insights of the following selected text block from the document, in 2-3 "
             "sentences max:\n\n")
EXPLAIN = "Explain the concepts and clarify the context within this selected text block from the document:\n\n"

FORMATTED = "editor"
DOCUMENT = "# Tides\n\nOur **spring** tide\n"


class SelectionTools(AssistantTest):
    def open_in(self, mode, data=DOCUMENT.encode()):
        """Starts with a file in this editor; returns the file and the editor."""
        path = self.write("a.md", data)
        self.open_files(path, editorViewModeV2=mode)
        self.start_ready()
        return path, self.text_area() if mode == MARKDOWN else self.find("Document", "text")

    def select(self, editor, text):
        """Selects these characters, which stand somewhere in the first shown text, by mouse and keys."""
        x, y, _, height = editor.character_area(editor.text.index(text))
        self.screen.click(x + 1, y + height // 2)
        wait_until(lambda: editor.has_state("focused"), "the editor has the keyboard", 10)
        for _ in text:
            self.screen.press("Shift+Right")
        self.expect_tools("enabled")

    def tool(self, name):
        return self.find(name, "push button")

    def expect_tools(self, state):
        """All three tools can be used ("enabled"), or none ("disabled")."""
        wait_until(lambda: {self.tool(name).has_state("enabled") for name in ("Rephrase", "Summarize", "Explain")}
                   == {state == "enabled"}, f"the tools are {state}", 20)

    def card(self, name):
        return self.find(name, "dialog", 20)

    def expect_no_card(self):
        wait_until(lambda: not self.is_there(None, "dialog"), "the card is closed", 10)

    def expect_one_shot(self, number, prompt, document):
        found = self.request(CHAT, number)
        self.assertEqual(list(found.items()), [("prompt", prompt), ("file_content", document), ("temperature", 0.3),
                                               ("top_p", 0.9)])

    def test_a_rephrase_is_shown_and_taken_from_the_source_editor(self):
        self.replies(chat=answer("Our *high*", " tide") | self.gate("answer"))
        path, editor = self.open_in(MARKDOWN)
        self.expect_tools("disabled")
        self.select(editor, "**spring** tide")

        self.tool("Rephrase").click()
        self.expect_tools("disabled")  # nothing is selected any more
        self.assertFalse(self.is_there("Proposed Rephrasing"))
        self.open_gate("answer")
        card = self.card("Proposed Rephrasing")
        self.assertEqual(card.find("text", "Original:").text, "**spring** tide")
        self.assertEqual(card.find("text", "Rephrased:").text, "Our *high* tide")
        self.assertEqual(path.read_text(), DOCUMENT)
        self.expect_one_shot(1, REPHRASE + "**spring** tide", DOCUMENT)
        card.find("push button", "Accept").click()

        changed = "# Tides\n\nOur Our *high* tide\n"
        self.expect_no_card()
        self.expect_on_disk(path, changed.encode())
        self.expect_text(changed)
        self.assertEqual(self.messages(), [])
        editor.click()
        self.screen.press("Ctrl+z")
        self.expect_on_disk(path, DOCUMENT.encode(), 5)
        self.end_quietly()

    def test_a_rephrase_from_the_formatted_editor_asks_with_what_is_shown_and_changes_the_source(self):
        self.replies(chat=[answer("a **neap** tide"), answer("No.")])
        path, editor = self.open_in(FORMATTED)
        self.select(editor, "spring tide")

        self.tool("Rephrase").click()
        card = self.card("Proposed Rephrasing")
        self.assertEqual(card.find("text", "Original:").text, "spring tide")
        self.expect_one_shot(1, REPHRASE + "spring tide", DOCUMENT)
        card.find("push button", "Accept").click()

        self.expect_no_card()
        self.expect_on_disk(path, b"# Tides\n\nOur a **neap** tide\n")
        wait_until(lambda: "Our a neap tide" in editor.text, "the change is shown", 10)

        self.select(editor, "neap")
        self.tool("Rephrase").click()
        self.card("Proposed Rephrasing").find("push button", "Reject").click()
        self.expect_no_card()
        self.assertEqual(path.read_bytes(), b"# Tides\n\nOur a **neap** tide\n")
        editor.click()
        self.screen.press("Ctrl+z")
        self.expect_on_disk(path, DOCUMENT.strip().encode(), 5)  # as this editor writes it
        self.end_quietly()

    def test_a_summary_is_shown_and_copied(self):
        for mode in (MARKDOWN, FORMATTED):
            with self.subTest(mode):
                self.replies(chat=[answer("It is about tides."), {"status": 500}])
                path, editor = self.open_in(mode)
                self.select(editor, "Tides")
                self.tool("Summarize").click()
                card = self.card("Document Selection Summary")
                self.assertEqual(card.find("text", "Summary").text, "It is about tides.")
                self.expect_one_shot(1, SUMMARIZE + "Tides", DOCUMENT)
                card.find("push button", "Copy").click()
                card.find("push button", "Dismiss").click()
                self.expect_no_card()

                self.select(editor, "tide")
                self.tool("Summarize").click()
                self.assertEqual(self.card("Document Selection Summary").find("text", "Summary").text,
                                 "Error summarizing: Server returned status code 500")
                self.screen.press("Escape")
                self.expect_no_card()

                editor.click()
                self.screen.press("Ctrl+End")
                self.screen.press("Ctrl+v")
                wait_until(lambda: path.read_text().rstrip().endswith("It is about tides."), "the copy is pasted and saved", 10)
                self.end_quietly()
                self.reset()

    def reset(self):
        """As before the first start."""
        self.application.output_file.unlink()
        self.starts = 0
        for file in self.record.iterdir():
            file.unlink()

    def test_an_explanation_is_a_turn_of_the_chat_and_can_be_stopped(self):
        self.replies(chat=[answer({"event": {"context": {**STATS, "estimated_input_tokens": 999, "workspace_context_count": 0}}},
                                  "A tide", self.pause_at("never"), " is water."),
                           answer(**self.gate("never"))])
        path, editor = self.open_in(MARKDOWN)
        self.select(editor, "tide")

        self.tool("Explain").click()
        self.expect_tools("disabled")
        self.expect_messages(("You", EXPLAIN + "tide"), ("Tessaline", "A tide"))
        self.expect_status("Using document + 1 sources · ~999 tokens")
        found = self.request(CHAT)
        self.assertEqual(list(found.items()), [("prompt", EXPLAIN + "tide"), ("file_content", DOCUMENT), ("temperature", 0.7),
                                               ("top_p", 0.9)])
        stop = self.find("Stop", "push button")
        wait_until(lambda: stop.has_state("enabled"), "it can be stopped", 10)

        # A second one is not asked while this one runs.
        self.select(editor, "Our")
        self.tool("Explain").click()
        self.expect_tools("disabled")
        stop.click()

        self.expect_status("Generation stopped")
        self.input()
        self.expect_messages(("You", EXPLAIN + "tide"), ("Tessaline", "A tide"))
        self.expect_closed(CHAT)
        self.expect_kept_messages(path, ("user", EXPLAIN + "tide"), ("assistant", "A tide"))
        self.assertEqual(len(self.requests(CHAT)), 1)

        # Stopped before the first word.
        self.select(editor, "Our")
        self.tool("Explain").click()
        self.find("Writing...", "label", 20)
        stop = self.find("Stop", "push button")
        wait_until(lambda: stop.has_state("enabled"), "it can be stopped", 10)
        self.request(CHAT, 2)
        stop.click()
        self.expect_messages(("You", EXPLAIN + "tide"), ("Tessaline", "A tide"), ("You", EXPLAIN + "Our"),
                             ("Tessaline", "Generation stopped."))
        self.end_quietly()

    def test_an_explanation_is_asked_from_the_formatted_editor_with_what_is_shown(self):
        self.replies(chat=answer("Yes."))
        _, editor = self.open_in(FORMATTED)
        self.select(editor, "spring tide")

        self.tool("Explain").click()

        self.expect_messages(("You", EXPLAIN + "spring tide"), ("Tessaline", "Yes."))
        self.assertEqual(self.request(CHAT)["file_content"], DOCUMENT)
        self.end_quietly()


if __name__ == "__main__":
    main()
