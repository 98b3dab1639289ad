#!/usr/bin/python3
"""Kills the program at random moments while text is typed and saved, and looks at what is on the disk each time.

The file has to be one of the texts that were typed, whole. What is missing may have been typed within the autosave delay
before the kill, and one write; every pause longer than that saves all before it. And no file may be left that grows in number.

    tests/e2e/crash_test.py [--kills N] [--seed N]      TESSALINE_KILLS has the same meaning as --kills
"""

import argparse
import os
import random
import string
import sys
import time

from e2e import AUTOSAVE_DELAY, EXECUTABLE, MARKDOWN  # first: it finds the package of the next line

from desktop import TIME_SCALE, Application, Profile, Screen, wait_until

LARGE = 2_000_000  # bytes; its writing takes long enough to be hit often
# From the end of the delay to the text on the disk: one write, and what the system takes to get to it.
ONE_WRITE = {"small": 0.15 * TIME_SCALE, "large": 0.4 * TIME_SCALE}


class Broken(AssertionError):
    pass


def keys_of(pattern, rng):
    """[(seconds after the first, letter)] of what is typed before a kill, and when the kill comes."""
    def burst(begin):
        at, keys = begin, []
        for _ in range(rng.randint(2, 10)):
            keys.append((at, rng.choice(string.ascii_lowercase)))
            at += rng.uniform(0.005, 0.06)
        return keys

    keys = burst(0.0)
    if pattern == "any moment":
        return keys, rng.uniform(0, keys[-1][0] + 0.5)
    if pattern == "while it is written":
        return keys, keys[-1][0] + AUTOSAVE_DELAY + rng.uniform(-0.005, 0.04)
    while keys[-1][0] < 0.6:  # bursts with rests
        keys += burst(keys[-1][0] + rng.uniform(0.25, 0.5))
    return keys, rng.uniform(0.3, keys[-1][0] + 0.4)


class Document:
    """One file, and what it may hold."""

    def __init__(self, path, data):
        self.path = path
        self.data = data  # what it is known to hold before a round
        path.write_bytes(data)

    def check(self, letters, must_have):
        """Expects the old text and at least `must_have` of the letters typed after it; that is the old text of the next
        round. Returns how many letters were found."""
        found = self.path.read_bytes()
        count = len(found) - len(self.data)
        if not found:
            raise Broken(f"{self.path.name} is empty.")
        if not 0 <= count <= len(letters) or found != self.data + letters[:count]:
            kept = self.path.with_suffix(".broken")
            kept.write_bytes(found)
            raise Broken(f"{self.path.name} holds {len(found)} bytes that were never its text (kept in {kept}); before there were "
                         f"{len(self.data)}, and {letters!r} was typed.")
        if count < must_have:
            raise Broken(f"{self.path.name} lacks {letters[count:must_have]!r} of {letters!r}, which rested long enough.")
        self.data = found
        return count


def round_of(application, document, size, pattern, rng):
    """One start, some typing, one kill. Returns the seconds of typing that were lost, the letters that were found, and the
    seconds since the file was written last."""
    screen = application.screen
    application.start()
    area = application.find("text", "Markdown Source", 20)
    wait_until(lambda: area.length == len(document.data), "the document is shown", 20)
    wait_until(lambda: area.has_state("focused"), "the editor has the keyboard", 20)
    screen.press("Ctrl+End")

    plan, kill_at = keys_of(pattern, rng)
    typed, begin = [], time.monotonic()
    for at, letter in plan:
        if at >= kill_at:
            break
        time.sleep(max(0.0, begin + at - time.monotonic()))
        screen.press(letter)
        typed.append((time.monotonic(), letter))
    time.sleep(max(0.0, begin + kill_at - time.monotonic()))
    if not application.is_running:
        raise Broken(f"The program ended by itself with {application.process.returncode}:\n{application.errors()}")
    killed, wall = time.monotonic(), time.time()
    application.kill()

    must_have = 0
    times = [moment for moment, _ in typed] + [killed]
    for number in range(len(typed)):
        if times[number + 1] - times[number] > AUTOSAVE_DELAY + ONE_WRITE[size]:
            must_have = number + 1
    letters = "".join(letter for _, letter in typed).encode()
    count = document.check(letters, must_have)
    lost = killed - typed[count][0] if count < len(typed) else 0.0
    return lost, count, wall - document.path.stat().st_mtime


def strangers(folder, documents):
    own = {document.path for document in documents}
    return sorted(path for path in folder.iterdir() if path not in own)


def run(kills, seed):
    rng = random.Random(seed)
    print(f"{kills} kills of {EXECUTABLE}, seed {seed}", flush=True)
    with Screen() as screen, Profile() as profile:
        folder = profile.folder("texts")
        documents = {
            "small": Document(folder / "small.md", b"begin\n"),
            "large": Document(folder / "large.md", (b"All work and no play. " * 4 + b"\n") * (LARGE // 89)),
        }
        application = Application(screen, profile, EXECUTABLE)
        lost, ages, letters, begin = [], [], 0, time.monotonic()
        try:
            for number in range(kills):
                size = "large" if number % 4 == 3 else "small"
                pattern = rng.choice(["any moment", "while it is written", "while it is written", "bursts with rests"])
                path = str(documents[size].path)
                profile.store(lastProjectFolderURLs=[], lastOpenFileURLs=[path], lastActiveFileURL=path, editorViewModeV2=MARKDOWN)
                try:
                    seconds, count, age = round_of(application, documents[size], size, pattern, rng)
                except AssertionError as failure:
                    raise Broken(f"Kill {number + 1} ({size} file, {pattern}, seed {seed}): {failure}") from None
                lost.append(seconds)
                ages.append(age)
                letters += count

            left = strangers(folder, documents.values())
            if len(left) > 1 + kills // 100:
                raise Broken(f"Files are left behind: {[path.name for path in left]}")
            left_beside_preferences = strangers(profile.preferences_file.parent, [])
            # After all that the program still starts, saves and ends in good order.
            application.start()
            application.find("text", "Markdown Source", 20)
            status = application.quit()
            if status != 0:
                raise Broken(f"After the last kill the program ended with {status}.")
        finally:
            application.kill()
        seconds = time.monotonic() - begin
    print(f"{kills} kills in {seconds:.0f} s ({seconds / kills:.2f} s each), {letters} letters kept; typing lost by "
          f"{sum(1 for value in lost if value)} kills, at most {max(lost) * 1000:.0f} ms of it; {sum(1 for age in ages if age < 0.02)} "
          "kills within 20 ms of a write.")
    print(f"Left beside the documents: {[path.name for path in left] or 'nothing'}; beside the preferences: "
          f"{[path.name for path in left_beside_preferences]}.")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--kills", type=int, default=int(os.environ.get("TESSALINE_KILLS", "30")))
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1_000_000))
    options = parser.parse_args()
    try:
        run(options.kills, options.seed)
    except AssertionError as failure:
        sys.exit(f"{failure}")


if __name__ == "__main__":
    main()
