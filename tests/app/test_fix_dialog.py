#!/usr/bin/env python3
"""The walk through findings on a terminal, key by key."""
import os
import unicodedata

import host
import terminal_session

TWIN = host.card("N:Finch;Oliver;;;", "FN:Oliver Finch", "TEL:1", "X-KEPT:yes")
ANN = host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", "TEL;TYPE=CELL:2", "X-KEPT:ann", "UID:ann")
ANN2 = host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", "TEL;TYPE=HOME:2", "TEL;TYPE=HOME:3", "UID:ann2")
NOBODY = host.card("N:;;;;", "TEL:7", "UID:nobody")
SPACE = host.card("N:Bell;Mary Jane;;;", "FN:Mary Jane Bell", "UID:bell")
SPACE2 = host.card("N:Cole;Sue Ann;;;", "FN:Sue Ann Cole", "UID:cole")
BAD = host.card("N:Dale;Tim;;;", "FN:Tim Dale", "TEL:ask Jo", "UID:tim")


def cells(line):
    return sum(0 if unicodedata.combining(char) else 2 if unicodedata.east_asian_width(char) in "WF" else 1
               for char in line)


class Dialog(host.HostTest):
    def book(self, *cards):
        return self.write("book.vcf", "".join(cards))

    def start(self, book, *words, **more):
        return terminal_session.Session(
            self, "fix", book, "--issues", "duplicate-names,exact-duplicates,blank-name,first-name-spacing,invalid-characters",
            *words, **more)

    def names(self, book):
        return [person["showName"] for person in self.run_host("show", "--json", book).json()["persons"]]

    def trash(self):
        return [person["id"] for person in self.run_host("trash", "list", "--json").json()["persons"]]

    def test_merge_one_delete_one_ignore_one_undo_and_save(self):
        book = self.book(ANN, ANN2, NOBODY, SPACE, SPACE2)
        before = book.read_bytes()
        session = self.start(book)
        screen = session.screen()
        for text in ("4 of 4 findings open", "Duplicate contacts (1 open)", "1 Ann Barrow", "2 Ann Barrow",
                     "1  Merge – The duplicate contacts will be merged", "i Ignore", "≠ Phone"):
            self.assertIn(text, screen)
        screen = session.press("1")
        self.assertIn("Done: Merge: Ann Barrow (2 contacts to the trash)", screen)
        self.assertIn("Blank name (1 open)", screen)
        screen = session.press("1")
        self.assertIn("Done: Delete the contact", screen)
        self.assertIn("Space in the first name (2 open)", screen)
        self.assertIn("Mary Jane Bell", screen)
        screen = session.press("i")
        self.assertIn("Sue Ann Cole", screen)
        screen = session.press("1")
        self.assertIn("Every finding is settled", screen)
        self.assertIn("4 steps not saved", screen)
        screen = session.press("u")
        self.assertIn("Taken back: Remove the space: Sue Ann Cole", screen)
        self.assertIn("Sue Ann", screen)
        self.assertEqual(before, book.read_bytes())
        self.assertEqual({}, {name: content for name, content in self.stored_files().items() if "trash" in name})
        self.assertIn("Saved.", session.press("w"))
        session.end("q")
        self.assertEqual(["Mary Jane Bell", "Sue Ann Cole", "Ann Barrow"], self.names(book))
        self.assertEqual(["ann", "ann2", "nobody"], self.trash())
        self.assertTrue(book.read_bytes().startswith((SPACE + SPACE2).encode()))
        self.assertIn(b"X-KEPT:ann", book.read_bytes())

    def test_what_is_taken_back_is_as_it_was(self):
        book = self.book(ANN, ANN2, TWIN, NOBODY, TWIN, SPACE, ANN2.replace("UID:ann2", "UID:ann3"))
        before = book.read_bytes()
        session = self.start(book)
        first = session.screen()
        screen, steps = first, 0
        while "Every finding is settled" not in screen:
            screen = session.press("1")
            steps += 1
        self.assertLess(3, steps)
        for _ in range(steps):
            screen = session.press("u")
        self.assertEqual(first.splitlines()[1:12], screen.splitlines()[1:12])
        self.assertIn("There is nothing to take back", session.press("u"))
        self.assertIn("There is nothing to save", session.press("w"))
        session.press("i")
        session.press("w")
        session.end("q")
        self.assertEqual(before, book.read_bytes())
        self.assertEqual([], self.trash())

    def test_nothing_is_written_without_save_and_quitting_asks(self):
        book = self.book(SPACE, SPACE2)
        for answer, names in (("n", ["Mary Jane Bell", "Sue Ann Cole"]), ("y", ["MaryJane Bell", "Sue Ann Cole"])):
            session = self.start(book)
            session.screen()
            session.press("1")
            self.assertIn("1 step is not saved", session.press("q", "go on "))
            self.assertIn("Sue Ann", session.press("x"))
            session.press("q", "go on ")
            session.end(answer)
            self.assertEqual(names, self.names(book))

    def test_ctrl_c_asks_too_and_then_leaves_without_saving(self):
        book = self.book(SPACE)
        session = self.start(book)
        session.screen()
        session.press("1")
        session.press("\x03", "go on ")
        session.end("\x03")
        self.assertEqual(["Mary Jane Bell"], self.names(book))

    def test_all_findings_of_an_issue_get_one_fix(self):
        book = self.book(SPACE, ANN, SPACE2, BAD)
        session = self.start(book, "--where", "e")
        self.assertIn("Invalid characters", session.screen())
        self.assertIn("Mary Jane", session.press("s"))
        self.assertIn("all 2 open findings", session.press("a", "ignore them) "))
        screen = session.press("1")
        self.assertIn("Done: Remove the space: 2 findings", screen)
        self.assertIn("1 finding was left for later", screen)
        self.assertIn("Invalid characters", session.press("b"))
        self.assertIn("Taken back", session.press("u"))
        session.press("a", "ignore them) ")
        session.press("1")
        session.press("q", "go on ")
        session.end("y")
        self.assertEqual(["MaryJane Bell", "Ann Barrow", "SueAnn Cole", "Tim Dale"], self.names(book))

    def editor(self, script):
        path = self.write("editor.sh", "#!/bin/sh\n" + script)
        path.chmod(0o755)
        return str(path)

    def test_a_contact_is_edited_as_a_card(self):
        book = self.book(BAD, ANN)
        editor = self.editor('sed -i "s/ask Jo/07700 900123/" "$1"\n')
        session = self.start(book, EDITOR=editor)
        session.screen()
        screen = session.press("e")
        self.assertIn("Done: Edit: Tim Dale", screen)
        self.assertIn("Every finding is settled", screen)
        session.press("u")
        self.assertIn("Done: Edit", session.press("e"))
        session.press("w")
        session.end("q")
        self.assertEqual(BAD.replace("ask Jo", "07700 900123").encode() + ANN.encode(), book.read_bytes())

    def test_an_edit_that_does_not_mend_leaves_the_finding(self):
        book = self.book(BAD)
        session = self.start(book, EDITOR=self.editor('sed -i "s/ask Jo/ask Ann/" "$1"\n'))
        session.screen()
        screen = session.press("e")
        self.assertIn("the finding is still there", screen)
        self.assertIn("ask Ann", screen)

    def test_what_comes_back_from_the_editor_is_checked(self):
        book = self.book(BAD)
        session = self.start(book, EDITOR=self.editor('sed -i "/END:VCARD/d" "$1"\n'))
        session.screen()
        screen = session.press("e", "[y/n] ")
        self.assertIn("Not edited: line ", screen)
        self.assertIn("ask Jo", session.press("n"))
        session.end("q")
        for script, told in (("false\n", "failed"), ("true\n", "nothing was changed")):
            session = self.start(book, EDITOR=self.editor(script))
            session.screen()
            self.assertIn(told, session.press("e"))
            session.end("q")
        self.assertEqual(BAD.encode(), book.read_bytes())
        self.assertEqual([], [name for name in os.listdir(self.folder) if name.startswith("krcontacts-")])

    def test_one_of_several_contacts_is_chosen_for_editing_and_all_can_be_seen_whole(self):
        book = self.book(ANN, ANN2)
        session = self.start(book, EDITOR=self.editor('sed -i "s/Barrow;Ann/Barrow;Anna/" "$1"\n'))
        session.screen()
        self.assertIn("Ann Barrow", session.press("v", "goes back. "))
        session.press("x")
        session.press("e", "(its number) ")
        self.assertIn("Done: Edit: Ann Barrow", session.press("2"))
        session.press("w")
        session.end("q")
        self.assertEqual(["Ann Barrow", "Anna Barrow"], self.names(book))

    def test_a_book_that_others_changed_is_not_overwritten(self):
        book = self.book(SPACE, NOBODY)
        session = self.start(book)
        session.screen()
        session.press("1")
        session.press("1")
        book.write_bytes((SPACE.replace("Bell", "Bell-Hope") + NOBODY.replace("TEL:7", "TEL:8")).encode())
        theirs = book.read_bytes()
        refused = session.press("w")
        self.assertIn("nothing is fixed: ", refused)
        self.assertIn("w tries to save again, q leaves without them.", refused.replace("\n", " "))
        self.assertEqual([], [line for line in refused.split("\n") if cells(line) > 80])
        session.press("q", "go on ")
        session.end("n")
        self.assertEqual(theirs, book.read_bytes())
        self.assertEqual([], self.trash())

    def test_a_finding_fits_one_screen_of_eighty_columns(self):
        many = "".join(host.card("N:Barrow;Ann;;;", f"TEL:{number}", *(f"TEL:{number}{each}" for each in range(30)),
                                 "NOTE:" + "long " * 60) for number in range(1, 6))
        book = self.book(many, host.card("N:王;小明;;;", "NOTE:" + "很长的文字" * 30), host.card("N:王;小明;;;"))
        session = self.start(book)
        screens = [session.screen(), session.press("n"), session.press("n"), session.press("s")]
        for screen in screens:
            lines = screen.split("\n")
            self.assertEqual([], [line for line in lines if cells(line) > 80])
            self.assertLessEqual(len(lines), 24)
        self.assertIn("of 5 contacts; n shows others", screens[0])
        self.assertIn("v shows all", screens[0])
        self.assertIn("4 Ann Barrow", screens[1])

    def remembered(self, book):
        return [entry["persons"] for entry in self.run_host("ignored", "list", book, "--json").json()["ignored"]]

    def test_settings_that_others_changed_meanwhile_stay(self):
        book = self.book(host.card("N:Moss;Ada;;Rabbi;", "FN:Ada Moss", "UID:moss"),
                         host.card("N:Reed;Tom;;Dean;", "FN:Tom Reed", "UID:reed"))
        walk = terminal_session.Session(self, "fix", book, "--issues", "unusual-title")
        self.assertIn("Ada Moss", walk.screen())
        walk.press("1")
        self.run_host("settings", "add", "prefixes", "Abbot")
        self.run_host("settings", "add", "suffixes", "KC")
        self.assertIn("Saved.", walk.press("w"))
        walk.end("q")
        settings = self.run_host("settings", "--json").json()
        self.assertEqual(["Abbot", "Rabbi"], settings["prefixes"][-2:])
        self.assertEqual("KC", settings["suffixes"][-1])

    def test_what_is_ignored_is_remembered_once_it_is_saved(self):
        book = self.book(SPACE, SPACE2, NOBODY)
        session = self.start(book, "--remember")
        session.screen()
        session.press("s")
        self.assertIn("to be remembered once it is saved", session.press("i"))
        self.assertIn("Taken back", session.press("u"))
        session.press("s")
        self.assertIn("to be remembered", session.press("i"))
        self.assertEqual([], self.remembered(book))
        self.assertIn("Saved; 1 ignored finding remembered.", session.press("w"))
        self.assertEqual(["Sue Ann Cole"], self.remembered(book))
        self.assertIn("There is nothing to save", session.press("w"))
        session.end("q")
        # Once more: the same one is nothing new, the others are, and quitting saves them too.
        session = self.start(book, "--remember")
        session.screen()
        session.press("s")
        session.press("a", "ignore them) ")
        session.press("i")
        session.press("q", "go on ")
        session.end("y")
        self.assertEqual(["Sue Ann Cole", "Mary Jane Bell"], self.remembered(book))
        self.run_host("undo")
        self.assertEqual(["Sue Ann Cole"], self.remembered(book))

    def test_without_remember_and_without_saving_nothing_is_remembered(self):
        book = self.book(SPACE, SPACE2)
        for words, answer in (((), "y"), (("--remember",), "n")):
            session = self.start(book, *words)
            session.screen()
            session.press("i")
            session.press("q", "go on ")
            session.end(answer)
            self.assertEqual([], self.remembered(book))

    def test_without_a_terminal_it_says_what_to_use_instead(self):
        book = self.book(SPACE)
        for words in ((), ("--dry-run",), ("--json",)):
            result = self.run_host("fix", book, *words, code=2)
            self.assertEqual(("", 1), (result.out, result.err.count("\n")))
            self.assertIn("--apply ISSUE=HANDLE", result.err)

    def test_a_book_without_findings_says_so(self):
        session = self.start(self.book(ANN))
        self.assertIn("Nothing to clean up", session.screen())
        for key in "1ieabnvusx":
            session.press(key)
        session.end("q")

    def test_the_end_of_the_input_saves_nothing(self):
        book = self.book(SPACE)
        result = self.run_host("fix", book, stdin=b"1", KRCONTACTS_TERMINAL="output", code=2)
        self.assertIn("--apply", result.err)
        result = self.run_host("fix", book, stdin=b"1", KRCONTACTS_TERMINAL="all")
        self.assertIn("nothing more is saved", result.err)
        self.assertEqual(["Mary Jane Bell"], self.names(book))


if __name__ == "__main__":
    host.main()
