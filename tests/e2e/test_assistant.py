#!/usr/bin/python3
"""The program with a server for its assistant: the scripted one, which stands beside the program under its real name."""

import signal
import unittest

from assistant import HEALTH, READY, STARTED, STOPPED, AssistantTest, answer, is_alive, is_port_free  # first, for the others
from e2e import NO_UPDATER, SANITIZED, Clock, main
from desktop import wait_until


class Assistant(AssistantTest):
    def test_it_starts_the_server_and_ends_it_when_it_quits(self):
        self.script(output=[{"text": "loading\n"}], replies={"/health": [{"status": 503}, {"status": 200}]})
        self.start()
        self.wait_for_output(READY)
        process = self.server()
        self.assertEqual(process["arguments"], [])
        self.assertEqual(process["parentDeathSignal"], signal.SIGKILL)
        self.assertEqual(list(process["descriptors"]), ["0", "1", "2"])
        self.assertEqual(process["environment"]["TESSALINE_CONTEXT_TOKENS"],
                         {"llama-3.2-3b-q4": "8192", "llama-3.1-8b-q4": "16384", "qwen-2.5-14b-q4": "32768"}[
                             process["environment"]["TESSALINE_MODEL_ID"]])

        self.assertEqual(self.application.quit(), 0)

        self.assertEqual(sorted(self.application.output().splitlines(True)), sorted(
            (NO_UPDATER + STARTED + "[Local AI Server] loading\n" + READY + STOPPED).splitlines(True)))
        self.assertEqual(self.application.errors(), "")
        self.assertRegex((self.profile.home / ".local/share/com.orlenth.tessaline/server.log").read_text(),
                         r"\A\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\] loading\n\Z")
        self.expect_nothing_left(process["pid"])

    def test_under_a_test_host_it_starts_no_server(self):
        environment = self.application.environment
        self.application.environment = lambda: {**environment(), "XCTestConfigurationFilePath": ""}  # being there is enough
        self.start()
        self.find("Retry Local AI", "push button")

        self.assertEqual(self.application.quit(), 0)

        self.assertFalse((self.record / "process.json").exists())
        self.assertEqual(self.application.output() + self.application.errors(), "")

    def test_no_server_is_left_however_the_program_ends(self):
        ends = {"quit": lambda: (self.screen.press("Ctrl+q"), self.application.wait_for_end()),
                "SIGTERM": lambda: self.application.quit(signal.SIGTERM),
                "SIGKILL": lambda: self.application.quit(signal.SIGKILL),
                "a crash": lambda: self.application.quit(signal.SIGSEGV)}
        for name, end in ends.items():
            with self.subTest(name):
                (self.record / "process.json").unlink(missing_ok=True)
                self.application.output_file.unlink(missing_ok=True)
                self.start()
                self.wait_for_output(READY)
                process = self.server()["pid"]
                self.assertFalse(is_port_free())

                end()

                self.expect_nothing_left(process)

    def test_an_end_during_an_answer_keeps_what_has_come_and_a_crash_the_question(self):
        question, begun = ("user", "Is it?"), ("assistant", "Yes, it")
        ends = {"a.md": (lambda: self.assertEqual(self.application.quit(), 0), [question, begun]),
                "b.md": (lambda: self.application.quit(signal.SIGSEGV), [question])}
        for name, (end, kept) in ends.items():
            with self.subTest(name):
                path = self.write(name, b"text\n")
                self.open_files(path)
                self.replies(chat=answer("Yes, it", self.pause_at("end")))
                self.start_ready()
                self.ask("Is it?")
                wait_until(lambda: self.answer_text() == "Yes, it", "the answer has begun", 20)
                process = self.server()["pid"]

                end()

                self.expect_nothing_left(process)
                self.assertEqual(self.kept_messages(path), kept)
                (self.record / "process.json").unlink()

    def test_a_server_that_takes_its_time_to_end_is_waited_for(self):
        self.script(linger=1000)
        self.start()
        self.wait_for_output(READY)
        process = self.server()["pid"]

        self.assertEqual(self.application.quit(), 0)

        self.assertFalse(is_alive(process))
        self.assertTrue(self.application.output().endswith(STOPPED))

    def test_a_document_can_be_edited_while_the_server_is_loading(self):
        path = self.write("a.md", b"")
        self.open_files(path)
        self.script(listenAfter=600000)
        self.start()
        self.put_caret_at_end()
        self.screen.type("typed")

        self.expect_on_disk(path, b"typed", 5)
        process = self.server()["pid"]
        self.assertEqual(self.application.quit(), 0)
        self.assertNotIn(READY, self.application.output())
        self.expect_nothing_left(process)

    def test_another_model_is_chosen_in_the_settings_and_the_server_restarted_with_it(self):
        self.profile.store(aiModelSelection="llama-3.1-8b-q4")
        self.start()
        self.wait_for_output(READY)
        first = self.server()
        self.assertEqual(first["environment"]["TESSALINE_MODEL_ID"], "llama-3.1-8b-q4")

        self.choose_menu_item("File", "Settings…")
        pane = self.find("Settings", "dialog")
        picker = pane.find("combo box")
        apply = pane.find("push button", "Apply and Restart Local AI")
        self.assertFalse(apply.has_state("enabled"))
        (self.record / "process.json").unlink()
        wait_until(lambda: picker.has_state("focused"), "the picker has the keyboard", 5)
        self.screen.press("Home")
        self.screen.press("Down")
        self.expect_stored("aiModelSelection", "llama-3.2-3b-q4", 5)
        pane.find("label", "3B · Q4_K_M · 8192 token context")
        wait_until(lambda: apply.has_state("enabled"), "there is something to apply", 5)
        apply.click()

        second = self.server()
        self.assertEqual(second["environment"]["TESSALINE_MODEL_ID"], "llama-3.2-3b-q4")
        wait_until(lambda: not apply.has_state("enabled"), "it has been applied", 5)
        self.assertFalse(is_alive(first["pid"]))
        wait_until(lambda: self.application.output().count(READY) == 2, "the new server is ready", 20)
        self.screen.press("Escape")
        self.assertEqual(self.application.quit(), 0)
        self.expect_nothing_left(second["pid"])


class ServerStates(AssistantTest):
    """What the chat shows of the server."""

    def expect_chat(self, said, field, retry):
        """The field says this, takes a question or not, and the button to try again is there or not."""
        def current():
            shown = self.find("Chat Input", "text")
            return (shown.description, "enabled" if shown.has_state("enabled") else "disabled",
                    "Retry" if self.is_there("Retry Local AI", "push button") else None)
        try:
            wait_until(lambda: current() == (said, field, retry), "the chat shows the state of the server", 20, interval=0.05)
        except AssertionError:
            self.assertEqual(current(), (said, field, retry))

    def expect_offline(self):
        self.expect_chat("Tessaline is offline...", "disabled", "Retry")

    def expect_starting(self):
        self.expect_chat("Initializing Tessaline...", "disabled", None)

    def expect_running(self):
        self.expect_chat("Discuss with Tessaline...", "enabled", None)

    def test_a_missing_server_is_started_by_retry_once_it_is_there(self):
        self.replies(health={"status": 200} | self.gate("health"))
        server = self.folder / "tessaline-server"
        server.rename(self.folder / "elsewhere")
        self.start()
        self.expect_offline()
        self.choose("Retry Local AI", "push button")
        missing = f'tessaline-server binary not found. Paths checked: ["{server}", '
        wait_until(lambda: self.application.output().count(missing) == 2, "it has looked again", 10)
        self.expect_offline()

        (self.folder / "elsewhere").rename(server)
        self.choose("Retry Local AI", "push button")
        self.expect_starting()
        self.assertNotIn(READY, self.application.output())
        self.open_gate("health")

        self.expect_running()
        self.assertEqual(self.application.quit(), 0)
        self.assertEqual(self.application.errors(), "")

    def test_a_server_that_cannot_be_started_is_tried_again(self):
        server = self.folder / "tessaline-server"
        server.rename(self.folder / "elsewhere")
        server.write_text("no program")
        self.start()
        self.expect_offline()
        self.wait_for_output("Failed to run tessaline-server: ")

        (self.folder / "elsewhere").rename(server)
        self.choose("Retry Local AI", "push button")

        self.expect_running()
        self.assertEqual(self.application.quit(), 0)

    def test_a_server_that_ends_while_it_loads_is_offline(self):
        self.script(exit={"after": 0, "code": 3}, listenAfter=600000)
        self.start()
        self.expect_offline()
        self.script(listenAfter=600000)
        (self.record / "process.json").unlink()

        self.choose("Retry Local AI", "push button")

        self.expect_starting()
        process = self.server()["pid"]
        self.assertEqual(self.application.quit(), 0)
        self.expect_nothing_left(process)

    @unittest.skipIf(SANITIZED, "a sanitizer's runtime must be the first library of the process")
    def test_a_server_that_is_not_ready_after_ten_minutes_is_offline_and_left_alive(self):
        clock = Clock(self.profile.home / "clock")
        environment = self.application.environment
        self.application.environment = lambda: {**environment(), **clock.environment}
        document = self.write("a.md", b"")
        self.open_files(document)
        self.replies(health={"status": 503})
        self.start()
        self.expect_starting()
        clock.advance(minutes=5)
        probes = len(self.request_files(HEALTH))
        wait_until(lambda: len(self.request_files(HEALTH)) > probes + 1, "it is still asked", 20)
        self.expect_starting()

        clock.advance(minutes=10)

        self.wait_for_output("Local AI Server failed to respond to health check.\n")
        self.expect_offline()
        process = self.server()["pid"]
        self.assertTrue(is_alive(process))
        self.choose("Retry Local AI", "push button")  # does nothing while the process lives
        self.expect_offline()
        self.assertEqual(self.application.output().count(STARTED), 1)
        self.assertEqual(self.application.quit(), 0)
        self.expect_nothing_left(process)

    def test_a_server_that_ends_during_an_answer_loses_it_and_is_started_again_by_retry(self):
        self.open_files(self.write("a.md", b"text"))
        self.replies(chat={"steps": [{"token": "Half"}, self.pause_at("exit"), {"exit": 7}], "transfer": "chunked"})
        self.start_ready()
        self.expect_running()
        self.ask("What?")
        self.expect_messages(("You", "What?"), ("Tessaline", "Half"))

        self.open_gate("exit")

        self.expect_offline()
        wait_until(lambda: self.messages()[-1][1].startswith("Connection failed: "), "the answer is lost", 20)
        self.replies(chat=answer("Whole."))
        self.choose("Retry Local AI", "push button")
        self.expect_running()
        self.ask("Again?")
        wait_until(lambda: self.messages()[2:] == [("You", "Again?"), ("Tessaline", "Whole.")], "there is an answer", 20)
        self.assertEqual(self.application.quit(), 0)


if __name__ == "__main__":
    main()
