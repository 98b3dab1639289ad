#!/usr/bin/python3
"""From launch to a saved edit: the real program, real keys and clicks, real files."""

import signal
import subprocess
import time

from e2e import AUTOSAVE_DELAY, MARKDOWN, EndToEndTest, main  # first: it finds the package of the next line

from desktop import Application, Profile, SettingsPortal, portal, wait_until

WHITE = (255, 255, 255)
DARK_GROUND = (0x1F, 0x1F, 0x24)


class Projects(EndToEndTest):
    def test_the_first_start_is_empty_and_says_so(self):
        self.start()

        for text in ("No Open Files", "No projects added.", "Select a file from the sidebar or start a new document."):
            self.find(text)
        self.end()
        self.assertNotIn("lastActiveFileURL", self.profile.preferences)

    def test_a_file_of_a_stored_project_opens_from_the_tree(self):
        tides = self.write("notes/chapters/tides.md", b"# Tides\n")
        self.write("notes/picture.png", b"\x89PNG\0")
        self.open_files(projects=[self.profile.home / "notes"])
        self.start()

        self.open_from_tree("notes", "chapters", "tides.md")

        self.expect_text("# Tides\n")
        self.expect_stored("lastOpenFileURLs", [str(tides)])
        self.expect_stored("lastActiveFileURL", str(tides))
        self.assertFalse(self.is_there("picture.png"))
        self.assertTrue(self.find("Open Files").find_all(None, "tides.md"))
        self.end()

    def test_a_project_is_added_through_the_folder_panel_and_removed_by_its_menu(self):
        notes = self.write("notes/a.md", b"a\n").parent
        self.start()

        self.choose("Add Project Folder", "push button")
        self.choose_in_panel("Add Project Folder", notes)
        self.in_tree("notes")
        self.expect_stored("lastProjectFolderURLs", [str(notes)])

        self.in_tree("notes").click(button=3)
        wait_until(self.screen.open_menus, "the menu of the project is open", 5)
        self.screen.press("Down")  # to its one item, Remove Project
        self.screen.press("Return")
        self.find("No projects added.")
        self.expect_stored("lastProjectFolderURLs", [])
        self.end()

    def test_a_folder_that_is_no_project_offers_no_removal(self):
        self.write("notes/chapters/a.md", b"a\n")
        self.open_files(projects=[self.profile.home / "notes"])
        self.start()
        self.open_from_tree("notes")

        self.in_tree("chapters").click(button=3)

        self.pause(0.3)
        self.assertEqual(self.screen.open_menus(), [])
        self.end()

    def test_a_new_file_on_the_disk_appears_after_a_refresh_and_folders_stay_open(self):
        self.write("notes/chapters/a.md", b"a\n")
        self.open_files(projects=[self.profile.home / "notes"])
        self.start()
        self.open_from_tree("notes", "chapters")
        self.in_tree("a.md")

        self.write("notes/chapters/b.md", b"b\n")
        self.choose("Refresh Projects", "push button")

        self.in_tree("b.md")
        self.in_tree("a.md")
        self.end()


class Editing(EndToEndTest):
    def test_typed_text_is_on_the_disk_within_a_second_and_nothing_else_has_changed(self):
        before = "\ufeffone\r\ntwo\u2028three\u00a0four\rfive".encode()
        path = self.write("a.md", before)
        self.open_files(path)
        self.start()
        self.put_caret_at_end()

        self.screen.type(" and six")

        self.expect_on_disk(path, before + b" and six")
        self.end()
        self.assertEqual(path.read_bytes(), before + b" and six")

    def test_a_file_is_written_once_the_keys_rest_and_not_before(self):
        path = self.write("a.md", b"")
        self.open_files(path)
        self.start()
        self.put_caret_at_end()

        self.screen.type("steady", interval=AUTOSAVE_DELAY / 3)

        self.assertEqual(path.read_bytes(), b"")
        self.expect_on_disk(path, b"steady")
        self.end()

    def test_undo_redo_cut_and_paste_reach_the_disk(self):
        path = self.write("a.md", b"")
        self.open_files(path)
        self.start()
        self.put_caret_at_end()

        self.screen.type("word")
        self.screen.press("Ctrl+a")
        self.screen.press("Ctrl+x")
        self.expect_on_disk(path, b"")
        self.screen.press("Ctrl+v")
        self.screen.press("Ctrl+v")
        self.expect_on_disk(path, b"wordword")
        self.screen.press("Ctrl+z")
        self.expect_on_disk(path, b"word")
        self.screen.press("Ctrl+Shift+z")
        self.expect_on_disk(path, b"wordword")
        self.end()

    def test_closing_a_file_saves_it_and_shows_the_last_one_of_the_list(self):
        one, two, three = (self.write(f"{name}.md", name.encode()) for name in ("one", "two", "three"))
        self.open_files(one, two, three)
        self.start()
        self.expect_text("one")
        self.put_caret_at_end()
        self.screen.type("!")

        self.close_in_list("one.md")

        self.expect_text("three")
        self.expect_on_disk(one, b"one!")
        self.expect_stored("lastOpenFileURLs", [str(two), str(three)])
        self.expect_stored("lastActiveFileURL", str(three))
        self.close_in_list("three.md")
        self.close_in_list("two.md")
        self.find("No Open Files")
        self.find("Select a file from the sidebar or start a new document.")
        self.expect_stored("lastActiveFileURL", None)
        self.end()

    def close_in_list(self, name):
        """Points at the row, which shows its close button, and clicks that."""
        files = self.find("Open Files")
        x, y, width, height = files.find(None, name).area
        self.screen.move_to(x + width // 3, y + height // 2)

        def button():
            for candidate in files.find_all("push button"):
                if y <= candidate.area[1] < y + height:
                    return candidate
            return None
        wait_until(button, f"{name} shows its close button", 5).click()
        wait_until(lambda: not files.find_all(None, name), f"{name} is closed", 5)

    def test_a_change_of_file_saves_the_one_before_without_waiting(self):
        one, two = self.write("one.md", b"1"), self.write("two.md", b"2")
        self.open_files(one, two)
        self.start()
        self.put_caret_at_end()

        self.screen.type("x")
        self.find("Open Files").find(None, "two.md").click()

        self.expect_on_disk(one, b"1x")
        self.expect_text("2")
        self.end()

    def test_a_new_document_is_created_empty_and_opened(self):
        project = self.profile.folder("notes")
        self.open_files(projects=[project])
        self.start()

        self.screen.press("Ctrl+n")
        self.choose_in_panel("New Document", project / "fresh.md")

        fresh = project / "fresh.md"
        wait_until(fresh.exists, "the file is there", 5)
        self.expect_stored("lastActiveFileURL", str(fresh))
        self.expect_text("")
        self.open_from_tree("notes")
        self.in_tree("fresh.md")
        self.put_caret_at_end()
        self.screen.type("first words")
        self.expect_on_disk(fresh, b"first words")
        self.end()

    def test_a_new_document_that_is_given_up_changes_nothing(self):
        self.open_files(projects=[self.profile.folder("notes")])
        self.start()

        self.choose_menu_item("File", "New Document…")
        self.find("New Document", "dialog")
        self.screen.press("Escape")

        self.expect_gone("New Document", "dialog")
        self.assertEqual(list((self.profile.home / "notes").iterdir()), [])
        self.find("No Open Files")
        self.end()

    def test_find_and_replace_works_by_keyboard_alone(self):
        path = self.write("a.md", b"tide and tide and Tide")
        self.open_files(path)
        self.start()
        self.put_caret_at_end()

        self.screen.press("Ctrl+h")
        self.find("Find", "text")
        self.screen.type("tide")
        self.tab_to("Replace with")
        self.screen.type("ebb")
        self.tab_to("Replace All")
        self.screen.press("space")

        self.expect_on_disk(path, b"ebb and ebb and ebb")
        self.screen.press("Escape")
        self.screen.type("!")
        self.expect_text(path.read_text() + "!")
        self.end()

    def tab_to(self, name):
        """Presses Tab until the control of this name has the keyboard."""
        control = self.find(name)
        for _ in range(15):
            if control.has_state("focused"):
                return
            self.screen.press("Tab")
            self.pause(0.05)
        self.fail(f"Tab does not come to “{name}”.")


class Views(EndToEndTest):
    def setUp(self):
        super().setUp()
        self.path = self.write("a.md", b"# A\n")
        self.open_files(self.path, appTheme="Light")

    def test_the_appearance_is_switched_live_and_stored(self):
        self.start()
        area = self.text_area()
        self.assertEqual(self.color_at(area, 4, 4), WHITE)

        self.choose_segment("Dark")
        wait_until(lambda: self.color_at(area, 4, 4) == DARK_GROUND, "the editor is dark", 5)
        self.expect_stored("appTheme", "Dark")
        self.choose_segment("Light")
        wait_until(lambda: self.color_at(area, 4, 4) == WHITE, "the editor is light", 5)
        self.expect_stored("appTheme", "Light")
        self.choose_segment("System")
        self.expect_stored("appTheme", "System")
        self.end()

    def test_the_appearance_of_the_desktop_is_followed_live_and_only_if_wanted(self):
        self.open_files(self.path, appTheme="System")
        with SettingsPortal(self.screen, portal.DARK) as desktop:
            self.start()
            area = self.text_area()
            wait_until(lambda: self.color_at(area, 4, 4) == DARK_GROUND, "the editor is dark, as the desktop", 5)

            desktop.set_color_scheme(portal.LIGHT)
            wait_until(lambda: self.color_at(area, 4, 4) == WHITE, "the editor is light, as the desktop", 5)
            self.choose_segment("Light")
            self.expect_stored("appTheme", "Light")
            desktop.set_color_scheme(portal.DARK)
            self.pause(0.3)
            self.assertEqual(self.color_at(area, 4, 4), WHITE)
            self.choose_segment("System")
            wait_until(lambda: self.color_at(area, 4, 4) == DARK_GROUND, "the editor is dark again", 5)
            self.end()

    def test_the_view_mode_is_switched_and_stored_and_says_which_is_selected(self):
        self.start()
        self.text_area()

        for label, stored in (("Split", "split"), ("Editor", "editor"), ("Markdown", MARKDOWN)):
            self.choose_segment(label)
            self.expect_stored("editorViewModeV2", stored)
            wait_until(lambda: self.segment(label).has_state("checked"), f"{label} is selected", 5)
        self.expect_text("# A\n")
        self.end()

    def test_a_plain_text_file_has_one_mode_and_leaves_the_stored_one_alone(self):
        plain = self.write("b.txt", b"plain")
        self.open_files(plain, self.path, editorViewModeV2="split")
        self.start()

        self.assertTrue(self.segment("Plain Text").has_state("checked"))
        self.assertFalse(self.is_there("Split"))
        self.expect_text("plain")
        self.end()
        self.assertEqual(self.profile.preferences["editorViewModeV2"], "split")

    def test_the_font_size_changes_by_button_menu_and_keys_within_its_limits(self):
        self.open_files(self.path, editorFontSize=38.5)
        self.start()
        self.find("38")

        self.choose("Increase Font Size (Cmd +)", "push button")
        self.expect_stored("editorFontSize", 39.5)
        self.find("39")
        self.choose_menu_item("Format", "Increase Font Size")
        self.expect_stored("editorFontSize", 40.5)
        self.choose_menu_item("Format", "Increase Font Size (Alternative)")
        self.choose("Increase Font Size (Cmd +)", "push button")
        self.pause(0.2)
        self.assertEqual(self.profile.preferences["editorFontSize"], 40.5)
        self.choose_menu_item("Format", "Decrease Font Size")
        self.expect_stored("editorFontSize", 39.5)
        self.choose("Decrease Font Size (Cmd -)", "push button")
        self.expect_stored("editorFontSize", 38.5)
        for key, size in (("Ctrl+=", 39.5), ("Ctrl+-", 38.5), ("Ctrl++", 39.5)):
            self.screen.press(key)
            self.expect_stored("editorFontSize", size)
        self.end()

    def test_a_larger_font_is_drawn_larger_at_once(self):
        self.start()
        area = self.text_area()

        def ink():
            x, y, _, _ = area.area
            picture = self.screen.picture((x + 20, y + 20, 200, 80))
            return sum(1 for at in range(0, len(picture.pixels), 4) if picture.pixels[at] < 128)

        before = ink()
        for _ in range(10):
            self.screen.press("Ctrl+=")
        wait_until(lambda: ink() > before * 1.5, "the letters are larger", 5)
        self.end()


class StartAndStop(EndToEndTest):
    def test_a_key_pressed_just_before_sigterm_is_on_the_disk(self):
        path = self.write("a.md", b"")
        self.open_files(path)
        self.start()
        self.put_caret_at_end()
        text = ""

        for round_number in range(8):
            self.screen.type("k")
            text += "k"
            time.sleep(0.005 * round_number)
            self.application.process.terminate()
            self.assertEqual(self.application.wait_for_end(), 0)
            self.assertEqual(path.read_bytes(), text.encode())
            self.start()
            self.put_caret_at_end()
        self.end()

    def test_every_way_to_quit_saves_the_last_key(self):
        path = self.write("a.md", b"")
        self.open_files(path)
        ways = {
            "SIGINT": lambda: self.application.process.send_signal(signal.SIGINT),
            "SIGHUP": lambda: self.application.process.send_signal(signal.SIGHUP),
            "the menu": lambda: self.choose_menu_item("File", "Quit"),
            "its key": lambda: self.screen.press("Ctrl+q"),
            "the button in the window": lambda: self.choose("Close", "push button"),
            "the window manager": lambda: self.screen.close_window(self.application.window()),
        }
        text = ""
        for name, way in ways.items():
            with self.subTest(name):
                self.start()
                self.put_caret_at_end()
                self.screen.type("q")
                text += "q"
                self.end(way)
                self.assertEqual(path.read_bytes(), text.encode())

    def test_a_second_start_brings_back_projects_files_and_appearance(self):
        one, two = self.write("notes/one.md", b"1"), self.write("notes/two.md", b"2")
        self.open_files(projects=[self.profile.home / "notes"], appTheme="Light")
        self.start()
        self.open_from_tree("notes", "one.md")
        self.open_from_tree("two.md")
        self.expect_text("2")
        self.choose_segment("Dark")
        self.open_from_tree("one.md")
        self.expect_text("1")

        self.restart()

        self.expect_text("1")
        self.assertEqual(self.color_at(self.text_area(), 4, 4), DARK_GROUND)
        files = self.find("Open Files")
        self.assertLess(files.find(None, "one.md").area[1], files.find(None, "two.md").area[1])
        self.in_tree("notes")
        self.assertFalse(self.is_there("two.md", "tree item"), "folders are closed at the start")
        self.end()
        self.assertEqual(self.profile.preferences["lastOpenFileURLs"], [str(one), str(two)])

    def test_a_second_process_raises_the_first_and_ends_well(self):
        self.start()
        first = self.application.window()
        wait_until(lambda: self.screen.active_window() == first.id, "the window is active", 5)
        other = subprocess.Popen(["xmessage", "-geometry", "600x400", "over it"], env=self.screen.environment)
        self.addCleanup(other.wait)
        self.addCleanup(other.kill)
        wait_until(lambda: self.screen.active_window() not in (0, first.id), "another window is in front", 5)

        second = subprocess.run(self.application.command, env=self.application.environment(), stdin=subprocess.DEVNULL,
                                capture_output=True, text=True, timeout=30)

        self.assertEqual((second.returncode, second.stdout), (0, ""))
        wait_until(lambda: self.screen.active_window() == first.id, "the first window is in front again", 5)
        self.assertTrue(self.application.is_running)
        self.assertEqual(len(self.application.windows()), 1)
        self.end()

    def test_a_crash_keeps_nobody_out(self):
        path = self.write("a.md", b"saved")
        self.open_files(path)
        self.start()
        self.expect_text("saved")

        self.application.kill()

        self.start()
        self.expect_text("saved")
        self.end()

    def test_two_profiles_run_side_by_side(self):
        self.start()
        with Profile() as profile:
            other = Application(self.screen, profile, self.application.command[0])
            other.start()
            self.addCleanup(other.kill)
            other.window()
            self.assertTrue(self.application.is_running)
            self.assertEqual(other.quit(), 0)
        self.end()

    def test_help_and_version_answer_on_the_console_without_a_display(self):
        environment = {"PATH": "/usr/bin:/bin", **self.profile.environment}
        for option, word in (("--version", "tessaline"), ("--help", "Usage")):
            result = subprocess.run([self.application.command[0], option], env=environment, stdin=subprocess.DEVNULL,
                                    capture_output=True, text=True, timeout=30)
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertIn(word, result.stdout)
        self.assertFalse(self.profile.preferences_file.exists())


if __name__ == "__main__":
    main()
