#!/usr/bin/python3
"""The program with a server for its assistant: the scripted one, which stands beside the program under its real name."""

import signal

from assistant import READY, STARTED, STOPPED, AssistantTest, is_alive, is_port_free  # first: it finds the package below
from e2e import NO_UPDATER, main
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


if __name__ == "__main__":
    main()
