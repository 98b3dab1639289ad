#!/usr/bin/python3
"""The program with its real server: what a person reads where there is no engine, and an answer, an edit and the end where
there is one, which does what a script says."""

import os
from pathlib import Path

from assistant import CHAT, SCRIPTED_SERVER, AssistantTest, edit, is_alive, is_port_free  # first: it finds the package below
from e2e import EXECUTABLE, main
from desktop import wait_until

SERVER = Path(os.environ.get("TESSALINE_SERVER", EXECUTABLE.parents[2] / "server/tessaline-server")).resolve()
DOCUMENT = b"# Tides\n\nHigh water comes late.\n"


def token(text):
    return {"event": {"choices": [{"delta": {"content": text}}]}}


class RealServer(AssistantTest):
    def setUp(self):
        super().setUp()
        server = self.folder / "tessaline-server"
        server.unlink()
        self.place(SERVER, server)
        environment = self.application.environment
        self.application.environment = lambda: {
            **environment(), "PATH": f"{self.folder}:/usr/bin:/bin", "OLLAMA_HOST": "127.0.0.1:1"}
        self.path = self.write("notes/tides.md", DOCUMENT)
        self.open_files(self.path, projects=[self.profile.home / "notes"])

    def test_explains_what_to_install_where_there_is_no_engine(self):
        self.start_ready()
        self.wait_for_output("[Local AI Server] Engine: none; model: ")

        self.ask("Is it right?")

        self.input()
        wait_until(lambda: len(self.kept_messages(self.path)) == 2, "the answer is kept", 20)
        self.assertRegex(self.kept_messages(self.path)[1][1], r"\ANo local engine was found.*llama\.cpp.*Ollama.*Tessaline again\.\Z")
        self.assertTrue(self.answer_text().startswith("No local engine was found"))
        self.assertEqual(self.application.quit(), 0)
        wait_until(is_port_free, "the port is free", 20)

    def test_an_answer_an_edit_and_the_end_in_the_middle_of_it(self):
        (self.folder / "llama-server").symlink_to(SCRIPTED_SERVER)
        # One answer for all that is asked: topics in it for the suggestions, an edit for the conversation.
        steps = [token('{"topics": ["Moon"]}\n\n'), token(edit("High water comes late.", "High water comes early.")),
                 {**token(" "), "every": 60, **self.gate("end")}, {"done": True}]
        self.script(replies={"/health": [{"status": 503, "body": "{}"}, {"body": "{}"}], "*": [{"status": 404, "body": ""}],
                             CHAT: [{"steps": steps}]})
        self.start_ready()
        engine = self.server()
        self.assertEqual(engine["arguments"][:2], ["--host", "127.0.0.1"])

        self.ask("Is it right?")
        self.expect_card_states("pending")
        self.cards()[0].find("push button", "Accept").click()
        self.expect_on_disk(self.path, DOCUMENT.replace(b"late", b"early"))
        self.assertTrue(self.find("Stop", "push button"))

        self.assertEqual(self.application.quit(), 0)
        wait_until(lambda: not is_alive(engine["pid"]), "the engine has gone", 20)
        wait_until(is_port_free, "the port is free", 20)

    def test_a_stopped_answer_stops_the_engine_and_leaves_no_process(self):
        (self.folder / "llama-server").symlink_to(SCRIPTED_SERVER)
        # The topics come to no end either: the question goes before them, and they are asked for again behind it.
        self.script(replies={"/health": [{"body": "{}"}], "*": [{"status": 404, "body": ""}],
                             CHAT: [{"steps": [token("It depends"), {"hang": True}]}]})
        self.start_ready()
        engine = self.server()
        self.text_area().click()
        self.screen.press("Ctrl+a")
        explain = self.find("Explain", "push button")
        wait_until(lambda: explain.has_state("enabled"), "the selection can be explained", 20)
        explain.click()
        wait_until(lambda: self.answer_text() == "It depends", "the answer begins", 20)
        stop = self.find("Stop", "push button")
        wait_until(lambda: stop.has_state("enabled"), "it can be stopped", 20)

        stop.click()

        self.expect_status("Generation stopped")
        question = next(file for file in self.request_files(CHAT) if b"Explain the concepts" in file.read_bytes())
        wait_until(question.with_suffix(".closed").exists, "the engine has been told that nobody listens", 20)
        wait_until(lambda: len(self.kept_messages(self.path)) == 2, "the answer is kept", 20)
        self.assertEqual(self.kept_messages(self.path)[1], ("assistant", "It depends"))
        self.assertTrue(is_alive(engine["pid"]))
        self.assertEqual(self.application.quit(), 0)
        wait_until(lambda: not is_alive(engine["pid"]), "the engine has gone", 20)
        wait_until(is_port_free, "the port is free", 20)


if __name__ == "__main__":
    main()
