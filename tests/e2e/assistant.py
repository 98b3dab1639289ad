"""What the end-to-end tests of the assistant share: the scripted server, which stands beside the program under its real name,
gates at which its answers wait for the test, what it was asked, and what the program kept of the conversation."""

import json
import os
import socket
import subprocess
from pathlib import Path

from e2e import EXECUTABLE, NO_UPDATER, EndToEndTest  # first: it finds the package of the next line
from desktop import Application, asked_again, wait_until

SCRIPTED_SERVER = Path(os.environ.get(
    "TESSALINE_SCRIPTED_SERVER", EXECUTABLE.parents[2] / "tests/support/scripted-server/scripted_server")).resolve()
PORT = 23949

STARTED = "Started tessaline-server process. Polling health check...\n"
READY = "Local AI Server is fully ready. Fetching initial document suggestions...\n"
STOPPED = "Stopping Local AI Server subprocess...\nLocal AI Server stopped.\n"

HEALTH, CHAT, SUGGESTIONS, CONCEPT, DIGEST = (
    "/health", "/v1/chat/completions", "/v1/suggest-context", "/v1/expand-concept", "/v1/digest-file")

STATS = {"context_window_tokens": 8192, "estimated_input_tokens": 2345, "active_document_chars": 1200,
         "attached_context_count": 1, "workspace_context_count": 3, "history_message_count": 0}


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


def answer(*steps, **reply):
    """A streamed reply: texts become tokens, everything else is a step."""
    return {"steps": [{"token": step} if isinstance(step, str) else step for step in steps] + [{"done": True}], **reply}


def body(value):
    return {"body": json.dumps(value)}


def card(title, subtitle, content):
    return {"title": title, "subtitle": subtitle, "content": content}


def edit(original, replacement):
    """A proposed change, as a model writes it."""
    return f"<<<<<<< SEARCH\n{original}\n=======\n{replacement}\n>>>>>>> REPLACE"


def session_key(path):
    """The name of the folder with the conversation about a file."""
    number = 5381
    for byte in os.path.realpath(path).encode():
        number = (number * 33 + byte) % 2**64
    return f"{number:016x}"


class AssistantTest(EndToEndTest):
    def setUp(self):
        super().setUp()
        self.folder = self.profile.folder("installed")
        self.place(EXECUTABLE, self.folder / "tessaline")
        (self.folder / "tessaline-server").symlink_to(SCRIPTED_SERVER)
        self.application = Application(self.screen, self.profile, self.folder / "tessaline")
        self.addCleanup(self.application.kill)
        self.record = self.profile.folder("record")
        self.data = self.profile.home / ".local/share/com.orlenth.tessaline"
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

    # --- the server

    def script(self, **script):
        path = self.profile.home / "script.json"
        path.write_text(json.dumps({"record": str(self.record), **script}))

    def replies(self, **by_path):
        """A script of replies only: chat, suggestions, concept, digest and health, each one reply or a list of them."""
        paths = {"chat": CHAT, "suggestions": SUGGESTIONS, "concept": CONCEPT, "digest": DIGEST, "health": HEALTH}
        self.script(replies={paths[name]: value if isinstance(value, list) else [value] for name, value in by_path.items()})

    def gate(self, name):
        """What holds a reply back until `open_gate` is called."""
        return {"until": str(self.profile.home / f"gate-{name}")}

    def pause_at(self, name):
        """The same as a step of an answer. Meanwhile there are empty tokens, so that what came before is shown: the program
        shows a growing answer some times in a second, when something comes."""
        return {"token": "", "every": 60, **self.gate(name)}

    def open_gate(self, name):
        (self.profile.home / f"gate-{name}").touch()

    def server(self):
        """How the server was started; waited for."""
        path = self.record / "process.json"
        wait_until(path.exists, "the server has been started", 20)
        return json.loads(path.read_text())

    def request_files(self, path):
        """The records of what came to this path, in the order in which it came."""
        return [file for file in sorted(self.record.glob("*.request")) if file.read_bytes().split(b" ", 2)[1].decode() == path]

    def requests(self, path):
        """The head as text and the body as bytes, of each of them."""
        parts = [file.read_bytes().partition(b"\r\n\r\n") for file in self.request_files(path)]
        return [(head.decode(), content) for head, _, content in parts]

    def expect_closed(self, path, number=1):
        """Waits until the program has closed the connection of a request, counted from 1, before its reply was complete."""
        file = self.request_files(path)[number - 1].with_suffix(".closed")
        wait_until(file.exists, "the server has been told that nobody listens", 20)

    def request(self, path, number=1):
        """The body of a request, counted from 1, as an object; waited for."""
        wait_until(lambda: len(self.requests(path)) >= number, f"request {number} has come to {path}", 20)
        return json.loads(self.requests(path)[number - 1][1])

    def wait_for_output(self, text, seconds=20):
        try:
            wait_until(lambda: text in self.application.output(), f"the console says “{text}”", seconds)
        except AssertionError:
            self.assertIn(text, self.application.output())

    def expect_nothing_left(self, process):
        """No child, and the port free, within two seconds."""
        wait_until(lambda: not is_alive(process), "the server has gone", 2)
        wait_until(is_port_free, "the port is free", 2)

    # --- the program with its server

    def start_ready(self):
        """Starts and waits until questions can be asked."""
        ready = self.application.output().count(READY)
        self.start()
        wait_until(lambda: self.application.output().count(READY) > ready, "the server is ready", 30)
        self.screen.place_window(self.application.window(), 0, 0, *self.screen_size)
        wait_until(lambda: self.find("Tessaline", "frame").area == (0, 0, *self.screen_size), "the window fills the screen", 5)
        self.input()

    def end_quietly(self, *lines):
        """Quits, and expects nothing on the console but what a server that starts and stops brings, and these lines."""
        self.assertEqual(self.application.quit(), 0)
        expected = [*(NO_UPDATER + STARTED + READY + STOPPED).splitlines() * self.starts, *lines]
        # The first document asks for suggestions before the server listens, or after: that is not told from one another.
        said = [line for line in self.application.output().splitlines() if not line.startswith("Failed to fetch suggestions: ")]
        self.assertEqual(sorted(said), sorted(expected))
        self.assertEqual(self.application.errors(), "")

    # --- the conversation

    def input(self):
        """The field for questions, waited for until it takes one."""
        field = self.find("Chat Input", "text")
        wait_until(lambda: field.has_state("enabled"), "a question can be typed", 20)
        return field

    def ask(self, question):
        self.input().click()
        self.screen.type(question)
        self.screen.press("Return")

    def expect_status(self, text, seconds=20):
        """Waits until the line under the field says this."""
        return self.find(text, "status bar", seconds)

    @asked_again
    def messages(self):
        """What the column shows: (who, text) of each message."""
        found = []
        for node in self.find("Chat Messages").find_all("list item"):
            if node.name in ("You", "Tessaline"):
                found.append((node.name, node.description))
        return found

    def expect_messages(self, *messages, seconds=20):
        try:
            wait_until(lambda: self.messages() == list(messages), "these messages are shown", seconds, interval=0.05)
        except AssertionError:
            self.assertEqual(self.messages(), list(messages))

    @asked_again
    def answer_text(self):
        """The formatted text of the last answer."""
        answers = self.application.find_all("document", "Answer")
        return answers[-1].text if answers else None

    def cards(self):
        """The proposed changes, from top to bottom."""
        return self.application.find_all("panel", "Proposed Change")

    @asked_again
    def card_states(self):
        return [card.description for card in self.cards()]

    def expect_card_states(self, *states, seconds=20):
        try:
            wait_until(lambda: self.card_states() == list(states), "the cards are so", seconds, interval=0.05)
        except AssertionError:
            self.assertEqual(self.card_states(), list(states))

    def kept(self, path, name):
        """What is on the disk of the conversation about a file; None for nothing."""
        file = self.data / "sessions" / session_key(path) / name
        try:
            return json.loads(file.read_text())
        except (FileNotFoundError, json.JSONDecodeError):  # just being written
            return None

    def kept_messages(self, path):
        return [(message["role"], message["content"]) for message in self.kept(path, "chat_history.json") or []]

    def expect_kept_messages(self, path, *messages, seconds=20):
        try:
            wait_until(lambda: self.kept_messages(path) == list(messages), "the conversation is on the disk", seconds)
        except AssertionError:
            self.assertEqual(self.kept_messages(path), list(messages))

    def expect_kept_items(self, path, *items, seconds=20):
        """Waits until just these items are attached to a file, on the disk."""
        try:
            wait_until(lambda: self.kept(path, "contexts.json") == list(items), "the items are on the disk", seconds)
        except AssertionError:
            self.assertEqual(self.kept(path, "contexts.json"), list(items))
