#!/usr/bin/env python3
"""The user's address books: listed, added, taken out of the list, shown and scanned by their IDs."""
import os
import sqlite3
import subprocess

import host

ANN = host.card("N:;Ann;;;", "TEL:1", "UID:ann")
BOB = host.card("N:;Bob;;;", "TEL:2", "UID:bob")
ROW = {"id", "name", "kind", "place", "isDefault", "personCount", "error"}


class Books(host.HostTest):
    def books(self):
        return self.run_host("books", "--json").json()["books"]

    def named(self, name):
        return next(book for book in self.books() if book["name"] == name)

    def kept(self):
        """What is stored; of the database what it says, since its bytes change with who reads it."""
        files = {name: content for name, content in self.stored_files().items() if ".sqlite" not in name}
        for path in self.home.rglob("contacts.sqlite"):
            with sqlite3.connect(path) as database:
                files[path] = list(database.iterdump())
        return files

    def refused(self, *words, reason):
        before = self.kept()
        result = self.run_host(*words, code=2)
        self.assertEqual(("", 1), (result.out, result.err.count("\n")), result.err)
        self.assertIn(reason, result.err)
        self.assertEqual(before, self.kept())

    def new(self, name):
        self.run_host("books", "add", "--new", name)
        return self.named(name)["id"]

    def test_at_first_there_is_the_trash_alone(self):
        trash = self.books()
        self.assertEqual([("trash_addressbook", "trash", 0, False, None)],
                         [(b["id"], b["kind"], b["personCount"], b["isDefault"], b["error"]) for b in trash])
        self.assertEqual(ROW, set(trash[0]))
        self.assertEqual(1, self.run_host("books").out.count("trash_addressbook"))

    def test_without_a_book_scan_and_show_tell_how_to_add_one(self):
        for command in ("scan", "show"):
            self.refused(command, reason="krcontacts books add PATH")
            self.refused(command, reason="--new NAME")

    def test_a_file_is_listed_and_becomes_the_default(self):
        path = self.write("family.vcf", ANN + BOB)
        result = self.run_host("books", "add", "family.vcf")
        self.assertEqual("", result.err)
        self.assertIn(str(path), result.out)
        book = self.books()[0]
        self.assertEqual((f"vcard:{path}", "family.vcf", "vcard", str(path), True, 2, None),
                         tuple(book[key] for key in ("id", "name", "kind", "place", "isDefault", "personCount", "error")))
        self.assertEqual(ANN + BOB, path.read_bytes().decode())
        for words in ((), (book["id"],), ("family.vcf",), (path,)):
            self.assertEqual(["Ann", "Bob"], [p["showName"] for p in self.run_host("show", "--json", *words,
                                                                                  cwd=self.folder).json()["persons"]])
            self.assertEqual(2, self.run_host("scan", "--json", *words).json()["addressBook"]["personCount"])

    def test_a_book_is_called_by_its_id_or_its_name_from_anywhere(self):
        self.write("books/a.vcf", ANN)
        self.run_host("books", "add", "books/a.vcf")
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        book = self.named("a.vcf")
        for word in (book["id"], "a.vcf"):
            self.assertEqual(book["id"], self.run_host("show", "--json", word, cwd=elsewhere).json()["addressBook"]["id"])
        # What is at a path goes first.
        (elsewhere / "a.vcf").write_text(BOB)
        self.assertEqual(["Bob"], [p["showName"] for p in self.run_host("show", "--json", "a.vcf",
                                                                      cwd=elsewhere).json()["persons"]])

    def test_the_trash_is_shown_like_any_book(self):
        self.assertEqual(0, self.run_host("show", "--json", "trash_addressbook").json()["addressBook"]["personCount"])

    def test_a_name_that_two_books_have_calls_neither(self):
        self.new("Twins")
        self.new("Twins")
        self.refused("show", "Twins", reason="several books")
        self.refused("books", "default", "Twins", reason="several books")

    def test_a_new_book_is_empty_and_stays(self):
        result = self.run_host("books", "add", "--new", "Family")
        book = self.named("Family")
        self.assertEqual(("sqlite", 0, None), (book["kind"], book["personCount"], book["error"]))
        self.assertIn(book["id"], result.out.replace("\n", " "))
        self.assertTrue(os.path.exists(book["place"]))
        self.assertEqual(0o600, os.stat(book["place"]).st_mode & 0o777)
        self.refused("books", "add", "--new", " ", reason="name")

    def test_the_default_can_be_chosen(self):
        first, second = self.new("One"), self.new("Two")
        self.assertEqual([True, False, False], [book["isDefault"] for book in self.books()])
        result = self.run_host("books", "default", second)
        self.assertIn("Two", result.out)
        self.assertEqual([(second, True), (first, False)], [(b["id"], b["isDefault"]) for b in self.books()[:2]])
        self.assertEqual(second, self.run_host("show", "--json").json()["addressBook"]["id"])
        self.refused("books", "default", "trash_addressbook", reason="trash")
        self.refused("books", "default", "nowhere", reason="no book")

    def test_the_default_goes_back_to_the_first_when_it_is_removed(self):
        first, second = self.new("One"), self.new("Two")
        self.run_host("books", "default", second)
        self.run_host("books", "remove", second)
        self.assertEqual([(first, True), ("trash_addressbook", False)], [(b["id"], b["isDefault"]) for b in self.books()])

    def test_removing_never_deletes(self):
        path = self.write("a.vcf", ANN)
        self.run_host("books", "add", path)
        ID = self.new("Family")
        place = self.named("Family")["place"]
        self.run_host("books", "remove", self.named("a.vcf")["id"])
        self.run_host("books", "remove", ID)
        self.assertEqual(["Trash"], [book["name"] for book in self.books()])
        self.assertEqual(ANN, path.read_bytes().decode())
        with sqlite3.connect(place) as database:
            self.assertEqual([("Family",)], database.execute("SELECT name FROM book").fetchall())
        # And back again, by its ID or by its place.
        self.run_host("books", "add", ID)
        self.assertEqual(ID, self.named("Family")["id"])
        self.run_host("books", "remove", ID)
        self.run_host("books", "add", place)
        self.run_host("books", "add", path)
        self.assertEqual(["Family", "a.vcf", "Trash"], [book["name"] for book in self.books()])
        self.refused("books", "remove", "trash_addressbook", reason="trash")

    def test_adding_twice_lists_once(self):
        path = self.write("a.vcf", ANN)
        self.run_host("books", "add", path)
        self.assertIn("already", self.run_host("books", "add", path).out)
        self.assertEqual(["a.vcf", "Trash"], [book["name"] for book in self.books()])

    def test_books_added_at_the_same_time_are_all_listed(self):
        names = [f"{i}.vcf" for i in range(8)]
        running = [self.start_host("books", "add", self.write(name, ANN)) for name in names]
        for process in running:
            self.assertEqual(b"", process.communicate()[1])
        self.assertEqual(names, sorted(book["name"] for book in self.books() if book["name"] != "Trash"))

    def test_a_damaged_list_of_books_is_told(self):
        self.run_host("books", "add", self.write("a.vcf", ANN))
        (self.home / "config" / "krcontacts.books.plist").write_bytes(b"damaged")
        result = self.run_host("books")
        self.assertNotIn("a.vcf", result.out)
        self.assertIn("krcontacts.books.plist", result.err)

    def test_a_damaged_database_is_told_in_words_of_its_own(self):
        self.run_host("books", "add", "--new", "Family")
        self.run_host("import", self.write("in.vcf", ANN), "--into", "Family")
        path = next(self.home.rglob("contacts.sqlite"))
        whole = path.read_bytes()
        for wrong, told in ((b"x" * len(whole), "this is no database, or a damaged one"),
                            (whole[:4096] + b"\xa5" * (len(whole) - 4096), "the database is damaged")):
            for path_ in path.parent.glob("contacts.sqlite-*"):
                path_.unlink()
            path.write_bytes(wrong)
            self.assertIn(told, " ".join(self.run_host("books").out.split()))
            self.assertIn(f"{path}: {told}", [book["error"] for book in self.books()])

    def test_what_is_no_book_is_not_added(self):
        os.mkfifo(self.folder / "pipe.vcf")
        self.refused("books", "add", "pipe.vcf", reason="pipe.vcf")
        self.refused("books", "add", "missing.vcf", reason="missing.vcf")
        self.refused("books", "add", self.write("photo.jpg", b"\xff\xd8\xff"), reason="extension")
        self.refused("books", "add", self.write("diary.vcf", "Dear diary\n"), reason="no contact")
        self.refused("books", "add", reason="PATH")
        self.refused("books", "add", "a.vcf", "--new", "b", reason="--new")

    def test_a_dry_run_changes_nothing(self):
        path = self.write("a.vcf", ANN)
        self.run_host("books", "add", path)
        ID = self.named("a.vcf")["id"]
        other = self.write("b.vcf", BOB)
        before = self.kept()
        for words in (("add", other), ("add", "--new", "New"), ("remove", ID), ("default", ID)):
            self.assertIn("ould ", self.run_host("books", *words, "--dry-run").out)
            self.assertEqual(before, self.kept())

    def test_a_book_that_cannot_be_opened_is_listed_with_the_reason_and_the_others_load(self):
        path = self.write("a.vcf", ANN)
        self.run_host("books", "add", path)
        self.run_host("books", "add", self.write("b.vcf", BOB))
        path.unlink()
        gone, there = self.books()[:2]
        self.assertEqual(("a.vcf", None), (gone["name"], gone["personCount"]))
        self.assertIn("No such file", gone["error"])
        self.assertEqual(("b.vcf", 1, None), (there["name"], there["personCount"], there["error"]))
        self.assertIn("cannot be opened", self.run_host("books").out)
        self.refused("show", gone["id"], reason="No such file")
        self.run_host("books", "remove", gone["id"])
        self.assertEqual(["b.vcf", "Trash"], [book["name"] for book in self.books()])

    def test_a_book_that_cannot_be_read_is_not_shown_as_empty(self):
        path = self.write("folder/a.vcf", ANN)
        self.run_host("books", "add", path)
        self.run_host("books", "add", path.parent)
        path.write_bytes(b"Dear diary\n")
        self.assertEqual([None], [book["personCount"] for book in self.books() if book["name"] == "a.vcf"])
        self.assertIn("no vCards", self.named("a.vcf")["error"])
        if os.geteuid() != 0:  # root may read everything
            path.chmod(0)
            self.assertIn("a.vcf", self.named("folder")["error"])

    def test_a_database_file_is_a_book_where_it_holds_one(self):
        self.new("Family")
        place = self.named("Family")["place"]
        self.assertEqual("Family", self.run_host("show", "--json", place).json()["addressBook"]["name"])
        self.new("Work")
        self.refused("show", place, reason="several books")

    def run_as_anybody(self, *words):
        """Runs the program as a user whom files can be kept from, which root is not."""
        if os.geteuid() != 0:
            return self.run_host(*words, code=2)
        self.folder.chmod(0o777)
        for path in (self.home, *self.home.rglob("*")):
            if path.is_dir():
                path.chmod(0o777)
        done = subprocess.run([host.PROGRAM, *map(os.fspath, words)], stdin=subprocess.DEVNULL, capture_output=True,
                              cwd=self.folder, env=self.environment(), user=65534, group=65534, extra_groups=[])
        self.assertEqual(2, done.returncode, done)
        return host.Result(done.returncode, done.stdout.decode(), done.stderr.decode())

    def test_a_database_that_cannot_be_opened_is_told_with_its_path_and_the_reason(self):
        self.new("Family")
        (place,) = self.home.rglob("contacts.sqlite")
        for end in ("-wal", "-shm"):
            place.with_name(place.name + end).unlink(missing_ok=True)
        content = place.read_bytes()
        commands = (("scan", "Family"), ("show", "Family"), ("books", "show", "Family"), ("scan", place),
                    ("books", "add", place), ("fix", "Family", "--apply", "blank-name=ignore"))
        for damage, reason in ((lambda: place.write_bytes(bytes(range(256)) * 32), "this is no database"),
                               (lambda: place.chmod(0), "Permission denied")):
            place.chmod(0o666)
            place.write_bytes(content)
            damage()
            for words in commands:
                with self.subTest((*words, reason)):
                    result = self.run_as_anybody(*words)
                    self.assertEqual(("", 1), (result.out, result.err.count("\n")), result.err)
                    self.assertIn(str(place), result.err)
                    self.assertIn(reason, result.err)
        place.chmod(0o666)
        self.assertIn('"Nowhere"', self.run_host("scan", "Nowhere", code=2).err)

    def test_a_book_stands_alone(self):
        path = self.write("a.vcf", ANN)
        ID = self.new("Family")
        self.refused("show", path, ID, reason="only files")

    def test_the_list_fits_a_terminal(self):
        self.run_host("books", "add", self.write("a-rather-long-name-" * 6 + ".vcf", ANN))
        self.new("Family")
        for words in (("books",), ("books", "show", "Family")):
            text = self.run_host(*words, COLUMNS="80").out
            self.assertEqual([], [line for line in text.splitlines() if len(line) > 80 or line.endswith(" ")])

    def test_show_gives_one_book(self):
        ID = self.new("Family")
        book = self.run_host("books", "show", ID, "--json").json()
        self.assertEqual(ROW | {"groups"}, set(book))
        self.assertEqual((ID, []), (book["id"], book["groups"]))
        self.refused("books", "show", "nowhere", reason="nowhere")


if __name__ == "__main__":
    host.main()
