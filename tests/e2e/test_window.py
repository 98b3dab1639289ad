#!/usr/bin/python3
"""The window among other windows: moved, resized and maximized without a frame, driven by keys alone, and at the log-out."""

import socket

from e2e import EndToEndTest, main  # first: it finds the package of the next line

from desktop import Application, SessionManager, wait_until

TITLE_ROW = 44
THRESHOLD = 12  # the way the pointer goes before a press becomes a move, at most


class Frame(EndToEndTest):
    screen_size = (1920, 1080)

    def setUp(self):
        super().setUp()
        self.open_files(self.write("a.md", b"text"))
        self.start()
        self.window = self.application.window()
        wait_until(lambda: self.area()[2:] == (1440, 900), "the window has its size", 5)
        self.text_area()

    def area(self):
        return self.screen.window_area(self.window)

    def expect_area(self, check, what):
        try:
            wait_until(lambda: check(*self.area()), what, 5)
        except AssertionError:
            self.fail(f"Not so: {what}: {self.area()}")

    def drag_and_expect(self, x, y, dx, dy, expected, what):
        """Drags from a place in the window; `expected` is where the window's edges are to be, in pixels at most apart."""
        left, top, _, _ = self.area()
        self.screen.drag(left + x, top + y, dx, dy)
        self.expect_area(lambda *area: all(abs(one - other) <= THRESHOLD for one, other in zip(area, expected)), what)

    def test_every_column_s_part_of_the_top_row_moves_the_window(self):
        for x in (240, 420, 1250):  # beside the menus, between the controls, beside the title
            left, top, width, height = self.area()
            self.drag_and_expect(x, TITLE_ROW - 6, 60, -24, (left + 60, top - 24, width, height), f"moved from {x}")

    def test_nothing_below_the_top_row_moves_it(self):
        before = self.area()
        for x in (240, 700, 1250):
            self.screen.drag(before[0] + x, before[1] + TITLE_ROW + 300, 60, 40)
        self.pause(0.3)
        self.assertEqual(self.area(), before)

    def test_edges_and_corners_resize(self):
        left, top, width, height = self.area()
        self.drag_and_expect(width - 2, 400, 80, 0, (left, top, width + 80, height), "wider on the right")
        left, top, width, height = self.area()
        self.drag_and_expect(2, 400, -60, 0, (left - 60, top, width + 60, height), "wider on the left")
        left, top, width, height = self.area()
        self.drag_and_expect(400, 2, 0, -40, (left, top - 40, width, height + 40), "higher at the top")
        left, top, width, height = self.area()
        self.drag_and_expect(width - 3, height - 3, -70, -50, (left, top, width - 70, height - 50), "smaller at the corner")

    def test_it_is_never_made_smaller_than_its_columns_need(self):
        left, top, width, height = self.area()
        self.screen.drag(left + width - 3, top + height - 3, -1200, -800)
        self.expect_area(lambda _x, _y, w, h: (w, h) == (1100, 600), "as small as it gets")

    def test_a_double_click_or_the_button_maximizes_and_restores(self):
        before = self.area()
        for way in ("double click", "button"):
            for expected in ((0, 0, 1920, 1080), before):
                left, top, _, _ = self.area()
                if way == "double click":
                    self.screen.click(left + 240, top + 20, times=2)
                else:
                    name = "Maximize" if expected != before else "Restore"
                    self.choose(name, "push button")
                self.expect_area(lambda *area: area == expected, f"{expected} by {way}")
                self.pause(0.5)  # or the next click would be the third of a row

    def test_minimized_it_comes_back_with_its_text(self):
        self.choose("Minimize", "push button")
        wait_until(lambda: self.screen.active_window() != self.window.id, "it is gone", 5)

        second = Application(self.screen, self.profile, self.application.command[0])
        second.start()

        self.assertEqual(second.wait_for_end(), 0)
        wait_until(lambda: self.screen.active_window() == self.window.id, "it is back", 5)
        self.expect_text("text")
        self.put_caret_at_end()
        self.screen.type("!")
        self.expect_text("text!")
        self.end()


class Keyboard(EndToEndTest):
    def setUp(self):
        super().setUp()
        self.path = self.write("a.md", b"text")
        self.open_files(self.path)

    def test_the_number_pad_changes_the_text_size_and_types_nothing(self):
        self.start()
        self.put_caret_at_end()

        self.screen.press("Ctrl+KP_Add")
        self.expect_stored("editorFontSize", 18)
        self.screen.press("Ctrl+KP_Subtract")
        self.expect_stored("editorFontSize", 17)

        self.expect_text("text")
        self.end()

    def test_a_menu_opens_by_its_letter_and_closes_without_a_trace(self):
        self.start()
        self.put_caret_at_end()

        self.screen.press("Alt+f")
        wait_until(lambda: self.screen.open_menus(), "the menu is open", 5)
        self.screen.press("Escape")
        wait_until(lambda: not self.screen.open_menus(), "the menu is closed", 5)
        self.screen.press("Escape")
        self.screen.type("!")

        self.expect_text("text!")
        self.end()

    def test_the_columns_are_reached_and_left_by_keys(self):
        self.start()
        self.put_caret_at_end()

        self.screen.press("Shift+F6")
        wait_until(lambda: not self.text_area().has_state("focused"), "the sidebar has the keyboard", 5)
        self.screen.press("F6")
        wait_until(lambda: self.text_area().has_state("focused"), "the editor has it back", 5)
        self.screen.type("!")

        self.expect_text("text!")
        self.end()

    def test_the_dialogs_open_from_the_menus_and_escape_closes_them(self):
        self.start()
        for menu, item, title in (("File", "Settings…", "Settings"), ("Help", "Keyboard Shortcuts", "Keyboard Shortcuts"),
                                  ("Help", "About Tessaline", "About Tessaline")):
            self.choose_menu_item(menu, item)
            self.find(title, "dialog")
            self.screen.press("Escape")
            self.expect_gone(title, "dialog")
        self.end()


class LogOut(EndToEndTest):
    def test_the_last_key_is_on_the_disk_before_the_desktop_is_told_that_it_may_go_on(self):
        path = self.write("a.md", b"")
        self.open_files(path)
        with SessionManager() as session:
            environment = self.application.environment
            self.application.environment = lambda: {**environment(), **session.environment}
            self.start()
            session.wait_for_client()
            self.put_caret_at_end()
            self.screen.type("last")
            self.expect_text("last")

            session.ask_to_save()

            self.assertEqual(path.read_bytes(), b"last")
            self.assertTrue(self.application.is_running)
            self.end(session.end)

    def test_a_log_out_that_is_called_off_leaves_the_program_at_work(self):
        path = self.write("a.md", b"")
        self.open_files(path)
        with SessionManager() as session:
            environment = self.application.environment
            self.application.environment = lambda: {**environment(), **session.environment}
            self.start()
            session.wait_for_client()
            self.put_caret_at_end()
            session.ask_to_save()

            session.call_off()
            self.screen.type("more")

            self.expect_on_disk(path, b"more")
            self.end()


class DisplayLoss(EndToEndTest):
    def test_the_last_key_is_on_the_disk_when_the_display_breaks_down(self):
        path = self.write("a.md", b"")
        self.open_files(path)
        self.start()
        self.put_caret_at_end()
        self.screen.type("last")
        self.expect_text("last")

        self.screen.break_down()

        self.assertEqual(self.application.wait_for_end(), 1)
        self.assertEqual(path.read_bytes(), b"last")
        self.assertIn("The X11 connection broke", self.application.errors())


class SilentBus(EndToEndTest):
    def test_a_session_bus_that_says_nothing_keeps_nobody_from_writing(self):
        path = self.write("a.md", b"")
        self.open_files(path)
        with socket.socket(socket.AF_UNIX) as bus:
            address = self.profile.home / "bus"
            bus.bind(str(address))
            bus.listen(16)  # the system takes connections for it, and nobody answers them
            environment = self.application.environment
            self.application.environment = lambda: {**environment(), "DBUS_SESSION_BUS_ADDRESS": f"unix:path={address}"}
            self.start()
            self.application.wait_until_drawn()
            self.screen.type("written")

            self.expect_on_disk(path, b"written", 10)
            self.end()


if __name__ == "__main__":
    main()
