#!/usr/bin/env python3
"""Undo: what a run changed goes back to how it was before, in files, folders, libraries, the trash and settings."""
import fcntl
import json
import os
import plistlib
import resource
import shutil
import sqlite3
import stat
import subprocess

import host
import schema

SCHEMA = json.loads((host.ROOT / "docs/undo.schema.json").read_text(encoding="utf-8"))

ANN = host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", "TEL:1", "X-KEPT:yes", "UID:ann")
BOB = host.card("N:;Bob;;;", "FN:Bob", "TEL:2", "UID:bob")
CIM = host.card("N:;Cim;;;", "FN:Cim", "UID:cim")
FRIENDS = host.card("N:Friends;;;;", "FN:Friends", "X-ADDRESSBOOKSERVER-KIND:group", "X-ADDRESSBOOKSERVER-MEMBER:ann",
                    "UID:friends")
NEW_ANN = ANN.replace("TEL:1", "TEL:11")


class Undo(host.HostTest):
    def setUp(self):
        super().setUp()

    def put(self, content, book, *words):
        return self.run_host("import", self.write("in.vcf", content), "--into", getattr(book, "name", book), "--existing", "update",
                             *words)

    def titles(self):
        return [run["title"] for run in self.run_host("undo", "--list", "--json").json()["runs"]]

    def records(self):
        return sorted(path.name for path in (self.home / "data/krcontacts/undo").iterdir())

    def trash(self):
        return self.home / "data/krcontacts/trashFile.data"

    def kept(self):
        """Everything in the home folder but what undo keeps itself; of libraries what they say."""
        files = {name: content for name, content in self.stored_files().items()
                 if "/undo/" not in name and ".sqlite" not in name and not name.endswith(".lock")}
        for path in self.home.rglob("*.sqlite"):
            with sqlite3.connect(path) as database:
                # A changed contact that is put back has a further revision, so that nobody takes it for the one it was.
                tables = {"book": "*", "contact": "id, book, uid, card", "person_group": "*", "membership": "*"}
                files[path.name] = [list(database.execute(f"SELECT {columns} FROM {table} ORDER BY 1, 2"))
                                    for table, columns in tables.items()]
        return files

    # Files

    def file_book(self, content=ANN + BOB):
        book = self.write("friends.vcf", content)
        os.chmod(book, 0o640)
        self.run_host("books", "add", book)
        return book

    def test_a_file_and_the_trash_come_back_byte_for_byte(self):
        book = self.file_book()
        self.put(CIM, book)
        self.put(BOB.replace("TEL:2", "TEL:22"), book)
        before, trash = book.read_bytes(), self.trash().read_bytes()
        self.put(NEW_ANN, book)
        self.assertNotEqual(before, book.read_bytes())
        self.assertNotEqual(trash, self.trash().read_bytes())
        self.run_host("undo")
        self.assertEqual(before, book.read_bytes())
        self.assertEqual(trash, self.trash().read_bytes())
        self.assertEqual(0o640, stat.S_IMODE(book.stat().st_mode))
        self.assertEqual(0o600, stat.S_IMODE(self.trash().stat().st_mode))

    def test_a_trash_that_was_made_is_gone_again(self):
        book = self.file_book()
        self.put(NEW_ANN, book)
        self.run_host("undo")
        self.assertFalse(self.trash().exists())
        self.run_host("undo")
        self.assertEqual(1, len(self.run_host("trash", "--json").json()["persons"]))

    def test_a_second_undo_does_the_run_again_and_a_third_undoes_that(self):
        book = self.file_book()
        before = book.read_bytes()
        self.put(NEW_ANN, book)
        after, trash = book.read_bytes(), self.trash().read_bytes()
        for _ in range(2):
            self.run_host("undo")
            self.assertEqual(before, book.read_bytes())
            self.assertTrue(self.run_host("undo", "--list", "--json").json()["runs"][0]["isUndo"])
            self.run_host("undo")
            self.assertEqual((after, trash), (book.read_bytes(), self.trash().read_bytes()))
            self.assertFalse(self.run_host("undo", "--list", "--json").json()["runs"][0]["isUndo"])

    def test_several_runs_are_undone_from_the_last_to_the_first(self):
        book = self.file_book()
        seen = [book.read_bytes()]
        for content in (CIM, NEW_ANN, BOB.replace("TEL:2", "TEL:22")):
            self.put(content, book)
            seen.append(book.read_bytes())
        runs = self.run_host("undo", "--list", "--json").json()["runs"]
        self.assertIn("has changed since", self.run_host("undo", runs[1]["number"].__str__(), code=2).err)
        for run, before in zip(runs, reversed(seen[:-1])):
            self.run_host("undo", str(run["number"]))
            self.assertEqual(before, book.read_bytes())

    def test_a_book_that_has_changed_since_is_refused_and_nothing_is_touched(self):
        book = self.file_book()
        self.put(NEW_ANN, book)
        changed = book.read_bytes().replace(b"FN:Bob", b"FN:Rob")
        book.write_bytes(changed)
        trash, records = self.trash().read_bytes(), self.records()
        err = self.run_host("undo", code=2).err
        self.assertIn("friends.vcf has changed since that run", err)
        self.assertEqual(1, err.count("\n"))
        self.assertEqual((changed, trash, records), (book.read_bytes(), self.trash().read_bytes(), self.records()))

    def test_a_trash_that_has_changed_since_is_refused_and_the_book_stays(self):
        book = self.file_book()
        self.put(NEW_ANN, book)
        last = self.run_host("undo", "--list", "--json").json()["runs"][0]
        self.run_host("trash", "clear", "--yes")
        after = book.read_bytes()
        self.assertIn("trashFile.data has changed", self.run_host("undo", str(last["number"]), code=2).err)
        self.assertEqual(after, book.read_bytes())
        self.run_host("undo")
        self.run_host("undo", str(last["number"]))
        self.assertEqual((ANN + BOB).encode(), book.read_bytes())

    def test_a_book_that_is_gone_is_refused(self):
        book = self.file_book()
        self.put(CIM, book)
        book.unlink()
        self.assertIn("friends.vcf has changed since", self.run_host("undo", code=2).err)

    def test_a_book_behind_a_link_stays_behind_it(self):
        real = self.write("elsewhere/real.vcf", ANN)
        link = self.folder / "link.vcf"
        link.symlink_to(real)
        self.run_host("books", "add", link)
        self.put(CIM, link)
        self.run_host("undo")
        self.assertTrue(link.is_symlink())
        self.assertEqual(ANN.encode(), real.read_bytes())

    def test_records_that_cannot_be_read_are_not_taken_for_none(self):
        book = self.file_book()
        self.put(CIM, book)
        folder = next(path for path in self.home.rglob("undo") if path.is_dir())
        folder.rename(folder.with_name("elsewhere"))
        folder.write_text("")
        for words in (["undo"], ["undo", "--list"]):
            said = " ".join(self.run_host(*words, code=2).err.split())
            self.assertIn(f"cannot read {folder}", said)

    def test_a_record_is_independent_of_what_others_write_into_the_book_later(self):
        book = self.file_book()
        before = book.read_bytes()
        self.put(CIM, book)
        after = book.read_bytes()
        with open(book, "r+b") as file:
            file.write(b"begin:vcard")
        with open(book, "r+b") as file:
            file.write(after[:11])
        self.run_host("undo")
        self.assertEqual(before, book.read_bytes())

    def test_a_book_with_a_further_name_comes_back_although_others_write_into_that_one(self):
        book = self.file_book()
        before = book.read_bytes()
        os.link(book, self.folder / "further.vcf")
        self.put(NEW_ANN, book)
        with open(self.folder / "further.vcf", "r+b") as file:
            file.write(b"something else")
        self.run_host("undo")
        self.assertEqual(before, book.read_bytes())

    def test_a_failed_run_puts_back_the_very_bytes_of_a_trash_in_another_form(self):
        book = self.large_book()
        self.put(BOB.replace("TEL:2", "TEL:22"), book)
        # As another program of the same library may write it.
        trash = plistlib.loads(self.trash().read_bytes())
        self.trash().write_bytes(plistlib.dumps(trash, fmt=plistlib.FMT_BINARY, sort_keys=True))
        self.check_a_failure_leaves_nothing(book)

    def test_deleted_duplicates_come_back_byte_for_byte(self):
        twin = host.card("N:Finch;Oliver;;;", "FN:Oliver Finch", "TEL:5")
        book = self.file_book(twin + ANN + twin + BOB + BOB.replace("UID:bob", "UID:rob") + twin)
        self.put(CIM, book)
        self.put(NEW_ANN, book)
        before, trash = book.read_bytes(), self.trash().read_bytes()
        scanned = self.run_host("scan", "--json", "--all-issues", book).json()["contexts"]
        self.run_host("fix", book, "--apply", "exact-duplicates=delete-duplicates")
        self.assertNotEqual(before, book.read_bytes())
        self.assertNotEqual(trash, self.trash().read_bytes())
        self.run_host("undo")
        self.assertEqual(before, book.read_bytes())
        self.assertEqual(trash, self.trash().read_bytes())
        self.assertEqual(scanned, self.run_host("scan", "--json", "--all-issues", book).json()["contexts"])

    def test_merged_contacts_and_a_list_that_grew_go_back(self):
        book = self.file_book(ANN + BOB.replace("N:;Bob;;;", "N:;Bob;;Herald;") + ANN.replace("UID:ann", "UID:a2"))
        self.run_host("settings", "add", "prefixes", "Earl")
        # The first look at the issues writes which there are.
        self.run_host("issues")
        before = book.read_bytes(), self.kept()
        self.run_host("fix", book, "--apply", "unusual-title=add-to-list", "--apply", "duplicate-names=merge")
        self.assertIn("Herald", self.run_host("settings", "show", "prefixes", "--json").json())
        self.assertNotEqual(before[0], book.read_bytes())
        self.run_host("undo")
        self.assertEqual(before, (book.read_bytes(), self.kept()))

    # Folders

    def test_the_files_of_a_folder_come_back_and_new_ones_go(self):
        folder = self.folder / "cards"
        for name, content in (("a.vcf", ANN), ("b.vcf", BOB)):
            self.write(f"cards/{name}", content)
        os.chmod(folder / "a.vcf", 0o604)
        self.run_host("books", "add", folder)
        before = {path.name: path.read_bytes() for path in folder.iterdir()}
        self.put(NEW_ANN + CIM, folder)
        after = {path.name: path.read_bytes() for path in folder.iterdir()}
        self.assertEqual(3, len(after))
        self.run_host("undo")
        self.assertEqual(before, {path.name: path.read_bytes() for path in folder.iterdir()})
        self.assertEqual(0o604, stat.S_IMODE((folder / "a.vcf").stat().st_mode))
        self.run_host("undo")
        self.assertEqual(after, {path.name: path.read_bytes() for path in folder.iterdir()})

    def test_what_happens_to_other_files_of_a_folder_is_no_matter(self):
        folder = self.folder / "cards"
        self.write("cards/a.vcf", ANN)
        other = self.write("cards/b.vcf", BOB)
        gone = self.write("cards/c.vcf", CIM)
        self.run_host("books", "add", folder)
        self.put(NEW_ANN, folder)
        other.write_text(BOB + "\r\n")
        gone.unlink()
        self.write("cards/new.vcf", CIM)
        theirs = {path.name: path.read_bytes() for path in folder.iterdir() if path.name != "a.vcf"}
        self.run_host("undo")
        self.assertEqual({"a.vcf": ANN.encode(), **theirs}, {path.name: path.read_bytes() for path in folder.iterdir()})

    def test_a_folder_in_which_a_file_of_the_run_has_changed_is_refused(self):
        folder = self.folder / "cards"
        self.write("cards/a.vcf", ANN)
        self.write("cards/b.vcf", BOB)
        self.run_host("books", "add", folder)
        self.put(NEW_ANN + BOB.replace("TEL:2", "TEL:22"), folder)
        for wrong in (ANN.replace("TEL:1", "TEL:111"), None):
            after = (folder / "a.vcf").read_bytes()
            (folder / "a.vcf").write_text(wrong) if wrong else (folder / "a.vcf").unlink()
            before = {path.name: path.read_bytes() for path in folder.iterdir()}
            self.assertIn("a.vcf has changed since", self.run_host("undo", code=2).err)
            self.assertEqual(before, {path.name: path.read_bytes() for path in folder.iterdir()})
            (folder / "a.vcf").write_bytes(after)
        self.run_host("undo")
        self.assertEqual(ANN.encode(), (folder / "a.vcf").read_bytes())

    # Two runs at once

    def fix_at_once(self, book, runs):
        """Starts one run for each choice of a first name, together; those that were done, in the order of their records."""
        started = [self.start_host("fix", book, "--apply", "exact-duplicates=delete-duplicates", "--where", f"{name}")
                   for name in runs]
        for process in started:
            out, err = process.communicate(timeout=host.TIMEOUT)
            self.assertIn(process.returncode, (0, 2), (out, err))
            if process.returncode == 2:
                self.assertRegex(err.decode(), "nothing is fixed: .*(changed|another program)")
                self.assertEqual(1, err.count(b"\n"))
        return [process.returncode for process in started]

    def twins(self):
        names = [f"Name{letter}" for letter in "abcdefgh"]
        return names, [host.card(f"N:;{name};;;", f"FN:{name}", "TEL:5") for name in names]

    def check_undone_one_by_one(self, read, before, book, names):
        for _ in range(3):
            done = self.fix_at_once(book, names[:4]).count(0)
            self.assertGreaterEqual(done, 1)
            for _ in range(done):
                newest = max(run["number"] for run in self.run_host("undo", "--list", "--json").json()["runs"]
                             if run["title"].startswith("fix") and not run["isUndo"])
                self.run_host("undo", str(newest))
            self.assertEqual(before, read())

    def test_runs_at_once_on_a_folder_are_each_undone(self):
        names, cards = self.twins()
        for i, card in enumerate(cards):
            for copy in "xy":
                self.write(f"cards/{i}{copy}.vcf", card.replace("VERSION:3.0", f"VERSION:3.0\r\nUID:{i}{copy}"))
        folder = self.folder / "cards"
        self.run_host("books", "add", folder)
        self.run_host("issues")

        def read():
            return {path.name: path.read_bytes() for path in folder.iterdir()}
        self.check_undone_one_by_one(read, read(), folder, names)
        self.assertEqual([], self.run_host("trash", "--json").json()["persons"])

    def test_runs_at_once_on_a_file_are_right_or_refused(self):
        names, cards = self.twins()
        book = self.file_book("".join(card + card for card in cards))
        self.run_host("issues")
        self.check_undone_one_by_one(book.read_bytes, book.read_bytes(), book, names)

    def test_runs_at_once_on_a_library_are_each_undone(self):
        names, cards = self.twins()
        self.run_host("books", "add", "--new", "Family")
        self.run_host("import", self.write("in.vcf", "".join(card + card for card in cards)), "--into", "Family",
                      "--existing", "both")
        self.run_host("issues")

        def read():
            return self.kept()["contacts.sqlite"]
        self.check_undone_one_by_one(read, read(), "Family", names)

    def test_of_two_undos_at_once_one_is_done_and_the_other_says_why_not(self):
        book = self.file_book()
        before = book.read_bytes()
        self.put(NEW_ANN, book)
        lock = self.home / "data/krcontacts/undo.lock"
        with open(lock) as turn:
            fcntl.flock(turn, fcntl.LOCK_EX)
            started = [self.start_host("undo") for _ in range(2)]
            # The one that comes later does not wait.
            first, _ = os.wait()
            fcntl.flock(turn, fcntl.LOCK_UN)
        later, sooner = sorted(started, key=lambda process: process.pid != first)
        err = later.stderr.read().decode()
        self.assertRegex(err, "nothing is undone of run .*: it goes on still, or another process undoes it right now")
        self.assertEqual((b"", 0), (sooner.communicate(timeout=host.TIMEOUT)[1], sooner.returncode))
        later.communicate()
        self.assertEqual(before, book.read_bytes())

    # Libraries

    def library(self):
        self.run_host("books", "add", "--new", "Family")
        self.put(ANN + BOB + FRIENDS, "Family")

    def test_a_library_gets_its_rows_back(self):
        self.library()
        before = self.kept()
        self.put(NEW_ANN + CIM + FRIENDS.replace("UID:friends", "UID:new").replace("Friends", "New"), "Family")
        after = self.kept()
        self.assertNotEqual(before, after)
        for _ in range(2):
            self.run_host("undo")
            self.assertEqual(before["contacts.sqlite"], self.kept()["contacts.sqlite"])
            self.run_host("undo")
            self.assertEqual(after, self.kept())

    def test_the_record_of_a_library_holds_only_what_changed(self):
        self.run_host("books", "add", "--new", "Family")
        many = "".join(host.card(f"N:;P{i};;;", f"NOTE:{'x' * 500}", f"UID:{i}") for i in range(400))
        self.put(many, "Family")
        one = host.card("N:;P7;;;", "NOTE:y", "UID:7")
        self.put(one, "Family")
        import_all, update_one = reversed(self.run_host("undo", "--list", "--json").json()["runs"][:2])
        self.assertLess(import_all["bytes"], 2000)
        # The old card, and the trash's small file.
        self.assertLess(update_one["bytes"], 6000)

    def test_a_library_in_which_any_contact_has_changed_is_refused(self):
        self.library()
        self.put(CIM, "Family")
        path = next(self.home.rglob("contacts.sqlite"))
        for now, wanted in ("Bob", "Rob"), ("Rob", "Bob"):
            with sqlite3.connect(path) as database:
                changed = database.execute(
                    f"UPDATE contact SET card=CAST(replace(CAST(card AS TEXT), 'FN:{now}', 'FN:{wanted}') AS BLOB), "
                    f"revision=revision+1 WHERE CAST(card AS TEXT) LIKE '%FN:{now}%'")
                self.assertEqual(1, changed.rowcount)
            if wanted == "Rob":
                self.assertIn("Family", self.run_host("undo", code=2).err)
        self.run_host("undo")

    def test_another_book_of_the_library_may_change(self):
        self.library()
        self.run_host("books", "add", "--new", "Work")
        before = self.kept()["contacts.sqlite"]
        self.put(CIM, "Family")
        run = self.run_host("undo", "--list", "--json").json()["runs"][0]["number"]
        self.put(BOB, "Work")
        self.run_host("undo", str(run))
        self.run_host("undo", str(run + 1))
        self.assertEqual(before, self.kept()["contacts.sqlite"])

    def test_a_book_that_was_made_goes_and_comes_with_its_number(self):
        self.run_host("books", "add", "--new", "Family")
        after = self.kept()
        self.run_host("undo")
        self.assertNotIn("Family", self.run_host("books").out)
        self.run_host("undo")
        self.assertEqual(after, self.kept())

    def test_what_was_restored_from_the_trash_is_there_again(self):
        self.library()
        self.put(NEW_ANN, "Family")
        before = self.kept()
        self.run_host("trash", "restore", "1")
        self.assertNotEqual(before, self.kept())
        self.run_host("undo")
        self.assertEqual(before, self.kept())

    def test_what_was_removed_from_the_trash_for_ever_is_there_again(self):
        self.library()
        self.put(NEW_ANN, "Family")
        before = self.kept()
        self.run_host("trash", "clear", "--yes")
        self.run_host("undo")
        self.assertEqual(before, self.kept())

    # Settings and lists

    def test_settings_that_the_run_changed_go_back_and_others_stay(self):
        self.run_host("settings", "set", "prefixes", "Dr")
        self.run_host("settings", "set", "prefixes", "Prof")
        run = self.run_host("undo", "--list", "--json").json()["runs"][0]["number"]
        self.run_host("settings", "set", "duplicate-names", "last")
        self.run_host("undo", str(run))
        self.assertEqual(["Dr"], self.run_host("settings", "show", "prefixes", "--json").json())
        self.assertEqual(["last"], self.run_host("settings", "show", "duplicate-names", "--json").json())

    def test_a_setting_that_has_changed_since_is_refused(self):
        self.run_host("settings", "set", "prefixes", "Dr")
        run = self.run_host("undo", "--list", "--json").json()["runs"][0]["number"]
        self.run_host("settings", "set", "prefixes", "Prof")
        self.assertIn("setting", self.run_host("undo", str(run), code=2).err)

    def test_the_list_of_books_and_the_default_book_go_back(self):
        first, second = self.write("a.vcf", ANN), self.write("b.vcf", BOB)
        self.run_host("books", "add", first)
        before = self.run_host("books", "--json").out
        self.run_host("books", "add", second)
        middle = self.run_host("books", "--json").out
        self.run_host("books", "default", "b.vcf")
        self.run_host("undo")
        self.assertEqual(middle, self.run_host("books", "--json").out)
        self.run_host("undo", str(self.run_host("undo", "--list", "--json").json()["runs"][1]["number"]))
        self.assertEqual(before, self.run_host("books", "--json").out)

    def test_a_scan_keeps_no_record_even_when_it_forgets_a_book_that_is_gone(self):
        book = self.file_book()
        self.run_host("books", "default", "friends.vcf")
        self.run_host("books", "add", self.write("other.vcf", BOB))
        self.run_host("books", "remove", "friends.vcf")
        titles = self.titles()
        self.run_host("scan")
        self.run_host("show")
        self.run_host("convert", book, "--to", self.folder / "out.vcf", "--version", "4.0")
        self.assertEqual(titles, self.titles())

    # Records

    def test_a_run_that_writes_nothing_leaves_no_record(self):
        book = self.file_book()
        titles = self.titles()
        self.put(ANN, book)
        self.put(CIM, book, "--dry-run")
        self.run_host("import", self.write("in.vcf", CIM), "--into", "nowhere", code=2)
        self.assertEqual(titles, self.titles())

    def test_a_run_that_fails_and_takes_back_what_it_wrote_leaves_no_record(self):
        book = self.large_book()
        self.put(BOB.replace("TEL:2", "TEL:22"), book)
        self.check_a_failure_leaves_nothing(book)

    def test_a_run_that_fails_leaves_no_first_trash_either(self):
        book = self.large_book()
        self.check_a_failure_leaves_nothing(book)
        self.assertFalse(self.trash().exists())

    def large_book(self):
        return self.file_book(ANN + BOB + host.card("N:;Dot;;;", f"NOTE:{'x' * 200000}", "UID:dot"))

    def check_a_failure_leaves_nothing(self, book):
        before, titles = self.kept(), self.titles()
        self.write("in.vcf", NEW_ANN)
        # The trash can be written, the book is too large.
        failed = subprocess.run([host.PROGRAM, "import", "in.vcf", "--into", book.name, "--existing", "update"],
                                capture_output=True, cwd=self.folder, env=self.environment(), restore_signals=False,
                                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100000, 100000)))
        self.assertEqual(2, failed.returncode, failed.stderr)
        self.assertIn(b"friends.vcf", failed.stderr)
        self.assertEqual(before, self.kept())
        self.assertEqual(titles, self.titles())
        self.assertEqual(len(titles), len(self.records()))

    def test_a_dry_run_changes_nothing(self):
        book = self.file_book()
        self.put(NEW_ANN, book)
        before, content = self.stored_files(), book.read_bytes()
        out = self.run_host("undo", "--dry-run").out
        self.assertIn("Would undo", out)
        self.assertIn("friends.vcf", out)
        self.assertIn("trashFile.data", out)
        self.assertEqual((before, content), (self.stored_files(), book.read_bytes()))

    def test_the_list_names_the_runs_the_last_one_first(self):
        book = self.file_book()
        self.put(CIM, book)
        self.assertEqual([f"import {self.folder}/in.vcf --into friends.vcf --existing update", f"books add {book}"],
                         self.titles())
        lines = self.run_host("undo", "--list").out.splitlines()
        self.assertRegex(lines[0], r"^2  \d{4}-\d\d-\d\d \d\d:\d\d  import")
        self.assertTrue(all(len(line) <= 80 for line in lines))

    def test_its_documents_follow_their_schema(self):
        self.put(NEW_ANN, self.file_book())
        for words in ("--list",), ("--dry-run",), ():
            document = self.run_host("undo", "--json", *words).json()
            schema.check(document, SCHEMA, SCHEMA)
            self.assertEqual("--list" in words, "runs" in document)

    def test_with_nothing_to_undo_it_says_so(self):
        self.assertIn("nothing to undo", self.run_host("undo", code=2).err)
        self.assertIn("nothing to undo", self.run_host("undo", "--list").out)
        self.assertEqual([], self.titles())
        self.assertIn("no run 7", self.run_host("undo", "7", code=2).err)

    def test_what_names_no_run_is_told_in_one_line(self):
        book = self.file_book()
        self.put(CIM, book)
        before = book.read_bytes()
        for word, said in (("x", '"x" is not the number of a run'), ("", '"" is not the number'), ("1.5", '"1.5" is not'),
                           ("+1", '"+1" is not'), ("0", "no run 0"), ("99", "no run 99"), ("9" * 30, f"no run {'9' * 30}"),
                           (str(2 ** 64 + 1), "no run 1844"), ("-1", "-1"), ("x\ny", "is not the number")):
            err = self.run_host("undo", word, code=2).err
            self.assertIn(said, err)
            self.assertEqual(1, err.count("\n"), err)
            self.assertTrue(err.startswith("krcontacts: "), err)
        self.assertEqual(before, book.read_bytes())
        self.run_host("undo", "2")

    def test_twenty_records_are_kept(self):
        for i in range(25):
            self.run_host("settings", "set", "prefixes", f"P{i}")
        runs = self.run_host("undo", "--list", "--json").json()["runs"]
        self.assertEqual(list(range(25, 5, -1)), [run["number"] for run in runs])
        self.assertEqual([f"{i:06}" for i in range(6, 26)], self.records())

    def test_records_are_for_their_owner_only(self):
        book = self.file_book()
        self.put(NEW_ANN, book)
        root = self.home / "data/krcontacts/undo"
        for path in [root, *root.iterdir()]:
            self.assertEqual(0o700, stat.S_IMODE(path.stat().st_mode), path)
        for path in root.glob("*/*.part"):
            self.assertEqual(0o600, stat.S_IMODE(path.stat().st_mode), path)

    def test_a_replaced_file_costs_no_room_of_its_own(self):
        book = self.file_book()
        number = book.stat().st_ino
        self.put(CIM, book)
        self.assertIn(number, [path.stat().st_ino for path in self.home.rglob("undo/*/*")])

    def test_a_damaged_record_is_refused_and_nothing_is_touched(self):
        book = self.file_book()
        self.put(NEW_ANN, book)
        after, trash = book.read_bytes(), self.trash().read_bytes()
        folder = sorted((self.home / "data/krcontacts/undo").iterdir())[-1]
        for damaged in sorted(folder.iterdir()):
            content = damaged.read_bytes()
            for wrong in (content[:-1], content[:20] + b"?" + content[21:], b"", content + b"x", None):
                damaged.unlink(missing_ok=True)
                if wrong is not None:
                    damaged.write_bytes(wrong)
                err = self.run_host("undo", code=2).err
                self.assertIn(f"the undo record is damaged: {damaged}{'' if wrong is not None else ' is missing'}", err)
                self.assertEqual(1, err.count("\n"), err)
                self.assertEqual((after, trash), (book.read_bytes(), self.trash().read_bytes()))
                listed = self.run_host("undo", "--list", "--json").json()
                schema.check(listed, SCHEMA, SCHEMA)
                self.assertEqual(damaged.name == "run", listed["runs"][0]["damage"] is not None)
                self.assertEqual(damaged.name == "run", "damaged:" in self.run_host("undo", "--list").out)
            damaged.write_bytes(content)
        self.run_host("undo")
        self.assertEqual((ANN + BOB).encode(), book.read_bytes())

    def test_without_room_for_a_record_nothing_is_written(self):
        book = self.file_book()
        shutil.rmtree(self.home / "data/krcontacts/undo")
        self.write("home/data/krcontacts/undo", "in the way")
        self.assertIn("undo record", self.put_fails(CIM, book))
        self.assertEqual((ANN + BOB).encode(), book.read_bytes())

    def put_fails(self, content, book):
        return self.run_host("import", self.write("in.vcf", content), "--into", book.name, code=2).err

    def test_what_a_stopped_run_did_not_write_is_as_it_was(self):
        book = self.file_book()
        before = book.read_bytes()
        self.put(NEW_ANN, book)
        # As if the run had been stopped between the trash and the book.
        book.write_bytes(before)
        targets = self.run_host("undo", "--json").json()["targets"]
        self.assertEqual({str(book): False, str(self.trash()): True},
                         {target["place"]: target["isPutBack"] for target in targets})
        self.assertEqual(before, book.read_bytes())
        self.assertFalse(self.trash().exists())


if __name__ == "__main__":
    host.main()
