#!/usr/bin/python3
"""The program with a server for its assistant: the scripted one, which stands beside the program under its real name."""

import json
import os
import signal
import socket
import subprocess
from pathlib import Path

from e2e import EXECUTABLE, NO_UPDATER, EndToEndTest, main  # first: it finds the package of the next line
from desktop import Application, wait_until

SCRIPTED_SERVER = Path(os.environ.get(
    "TESSALINE_SCRIPTED_SERVER", EXECUTABLE.parents[2] / "tests/support/scripted-server/scripted_server")).resolve()
PORT = 23949

STARTED = "Started tessaline-server process. Polling health check...\n"
READY = "Local AI Server is fully ready. Fetching initial document suggestions...\n"
STOPPED = "Stopping Local AI Server subprocess...\nLocal AI Server stopped.\n"


def is_alive(process):
    """Whether there is a process of this number that has not ended."""
    try:
        return "\nState:\tZ" not in Path(f"/proc/{process}/status").read_text()
    except (FileNotFoundError, ProcessLookupError):
        return False


def is_port_free():
    with socket.socket() as listener:
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        try:
            listener.bind(("127.0.0.1", PORT))
        except OSError:
            return False
        return True


class Assistant(EndToEndTest):
    def setUp(self):
        super().setUp()
        folder = self.profile.folder("installed")
        self.place(EXECUTABLE, folder / "tessaline")
        (folder / "tessaline-server").symlink_to(SCRIPTED_SERVER)
        self.application = Application(self.screen, self.profile, folder / "tessaline")
        self.addCleanup(self.application.kill)
        self.record = self.profile.folder("record")
        environment = self.application.environment
        self.application.environment = lambda: {
            **environment(), "SCRIPTED_SERVER_SCRIPT": str(self.profile.home / "script.json")}
        self.script()
        self.assertTrue(is_port_free(), "the fixed port is free")

    @staticmethod
    def place(program, path):
        """The same program under another name, without a copy where that can be helped."""
        try:
            os.link(program, path)
        except OSError:
            subprocess.run(["cp", "--reflink=auto", str(program), str(path)], check=True)

    def script(self, **script):
        path = self.profile.home / "script.json"
        path.write_text(json.dumps({"record": str(self.record), **script}))

    def server(self):
        """How the server was started; waited for."""
        path = self.record / "process.json"
        wait_until(path.exists, "the server has been started", 20)
        return json.loads(path.read_text())

    def wait_for_output(self, text, seconds=20):
        try:
            wait_until(lambda: text in self.application.output(), f"the console says “{text}”", seconds)
        except AssertionError:
            self.assertIn(text, self.application.output())

    def expect_nothing_left(self, process):
        """No child, and the port free, within two seconds."""
        wait_until(lambda: not is_alive(process), "the server has gone", 2)
        wait_until(is_port_free, "the port is free", 2)

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
